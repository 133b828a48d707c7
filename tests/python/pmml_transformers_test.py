"""Transformers of scikit-learn, written by `to_pmml`, give the same columns, to the last bit."""

import warnings

import numpy as np
import pytest
from pmml_support import ConversionError, mixed, numbers, run, score, texts, to_pmml, verify
from sklearn.compose import ColumnTransformer, TransformedTargetRegressor
from sklearn.decomposition import PCA
from sklearn.feature_selection import SelectKBest, VarianceThreshold
from sklearn.impute import MissingIndicator, SimpleImputer
from sklearn.pipeline import FeatureUnion, Pipeline, make_pipeline
from sklearn.preprocessing import (
    Binarizer, FunctionTransformer, MaxAbsScaler, MinMaxScaler, OneHotEncoder, OrdinalEncoder,
    PolynomialFeatures, RobustScaler, StandardScaler,
)
from sklearn.svm import SVC, SVR, LinearSVC


@pytest.fixture(autouse=True)
def no_warnings():
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        yield


def check_columns(transformer, rows, folder, unseen=None, tolerance=0.0):
    """Compares all columns that `transformer` makes. They are read as the decision values of a
    linear machine for each, whose only weight is that of its column."""
    answers = np.arange(len(rows)) % 3
    pipeline = make_pipeline(transformer, LinearSVC(max_iter=5)).fit(rows, answers)
    linear, count = pipeline[-1], pipeline[-1].coef_.shape[1]
    machines = max(count, 3)
    linear.coef_ = np.eye(count)[np.arange(machines) % count]
    linear.intercept_, linear.classes_ = np.zeros(machines), np.arange(machines)
    rows = rows if unseen is None else unseen
    expected = pipeline[:-1].transform(rows)
    expected = np.asarray(getattr(expected, "toarray", lambda: expected)(), dtype=float)
    scored = score(to_pmml(pipeline, verification=rows), rows, folder)
    got = -numbers(scored, "decision")[:, :count]
    assert (np.abs(got - expected) <= tolerance * np.abs(expected)).all()
    assert (scored["prediction"] == texts(pipeline.predict(rows))).all()
    verify(folder)


NUMBERS = ["a", "b"]
SCALERS = (
    StandardScaler(), StandardScaler(with_mean=False), StandardScaler(with_std=False),
    MinMaxScaler(), MinMaxScaler((-1, 3), clip=True), MaxAbsScaler(), RobustScaler(),
    RobustScaler(with_centering=False), RobustScaler(with_scaling=False, quantile_range=(10, 90)),
    Binarizer(threshold=3), "passthrough", FunctionTransformer(),
    PolynomialFeatures(2), PolynomialFeatures(3, include_bias=False),
    PolynomialFeatures((2, 3), interaction_only=True), SelectKBest(k=1), VarianceThreshold(2.9),
)


@pytest.mark.parametrize("transformer", SCALERS, ids=str)
def test_transformers_of_numbers(transformer, tmp_path):
    rows = mixed()[NUMBERS + ["i"]]
    check_columns(transformer, rows.iloc[:40], tmp_path, unseen=rows)


@pytest.mark.parametrize(
    "function",
    (np.log, np.log1p, np.exp, np.expm1, np.sqrt, np.abs, np.square, np.log10, np.negative,
     np.reciprocal, np.floor, np.ceil, np.rint, np.sin, np.cos, np.tan, np.sinh, np.cosh, np.tanh,
     np.arctan, np.exp2, np.fabs, np.positive, np.deg2rad),
    ids=lambda f: f.__name__,
)
def test_functions(function, tmp_path):
    check_columns(FunctionTransformer(function), mixed()[["b"]], tmp_path, tolerance=1e-15)


def imputed(transformer):
    return make_pipeline(SimpleImputer(), transformer)


