"""Scores of a dask DataFrame, partition by partition, on whatever runs dask's tasks."""

from __future__ import annotations

from typing import Any

from ._model import Model
from ._shipping import Shipment, column_types, pack, unpack

__all__ = ["table"]

_DTYPES = {"whole": "Int64", "number": "float64", "truth": "boolean"}


def table(
    model: Model,
    ddf: Any,
    columns: str = "auto",
    *,
    errors: str = "status",
    decisions: bool = False,
    reasons: bool = False,
) -> Any:
    """The columns of `Model.table`, as a dask DataFrame with the partitions, order and index of `ddf`.

    The document is one task of the graph, and each worker that scores gets it once, from the scheduler
    or another worker; a worker that is lost takes nothing with it that cannot be had again. Each
    process loads the document once and keeps the model. A task uses one thread.

    Args:
        model: as `svmscore.load` gives it.
        ddf: a dask DataFrame; only the columns that the model reads are computed.
        columns, errors, decisions, reasons: as of `Model.table`.
    Returns:
        Columns have one type whatever is in a partition: whole numbers and booleans that may be
        missing are "Int64" and "boolean", `status` is int64, texts are what pandas makes of texts.
    Raises:
        TableError: ddf lacks a column that the model needs.
    """
    from dask import delayed

    kinds = column_types(model, columns, decisions, reasons)
    meta = _as_types(model.table(ddf._meta, columns, decisions=decisions, reasons=reasons), kinds)
    shipment = pack(model)
    shipped = delayed(Shipment)(*shipment, dask_key_name=shipment.key)
    read = {field.name for field in model.inputs}
    return ddf[[label for label in ddf.columns if str(label) in read]].map_partitions(
        _score, shipped, columns, errors, decisions, reasons, kinds, meta=meta
    )


def _score(
    frame: Any,
    shipment: Shipment,
    columns: str,
    errors: str,
    decisions: bool,
    reasons: bool,
    kinds: dict[str, str],
) -> Any:
    model = unpack(shipment.key, lambda: shipment)
    scores = model.table(frame, columns, errors, decisions=decisions, reasons=reasons)
    return _as_types(scores, kinds)


def _as_types(scores: Any, kinds: dict[str, str]) -> Any:
    import pandas

    text = pandas.Series(["text"]).dtype
    types = {name: _DTYPES.get(kind, text) for name, kind in kinds.items() if name != "status"}
    return scores.astype(types)
