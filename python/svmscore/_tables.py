"""Tables of other libraries as columns that the library reads.

Numbers are not copied where their layout allows it: any stride that is positive, the machine's own
byte order. Missing are `None`, `NaN`, `pandas.NA`, `NaT`, and what masks and bitmaps say.
"""

from __future__ import annotations

import datetime
import difflib
import sys
from collections.abc import Iterable, Mapping, Sequence
from typing import Any

import numpy as np

from . import _core

_MOMENT_TYPES = ("date", "dateTime", "time")
_FEW_ROWS = 16  # of a frame: it is read as a whole
_NAMED_COLUMNS, _NAMED_HINTS = 10, 3  # in a message


class Table:
    """Columns, and what of their origin the scores need.

    Attributes:
        columns: what the library reads.
        index: the index of a pandas DataFrame; None for anything else.
        kind: "pandas", "polars" or "" for anything else: what the scores are handed back as.
    """

    __slots__ = ("columns", "index", "kind")

    def __init__(self, columns: _core.Columns, index: Any = None, kind: str = "") -> None:
        self.columns = columns
        self.index = index
        self.kind = kind


def _of(module: str, value: object, name: str) -> bool:
    """Whether `value` is an instance of a class of a module that need not be installed."""
    kind = getattr(sys.modules.get(module), name, None)  # older versions lack some
    return kind is not None and isinstance(value, kind)


def is_frame(X: object) -> bool:
    return _of("pandas", X, "DataFrame")


def is_scalar(value: object) -> bool:
    """Whether it is the value of one cell, not a column."""
    if isinstance(value, np.ndarray):
        return value.ndim == 0
    return value is None or isinstance(
        value, (str, bytes, bytearray, bool, int, float, np.generic)
    ) or not (hasattr(value, "__len__") or hasattr(value, "__iter__"))


def is_case(X: object) -> bool:
    """Whether it is one case: a dict of single values."""
    return isinstance(X, Mapping) and len(X) > 0 and all(map(is_scalar, X.values()))


def has_stream(X: object) -> bool:
    """Whether X hands its rows over through Arrow's C interface, and in no way that is better here."""
    return hasattr(X, "__arrow_c_stream__") and not (is_frame(X) or _is_column(X))


def can_slice(X: Any) -> bool:
    """Whether X hands its rows over more than once, and some of them."""
    return type(X).__module__.partition(".")[0] in ("polars", "pyarrow") and hasattr(X, "slice")


def _is_column(X: object) -> bool:
    return (
        any(_of(module, X, "Series") for module in ("pandas", "polars"))
        or _of("pyarrow", X, "Array")
        or _of("pyarrow", X, "ChunkedArray")
    )


def lack_of(X: Any, needed: Sequence[str]) -> str:
    """Which needed columns X lacks, and what it has instead; "" if none, or if X does not tell."""
    labels = _labels_of(X)
    if labels is None:
        return ""
    has = [str(label) for label in labels]
    missing = [name for name in needed if name not in has]
    if not missing:
        return ""
    others = {name.strip().casefold(): name for name in has if name not in needed}
    hints = []
    for name in missing[:_NAMED_HINTS]:
        for alike in difflib.get_close_matches(name.strip().casefold(), list(others), 1, 0.8):
            hints.append(f'did you mean "{others.pop(alike)}" for "{name}"? ')
    if is_frame(X) and not set(missing).isdisjoint(map(str, X.index.names)):
        hints.append("the index is no column: give X.reset_index(); ")
    return (
        f"the table has no column{'s' if len(missing) > 1 else ''} {_list_of(missing)}, "
        "which the model needs; "
        + "".join(hints)
        + (f"it has {_list_of(has)}" if has else "it has no columns")
    )


def _list_of(names: Sequence[str]) -> str:
    more = len(names) - _NAMED_COLUMNS
    return ", ".join(f'"{name}"' for name in names[:_NAMED_COLUMNS]) + (
        f" and {more} more" if more > 0 else ""
    )


