#!/usr/bin/env python3
"""Times ONNX Runtime, in single precision, on the dense workloads of train_models.py: onnx_times.py

Trains the models anew from the same seeds and converts them by skl2onnx. Prints for each the name, the
microseconds of processor time that one case takes, all cases of the workload given at once, as the median of
several rounds in one thread, and how many of the categories differ from those of double precision. Runs in an
environment with requirements-python.txt.
"""
import statistics
import time
import warnings

import numpy as np
import onnxruntime
from skl2onnx import to_onnx
from scipy import sparse
from sklearn.svm import SVC

from train_models import CASES, workloads

ROUNDS = 21
SLICE = 0.02  # seconds of a round

warnings.simplefilter("ignore")

for name, x, y, model in workloads():
    if sparse.issparse(x):
        continue
    model.fit(x[:-CASES], y[:-CASES])
    cases = np.ascontiguousarray(x[-CASES:], dtype=np.float32)
    classes = isinstance(model, SVC)
    document = to_onnx(model, cases[:1], options={"zipmap": False} if classes else None)
    options = onnxruntime.SessionOptions()
    options.intra_op_num_threads = options.inter_op_num_threads = 1
    session = onnxruntime.InferenceSession(document.SerializeToString(), options,
                                           providers=["CPUExecutionProvider"])
    inputs = {session.get_inputs()[0].name: cases}
    wanted = [session.get_outputs()[0].name]
    times = []
    for _ in range(ROUNDS):
        start = time.process_time()
        calls = 0
        while time.process_time() - start < SLICE:
            session.run(wanted, inputs)
            calls += 1
        times.append((time.process_time() - start) / (calls * CASES))
    unlike = int(np.sum(session.run(wanted, inputs)[0].ravel() != model.predict(x[-CASES:]))) if classes else 0
    print(name, f"{1e6 * statistics.median(times):.2f}", unlike, flush=True)
