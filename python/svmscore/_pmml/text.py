"""How numbers, classes and categories are spelled, and the data types that they have in PMML."""

from __future__ import annotations

import math
import re
from numbers import Integral, Real
from typing import Any, Iterable

import numpy as np

from .errors import ConversionError

_NOT_IN_XML = re.compile("[^\t\n\r\x20-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")


def number(value: Any) -> str:
    """The shortest text that reads back to the same double; whole numbers without a point.

    Raises ConversionError for values that are not finite: PMML has no text that all readers take.
    """
    value = float(value)
    if not math.isfinite(value):
        raise ConversionError(f"the estimator holds {value}, which is no number; fit it again")
    if value == int(value) and abs(value) < 1e15:
        return str(int(value))
    return repr(value)


def checked(text: str) -> str:
    """`text`, or a ConversionError where XML cannot hold one of its characters."""
    bad = _NOT_IN_XML.search(text)
    if bad:
        raise ConversionError(
            f"the name {text!r} has the character {bad.group()!r}, which XML does not allow; "
            "rename it"
        )
    return text


def is_missing(value: Any) -> bool:
    """Whether a category, or a cell, is None, NaN, NaT or pandas' NA."""
    if value is None or type(value).__name__ in ("NAType", "NaTType"):
        return True
    return isinstance(value, Real) and not isinstance(value, Integral) and math.isnan(value)


def category(value: Any) -> str:
    """The text of a class or category."""
    if isinstance(value, (bool, np.bool_)):
        return "true" if value else "false"
    if isinstance(value, Integral):
        return str(int(value))
    if isinstance(value, Real):
        return number(value)
    return checked(str(value))


def data_type(values: Iterable[Any]) -> str | None:
    """The dataType of a field with these categories (missing ones aside), or None where they are
    of kinds that no one type holds."""
    kinds = {_kind(value) for value in values if not is_missing(value)}
    if kinds == {"integer", "double"}:
        return "double"
    return kinds.pop() if len(kinds) == 1 else None


def _kind(value: Any) -> str | None:
    if isinstance(value, (bool, np.bool_)):
        return "boolean"
    if isinstance(value, Integral):
        return "integer"
    if isinstance(value, Real):
        return "double"
    return "string" if isinstance(value, str) else None