def _labels_of(X: Any) -> list[Any] | None:
    if isinstance(X, Mapping):
        return list(X)
    if isinstance(X, (list, tuple)):
        return list(dict.fromkeys(key for row in X if isinstance(row, Mapping) for key in row))
    if isinstance(X, np.ndarray):
        return list(X.dtype.names or ())
    names = getattr(getattr(X, "schema", None), "names", None)
    if isinstance(names, list):  # of pyarrow, whose `columns` are the arrays
        return names
    columns = getattr(X, "columns", None)
    return None if columns is None else list(columns)


def read(
    X: Any, names: Sequence[str] | None, types: Mapping[str, str], order: Sequence[str] = ()
) -> Table:
    """The columns of X.

    Args:
        X: a DataFrame, a dict of columns or of single values, a list of dicts, a structured array,
            or an array of shape (n, len(order)), whose columns are those of `order`.
        names: the columns that are wanted, as far as they are there; None for all.
        types: the data types of fields by name, as documents spell them.
        order: the names of the columns of a plain array.
    Raises:
        TypeError, ValueError: X is none of these, or a column cannot be read; with its name.
    """
    if is_frame(X):
        return _read_frame(X, names, types)
    if isinstance(X, (list, tuple)) and len(X) == 0:
        return _read_mapping({name: [] for name in order}, names, types)
    if isinstance(X, Mapping):
        return _read_mapping(X, names, types)
    if isinstance(X, np.ndarray) and X.dtype.names is not None:
        return _read_mapping({name: X[name] for name in X.dtype.names}, names, types)
    if has_stream(X) or _of("pyarrow", X, "Table"):
        return _read_arrow(X, names, types)
    if isinstance(X, (list, tuple)) and len(X) > 0 and all(isinstance(row, Mapping) for row in X):
        keys = dict.fromkeys(key for row in X for key in row)
        return _read_mapping({key: [row.get(key) for row in X] for key in keys}, names, types)
    return _read_array(X, types, order)


def _wanted(labels: Iterable[Any], names: Sequence[str] | None) -> list[tuple[str, Any]]:
    """(name, label) of each column that is wanted. Labels that are no texts match by their text."""
    by_name: dict[str, Any] = {}
    for label in labels:
        name = label if isinstance(label, str) else str(label)
        if name in by_name and (names is None or name in names):
            raise ValueError(f"column {name!r} is there twice; rename or drop one of them")
        by_name[name] = label
    if names is None:
        return list(by_name.items())
    return [(name, by_name[name]) for name in names if name in by_name]


def _read_frame(X: Any, names: Sequence[str] | None, types: Mapping[str, str]) -> Table:
    columns = _core.Columns(len(X))
    if 0 < len(X) <= _FEW_ROWS and names is not None and X.columns.is_unique:
        # Looking columns up one by one would take longer than scoring a few rows. Columns that are
        # not wanted are passed over by the library.
        values = X.to_numpy()
        labels = X.columns.tolist()
        if values.dtype == np.float64 and all(map(_is_text, labels)) and _is_exact(values):
            columns.add_matrix(labels, values if min(values.strides) > 0 else values.copy())
            return Table(columns, X.index, "pandas")
    for name, label in _wanted(X.columns, names):
        _add_series(columns, name, X[label], types.get(name, ""))
    return Table(columns, X.index, "pandas")


def _is_text(label: Any) -> bool:
    return type(label) is str


def _is_exact(values: np.ndarray) -> bool:
    """Whether whole numbers among them cannot have lost digits when they became doubles."""
    return not bool((np.abs(values) >= 2**53).any())


