"""Walks pipelines and their steps: which transformer turns which columns into which."""

from __future__ import annotations

from typing import Any, Callable, Sequence

import numpy as np

from . import combinations, encoders, imputers, scalers
from .columns import Column, Scope, apply

Transformer = Callable[[Any, "list[Column]", Scope], "list[Column]"]


def library_class(step: Any) -> str:
    """The name of scikit-learn's class, "" for other objects. Subclasses are others: what they
    override cannot be seen."""
    kind = type(step)
    return kind.__name__ if kind.__module__.split(".")[0] == "sklearn" else ""


def is_passthrough(step: Any) -> bool:
    """Whether a step passes columns on as they are."""
    return step is None or (isinstance(step, str) and step == "passthrough")


def transform(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """The columns that a fitted transformer makes of `columns`.

    scope: that of the step itself. Raises ConversionError, with its place, for what PMML cannot
    say.
    """
    if is_passthrough(step):
        return columns
    kind = library_class(step)
    rule = _TRANSFORMERS.get(kind)
    if rule is None and kind and type(step).__module__.startswith("sklearn.feature_selection"):
        rule = combinations.selector
    if rule is None:
        scope.refuse(
            "this transformer has no form in the document",
            "replace it by one of "
            + ", ".join(sorted(_TRANSFORMERS))
            + ", or apply it before the pipeline",
        )
    expected = getattr(step, "n_features_in_", None)
    if expected is not None and expected != len(columns):
        scope.refuse(f"was fitted to {expected} columns and gets {len(columns)}", "fit it again")
    return rule(step, columns, scope)


def pipeline(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """One step after the other."""
    for name, inner in step.steps:
        columns = transform(inner, columns, scope.inside(name, inner))
    return columns


def feature_union(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """The columns of all transformers side by side, each times its weight."""
    result: list[Column] = []
    for name, inner in step.transformer_list:
        if not _is_drop(inner):
            inside = scope.inside(name, inner)
            result += _weighted(step, name, transform(inner, columns, inside), inside)
    return result


def column_transformer(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """The columns of all transformers side by side, each made of its own columns."""
    result: list[Column] = []
    names = list(getattr(step, "feature_names_in_", [c.name for c in columns]))
    for name, inner, chosen in step.transformers_:
        inside = scope.inside(name, inner)
        positions = [] if _is_drop(inner) else chosen_positions(chosen, names, inside)
        if positions:
            made = transform(inner, [columns[i] for i in positions], inside)
            result += _weighted(step, name, made, inside)
    return result


def _is_drop(step: Any) -> bool:
    return isinstance(step, str) and step == "drop"


def _weighted(step: Any, name: str, columns: list[Column], scope: Scope) -> list[Column]:
    weight = (step.transformer_weights or {}).get(name)
    if weight is None:
        return columns
    return [
        scope.derive(f"{name}({c.name})", apply("*", scope.number(c), float(weight)))
        for c in columns
    ]


def chosen_positions(chosen: Any, names: Sequence[str], scope: Scope) -> list[int]:
    """The positions that a ColumnTransformer's choice means: names, positions (negative ones from
    the end), a mask, or a slice of names (its end included) or positions."""
    if callable(chosen):
        scope.refuse("its columns are chosen by a function", "fit the ColumnTransformer first")
    if isinstance(chosen, slice):
        return _slice_positions(chosen, names)
    if isinstance(chosen, (str, int, np.integer)) and not isinstance(chosen, bool):
        chosen = [chosen]
    chosen = list(chosen)
    if chosen and all(isinstance(c, (bool, np.bool_)) for c in chosen):
        return [i for i, keep in enumerate(chosen) if keep]
    return [names.index(c) if isinstance(c, str) else range(len(names))[int(c)] for c in chosen]


def _slice_positions(chosen: slice, names: Sequence[str]) -> list[int]:
    start, stop = chosen.start, chosen.stop
    if isinstance(start, str):
        start = names.index(start)
    if isinstance(stop, str):
        stop = names.index(stop) + 1
    return list(range(len(names)))[slice(start, stop, chosen.step)]


_TRANSFORMERS: dict[str, Transformer] = {
    "Binarizer": scalers.binarizer,
    "ColumnTransformer": column_transformer,
    "FeatureUnion": feature_union,
    "FunctionTransformer": scalers.function_transformer,
    "MaxAbsScaler": scalers.max_abs_scaler,
    "MinMaxScaler": scalers.min_max_scaler,
    "MissingIndicator": imputers.missing_indicator,
    "OneHotEncoder": encoders.one_hot_encoder,
    "OrdinalEncoder": encoders.ordinal_encoder,
    "Pipeline": pipeline,
    "PolynomialFeatures": combinations.polynomial_features,
    "RobustScaler": scalers.robust_scaler,
    "SimpleImputer": imputers.simple_imputer,
    "StandardScaler": scalers.standard_scaler,
}
