"""What is predicted: the classes of a classification, and the scale of a regression."""

from __future__ import annotations

from typing import Any, Mapping, Sequence

import numpy as np

from .columns import Scope
from .document import Target
from .errors import ConversionError
from .machines import Model
from .pipeline import library_class
from .text import category, data_type


def describe_classes(
    target: Target, model: Model, given: Sequence[Any] | Mapping[Any, Any] | None
) -> None:
    """Gives the target the type and the texts of the classes."""
    if not model.classes:
        if given is not None:
            raise ConversionError("categories are given for a regression; leave them out")
        return
    names = list(model.classes)
    if isinstance(given, Mapping):
        for unknown in (key for key in given if key not in names):
            raise ConversionError(
                f"categories names no class {unknown!r}; the classes are "
                + ", ".join(map(repr, np.asarray(names).tolist()))
            )
        names = [given.get(name, name) for name in names]
    elif given is not None:
        names = list(given)
        if len(names) != len(model.classes):
            raise ConversionError(
                f"categories has {len(names)} names for {len(model.classes)} classes; "
                "give one for each, in the order of classes_"
            )
    target.data_type = data_type(names) or "string"
    target.classes = [category(name) for name in names]
    if len(set(target.classes)) != len(target.classes) or "" in target.classes:
        raise ConversionError(
            f"the classes {names} are not told apart by their texts; give others as categories"
        )


def rescaling(transformer: Any, scope: Scope) -> tuple[float, float] | None:
    """Factor and constant that undo the transformer of a TransformedTargetRegressor, in the order
    of its `inverse_transform`; None where it does nothing. Raises ConversionError for others."""
    kind = library_class(transformer)
    if kind == "StandardScaler":
        center = transformer.mean_ if transformer.with_mean else None
        return _first(transformer.scale_, 1.0), _first(center, 0.0)
    if kind == "RobustScaler":
        scale = transformer.scale_ if transformer.with_scaling else None
        center = transformer.center_ if transformer.with_centering else None
        return _first(scale, 1.0), _first(center, 0.0)
    if kind == "MaxAbsScaler":
        return _first(transformer.scale_, 1.0), 0.0
    if kind == "MinMaxScaler":
        scale = _first(transformer.scale_, 1.0)
        return 1.0 / scale, -_first(transformer.min_, 0.0) / scale
    if kind == "FunctionTransformer" and transformer.inverse_func is None:
        return None
    scope.refuse(
        "PMML rescales predictions only by a factor and a constant",
        "use StandardScaler, MinMaxScaler, MaxAbsScaler or RobustScaler, or transform y yourself",
    )


def _first(values: Any, otherwise: float) -> float:
    return otherwise if values is None else float(np.ravel(values)[0])
