#!/usr/bin/env python3
"""Puts the figures of one run into docs/benchmarks.md: write_report.py BUILD, to standard output.

write_report.py --machine prints what the machine is and how busy, before the run."""
import csv
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import time

WORKLOADS = {
    "a": "two classes, RBF",
    "b": "two classes, RBF, beyond the second level of cache",
    "c": "ten classes one-against-one, RBF",
    "d": "two classes, linear",
    "e": "regression, RBF",
    "f": "two classes, polynomial of degree 3",
    "g": "two classes, linear, 1 % filled",
    "h": "two classes, RBF, 1 % filled",
    "i": "two classes, sigmoid",
}

BUSY = ("Other programs were\n"
        "  running: ratios hold, times vary, and figures for several threads are left out.")
INTRODUCTION = """
- Times are the processor time of the measuring thread; engine, LIBSVM and the plain definition take
  turns in one process, round after round, so that a drifting clock or a busy neighbour hits all.
- "Definition" is the plain kernels, each distinct vector evaluated once. "Many cases" hands over 256
  cases in columns, "one case" one at a time.
- Share of peak: the time of the case's arithmetic (subtract, multiply and add of every field of every
  vector, multiply and add for products, in registers; and the vector form of the kernel's function
  from the cache), both measured apart in the same rounds, over the time of many cases. The two overlap
  on separate units, so a little more than 100 % is possible."""


def cpu():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    name = re.search(r"model name\s*: (.*)", text).group(1).strip()
    return f"{name}, {len(re.findall('^processor', text, re.MULTILINE))} logical processors"


def busy_share(seconds):
    """The share of all processors' time that something else takes now."""
    def ticks():
        line = pathlib.Path("/proc/stat").read_text().splitlines()[0]
        fields = [int(field) for field in line.split()[1:9]]
        return sum(fields), fields[3] + fields[4]
    total, idle = ticks()
    time.sleep(seconds)
    later, later_idle = ticks()
    return 1.0 - (later_idle - idle) / (later - total)


def print_machine():
    """The machine, and whether other programs were running before the run."""
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True)
    share = busy_share(seconds=5.0)
    print(f"- Machine: {cpu()}; Linux, {' '.join(platform.libc_ver())}; "
          f"{compiler.stdout.splitlines()[0]}.")
    print(f"- Processors busy before the run: {100 * share:.0f} %. {BUSY if share > 0.25 else ''}".rstrip())


def sklearn_times(build):
    times = {}
    for path in sorted(build.glob("sklearn.[12]")):
        for line in path.read_text().splitlines():
            name, value = line.split()
            times.setdefault(name, []).append(float(value))
    return times


def compare_rows(build, turn):
    """The line that says what was measured, and the rows by workload."""
    lines = (build / f"compare.{turn}").read_text().splitlines()
    rows = [[cell.strip() for cell in line.strip("|").split("|")]
            for line in lines if line.startswith("| ")]
    return lines[0], {row[0]: row for row in rows if row[0] in WORKLOADS}


def print_against_libsvm(turns):
    print("\n## Against LIBSVM\n")
    for turn, rows in zip(("First", "Second"), turns):
        print(f"{turn} run:\n")
        print("| workload | vectors x fields | machines | LIBSVM | definition | many cases | ratio "
              "| one case | ratio | share of peak |")
        print("|" + "---|" * 10)
        for name, row in rows.items():
            print("| " + " | ".join([f"{name}: {WORKLOADS[name]}"] + row[1:10]) + " |")
        print()
    unlike = {name: (row[10], row[11]) for name, row in turns[1].items()}
    print("Decision values that differ from the plain definition in any bit: "
          + ", ".join(f"{name} {pair[0]}" for name, pair in unlike.items())
          + ". From LIBSVM's: " + ", ".join(f"{name} {pair[1]}" for name, pair in unlike.items())
          + " (its polynomial multiplies instead of calling `pow`).")


def print_certified(turns, onnx):
    print("""
## Votes by estimates

The engine's exact decision values against votes that estimates with proven bounds decide, and exact decision
values where these leave a doubt: the same rounds as above, as engine / certified. "Open": cases that were left to
the exact engine. "Where none can be": the cost of trying on data of which no estimate settles anything, 10,000
cases at once by a model that has not met them, as certified / engine. ONNX Runtime computes in single precision
throughout, in a process of its own, one thread, the same 256 cases at once; "unlike" counts the categories that
this changed. A regression (e) has no votes: its estimates are not used in scoring, and stand here for the form.

| workload | engine | certified | ratio | one case: engine | certified | ratio | open | where none can be | ONNX Runtime | over certified | unlike |
|---|---|---|---|---|---|---|---|---|---|---|---|""")
    for name, row in turns[1].items():
        theirs = onnx.get(name)
        over = ["-", "-", "-"]
        if theirs is not None:
            ours = float(row[5] if name == "e" else row[12])
            over = [f"{theirs[0]:.2f}", f"{theirs[0] / ours:.1f}", str(theirs[1])]
        print("| " + " | ".join([f"{name}: {WORKLOADS[name]}", row[5], row[12], row[13], row[7], row[14], row[15],
                                 row[16], row[17]] + over) + " |")


