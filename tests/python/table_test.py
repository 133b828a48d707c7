"""Tables as people have them give the program's scores, or an error that names the column."""

import datetime
import decimal

import numpy as np
import pandas as pd
import pytest

import svmscore
from conftest import EXAMPLES, MIXED, mixed_result, program_table

ROWS = 3
N = [1, 2, 3]
X = [0.5, -1.25, 4.0]
COLOUR = ["red", "green", "red"]
FLAG = [True, False, True]
WHEN = ["1960-01-01", "1960-01-11", "1961-01-01"]
WANTED = [
    mixed_result(n, x, c, f, d) for n, x, c, f, d in zip(N, X, COLOUR, FLAG, (0, 10, 366))
]
COLUMNS = {"n": N, "x": X, "colour": COLOUR, "flag": FLAG, "when": WHEN}


def cell(value):
    """The text that the program writes for a value."""
    if value is None or value is pd.NA or value != value:
        return ""
    if isinstance(value, (bool, np.bool_)):
        return "true" if value else "false"
    return str(value)


def same(text, value):
    if text == cell(value):
        return True
    return text != "" and isinstance(value, float) and float(text) == value


@pytest.mark.parametrize("example", ["iris", "digits", "diabetes", "tumour"])
@pytest.mark.parametrize("columns", ["auto", "raw", "all"])
def test_scores_are_those_of_the_program(example, columns, tmp_path):
    model = EXAMPLES / example / "model.pmml"
    frame = pd.read_csv(EXAMPLES / example / "cases.csv")
    frame = pd.concat([frame, frame.iloc[:1]], ignore_index=True)
    frame = frame.astype({frame.columns[0]: float})
    frame.iloc[-1, 0] = np.nan
    cases = tmp_path / "cases.csv"
    frame.to_csv(cases, index=False)
    wanted = program_table(model, cases, "--columns", columns, "--decisions")
    loaded = svmscore.load(model)
    got = loaded.table(frame.set_index(frame.index + 7), columns, decisions=True)
    assert list(got.columns) == list(wanted) and list(got.index) == list(frame.index + 7)
    for name, cells in wanted.items():
        unlike = [(c, v) for c, v in zip(cells, got[name].tolist()) if not same(c, v)]
        assert not unlike, (name, unlike[:3])
    alike = loaded.table({name: frame[name] for name in frame}, columns, decisions=True)
    for name, values in alike.items():
        assert isinstance(values, np.ndarray) and len(values) == len(frame)
        assert all(same(c, v) for c, v in zip(wanted[name], values.tolist())), name


def frame_of(**changed):
    return pd.DataFrame({**COLUMNS, **changed})


def structured():
    array = np.zeros(
        ROWS, dtype=[("when", "M8[D]"), ("x", "f4"), ("n", ">i2"), ("flag", "?"), ("colour", "U5")]
    )
    for name, values in COLUMNS.items():
        array[name] = values
    return array


def read_only(values):
    array = np.array(values)
    array.flags.writeable = False
    return array


