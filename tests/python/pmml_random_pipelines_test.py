"""Random pipelines, written by `to_pmml`, score alike. The same ten on every run."""

import tempfile
import warnings
from pathlib import Path

import numpy as np
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from pmml_support import magnitudes, mixed, numbers, score, texts, to_pmml, verify
from sklearn.compose import ColumnTransformer
from sklearn.feature_selection import SelectKBest
from sklearn.impute import SimpleImputer
from sklearn.pipeline import FeatureUnion, make_pipeline
from sklearn.preprocessing import (
    FunctionTransformer, MaxAbsScaler, MinMaxScaler, OneHotEncoder, OrdinalEncoder,
    PolynomialFeatures, RobustScaler, StandardScaler,
)
from sklearn.svm import SVC, SVR, NuSVR

rescaling = st.sampled_from([
    "passthrough", StandardScaler(), MinMaxScaler((-1, 1), clip=True), MaxAbsScaler(),
    RobustScaler(), FunctionTransformer(np.tanh),
    FeatureUnion([("s", StandardScaler()), ("p", "passthrough")]),
])
combining = st.sampled_from([
    "passthrough", PolynomialFeatures(2, include_bias=False), SelectKBest(k=2),
    PolynomialFeatures(2, interaction_only=True),
])
filling = st.builds(
    SimpleImputer,
    strategy=st.sampled_from(["mean", "median", "most_frequent"]),
    add_indicator=st.booleans(),
)
encoding = st.one_of(
    st.builds(OneHotEncoder, drop=st.sampled_from([None, "first"])),
    st.builds(
        OneHotEncoder,
        handle_unknown=st.sampled_from(["ignore", "infrequent_if_exist"]),
        max_categories=st.sampled_from([None, 2, 3]),
    ),
    st.builds(OrdinalEncoder, encoded_missing_value=st.just(-1)),
)
kernels = dict(
    kernel=st.sampled_from(["linear", "poly", "rbf", "sigmoid"]),
    gamma=st.sampled_from(["scale", "auto", 0.05]),
    coef0=st.sampled_from([0.0, 1.0]),
    degree=st.sampled_from([2, 3]),
    C=st.sampled_from([0.5, 5.0]),
)
estimators = st.one_of(
    st.builds(SVC, class_weight=st.sampled_from([None, "balanced"]),
              decision_function_shape=st.just("ovo"), **kernels),
    st.builds(SVR, **kernels),
    st.builds(NuSVR, **kernels),
)
pipelines = st.builds(
    lambda numeric, gaps, encoders, remainder, last, estimator: make_pipeline(
        ColumnTransformer(
            [("n", make_pipeline(*numeric), ["a", "b"]), ("g", make_pipeline(*gaps), ["c", "a"]),
             ("k", encoders[0], ["k", "i"]), ("m", encoders[1], ["m", "d"]),
             ("id", "drop", ["id"])],
            remainder=remainder,
        ),
        StandardScaler(with_mean=False), last, estimator,
    ),
    st.tuples(rescaling, combining), st.tuples(rescaling, filling, rescaling),
    st.tuples(encoding, encoding), st.sampled_from(["drop", OneHotEncoder()]), rescaling,
    estimators,
)


@settings(
    max_examples=10, derandomize=True, deadline=None, database=None,
    suppress_health_check=list(HealthCheck),
)
@given(pipelines, st.integers(2, 6), st.integers(0, 1000))
def test_random_pipelines(pipeline, classes, seed):
    rows = mixed(90, seed)
    answers = np.round(rows["a"] * 2 + rows["b"]).to_numpy() % classes
    with warnings.catch_warnings(), tempfile.TemporaryDirectory() as folder:
        warnings.simplefilter("ignore")
        pipeline.fit(rows, answers)
        estimator, vectors = pipeline[-1], pipeline[:-1].transform(rows)
        vectors = np.asarray(getattr(vectors, "toarray", lambda: vectors)(), dtype=float)
        scored = score(to_pmml(pipeline, verification=rows), rows, Path(folder))
        if isinstance(estimator, SVC):
            assert (scored["prediction"] == texts(pipeline.predict(rows).astype(int))).all()
            values = pipeline.decision_function(rows).reshape(len(rows), -1)
            values = values if values.shape[1] == 1 else -values
        else:
            values = pipeline.predict(rows)[:, None]
        difference = np.abs(numbers(scored, "decision") - values)
        assert (difference <= 1e-12 * magnitudes(estimator, vectors)).all()
        verify(Path(folder))
