"""svmscore.sklearn: documents as estimators, on every supported version of scikit-learn."""

import copy
import pathlib
import pickle
import warnings

import numpy as np
import pandas
import pytest
import sklearn
from sklearn.base import clone
from sklearn.calibration import CalibratedClassifierCV
from sklearn.inspection import permutation_importance
from sklearn.model_selection import cross_val_predict, cross_val_score
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import FunctionTransformer
from sklearn.utils.multiclass import _ovr_decision_function
from sklearn.utils.validation import check_is_fitted

import svmscore
from svmscore.sklearn import PMMLClassifier, PMMLRegressor

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
VERSION = tuple(map(int, sklearn.__version__.split(".")[:2]))


def example(name):
    """The path of its document, its inputs, its answers."""
    cases = pandas.read_csv(EXAMPLES / name / "cases.csv")
    answers = cases.pop(cases.columns[-1])
    return str(EXAMPLES / name / "model.pmml"), cases, answers


def document(categories, machines, attributes="", data_type="string"):
    """Machines (target, alternate, slope, offset) on one input, x."""
    return f"""<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>
      <DataField name="x" optype="continuous" dataType="double"/>
      <DataField name="y" optype="categorical" dataType="{data_type}">
        {"".join(f'<Value value="{category}"/>' for category in categories)}</DataField>
      </DataDictionary><SupportVectorMachineModel functionName="classification"
        svmRepresentation="Coefficients" {attributes}>
      <MiningSchema><MiningField name="x"/><MiningField name="y" usageType="target"/></MiningSchema>
      <LinearKernelType/><VectorDictionary><VectorFields><FieldRef field="x"/></VectorFields>
      </VectorDictionary>{"".join(machine(*given) for given in machines)}
      </SupportVectorMachineModel></PMML>"""


def machine(target, alternate, slope, offset, threshold=None):
    names = f'targetCategory="{target}"'
    names += "" if alternate is None else f' alternateTargetCategory="{alternate}"'
    names += "" if threshold is None else f' threshold="{threshold}"'
    return f"""<SupportVectorMachine {names}><Coefficients absoluteValue="{offset}">
      <Coefficient value="{slope}"/></Coefficients></SupportVectorMachine>"""


ONE_AGAINST_ALL = 'classificationMethod="OneAgainstAll"'
ONE_AGAINST_ONE = 'classificationMethod="OneAgainstOne"'
OWN = [("b", None, 1, 0), ("c", None, -1, 0.2), ("a", None, 0, 0.1)]
PAIRS = [("b", "a", 1, 0), ("c", "b", -1, 0.3), ("a", "c", 1, 0.7)]
RULES = {
    "least": document("ab", [("a", "b", 1, 0.25)]),
    "most": document("ab", [("a", "b", 1, 0.25)], 'maxWins="true"'),
    "unsorted": document("ba", [("b", "a", 1, 0.25)]),
    "alternate first": document("ab", [("b", "a", 1, 0.25)], 'maxWins="true" threshold="0.5"'),
    "own threshold": document("ab", [("b", "a", 1, 0, -0.75)], 'threshold="9"'),
    "numbers": document([1, -1], [(1, -1, 1, 0)], 'maxWins="true"', "integer"),
    "all, least": document("bca", OWN, ONE_AGAINST_ALL),
    "all, most": document("bca", OWN, ONE_AGAINST_ALL + ' maxWins="true" threshold="3"'),
    "all, one without": document("bcad", OWN, ONE_AGAINST_ALL),
    "all, one twice": document("bca", [*OWN, ("a", None, 2, 0.3)], ONE_AGAINST_ALL),
    "pairs, least": document("abc", PAIRS, ONE_AGAINST_ONE),
    "pairs, most": document("cab", PAIRS, ONE_AGAINST_ONE + ' maxWins="true" threshold="0.1"'),
    "unknown alternate": document("ab", [("a", "z", 1, 0)]),
}


@pytest.fixture(autouse=True)
def without_remarks():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", svmscore.DocumentWarning)
        yield


def predicted_by(decisions, classes):
    """What scikit-learn takes such decisions for, and which rows are no ties."""
    if decisions.ndim == 1:
        return classes[(decisions > 0).astype(int)], decisions != 0
    ordered = np.sort(decisions, axis=1)
    return classes[decisions.argmax(axis=1)], ordered[:, -1] > ordered[:, -2]


@pytest.mark.parametrize("rule", RULES)
def test_the_largest_decision_is_the_prediction_under_every_rule(rule):
    classifier = PMMLClassifier(RULES[rule])
    X = np.linspace(-3, 3, 601).reshape(-1, 1) + 1e-4
    if rule == "unknown alternate":
        X = X[X < 0].reshape(-1, 1)  # the others cannot be scored
    assert list(classifier.classes_) == sorted(classifier.classes_)
    decisions = classifier.decision_function(X)
    assert decisions.shape == (
        (len(X),) if len(classifier.classes_) == 2 else (len(X), len(classifier.classes_))
    )
    guess, clear = predicted_by(decisions, classifier.classes_)
    predictions = classifier.predict(X)
    votes = np.round(decisions)  # equal votes are ties, which confidences may break another way
    tied = "pairs" in rule and (np.sort(votes, axis=1)[:, -1] == np.sort(votes, axis=1)[:, -2])
    assert (guess == predictions)[clear & ~np.asarray(tied)].all()
    assert clear.mean() > 0.99 and len(set(predictions)) > 1 or rule == "unknown alternate"


def test_an_unknown_category_has_no_place_among_the_pairs():
    assert svmscore.load(RULES["unknown alternate"]).decision_pairs == [("a", None)]


