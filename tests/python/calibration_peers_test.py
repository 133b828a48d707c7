"""Intervals beside those of another program for conformal prediction."""

import numpy as np
import pandas as pd
import pytest
from mapie.regression import SplitConformalRegressor
from sklearn.base import BaseEstimator, RegressorMixin

import svmscore
from conftest import EXAMPLES


class Fitted(RegressorMixin, BaseEstimator):
    """A document as an estimator of its inputs."""

    def fit(self, X, y):
        self.fitted_ = True
        return self

    def predict(self, X):
        return MODEL.predict(X)


MODEL = svmscore.load(EXAMPLES / "diabetes/model.pmml")


@pytest.mark.parametrize("confidence", (0.5, 0.9, 0.95))
def test_split_conformal_intervals(confidence):
    frame = pd.read_csv(EXAMPLES / "diabetes/cases.csv", dtype={"sex": str})
    X, y = frame[MODEL.feature_names_in_], frame["progression"].to_numpy()
    theirs = SplitConformalRegressor(Fitted().fit(X, y), confidence_level=confidence, prefit=True)
    theirs.conformalize(X[:60], y[:60])
    _, bounds = theirs.predict_interval(X[60:])
    calibration = MODEL.calibrate(X[:60], y[:60], confidence=confidence)
    table = calibration.model.table(X[60:], columns="all")
    mine = np.column_stack([table["ci_lower"], table["ci_upper"]])
    assert np.abs(mine - bounds[:, :, 0]).max() < 1e-9
