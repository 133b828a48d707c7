#!/usr/bin/env python3
"""Times the explanation of one case beside shap's: shap_times.py EXPLAIN_BENCH

Models of 1,000 vectors and 20 fields with a background of 100 rows, made up from a fixed seed and given
to both: explain_bench computes Shapley values exactly, shap.KernelExplainer estimates them at its
default sampling, without its choice of a few fields, from decision values that NumPy computes. One thread each, median of several rounds.
Prints milliseconds, the ratio, and how far shap's values are from the exact ones, relative to the sum
of the coefficients' sizes. Needs requirements-explain.txt.
"""
import os

for name in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[name] = "1"

import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy
import shap

FIELDS, VECTORS, ROWS, ROUNDS = 20, 1000, 100, 5


def decide_radial_basis(cases, vectors, coefficients):
    squares = (cases**2).sum(1)[:, None] + (vectors**2).sum(1) - 2 * cases @ vectors.T
    return numpy.exp(-squares / FIELDS) @ coefficients


def decide_linear(cases, vectors, coefficients):
    return cases @ vectors.T @ coefficients


def decide_polynomial(cases, vectors, coefficients):
    return (cases @ vectors.T / FIELDS + 1) ** 3 @ coefficients


def time_ours(program, name, numbers):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "numbers")
        numpy.concatenate([part.ravel() for part in numbers]).tofile(path)
        command = [program, f"--benchmark_filter=^explain/{name}$", "--benchmark_format=json",
                   f"--benchmark_repetitions={ROUNDS}"]
        run = subprocess.run(command, env=dict(os.environ, EXPLAIN_NUMBERS=path), check=True,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        median = [result for result in json.loads(run.stdout)["benchmarks"]
                  if result.get("aggregate_name") == "median"]
        return median[0]["cpu_time"], numpy.fromfile(f"{path}.values")


def time_shap(decide, case, background):
    times = []
    for _ in range(ROUNDS):
        explainer = shap.KernelExplainer(decide, background)
        start = time.process_time()
        values = explainer.shap_values(case, silent=True, l1_reg=False)
        times.append(1000 * (time.process_time() - start))
    return statistics.median(times), values


def main():
    print("| kernel | exact, ms | shap, ms | ratio | shap's distance |\n|---|--:|--:|--:|--:|")
    for name, decide in (("radial_basis", decide_radial_basis), ("linear", decide_linear),
                         ("polynomial_3", decide_polynomial)):
        random = numpy.random.default_rng(7)
        coefficients = random.standard_normal(VECTORS)
        vectors = random.standard_normal((VECTORS, FIELDS))
        background = random.standard_normal((FIELDS, ROWS))  # in columns
        case = random.standard_normal(FIELDS)
        ours, exact = time_ours(sys.argv[1], name, (coefficients, vectors, background, case))
        theirs, sampled = time_shap(lambda cases: decide(cases, vectors, coefficients), case,
                                    background.T)
        distance = numpy.abs(sampled - exact).max() / numpy.abs(coefficients).sum()
        print(f"| {name} | {ours:.3f} | {theirs:.0f} | {theirs / ours:.0f} | {distance:.1e} |",
              flush=True)


if __name__ == "__main__":
    main()