def test_binary_decisions_count_from_the_threshold():
    assert PMMLClassifier(RULES["own threshold"]).decision_function([[0.0], [-1.0]]).tolist() == [
        -0.75,
        0.25,
    ]
    assert PMMLClassifier(RULES["numbers"]).classes_.tolist() == [-1, 1]


def test_decisions_of_pairs_are_those_of_scikit_learn():
    path, X, _ = example("iris")
    raw = svmscore.load(path).decision_function(X)  # positive for the first of each pair: maxWins
    expected = _ovr_decision_function(raw <= 0, -raw, 3)
    np.testing.assert_allclose(
        PMMLClassifier(path).decision_function(X), expected, rtol=0, atol=1e-15
    )


@pytest.mark.parametrize("name", ["tumour", "digits"])
def test_calibrated_probabilities_decide(name):
    path, X, _ = example(name)
    classifier = PMMLClassifier(path)
    probabilities = classifier.predict_proba(X)
    own = svmscore.load(path)
    for place, label in enumerate(own.classes_):
        at = classifier.classes_.tolist().index(label)
        assert (probabilities[:, at] == own.predict_proba(X)[:, place]).all()
    for decisions in (probabilities, classifier.decision_function(X)):
        decisions = decisions[:, 1] - decisions[:, 0] if decisions.shape[1:] == (2,) else decisions
        assert (predicted_by(decisions, classifier.classes_)[0] == classifier.predict(X)).all()


def test_scorers_know_which_class_is_the_positive_one():
    path, X, y = example("tumour")  # its categories are not sorted
    assert cross_val_score(PMMLClassifier(path), X, y, scoring="roc_auc", cv=3).min() > 0.95
    assert cross_val_score(PMMLClassifier(path), X, y, scoring="neg_log_loss", cv=3).min() > -0.3


@pytest.mark.parametrize(
    "name, kind, least", [("iris", PMMLClassifier, 0.9), ("diabetes", PMMLRegressor, 0.3)]
)
def test_tools_of_scikit_learn_take_it(name, kind, least):
    path, X, y = example(name)
    estimator = kind(path)
    check_is_fitted(estimator)
    expected = svmscore.load(path).predict(X)
    assert estimator.n_features_in_ == X.shape[1]
    assert list(estimator.feature_names_in_) == list(X.columns)
    assert estimator.score(X, y) > least
    folds = cross_val_score(estimator, X, y, cv=3, n_jobs=2, error_score="raise")
    assert folds.mean() > least - 0.05
    assert (
        cross_val_predict(make_pipeline(FunctionTransformer(), estimator), X, y, cv=3) == expected
    ).all()
    importance = permutation_importance(
        estimator, X, y, n_repeats=2, random_state=0
    ).importances_mean
    assert importance.max() > 0.1 and len(importance) == X.shape[1]
    for copied in (
        clone(estimator),
        pickle.loads(pickle.dumps(estimator)),
        copy.deepcopy(estimator),
    ):
        assert (copied.predict(X.iloc[:, ::-1]) == expected).all()
    assert (estimator.predict(X.to_numpy()) == expected).all()
    assert estimator.get_params()["source"] == path


@pytest.mark.parametrize("name", ["iris", "tumour"])
def test_it_can_be_calibrated_as_it_is(name):
    path, X, y = example(name)
    classifier = PMMLClassifier(path)
    if VERSION >= (1, 6):
        from sklearn.frozen import FrozenEstimator

        calibrated = CalibratedClassifierCV(FrozenEstimator(classifier))
    else:
        calibrated = CalibratedClassifierCV(classifier, cv="prefit")
    calibrated.fit(X, y)
    assert calibrated.score(X, y) > 0.9
    assert list(calibrated.classes_) == sorted(set(y))


def test_pickles_and_clones_need_no_file(tmp_path):
    path = tmp_path / "model.pmml"
    path.write_text(RULES["most"])
    pickled = pickle.dumps(PMMLClassifier(path))
    shared = PMMLClassifier(svmscore.load(path))
    path.unlink()
    assert pickle.loads(pickled).predict([[2.0]]) == "a"
    assert clone(shared).model_ is shared.model_
    with pytest.raises(OSError):
        PMMLClassifier(path).fit([[2.0]])


def test_other_parameters_load_another_document():
    classifier = PMMLClassifier(RULES["most"])
    assert classifier.predict([[2.0]]) == "a"
    assert classifier.set_params(source=RULES["least"]).predict([[2.0]]) == "b"


def test_what_does_not_fit_is_said():
    path, X, y = example("iris")
    regression = str(EXAMPLES / "diabetes/model.pmml")
    for estimator, cases, answers, text in [
        (PMMLClassifier(regression), X, y, "use PMMLRegressor"),
        (PMMLRegressor(path), X, y, "use PMMLClassifier"),
        (PMMLClassifier(path), X.iloc[:, 1:], y, "sepal_length"),
        (PMMLClassifier(path), X.to_numpy()[:, 1:], y, "3 columns"),
        (PMMLClassifier(path), X, np.zeros(len(X)), "cannot predict"),
        (PMMLClassifier(svmscore.load(path), as_is=True), X, y, "loaded already"),
        (PMMLRegressor(regression), example("diabetes")[1], y, "of type"),
    ]:
        with pytest.raises(ValueError, match=text):
            estimator.fit(cases, answers)
    with pytest.warns(UserWarning, match="'rose'"):
        PMMLClassifier(path).fit(X, y.replace("setosa", "rose"))
    with pytest.raises(TypeError, match="read()"):
        PMMLClassifier(open(path, "rb")).fit(X, y)  # noqa: SIM115
    assert not hasattr(PMMLClassifier(path), "predict_proba")
    with pytest.raises(svmscore.ScoringError, match="row 1"):
        PMMLClassifier(path).predict(X.reset_index(drop=True).drop(index=1).reindex(range(len(X))))