def onnx_times(path):
    rows = [line.split() for line in path.read_text().splitlines()] if path.exists() else []
    return {name: (float(time), int(unlike)) for name, time, unlike in rows}


def print_against_sklearn(turns, theirs):
    print("""
## Against scikit-learn

All cases at once in one thread; two processes of each in turn. Regression is `predict`, the others
`decision_function`. scikit-learn gets the sparse workloads in its sparse form.

| workload | scikit-learn | many cases | ratio |
|---|---|---|---|""")
    for name in turns[0]:
        if name not in theirs:
            continue
        ours = statistics.mean(float(rows[name][5]) for rows in turns)
        mean = statistics.mean(theirs[name])
        spread = "-".join(f"{value:.1f}" for value in sorted(theirs[name]))
        print(f"| {name} | {mean:.1f} ({spread}) | {ours:.2f} | {mean / ours:.1f} |")


def print_slopes(path, busy):
    print("""
## As models grow

RBF, dense, nanoseconds. `cases` 0 means the form for one case, other values for that many at a
time; a straight line shows as equal times of a term (one field of one vector).

| benchmark | a case | a term |
|---|---|---|""")
    with open(path) as file:
        for row in csv.DictReader(file):
            if not (busy and "Threads" in row["name"]):
                print(f"| {row['name'].replace('Decide/', '')} | {1e9 * float(row['case']):.0f} "
                      f"| {1e9 * float(row['term']):.4f} |")


def print_coupling(path):
    with open(path) as file:
        times = {row["name"]: 1e6 * float(row["case"]) for row in csv.DictReader(file)}
    print("""
## Coupling

Microseconds a case for models with a machine for each pair of categories, 200 vectors of 64 fields a
category, RBF; many cases at a time. Coupling turns the decision values into one probability a category;
its share is that of the whole, decision values included.

| categories | machines | coupling alone | scored with probabilities | scored by votes | share |
|---|---|---|---|---|---|""")
    for count in (3, 10, 26):
        alone, whole, votes = (times[f"{name}/{count}"]
                               for name in ("Couple", "ScoreCoupled", "ScoreByVotes"))
        print(f"| {count} | {count * (count - 1) // 2} | {alone:.2f} | {whole:.1f} | {votes:.1f} "
              f"| {100 * alone / whole:.0f} % |")


def print_explanations(build):
    print("""
## Explanations

One case, one thread, milliseconds of the processor's time, from entries to Shapley values of all fields: 1,000
vectors, 20 fields and a background of 100 rows unless said. "Set-up" is once for a background.

| model | a case | set-up |
|---|---|---|""")
    with open(build / "explain.csv") as file:
        times = {row["name"]: float(row["cpu_time"]) for row in csv.DictReader(file)}
    for name, taken in times.items():
        kind, _, model = name.partition("/")
        if kind == "explain":
            print(f"| {model.replace('_', ' ')} | {taken:.3g} | {times['set_up/' + model]:.3g} |")
    shap = build / "shap.md"
    if shap.exists():
        print("""
Beside shap's KernelExplainer with its default settings, on a regression of scikit-learn with the same vectors;
its values are estimates, and the last two columns say how far they are from the exact ones, relative to the sum
of the coefficients' sizes, also without its choice of ten fields.

""" + shap.read_text().strip())
    print("\nCalibration by a hold-out of two categories, beside scoring it, of the processor's time: "
          + (build / "calibrate").read_text().strip() + ".")


def print_report(build):
    machine = (build / "machine").read_text().strip()
    heading, first = compare_rows(build, 1)
    turns = first, compare_rows(build, 2)[1]
    print(f"""# Benchmarks

What one case costs, from its numbers in memory to the decision values of all machines. Written by
`bench/run`; the models are those of `bench/train_models.py`.

{machine}
- {heading}{INTRODUCTION}""")
    print_against_libsvm(turns)
    print_certified(turns, onnx_times(build / "onnx"))
    print_against_sklearn(turns, sklearn_times(build))
    print_slopes(build / "engine.csv", BUSY in machine)
    print_coupling(build / "coupling.csv")
    print_explanations(build)
    print(f"""
## Loading a model

From the file to a model ready to score, as the program loads it, against a bare DOM parse of the same file
that keeps nothing; the two take turns in one process.

| model | MB | bare parse, MB/s | load, MB/s | speed of a bare parse |
|---|---|---|---|---|
{(build / "load.md").read_text().strip()}

## The whole program

From a CSV file to a CSV file, against `svm-predict` from LIBSVM's text to text; reading the model is
part of both. {(build / "program.md").read_text().strip()}

## The C interface

What `capi/svmscore.h` adds to the engine: workload a, and a regression over ten fields of four categories with
1000 vectors. What is compared takes turns, round after round, by processor time; threads by the clock.
{(build / "c_interface.md").read_text().strip()}

One case allocates nothing after the first: `tests/capi/case_test.cpp` counts.

## The service

`svmscore serve` on the loopback, with its log, and with wrk on the same processors.

{(build / "service.md").read_text().strip()}""")


if sys.argv[1] == "--machine":
    print_machine()
else:
    print_report(pathlib.Path(sys.argv[1]))
