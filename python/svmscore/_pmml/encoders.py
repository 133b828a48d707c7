"""Transformers of categories: OneHotEncoder and OrdinalEncoder."""

from __future__ import annotations

from typing import Any

from .columns import Apply, Column, Indicator, Lookup, Scope, apply
from .text import is_missing


class _Groups:
    """The categories of one column as an encoder groups them: `codes` has a list of positions in
    `all` for each code; the infrequent categories, if any, share the last one."""

    def __init__(self, step: Any, position: int):
        self.all = list(step.categories_[position])
        rare = getattr(step, "infrequent_categories_", None)
        rare = rare[position] if rare is not None else None
        rare_texts = {_key(c) for c in rare} if rare is not None else set()
        infrequent = [i for i, c in enumerate(self.all) if _key(c) in rare_texts]
        self.codes = [[i] for i in range(len(self.all)) if i not in infrequent]
        self.has_infrequent = bool(infrequent)
        if infrequent:
            self.codes.append(infrequent)
        self.missing = next((i for i, c in enumerate(self.all) if is_missing(c)), None)

    def present(self, code: list[int]) -> tuple[Any, ...]:
        """The categories of a code, without the missing one."""
        return tuple(self.all[i] for i in code if i != self.missing)


def _key(value: Any) -> Any:
    return None if is_missing(value) else value


def one_hot_encoder(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """A column of 0 and 1 for each category of each column, less the dropped ones."""
    result: list[Column] = []
    strict = step.handle_unknown == "error"
    unknown_is_rare = step.handle_unknown in ("infrequent_if_exist", "warn")
    for i, column in enumerate(columns):
        groups = _Groups(step, i)
        scope.categories(column, groups.all, strict)
        dropped = step.drop_idx_[i] if step.drop_idx_ is not None else None
        for code in groups.codes:
            if dropped is not None and dropped in code:
                continue
            rare = groups.has_infrequent and code is groups.codes[-1]
            label = f"{column.name}={'infrequent' if rare else groups.all[code[0]]}"
            if rare and unknown_is_rare:
                expression: Any = _rest(column, groups)
            else:
                expression = _indicator(column, code, groups, strict)
            result.append(scope.derive(label, expression))
    return result


def _indicator(column: Column, code: list[int], groups: _Groups, strict: bool) -> Any:
    missing = None if strict and groups.missing is None else float(groups.missing in code)
    return _is_one_of(column, groups.present(code), missing)


def _rest(column: Column, groups: _Groups) -> Apply:
    """1 for infrequent and for unknown categories, a missing one among them unless it is known."""
    others = [i for code in groups.codes[:-1] for i in code]
    known = groups.missing is not None and groups.missing in others
    return apply("-", 1.0, _is_one_of(column, groups.present(others), float(known)))


def _is_one_of(column: Column, values: tuple[Any, ...], missing: float | None) -> Any:
    if not values and missing is not None:
        return apply("if", apply("isMissing", column), missing, 0.0)
    return Indicator(column, values, missing)


def ordinal_encoder(step: Any, columns: list[Column], scope: Scope) -> list[Column]:
    """The position of each category, or of its group where infrequent ones share one."""
    result: list[Column] = []
    strict = step.handle_unknown == "error"
    unknown = None if strict or is_missing(step.unknown_value) else float(step.unknown_value)
    for i, column in enumerate(columns):
        groups = _Groups(step, i)
        scope.categories(column, groups.all, strict)
        missing = unknown
        if groups.missing is not None:
            encoded = getattr(step, "encoded_missing_value", float("nan"))
            missing = None if is_missing(encoded) else float(encoded)
        codes = tuple(
            (c, float(n)) for n, code in enumerate(groups.codes) for c in groups.present(code)
        )
        lookup = Lookup(column, codes, unknown, missing)
        result.append(scope.derive(f"code({column.name})", lookup))
    return result
