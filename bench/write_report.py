#!/usr/bin/env python3
"""Puts the figures of one run into docs/benchmarks.md: write_report.py BUILD, to standard output.

write_report.py --machine prints what the machine is and how busy, before the run."""
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


def cpu():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    name = re.search(r"model name\s*: (.*)", text).group(1).strip()
    return f"{name}, {text.count('processor')} logical processors"


def print_machine():
    load = os.getloadavg()[1]
    print(f"{machine.strip()}
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
    if "Threads" in name and busy:
        continue
    print(f"| {name.replace('Decide/', '')} | {case:.0f} | {term:.4f} |")

with open(build / "coupling.csv") as file:
    coupling = {row["name"]: 1e6 * float(row["case"]) for row in csv.DictReader(file)}
print(f"""
## Coupling

Microseconds a case for models with a machine for each pair of categories, 200 vectors of 64 fields a
category, RBF; many cases at a time. Coupling turns the decision values into one probability a category;
its share is that of the whole, decision values included.

| categories | machines | coupling alone | scored with probabilities | scored by votes | share |
|---|---|---|---|---|---|""")
for count in (3, 10, 26):
    alone, whole, votes = (coupling[f"{name}/{count}"]
                           for name in ("Couple", "ScoreCoupled", "ScoreByVotes"))
    print(f"| {count} | {count * (count - 1) // 2} | {alone:.2f} | {whole:.1f} | {votes:.1f} "
          f"| {100 * alone / whole:.0f} % |")

print(f"""
## Loading a model

From the file to a model ready to score, against a bare DOM parse of the same file that keeps nothing.

| model | MB | bare parse, MB/s | load, MB/s | speed of a bare parse |
|---|---|---|---|---|
{(build / "load.md").read_text().strip()}

## The whole program

From a CSV file to a CSV file, against `svm-predict` from LIBSVM's text to text; reading the model is part
of both. {(build / "program.md").read_text().strip()}""")
