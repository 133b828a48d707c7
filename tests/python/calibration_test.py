"""Calibrated documents: the program's, and what other programs fit to the same cases."""

import csv
import io
import json
import pathlib
import subprocess

import numpy as np
import pandas as pd
import pytest
from sklearn.calibration import _SigmoidCalibration

import svmscore
from conftest import EXAMPLES, PROGRAM

LABELS = {"iris": "species", "tumour": "diagnosis", "diabetes": "progression"}


@pytest.fixture(autouse=True)
def one_date(monkeypatch):
    monkeypatch.setenv("SOURCE_DATE_EPOCH", "86400")


def frame_of(example):
    return pd.read_csv(EXAMPLES / example / "cases.csv")


def program(example, cases, tmp_path, *options):
    """The document that the program writes, and its report."""
    written = tmp_path / "calibrated.pmml"
    done = subprocess.run(
        [PROGRAM, "calibrate", EXAMPLES / example / "model.pmml", "-", "--actual", LABELS[example],
         "--json", "-o", written, *options],
        input=cases.to_csv(index=False), capture_output=True, text=True, check=True,
    )
    return written.read_bytes(), json.loads(done.stdout)


@pytest.mark.parametrize("example", LABELS)
def test_the_document_is_the_programs(example, tmp_path):
    frame, label = frame_of(example), LABELS[example]
    wanted, report = program(example, frame, tmp_path)
    source = EXAMPLES / example / "model.pmml"
    polars = __import__("polars").from_pandas(frame)
    rows = list(csv.DictReader(io.StringIO(frame.to_csv(index=False))))
    for X, y in ((frame, frame[label]), (frame, frame[[label]]), (polars, polars[label]),
                 (frame.to_dict("list"), list(frame[label])),
                 (rows, np.array([row[label] for row in rows])),
                 (frame, pd.Categorical(frame[label]))):
        calibration = svmscore.calibrate(source, X, y)
        assert calibration.document == wanted and calibration.report == report
    model = svmscore.load(source)
    again = model.calibrate(frame[model.feature_names_in_], frame[label].to_numpy())
    assert again.document == wanted
    # A model that was calibrated has the same sigmoids when it is calibrated again.
    assert again.model.calibrate(frame, frame[label]).report.get("pairs") == report.get("pairs")


def test_numbers_arrive_to_the_last_bit(tmp_path):
    """Of every double there is a shortest text, which the program reads as the same double."""
    random = np.random.default_rng(5)
    frame = frame_of("tumour")
    numbers = frame.columns[:-1]
    frame[numbers] *= random.uniform(0.9, 1.1, frame[numbers].shape)
    frame.iloc[3, 2] = np.nan
    frame.loc[5, "diagnosis"] = None
    wanted, report = program("tumour", frame, tmp_path)
    calibration = svmscore.calibrate(EXAMPLES / "tumour/model.pmml", frame, frame["diagnosis"])
    assert calibration.document == wanted and calibration.report == report
    assert report["rows"]["unlabelled"] == 1 and report["rows"]["unscored"] == 1


def test_the_confidence_is_kept(tmp_path):
    frame = frame_of("diabetes")
    wanted, report = program("diabetes", frame, tmp_path, "--confidence", "0.8")
    source = EXAMPLES / "diabetes/model.pmml"
    calibration = svmscore.calibrate(source, frame, frame["progression"], confidence=0.8)
    assert calibration.document == wanted and report["confidence"] == 0.8
    # The residual of this rank is what NumPy has as the conformal quantile.
    model = svmscore.load(source)
    residuals = np.abs(frame["progression"] - model.predict(frame))
    level = np.ceil((len(residuals) + 1) * 0.8) / len(residuals)
    assert report["halfWidth"] == np.quantile(residuals, level, method="inverted_cdf")
    table = calibration.model.table(frame, columns="all")
    covered = (table["ci_lower"] <= frame["progression"]) & (frame["progression"] <= table["ci_upper"])
    assert covered.sum() == report["rank"]


