"""Reads fitted estimators: kernel, vectors, and the machines with their coefficients.

Signs: PMML gives a decision value below the threshold (0) to the first category of a machine.
LIBSVM's machine for classes i < j is positive for i and votes for j at exactly 0; with all signs
turned, values below 0 vote for i and all others for j, which is the same class at 0 too. A linear
estimator of two classes means the second class above 0; its machine, turned likewise, has that as
its first category. One-against-all machines are turned because PMML's smallest value wins.
"""

from __future__ import annotations

import warnings
from dataclasses import dataclass, field
from typing import Any, Callable

import numpy as np

from .columns import Scope
from .pipeline import library_class


@dataclass
class Machine:
    """One decision function: the sum of coefficients times kernel values, plus the offset."""

    terms: list[tuple[int, float]]  # position in Model.vectors, coefficient
    offset: float
    target: int | None = None  # positions in Model.classes
    alternate: int | None = None
    sigmoid: tuple[float, float] | None = None  # p(target) = 1 / (1 + exp(A f + B))
    threshold: float = 0.0


@dataclass
class Model:
    """A support vector machine as PMML sees it; regressions have no classes."""

    kernel: str
    parameters: dict[str, float]
    vectors: np.ndarray  # (vectors, columns)
    machines: list[Machine] = field(default_factory=list)
    classes: list[Any] = field(default_factory=list)
    method: str | None = None
    algorithm: str | None = None  # what PMML itself has no word for

    @property
    def is_calibrated(self) -> bool:
        return any(m.sigmoid for m in self.machines)


def read(estimator: Any, scope: Scope) -> Model:
    """The model of a fitted estimator; raises ConversionError for what is none of these."""
    kind = library_class(estimator)
    if kind not in _READERS:
        scope.refuse(
            "this is not an estimator that can be written",
            "give one of " + ", ".join(sorted(_READERS)) + ", or a pipeline that ends in one",
        )
    _require_fitted(estimator)
    return _READERS[kind](estimator, scope)


def _require_fitted(estimator: Any) -> None:
    from sklearn.utils.validation import check_is_fitted

    check_is_fitted(estimator)


def _dense(matrix: Any) -> np.ndarray:
    array = matrix.toarray() if hasattr(matrix, "toarray") else np.asarray(matrix)
    return np.atleast_2d(np.asarray(array, dtype=float))


_KERNELS = {
    "linear": ("LinearKernelType", ()),
    "poly": ("PolynomialKernelType", ("gamma", "coef0", "degree")),
    "rbf": ("RadialBasisKernelType", ("gamma",)),
    "sigmoid": ("SigmoidKernelType", ("gamma", "coef0")),
}


def _kernel_model(estimator: Any, scope: Scope) -> Model:
    """Kernel and vectors of an estimator that LIBSVM fitted."""
    if not isinstance(estimator.kernel, str) or estimator.kernel not in _KERNELS:
        what = "precomputed" if isinstance(estimator.kernel, str) else "a function"
        scope.refuse(
            f"its kernel is {what}, and a document has only kernels of its own",
            "fit it with the kernel linear, poly, rbf or sigmoid",
        )
    element, names = _KERNELS[estimator.kernel]
    values = {"gamma": estimator._gamma, "coef0": estimator.coef0, "degree": estimator.degree}
    vectors = _dense(estimator.support_vectors_)
    if not vectors.shape[0]:
        scope.refuse(
            "it has no support vectors and gives every case the same value", "fit it to other data"
        )
    return Model(element, {n: float(values[n]) for n in names}, vectors)


def _svc(estimator: Any, scope: Scope) -> Model:
    """SVC and NuSVC: a machine for each pair of classes.

    LIBSVM stores the coefficients of the pair (i, j) in row j - 1 for the vectors of class i and in
    row i for those of class j; vectors are in the order of their classes. `_dual_coef_` and
    `_intercept_` have LIBSVM's signs for two classes as well, unlike the public attributes.
    """
    count = len(estimator.classes_)
    if estimator.break_ties and count > 2:
        scope.refuse(
            "break_ties=True decides ties by sums of decision values, which PMML has not",
            "set break_ties=False before the prediction",
        )
    model = _kernel_model(estimator, scope)
    model.classes = list(estimator.classes_)
    model.method = "OneAgainstOne"
    dual = _dense(estimator._dual_coef_)
    starts = np.concatenate(([0], np.cumsum(estimator.n_support_)))
    pairs = [(i, j) for i in range(count) for j in range(i + 1, count)]
    sigmoids = _sigmoids(estimator, len(pairs))
    for m, (i, j) in enumerate(pairs):
        terms = [(k, dual[j - 1, k]) for k in range(starts[i], starts[i + 1])]
        terms += [(k, dual[i, k]) for k in range(starts[j], starts[j + 1])]
        machine = Machine(_turned(terms), -float(estimator._intercept_[m]), i, j, sigmoids[m])
        if not machine.terms:
            scope.refuse(
                f"no vector separates the classes {model.classes[i]} and {model.classes[j]}",
                "fit it to other data",
            )
        model.machines.append(machine)
    return model


