"""Takes an estimator apart: transformers, the support vector machine, and what is around it."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

from .columns import Scope
from .pipeline import library_class


@dataclass
class Parts:
    """path: that of `final`, for messages, as those of the steps."""

    final: Any
    path: str = ""
    steps: list[tuple[str, Any]] = field(default_factory=list)
    target_transformer: Any = None
    calibrator: Any = None


def take_apart(estimator: Any, scope: Scope) -> Parts:
    """The parts of a fitted estimator: those of the last step of a pipeline, of what a search
    found, of what a TransformedTargetRegressor or a CalibratedClassifierCV is around."""
    kind = library_class(estimator)
    if kind == "Pipeline":
        return _pipeline_parts(estimator, scope)
    if kind.endswith("SearchCV"):
        _require_fitted(estimator)
        if not hasattr(estimator, "best_estimator_"):
            scope.refuse("it kept no estimator", "search with refit=True")
        return take_apart(estimator.best_estimator_, scope)
    if kind == "TransformedTargetRegressor":
        _require_fitted(estimator)
        parts = take_apart(estimator.regressor_, scope.inside("regressor", estimator.regressor_))
        if parts.target_transformer is not None:
            scope.refuse("it is around another one", "transform y once")
        parts.target_transformer = estimator.transformer_
        return parts
    if kind == "CalibratedClassifierCV":
        _require_fitted(estimator)
        return _calibrated_parts(estimator, scope)
    return Parts(estimator, scope.path)


def _require_fitted(estimator: Any) -> None:
    from sklearn.utils.validation import check_is_fitted

    check_is_fitted(estimator)


def _pipeline_parts(pipeline: Any, scope: Scope) -> Parts:
    scopes = [(step, scope.inside(name, step)) for name, step in pipeline.steps]
    parts = take_apart(*scopes[-1])
    parts.steps = [(inside.path, step) for step, inside in scopes[:-1]] + parts.steps
    return parts


def _calibrated_parts(estimator: Any, scope: Scope) -> Parts:
    fitted = estimator.calibrated_classifiers_
    if len(fitted) != 1 or len(estimator.classes_) != 2 or estimator.method != "sigmoid":
        scope.refuse(
            "only one sigmoid of two classes has a form in the document",
            "calibrate two classes with method='sigmoid' and ensemble=False, or fit an SVC with "
            "probability=True",
        )
    parts = take_apart(fitted[0].estimator, scope.inside("estimator", fitted[0].estimator))
    parts.calibrator = fitted[0].calibrators[0]
    return parts
