"""scikit-learn estimators over documents: for pipelines, cross-checks and permutation importance.

    >>> from svmscore.sklearn import PMMLClassifier
    >>> classifier = PMMLClassifier("model.pmml")
    >>> cross_val_score(classifier, X, y)

They are trained already. `fit` loads the document and checks that it suits X and y; the model stays
what it is. So the folds of cross_val_score differ in their cases only, and cases that the model was
trained with give flattering figures.
"""

from __future__ import annotations

import warnings
from typing import Any

import numpy as np
from sklearn.base import BaseEstimator, ClassifierMixin, RegressorMixin
from sklearn.utils.metaestimators import available_if

from ._model import Model, load

__all__ = ["PMMLClassifier", "PMMLRegressor"]

_NAMED = 5  # labels in a message


class _LoadedEstimator(BaseEstimator):
    """A document as an estimator.

    It is loaded by `fit`, or else when it is first needed: predicting works without fit. Pickles hold
    the document, so that they can be used where its path is not.
    """

    _kind = ""

    def __init__(
        self,
        source: Any,
        *,
        as_is: bool = False,
        strict_document: bool = False,
        missing_policy: str | None = None,
        limits: Any = None,
        threads: int = 1,
    ) -> None:
        """Loads nothing yet.

        Args:
            source: a path, the document as bytes or text, or a loaded `svmscore.Model`, which clones
                share.
            as_is, strict_document, missing_policy, limits: as of `svmscore.load`; not beside a Model.
            threads: how many share the rows; -1 means all that the process may use.
        """
        self.source = source
        self.as_is = as_is
        self.strict_document = strict_document
        self.missing_policy = missing_policy
        self.limits = limits
        self.threads = threads

    def fit(self, X: Any, y: Any = None) -> Any:
        """Loads the document and checks it; trains nothing.

        Raises:
            DocumentError, OSError: it cannot be loaded. TableError, TypeError, ValueError: X lacks a
            column that the model needs, or y holds nothing that the model can predict.
        """
        self._loaded = self._load()
        if hasattr(X, "iloc") or isinstance(X, np.ndarray):
            self.model_.predict(X[:0])
        if y is not None:
            self._check_target(np.asarray(y))
        return self

    def predict(self, X: Any) -> np.ndarray:
        """(n,). Raises svmscore.ScoringError where a row cannot be scored."""
        return self.model_.predict(X, threads=self.threads)

    @property
    def model_(self) -> Model:
        """What `svmscore.load` gives."""
        loaded = getattr(self, "_loaded", None)
        if loaded is None or loaded[0] != self._settings():
            loaded = self._loaded = self._load()
        return loaded[1]

    @property
    def feature_names_in_(self) -> np.ndarray:
        """The inputs that the model needs; an array has its columns in this order."""
        return self.model_.feature_names_in_

    @property
    def n_features_in_(self) -> int:
        return len(self.model_.feature_names_in_)

    def _settings(self) -> tuple:
        return self.source, self.as_is, self.strict_document, self.missing_policy, self.limits

    def _load(self) -> tuple[tuple, Model]:
        settings = self._settings()
        if isinstance(self.source, Model):
            model = self.source
            if any(settings[1:]):
                raise ValueError("a Model is loaded already: give these settings to svmscore.load")
        elif hasattr(self.source, "read"):
            raise TypeError("a file can be read once, and clones read it again: give source.read()")
        else:
            model = load(
                self.source,
                as_is=self.as_is,
                strict_document=self.strict_document,
                missing_policy=self.missing_policy,
                limits=self.limits,
            )
        if model.kind != self._kind:
            other = {"classification": "PMMLClassifier", "regression": "PMMLRegressor"}[model.kind]
            raise ValueError(f"the document is a {model.kind}: use {other}")
        return settings, model

    def _check_target(self, y: np.ndarray) -> None:
        try:
            y.astype(np.float64)
        except (TypeError, ValueError):
            raise ValueError(f"the model predicts numbers, and y is of type {y.dtype}") from None

    def __getstate__(self) -> dict[str, Any]:
        self.model_  # noqa: B018 - loads the document
        return super().__getstate__()

    def __sklearn_is_fitted__(self) -> bool:
        return True

    def __sklearn_tags__(self) -> Any:
        tags = super().__sklearn_tags__()
        tags.requires_fit = False
        tags.input_tags.allow_nan = True
        tags.input_tags.categorical = True
        tags.input_tags.string = True
        return tags

    def _more_tags(self) -> dict[str, Any]:  # what __sklearn_tags__ was before scikit-learn 1.6
        return {
            "requires_fit": False,
            "allow_nan": True,
            "X_types": ["2darray", "categorical", "string"],
        }


class PMMLRegressor(RegressorMixin, _LoadedEstimator):
    """A document whose function is regression, as a scikit-learn regressor.

    One-class models that are written as a regression or an AnomalyDetectionModel are such documents:
    `predict` gives their decision value. Those that svmscore writes are classifications of 1 and -1,
    for PMMLClassifier, whose decision_function is above 0 for what is like the training cases.
    """

    _kind = "regression"