def labels_of_numbers(kind):
    """A document whose categories are of that type, cases, and their labels."""
    from sklearn.svm import SVC

    random = np.random.default_rng(8)
    X = random.normal(size=(300, 2))
    y = (X[:, 0] + random.normal(size=300) > 0).astype(kind)
    estimator = SVC(gamma=0.5).fit(X[:100], y[:100])
    return svmscore.load(svmscore.to_pmml(estimator)), X[100:], y[100:]


@pytest.mark.parametrize("kind", (int, bool))
def test_labels_of_any_type_and_the_sigmoid_of_scikit_learn(kind):
    model, X, y = labels_of_numbers(kind)
    decisions = model.decision_function(X)
    calibration = model.calibrate(X, y)
    pair = calibration.report["pairs"][0]
    assert calibration.report["rows"]["used"] == 200
    theirs = _SigmoidCalibration().fit(decisions, y == model.classes_[0])
    assert abs(theirs.a_ - pair["A"]) < 1e-4 and abs(theirs.b_ - pair["B"]) < 1e-4
    mine = calibration.model.predict_proba(X)
    assert np.abs(mine[:, 0] - theirs.predict(decisions)).max() < 1e-4
    assert (calibration.model.classes_ == model.classes_).all()
    for other in (y.astype(float), y.astype(object), pd.array(y, dtype="boolean" if kind is bool else "Int64")):
        if kind is bool and getattr(other, "dtype", None) == float:
            continue  # 1.0 is no boolean
        assert model.calibrate(X, other).report == calibration.report


def test_what_does_not_do_is_told():
    frame = frame_of("iris")
    source, y = EXAMPLES / "iris/model.pmml", frame["species"]
    line = EXAMPLES / "diabetes/model.pmml"
    numbers = frame_of("diabetes")
    for arguments, options, error, message in (
        ((source, frame, y[:-1]), {}, ValueError, "50 cases but 49 labels"),
        ((source, frame, frame[["species", "petal_width"]]), {}, ValueError, "one column"),
        ((source, frame.drop(columns="petal_width"), y), {}, svmscore.TableError, "petal_width"),
        ((source, frame, ["rose"] * 50), {}, svmscore.TableError, '"rose", categories "setosa"'),
        ((source, frame, y.where(y != "setosa")), {}, svmscore.TableError, "label setosa"),
        ((source, frame[:0], y[:0]), {}, svmscore.TableError, "no rows"),
        ((line, numbers[:18], numbers["progression"][:18]), {}, svmscore.TableError, "it takes 19"),
        ((line, numbers, numbers["progression"]), {"confidence": 1}, ValueError, "below 1"),
        ((b"<PMML", frame, y), {}, svmscore.DocumentError, "XML"),
        ((svmscore.load(source, as_is=True), frame, y), {}, ValueError, "as_is"),
        ((source, frame, y), {"limits": {"document-size": 10}}, svmscore.DocumentError, "limit"),
    ):
        with pytest.raises(error, match=message):
            svmscore.calibrate(*arguments, **options)


def test_the_doctor_compares_with_what_cases_are():
    frame = frame_of("tumour")
    source = EXAMPLES / "tumour/model.pmml"
    actual = frame["diagnosis"]
    assert svmscore.doctor(source, frame, actual=actual)["findings"] == []
    sure = pathlib.Path(source).read_text().replace(' A="-3.2', ' A="-32')
    [finding] = svmscore.doctor(sure, frame, actual=actual)["findings"]
    assert finding["name"] == "probabilities-off" and "too sure" in finding["what"]
    both = svmscore.doctor(sure, frame, actual, actual=actual)
    assert both["agreement"]["accuracy"] > 0.9 and finding in both["findings"]
    with pytest.raises(ValueError, match="cases"):
        svmscore.doctor(source, actual=actual)
    with pytest.raises(ValueError, match="169 cases but 168"):
        svmscore.doctor(source, frame, actual=actual[1:])