@pytest.mark.parametrize(
    "transformer, columns",
    (
        *((SimpleImputer(strategy=s), ["a", "c"]) for s in ("mean", "median", "most_frequent")),
        (SimpleImputer(strategy="constant", fill_value=-7.5, add_indicator=True), ["a", "c"]),
        (imputed(StandardScaler()), ["c", "b"]),
        (make_pipeline(MinMaxScaler(clip=True), SimpleImputer()), ["c"]),
        (make_pipeline(StandardScaler(), SimpleImputer(add_indicator=True)), ["c", "a"]),
        (SimpleImputer(missing_values=2), ["i", "a"]),
        (FeatureUnion([("gap", MissingIndicator()), ("fill", SimpleImputer())]), ["a", "c", "d"]),
        (OneHotEncoder(), ["k", "i", "t"]),
        (OneHotEncoder(drop="first"), ["k", "i"]), (OneHotEncoder(drop="if_binary"), ["k", "t"]),
        (OneHotEncoder(), ["m", "d"]),  # a gap is a category
        (OneHotEncoder(min_frequency=15), ["k", "m"]),
        (OneHotEncoder(max_categories=3, handle_unknown="infrequent_if_exist"), ["k", "m", "i"]),
        (OneHotEncoder(max_categories=2, drop="first"), ["k"]),
        (OneHotEncoder(max_categories=1, handle_unknown="infrequent_if_exist"), ["k", "m"]),
        (OneHotEncoder(min_frequency=9, handle_unknown="infrequent_if_exist"), ["m", "d"]),
        (OneHotEncoder(min_frequency=45, handle_unknown="infrequent_if_exist"), ["d"]),
        (make_pipeline(SimpleImputer(strategy="most_frequent"), OneHotEncoder()), ["m", "k"]),
        (make_pipeline(SimpleImputer(strategy="constant", fill_value=""), OneHotEncoder()), ["m"]),
        (make_pipeline(SimpleImputer(strategy="most_frequent"), OneHotEncoder()), ["d", "i"]),
        (make_pipeline(SimpleImputer(missing_values="red", strategy="constant", fill_value="?"),
                       OneHotEncoder()), ["k"]),
        (OrdinalEncoder(), ["k", "i", "t"]),
        (OrdinalEncoder(encoded_missing_value=-2), ["m", "d"]),
        (make_pipeline(OrdinalEncoder(), SimpleImputer()), ["m", "d"]),
        (make_pipeline(OneHotEncoder(sparse_output=False), StandardScaler()), ["k", "i"]),
        (make_pipeline(OneHotEncoder(), SelectKBest(k=3), PolynomialFeatures(2)), ["k", "i"]),
    ),
    ids=lambda p: "".join(p) if isinstance(p, list) else " ".join(str(p).split()),
)
def test_gaps_and_categories(transformer, columns, tmp_path):
    check_columns(transformer, mixed()[columns], tmp_path)


@pytest.mark.parametrize(
    "transformer, columns",
    (
        (OneHotEncoder(handle_unknown="ignore"), ["k", "i", "d"]),
        (OneHotEncoder(handle_unknown="infrequent_if_exist", max_categories=2), ["k", "m", "i"]),
        (OneHotEncoder(handle_unknown="infrequent_if_exist"), ["k"]),
        (OrdinalEncoder(handle_unknown="use_encoded_value", unknown_value=-1), ["k", "i"]),
    ),
    ids=str,
)
def test_unknown_categories(transformer, columns, tmp_path):
    unseen = mixed(seed=1)
    unseen.loc[::7, "k"], unseen.loc[::5, "i"], unseen.loc[::9, "m"] = "violet", 77, "w"
    check_columns(transformer, mixed()[columns], tmp_path, unseen[columns])


def test_columns_that_were_empty_in_the_fit(tmp_path):
    rows = mixed()[["c", "a"]].copy()
    rows.insert(1, "empty", np.nan)
    for imputer in (SimpleImputer(add_indicator=True), SimpleImputer(keep_empty_features=True)):
        check_columns(imputer, rows, tmp_path)


def test_gaps_that_the_fit_had_not_are_unknown(tmp_path):
    rows = mixed()[["k", "i"]]
    gaps = rows.astype(object)
    gaps.loc[::7, :] = None
    check_columns(OneHotEncoder(handle_unknown="ignore"), rows.astype(object), tmp_path, gaps)


def test_an_unknown_category_that_scikit_learn_rejects_fails(tmp_path):
    rows = mixed()[["k"]]
    estimator = make_pipeline(OneHotEncoder(), SVC()).fit(rows, np.arange(60) % 2)
    (tmp_path / "model.pmml").write_text(to_pmml(estimator), encoding="utf-8")
    assert "1 scored, 1 missing, 1 invalid" in run(
        "score", tmp_path / "model.pmml", text="k,z\nred,\nviolet,\n,\n"
    ).stderr


scaled = StandardScaler()
encoded = OneHotEncoder(handle_unknown="ignore")


