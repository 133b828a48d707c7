"""A loaded model and what it can be asked."""

from __future__ import annotations

import io
import os
import sys
import warnings
from collections.abc import Iterable, Mapping
from typing import TYPE_CHECKING, Any, Literal, NamedTuple

import numpy as np

from . import _core, _tables
from ._errors import DocumentError, DocumentWarning, NotCalibrated, ScoringError, TableError

if TYPE_CHECKING:
    from ._calibration import Calibration
    from ._explanation import Explanation

_POLICIES = {None: 0, "replace": 1, "predict-missing": 2, "fail": 3}
_CHOICES = {"auto": 0, "raw": 1, "all": 2}
_KINDS = ("classification", "regression")
_PERCENTAGES = ("none", "votes", "calibrated")
_ROLES = ("needed", "not needed", "for output")
WHOLES, TEXTS, CODES = 3, 14, 15  # types of output columns; others are float64
_NAMED_ROWS = 5  # of those that failed, in an exception's message
_MOST_THREADS = 1024
_Errors = Literal["raise", "status"]
# A scorer keeps the memory of its largest table: after one beyond this, a new scorer is made.
_KEPT_ROWS = 100_000


class Input(NamedTuple):
    """An input field of a model."""

    name: str
    data_type: str  #: as documents spell it: "double", "integer", "string", ...
    op_type: str  #: "continuous", "ordinal", "cyclic" or "categorical"
    role: str  #: "needed", "not needed" or "for output"
    replacement: str | None  #: of a missing value
    categories: tuple[str, ...]  #: the values that are listed


class Output(NamedTuple):
    """A column of scores."""

    name: str
    of_categories: bool  #: whether its values are categories of the target


def read_source(source: Any) -> tuple[bytes, str]:
    """The bytes of a document and the name that messages call it by."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return bytes(source), "document"
    if isinstance(source, str) and source.lstrip("\ufeff \t\r\n").startswith("<"):
        return source.encode("utf-8"), "document"
    if isinstance(source, (str, os.PathLike)):
        with open(source, "rb") as file:
            return file.read(), os.fsdecode(source)
    if hasattr(source, "read"):
        text = source.read()
        name = getattr(source, "name", "document")
        return (
            text.encode("utf-8") if isinstance(text, str) else bytes(text),
            name if isinstance(name, str) else "document",
        )
    raise TypeError(
        f"a document is a path, bytes, a file object or a text that begins with '<', "
        f"not {type(source).__name__}"
        + ("; svmscore.to_pmml makes one of a fitted estimator" if hasattr(source, "fit") else "")
    )


def settings_of(
    as_is: bool,
    strict_document: bool,
    missing_policy: str | None,
    limits: Mapping[str, int] | None,
    name: str,
) -> _core.LoadSettings:
    if as_is and strict_document:
        raise ValueError("as_is and strict_document contradict each other; give one of them")
    if missing_policy not in _POLICIES:
        raise ValueError("missing_policy is None, 'replace', 'predict-missing' or 'fail'")
    mode = 1 if as_is else 2 if strict_document else 0
    name = name.encode("utf-8", "replace").decode("utf-8")  # of a file, it may be no UTF-8
    return _core.LoadSettings(mode, _POLICIES[missing_policy], dict(limits or {}), name)


def _typed(categories: list[str], data_type: str) -> np.ndarray:
    """The categories as values of the target's data type; as texts where some is no such value."""
    try:
        if data_type == "integer":
            return np.array([int(text) for text in categories], dtype=np.int64)
        if data_type in ("double", "float"):
            return np.array([float(text) for text in categories], dtype=np.float64)
    except (ValueError, OverflowError):
        pass
    if data_type == "boolean" and {"true", "false"}.issuperset(categories):
        return np.array([text == "true" for text in categories], dtype=bool)
    return np.array(categories, dtype=object)