def _read_mapping(
    X: Mapping[Any, Any], names: Sequence[str] | None, types: Mapping[str, str]
) -> Table:
    wanted = _wanted(X, names)
    if is_case(X):
        columns = _core.Columns(1)
        for name, label in wanted:
            _add_objects(columns, name, [plain(X[label])], types.get(name, ""))
        return Table(columns)
    length: int | None = None
    for label, column in X.items():
        if is_scalar(column):
            raise ValueError(f"column {label!r} is a single value beside columns of several")
        if not hasattr(column, "__len__"):
            raise TypeError(f"column {label!r}: values of type {type(column).__name__} are not read")
        if length is not None and len(column) != length:
            raise ValueError(
                f"column {label!r} has {len(column)} values, others have {length}; "
                "a table has one for each row"
            )
        length = len(column)
    columns = _core.Columns(length or 0)
    for name, label in wanted:
        add_values(columns, name, X[label], types.get(name, ""))
    return Table(columns)


def _read_array(X: Any, types: Mapping[str, str], order: Sequence[str]) -> Table:
    if "scipy.sparse" in sys.modules and sys.modules["scipy.sparse"].issparse(X):
        raise TypeError("sparse matrices are not read; give X.toarray(), in parts if it is large")
    if _is_column(X):
        raise TypeError(
            f"a {type(X).__name__} is not a table; give a DataFrame or a dict of columns, or a dict of "
            "single values for one case, such as X.to_dict() of a row of pandas"
        )
    if type(X).__name__ == "LazyFrame":
        raise TypeError("a LazyFrame has no rows yet; give X.collect()")
    if not (hasattr(X, "__array__") or isinstance(X, (list, tuple))):
        raise TypeError(
            f"a table of type {type(X).__name__} is not read; give a DataFrame, a dict of columns, "
            "a list of dicts, an array, or a table with Arrow's C interface"
        )
    array = X if isinstance(X, np.ma.MaskedArray) else np.asarray(X)
    if isinstance(X, (list, tuple)) and (
        array.dtype.kind not in "biufO"
        or "string" in types.values()
        or array.dtype.kind == "f" and not _is_exact(array)
    ):
        array = np.array(X, dtype=object)  # rows of numbers, texts and bools, each as it is
    if array.ndim != 2:
        raise ValueError(
            f"an array of cases has two axes, (cases, inputs); this one has {array.ndim}"
            + ("; for one case give X.reshape(1, -1)" if array.ndim == 1 else "")
        )
    if array.shape[1] != len(order):
        raise ValueError(
            f"the array has {array.shape[1]} columns, but the model has {len(order)} inputs, "
            f"{', '.join(map(repr, order[:_NAMED_COLUMNS]))}"
            f"{', ...' if len(order) > _NAMED_COLUMNS else ''} (feature_names_in_); "
            "a DataFrame or dict may have others besides"
        )
    columns = _core.Columns(array.shape[0])
    masked = isinstance(array, np.ma.MaskedArray)
    if _reads_in_place(array) and not masked and min(array.strides) > 0:
        columns.add_matrix(list(order), array)
    else:
        for place, name in enumerate(order):
            _add_array(columns, name, array[:, place], types.get(name, ""))
    return Table(columns)


def _read_arrow(X: Any, names: Sequence[str] | None, types: Mapping[str, str]) -> Table:
    try:
        import pyarrow
    except ImportError:
        raise TypeError(
            f"to read a table of type {type(X).__name__} here, install pyarrow, or give a dict of "
            "columns"
        ) from None
    table = X if isinstance(X, pyarrow.Table) else pyarrow.table(X)
    columns = _core.Columns(table.num_rows)
    for name, _ in _wanted(table.column_names, names):
        _add_arrow(columns, name, table[name], types.get(name, ""))
    return Table(columns)


