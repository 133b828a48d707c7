"""Estimators of scikit-learn, written by `to_pmml`, score alike."""

import re
import warnings
import xml.etree.ElementTree as ET

import numpy as np
import pandas as pd
import pytest
from pmml_support import (
    ConversionError, findings, magnitudes, numbers, run, score, table, texts, to_pmml, verify,
)
from scipy import sparse
from sklearn import datasets
from sklearn.calibration import CalibratedClassifierCV
from sklearn.exceptions import NotFittedError
from sklearn.impute import SimpleImputer
from sklearn.linear_model import LogisticRegression, SGDClassifier, SGDRegressor
from sklearn.model_selection import GridSearchCV
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler
from sklearn.svm import SVC, SVR, LinearSVC, LinearSVR, NuSVC, NuSVR, OneClassSVM

# The only finding: a column that has one value in all vectors, as pixels at the edge of digits.
OF_THE_DATA = {"constant-field"}
KERNELS = ("linear", "poly", "rbf", "sigmoid")


@pytest.fixture(autouse=True)
def no_warnings():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        yield


def data(name, scaled=False):
    rows, answers = getattr(datasets, f"load_{name}")(return_X_y=True)
    if name == "digits":
        rows, answers = rows[:700], answers[:700]
    return (StandardScaler().fit_transform(rows) if scaled else rows), answers


def check_classifier(estimator, rows, folder, tolerance=1e-12):
    document = to_pmml(estimator, verification=rows[::17])
    scored = score(document, rows, folder)
    assert (scored["prediction"] == texts(estimator.predict(rows))).all()
    values = estimator.decision_function(rows).reshape(len(rows), -1)
    if not (hasattr(estimator, "n_support_") and values.shape[1] == 1):
        values = -values  # what PMML compares is below 0 for the first category
    scale = magnitudes(estimator, rows) if hasattr(estimator, "n_support_") else (
        np.abs(rows) @ np.abs(estimator.coef_.T) + np.abs(estimator.intercept_))
    assert (np.abs(numbers(scored, "decision") - values) <= tolerance * scale).all()
    verify(folder)
    assert findings(folder) <= OF_THE_DATA


@pytest.mark.parametrize("scaled", (False, True), ids=("raw", "scaled"))
@pytest.mark.parametrize("kernel", KERNELS)
@pytest.mark.parametrize("name", ("iris", "wine", "breast_cancer", "digits"))
def test_svc_has_the_classes_and_decision_values(name, kernel, scaled, tmp_path):
    rows, answers = data(name, scaled)
    if kernel in ("linear", "poly") and name == "breast_cancer" and not scaled:
        rows = rows / rows.max(axis=0)  # else the fit takes minutes
    estimator = SVC(kernel=kernel, coef0=0.5, decision_function_shape="ovo")
    check_classifier(estimator.fit(rows, answers), rows, tmp_path)


@pytest.mark.parametrize(
    "estimator",
    (
        SVC(gamma="auto", class_weight="balanced", decision_function_shape="ovo"),
        SVC(gamma=0.3, kernel="poly", degree=2, C=10, decision_function_shape="ovo"),
        NuSVC(nu=0.2, decision_function_shape="ovo"),
        LinearSVC(), LinearSVC(multi_class="crammer_singer"), LinearSVC(fit_intercept=False),
        SGDClassifier(random_state=1),
    ),
    ids=str,
)
@pytest.mark.parametrize("classes", (2, 3))
def test_other_classifiers(estimator, classes, tmp_path):
    rows, answers = data("wine", scaled=True)
    chosen = answers < classes
    tolerance = 1e-12 if hasattr(estimator, "kernel") else 1e-10
    check_classifier(
        estimator.fit(rows[chosen], answers[chosen]), rows[chosen], tmp_path, tolerance
    )


@pytest.mark.parametrize("name", ("iris", "digits"))
def test_probabilities_of_several_classes(name, tmp_path):
    rows, answers = data(name)
    estimator = SVC(probability=True, random_state=1).fit(rows, answers)
    scored = score(to_pmml(estimator, verification=rows[::17]), rows, tmp_path)
    expected = estimator.predict_proba(rows)
    assert np.abs(numbers(scored, "probability") - expected).max() < 1e-7
    assert (scored["prediction"] == texts(estimator.classes_[expected.argmax(axis=1)])).all()
    verify(tmp_path)
    assert findings(tmp_path) <= OF_THE_DATA