class _Plan:
    """One way of scoring: what makes its scorers, their output columns, and scorers that are free."""

    def __init__(self, core: _core.Model, key: tuple[int, bool, int, bool]) -> None:
        self._core = core
        self._key = key
        self.free: list[_core.Scorer] = []
        scorer = self.take()
        self.outputs: list[tuple[str, bool, int]] = scorer.outputs()
        self.free.append(scorer)
        self.names = [output[0] for output in self.outputs]
        # An output field of the document may have its name; the last one is the row's.
        self.status = len(self.names) - 1 - self.names[::-1].index("status")

    def take(self) -> _core.Scorer:
        """A scorer that nobody else uses; to be put back among those that are free, or not."""
        try:
            return self.free.pop()
        except IndexError:
            return _core.Scorer(self._core, *self._key)


class Model:
    """A model, made by `load`. Any number of threads may use it at once.

    Scoring releases the interpreter lock. Results have the same bits whatever the number of threads,
    however rows are put together, and on every processor.

    Attributes:
        kind: "classification" or "regression".
        percentages: what probabilities are: "none", "votes" (shares of the machines' votes) or
            "calibrated".
        target_name, target_type: of the field that is predicted.
        feature_names_in_: names of the inputs that the model needs, in the order of a plain array's
            columns: array of str, (inputs,).
        classes_: the target's categories as values of its type: array, (k,). Regressions have none.
        decision_pairs: (target, alternate) of each machine; a category that is "not the target" or
            absent is None.
        inputs, outputs: what it reads and what `table` gives.
        remarks: what of the document is guessed, lost or wrong, a sentence each.
        sha256: of the document's bytes.
    """

    def __init__(self, document: bytes, name: str, options: dict[str, Any]) -> None:
        self._document = document
        self._name = name
        self._options = options
        self._core = _core.Model(document, settings_of(name=name, **options))
        facts = self._core.facts()
        self.kind: str = _KINDS[facts["function"]]
        self.percentages: str = _PERCENTAGES[facts["percentages"]]
        self.target_name: str = facts["target"]
        self.target_type: str = facts["target_type"]
        self.sha256: str = facts["sha256"]
        self.remarks: tuple[str, ...] = tuple(self._core.remarks())
        self.inputs: tuple[Input, ...] = tuple(
            Input(name, data_type, op_type, _ROLES[role], replacement, tuple(categories))
            for name, data_type, op_type, role, replacement, categories in self._core.inputs()
        )
        self._input_names = [field.name for field in self.inputs]
        self._input_types = {field.name: field.data_type for field in self.inputs}
        self._needed = self._input_names[: facts["needed_count"]]
        self.feature_names_in_: np.ndarray = np.array(self._needed, dtype=object)
        self._classes = _typed(self._core.categories(), self.target_type)
        self._plans: dict[tuple, _Plan] = {}

    @property
    def classes_(self) -> np.ndarray:
        if self.kind != "classification":
            raise AttributeError("a regression has no classes_")
        return self._classes

    @property
    def decision_pairs(self) -> list[tuple[Any, Any]]:
        labels = self._classes.tolist()

        def value(text: str, index: int) -> Any:
            return labels[index] if index >= 0 else text or None

        return [
            (value(target, target_index), value(alternate, alternate_index))
            for target, alternate, target_index, alternate_index in self._core.machines()
        ]

    @property
    def outputs(self) -> tuple[Output, ...]:
        plan = self._plan(0, False, 1)
        return tuple(Output(name, of_categories) for name, of_categories, _ in plan.outputs)

    def __repr__(self) -> str:
        return (
            f"<svmscore.Model {self.kind} of {self.target_name!r} by {len(self._needed)} inputs, "
            f"sha256 {self.sha256[:12]}>"
        )

    def __reduce__(self) -> tuple:
        return _reload, (self._document, self._name, self._options)

    def __copy__(self) -> Model:
        return self  # nothing of it changes

    def __deepcopy__(self, memo: dict) -> Model:
        return self

    # --- Scoring ------------------------------------------------------------------------------

    def predict(self, X: Any, errors: _Errors = "raise", *, threads: int = 1) -> np.ndarray:
        """What the model predicts for each row.

        Args:
            X: a DataFrame, a dict of columns, a list of dicts, a structured array, a table with
                Arrow's C interface (pyarrow, polars, DuckDB), an array (n, inputs) in the order of
                feature_names_in_, or a dict of single values for one case. Columns are found by
                name; others are ignored. None, NaN and what pandas calls NA are missing.
            errors: "raise", or "status" to have None (texts) or NaN where a row has no prediction.
            threads: how many share the rows; -1 means all that the process may use.
        Returns:
            (n,): categories as values of the target's type, or float64.
        Raises:
            ScoringError: some rows could not be scored; TypeError, ValueError: X cannot be read.
        """
        _check_errors(errors)
        if _tables.is_case(X):
            return self._predict_case(X, errors)
        plan = self._plan(1, False, threads)
        at = plan.names.index("prediction")
        prediction, status = self._score(X, plan, [at])
        failed = self._check(X, status[0], errors)
        values, _ = prediction
        if plan.outputs[at][2] != CODES:
            return np.array(values, dtype=object) if isinstance(values, list) else values
        return self._labels(values, failed)

    def predict_proba(self, X: Any, errors: _Errors = "raise", *, threads: int = 1) -> np.ndarray:
        """Calibrated probabilities, (n, k) in the order of classes_; X, errors, threads as of predict.

        Raises:
            NotCalibrated: the model has none. `table` gives vote shares where it has those.
        """
        _check_errors(errors)
        if self.kind != "classification" or self.percentages != "calibrated":
            raise NotCalibrated(
                "this model has no calibrated probabilities: "
                + {
                    "none": "its document gives no percentages",
                    "votes": "its percentages are shares of votes, which table() gives",
                }.get(self.percentages, "it is a regression")
            )
        plan = self._plan(1, False, threads)
        wanted = [at for at, name in enumerate(plan.names) if name.startswith("probability(")]
        *columns, status = self._score(X, plan, wanted)
        self._check(X, status[0], errors)
        return _side_by_side(columns)

    def decision_function(self, X: Any, errors: _Errors = "raise", *, threads: int = 1) -> np.ndarray:
        """The machines' decision values as they are: (n,) for one machine, else (n, machines).

        The machines are in the order of decision_pairs; PMML's rule says on which side of the
        threshold the target category lies. For scikit-learn's shape and sign see svmscore.sklearn.
        X, errors and threads as of predict.
        """
        _check_errors(errors)
        plan = self._plan(1, True, threads)
        # By their places: two machines may have one name.
        wanted = range(plan.status - len(self._core.machines()), plan.status)
        *columns, status = self._score(X, plan, wanted)
        self._check(X, status[0], errors)
        return columns[0][0] if len(columns) == 1 else _side_by_side(columns)

    def table(
        self,
        X: Any,
        columns: Literal["auto", "raw", "all"] = "auto",
        errors: _Errors = "status",
        *,
        decisions: bool = False,
        reasons: bool = False,
        threads: int = 1,
    ) -> Any:
        """The columns that the program `svmscore score` writes, for each row.

        Args:
            X, threads: as of predict.
            columns: "auto": the document's output fields, or else what the model computes; "raw":
                what the model computes, under plain names; "all": every column, under plain names.
            errors: "status" to leave NaN, None or NA in rows that could not be scored; or "raise".
            decisions: with the decision value of every machine.
            reasons: with a last column `reason`: why a row could not be scored.
        Returns:
            A DataFrame with X's index where X is one of pandas, one of polars where X is; for
            anything else a dict of arrays, (n,) each. `status` is 0, 90027 (an invalid value, or an
            outcome that cannot be decided) or 90029 (a missing value).
        """
        _check_errors(errors)
        plan = self._plan_of(columns, decisions, reasons, threads)
        table, results = self._score_wholly(X, plan)
        status = results[plan.status][0]
        if errors == "raise":
            self._check(X, status, errors)
        frame = table.kind == "pandas"
        alike = len(set(plan.names)) < len(plan.names)
        if alike and not frame:
            raise ValueError(
                "the document names two output columns alike, or one as svmscore names its own; give "
                'X as a DataFrame of pandas, or ask for columns="all"'
            )
        made = {
            at if alike else name: self._column(result, of_categories, kind, frame)
            for at, ((name, of_categories, kind), result) in enumerate(zip(plan.outputs, results))
        }
        if frame:
            scores = sys.modules["pandas"].DataFrame(made, index=table.index, copy=False)
            if alike:
                scores.columns = plan.names
            return scores
        if table.kind == "polars":
            return sys.modules["polars"].DataFrame(made, nan_to_null=False, strict=False)
        return made

    def explain(
        self,
        X: Any,
        background: Any = None,
        *,
        gradients: bool = False,
        rows: int | None = None,
        seed: int = 1,
        orders: int | None = None,
        errors: _Errors = "raise",
        threads: int = 1,
    ) -> Explanation:
        """What each input contributes to the decision values: Shapley values, as `svmscore explain`.

        Where the document says maxWins="true", decision values above the threshold speak for the
        first category of their pair; otherwise those below it do.

        Args:
            X, errors, threads: as of predict.
            background: cases, as X: an input that is absent takes their values. The model's support
                vectors if not given, which is an error for a model whose vectors are no cases.
            gradients: with the derivatives of the decision values by the vector fields.
            rows: draw so many of the background, and use no others.
            seed: where the draws begin, of the background and of sampled values.
            orders: where values are sampled: how many orders of the inputs are drawn for each row of
                the background.
        Raises:
            ScoringError: some rows could not be scored; ValueError: no background, or none of its rows
                can be scored; TypeError, ValueError: X cannot be read.
        """
        from ._explanation import explain

        _check_errors(errors)
        _check_threads(threads)
        for name, value, least in (("rows", rows, 1), ("seed", seed, 1), ("orders", orders, 1)):
            if value is None and name != "seed":
                continue
            if not hasattr(value, "__index__") or not least <= value < 2**63:
                raise ValueError(f"{name} is a whole number from {least} on")
        try:
            return explain(
                self, X, background, gradients, rows, seed, orders, errors, threads
            )
        except TableError as error:
            raise self._told(error, X) from None

    # --- What the document says, and whether it is right ----------------------------------------

    def describe(self) -> dict[str, Any]:
        """All that `svmscore describe --json` tells."""
        import json

        return json.loads(self._core.describe())

    def verify(self, X: Any = None, expected: Any = None, *, tolerance: float = 1e-6) -> dict[str, Any]:
        """Compares scores with expected ones; without arguments, with the document's own records.

        Args:
            X: cases, as of predict.
            expected: a DataFrame or dict of columns named as outputs are, or one column.
            tolerance: how far a number may be from the expected one, as a share of it.
        Returns:
            "agrees", "compared", "disagreements", "agreement" (accuracy and confusions, or r2 and
            rmse), "remarks", "differences".
        """
        import json

        cases, wanted = self._expectation(X, expected)
        try:
            return json.loads(self._core.verify(cases, wanted, float(tolerance)))
        except TableError as error:
            raise self._told(error, X) from None

    def calibrate(self, X: Any, y: Any, *, confidence: float = 0.95) -> Calibration:
        """The same as svmscore.calibrate(model, X, y)."""
        from ._calibration import calibrate

        return calibrate(self, X, y, confidence=confidence)

    # --- Within ----------------------------------------------------------------------------------

    def _calibrate(self, X: Any, y: Any, confidence: float) -> tuple[bytes, str]:
        if self._options["as_is"] or self._options["missing_policy"]:
            raise ValueError(
                "a calibrated document goes by the default reading and its own policy for missing "
                "values; load the model without as_is and missing_policy"
            )
        if not 0.0 < confidence < 1.0:
            raise ValueError("confidence is above 0 and below 1, as 0.95 is")
        try:
            cases = self._read(X).columns
            actual = labels_of(y, cases.row_count)
            settings = settings_of(False, False, None, self._options["limits"], self._name)
            return _core.calibrate(self._document, settings, cases, actual, float(confidence))
        except TableError as error:
            raise self._told(error, X) from None

    def _expectation(self, X: Any, expected: Any) -> tuple[Any, Any]:
        return expectation_of(
            X, expected, self._input_names, self._input_types, self._needed, self.target_name
        )

    def _plan(self, choice: int, decisions: bool, threads: int, reasons: bool = False) -> _Plan:
        _check_threads(threads)
        key = (choice, decisions, threads, reasons)
        plan = self._plans.get(key)
        if plan is None:
            plan = self._plans[key] = _Plan(self._core, key)
        return plan

    def _plan_of(self, columns: str, decisions: bool, reasons: bool, threads: int = 1) -> _Plan:
        if columns not in _CHOICES:
            raise ValueError("columns is 'auto', 'raw' or 'all'")
        return self._plan(_CHOICES[columns], bool(decisions), threads, bool(reasons))

    def _score_columns(
        self, X: Any, columns: str, decisions: bool, reasons: bool
    ) -> list[tuple[str, int, Any, Any]]:
        """(name, type, values, which are missing or None) of each column: categories as codes."""
        plan = self._plan_of(columns, decisions, reasons)
        return [
            (name, kind, *result)
            for (name, _, kind), result in zip(plan.outputs, self._score_wholly(X, plan)[1])
        ]

    def _read(self, X: Any) -> _tables.Table:
        return _tables.read(X, self._input_names, self._input_types, self._needed)

    def _score(self, X: Any, plan: _Plan, wanted: Iterable[int]) -> list[tuple]:
        return self._run(X, plan, [*wanted, plan.status])[1]

    def _score_wholly(self, X: Any, plan: _Plan) -> tuple[_tables.Table, list[tuple]]:
        return self._run(X, plan, list(range(len(plan.names))))

    def _run(self, X: Any, plan: _Plan, wanted: list[int]) -> tuple[_tables.Table, list[tuple]]:
        try:
            return self._run_fitting(X, plan, wanted)
        except TableError as error:
            raise self._told(error, X) from None

    def _told(self, error: TableError, X: Any) -> TableError:
        """The error; where columns lack, one that knows all that X has, and of no header."""
        lack = _tables.lack_of(X, self._needed)
        return TableError(lack, error.code) if lack else error

    def _run_fitting(
        self, X: Any, plan: _Plan, wanted: list[int]
    ) -> tuple[_tables.Table, list[tuple]]:
        if _tables.has_stream(X):
            scorer = plan.take()
            results = scorer.score_stream(X.__arrow_c_stream__(), wanted)
            kind = "polars" if type(X).__module__.startswith("polars") else ""
            return _tables.Table(None, None, kind), results
        table = self._read(X)
        scorer = plan.take()
        results = scorer.score(table.columns, wanted)
        if table.columns.row_count <= _KEPT_ROWS:
            plan.free.append(scorer)
        return table, results

    def _predict_case(self, X: Mapping[Any, Any], errors: _Errors) -> np.ndarray:
        plan = self._plan(1, False, 1)
        for name in self._needed:
            if name not in X:
                return self._predict_row(X, errors)
        try:
            values = [_tables.plain(X.get(name)) for name in self._input_names]
            scorer = plan.take()
            results = scorer.score_case(values)
            plan.free.append(scorer)
        except (TypeError, UnicodeError):  # a value that needs a column to be understood, such as a date
            return self._predict_row(X, errors)
        value = results[plan.names.index("prediction")]
        if results[-1] != 0:
            return self._predict_row(X, errors)
        if plan.outputs[plan.names.index("prediction")][2] == CODES:
            return self._classes[value : value + 1]
        return np.array([value], dtype=object if isinstance(value, str) else np.float64)

    def _predict_row(self, X: Mapping[Any, Any], errors: _Errors) -> np.ndarray:
        return self.predict({name: [_tables.plain(value)] for name, value in X.items()}, errors)

    def _labels(self, codes: np.ndarray, failed: bool) -> np.ndarray:
        if not failed or codes.size == 0 or codes.min() >= 0:
            return self._classes.take(codes)
        missing = codes < 0
        if self._classes.dtype.kind in "if":
            values = self._classes.astype(np.float64).take(codes)
            values[missing] = np.nan
        else:
            values = self._classes.astype(object).take(codes)
            values[missing] = None
        return values

    def _column(self, result: tuple, of_categories: bool, kind: int, frame: bool) -> Any:
        values, missing = result
        if kind == CODES:
            if not frame or self._classes.dtype.kind != "i":
                return self._labels(values, True)
            missing = values < 0 if values.size and values.min() < 0 else None
            values = self._classes.take(values)
        if kind == TEXTS:
            return np.array(values, dtype=object)
        if missing is None:
            return values
        if frame:  # whole numbers stay whole
            pandas = sys.modules["pandas"]
            return pandas.arrays.IntegerArray(values, np.asarray(missing, dtype=bool))
        numbers = values.astype(np.float64)
        numbers[missing] = np.nan
        return numbers

    def _check(self, X: Any, status: np.ndarray, errors: str) -> bool:
        """Whether some rows failed; an exception where that is asked for."""
        if not status.any():
            return False
        if errors == "raise":
            raise self._failure(X, status)
        return True

    def _failure(self, X: Any, status: np.ndarray, otherwise: str = "") -> ScoringError:
        """`otherwise` is the reason of rows that can be scored."""
        rows = np.flatnonzero(status).tolist()
        statuses = status[rows].tolist()
        reasons = [reason or otherwise for reason in self._reasons(X, rows[:_NAMED_ROWS])]
        lines = [
            f"row {row}: {reason}"
            for row, reason in zip(rows, reasons or map(_sentence_of, statuses[:_NAMED_ROWS]))
        ]
        more = len(rows) - len(lines)
        return ScoringError(
            f"{len(rows)} of {len(status)} rows could not be scored (rows count from 0): "
            + "; ".join(lines)
            + (f"; and {more} more" if more > 0 else "")
            + '; errors="status" gives the others',
            rows,
            statuses,
            reasons,
        )

    def _reasons(self, X: Any, rows: list[int]) -> list[str]:
        """Why these rows failed; nothing for a table that can be read only once."""
        stream = _tables.has_stream(X)
        if stream and not _tables.can_slice(X):
            return []
        plan = self._plan(1, False, 1, True)
        wanted = [plan.names.index("reason")]
        scorer = plan.take()
        if stream:
            parts = [X.slice(row, 1).__arrow_c_stream__() for row in rows]
            return [scorer.score_stream(part, wanted)[0][0][0] or "" for part in parts]
        columns = self._read(X).columns
        return [scorer.score_rows(columns, row, 1, wanted)[0][0][0] or "" for row in rows]