def _sigmoids(estimator: Any, pairs: int) -> list[tuple[float, float] | None]:
    """A and B of each pair, for decision values of the turned sign: A f is the same product."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", FutureWarning)  # new versions call them deprecated
        a, b = getattr(estimator, "probA_", ()), getattr(estimator, "probB_", ())
    if len(a) != pairs:
        return [None] * pairs
    return [(-float(a[m]), float(b[m])) for m in range(pairs)]


def _turned(terms: list[tuple[int, float]]) -> list[tuple[int, float]]:
    return [(int(k), -float(c)) for k, c in terms if c != 0]


def _svr(estimator: Any, scope: Scope) -> Model:
    """SVR and NuSVR."""
    model = _kernel_model(estimator, scope)
    dual = _dense(estimator.dual_coef_)[0]
    terms = [(k, float(c)) for k, c in enumerate(dual) if c != 0]
    model.machines = [Machine(terms, float(estimator.intercept_[0]))]
    return model


def _one_class(estimator: Any, scope: Scope) -> Model:
    """OneClassSVM: the classes -1 and 1 of one machine. With the sign turned, values below 0 mean
    1 and all others -1, as LIBSVM decides at 0 too."""
    model = _svr(estimator, scope)
    machine = model.machines[0]
    machine.terms, machine.offset = _turned(machine.terms), -machine.offset
    machine.target, machine.alternate = 1, 0
    model.classes = [np.int64(-1), np.int64(1)]
    model.method = "OneAgainstOne"
    model.algorithm = "one-class"
    return model


def _linear(estimator: Any, sign: float) -> Model:
    """One vector of weights for each machine, times `sign`: readers that know only the form with
    support vectors score it too, and the sums are the same."""
    weights = _dense(estimator.coef_)
    offsets = np.broadcast_to(np.ravel(estimator.intercept_), len(weights))
    model = Model("LinearKernelType", {}, weights)
    model.machines = [Machine([(k, sign)], sign * float(b)) for k, b in enumerate(offsets)]
    return model


def _linear_classifier(estimator: Any, scope: Scope) -> Model:
    """LinearSVC and SGDClassifier: one machine for two classes, else one-against-all."""
    _require_loss(estimator, {"hinge", "squared_hinge"}, scope)
    model = _linear(estimator, -1.0)
    model.classes = list(estimator.classes_)
    if len(model.classes) == 2:
        model.method = "OneAgainstOne"
        model.machines[0].target, model.machines[0].alternate = 1, 0
    else:
        model.method = "OneAgainstAll"
        for k, machine in enumerate(model.machines):
            machine.target = k
    return model


def _linear_regressor(estimator: Any, scope: Scope) -> Model:
    """LinearSVR and SGDRegressor."""
    _require_loss(estimator, {"epsilon_insensitive", "squared_epsilon_insensitive"}, scope)
    return _linear(estimator, 1.0)


def _require_loss(estimator: Any, losses: set[str], scope: Scope) -> None:
    if estimator.loss not in losses:
        scope.refuse(
            f"with the loss {estimator.loss!r} it is not a support vector machine",
            "fit it with " + " or ".join(sorted(losses)),
        )


_READERS: dict[str, Callable[[Any, Scope], Model]] = {
    "LinearSVC": _linear_classifier,
    "LinearSVR": _linear_regressor,
    "NuSVC": _svc,
    "NuSVR": _svr,
    "OneClassSVM": _one_class,
    "SGDClassifier": _linear_classifier,
    "SGDRegressor": _linear_regressor,
    "SVC": _svc,
    "SVR": _svr,
}
