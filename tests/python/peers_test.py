"""Other readers and another producer of PMML. Needs requirements-peers.txt and a Java runtime (17)
beside what the other tests need.

What `to_pmml` writes is scored alike by JPMML-Evaluator and PMML4S, and what sklearn2pmml writes
for the same estimators is scored by svmscore as by scikit-learn.
"""

import warnings

import numpy as np
import pandas as pd
import pytest
from jpmml_evaluator import make_evaluator
from pmml_support import mixed, numbers, score, table, texts, to_pmml
from pypmml import Model
from sklearn.calibration import CalibratedClassifierCV
from sklearn.compose import ColumnTransformer, TransformedTargetRegressor
from sklearn.datasets import load_diabetes, load_iris
from sklearn.impute import SimpleImputer
from sklearn.linear_model import SGDClassifier
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import (
    FunctionTransformer, MaxAbsScaler, MinMaxScaler, OneHotEncoder, OrdinalEncoder,
    PolynomialFeatures, RobustScaler, StandardScaler,
)
from sklearn.svm import SVC, SVR, LinearSVC, LinearSVR, NuSVC, NuSVR, OneClassSVM
from sklearn2pmml import make_pmml_pipeline, sklearn2pmml

IRIS, DIABETES = load_iris(), load_diabetes()


def cases(rows):
    """One dictionary for each row, without what is missing."""
    records = table(rows).to_dict("records")
    return [{k: v for k, v in r.items() if not pd.isna(v)} for r in records]


def jpmml_evaluator(path, rows):
    evaluator = make_evaluator(str(path))
    evaluator.verify()
    names = table(rows).columns
    return pd.DataFrame([evaluator.evaluate({n: c.get(n) for n in names}) for c in cases(rows)])


def pmml4s(path, rows):
    model = Model.fromFile(str(path))
    return pd.DataFrame([dict(model.predict(case)) for case in cases(rows)])


READERS = (jpmml_evaluator, pmml4s)


def check_readers(estimator, rows, folder, expected=None):
    """The readers predict what scikit-learn does: classes, or numbers."""
    document = to_pmml(estimator, verification=rows)
    expected = estimator.predict(rows) if expected is None else expected
    score(document, rows, folder)
    for reader in READERS:
        results = reader(folder / "model.pmml", rows)
        got = results["predicted_y" if "predicted_y" in results else "y"]
        if expected.dtype.kind == "f":
            difference = np.abs(got.to_numpy(dtype=float) - expected)
            assert difference.max() <= 1e-12 * np.abs(expected).max(), reader.__name__
        else:
            got = [str(value).lower() for value in got]
            assert got == [t.lower() for t in texts(expected)], reader.__name__


@pytest.fixture(autouse=True)
def no_warnings():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        yield


@pytest.mark.parametrize(
    "estimator",
    (*(SVC(kernel=k, coef0=0.5) for k in ("linear", "poly", "rbf", "sigmoid")), NuSVC(),
     SVC(probability=True, random_state=1), LinearSVC(), SGDClassifier(random_state=1),
     make_pipeline(MinMaxScaler(clip=True), SVC())),
    ids=str,
)
@pytest.mark.parametrize("classes", (IRIS.target_names, [-5, 0, 3], [False, True]), ids=str)
def test_classifiers(estimator, classes, tmp_path):
    chosen = IRIS.target < len(classes)
    rows, answers = IRIS.data[chosen], np.array(classes)[IRIS.target[chosen]]
    check_readers(estimator.fit(rows, answers), rows[::3], tmp_path)


def test_a_calibrated_classifier(tmp_path):
    rows = IRIS.data[50:]
    estimator = CalibratedClassifierCV(LinearSVC(), ensemble=False)
    check_readers(estimator.fit(rows, IRIS.target[50:]), rows, tmp_path)


@pytest.mark.parametrize(
    "estimator",
    (SVR(C=50), NuSVR(kernel="poly"), LinearSVR(random_state=1),
     make_pipeline(RobustScaler(), PolynomialFeatures(2), SVR()),
     make_pipeline(FunctionTransformer(np.expm1), MaxAbsScaler(), SVR()),
     make_pipeline(FunctionTransformer(np.square), FunctionTransformer(np.log1p), SVR()),
     TransformedTargetRegressor(SVR(), transformer=StandardScaler())),
    ids=str,
)
def test_regressions(estimator, tmp_path):
    check_readers(estimator.fit(DIABETES.data, DIABETES.target), DIABETES.data[:80], tmp_path)


def test_one_class_models(tmp_path):
    estimator = OneClassSVM(nu=0.2).fit(IRIS.data)
    check_readers(estimator, IRIS.data, tmp_path)


def test_gaps_and_categories(tmp_path):
    rows = mixed(80)
    filled = make_pipeline(SimpleImputer(strategy="most_frequent"), OneHotEncoder())
    encoders = [
        ("n", make_pipeline(SimpleImputer(add_indicator=True), StandardScaler()), ["a", "c"]),
        ("k", OneHotEncoder(drop="first"), ["k"]),
        ("i", OneHotEncoder(handle_unknown="infrequent_if_exist", max_categories=3), ["i", "k"]),
        ("m", filled, ["m"]),
        ("t", OneHotEncoder(), ["t"]),
        ("o", OrdinalEncoder(handle_unknown="use_encoded_value", unknown_value=-1), ["k", "i"]),
        ("u", OneHotEncoder(handle_unknown="ignore"), ["d"]),
        ("c", make_pipeline(MinMaxScaler(clip=True), SimpleImputer()), ["c"]),
    ]
    for chosen in (encoders[:4], encoders[4:], encoders[:2] + encoders[3:5]):
        estimator = make_pipeline(ColumnTransformer(chosen), SVR(gamma=0.1))
        unseen = rows
        if not any(name == "k" for name, _, _ in chosen):
            unseen = rows.assign(k=rows["k"].where(rows.index % 9 > 0, "violet"))
            unseen["i"] = unseen["i"].where(rows.index % 7 > 0, 77)
        check_readers(estimator.fit(rows, rows["b"]), unseen, tmp_path)


@pytest.mark.parametrize(
    "estimator",
    (*(SVC(kernel=k, coef0=0.5) for k in ("linear", "poly", "rbf", "sigmoid")), NuSVC(),
     SVC(probability=True, random_state=1), SVR(), NuSVR(), OneClassSVM(nu=0.2),
     make_pipeline(StandardScaler(), SVC()), make_pipeline(MinMaxScaler(), SVR()),
     make_pipeline(SimpleImputer(), RobustScaler(), PolynomialFeatures(2), SVC())),
    ids=str,
)
def test_what_another_producer_writes_is_scored_as_by_scikit_learn(estimator, tmp_path):
    rows = pd.DataFrame(IRIS.data, columns=list("abcd"))
    estimator.fit(rows, IRIS.target)
    path = tmp_path / "other.pmml"
    pipeline = make_pmml_pipeline(estimator, active_fields=list("abcd"), target_fields=["kind"])
    sklearn2pmml(pipeline, str(path))
    expected = estimator.predict(rows)
    columns = "auto" if isinstance(estimator, OneClassSVM) else "all"
    scored = score(path.read_text(encoding="utf-8"), rows, tmp_path, columns)
    if isinstance(estimator, OneClassSVM):
        assert (scored["predict(outlier)"] == texts(expected)).all()
    elif expected.dtype.kind == "f":
        assert np.abs(numbers(scored, "prediction")[:, 0] - expected).max() < 1e-12
    else:
        assert (scored["prediction"] == texts(expected)).all()