def test_probabilities_of_two_classes(tmp_path):
    rows, answers = data("breast_cancer", scaled=True)
    estimator = SVC(probability=True, random_state=1).fit(rows, answers)
    scored = score(to_pmml(estimator, verification=rows[::17]), rows, tmp_path)
    value = -numbers(scored, "decision")[:, 0]
    first = 1 / (1 + np.exp(estimator.probA_[0] * value + estimator.probB_[0]))
    first = np.clip(first, 1e-7, 1 - 1e-7)
    expected = np.column_stack([first, 1 - first])
    assert np.abs(numbers(scored, "probability") - expected).max() <= 1e-15
    assert (scored["prediction"] == texts(expected.argmax(axis=1))).all()
    verify(tmp_path)
    assert findings(tmp_path) <= OF_THE_DATA


@pytest.mark.parametrize("estimator", (SVC(), LinearSVC()), ids=str)
def test_a_calibrated_classifier_of_two_classes(estimator, tmp_path):
    rows, answers = data("breast_cancer", scaled=True)
    calibrated = CalibratedClassifierCV(estimator, ensemble=False).fit(rows, answers)
    scored = score(to_pmml(calibrated, verification=rows[::17]), rows, tmp_path)
    expected = np.clip(calibrated.predict_proba(rows), 1e-7, 1 - 1e-7)
    assert np.abs(numbers(scored, "probability") - expected).max() < 1e-13
    assert (scored["prediction"] == texts(calibrated.predict(rows))).all()
    verify(tmp_path)
    assert findings(tmp_path) <= OF_THE_DATA


@pytest.mark.parametrize("scaled", (False, True), ids=("raw", "scaled"))
@pytest.mark.parametrize(
    "estimator",
    (*(SVR(kernel=k, coef0=0.5) for k in KERNELS), NuSVR(C=30.0), LinearSVR(random_state=1),
     LinearSVR(loss="squared_epsilon_insensitive", dual=False),
     SGDRegressor(loss="epsilon_insensitive", random_state=1)),
    ids=str,
)
def test_regressions(estimator, scaled, tmp_path):
    rows, answers = data("diabetes", scaled)
    estimator.fit(rows, answers)
    scored = score(to_pmml(estimator, verification=rows[::50]), rows, tmp_path)
    difference = np.abs(numbers(scored, "prediction")[:, 0] - estimator.predict(rows))
    if hasattr(estimator, "kernel"):
        assert (difference <= 1e-12 * magnitudes(estimator, rows)[:, 0]).all()
    else:
        assert (difference <= 1e-10 * np.abs(estimator.predict(rows)).max()).all()
    verify(tmp_path)
    assert findings(tmp_path) <= OF_THE_DATA


@pytest.mark.parametrize("kernel", KERNELS)
def test_one_class_models_predict_signs(kernel, tmp_path):
    rows, _ = data("iris", scaled=True)
    estimator = OneClassSVM(kernel=kernel, nu=0.2).fit(rows)
    scored = score(to_pmml(estimator, verification=rows[::17]), rows, tmp_path)
    assert (scored["prediction"] == texts(estimator.predict(rows))).all()
    difference = numbers(scored, "decision")[:, 0] + estimator.decision_function(rows)
    assert (np.abs(difference) <= 1e-12 * magnitudes(estimator, rows)[:, 0]).all()
    verify(tmp_path)
    assert findings(tmp_path) <= OF_THE_DATA


@pytest.mark.parametrize(
    "classes, data_type, values",
    (
        (["setosa", 'a "b" & <c>', "größer"], "string", None),
        ([-1, 0, 10], "integer", None),
        ([-3.0, 1.0, 2.0], "double", ["-3", "1", "2"]),
        ([False, True], "boolean", ["false", "true"]),
    ),
    ids=("strings", "integers", "numbers", "booleans"),
)
def test_classes_keep_type_and_order(classes, data_type, values, tmp_path):
    rows, answers = data("iris")
    rows, answers = rows[answers < len(classes)], answers[answers < len(classes)]
    estimator = SVC().fit(rows, np.array(classes)[answers])
    document = to_pmml(estimator, target_name="kind")
    root = ET.fromstring(document)
    field = next(f for f in root.iterfind(".//{*}DataField") if f.get("name") == "kind")
    expected = values or [str(c) for c in sorted(classes)]
    assert field.get("dataType") == data_type
    assert [v.get("value") for v in field] == expected
    by_class = dict(zip(estimator.classes_, expected))
    scored = score(document, rows, tmp_path)
    assert list(scored["prediction"]) == [by_class[c] for c in estimator.predict(rows)]


