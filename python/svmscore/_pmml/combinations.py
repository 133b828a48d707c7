"""Transformers that combine columns or choose among them: PolynomialFeatures and selectors."""

from __future__ import annotations

from typing import Any

import numpy as np

from .columns import Column, Constant, Expression, Scope, apply


def polynomial_features(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """Products of powers, multiplied from the last factor to the first as scikit-learn does."""
    return [_product(powers, columns, scope) for powers in step.powers_]


def _product(powers: Any, columns: list[Column], scope: Scope) -> Column:
    factors = [columns[i] for i in np.flatnonzero(powers) for _ in range(powers[i])]
    if not factors:
        return scope.derive("1", Constant(1.0))
    product: Expression = scope.number(factors[-1])
    for factor in reversed(factors[:-1]):
        product = apply("*", scope.number(factor), product)
    if len(factors) == 1:
        return factors[0]
    return scope.derive("*".join(f.name for f in factors), product)


def selector(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """The columns that a feature selection keeps."""
    return [columns[i] for i in np.flatnonzero(step.get_support())]