@pytest.mark.parametrize(
    "transformers, remainder",
    (
        ([("n", scaled, ["b", "a"]), ("k", encoded, ["k"])], "drop"),
        ([("n", scaled, [1, 0]), ("k", encoded, [-5])], "drop"),
        ([("n", scaled, slice("a", "b")), ("k", encoded, slice(3, 5)), ("d", "drop", ["c"])],
         "drop"),
        ([("n", scaled, [True, True] + [False] * 7), ("k", encoded, lambda rows: ["k"])], "drop"),
        ([("n", "passthrough", slice(None, 2)), ("none", scaled, []), ("k", encoded, ["k", "i"]),
          ("d", "drop", ["c", "d", "m", "t", "id"])], "passthrough"),
        ([("k", encoded, ["k", "m"]), ("d", "drop", ["id", "t"])], imputed(scaled)),
        ([("n", imputed(PolynomialFeatures(2)), ["a", "c"]),
          ("in", ColumnTransformer([("k", encoded, [1])], remainder="passthrough"), ["i", "k"])],
         "drop"),
    ),
    ids=("names", "positions", "slices", "mask", "passthrough", "remainder", "nested"),
)
def test_choices_of_columns(transformers, remainder, tmp_path):
    transformer = ColumnTransformer(transformers, remainder=remainder, sparse_threshold=0)
    check_columns(transformer, mixed(), tmp_path)


def test_weights_and_nested_pipelines(tmp_path):
    union = FeatureUnion(
        [("p", "passthrough"), ("s", Pipeline([("a", "passthrough"), ("b", scaled)])),
         ("x", "drop")],
        transformer_weights={"s": 0.3},
    )
    check_columns(union, mixed()[NUMBERS], tmp_path)
    weighted = ColumnTransformer(
        [("s", scaled, ["b"]), ("p", "passthrough", ["a"])], transformer_weights={"p": 0.1}
    )
    check_columns(weighted, mixed()[NUMBERS], tmp_path)


def test_columns_that_are_not_used_are_no_inputs():
    rows = mixed()
    chosen = ColumnTransformer([("n", scaled, ["a"]), ("k", encoded, ["k"])])
    document = to_pmml(make_pipeline(chosen, SVC()).fit(rows, rows["t"]))
    assert document.count("<MiningField ") == 3 and '"id"' not in document


@pytest.mark.parametrize(
    "transformer",
    (StandardScaler(), RobustScaler(), MaxAbsScaler(), MinMaxScaler((2, 5)), FunctionTransformer()),
    ids=str,
)
def test_targets_are_scaled_back(transformer, tmp_path):
    rows = mixed()[NUMBERS]
    answers = 100 + 30 * rows["a"] - rows["b"]
    for estimator in (
        TransformedTargetRegressor(make_pipeline(StandardScaler(), SVR()), transformer=transformer),
        make_pipeline(StandardScaler(), TransformedTargetRegressor(SVR(), transformer=transformer)),
    ):
        estimator.fit(rows, answers)
        scored = score(to_pmml(estimator, verification=rows), rows, tmp_path)
        expected = estimator.predict(rows)
        assert np.abs(numbers(scored, "prediction")[:, 0] / expected - 1).max() < 1e-12
        verify(tmp_path)


class Unknown(StandardScaler):
    """Nobody knows what it does."""


ROWS = mixed()
SPLIT = ColumnTransformer([("n", scaled, ["i"]), ("k", OneHotEncoder(), ["i"])])
FIVE, SIX = (OneHotEncoder(categories=[list(range(n))]) for n in (5, 6))


@pytest.mark.parametrize(
    "transformer, columns, message",
    (
        (Unknown(), ["a"], r"step 'unknown' \(Unknown\): .* no form"),
        (PCA(2), ["a", "b"], r"step 'pca' \(PCA\): .* no form .*; replace it by one of Binarizer"),
        (FunctionTransformer(lambda x: x * 2), ["a"], "'functiontransformer' .*<lambda>.*log1p"),
        (FunctionTransformer(np.clip, kw_args={"a_min": 0, "a_max": 1}), ["a"],
         "clip with kw_args"),
        (ColumnTransformer([("n", make_pipeline(PCA(1)), ["a", "b"])]), ["a", "b"],
         r"step 'columntransformer.n.pca'"),
        (ColumnTransformer([("5", FIVE, ["i"]), ("6", SIX, ["i"])]), ["i"],
         r"step 'columntransformer.6' .*other categories of 'i'"),
        (SPLIT, ["i"], "'i' is computed with, and an encoder rejects unknown"),
        (make_pipeline(StandardScaler(), OneHotEncoder()), ["i"], "handle_unknown='ignore'"),
    ),
)
def test_what_cannot_be_written_names_the_step(transformer, columns, message):
    estimator = make_pipeline(transformer, SVC()).fit(ROWS[columns], ROWS["t"])
    with pytest.raises(ConversionError, match=message):
        to_pmml(estimator)
    assert issubclass(ConversionError, ValueError)


def test_a_target_on_another_scale_is_an_error():
    estimator = TransformedTargetRegressor(SVR(), func=np.log, inverse_func=np.exp)
    estimator.fit(ROWS[["a"]], ROWS["b"])
    with pytest.raises(ConversionError, match="'transformer'.*factor and a constant"):
        to_pmml(estimator)
