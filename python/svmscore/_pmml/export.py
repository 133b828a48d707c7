"""The conversion as a whole: takes an estimator apart, names its columns, and writes it."""

from __future__ import annotations

from typing import Any, Mapping, Sequence

from . import calibration, document, targets, verification
from .columns import Column, Input, Scope
from .errors import ConversionError
from .machines import Model, read
from .parts import Parts, take_apart
from .pipeline import is_passthrough, transform
from .text import checked


def convert(
    estimator: Any,
    feature_names: Sequence[str] | None,
    target_name: str | None,
    categories: Sequence[Any] | Mapping[Any, Any] | None,
    rows: Any,
) -> str:
    """The document of `estimator`; the arguments are those of `svmscore.to_pmml`."""
    if target_name == "":
        raise ConversionError("target_name is empty; give a name, or leave it out")
    parts = take_apart(estimator, Scope(set(), "", estimator))
    target = document.Target(checked("y" if target_name is None else str(target_name)))
    names = {target.name, target.prediction}
    scope = Scope(names, parts.path, parts.final)
    model = read(parts.final, scope)
    calibration.apply(model, parts.calibrator)
    inputs = _inputs(estimator, parts, feature_names, names)
    columns: list[Column] = list(inputs)
    for path, step in parts.steps:
        columns = transform(step, columns, Scope(names, path, step))
    if parts.target_transformer is not None:
        target.rescale = targets.rescaling(
            parts.target_transformer, Scope(names, "transformer", parts.target_transformer)
        )
    columns = _vector_columns(model, columns, scope)
    _settle(inputs)
    targets.describe_classes(target, model, categories)
    root = document.build(model, target, columns, _description(parts.final))
    if rows is not None:
        verification.add(root[-1], estimator, model, target, inputs, columns, rows)
    return document.serialise(root)


def _inputs(
    estimator: Any, parts: Parts, given: Sequence[str] | None, names: set[str]
) -> list[Input]:
    """The columns that the estimator was fitted to, under their names, which join `names`."""
    seen = [step for _, step in parts.steps if not is_passthrough(step)]
    first = seen[0] if seen else parts.final  # what saw the table of the caller
    # A step that nobody knows may tell nothing; `transform` refuses it by name.
    count = _fitted(estimator, first, "n_features_in_") or len(given or ())
    fitted = _fitted(estimator, first, "feature_names_in_")
    if given is not None:
        texts = [str(n) for n in given]
    else:
        texts = [str(n) for n in fitted] if fitted is not None else [f"x{i}" for i in range(count)]
    if len(texts) != count:
        raise ConversionError(
            f"feature_names has {len(texts)} names for {count} columns; give one for each"
        )
    for text in texts:
        if checked(text) in names:
            raise ConversionError(
                f"two fields are named {text!r}; give other feature_names or another target_name"
            )
        names.add(text)
    return [Input(text, fitted[i] if fitted is not None else i) for i, text in enumerate(texts)]


def _fitted(estimator: Any, first: Any, attribute: str) -> Any:
    """What the fit told about the table; None where nobody kept it."""
    for step in (estimator, first, *(t for _, t in getattr(first, "transformer_list", ()))):
        try:
            return getattr(step, attribute)
        except Exception:  # properties that ask a step inside raise what that raises
            continue
    return None


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


def _description(final: Any) -> str:
    import sklearn

    return f"{type(final).__name__} of scikit-learn {sklearn.__version__}"
