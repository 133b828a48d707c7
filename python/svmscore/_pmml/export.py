"""The conversion as a whole: takes an estimator apart, names its columns, and writes it."""

from __future__ import annotations

from typing import Any, Mapping, Sequence

import numpy as np

from . import document, verification
from .columns import Column, Input, Scope
from .errors import ConversionError
from .machines import Model, read
from .pipeline import library_class, transform
from .text import category, checked, data_type


def convert(
    estimator: Any,
    feature_names: Sequence[str] | None,
    target_name: str | None,
    categories: Sequence[Any] | Mapping[Any, Any] | None,
    rows: Any,
) -> str:
    """The document of `estimator`; the arguments are those of `svmscore.to_pmml`."""
    whole = estimator
    estimator = _found(estimator)
    target = document.Target(checked("y" if target_name is None else str(target_name)))
    names: set[str] = {target.name, target.prediction, document.DECISION}
    scope = Scope(names, "", estimator)
    if library_class(estimator) == "TransformedTargetRegressor":
        target.rescale = _target_scale(estimator, scope)
        estimator = _found(estimator.regressor_)
    steps, final = _parts(estimator)
    inputs = _inputs(estimator, steps, final, feature_names, names)
    columns: list[Column] = list(inputs)
    for name, step in steps:
        columns = transform(step, columns, scope.inside(name, step))
    inside = scope.inside(steps_name(estimator), final) if steps else scope
    model = read(final, inside if steps else Scope(names, "", final))
    columns = _vector_columns(model, columns, inside)
    _settle(inputs)
    _describe_classes(target, model, categories)
    root = document.build(model, target, columns, _description(final))
    if rows is not None:
        verification.add(root, whole, model, target, inputs, columns, rows)
    return document.serialise(root)


def steps_name(estimator: Any) -> str:
    """The name of the last step of a pipeline."""
    return estimator.steps[-1][0]


def _found(estimator: Any) -> Any:
    """The estimator that a search fitted last, or the estimator itself."""
    if library_class(estimator).endswith("SearchCV"):
        return estimator.best_estimator_
    return estimator


def _parts(estimator: Any) -> tuple[list[tuple[str, Any]], Any]:
    """The transformers of a pipeline, and what it ends in."""
    if library_class(estimator) != "Pipeline":
        return [], estimator
    steps = list(estimator.steps)
    inner, final = _parts(_found(steps[-1][1]))
    return steps[:-1] + inner, final


def _inputs(
    estimator: Any,
    steps: Sequence[tuple[str, Any]],
    final: Any,
    given: Sequence[str] | None,
    names: set[str],
) -> list[Input]:
    """The columns that the estimator was fitted to, under their names."""
    known = [s for s in (estimator, *(step for _, step in steps), final)]
    count = next((s.n_features_in_ for s in known if _has(s, "n_features_in_")), None)
    if count is None:
        from sklearn.exceptions import NotFittedError

        raise NotFittedError(f"this {type(estimator).__name__} is not fitted; call fit first")
    fitted = next((s.feature_names_in_ for s in known if _has(s, "feature_names_in_")), None)
    if given is not None:
        texts = [str(n) for n in given]
        if len(texts) != count:
            raise ConversionError(
                f"feature_names has {len(texts)} names for {count} columns; give one for each"
            )
    else:
        texts = [str(n) for n in fitted] if fitted is not None else [f"x{i}" for i in range(count)]
    for text in texts:
        if checked(text) in names:
            raise ConversionError(
                f"two fields are named {text!r}; give other feature_names or another target_name"
            )
        names.add(text)
    return [Input(text) for text in texts]


def _has(step: Any, attribute: str) -> bool:
    try:
        return hasattr(step, attribute)
    except Exception:  # a property of an estimator that is not fitted may raise anything
        return False


def _vector_columns(model: Model, columns: list[Column], scope: Scope) -> list[Column]:
    expected = model.vectors.shape[1]
    if len(columns) != expected:
        scope.refuse(
            f"was fitted to {expected} columns, and the steps before it give {len(columns)}",
            "fit the pipeline as a whole",
        )
    return [scope.number(column) for column in columns]


def _settle(inputs: Sequence[Input]) -> None:
    for field in inputs:
        if field.as_number and field.strict is not None:
            raise ConversionError(
                f"column {field.name!r} is computed with, and an encoder rejects unknown values of "
                "it; set handle_unknown='ignore' there, or give the two steps columns of their own"
            )


def _describe_classes(
    target: document.Target, model: Model, given: Sequence[Any] | Mapping[Any, Any] | None
) -> None:
    """Gives the target the type and the texts of the classes."""
    if model.classes is None:
        if given is not None:
            raise ConversionError("categories are given for a regression; leave them out")
        return
    names = list(model.classes)
    if isinstance(given, Mapping):
        names = [given.get(name, name) for name in names]
    elif given is not None:
        names = list(given)
        if len(names) != len(model.classes):
            raise ConversionError(
                f"categories has {len(names)} names for {len(model.classes)} classes; "
                "give one for each, in the order of classes_"
            )
    target.data_type = data_type(names) or "string"
    target.classes = [category(name) for name in names]
    if len(set(target.classes)) != len(target.classes) or "" in target.classes:
        raise ConversionError(
            f"the classes {names} are not told apart by their texts; give others as categories"
        )


def _target_scale(estimator: Any, scope: Scope) -> tuple[float, float] | None:
    """Factor and constant that undo the transformer of a TransformedTargetRegressor."""
    transformer = estimator.transformer_
    kind = library_class(transformer)
    inside = scope.inside("transformer", transformer)

    def only(values: Any, otherwise: float) -> float:
        return otherwise if values is None else float(np.ravel(values)[0])

    if kind == "StandardScaler":
        return (
            only(transformer.scale_ if transformer.with_std else None, 1.0),
            only(transformer.mean_ if transformer.with_mean else None, 0.0),
        )
    if kind == "RobustScaler":
        return (
            only(transformer.scale_ if transformer.with_scaling else None, 1.0),
            only(transformer.center_ if transformer.with_centering else None, 0.0),
        )
    if kind == "MaxAbsScaler":
        return only(transformer.scale_, 1.0), 0.0
    if kind == "MinMaxScaler":
        scale, shift = only(transformer.scale_, 1.0), only(transformer.min_, 0.0)
        return 1.0 / scale, -shift / scale
    if kind == "FunctionTransformer" and transformer.inverse_func is None:
        return None
    inside.refuse(
        "PMML rescales predictions only by a factor and a constant",
        "use StandardScaler, MinMaxScaler, MaxAbsScaler or RobustScaler, or transform y yourself",
    )
    return None


def _description(final: Any) -> str:
    import sklearn

    return f"{type(final).__name__} of scikit-learn {sklearn.__version__}"