def _sentence_of(status: int) -> str:
    return "a value is missing" if status == 90029 else "a value is invalid"


def _side_by_side(columns: list[tuple]) -> np.ndarray:
    matrix = np.empty((len(columns[0][0]), len(columns)))
    for place, (values, _) in enumerate(columns):
        matrix[:, place] = values
    return matrix


def _check_threads(threads: int) -> None:
    if not hasattr(threads, "__index__") or not (threads == -1 or 1 <= threads <= _MOST_THREADS):
        raise ValueError(
            f"threads is a number from 1 on, up to {_MOST_THREADS}, or -1 for all that there are"
        )


def _check_errors(errors: str) -> None:
    if errors not in ("raise", "status"):
        raise ValueError("errors is 'raise' or 'status'")


def expectation_of(
    X: Any,
    expected: Any,
    names: list[str] | None,
    types: Mapping[str, str],
    order: list[str],
    target: str,
) -> tuple[_core.Columns | None, _core.Columns | None]:
    """Both tables as columns of the library; (None, None) where neither is given."""
    if (X is None) != (expected is None):
        raise ValueError("cases and expected results belong together; give both or neither")
    if X is None:
        return None, None
    if not (_tables.is_frame(expected) or isinstance(expected, Mapping) or _tables.has_stream(expected)):
        expected = {getattr(expected, "name", None) or target: np.asarray(expected)}
    cases = _tables.read(X, names, types, order).columns
    wanted = _tables.read(expected, None, {}).columns
    if cases.row_count != wanted.row_count:
        raise ValueError(f"there are {cases.row_count} cases but {wanted.row_count} expected results")
    return cases, wanted


