"""Models that LIBSVM trained, as documents."""

from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from typing import Any

from . import _core


def _read(source: Any, what: str) -> bytes:
    """The bytes of a path, bytes, a file object, or a text of several lines."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return bytes(source)
    if isinstance(source, str) and "\n" in source:
        return source.encode("utf-8")
    if isinstance(source, (str, os.PathLike)):
        with open(source, "rb") as file:
            return file.read()
    if hasattr(source, "read"):
        text = source.read()
        return text.encode("utf-8") if isinstance(text, str) else bytes(text)
    raise TypeError(
        f"{what} is a path, bytes, a file object or the text itself, not {type(source).__name__}"
    )


def from_libsvm(
    model: Any,
    *,
    ranges: Any = None,
    feature_names: Sequence[str] | None = None,
    labels: Sequence[Any] | None = None,
) -> str:
    """The PMML document of a model that LIBSVM's svm-train wrote; it scores as svm-predict does.

    Args:
        model: the model file: a path, bytes, a file object, or its text.
        ranges: the file that `svm-scale -s` wrote, in the same forms, where the model was trained on
            scaled data: the document then takes data that are not scaled.
        feature_names: names of the features 1, 2, ...; x1, x2, ... if not given.
        labels: names of the classes, in the order of the model's line `label`, which need not be
            theirs: a number of labels that does not fit is an error that tells the order.
    Returns:
        The document, for `load` or a file. docs/convert.md says what differs from svm-predict.
    Raises:
        DocumentError: a line of the model or of the ranges cannot be read, or the model's kind, such
            as one with a precomputed kernel, has no document. ValueError: names or labels do not fit.
    """
    if isinstance(labels, Mapping):  # its keys would be taken for the labels
        raise TypeError("labels is a sequence, in the order of the model's line label, not a mapping")
    try:
        return _core.convert_libsvm(
            _read(model, "a model"),
            None if ranges is None else _read(ranges, "a file of ranges"),
            None if feature_names is None else [str(name) for name in feature_names],
            None if labels is None else [str(label) for label in labels],
        )
    except ValueError as error:
        if type(error) is not ValueError:
            raise
        # The library calls the arguments by its own names.
        message = str(error).replace("(options.names", "(feature_names")
        raise ValueError(message.replace("(options.labels", "(labels")) from None
