"""A running service, and a client for it: what the tests of svmscore serve share."""
import contextlib
import http.client
import json
import os
import re
import signal
import socket
import subprocess
import tempfile
import time


class Service:
    """`svmscore serve` on a free port, ended with this object."""

    def __init__(self, program, *arguments):
        self.log = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [program, "serve", "--listen", "127.0.0.1:0", *map(str, arguments)],
            stdout=subprocess.PIPE, stderr=self.log)
        line = self.process.stdout.readline().decode()
        match = re.fullmatch(r"svmscore: listening on http://127\.0\.0\.1:(\d+)\n", line)
        if not match:
            self.process.wait()
            raise RuntimeError(f"the service does not start: {line!r} {self.messages()}")
        self.port = int(match.group(1))

    def messages(self):
        self.log.seek(0)
        return self.log.read().decode()

    def events(self):
        return [json.loads(line) for line in self.messages().splitlines()]

    def connect(self, timeout=60):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=timeout)

    def socket(self, timeout=60):
        return socket.create_connection(("127.0.0.1", self.port), timeout=timeout)

    def ask(self, method, path, body=None, headers=None):
        """Status, headers and body of an answer."""
        with contextlib.closing(self.connect()) as connection:
            return exchange(connection, method, path, body, headers)

    def json(self, method, path, value=None, headers=None):
        body = None if value is None else json.dumps(value)
        all_headers = {"Content-Type": "application/json", **(headers or {})}
        status, _, text = self.ask(method, path, body, all_headers)
        return status, json.loads(text)

    def until(self, condition, seconds=60):
        """Waits for what does not happen at once."""
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise AssertionError("it does not happen\n" + self.messages()[-4000:])
            time.sleep(0.02)

    def end(self, number=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(number)
        return self.process.wait(timeout=60)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()
        self.process.stdout.close()
        self.log.close()


def exchange(connection, method, path, body=None, headers=None):
    with contextlib.suppress(BrokenPipeError):  # a body that is refused need not be taken as a whole
        connection.request(method, path, body, headers or {})
    answer = connection.getresponse()
    return answer.status, answer.headers, answer.read()


def score(program, *arguments):
    """What the program writes for a table."""
    return subprocess.run([program, "score", *map(str, arguments)], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def environment(name):
    return os.environ[name]