def test_classes_and_columns_can_be_named(tmp_path):
    iris = datasets.load_iris()
    estimator = LinearSVC().fit(iris.data, iris.target)
    names = [n.replace(" (cm)", "") for n in iris.feature_names]
    rows = pd.DataFrame(iris.data, columns=names)
    expected = iris.target_names[estimator.predict(iris.data)]
    for categories in (iris.target_names, dict(enumerate(iris.target_names))):
        document = to_pmml(
            estimator, feature_names=names, categories=categories, verification=iris.data[::17]
        )
        assert (score(document, rows, tmp_path)["prediction"] == expected).all()
        verify(tmp_path)


def test_a_decision_value_of_zero_means_the_class_of_scikit_learn(tmp_path):
    kernel = SVC(kernel="linear").fit([[-1.0], [1.0]], ["a", "b"])
    linear = LinearSVC().fit([[-1.0], [1.0]], ["a", "b"])
    linear.coef_, linear.intercept_ = np.array([[1.0]]), np.array([0.0])
    several = LinearSVC().fit([[-1.0], [0.0], [1.0]], ["a", "b", "c"])
    several.coef_, several.intercept_ = np.array([[-1.0], [1.0], [1.0]]), np.zeros(3)
    rows = np.array([[-0.5], [0.0], [0.5]])
    assert kernel.decision_function(rows)[1] == 0
    for estimator in (kernel, linear, several):
        predicted = score(to_pmml(estimator), rows, tmp_path)["prediction"]
        assert list(predicted) == list(estimator.predict(rows))


def test_equal_votes_go_to_the_first_class(tmp_path):
    generator = np.random.default_rng(3)
    estimator = SVC(gamma=3.0, C=9.0, decision_function_shape="ovo")
    estimator.fit(generator.normal(size=(60, 2)), generator.choice(list("dacb"), 60))
    rows = generator.normal(size=(2000, 2))
    first = estimator.decision_function(rows) > 0
    pairs = [(i, j) for i in range(4) for j in range(i + 1, 4)]
    votes = np.zeros((len(rows), 4), int)
    for m, (i, j) in enumerate(pairs):
        votes[np.arange(len(rows)), np.where(first[:, m], i, j)] += 1
    assert ((votes == votes.max(axis=1, keepdims=True)).sum(axis=1) > 1).sum() > 20
    predicted = score(to_pmml(estimator), rows, tmp_path)["prediction"]
    assert (predicted == estimator.predict(rows)).all()


@pytest.mark.parametrize("estimator", (SVC(), NuSVC(), LinearSVC(), OneClassSVM()), ids=str)
def test_sparse_and_single_precision_fits(estimator, tmp_path):
    rows, answers = data("digits")
    rows = rows / 16
    for fitted_to in (sparse.csr_matrix(rows), rows.astype(np.float32)):
        estimator.fit(fitted_to, answers)
        document = to_pmml(estimator, verification=fitted_to[::100])
        scored = score(document, rows, tmp_path, "auto")
        assert (scored["predicted_y"] == texts(estimator.predict(fitted_to))).all()
        verify(tmp_path)


def test_a_vector_of_zeros_is_written_as_every_reader_takes_it(tmp_path):
    rows = np.array([[0.0, 0.0], [1.0, 2.0], [2.0, 1.0], [0.5, 0.0]])
    check_classifier(SVC(C=9.0).fit(rows, [0, 1, 1, 0]), rows, tmp_path)


def test_numbers_read_back_to_the_same_bits():
    rows, answers = data("wine")
    estimator = SVC(kernel="rbf").fit(rows[answers < 2], answers[answers < 2])
    root = ET.fromstring(to_pmml(estimator))
    coefficients = [float(c.get("value")) for c in root.iterfind(".//{*}Coefficient")]
    assert (np.array(coefficients) == -estimator._dual_coef_[0]).all()
    assert float(root.find(".//{*}RadialBasisKernelType").get("gamma")) == estimator._gamma
    entries = [[float(t) for t in e.text.split()] for e in root.iterfind(".//{*}REAL-Entries")]
    assert (np.array(entries) == estimator.support_vectors_).all()


