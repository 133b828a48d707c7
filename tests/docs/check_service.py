"""check_service.py ROOT PROGRAM: runs the commands that docs/service.md shows, one after the other, against a
service as the page starts it, and fails if they do not print what is shown below them.

It runs the lines "$ ..." of blocks marked `console`, in a folder of their own that has the examples. "..." in
a shown line is for any text, and as the last line for further lines.
"""

import itertools
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

ADDRESS = "localhost:8080"


def commands_of(page):
    """The command and the lines shown below it, of every command of the page."""
    for block in re.findall(r"^```console\n(.*?)^```$", page, re.M | re.S):
        command, shown = None, []
        for line in itertools.chain(block.splitlines(), ["$ "]):
            if command is not None and (command.endswith("\\") or command.count("'") % 2):
                command += "\n" + line
            elif line.startswith("$ "):
                if command:
                    yield command, shown
                command, shown = line[2:], []
            else:
                shown.append(line)


def is_as_shown(printed, shown):
    lines = printed.splitlines()
    if shown and shown[-1] == "...":
        shown = shown[:-1]
        lines = lines[: len(shown)]
    patterns = [re.escape(line).replace(r"\.\.\.", ".*") for line in shown]
    return len(lines) == len(patterns) and all(map(re.fullmatch, patterns, lines))


def start(program, folder, options):
    log = open(folder / "log", "wb+")
    service = subprocess.Popen([program, "serve", *options, "--listen", "127.0.0.1:0"], cwd=folder, stdout=log, stderr=log)
    for _ in range(600):
        found = re.search(r"http://127\.0\.0\.1:(\d+)", (folder / "log").read_text())
        if found:
            return service, f"localhost:{found[1]}"
        if service.poll() is not None:
            break
        time.sleep(0.1)
    sys.exit("the service does not start: " + (folder / "log").read_text())


def main(root, program):
    page = (root / "docs/service.md").read_text()
    setup, options = re.search(
        r"^```sh\n((?:.*\n)*?)\./svmscore serve (--models .*)$", page.split("## Deploy")[1], re.M
    ).groups()
    wrong = seen = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "examples").symlink_to(root / "examples")
        subprocess.run(["bash", "-ec", setup], cwd=folder, check=True)
        service, address = start(program, folder, options.split())
        try:
            for command, shown in commands_of(page):
                seen += 1
                done = subprocess.run(
                    ["bash", "-c", command.replace(ADDRESS, address)],
                    cwd=folder, stdout=subprocess.PIPE, text=True, check=False,
                )  # fmt: skip
                printed = done.stdout.replace(address, ADDRESS)
                if not is_as_shown(printed, shown):
                    wrong += 1
                    print(f"docs/service.md: {command}\n--- shown\n" + "\n".join(shown) + f"\n--- printed\n{printed}")
        finally:
            service.send_signal(signal.SIGTERM)
            ended = service.wait(60)
    if ended != 0:
        sys.exit(f"the service ends with status {ended}")
    if seen == 0:
        sys.exit("no command found")
    sys.exit(wrong > 0)


main(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2])
