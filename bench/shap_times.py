#!/usr/bin/env python3
"""Times the explanation of one case beside shap's: shap_times.py EXPLAIN_BENCH

Regressions of 1,000 vectors and 20 fields that scikit-learn trains on noise from a fixed seed, with a
background of 100 rows: explain_bench computes Shapley values exactly, shap.KernelExplainer estimates them
with its default settings from what the estimator predicts. One thread each, processor time, median of
several rounds. Prints milliseconds, the ratio, and how far shap's values are from the exact ones, relative
to the sum of the coefficients' sizes: as it gives them, and without its choice of ten fields. Needs
requirements-explain.txt.
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
from sklearn.svm import SVR

FIELDS, VECTORS, ROWS, ROUNDS = 20, 1000, 100, 5


KERNELS = {
    "radial_basis": {"kernel": "rbf"},
    "linear": {"kernel": "linear"},
    "polynomial_3": {"kernel": "poly", "degree": 3, "coef0": 1.0},
}


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


def time_shap(predict, case, background):
    times = []
    for _ in range(ROUNDS):
        explainer = shap.KernelExplainer(predict, background)
        start = time.process_time()
        values = explainer.shap_values(case, silent=True)
        times.append(1000 * (time.process_time() - start))
    return statistics.median(times), values, explainer.shap_values(case, silent=True, l1_reg=False)


def main():
    print("| kernel | exact, ms | shap, ms | ratio | shap's distance | with all fields |\n"
          "|---|--:|--:|--:|--:|--:|")
    for name, settings in KERNELS.items():
        random = numpy.random.default_rng(7)
        rows = random.standard_normal((VECTORS, FIELDS))
        model = SVR(gamma=1 / FIELDS, epsilon=1e-6, C=1.0, max_iter=20_000, **settings)
        model.fit(rows, random.standard_normal(VECTORS))
        coefficients = numpy.ascontiguousarray(model.dual_coef_[0])
        vectors = numpy.ascontiguousarray(model.support_vectors_)
        if vectors.shape != (VECTORS, FIELDS):
            raise SystemExit(f"{name}: {len(vectors)} vectors and not {VECTORS}")
        background = random.standard_normal((FIELDS, ROWS))  # in columns
        case = random.standard_normal(FIELDS)
        ours, exact = time_ours(sys.argv[1], name, (coefficients, vectors, background, case))
        theirs, default, full = time_shap(model.predict, case, background.T)
        unit = numpy.abs(coefficients).sum()
        print(f"| {name} | {ours:.3f} | {theirs:.0f} | {theirs / ours:.0f} "
              f"| {numpy.abs(default - exact).max() / unit:.1e} "
              f"| {numpy.abs(full - exact).max() / unit:.1e} |",
              flush=True)


if __name__ == "__main__":
    main()