TABLES = {
    "frame": lambda: frame_of(),
    "other order, other columns": lambda: frame_of(more=["?"] * ROWS)[
        ["more", "when", "x", "flag", "n", "colour"]
    ],
    "categories": lambda: frame_of(
        colour=pd.Categorical(COLOUR), n=pd.Categorical(N), when=pd.Categorical(WHEN)
    ),
    "categories backwards": lambda: frame_of(
        colour=pd.Categorical(COLOUR[::-1])[::-1],
        n=pd.Categorical(N, categories=pd.Index(N[::-1])[::-1]),
    ),
    "others twice": lambda: pd.concat([frame_of(a=1), frame_of(a=2)[["a"]]], axis=1),
    "nullable": lambda: frame_of(
        n=pd.array(N, dtype="Int8"), x=pd.array(X, dtype="Float32"),
        flag=pd.array(FLAG, dtype="boolean"), colour=pd.array(COLOUR, dtype="string[python]"),
    ),
    "arrow-backed": lambda: frame_of().convert_dtypes(dtype_backend="pyarrow"),
    "nullable indexes": lambda: {**COLUMNS, "n": pd.Index(N, dtype="Int8"), "x": pd.Index(X)},
    "days": lambda: frame_of(when=pd.to_datetime(WHEN)),
    "dates": lambda: frame_of(when=[datetime.date.fromisoformat(day) for day in WHEN]),
    "objects": lambda: frame_of().astype(object),
    "numbers as texts": lambda: frame_of(n=["1", "2", "3"], x=["0.5", "-1.25", "4"]),
    "decimals": lambda: frame_of(x=[decimal.Decimal(str(x)) for x in X]),
    "flags as numbers": lambda: frame_of(flag=[1, 0, 1]),
    "flags as texts": lambda: frame_of(flag=["true", "false", "true"]),
    "arrow-backed text, cut": lambda: pd.DataFrame(
        {name: [values[1], *values] for name, values in COLUMNS.items()}
    ).astype({"colour": "string[pyarrow]"})[1:],
    "midnights": lambda: {**COLUMNS, "when": [datetime.datetime.fromisoformat(d) for d in WHEN]},
    "days of NumPy": lambda: {**COLUMNS, "when": [np.datetime64(day) for day in WHEN]},
    "categories of days": lambda: frame_of(when=pd.Categorical(pd.to_datetime(WHEN))),
    "bools among numbers": lambda: {**COLUMNS, "n": [True, 2, 3.0], "flag": [1, False, np.True_]},
    "values that change their list": lambda: {**COLUMNS, "x": Changing(X)},
    "sparse": lambda: frame_of(x=pd.arrays.SparseArray(X)),
    "wide numbers": lambda: frame_of(x=np.array(X, dtype=np.longdouble), n=np.float16(N)),
    "dict of lists": lambda: dict(COLUMNS),
    "dict of arrays": lambda: {name: np.array(values) for name, values in COLUMNS.items()},
    "read-only": lambda: {name: read_only(values) for name, values in COLUMNS.items()},
    "backwards": lambda: {name: np.array(values[::-1])[::-1] for name, values in COLUMNS.items()},
    "every other": lambda: {name: np.repeat(values, 2)[::2] for name, values in COLUMNS.items()},
    "one value for all": lambda: {**COLUMNS, "x": np.broadcast_to(0.5, ROWS)},
    "byte order": lambda: {**COLUMNS, "x": np.array(X, dtype=">f8"), "n": np.array(N, ">u4")},
    "small types": lambda: {**COLUMNS, "x": np.float32(X), "n": np.array(N, dtype=np.uint8)},
    "list of dicts": lambda: [dict(zip(COLUMNS, row)) for row in zip(*COLUMNS.values())],
    "structured": structured,
    "pyarrow": lambda: __import__("pyarrow").table(COLUMNS),
    "pyarrow, chunked and cut": lambda: pyarrow_chunks(),
    "polars": lambda: __import__("polars").DataFrame(COLUMNS),
    "duckdb": lambda: duckdb_relation(),
    "polars columns": lambda: dict(zip(COLUMNS, __import__("polars").DataFrame(COLUMNS))),
    "array of objects": lambda: np.array(list(zip(*COLUMNS.values())), dtype=object),
    "list of lists": lambda: [list(row) for row in zip(*COLUMNS.values())],
}


def pyarrow_chunks():
    import pyarrow

    table = pyarrow.table(COLUMNS)
    doubled = pyarrow.concat_tables([table.slice(0, 1), table, table])
    return doubled.slice(1, ROWS)


class Changing:
    """A column whose list becomes empty while its values are read."""

    def __init__(self, numbers):
        self.numbers, self.values = numbers, []

    def __len__(self):
        return ROWS

    def to_list(self):
        self.values = [self.Value(number, self) for number in self.numbers]
        return self.values

    class Value:
        def __init__(self, number, column):
            self.number, self.column = number, column

        def __float__(self):
            self.column.values.clear()
            return self.number


def stream_without_batches():
    import pyarrow

    schema = pyarrow.table(COLUMNS).drop(["x"]).schema
    return pyarrow.RecordBatchReader.from_batches(schema, [])


