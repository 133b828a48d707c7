"""Writes derived columns as PMML's DerivedField elements."""

from __future__ import annotations

from typing import Any, Iterable
from xml.etree.ElementTree import Element, SubElement

from .columns import (
    Apply,
    Column,
    Constant,
    Derived,
    Expression,
    Indicator,
    Input,
    Lookup,
    operands,
)
from .text import category, number


def in_order(columns: Iterable[Column]) -> list[Column]:
    """All columns that the given ones depend on, and themselves, each after its operands."""
    found: dict[int, Column] = {}
    stack = [(column, False) for column in reversed(list(columns))]
    while stack:
        column, ready = stack.pop()
        if id(column) in found:
            continue
        if ready or isinstance(column, Input):
            found[id(column)] = column
            continue
        stack.append((column, True))
        stack += [(operand, False) for operand in reversed(operands(column.expression))]
    return list(found.values())


def derived_field(column: Derived) -> Element:
    """The DerivedField of a column."""
    field = Element(
        "DerivedField",
        name=column.name,
        optype="categorical" if column.is_categorical else "continuous",
        dataType=column.type,
    )
    _write(field, column.expression)
    return field


def _write(parent: Element, expression: Expression) -> None:
    if isinstance(expression, (Input, Derived)):
        SubElement(parent, "FieldRef", field=expression.name)
    elif isinstance(expression, Constant):
        _constant(parent, expression.value, expression.beside)
    elif isinstance(expression, Apply):
        element = SubElement(parent, "Apply", function=expression.function)
        for argument in expression.arguments:
            _write(element, argument)
    elif isinstance(expression, Indicator):
        _indicator(parent, expression)
    else:
        _lookup(parent, expression)


def _constant(parent: Element, value: Any, beside: Column | None = None) -> None:
    kind = beside.type if beside else "double"
    text = number(value) if kind == "double" else category(value)
    SubElement(parent, "Constant", dataType=kind).text = text


def _call(parent: Element, function: str, column: Column) -> Element:
    element = SubElement(parent, "Apply", function=function)
    SubElement(element, "FieldRef", field=column.name)
    return element


def _indicator(parent: Element, indicator: Indicator) -> None:
    column = indicator.column
    if len(indicator.values) == 1 and column.is_categorical:
        element = SubElement(
            parent, "NormDiscrete", field=column.name, value=category(indicator.values[0])
        )
        if indicator.missing is not None:
            element.set("mapMissingTo", number(indicator.missing))
        return
    if indicator.missing is not None:
        parent = SubElement(parent, "Apply", function="if")
        _call(parent, "isMissing", column)
        _constant(parent, indicator.missing)
    choice = SubElement(parent, "Apply", function="if")
    test = _call(choice, "equal" if len(indicator.values) == 1 else "isIn", column)
    for value in indicator.values:
        _constant(test, value, column)
    _constant(choice, 1.0)
    _constant(choice, 0.0)


def _lookup(parent: Element, lookup: Lookup) -> None:
    element = SubElement(parent, "MapValues", outputColumn="code", dataType="double")
    if lookup.missing is not None:
        element.set("mapMissingTo", number(lookup.missing))
    if lookup.unknown is not None:
        element.set("defaultValue", number(lookup.unknown))
    SubElement(element, "FieldColumnPair", field=lookup.column.name, column="category")
    table = SubElement(element, "InlineTable")
    for value, code in lookup.codes:
        row = SubElement(table, "row")
        SubElement(row, "category").text = category(value)
        SubElement(row, "code").text = number(code)
