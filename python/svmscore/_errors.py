"""Why a call failed: the exceptions and warnings of the package."""

from __future__ import annotations

from . import _core


class Error(Exception):
    """What every exception of this package is.

    Attributes:
        code: number of the message, such as 260311; 0 where there is none.
        sentence: what is wrong, without its place.
        place: an element and line of the document, or the name of a column; may be empty.
        remedy: what to do about it; may be empty.
    """

    def __init__(
        self, message: str, code: int = 0, sentence: str = "", place: str = "", remedy: str = ""
    ) -> None:
        super().__init__(message)
        self.code = code
        self.sentence = sentence or message
        self.place = place
        self.remedy = remedy

    def __reduce__(self) -> tuple:
        return type(self), (str(self), self.code, self.sentence, self.place, self.remedy)


class DocumentError(Error, ValueError):
    """The document cannot be read, used, or used in this way."""


class TableError(Error, ValueError):
    """A column is missing, given twice, or of a type that does not fit its field."""


class SetupError(Error, OSError):
    """The plug-in or the instruction set cannot be used."""


class InternalError(Error, RuntimeError):
    """A fault of the library."""


class NotCalibrated(Error, ValueError):
    """Probabilities were asked of a model that has none: its percentages are vote shares or nothing."""


class ScoringError(Error, ValueError):
    """Some rows could not be scored.

    Attributes:
        rows: positions of the rows that failed, from 0, all of them.
        statuses: for each of these rows 90027 (an invalid value, or an outcome that cannot be
            decided) or 90029 (a missing value).
        reasons: for the first of these rows, why.
    """

    def __init__(
        self, message: str, rows: list[int], statuses: list[int], reasons: list[str]
    ) -> None:
        super().__init__(message)
        self.rows = rows
        self.statuses = statuses
        self.reasons = reasons

    def __reduce__(self) -> tuple:
        return type(self), (str(self), self.rows, self.statuses, self.reasons)


class DocumentWarning(UserWarning):
    """Something of a document is guessed, lost or wrong; the model's `remarks` hold it too."""


# Tracebacks call them as users do.
for _class in (Error, *Error.__subclasses__(), DocumentWarning):
    _class.__module__ = "svmscore"

# By the numbers of enum svmscore_kind.
_KINDS = {1: ValueError, 2: DocumentError, 3: TableError, 5: SetupError, 6: InternalError}


def _make(
    kind: int, code: int, sentence: str, place: str, remedy: str, message: str
) -> Exception:
    made = _KINDS.get(kind, InternalError)
    if made is ValueError:
        return ValueError(message)
    return made(message, code, sentence, place, remedy)


_core.set_exception_maker(_make)
