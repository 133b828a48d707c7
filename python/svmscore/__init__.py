"""Scores cases with support vector machine models written in PMML.

    >>> import svmscore
    >>> model = svmscore.load("model.pmml")
    >>> model.predict(frame)
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from . import _core
from ._calibration import Calibration, calibrate
from ._errors import (
    DocumentError,
    DocumentWarning,
    Error,
    InternalError,
    NotCalibrated,
    ScoringError,
    SetupError,
    TableError,
)
from ._explanation import Explanation
from ._libsvm import from_libsvm
from ._model import Input, Model, Output, doctor, load

if TYPE_CHECKING:
    from . import dask as dask, sklearn as sklearn, spark as spark
    from ._pmml import ConversionError, to_pmml

    _offered = (dask, sklearn, spark)

__version__: str = _core.version()


def instruction_set() -> str:
    """What scoring computes with: "plain", "sse2", "avx2" or "avx512"; the bits are the same."""
    return _core.instruction_set()


__all__ = [
    "Calibration",
    "ConversionError",
    "DocumentError",
    "DocumentWarning",
    "Error",
    "Explanation",
    "Input",
    "InternalError",
    "Model",
    "NotCalibrated",
    "Output",
    "ScoringError",
    "SetupError",
    "TableError",
    "calibrate",
    "doctor",
    "from_libsvm",
    "instruction_set",
    "load",
    "to_pmml",
]

_MODULES = ("dask", "sklearn", "spark")


if not TYPE_CHECKING:  # which would take every name to be there

    def __getattr__(name: str) -> Any:
        # What needs other packages or takes time to import: only where it is used.
        if name in ("ConversionError", "to_pmml"):
            from . import _pmml

            return getattr(_pmml, name)
        if name in _MODULES:
            import importlib

            return importlib.import_module(f".{name}", __name__)
        raise AttributeError(f"module 'svmscore' has no attribute {name!r}")


def __dir__() -> list[str]:
    # Without _MODULES: help() and completion ask for all that is here, and these may not import.
    return sorted({*__all__, *(name for name in globals() if name.startswith("__"))})
