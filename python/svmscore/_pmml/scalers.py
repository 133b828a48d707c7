"""Transformers that compute each column by itself: scalers, thresholds, known functions.

Each keeps scikit-learn's order of operations, so that derived fields have the same bits.
"""

from __future__ import annotations

from typing import Any, Callable

import numpy as np

from .columns import Apply, Column, Expression, Scope, apply


def _each(scope: Scope, columns: list[Column], label: str, step: Callable) -> list[Column]:
    """One derived column for each: `step(position, column)` is its expression."""
    return [
        scope.derive(f"{label}({column.name})", step(i, scope.number(column)))
        for i, column in enumerate(columns)
    ]


def _clip(x: Expression, low: float, high: float) -> Apply:
    # Not min and max, which ignore a missing value; and not a comparison with one, which some
    # readers refuse.
    above = apply("if", apply("greaterThan", x, high), high, x)
    cut = apply("if", apply("lessThan", x, low), low, above)
    return apply("if", apply("isMissing", x), x, cut)


def _shift_and_divide(columns: list[Column], scope: Scope, center: Any, scale: Any) -> list[Column]:
    if center is None and scale is None:
        return columns

    def step(i: int, x: Expression) -> Expression:
        shifted = x if center is None else apply("-", x, float(center[i]))
        return shifted if scale is None else apply("/", shifted, float(scale[i]))

    return _each(scope, columns, "scaled", step)


def standard_scaler(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """(x - mean_) / scale_."""
    center = step.mean_ if step.with_mean else None
    return _shift_and_divide(columns, scope, center, step.scale_ if step.with_std else None)


def robust_scaler(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """(x - center_) / scale_."""
    center = step.center_ if step.with_centering else None
    return _shift_and_divide(columns, scope, center, step.scale_ if step.with_scaling else None)


def max_abs_scaler(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """x / scale_, cut to -1 to 1 with `clip`."""
    scaled = _shift_and_divide(columns, scope, None, step.scale_)
    if not getattr(step, "clip", False):
        return scaled
    return _each(scope, scaled, "clipped", lambda i, x: _clip(x, -1.0, 1.0))


def min_max_scaler(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """x * scale_ + min_, cut to the feature range with `clip`."""
    scaled = _each(
        scope,
        columns,
        "scaled",
        lambda i, x: apply("+", apply("*", x, float(step.scale_[i])), float(step.min_[i])),
    )
    if not step.clip:
        return scaled
    low, high = (float(bound) for bound in step.feature_range)
    return _each(scope, scaled, "clipped", lambda i, x: _clip(x, low, high))


def binarizer(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """1 where x > threshold, else 0."""
    limit = float(step.threshold)
    return _each(
        scope, columns, "above", lambda i, x: apply("if", apply("greaterThan", x, limit), 1.0, 0.0)
    )


def _same_name(function: str) -> Callable[[Expression], Expression]:
    return lambda x: apply(function, x)


# NumPy's functions of one argument, as PMML 4.4 has them.
_FUNCTIONS: dict[Any, Callable[[Expression], Expression]] = {
    np.log: _same_name("ln"),
    np.log1p: _same_name("ln1p"),
    np.negative: lambda x: apply("*", -1.0, x),
    np.positive: lambda x: x,
    np.square: lambda x: apply("*", x, x),
    np.reciprocal: lambda x: apply("/", 1.0, x),
    np.absolute: _same_name("abs"),
    np.fabs: _same_name("abs"),
    np.exp2: lambda x: apply("pow", 2.0, x),
    np.deg2rad: lambda x: apply("*", x, np.pi / 180),
    np.radians: lambda x: apply("*", x, np.pi / 180),
    np.arcsin: _same_name("asin"),
    np.arccos: _same_name("acos"),
    np.arctan: _same_name("atan"),
    np.rint: _same_name("rint"),
} | {
    getattr(np, name): _same_name(name)
    for name in "log10 exp expm1 sqrt floor ceil sin cos tan sinh cosh tanh".split()
}


def function_transformer(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """A function of NumPy that PMML has too, of each column; the columns without one."""
    if step.func is None:
        return columns
    name = getattr(step.func, "__name__", repr(step.func))
    expression = _FUNCTIONS.get(step.func) if _is_hashable(step.func) else None
    if expression is None or step.kw_args:
        known = ", ".join(sorted({f.__name__ for f in _FUNCTIONS}))
        scope.refuse(
            f"the function {name}{' with kw_args' if step.kw_args else ''} has no form in PMML",
            f"use one of NumPy's {known}, or compute the column before the pipeline",
        )
    return _each(scope, columns, name, lambda i, x: expression(x))


def _is_hashable(function: Any) -> bool:
    return getattr(type(function), "__hash__", None) is not None
