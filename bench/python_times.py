#!/usr/bin/env python3
"""Times the Python package beside other ways of scoring in Python: python_times.py [ROWS]

Trains the workloads a, b and c of train_models.py by scikit-learn, converts them by to_pmml, and times,
in turn within one process and on one thread, DataFrame to array: svmscore, scikit-learn, and what else is
installed of ONNX Runtime (with skl2onnx), PyPMML and jpmml_evaluator. Prints a table: how many times
as long as svmscore each takes, median and quartiles of several rounds. The slow ones score fewer rows, and
are compared row by row. Needs the wheel and bench/requirements-python.txt.
"""
import os

os.environ["OMP_NUM_THREADS"] = "1"

import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np
import pandas as pd

import svmscore
from train_models import workloads

ROUNDS = 9
SLOW_ROWS = 500


def seconds(call):
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


def ratios(ours, theirs, rounds=ROUNDS):
    """theirs over ours, each round taken in turn."""
    ours(), theirs()
    return [seconds(theirs) / seconds(ours) for _ in range(rounds)]


def told(values):
    low, middle, high = statistics.quantiles(values, n=4)
    return f"{middle:.3g} ({low:.3g}-{high:.3g})"


def row(*cells):
    print("| " + " | ".join(cells) + " |", flush=True)


def onnx(estimator, fields):
    """A function of float32 arrays, or None where ONNX Runtime or skl2onnx is not installed."""
    try:
        import onnxruntime
        from skl2onnx import to_onnx
    except ImportError:
        return None
    options = onnxruntime.SessionOptions()
    options.intra_op_num_threads = options.inter_op_num_threads = 1
    document = to_onnx(estimator, np.zeros((1, fields), dtype=np.float32), options={"zipmap": False})
    session = onnxruntime.InferenceSession(
        document.SerializeToString(), options, providers=["CPUExecutionProvider"])
    name = session.get_inputs()[0].name
    return lambda array: session.run(None, {name: array})


def pmml4s(path):
    try:
        from pypmml import Model
    except ImportError:
        return None
    return Model.load(path).predict


def jpmml(path):
    try:
        from jpmml_evaluator import make_evaluator
    except ImportError:
        return None
    evaluator = make_evaluator(path).verify()
    return evaluator.evaluateAll


def compare(name, estimator, x, y, rows, folder):
    rng = np.random.default_rng(7)
    names = [f"x{i}" for i in range(x.shape[1])]
    train = pd.DataFrame(x[:-256], columns=names)
    estimator.fit(train, y[:-256])
    path = os.path.join(folder, f"{name}.pmml")
    with open(path, "w") as file:
        file.write(svmscore.to_pmml(estimator))
    model = svmscore.load(path)
    cases = train.iloc[rng.integers(0, len(train), rows)].reset_index(drop=True)
    few = cases.iloc[: max(1000, rows // 20)]
    if not np.array_equal(model.predict(few), estimator.predict(few)):
        sys.exit(f"{name}: svmscore and scikit-learn disagree")
    shape = f"{estimator.support_vectors_.shape[0]} x {x.shape[1]}"

    row(name, shape, "scikit-learn, predict", f"{len(few)}",
        told(ratios(lambda: model.predict(few), lambda: estimator.predict(few))))
    row(name, shape, "scikit-learn, decision_function", f"{len(few)}",
        told(ratios(lambda: model.decision_function(few), lambda: estimator.decision_function(few))))
    one, case = few.iloc[:1], few.iloc[0].to_dict()
    many = range(50)
    row(name, shape, "scikit-learn, one row in a frame", "1",
        told(ratios(lambda: [model.predict(one) for _ in many],
                    lambda: [estimator.predict(one) for _ in many])))
    row(name, shape, "scikit-learn, one row; a dict here", "1",
        told(ratios(lambda: [model.predict(case) for _ in many],
                    lambda: [estimator.predict(one) for _ in many])))
    run = onnx(estimator, x.shape[1])
    if run is not None:
        singles = few.to_numpy(dtype=np.float32)
        row(name, shape, "ONNX Runtime, float32 array", f"{len(few)}",
            told(ratios(lambda: model.predict(few), lambda: run(singles))))
    for reader, scorer in (("PyPMML", pmml4s(path)), ("jpmml_evaluator", jpmml(path))):
        if scorer is not None:
            part = few.iloc[:SLOW_ROWS]
            row(name, shape, reader, f"{SLOW_ROWS}",
                told(ratios(lambda: model.predict(part), lambda: scorer(part), 3)))
    scorer = model._plan(1, False, 1).take()
    columns = model._read(cases).columns
    over = ratios(lambda: scorer.score(columns, [0]), lambda: model.predict(cases), 5)
    row(name, shape, "the C interface on columns that are ready", f"{rows}", told(over))


def import_time():
    code = "import time, numpy; s = time.perf_counter(); import svmscore; print(time.perf_counter() - s)"
    times = [float(subprocess.check_output([sys.executable, "-c", code])) for _ in range(11)]
    return statistics.median(times[1:])


def main():
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 100_000
    print(f"Instruction set: {svmscore.instruction_set()}. Time beside svmscore's, one thread: median "
          "(quartiles).\n")
    row("workload", "vectors x fields", "compared with", "rows", "takes times as long")
    row("---", "---", "---", "---", "---")
    with tempfile.TemporaryDirectory() as folder:
        for name, x, y, estimator in workloads():
            if name in ("a", "b", "c"):
                compare(name, estimator, x, y, rows, folder)
    print(f"\nImporting svmscore takes {1000 * import_time():.1f} ms beyond importing NumPy.")


if __name__ == "__main__":
    main()