def stream_that_is_used_up():
    import pyarrow

    capsule = pyarrow.table(COLUMNS).__arrow_c_stream__()
    pyarrow.RecordBatchReader._import_from_c_capsule(capsule)
    return type("Stream", (), {"__arrow_c_stream__": lambda self: capsule})()


class StreamOf:
    def __init__(self, column):
        self.column = column

    def __arrow_c_stream__(self):
        return self.column.__arrow_c_stream__()


def duckdb_relation():
    import duckdb

    return duckdb.from_df(frame_of())


@pytest.mark.parametrize("kind", TABLES)
def test_every_kind_of_table_is_read(mixed, kind):
    table = TABLES[kind]()
    wanted = list(WANTED)
    if kind == "one value for all":
        wanted = [mixed_result(n, 0.5, c, f, d) for n, c, f, d in zip(N, COLOUR, FLAG, (0, 10, 366))]
    assert mixed.predict(table).tolist() == wanted
    scores = mixed.table(table)
    assert type(scores) is (type(table) if type(table).__name__ == "DataFrame" else dict)
    assert list(scores["prediction"]) == wanted


def test_a_case_may_be_a_dict(mixed):
    case = dict(zip(COLUMNS, (1, 0.5, "red", True, "1960-01-01")))
    for changed in (
        {}, {"n": np.int64(1)}, {"x": np.float32(0.5)}, {"flag": np.True_}, {"flag": 1},
        {"when": datetime.date(1960, 1, 1)}, {"when": np.datetime64("1960-01-01")}, {"more": None},
        {"when": pd.Timestamp("1960-01-01")},
    ):
        assert mixed.predict({**case, **changed}).tolist() == WANTED[:1], changed
    with pytest.raises(svmscore.ScoringError, match="x: no value"):
        mixed.predict({**case, "x": None})
    with pytest.raises(svmscore.TableError, match='"x"'):
        mixed.predict({name: value for name, value in case.items() if name != "x"})
    assert np.isnan(mixed.predict({**case, "x": "?"}, errors="status")).all()


def test_fields_of_texts_take_numbers_and_bools_as_they_are():
    document = MIXED.replace('dataType="date"', 'dataType="double"').replace(
        '<Apply function="dateDaysSinceYear"><FieldRef field="when"/><Constant>1960</Constant></Apply>',
        '<FieldRef field="when"/>')
    for text, value in (("9007199254740993", 2**53 + 1), ("true", True), ("0.5", 0.5), ("1", 1.0),
                        (str(2**70), 2**70), ("1e+300", 1e300)):
        model = svmscore.load(document.replace('"red"', f'"{text}"'))
        row = {"n": 1, "x": 0.5, "colour": value, "flag": 1, "when": 0.0}
        frame = pd.DataFrame([row])
        for table in (row, [row], [list(row.values())], frame, pd.concat([frame] * 20),
                      frame.astype({"colour": "category"}), {name: [row[name]] * 2 for name in row},
                      {**{name: [row[name]] * 2 for name in row}, "colour": [value, "green"]}):
            assert model.predict(table)[0] == mixed_result(1, 0.5, "red", 1, 0), (text, type(table))


