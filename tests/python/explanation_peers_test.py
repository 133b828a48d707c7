"""Shapley values beside those of the package shap, for the same decision values."""

import numpy as np
import pandas as pd
import pytest
import shap
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler
from sklearn.svm import SVC, SVR

import svmscore

RANDOM = np.random.default_rng(7)
X = pd.DataFrame(RANDOM.normal(size=(90, 5)) * [1, 10, 1, 0.1, 3], columns=list("abcde"))
SIGNAL = X["a"] * X["b"] / 10 - X["c"] ** 2 + X["e"]
CLASSES = {2: np.where(SIGNAL > SIGNAL.median(), "yes", "no"),
           3: np.select([SIGNAL < -1.5, SIGNAL < 0.5], ["low", "middle"], "high")}
BACKGROUND, CASES = X[60:72], X[72:82]

KERNELS = {
    "linear": {"kernel": "linear"},
    "rbf": {"kernel": "rbf", "gamma": 0.3},
    "poly": {"kernel": "poly", "degree": 3, "coef0": 1.0, "gamma": 0.2},
    "sigmoid": {"kernel": "sigmoid", "gamma": 0.05},
}


def model_of(kernel, classes):
    machine = SVC(**KERNELS[kernel]) if classes else SVR(**KERNELS[kernel])
    y = CLASSES[classes] if classes else SIGNAL
    fitted = make_pipeline(StandardScaler(), machine).fit(X[:60], y[:60])
    return svmscore.load(svmscore.to_pmml(fitted))


def theirs_of(explainer_class, model):
    def decide(rows):
        return model.decision_function(pd.DataFrame(np.asarray(rows, float), columns=list(X)))

    if explainer_class is shap.KernelExplainer:  # all 2^5 sets: no draws
        explainer = explainer_class(decide, BACKGROUND.to_numpy())
        values = explainer.shap_values(CASES.to_numpy(), nsamples=2**5, l1_reg=False, silent=True)
        return shap.Explanation(values, explainer.expected_value)
    masker = shap.maskers.Independent(BACKGROUND.to_numpy(), max_samples=len(BACKGROUND))
    return explainer_class(decide, masker)(CASES.to_numpy())


@pytest.mark.parametrize("classes", (0, 2, 3))
@pytest.mark.parametrize("kernel", KERNELS)
@pytest.mark.parametrize("theirs", (shap.explainers.Exact, shap.KernelExplainer))
def test_shapley_values(theirs, kernel, classes):
    model = model_of(kernel, classes)
    wanted = theirs_of(theirs, model)
    mine = model.explain(CASES, BACKGROUND, orders=2000)
    assert mine.players == list(X)
    as_theirs = mine.to_shap()
    assert as_theirs.values.shape == wanted.values.shape
    off = np.abs(as_theirs.values - wanted.values)
    scale = np.abs(wanted.values).max()
    if kernel == "sigmoid":
        assert (off <= 5 * as_theirs.error_std + 1e-9 * scale).all() and off.max() < 0.02 * scale
    else:
        assert mine.errors is None and off.max() < 1e-9 * scale
    assert np.allclose(as_theirs.base_values, np.broadcast_to(wanted.base_values, as_theirs.base_values.shape))
    assert as_theirs.feature_names == list(X) and (as_theirs.data == CASES.to_numpy()).all()


def test_gradients_are_the_slopes():
    for kernel in KERNELS:
        model = model_of(kernel, 3)
        mine = model.explain(CASES, BACKGROUND, gradients=True, orders=1)
        scale = X[:60].std(ddof=0).to_numpy()  # fields are standardised inputs
        for place, name in enumerate(X):
            step = 1e-5 * scale[place]
            up, down = CASES.copy(), CASES.copy()
            up[name] += step
            down[name] -= step
            slope = (model.decision_function(up) - model.decision_function(down)) / (2e-5)
            assert np.allclose(mine.gradients[:, :, place], slope, atol=1e-6)


def test_their_plots_take_it():
    explained = model_of("rbf", 3).explain(CASES, BACKGROUND).to_shap()
    first = explained[0, :, 0]
    assert first.values.shape == (5,) and explained.output_names == ["high|low", "high|middle", "low|middle"]
    assert np.isclose(first.values.sum() + first.base_values, model_of("rbf", 3).decision_function(CASES)[0, 0])
    assert explained[:, "a", 0].data.shape == (10,)
