#!/usr/bin/env python3
"""Trains the models of the benchmark's workloads: train_models.py FOLDER

Writes FOLDER/NAME.model and FOLDER/NAME.cases, both in LIBSVM's text formats, and FOLDER/NAME.pickle
for sklearn_times.py, for each workload that is not there yet. Everything is made up from fixed seeds. The number of support vectors follows from
the overlap of the classes; the benchmark reports what came out.
"""
import pathlib
import pickle
import sys

import numpy as np
from scipy import sparse
from sklearn.svm import SVC, SVR

CASES = 256


def two_classes(rng, rows, fields, overlap):
    x = rng.standard_normal((rows, fields))
    direction = rng.standard_normal(fields) / np.sqrt(fields)
    y = (x @ direction + overlap * rng.standard_normal(rows) > 0).astype(int)
    return x, y


def pixels(rng, rows, fields, classes):
    """Ten overlapping classes, about half of the entries 0, as in images of digits."""
    y = np.arange(rows) % classes
    centers = rng.uniform(-4, 5, (classes, fields))
    x = np.clip(np.round(centers[y] + 11 * rng.standard_normal((rows, fields))), 0, 16) / 16
    return x, y


def texts(rng, rows, fields, filled):
    x = sparse.random(rows, fields, density=filled, format="csr", random_state=7,
                      data_rvs=lambda n: rng.uniform(0.1, 1.0, n))
    return x, rng.integers(0, 2, rows)


def workloads():
    rng = np.random.default_rng(20240229)
    x, y = two_classes(rng, 2256, 20, 0.6)
    yield "a", x, y, SVC(kernel="rbf", gamma=1 / 20)
    x, y = two_classes(rng, 6256, 100, 1.0)
    yield "b", x, y, SVC(kernel="rbf", gamma=1 / 100)
    x, y = pixels(rng, 2756, 64, 10)
    yield "c", x, y, SVC(kernel="rbf", gamma=0.05, C=1)
    x, y = two_classes(rng, 4256, 100, 0.6)
    yield "d", x, y, SVC(kernel="linear", C=0.01)
    x, y = two_classes(rng, 2356, 50, 0.0)
    yield "e", x, x[:, 0] * x[:, 1] + np.sin(x[:, 2]) + 0.1 * rng.standard_normal(len(x)), \
        SVR(kernel="rbf", gamma=1 / 50, epsilon=0.05)
    x, y = two_classes(rng, 1756, 30, 0.8)
    yield "f", x, y, SVC(kernel="poly", degree=3, gamma=1 / 30, coef0=1, C=0.1)
    x, y = texts(rng, 1256, 5000, 0.01)
    yield "g", x, y, SVC(kernel="linear")
    yield "h", x, y, SVC(kernel="rbf", gamma=0.05)
    x, y = two_classes(rng, 2456, 40, 0.8)
    yield "i", x, y, SVC(kernel="sigmoid", gamma=1 / 40, coef0=0, C=0.3)


def dense(a):
    return a.toarray() if sparse.issparse(a) else np.asarray(a)


def line(row):
    return " ".join(f"{i + 1}:{float(row[i])!r}" for i in np.flatnonzero(row))


def write_model(path, model, fields):
    classes = isinstance(model, SVC)
    coefficients = dense(model._dual_coef_)
    rho = -np.asarray(model._intercept_)
    kernel = {"poly": "polynomial"}.get(model.kernel, model.kernel)
    with open(path, "w") as out:
        print("svm_type", "c_svc" if classes else "epsilon_svr", file=out)
        print("kernel_type", kernel, file=out)
        if kernel == "polynomial":
            print("degree", model.degree, file=out)
        if kernel != "linear":
            print("gamma", repr(float(model._gamma)), file=out)
        if kernel in ("polynomial", "sigmoid"):
            print("coef0", repr(float(model.coef0)), file=out)
        print("nr_class", len(model.classes_) if classes else 2, file=out)
        print("total_sv", model.support_vectors_.shape[0], file=out)
        print("rho", *(repr(float(r)) for r in rho), file=out)
        if classes:
            print("label", *model.classes_, file=out)
            print("nr_sv", *model.n_support_, file=out)
        print("SV", file=out)
        for v, vector in enumerate(dense(model.support_vectors_)):
            print(*(repr(float(c)) for c in coefficients[:, v]), line(vector), file=out)


def main():
    folder = pathlib.Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for name, x, y, model in workloads():
        if (folder / f"{name}.cases").exists():
            continue
        model.fit(x[:-CASES], y[:-CASES])
        write_model(folder / f"{name}.model", model, x.shape[1])
        with open(folder / f"{name}.pickle", "wb") as out:
            pickle.dump((model, x[-CASES:]), out)
        with open(folder / f"{name}.cases", "w") as out:
            print(x.shape[1], file=out)
            for row in dense(x[-CASES:]):
                print(line(row), file=out)
        print(f"{name}: {model.support_vectors_.shape[0]} support vectors, {x.shape[1]} fields")


if __name__ == "__main__":
    main()
