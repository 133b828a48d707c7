#!/usr/bin/env python3
"""Times scikit-learn on the workloads of train_models.py: sklearn_times.py FOLDER

Prints for each the name and the microseconds of processor time that one case takes, all cases of the
workload given at once, as the median of several rounds in one thread.
"""
import os

os.environ["OMP_NUM_THREADS"] = "1"

import pathlib
import pickle
import statistics
import sys
import time

ROUNDS = 11

for path in sorted(pathlib.Path(sys.argv[1]).glob("*.pickle")):
    with open(path, "rb") as file:
        model, cases = pickle.load(file)
    decide = getattr(model, "decision_function", model.predict)
    times = []
    for _ in range(ROUNDS):
        start = time.process_time()
        decide(cases)
        times.append(time.process_time() - start)
    print(path.stem, f"{1e6 * statistics.median(times) / cases.shape[0]:.1f}", flush=True)