class PMMLClassifier(ClassifierMixin, _LoadedEstimator):
    """A document whose function is classification, as a scikit-learn classifier.

    `classes_` is sorted, as in all of scikit-learn, whose scorers rely on it; `svmscore.Model` keeps the
    document's order. `predict_proba` is there where the document has calibrated probabilities.
    """

    _kind = "classification"

    @property
    def classes_(self) -> np.ndarray:
        return np.sort(self.model_.classes_)

    def _is_calibrated(self) -> bool:
        if self.model_.percentages != "calibrated":
            raise AttributeError(
                "this model has no calibrated probabilities; CalibratedClassifierCV makes some of its "
                "decision_function"
            )
        return True

    @available_if(_is_calibrated)
    def predict_proba(self, X: Any) -> np.ndarray:
        """Calibrated probabilities, (n, k) in the order of classes_."""
        return self.model_.predict_proba(X, threads=self.threads)[:, self._order()]

    def decision_function(self, X: Any) -> np.ndarray:
        """How much speaks for each class: (n,) for two, positive for classes_[1], else (n, k).

        The largest belongs to the class that `predict` gives, apart from ties, whichever sign,
        threshold and rule the document uses. It is

        - with calibrated probabilities, which then decide: log(p_1 / p_0), or log(p) of each class;
        - two classes: the machine's decision value from its threshold on, turned to classes_[1];
        - one-against-all: each class's own decision value, turned so that the largest wins;
        - one-against-one: votes + s / (3 (|s| + 1)), where s sums the decision values of the class's
          machines, turned to it: the "ovr" shape of scikit-learn's SVC
          (`_ovr_decision_function` in sklearn/utils/multiclass.py).

        `svmscore.Model.decision_function` gives the machines' own values.
        """
        model = self.model_
        if model.percentages == "calibrated":
            return self._log_odds(X)
        description = model.describe()
        values = model.decision_function(X, threads=self.threads)
        if values.ndim == 1:
            values = values[:, np.newaxis]
        sign = 1.0 if description["maxWins"] else -1.0
        if description["method"] == "one-against-all" and len(model.classes_) > 2:
            return self._best_of_own(sign * values)
        thresholds = np.array([machine["threshold"] for machine in description["machines"]])
        return self._votes(sign * (values - thresholds))

    def _order(self) -> np.ndarray:
        """Where each of classes_ is among the model's own."""
        return np.argsort(self.model_.classes_, kind="stable")

    def _pairs(self) -> list[list[int]]:
        """(target, alternate) of each machine as positions in classes_; -1 for no class."""
        places = np.append(np.argsort(self._order()), -1)
        return [
            [places[index] for index in machine[2:4]] for machine in self.model_._core.machines()
        ]

    def _log_odds(self, X: Any) -> np.ndarray:
        with np.errstate(divide="ignore"):
            logs = np.log(self.predict_proba(X))
        # Coupling may round the probability of one of many classes to 0.
        logs = np.maximum(logs, np.log(np.finfo(float).tiny))
        if logs.shape[1] != 2:
            return logs
        odds = logs[:, 1] - logs[:, 0]
        if not self.model_._options["as_is"]:
            return odds
        # Read to the letter, the first column is the response's, whichever class that is.
        return np.where(self.predict(X) == self.classes_[1], abs(odds), -abs(odds))

    def _best_of_own(self, strengths: np.ndarray) -> np.ndarray:
        """Of each class its machine's value; of a class with several the best."""
        own = np.full((len(strengths), len(self.model_.classes_)), -np.inf)
        for (target, _), values in zip(self._pairs(), strengths.T):
            if target >= 0:
                own[:, target] = np.maximum(own[:, target], values)
        without_machine = np.isneginf(own).all(axis=0)
        own[:, without_machine] = strengths.min(axis=1, keepdims=True) - 1.0  # these never win
        return own

    def _votes(self, strengths: np.ndarray) -> np.ndarray:
        classes = len(self.model_.classes_)
        votes = np.zeros((len(strengths), classes))
        sums = np.zeros_like(votes)
        for pair, values in zip(self._pairs(), strengths.T):
            # A value on the threshold is the alternate's.
            for place, turned, voted in zip(pair, (values, -values), (values > 0, values <= 0)):
                if place >= 0:
                    sums[:, place] += turned
                    votes[:, place] += voted
        if classes == 2:
            return sums[:, 1] if strengths.shape[1] == 1 else votes[:, 1] - votes[:, 0]
        return votes + sums / (3.0 * (np.abs(sums) + 1.0))

    def _check_target(self, y: np.ndarray) -> None:
        labels = np.unique(y)
        unknown = [label for label in labels.tolist() if label not in self.classes_.tolist()]
        if not unknown:
            return
        listed = ", ".join(map(repr, unknown[:_NAMED])) + (", ..." if len(unknown) > _NAMED else "")
        known = ", ".join(map(repr, self.classes_[:_NAMED].tolist()))
        message = f"y holds {listed}, which the model cannot predict; it predicts {known}"
        if len(unknown) == len(labels):
            raise ValueError(message)
        warnings.warn(message, UserWarning, stacklevel=3)