def test_a_search_is_the_estimator_that_it_found(tmp_path):
    rows, answers = data("iris")
    search = GridSearchCV(make_pipeline(StandardScaler(), SVC()), {"svc__C": [0.1, 10]})
    search.fit(rows, answers)
    predicted = score(to_pmml(search, verification=rows[::17]), rows, tmp_path)["prediction"]
    assert (predicted == texts(search.predict(rows))).all()
    verify(tmp_path)


def test_a_wrong_verification_record_disagrees(tmp_path):
    rows, answers = data("diabetes")
    document = to_pmml(SVR().fit(rows, answers), verification=table(rows[:40]))
    assert document.count("<row>") == 10
    record = re.search("<c11>([^<]+)</c11>", document)
    wrong = document.replace(record.group(), f"<c11>{float(record.group(1)) * (1 + 1e-5)!r}</c11>")
    (tmp_path / "model.pmml").write_text(wrong)
    assert run("verify", tmp_path / "model.pmml").returncode == 1


def test_records_are_those_of_any_table():
    polars = pytest.importorskip("polars")
    frame = pd.DataFrame({"a": [1.0, np.nan, 3.0, 5.0], "b": [0.5, 2.0, 4.0, 1.0]})
    estimator = make_pipeline(SimpleImputer(), SVC()).fit(frame, [0, 1, 1, 0])
    wanted = to_pmml(estimator, verification=frame)
    assert wanted.count("<row>") == 4
    assert to_pmml(estimator, verification=polars.from_pandas(frame, nan_to_null=True)) == wanted
    with pytest.raises(ValueError, match="expecting 2 features"):
        to_pmml(fitted(SVC()), verification=np.ones((3, 1)))


def fitted(estimator, rows=((0.0, 1.0), (1.0, 3.0), (2.0, 0.0), (5.0, 5.0)), answers=(0, 1, 2, 2)):
    return estimator.fit(np.array(rows), np.array(answers))


@pytest.mark.parametrize(
    "estimator, options, message",
    (
        (fitted(SVC(kernel="precomputed"), np.eye(4)), {}, "^SVC: .* is precomputed.*; fit it"),
        (fitted(SVC(kernel=lambda a, b: a @ b.T)), {}, "its kernel is a function"),
        (fitted(SVC(break_ties=True)), {}, "break_ties=True"),
        (fitted(SGDClassifier(loss="log_loss")), {}, "loss 'log_loss'"),
        (fitted(LogisticRegression()), {}, "LogisticRegression: .* LinearSVC"),
        (fitted(SVR(epsilon=100)), {}, "no support vectors"),
        (fitted(SVC()), {"feature_names": ["a"]}, "1 names for 2 columns"),
        (fitted(SVC()), {"feature_names": ["a", "a"]}, "two fields are named 'a'"),
        (fitted(SVC()), {"target_name": "x1"}, "two fields are named 'x1'"),
        (fitted(SVC()), {"feature_names": ["a", "b\x01"]}, "XML does not allow"),
        (fitted(SVC()), {"categories": ["p", "q"]}, "2 names for 3 classes"),
        (fitted(SVC()), {"categories": ["p", "q", "q"]}, "not told apart"),
        (fitted(SVR()), {"categories": ["p"]}, "a regression"),
        (fitted(SVC()), {"categories": {0: "p", "1": "q"}}, "no class '1'.*0, 1, 2"),
        (fitted(SVC()), {"target_name": ""}, "target_name is empty"),
        (fitted(SVC()), {"verification": np.empty((0, 2))}, "no rows"),
    ),
)
def test_what_cannot_be_written_is_an_error(estimator, options, message):
    with pytest.raises(ConversionError, match=message):
        to_pmml(estimator, **options)


@pytest.mark.parametrize("estimator", (SVC(), make_pipeline(StandardScaler(), SVC())), ids=str)
def test_an_estimator_without_fit_is_an_error(estimator):
    with pytest.raises(NotFittedError):
        to_pmml(estimator)
