"""Scores of a Spark DataFrame, by Arrow's batches in the Python workers of the executors."""

from __future__ import annotations

import weakref
from collections.abc import Callable, Iterable, Iterator
from typing import Any

from ._model import CODES, TEXTS, Model
from ._shipping import Shipment, column_types, pack, unpack

__all__ = ["table"]

_TYPES = {"text": "string", "whole": "bigint", "number": "double", "truth": "boolean"}

# By application and model: scoring table after table, as with streams, sends a document once.
_broadcasts: weakref.WeakValueDictionary[tuple[str, str], Any] = weakref.WeakValueDictionary()


def table(
    model: Model,
    df: Any,
    columns: str = "auto",
    *,
    passthrough: Iterable[str] = (),
    decisions: bool = False,
    reasons: bool = False,
) -> Any:
    """The columns of `Model.table`, as a Spark DataFrame.

    The document is broadcast once, and each Python worker process loads it once and keeps the model.
    Rows that cannot be scored have their `status` and nulls.

    Args:
        model: as `svmscore.load` gives it.
        df: a Spark DataFrame; only the columns that the model reads, and those of `passthrough`,
            go to Python. Decimals are read as doubles, timestamps as the session's time zone has them.
        columns, decisions, reasons: as of `Model.table`.
        passthrough: columns of df to put before the scores, such as a key to join by. Spark's rows
            have no index, and without a key no order that one could rely on.
    Returns:
        Texts are string, whole numbers and `status` bigint, other numbers double.
    Raises:
        TableError: df lacks a column that the model needs. ValueError: `passthrough` names a column
        that is not there, or that scores have too.
    """
    from pyspark.sql.types import StructField, StructType

    kept = _kept_columns(passthrough, df)
    kinds = column_types(model, columns, decisions, reasons)
    for name in kept:
        if name in kinds:
            raise ValueError(f"passthrough: scores have a column {name!r} too; rename that of df")
    read = [name for name in model._input_names if name in df.columns]
    taken = _selection(df, read, kept)
    _check_columns(model, df, taken, read)
    schema = StructType(
        [df.schema[name] for name in kept]
        + [StructField(name, _spark_type(_TYPES[kind]), True) for name, kind in kinds.items()]
    )
    shipment = pack(model)
    key, fetch = shipment.key, _broadcast(df.sparkSession, shipment)

    def score(batches: Iterator[Any]) -> Iterator[Any]:
        for batch in batches:
            yield _score_batch(unpack(key, fetch), batch, read, kept, columns, decisions, reasons)

    return taken.mapInArrow(score, schema)


def _kept_columns(passthrough: Iterable[str], df: Any) -> list[str]:
    kept = [passthrough] if isinstance(passthrough, str) else list(dict.fromkeys(passthrough))
    for name in kept:
        if name not in df.columns:
            raise ValueError(f"passthrough: there is no column {name!r}")
    return kept


def _selection(df: Any, read: list[str], kept: list[str]) -> Any:
    """The columns to read, then those to keep, under names without dots, which mapInArrow needs."""
    from pyspark.sql.functions import col
    from pyspark.sql.types import DecimalType, TimestampType

    selected = []
    for place, name in enumerate([*read, *kept]):
        column = col("`" + name.replace("`", "``") + "`")
        if place < len(read) and isinstance(df.schema[name].dataType, DecimalType):
            column = column.cast("double")
        elif place < len(read) and isinstance(df.schema[name].dataType, TimestampType):
            column = column.cast("timestamp_ntz")
        selected.append(column.alias(f"c{place}"))
    return df.select(*selected)


def _check_columns(model: Model, df: Any, taken: Any, read: list[str]) -> None:
    """Fails here and now where each task would fail."""
    import pyarrow
    from pyspark.sql.pandas.types import to_arrow_schema

    if set(model.feature_names_in_) <= set(read):
        types = to_arrow_schema(taken.select(taken.columns[: len(read)]).schema).types
        arrays = [pyarrow.nulls(1, kind) for kind in types]  # of no rows, types are not looked at
        model.table(pyarrow.RecordBatch.from_arrays(arrays, read))
    else:
        model.table({name: [] for name in df.columns})  # says which is lacking


def _spark_type(name: str) -> Any:
    from pyspark.sql import types

    return {
        "string": types.StringType,
        "bigint": types.LongType,
        "double": types.DoubleType,
        "boolean": types.BooleanType,
    }[name]()


def _broadcast(session: Any, shipment: Shipment) -> Callable[[], Shipment]:
    """What gives the shipment on a worker."""
    try:
        context = session.sparkContext
    except Exception:  # Spark Connect has none: the function that is sent carries the document
        return lambda: shipment
    key = (context.applicationId, shipment.key)
    broadcast = _broadcasts.get(key)
    if broadcast is None:
        broadcast = _broadcasts[key] = context.broadcast(tuple(shipment))
    return lambda: Shipment(*broadcast.value)


def _score_batch(
    model: Model,
    batch: Any,
    read: list[str],
    kept: list[str],
    columns: str,
    decisions: bool,
    reasons: bool,
) -> Any:
    import pyarrow

    cases = pyarrow.RecordBatch.from_arrays(batch.columns[: len(read)], read)
    names, arrays = list(kept), batch.columns[len(read) :]
    for name, kind, values, missing in model._score_columns(cases, columns, decisions, reasons):
        if kind == CODES:
            codes = pyarrow.array(values, mask=values < 0)
            categories = pyarrow.array(model._classes.tolist())
            array = pyarrow.DictionaryArray.from_arrays(codes, categories).dictionary_decode()
        elif kind == TEXTS:
            array = pyarrow.array(values, pyarrow.string())
        else:
            array = pyarrow.array(values, mask=missing, from_pandas=True)
        names.append(name)
        arrays.append(array)
    return pyarrow.RecordBatch.from_arrays(arrays, names)