def add_values(columns: _core.Columns, name: str, values: Any, data_type: str) -> None:
    """Adds one column: an array, a Series of pandas or polars, an array of pyarrow, a sequence."""
    if _of("pandas", values, "Series") or _of("pandas", values, "Index"):
        _add_series(columns, name, values, data_type)
    elif _of("pandas", values, "Categorical"):
        _add_categories(columns, name, values, data_type)
    elif isinstance(values, np.ndarray):
        _add_array(columns, name, values, data_type)
    elif _of("pyarrow", values, "Array") or _of("pyarrow", values, "ChunkedArray"):
        _add_arrow(columns, name, values, data_type)
    elif hasattr(values, "to_list"):
        _add_objects(columns, name, values.to_list(), data_type)
    elif isinstance(values, (list, tuple, range)):
        _add_objects(columns, name, list(values), data_type)
    elif hasattr(values, "__array__"):
        _add_array(columns, name, np.asarray(values), data_type)
    else:
        raise TypeError(f"column {name!r}: values of type {type(values).__name__} are not read")


def _reads_in_place(array: np.ndarray) -> bool:
    dtype = array.dtype
    return dtype.isnative and (dtype.kind in "biu" or dtype in (np.float64, np.float32))


def _add_array(columns: _core.Columns, name: str, array: np.ndarray, data_type: str) -> None:
    if array.ndim != 1:
        raise ValueError(f"column {name!r} has {array.ndim} axes; a column has one")
    mask = None
    if isinstance(array, np.ma.MaskedArray):
        mask, array = np.ma.getmaskarray(array), np.asarray(array.data)
    kind = array.dtype.kind
    if kind == "f" and not _reads_in_place(array):
        array = array.astype(np.float32 if array.itemsize < 4 else np.float64)
    elif kind in "biu" and not array.dtype.isnative:
        array = array.astype(array.dtype.newbyteorder("="))
    if kind in "biuf":
        if array.strides[0] <= 0:
            array = array.copy()
        columns.add_numbers(name, array, mask)
        return
    if kind == "M":
        values = _moment_texts(array, data_type)
    elif kind == "S":
        try:
            values = [text.decode("utf-8") for text in array.tolist()]
        except UnicodeDecodeError as error:
            raise ValueError(f"column {name!r}: {error}") from None
    elif kind in "OUT":
        values = array.tolist()
    else:
        raise TypeError(f"column {name!r}: values of type {array.dtype} are not read")
    if mask is not None:
        values = [None if missing else value for value, missing in zip(values, mask)]
    _add_objects(columns, name, values, data_type)


def _moment_texts(array: np.ndarray, data_type: str) -> list[Any]:
    """Points in time as the texts of ISO 8601; as dates, where the field takes these or none has a time."""
    days = array.astype("datetime64[D]")
    missing = np.isnat(array)
    if data_type != "dateTime" and bool(((days == array) | missing).all()):
        texts = np.datetime_as_string(days)
    else:
        seconds = array.astype("datetime64[s]")
        whole = bool(((seconds == array) | missing).all())
        texts = np.datetime_as_string(seconds if whole else array)
    return [None if nothing else str(text) for text, nothing in zip(texts, missing)]


def _add_objects(columns: _core.Columns, name: str, values: list[Any], data_type: str) -> None:
    if data_type in _MOMENT_TYPES:
        values = [_moment_text(value, data_type) for value in values]
    # "true" is no number: a bool among numbers counts, unless the field is one of texts.
    columns.add_objects(name, values, data_type not in ("", "string"))


def _moment_text(value: Any, data_type: str) -> Any:
    """A date may be a point in time too, of midnight."""
    if isinstance(value, np.datetime64):
        return _moment_texts(np.array([value]), data_type)[0]
    if data_type != "date" or not isinstance(value, datetime.datetime) or value.tzinfo is not None:
        return value
    if value != value:  # NaT of pandas
        return None
    midnight = value.time() == datetime.time() and not getattr(value, "nanosecond", 0)
    return str(value.date()) if midnight else value


def plain(value: Any) -> Any:
    """A value of one cell; those of NumPy as Python's own."""
    if not isinstance(value, (np.generic, np.ndarray)) or value.dtype.kind == "m":
        return value
    if value.dtype.kind == "M":
        return _moment_texts(np.array([value]), "")[0]
    return value.item()


