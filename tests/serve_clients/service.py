"""Starting the service, and the program whose scores its answers must equal."""

import contextlib
import csv
import io
import os
import pathlib
import re
import socket
import subprocess
import time
import urllib.error
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/serve_clients"
EXAMPLES = ROOT / "examples"
PROGRAM = os.environ.get("SVMSCORE_PROGRAM", str(ROOT / "build/release/bin/svmscore"))
DESCRIPTION = ROOT / "app/serve/openapi.yaml"
SCORED_EXAMPLES = ("iris", "digits", "diabetes", "tumour")


def node_program(name):
    return str(BUILD / "node/node_modules/.bin" / name)


def program_output(model, cases, *options):
    """What svmscore score writes."""
    return subprocess.run(
        [PROGRAM, "score", *options, str(model), str(cases)], capture_output=True, check=True
    ).stdout.decode()


def table(text):
    """The rows of a CSV text, as dictionaries."""
    return list(csv.DictReader(io.StringIO(text)))


def fetch(url):
    with urllib.request.urlopen(url, timeout=20) as answer:
        return answer.read().decode()


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(answers, seconds=60):
    """Asks until the answer is good; fails after that time."""
    until = time.monotonic() + seconds
    while True:
        try:
            found = answers()
            if found:
                return found
        except (OSError, ValueError, KeyError, IndexError):
            pass
        assert time.monotonic() < until, "it does not come up"
        time.sleep(0.1)


@contextlib.contextmanager
def running(command, log):
    """Runs a program, its output in the file `log`, and ends it."""
    with open(log, "wb") as out:
        process = subprocess.Popen(command, stdout=out, stderr=subprocess.STDOUT, cwd=BUILD)
        try:
            yield process
        finally:
            process.terminate()
            try:
                process.wait(30)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


@contextlib.contextmanager
def service(log, *options):
    """Runs svmscore serve on a port of its own; gives its address, without a slash at the end."""
    with running([PROGRAM, "serve", "--listen", "127.0.0.1:0", *map(str, options)], log) as process:

        def address():
            assert process.poll() is None, log.read_text()
            return re.search(r"http://127\.0\.0\.1:\d+", log.read_text())

        url = wait_for(address)[0]
        wait_for(lambda: fetch(url + "/v2/health/ready"))
        yield url
        process.terminate()
        assert process.wait(30) == 0, log.read_text()
