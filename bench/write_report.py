#!/usr/bin/env python3
"""Puts the figures of one run into docs/benchmarks.md: write_report.py BUILD, to standard output."""
import csv
import pathlib
import platform
import os
import re
import statistics
import subprocess
import sys

WORKLOADS = {
    "a": "two classes, RBF",
    "b": "two classes, RBF, beyond the second level of cache",
    "c": "ten classes one-against-one, RBF",
    "d": "two classes, linear",
    "e": "regression, RBF",
    "f": "two classes, polynomial of degree 3",
    "g": "two classes, linear, 1 % filled",
    "h": "two classes, RBF, 1 % filled",
}

BUSY = ("Other programs were\n"
        "  running: ratios hold, times vary, and figures for several threads are left out.")

build = pathlib.Path(sys.argv[1])


def cpu():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    name = re.search(r"model name\s*: (.*)", text).group(1).strip()
    return f"{name}, {text.count('processor')} logical processors"


def busy():
    return os.getloadavg()[2] > 1.5


def compiler():
    return subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout.split("\n")[0]


def sklearn_times():
    times = {}
    for path in sorted(build.glob("sklearn.[12]")):
        for line in path.read_text().splitlines():
            name, value = line.split()
            times.setdefault(name, []).append(float(value))
    return times


def compare_rows(turn):
    lines = (build / f"compare.{turn}").read_text().splitlines()
    rows = [[cell.strip() for cell in line.strip("|").split("|")]
            for line in lines if line.startswith("| ")]
    return lines[0], {row[0]: row for row in rows if row[0] in WORKLOADS}


def slopes():
    with open(build / "engine.csv") as file:
        rows = list(csv.DictReader(file))
    for row in rows:
        yield row["name"], 1e9 * float(row["case"]), 1e9 * float(row["term"])


heading, first = compare_rows(1)
_, second = compare_rows(2)
theirs = sklearn_times()

print(f"""# Benchmarks

What one case costs, from its numbers in memory to the decision values of all machines. Written by
`bench/run`; the models are those of `bench/train_models.py`.

- Machine: {cpu()}; Linux, {' '.join(platform.libc_ver())}; {compiler()}.
- Load average over the last 15 minutes: {os.getloadavg()[2]:.1f}. {BUSY if busy() else ""}
- {heading}
- Times are the processor time of the measuring thread; engine, LIBSVM and the plain definition take
  turns in one process, round after round, so that a drifting clock or a busy neighbour hits all.
- "Definition" is the plain kernels, each distinct vector evaluated once. "Many cases" hands over 256
  cases in columns, "one case" one at a time.
- Share of peak: the time of the case's arithmetic (subtract, multiply and add of every field of every
  vector, multiply and add for products, in registers; and the vector form of the kernel's function
  from the cache), both measured apart in the same rounds, over the time of many cases. The two overlap
  on units of their own, so a little more than 100 % is possible.

## Against LIBSVM
""")
for turn, rows in ((1, first), (2, second)):
    print(f"{'First' if turn == 1 else 'Second'} run:\n")
    print("| workload | vectors x fields | machines | LIBSVM | definition | many cases | ratio "
          "| one case | ratio | share of peak |")
    print("|" + "---|" * 10)
    for name, row in rows.items():
        print("| " + " | ".join([f"{name}: {WORKLOADS[name]}"] + row[1:10]) + " |")
    print()
unlike = {name: (row[10], row[11]) for name, row in second.items()}
print("Decision values that differ from the plain definition in any bit: "
      + ", ".join(f"{name} {pair[0]}" for name, pair in unlike.items())
      + ". From LIBSVM's: " + ", ".join(f"{name} {pair[1]}" for name, pair in unlike.items())
      + " (its polynomial multiplies instead of calling `pow`).\n")

print("""## Against scikit-learn

All cases at once in one thread; two processes of each in turn. Regression is `predict`, the others
`decision_function`. scikit-learn gets the sparse workloads in its sparse form.

| workload | scikit-learn | many cases | ratio |
|---|---|---|---|""")
for name, row in first.items():
    ours = statistics.mean([float(row[5]), float(second[name][5])])
    mean = statistics.mean(theirs[name])
    spread = "-".join(f"{value:.1f}" for value in sorted(theirs[name]))
    print(f"| {name} | {mean:.1f} ({spread}) | {ours:.2f} | {mean / ours:.1f} |")

print("""
## As models grow

RBF, dense, nanoseconds. `cases` 0 stands for the form for one case, other values for that many at a
time; a straight line shows as equal times of a term (one field of one vector).

| benchmark | a case | a term |
|---|---|---|""")
for name, case, term in slopes():
    if "Threads" in name and busy():
        continue
    print(f"| {name.replace('Decide/', '')} | {case:.0f} | {term:.4f} |")
