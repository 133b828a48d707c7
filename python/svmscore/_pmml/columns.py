"""Columns of a table as a pipeline passes them on, and the expressions that derive new ones.

A transformer takes a list of columns and gives a new list. Nothing is written meanwhile: what type
an input has shows only when all steps have said how they use it.
"""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any, NoReturn, Sequence, Union

from .errors import refuse
from .text import category, data_type, is_missing


@dataclass(eq=False)
class Input:
    """A column of the caller's table, and how the steps use it."""

    name: str
    key: Any = None  # its name, or position, in the table that the estimator was fitted to
    as_number: bool = False
    categories: list[Any] = field(default_factory=list)  # of all encoders, without missing ones
    strict: list[Any] | None = None  # the only categories that an encoder accepts
    as_category: bool = False

    @property
    def type(self) -> str:
        """The dataType: double as soon as a step computes with the column."""
        if self.as_number or not self.as_category:
            return "double"
        return data_type(self.categories) or "string"

    @property
    def is_categorical(self) -> bool:
        return self.as_category and not self.as_number

    def values(self) -> list[str] | None:
        """The texts of its categories; None for numbers."""
        return [category(c) for c in self.categories] if self.is_categorical else None


@dataclass(eq=False)
class Derived:
    """A column that `expression` gives. `source` is the column that it only fills or repeats, whose
    type it therefore has; without one it is a number."""

    name: str
    expression: Expression
    source: Column | None = None

    @property
    def type(self) -> str:
        return self.source.type if self.source else "double"

    @property
    def is_categorical(self) -> bool:
        return self.source.is_categorical if self.source else False


Column = Union[Input, Derived]


@dataclass(frozen=True)
class Constant:
    """A number, or a category of the type of the column that it stands beside."""

    value: Any
    beside: Column | None = None


@dataclass(frozen=True)
class Apply:
    """A built-in function of PMML and its arguments."""

    function: str
    arguments: tuple[Expression, ...]


@dataclass(frozen=True)
class Indicator:
    """1 where the column is one of `values`, else 0; `missing` where it has no value (None: no
    value either)."""

    column: Column
    values: tuple[Any, ...]
    missing: float | None


@dataclass(frozen=True)
class Lookup:
    """The number of the column's category; `unknown` for others (None: no value), `missing` where
    it has no value."""

    column: Column
    codes: tuple[tuple[Any, float], ...]
    unknown: float | None
    missing: float | None


Expression = Union[Input, Derived, Constant, Apply, Indicator, Lookup]


def apply(function: str, *arguments: Expression | float) -> Apply:
    """A function of columns, expressions and numbers."""
    return Apply(
        function, tuple(Constant(a) if isinstance(a, (int, float)) else a for a in arguments)
    )


def operands(expression: Expression) -> Sequence[Column]:
    """The columns that an expression names directly."""
    if isinstance(expression, (Input, Derived)):
        return [expression]
    if isinstance(expression, (Indicator, Lookup)):
        return [expression.column]
    if isinstance(expression, Apply):
        return [column for a in expression.arguments for column in operands(a)]
    return []


class Scope:
    """Where a step finds itself: its place in the pipeline, for messages, and the names in use."""

    def __init__(self, names: set[str], path: str = "", step: Any = None):
        self._names = names
        self.path = path
        self.step = step

    def inside(self, name: str, step: Any) -> Scope:
        """The scope of a step of this one."""
        return Scope(self._names, f"{self.path}.{name}" if self.path else name, step)

    def refuse(self, reason: str, remedy: str) -> NoReturn:
        """Raises ConversionError, with the place of the step."""
        refuse(self.path, self.step, reason, remedy)

    def derive(self, label: str, expression: Expression, source: Column | None = None) -> Derived:
        """A new column, named `label` or, where that is taken, with a number behind it."""
        name, count = label, 1
        while name in self._names:
            count += 1
            name = f"{label}#{count}"
        self._names.add(name)
        return Derived(name, expression, source)

    def number(self, column: Column) -> Column:
        """`column`, from now on a number."""
        if isinstance(column, Derived):
            if column.source:
                self.number(column.source)
        elif not column.as_number:
            if data_type(column.categories) in ("string", "boolean"):
                self.refuse(
                    f"computes with column {column.name!r}, which has categories", "encode it first"
                )
            column.as_number = True
        return column

    def categories(self, column: Column, values: Sequence[Any], strict: bool) -> Column:
        """`column`, from now on with these categories; with `strict`, no others are valid."""
        if isinstance(column, Derived):
            if column.source is None:
                if strict:
                    self.refuse(
                        f"cannot reject unknown values of {column.name!r}, which is computed",
                        "encode columns of the table, or set handle_unknown='ignore'",
                    )
                return column
            self.categories(column.source, values, strict)
            return column
        present = [v for v in values if not is_missing(v)]
        self._add(column, present)
        if strict:
            known = {category(v) for v in present}
            if column.strict is not None and {category(v) for v in column.strict} != known:
                self.refuse(
                    f"accepts other categories of {column.name!r} than an earlier step",
                    "give both encoders the same categories",
                )
            column.strict = present
        return column

    def _add(self, column: Input, values: Sequence[Any]) -> None:
        column.as_category = True
        known = {category(v) for v in column.categories}
        column.categories += [v for v in values if category(v) not in known]
        kind = data_type(column.categories)
        if column.categories and kind is None:
            self.refuse(
                f"column {column.name!r} has categories of several kinds: {column.categories[:5]}",
                "convert them all to text before the fit",
            )
        if column.as_number and kind in ("string", "boolean"):
            self.refuse(
                f"encodes column {column.name!r}, which another step computes with",
                "give the two steps columns of their own",
            )
