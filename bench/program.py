#!/usr/bin/env python3
"""Times the whole program, from file to file: program.py SVMSCORE FOLDER

FOLDER holds what write_files.py wrote. svmscore and svm-predict take turns; a time is the median of
several rounds, a ratio the median of the rounds' ratios. Then two threads against one, and the peak
of memory over a table of 2 GB. Prints Markdown.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROUNDS = 5
TABLE_BYTES = 2_000_000_000

program, folder = sys.argv[1], pathlib.Path(sys.argv[2])


def run(*command):
    """Seconds of wall clock, and the peak of memory in MB."""
    start = time.perf_counter()
    child = subprocess.Popen([str(part) for part in command], stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        raise SystemExit(f"{command}: status {status}")
    return time.perf_counter() - start, usage.ru_maxrss / 1e3


def score(name, *options, cases=None):
    return run(program, "score", folder / f"{name}.pmml", cases or folder / f"{name}.csv", "-o",
               folder / "out.csv", *options)


def predict(name):
    return run("svm-predict", folder / f"{name}.svm", folder / f"{name}.model", folder / "out.txt")


def spread(values):
    return f"{statistics.median(values):.1f} ({min(values):.1f}-{max(values):.1f})"


print("Thousands of rows a second, one thread:\n")
print("| workload | rows | svm-predict | svmscore | ratio (least-most) |")
print("|---|---|---|---|---|")
for name in "abcdef":
    rows = sum(1 for _ in open(folder / f"{name}.svm"))
    theirs, ours = [], []
    for _ in range(ROUNDS):
        theirs.append(predict(name)[0])
        ours.append(score(name, "--threads", 1)[0])
    ratios = [t / o for t, o in zip(theirs, ours)]
    print(f"| {name} | {rows} | {rows / 1e3 / statistics.median(theirs):.0f} "
          f"| {rows / 1e3 / statistics.median(ours):.0f} | {spread(ratios)} |", flush=True)

speedups = []
for _ in range(ROUNDS):
    one = score("b", "--threads", 1)[0]
    speedups.append(one / score("b", "--threads", 2)[0])
print(f"\nTwo threads over one, workload b: {spread(speedups)}, on {os.cpu_count()} processors.")

table = folder / "large.csv"
with open(folder / "a.csv", "rb") as source, open(table, "wb") as out:
    header = source.readline()
    body = source.read()
    out.write(header)
    for _ in range(TABLE_BYTES // len(body) + 1):
        out.write(body)
small = score("a")[1]
seconds, peak = score("a", cases=table)
print(f"\nPeak of memory over a table of {table.stat().st_size / 1e9:.1f} GB, workload a, all "
      f"processors: {peak:.0f} MB, in {seconds:.0f} s; over the rows above: {small:.0f} MB.")
table.unlink()
(folder / "out.csv").unlink()
(folder / "out.txt").unlink()
