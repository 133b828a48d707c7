"""Verification records: rows of the caller with the estimator's own results."""

from __future__ import annotations

from typing import Any, Sequence
from xml.etree.ElementTree import Element, SubElement

import numpy as np

from .columns import Column, Input
from .document import Target
from .errors import ConversionError
from .machines import Model
from .text import category, is_missing, number
from .transformations import in_order

LIMIT = 10
# PMML's own default. The sums of other readers differ in the last digits of their terms, which may
# be much larger than a value near 0; so values that are small beside the largest count as 0.
_PRECISION = 1e-6
_NEARLY_ZERO = 1e-9


def add(
    element: Element,
    estimator: Any,
    model: Model,
    target: Target,
    inputs: Sequence[Input],
    columns: Sequence[Column],
    rows: Any,
) -> None:
    """Appends to a model element a ModelVerification with the first rows, at most LIMIT.

    rows: as for `estimator.predict`; raises ConversionError for none, and what scikit-learn raises
    for rows that it does not take.
    """
    rows = rows[:LIMIT] if not hasattr(rows, "iloc") else rows.iloc[:LIMIT]
    count = rows.shape[0] if hasattr(rows, "shape") else len(rows)
    if not count:
        raise ConversionError("verification has no rows; give some, or leave it out")
    results = _results(estimator, model, target, rows)  # scikit-learn tells what does not fit
    used = {id(f) for f in in_order(columns)}
    table = [
        (field.name, [_cell(field, value) for value in _values(rows, field.key, i)], None)
        for i, field in enumerate(inputs)
        if id(field) in used
    ] + results
    block = SubElement(
        element, "ModelVerification", recordCount=str(count), fieldCount=str(len(table))
    )
    fields = SubElement(block, "VerificationFields")
    for i, (name, _, largest) in enumerate(table):
        field = SubElement(fields, "VerificationField", field=name, column=f"c{i + 1}")
        if largest is not None:
            field.set("precision", number(_PRECISION))
            field.set("zeroThreshold", number(_NEARLY_ZERO * max(1.0, largest)))
    inline = SubElement(block, "InlineTable")
    for r in range(count):
        row = SubElement(inline, "row")
        for i, (_, cells, _) in enumerate(table):
            if cells[r] is not None:
                SubElement(row, f"c{i + 1}").text = cells[r]


def _values(rows: Any, key: Any, position: int) -> Sequence[Any]:
    if hasattr(rows, "iloc"):
        return list(rows[key] if isinstance(key, str) else rows.iloc[:, position])
    if hasattr(rows, "get_column"):  # of polars
        return list(rows[key] if isinstance(key, str) else rows[:, position])
    if hasattr(rows, "toarray"):
        rows = rows.toarray()
    return [row[position] for row in rows]


def _cell(field: Input, value: Any) -> str | None:
    if is_missing(value):
        return None
    return category(value) if field.is_categorical else number(value)


_Column = tuple[str, Sequence["str | None"], "float | None"]


def _numbers(name: str, values: np.ndarray) -> _Column:
    return name, [number(v) for v in values], float(np.abs(values).max())


def _results(estimator: Any, model: Model, target: Target, rows: Any) -> list[_Column]:
    """The columns of expected results: fields, their cells, and the largest of their numbers."""
    predicted = np.ravel(estimator.predict(rows))
    if not model.classes:
        return [_numbers(target.prediction, predicted)]
    texts = dict(zip([category(c) for c in model.classes], target.classes))
    classes = [texts[category(p)] for p in predicted]
    if not model.is_calibrated:
        return [(target.prediction, classes, None)]
    likeliest = [target.classes[k] for k in _probabilities(estimator, model, rows).argmax(axis=1)]
    # Where votes and probabilities name different classes, readers may give either.
    agreed = [c if c == p else None for c, p in zip(classes, likeliest)]
    return [(target.name, agreed, None)]


def _probabilities(estimator: Any, model: Model, rows: Any) -> np.ndarray:
    """(n, classes). Of two classes of an SVC the sigmoid itself: scikit-learn's figure comes out of
    an iteration that starts there and stops early."""
    if len(model.classes) > 2 or not hasattr(estimator, "decision_function"):
        return estimator.predict_proba(rows)
    a, b = model.machines[0].sigmoid or (0.0, 0.0)
    first = 1.0 / (1.0 + np.exp(a * estimator.decision_function(rows) + b))
    return np.column_stack([first, 1.0 - first])
