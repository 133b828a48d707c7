"""Shared by the tests of `to_pmml`: the function, and the program that scores its documents."""

import importlib.util
import io
import json
import os
import pathlib
import subprocess
import sys

import numpy as np
import pandas as pd
from sklearn.metrics.pairwise import pairwise_kernels

ROOT = pathlib.Path(__file__).resolve().parents[2]


def _load():
    """`to_pmml` and its error: of the installed package, or of the sources where none is."""
    if importlib.util.find_spec("svmscore"):
        from svmscore._pmml import ConversionError, to_pmml
    else:
        folder = ROOT / "python" / "svmscore" / "_pmml"
        spec = importlib.util.spec_from_file_location(
            "svmscore_pmml", folder / "__init__.py", submodule_search_locations=[str(folder)]
        )
        module = sys.modules["svmscore_pmml"] = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(module)
        ConversionError, to_pmml = module.ConversionError, module.to_pmml
    return to_pmml, ConversionError


to_pmml, ConversionError = _load()


def _program():
    given = os.environ.get("SVMSCORE_PROGRAM")
    builds = [ROOT / "build" / preset / "bin" / "svmscore" for preset in ("release", "dev")]
    found = [given] if given else [str(path) for path in builds if path.exists()]
    if not found:
        raise RuntimeError("no svmscore is built; build it, or set SVMSCORE_PROGRAM to one")
    return found[0]


PROGRAM = _program()


def run(*arguments, text=None):
    return subprocess.run(
        [PROGRAM, *map(str, arguments)], input=text, capture_output=True, text=True
    )


def table(rows):
    """Rows as a DataFrame, under the names that to_pmml gives to columns without one."""
    if isinstance(rows, pd.DataFrame):
        return rows
    return pd.DataFrame(rows, columns=[f"x{i}" for i in range(rows.shape[1])])


def score(document, rows, folder, columns="all"):
    """What svmscore writes about the rows: the columns, as text, and decision values. The document
    must be read without a remark, and every row be scored."""
    path = folder / "model.pmml"
    path.write_text(document, encoding="utf-8")
    result = run(
        "score",
        path,
        "--columns",
        columns,
        "--decisions",
        "--strict-document",
        text=table(rows).to_csv(index=False),
    )
    assert result.returncode == 0, result.stderr
    assert len(result.stderr.splitlines()) == 1, result.stderr  # the closing counts
    scored = pd.read_csv(io.StringIO(result.stdout), keep_default_na=False, dtype=str)
    assert (scored["status"] == "0").all(), result.stderr
    return scored


def numbers(scored, prefix):
    """(n, columns) of the columns whose names start with `prefix`."""
    return scored.filter(regex=f"^{prefix}").to_numpy(dtype=float)


def texts(classes):
    """Classes as documents spell them."""
    classes = np.asarray(classes)
    if classes.dtype.kind == "b":
        return np.where(classes, "true", "false")
    return classes.astype(str)


def verify(folder):
    """The document that `score` left in `folder` agrees with its own verification records."""
    result = run("verify", folder / "model.pmml", "--strict-document")
    assert result.returncode == 0, result.stdout + result.stderr
    assert " 0 disagree" in result.stdout and not result.stdout.startswith("0 "), result.stdout


def findings(folder):
    """The names of the doctor's findings about the document in `folder`."""
    report = json.loads(run("doctor", folder / "model.pmml", "--json").stdout)
    return {finding["name"] for finding in report["findings"]}


def magnitudes(estimator, rows):
    """(n, machines) sums of the absolute terms of each decision value."""
    kernel, dual = estimator.kernel, np.abs(estimator._dual_coef_)
    names = {"poly": ("gamma", "coef0", "degree"), "rbf": ("gamma",), "sigmoid": ("gamma", "coef0")}
    values = {"gamma": estimator._gamma, "coef0": estimator.coef0, "degree": estimator.degree}
    parameters = {n: values[n] for n in names.get(kernel, ())}
    k = np.abs(pairwise_kernels(rows, estimator.support_vectors_, metric=kernel, **parameters))
    if not hasattr(estimator, "classes_"):
        return k @ dual.T + np.abs(estimator._intercept_)
    ends = np.cumsum(estimator.n_support_)
    part = [slice(end - n, end) for end, n in zip(ends, estimator.n_support_)]
    count = len(part)
    sums = [
        k[:, part[i]] @ dual[j - 1, part[i]] + k[:, part[j]] @ dual[i, part[j]]
        for i in range(count)
        for j in range(i + 1, count)
    ]
    return np.column_stack(sums) + np.abs(estimator._intercept_)


def mixed(count=60, seed=0):
    """Columns a, b, c: numbers, those of c with gaps; i: whole numbers; k, m: texts, those of m
    with gaps; t: truth values; d: numbers as categories, with gaps; id: texts that occur once."""
    generator = np.random.default_rng(seed)
    gaps = lambda column: column.mask(generator.random(count) < 0.2)
    colours = pd.Series(generator.choice(["red", 'dark <red> & "so"', " a, b ", "größer"], count))
    return pd.DataFrame(
        {
            "a": generator.normal(3, 1.7, count),
            "b": generator.gamma(2, 5, count),
            "c": gaps(pd.Series(generator.normal(-1, 0.3, count))),
            "i": generator.integers(0, 5, count),
            "k": colours,
            "m": gaps(
                pd.Series(generator.choice(["x", "y", "z"], count, p=[0.6, 0.3, 0.1]), dtype=object)
            ),
            "t": generator.random(count) < 0.3,
            "d": gaps(pd.Series(generator.choice([0.1, 2.0, 1e-7], count))),
            "id": [f"case {n}" for n in range(count)],
        }
    )
