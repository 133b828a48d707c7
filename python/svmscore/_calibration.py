"""Calibrated documents, made of a model and cases whose outcome is known."""

from __future__ import annotations

import functools
import io
import json
import os
from collections.abc import Mapping
from typing import Any

from ._model import Model, load


class Calibration:
    """What `calibrate` gives.

    Attributes:
        document: the calibrated document, for `load` or a file: bytes in the encoding of the document
            that it was made of.
        report: what `svmscore calibrate --json` tells, as a dict: "rows", the "pairs" with their A and
            B or the "halfWidth" of intervals, the figures "before" and "after", and "remarks".
        model: the document, loaded.
    """

    def __init__(self, document: bytes, report: dict[str, Any], limits: Mapping[str, int] | None) -> None:
        self.document = document
        self.report = report
        self._limits = limits

    @functools.cached_property
    def model(self) -> Model:
        return load(self.document, limits=self._limits)

    def __repr__(self) -> str:
        rows = self.report["rows"]
        return (
            f"<svmscore.Calibration of a {self.report['kind']} by {rows['used']} of {rows['read']} rows>"
        )


def calibrate(
    source: str | os.PathLike[str] | bytes | io.IOBase | Model,
    X: Any,
    y: Any,
    *,
    confidence: float = 0.95,
    limits: Mapping[str, int] | None = None,
) -> Calibration:
    """Gives a model calibrated probabilities, or intervals, as `svmscore calibrate` does.

    Two categories, and each pair of more, get Platt's sigmoid; a regression gets intervals by split
    conformal prediction. docs/trust.md says what the results mean.

    Args:
        source: as of load, or a model.
        X: cases that the model was not trained on, as of Model.predict.
        y: what they really are, (n,): categories of the target, or numbers. Rows of which it is
            missing are left out.
        confidence: of a regression: the share of cases that intervals should cover.
        limits: as of load.
    Warns:
        DocumentWarning: for each remark on the document.
    Raises:
        DocumentError: the document cannot be used or calibrated. TableError: a column is missing, a
            category has no cases, or there are too few. ValueError: X and y are not alike long.
    """
    model = source if isinstance(source, Model) else load(source, limits=limits)
    document, report = model._calibrate(X, y, confidence)
    return Calibration(document, json.loads(report), model._options["limits"])