def _add_series(columns: _core.Columns, name: str, series: Any, data_type: str) -> None:
    """A column of pandas by its kind: numbers, categories by codes, masks, Arrow's texts, objects."""
    dtype = series.dtype
    if isinstance(dtype, np.dtype):
        _add_array(columns, name, series.to_numpy(), data_type)
        return
    pandas = sys.modules["pandas"]
    values = series.array
    if isinstance(dtype, pandas.CategoricalDtype):
        _add_categories(columns, name, values, data_type)
    elif isinstance(dtype, pandas.DatetimeTZDtype):
        raise TypeError(
            f"column {name!r}: times with a time zone are not read; convert them to the zone that "
            "the model means and drop the zone, for example by .dt.tz_localize(None)"
        )
    elif isinstance(dtype, pandas.SparseDtype):
        _add_array(columns, name, np.asarray(values), data_type)
    elif (
        isinstance(dtype, (pandas.StringDtype, getattr(pandas, "ArrowDtype", pandas.StringDtype)))
        and hasattr(values, "__arrow_array__")
        and "pyarrow" in sys.modules
    ):
        _add_arrow(columns, name, values.__arrow_array__(), data_type)
    elif getattr(getattr(dtype, "numpy_dtype", None), "kind", "") in tuple("biuf"):
        _add_masked(columns, name, series, dtype.numpy_dtype)
    else:
        _add_objects(columns, name, series.astype(object).tolist(), data_type)


def _add_masked(columns: _core.Columns, name: str, series: Any, dtype: np.dtype) -> None:
    missing = np.asarray(series.isna(), dtype=bool)
    nothing = False if dtype.kind == "b" else 0
    numbers = series.to_numpy(dtype=dtype, na_value=nothing)
    _add_array(columns, name, np.ma.MaskedArray(numbers, missing), "")


def _add_categories(columns: _core.Columns, name: str, values: Any, data_type: str) -> None:
    categories = values.categories
    meanings: Any = categories.to_numpy()
    if meanings.dtype.kind == "M":
        meanings = _moment_texts(meanings, data_type)
    elif not (meanings.dtype.kind in "iuf" and _reads_in_place(meanings) and len(meanings)):
        meanings = categories.astype(object).tolist()
    elif meanings.strides[0] <= 0:
        meanings = meanings.copy()
    codes = values.codes
    columns.add_codes(name, codes if len(codes) == 0 or codes.strides[0] > 0 else codes.copy(), meanings)


def _add_arrow(columns: _core.Columns, name: str, values: Any, data_type: str) -> None:
    import pyarrow

    if isinstance(values, pyarrow.ChunkedArray):
        values = values.combine_chunks()
        if isinstance(values, pyarrow.ChunkedArray):  # of no chunks, or too large for one
            values = pyarrow.concat_arrays(values.chunks) if values.num_chunks else pyarrow.array([])
    kinds = pyarrow.types
    if kinds.is_string(values.type) or kinds.is_large_string(values.type):
        validity, offsets, data = values.buffers()
        bits = 64 if kinds.is_large_string(values.type) else 32
        columns.add_texts(name, offsets or b"\0" * 8, bits, data or b"", validity, values.offset)
    elif kinds.is_dictionary(values.type):
        _add_arrow(columns, name, values.dictionary_decode(), data_type)
    elif (
        kinds.is_integer(values.type)
        or kinds.is_floating(values.type)
        or kinds.is_boolean(values.type)
    ):
        missing = values.is_null().to_numpy(zero_copy_only=False)
        if values.null_count:
            values = values.fill_null(values.type.to_pandas_dtype()(0))
        numbers = values.to_numpy(zero_copy_only=False)
        _add_array(columns, name, np.ma.MaskedArray(numbers, missing), data_type)
    elif kinds.is_timestamp(values.type) and values.type.tz is None or kinds.is_date(values.type):
        _add_array(columns, name, values.to_numpy(zero_copy_only=False).astype("M8"), data_type)
    else:
        _add_objects(columns, name, values.to_pylist(), data_type)
