"""SimpleImputer and MissingIndicator."""

from __future__ import annotations

from typing import Any

import numpy as np

from .columns import Apply, Column, Constant, Scope, apply
from .text import data_type, is_missing


def _is_absent(column: Column, marker: Any, scope: Scope) -> Apply:
    """Whether the column is missing, or holds the text or number that stands for it."""
    if is_missing(marker):
        return apply("isMissing", column)
    if isinstance(marker, str):
        scope.categories(column, [marker], strict=False)
    return Apply("equal", (column, Constant(marker, column)))


def simple_imputer(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """Each column with its statistic where it is missing; columns that were empty in the fit are
    left out unless kept; then the indicators, with `add_indicator`."""
    result: list[Column] = []
    kept = _kept(step, columns)
    for i, column in enumerate(columns):
        if not kept[i]:
            continue
        fill = step.statistics_[i]
        if data_type([fill]) in ("string", "boolean"):
            scope.categories(column, [fill], strict=False)
        elif data_type([fill]) is None:
            scope.refuse(f"fills {column.name!r} with {fill!r}", "fill it with a number or text")
        absent = _is_absent(column, step.missing_values, scope)
        filled = Apply("if", (absent, Constant(fill, column), column))
        result.append(scope.derive(f"filled({column.name})", filled, source=column))
    if step.add_indicator:
        result += missing_indicator(step.indicator_, columns, scope)
    return result


def _kept(step: Any, columns: list[Column]) -> list[bool]:
    """Which columns the imputer passes on, as the names of its output tell in every release."""
    names = np.array([f"c{i}" for i in range(len(columns))], dtype=object)
    if hasattr(step, "feature_names_in_"):
        names = step.feature_names_in_
    out = list(step.get_feature_names_out(names))
    count = len(out) - (len(step.indicator_.features_) if step.add_indicator else 0)
    remaining = out[:count]
    kept = []
    for name in names:
        kept.append(bool(remaining) and remaining[0] == name)
        if kept[-1]:
            remaining.pop(0)
    return kept


def missing_indicator(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """1 where a column is missing, else 0, for the columns that the fit chose."""
    return [
        scope.derive(
            f"missing({columns[i].name})",
            apply("if", _is_absent(columns[i], step.missing_values, scope), 1.0, 0.0),
        )
        for i in step.features_
    ]
