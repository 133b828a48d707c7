"""The error of the conversion."""

from __future__ import annotations

from typing import Any, NoReturn


class ConversionError(ValueError):
    """The estimator cannot be written as a document; the message names the step and a remedy."""


ConversionError.__module__ = "svmscore"  # as users import it


def refuse(path: str, step: Any, reason: str, remedy: str) -> NoReturn:
    """Raises ConversionError for `step`, which stands at `path` ("" for the estimator itself)."""
    kind = type(step).__name__
    place = f"step {path!r} ({kind})" if path else kind
    raise ConversionError(f"{place}: {reason}; {remedy}")
