"""What each input contributes to the decision values of cases."""

from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any, Literal

import numpy as np

from . import _core, _tables

if TYPE_CHECKING:
    from ._model import Model

_TOLERATED = 1e-10  # of the sum of a machine's coefficients
_NOT_EXPLAINED = (
    "the decision value is not defined, or not finite, between the case and the background; "
    "use another background"
)


class Explanation:
    """What `Model.explain` gives: of a model of one machine without the axis of machines.

    Attributes:
        values: Shapley values, (n, players) or (n, machines, players): they add up to the decision
            value less its base. NaN in rows that have no explanation.
        errors: standard errors of values that are sampled, of the same shape; None for exact ones.
        decisions: the decision values, as of Model.decision_function: (n,) or (n, machines).
        base: the mean decision value of the background: a float, or (machines,).
        gradients: derivatives of the decision values by the vector fields, (n, fields) or
            (n, machines, fields); None unless asked for.
        players: names of the inputs; of several that meet in a derived field, and cannot be told
            apart, the names with plus signs between them.
        fields: names of the vector fields.
        decision_pairs: the (target, alternate) of each machine.
        status: of each row, as of Model.table: (n,).
        background_rows: how many rows the background has.
    """

    values: np.ndarray
    errors: np.ndarray | None
    decisions: np.ndarray
    base: Any
    gradients: np.ndarray | None

    def __init__(self, model: Model, X: Any, facts: dict[str, Any], rows: int, gradients: bool) -> None:
        self.players: list[str] = facts["players"]
        self.fields: list[str] = facts["fields"]
        self.decision_pairs = model.decision_pairs
        self.background_rows: int = facts["background_rows"]
        machines = len(facts["bases"])
        shape = (rows, machines, len(self.players))
        self.values = np.empty(shape)
        self.errors = np.empty(shape) if facts["sampled"] else None
        self.decisions = np.empty((rows, machines))
        self.gradients = np.empty((rows, machines, len(self.fields))) if gradients else None
        self.status = np.empty(rows, dtype=np.int64)
        self.base = np.array(facts["bases"])
        self._X = X
        self._inputs = model.feature_names_in_.tolist()

    def _without_machines(self) -> None:
        if len(self.base) != 1:
            return
        self.base = float(self.base[0])
        self.decisions = self.decisions[:, 0]
        for name in ("values", "errors", "gradients"):
            array = getattr(self, name)
            setattr(self, name, None if array is None else array[:, 0])

    def __len__(self) -> int:
        return len(self.status)

    def __repr__(self) -> str:
        exact = "exact" if self.errors is None else "sampled"
        return (
            f"<svmscore.Explanation of {len(self)} rows by {len(self.players)} inputs, {exact}, "
            f"background of {self.background_rows} rows>"
        )

    def to_shap(self) -> Any:
        """The same as a shap.Explanation, for the plots of the package shap, which must be installed.

        Its output names are those of the machines, TARGET|ALTERNATE.
        """
        import shap

        values = self.values if self.values.ndim == 2 else np.moveaxis(self.values, 1, 2)
        pairs = ["|".join("" if side is None else str(side) for side in pair)
                 for pair in self.decision_pairs]
        return shap.Explanation(
            values,
            base_values=np.tile(self.base, (len(self), 1)) if values.ndim == 3
            else np.full(len(self), self.base),
            data=self._data(),
            feature_names=self.players,
            output_names=pairs if values.ndim == 3 else None,
            error_std=None if self.errors is None
            else self.errors if self.errors.ndim == 2 else np.moveaxis(self.errors, 1, 2),
        )

    def _data(self) -> np.ndarray:
        """The values of the players' inputs, (n, players); None for several inputs together."""
        data = np.full((len(self), len(self.players)), None, dtype=object)
        for place, name in enumerate(self.players):
            column = _column(self._X, name, self._inputs)
            if column is not None and len(column) == len(self):
                data[:, place] = column
        try:
            return data.astype(np.float64)
        except (TypeError, ValueError):
            return data


def _column(X: Any, name: str, inputs: list[str]) -> Any:
    """The values of a column of any table; None where it has none of that name."""
    if isinstance(X, np.ndarray) and X.dtype.names is None:
        return X[:, inputs.index(name)] if name in inputs else None
    if isinstance(X, list):
        return [row.get(name) for row in X]
    try:
        column = X[name]
    except Exception:  # every library has its own for a column that is not there
        return None
    return np.asarray(column, dtype=object).ravel()


def explain(
    model: Model,
    X: Any,
    background: Any,
    gradients: bool,
    rows: int | None,
    seed: int,
    orders: int | None,
    errors: Literal["raise", "status"],
    threads: int,
) -> Explanation:
    """What Model.explain does, once its arguments are checked."""
    table = background
    if background is not None:
        table = model._read(background).columns
    explainer = _core.Explainer(model._core, table, rows or 0, seed, orders or 0, threads)
    facts = explainer.facts()
    left_out = facts["background_rows_left_out"]
    if left_out:
        warnings.warn(
            f"{left_out} rows of the background cannot be scored and are left out", stacklevel=3
        )
    X = {name: [_tables.plain(value)] for name, value in X.items()} if _tables.is_case(X) else X
    columns = model._read(X).columns
    made = Explanation(model, X, facts, columns.row_count, gradients)
    imbalance = explainer.explain(
        columns, made.decisions, made.values, made.errors, made.gradients, made.status
    )
    if imbalance > _TOLERATED:
        warnings.warn(
            f"values add up to the decision values within {imbalance:.1e} of the sum of coefficients, "
            "which is more than rounding explains unless kernel values are far larger than 1; scale "
            "the inputs, or do not rely on these values",
            stacklevel=3,
        )
    if errors == "raise" and made.status.any():
        raise model._failure(X, made.status, _NOT_EXPLAINED)
    made._without_machines()
    return made
