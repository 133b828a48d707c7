"""From scikit-learn to PMML: `to_pmml` writes a fitted estimator, or a pipeline that ends in one,
as a document. Neither scikit-learn nor NumPy is imported before the first call.

Start reading at `export.py`. `machines.py` reads estimators, `pipeline.py` and the modules of the
transformers turn columns into derived fields (`columns.py`), and `document.py` writes all of it.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Mapping, Sequence

from .errors import ConversionError

if TYPE_CHECKING:
    from numpy.typing import ArrayLike

__all__ = ["ConversionError", "to_pmml"]


def to_pmml(
    estimator: Any,
    *,
    feature_names: Sequence[str] | None = None,
    target_name: str | None = None,
    categories: Sequence[Any] | Mapping[Any, Any] | None = None,
    verification: ArrayLike | None = None,
) -> str:
    """The PMML 4.4 document of a fitted estimator of scikit-learn.

    estimator: an SVC, NuSVC, SVR, NuSVR, OneClassSVM, LinearSVC, LinearSVR, an SGDClassifier or
        SGDRegressor with the loss of a support vector machine, a Pipeline that ends in one, a
        search that found one (GridSearchCV), or a TransformedTargetRegressor around one.
    feature_names: the names of the columns that the estimator was fitted to; those of the fit if
        left out, or x0, x1, ... where it saw none.
    target_name: the name of what is predicted; "y" if left out.
    categories: what to call the classes, in the order of `classes_` (as iris.target_names), or a
        mapping from classes; the classes themselves if left out.
    verification: rows as for `estimator.predict`, shape (n, columns), as an array or a DataFrame;
        the first 10 are written with the estimator's own results, for readers to check themselves.

    Columns that the prediction does not depend on, such as those that a ColumnTransformer drops,
    are no inputs of the document. Truth values that a step computes with are the numbers 0 and 1
    there; as categories they are truth values. Numbers read back to the same double.

    A decision value is written with the sign that PMML asks for, under which values below 0 mean
    the first category of a machine; so a value of exactly 0 means the same class as in scikit-
    learn. Equal numbers of votes go to the first of the classes, as in scikit-learn; some other
    readers take the class that was voted for first.

    With `probability=True`, and for a CalibratedClassifierCV of one sigmoid, the document has the
    sigmoid of each machine in an extension, and scoring predicts the class of the largest
    probability, where the `predict` of an SVC counts votes, as readers do that pass the extension
    over. Of two classes the probability is the sigmoid itself; scikit-learn's own figure for an SVC
    comes out of an iteration that stops early. A OneClassSVM becomes a classification of 1
    and -1.

    Raises ConversionError (a ValueError), which names the step and says what to do, where PMML
    cannot say what the estimator does; scikit-learn's NotFittedError for one that is not fitted.
    """
    from .export import convert

    return convert(estimator, feature_names, target_name, categories, verification)
