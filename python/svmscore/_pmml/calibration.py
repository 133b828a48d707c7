"""The sigmoid of a CalibratedClassifierCV around an estimator of two classes."""

from __future__ import annotations

from typing import Any

from .machines import Model


def apply(model: Model, calibrator: Any) -> None:
    """Gives the only machine of `model` the sigmoid; nothing without one.

    scikit-learn's `_SigmoidCalibration` says p(second class) = 1 / (1 + exp(a T + b)) of its
    decision value T, so p(first class) = 1 / (1 + exp(-a T - b)). The machine gets the sign of T,
    the first class as its first category, and the value at which both are equal as its threshold,
    for readers that pass the extension over.
    """
    if calibrator is None:
        return
    machine = model.machines[0]
    if machine.target == 1:
        machine.terms = [(k, -c) for k, c in machine.terms]
        machine.offset = -machine.offset
        machine.target, machine.alternate = 0, 1
    a, b = float(calibrator.a_), float(calibrator.b_)
    machine.sigmoid = (-a, -b)
    if a != 0.0:
        machine.threshold = -b / a