def test_points_in_time_keep_their_time(mixed):
    document = MIXED.replace('dataType="date"', 'dataType="dateTime"').replace(
        "dateDaysSinceYear", "dateSecondsSinceYear")
    model = svmscore.load(document)
    for texts in (["1959-12-31T23:59:59", "1960-01-01T00:00:05"], ["1960-01-01", "1960-01-02"],
                  ["1960-01-01T00:00:00.25", "1960-01-02T01:00:00.5"]):
        times = np.array(texts, "M8[ns]")
        wanted = ((times - np.datetime64("1960-01-01")) // np.timedelta64(1, "s")).tolist()
        for when in (times, pd.Series(times), times.astype("M8[ms]"), times.astype("M8[us]").tolist(),
                     list(times), [pd.Timestamp(text) for text in texts], pd.Categorical(times)):
            table = {"n": [0, 0], "x": [0, 0], "colour": ["green"] * 2, "flag": [0, 0], "when": when}
            assert model.predict(table).tolist() == wanted, (texts, type(when))
        if ":" in texts[0]:
            assert np.isnan(mixed.predict({**table, "when": list(times)}, errors="status")).all()


@pytest.mark.parametrize("kind", ["float16", "float32", "float64", "dictionary"])
def test_nan_and_null_are_missing_in_parts_of_a_stream(mixed, kind):
    import pyarrow

    names = {**COLUMNS, "x": np.array([0, 0, 0.5, np.nan, 4])}
    x = pyarrow.array(names["x"].astype(kind if kind != "dictionary" else float),
                      mask=np.array([0, 1, 0, 0, 0], dtype=bool))
    names["x"] = x.dictionary_encode() if kind == "dictionary" else x
    table = pyarrow.table({n: v if n == "x" else [v[i] for i in (0, 0, 0, 1, 2)] for n, v in names.items()})
    whole = table.combine_chunks().to_struct_array().combine_chunks()
    for part in (table.slice(1), StreamOf(pyarrow.chunked_array([whole.slice(1)]))):
        assert list(mixed.table(part)["status"]) == [90029, 0, 90029, 0]
        assert mixed.predict(part, errors="status")[[1, 3]].tolist() == [WANTED[0], WANTED[2]]


def test_the_first_of_several_dicts_may_lack_a_key(mixed):
    rows = [dict(zip(COLUMNS, row)) for row in zip(*COLUMNS.values())]
    del rows[0]["x"]
    assert mixed.predict(rows, errors="status")[1:].tolist() == WANTED[1:]


MISSING = {
    "NaN": lambda: frame_of(x=[0.5, np.nan, 4.0]),
    "float32": lambda: {**COLUMNS, "x": np.float32([0.5, np.nan, 4.0])},
    "None": lambda: frame_of(colour=["red", None, "red"]),
    "pandas.NA": lambda: frame_of(n=pd.array([1, None, 3], dtype="Int64")),
    "null in an arrow-backed column": lambda: frame_of(
        flag=pd.Series([True, None, True], dtype=pd.ArrowDtype(__import__("pyarrow").bool_()))
    ),
    "NaN in a nullable column": lambda: frame_of(x=pd.array([0.5, np.nan, 4.0], dtype="Float64")),
    "NaT": lambda: frame_of(when=pd.to_datetime([WHEN[0], None, WHEN[2]])),
    "category": lambda: frame_of(colour=pd.Categorical(["red", None, "red"])),
    "a category that is NaN": lambda: {
        **COLUMNS, "colour": np.array(["red", np.nan, "red"], dtype=object)
    },
    "mask": lambda: {**COLUMNS, "x": np.ma.masked_equal(np.array([0.5, 9.0, 4.0]), 9.0)},
    "NaN beside a mask": lambda: {**COLUMNS, "x": np.ma.array([0.5, np.nan, 4], mask=[0, 0, 0])},
    "null": lambda: __import__("pyarrow").table({**COLUMNS, "n": [1, None, 3]}),
    "NaN among whole numbers": lambda: {**COLUMNS, "x": [0.5, np.float32("nan"), 4]},
    "mask of a table": lambda: np.ma.array(
        list(zip(*COLUMNS.values())), dtype=object, mask=[[0] * 5, [0, 1, 0, 0, 0], [0] * 5]
    ),
    "NaT in an object": lambda: {**COLUMNS, "when": [WHEN[0], pd.NaT, WHEN[2]]},
    "NaN in Arrow": lambda: __import__("pyarrow").table(
        {**COLUMNS, "x": __import__("pyarrow").array([0.5, float("nan"), 4.0])}
    ),
    "NaN in polars": lambda: __import__("polars").DataFrame(
        {**COLUMNS, "x": [0.5, float("nan"), 4.0]}
    ),
    "arrow-backed text": lambda: frame_of(
        colour=pd.array(["red", None, "red"], dtype="string[pyarrow]")
    ),
}


@pytest.mark.parametrize("kind", MISSING)
def test_missing_values_are_missing(mixed, kind):
    table = MISSING[kind]()
    scores = mixed.table(table, reasons=True)
    assert list(scores["status"]) == [0, 90029, 0]
    assert pd.isna(scores["reason"]).tolist() == [True, False, True]
    got = mixed.predict(table, errors="status")
    assert got[[0, 2]].tolist() == [WANTED[0], WANTED[2]] and np.isnan(got[1])
    with pytest.raises(svmscore.ScoringError, match="1 of 3 rows.*row 1") as caught:
        mixed.predict(table)
    assert caught.value.rows == [1] and caught.value.statuses == [90029]


FAULTS = [
    (lambda: frame_of().drop(columns="colour"), svmscore.TableError, 'no column "colour"'),
    (lambda: frame_of().rename(columns={"colour": "Colour", "x": "zz"}), svmscore.TableError,
     'no columns "x", "colour".*did you mean "Colour" for "colour"\\?.*"zz"'),
    (lambda: frame_of().set_index("x"), svmscore.TableError, r"reset_index\(\)"),
    (lambda: pd.concat({"a": frame_of()}, axis=1), svmscore.TableError, r"\('a', 'colour'\)"),
    (lambda: pd.DataFrame(), svmscore.TableError, "no columns"),
    (lambda: {}, svmscore.TableError, "no columns"),
    (lambda: __import__("pyarrow").table({"x": X}), svmscore.TableError,
     '^the table has no columns "n".*it has "x"$'),
    (lambda: __import__("polars").DataFrame({"N": N}), svmscore.TableError, 'did you mean "N"'),
    (lambda: __import__("polars").DataFrame(COLUMNS)["x"], TypeError, "Series is not a table"),
    (lambda: __import__("pyarrow").array(X), TypeError, "a DoubleArray is not a table"),
    (lambda: __import__("polars").LazyFrame(COLUMNS), TypeError, r"X\.collect\(\)"),
    (lambda: frame_of(x=[1j] * ROWS), TypeError, "'x'.*complex"),
    (lambda: frame_of(x=pd.to_timedelta([1] * ROWS)), TypeError, "'x'.*timedelta"),
    (lambda: frame_of(x=[[1], [2], [3]]), TypeError, "'x', row 0.*list"),
    (lambda: frame_of(x=[b"1", b"2", b"3"]), TypeError, "'x', row 0.*bytes"),
    (lambda: frame_of(x=pd.period_range("2020", periods=ROWS)), TypeError, "'x'"),
    (lambda: frame_of(when=pd.to_datetime(WHEN).tz_localize("CET")), TypeError, "'when'.*zone"),
    (lambda: frame_of(when=[1, 2, 3]), svmscore.TableError, "when"),
    (lambda: pd.concat([frame_of(), frame_of()[["x"]]], axis=1), ValueError, "'x'.*twice"),
    (lambda: {**COLUMNS, "x": [1.0]}, ValueError, "'x'.*1 values"),
    (lambda: {**COLUMNS, "x": 1.0}, ValueError, "'x'.*single"),
    (lambda: {**COLUMNS, "x": np.ones((ROWS, 1))}, ValueError, "'x'.*axes"),
    (lambda: {**COLUMNS, "colour": ["\ud800"] * ROWS}, ValueError, "'colour', row 0"),
    (lambda: np.ones((ROWS, 4)), ValueError, "4 columns.*5 inputs.*'n', 'x', 'colour'"),
    (lambda: np.ones(5), ValueError, "two axes.*reshape"),
    (lambda: frame_of().iloc[0], TypeError, "Series"),
    (lambda: __import__("scipy.sparse").sparse.csr_matrix((ROWS, 5)), TypeError, "sparse"),
    (lambda: 5, TypeError, "type int"),
    (lambda: __import__("pyarrow").table({**COLUMNS, "x": [[1.0]] * ROWS}), ValueError, "x"),
    (lambda: {**COLUMNS, "x": (x for x in X)}, TypeError, "'x'.*generator"),
    (lambda: {**COLUMNS, "x": [np.array([x]) for x in X]}, TypeError, "'x', row 0.*ndarray"),
    (lambda: {**COLUMNS, "colour": np.array([b"\xff"] * ROWS)}, ValueError, "'colour'"),
    (lambda: dict(zip(COLUMNS, (1, b"2", "red", True, WHEN[0]))), TypeError, "'x'.*bytes"),
    (lambda: dict(zip(COLUMNS, (1, "\ud800", "red", True, WHEN[0]))), ValueError, "'x', row 0"),
    (lambda: stream_without_batches(), svmscore.TableError, '"x"'),
    (lambda: stream_that_is_used_up(), ValueError, "read already"),
]


@pytest.mark.parametrize("table, error, message", FAULTS)
def test_faults_are_named(mixed, table, error, message):
    with pytest.raises(error, match=message):
        mixed.predict(table())


def test_older_versions_of_other_libraries_do(iris, monkeypatch):
    import scipy.sparse

    monkeypatch.delattr(scipy.sparse, "sparray", raising=False)
    assert len(iris.predict(np.ones((2, 4)))) == 2
    with pytest.raises(TypeError, match="sparse"):
        iris.predict(scipy.sparse.csr_matrix((2, 4)))


def test_tables_without_rows(mixed):
    for empty in (frame_of().iloc[:0], {name: [] for name in COLUMNS}, [],
                  np.empty((0, 5), dtype=object), __import__("pyarrow").table(frame_of()).slice(0, 0)):
        assert mixed.predict(empty).shape == (0,)
        assert len(mixed.table(empty)["status"]) == 0
    arrow = __import__("pyarrow").table(frame_of().drop(columns="colour")).slice(0, 0)
    for lacking in (frame_of().iloc[:0].drop(columns="colour"), arrow, arrow.schema.empty_table()):
        with pytest.raises(svmscore.TableError, match="colour"):
            mixed.predict(lacking)


def test_settings_of_a_scorer_that_cannot_be_are_told(mixed):
    with pytest.raises(ValueError, match="threads"):
        mixed.predict(frame_of(), threads=1_000_000)


@pytest.mark.parametrize("library", ["pandas", "pyarrow", "polars"])
def test_failed_rows_say_why(mixed, library):
    table = frame_of(x=["0.5", "forty", None])
    if library == "pyarrow":
        table = __import__("pyarrow").table(table)
    if library == "polars":
        table = __import__("polars").from_pandas(table)
    with pytest.raises(svmscore.ScoringError, match='row 1: x: "forty" is not a number; row 2: x: no'):
        mixed.predict(table)


def test_layouts_of_one_array_have_the_same_bits(iris):
    rng = np.random.default_rng(5)
    array = rng.uniform(0, 8, (70_000, 4))
    wanted = iris.decision_function(array)
    frame = pd.DataFrame(array, columns=iris.feature_names_in_)
    copies = {name: frame[name].to_numpy().copy() for name in frame}
    for other in (np.asfortranarray(array), np.repeat(array, 2, axis=0)[::2], frame,
                  pd.DataFrame(copies), copies, array.astype(object)[:1000]):
        got = iris.decision_function(other)
        assert got.tobytes() == wanted[: len(got)].tobytes()
    assert iris.decision_function(frame[:9].iloc[::-1, ::-1]).tobytes() == wanted[8::-1].tobytes()
    masked = np.ma.array(array[:3], mask=np.eye(3, 4))
    assert iris.table(masked)["status"].tolist() == [90029] * 3
    holed = array[:5000].copy()
    holed[:3000, 0] = np.nan
    assert pd.isna(iris.table(holed, reasons=True)["reason"]).tolist() == [False] * 3000 + [True] * 2000
    assert iris.decision_function(array, threads=-1).tobytes() == wanted.tobytes()
    assert iris.decision_function(array.astype(np.float32)).tobytes() == (
        iris.decision_function(array.astype(np.float32).astype(float)).tobytes()
    )
    assert [iris.predict(row[None])[0] for row in array[:50]] == iris.predict(array[:50]).tolist()
    by_case = [iris.predict(dict(zip(frame.columns, row)))[0] for row in array[:50].tolist()]
    assert by_case == iris.predict(array[:50]).tolist()
