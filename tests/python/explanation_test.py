"""What inputs contribute to decision values: the program's numbers, to the last bit."""

import csv
import io
import pickle

import numpy as np
import pandas as pd
import pytest
from sklearn.svm import SVC

import svmscore
from conftest import EXAMPLES, MIXED, run_program


def frame_of(example):
    return pd.read_csv(EXAMPLES / example / "cases.csv")


def program(model, cases, *options):
    """The program's columns as numbers, (n, machines, ...) each: decision, base, phi, error, gradient."""
    text = run_program("explain", model, *options, text=cases.to_csv(index=False))
    header, *lines = csv.reader(io.StringIO(text))
    numbers = np.array([[float(cell or "nan") for cell in line[2:]] for line in lines])
    numbers = numbers.reshape(len(cases), -1, len(header) - 2)
    parts = {
        name: numbers[:, :, [at for at, title in enumerate(header[2:]) if title.split("(")[0] == name]]
        for name in ("decision", "base", "phi", "error", "gradient")
    }
    return parts, [title[4:-1] for title in header if title.startswith("phi(")]


def same(mine, theirs):
    theirs = np.asarray(theirs)
    return np.array_equal(np.asarray(mine).reshape(theirs.shape), theirs, equal_nan=True)


@pytest.mark.parametrize("example", ("iris", "tumour", "diabetes", "digits"))
def test_the_numbers_are_the_programs(example, tmp_path):
    path = EXAMPLES / example / "model.pmml"
    model, frame = svmscore.load(path), frame_of(example)
    cases, others = frame[:12], frame[12:32]
    file = tmp_path / "background.csv"
    others.to_csv(file, index=False)
    wanted, players = program(path, cases, "--background", file, "--gradients")
    for threads in (1, 3):
        made = model.explain(cases, others, gradients=True, threads=threads)
        assert made.players == players and made.background_rows == 20 and made.errors is None
        assert same(made.values, wanted["phi"]) and same(made.gradients, wanted["gradient"])
        assert same(made.decisions, wanted["decision"])
        assert same(np.broadcast_to(made.base, made.decisions.shape), wanted["base"])
    assert same(made.decisions, model.decision_function(cases))
    assert made.values.shape == ((12, len(players)) if example in ("tumour", "diabetes")
                                 else (12, len(model.decision_pairs), len(players)))
    # A draw of them, of the same rows; and one row alone, as a case.
    wanted, _ = program(path, cases, "--background", file, "--rows", 7, "--seed", 5)
    made = model.explain(cases.to_dict("list"), others.to_dict("records"), rows=7, seed=5)
    assert same(made.values, wanted["phi"]) and made.background_rows == 7 and made.gradients is None
    alone = model.explain(cases.iloc[0].to_dict(), others, rows=7, seed=5)
    assert same(alone.values[0], made.values[0])


def test_support_vectors_are_the_background():
    path = EXAMPLES / "iris/model.pmml"
    model, frame = svmscore.load(path), frame_of("iris")
    wanted, _ = program(path, frame)
    made = model.explain(frame[model.feature_names_in_].to_numpy())
    assert same(made.values, wanted["phi"]) and same(model.explain(frame).base, made.base)
    assert same(pickle.loads(pickle.dumps(made)).values, made.values)
    with pytest.raises(ValueError, match="does not say what cases are like"):
        svmscore.load(MIXED.encode()).explain({"n": [1]})


def test_sampled_values_have_errors():
    random = np.random.default_rng(1)
    X = random.normal(size=(60, 5))
    fitted = SVC(kernel="sigmoid", gamma=0.2).fit(X, X[:, 0] > X[:, 1])
    document = svmscore.to_pmml(fitted)
    model = svmscore.load(document)
    frame = pd.DataFrame(X[:8], columns=model.feature_names_in_)
    few, many = (model.explain(frame, X[8:20], orders=orders, seed=3) for orders in (5, 500))
    assert few.errors.shape == few.values.shape == (8, 5) and (few.errors > 0).all()
    assert many.errors.mean() < few.errors.mean() / 5
    assert (np.abs(few.values - many.values) < 6 * few.errors).all()
    again = model.explain(frame, X[8:20], orders=5, seed=3, threads=2)
    assert same(again.values, few.values) and same(again.errors, few.errors)
    assert not same(model.explain(frame, X[8:20], orders=5, seed=4).values, few.values)


def test_rows_that_cannot_be_explained():
    model, frame = svmscore.load(EXAMPLES / "iris/model.pmml"), frame_of("iris")
    broken = frame.copy()
    broken.loc[3, "sepal_width"] = None
    with pytest.raises(svmscore.ScoringError, match="1 of 50 rows.*row 3: sepal_width") as failed:
        model.explain(broken)
    assert failed.value.rows == [3]
    made = model.explain(broken, errors="status", gradients=True)
    assert made.status[3] == 90029 and made.status.sum() == 90029
    for part in (made.values, made.decisions, made.gradients):
        assert np.isnan(part[3]).all() and not np.isnan(np.delete(part, 3, 0)).any()
    assert same(np.delete(made.values, 3, 0), model.explain(frame.drop(3)).values)
    with pytest.warns(UserWarning, match="1 rows of the background"):
        assert model.explain(frame, broken).background_rows == 49
    assert len(model.explain(frame[:0])) == 0
    for arguments, options, error, message in (
        ((frame.drop(columns="sepal_width"),), {}, svmscore.TableError, "sepal_width"),
        ((frame, frame.drop(columns="sepal_width")), {}, svmscore.TableError, "sepal_width"),
        ((frame, broken[3:4]), {}, svmscore.TableError, "no row of the background"),
        ((frame, broken[:0]), {}, svmscore.TableError, "no rows"),
        ((frame,), {"rows": 0}, ValueError, "rows is a whole number"),
        ((frame,), {"seed": -1}, ValueError, "seed is a whole number"),
        ((frame,), {"threads": 0}, ValueError, "threads"),
        ((frame,), {"errors": "ignore"}, ValueError, "errors"),
    ):
        with pytest.raises(error, match=message):
            model.explain(*arguments, **options)