def labels_of(y: Any, rows: int) -> _core.Columns:
    """What the cases really are, as a column of the library."""
    labels = y if isinstance(y, np.ma.MaskedArray) else np.asarray(y)
    if labels.ndim == 2 and labels.shape[1] == 1:
        labels = labels[:, 0]
    if labels.ndim != 1:
        raise ValueError("y is one column: an array (n,), a list or a Series")
    if len(labels) != rows:
        raise ValueError(f"there are {rows} cases but {len(labels)} labels")
    return _tables.read({"y": labels}, None, {}).columns


def _reload(document: bytes, name: str, options: dict[str, Any]) -> Model:
    """What pickle calls. The remarks were told where the model was loaded first."""
    return Model(document, name, options)


def load(
    source: str | os.PathLike[str] | bytes | io.IOBase,
    *,
    as_is: bool = False,
    strict_document: bool = False,
    missing_policy: str | None = None,
    limits: Mapping[str, int] | None = None,
) -> Model:
    """Loads a PMML document.

    Args:
        source: a path, bytes, a file object, or the document itself as a text; compressed by gzip or
            zstd or not.
        as_is: read it to the letter, without any guess at what its author meant.
        strict_document: refuse what would be guessed, lost or wrong.
        missing_policy: what becomes of a case with a missing value: None for what the model says,
            "replace" where the model says by what, "predict-missing" or "fail".
        limits: NAME: most, as of `svmscore score --limit`; docs/reliability.md lists the names.
    Warns:
        DocumentWarning: for each remark on the document.
    Raises:
        OSError: the file cannot be read. DocumentError: the document cannot be used.
    """
    document, name = read_source(source)
    if document.startswith(b"svm_type "):
        raise DocumentError(
            f"{name} is a model of LIBSVM; svmscore.from_libsvm makes a document of it"
        )
    if document.startswith(b"\x80"):
        raise DocumentError(
            f"{name} is a pickle, it seems; load it as such, and svmscore.to_pmml makes a document of "
            "the estimator"
        )
    model = Model(
        document,
        name,
        {
            "as_is": as_is,
            "strict_document": strict_document,
            "missing_policy": missing_policy,
            "limits": dict(limits) if limits else None,
        },
    )
    for remark in model.remarks:
        warnings.warn(remark, DocumentWarning, stacklevel=2)
    return model


def doctor(
    source: str | os.PathLike[str] | bytes | io.IOBase,
    X: Any = None,
    expected: Any = None,
    *,
    actual: Any = None,
    limits: Mapping[str, int] | None = None,
    tolerance: float = 1e-6,
) -> dict[str, Any]:
    """Examines a document, also one that cannot be loaded: what `svmscore doctor --json` tells.

    Args:
        source, limits: as of load.
        X, expected, tolerance: as of Model.verify; cases help to tell what is wrong.
        actual: what the cases really are, (n,): probabilities and intervals are compared with it.
    Returns:
        The findings, each with its place, consequence and remedy.
    """
    import json

    document, name = read_source(source)
    settings = settings_of(False, False, None, limits, name)
    cases = wanted = known = None
    if actual is not None:
        if X is None:
            raise ValueError("actual says what cases really are; give them, too")
        if expected is None:
            cases = _read_for_doctor(document, X, limits)
    if expected is not None or (X is not None and actual is None):
        try:
            with warnings.catch_warnings():
                warnings.simplefilter("ignore", DocumentWarning)
                model = load(document, limits=limits)
            cases, wanted = model._expectation(X, expected)
        except (ValueError, TableError):
            cases, wanted = expectation_of(X, expected, None, {}, [], "expected")
    if actual is not None and cases is not None:
        known = labels_of(actual, cases.row_count)
    return json.loads(_core.doctor(document, settings, cases, wanted, known, float(tolerance)))


def _read_for_doctor(document: bytes, X: Any, limits: Mapping[str, int] | None) -> _core.Columns:
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", DocumentWarning)
            return load(document, limits=limits)._read(X).columns
    except (ValueError, TableError):
        return _tables.read(X, None, {}, []).columns
