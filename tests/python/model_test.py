"""A model: what it tells, how it travels, and who may use it at once."""

import gc
import io
import json
import multiprocessing
import os
import pickle
import signal
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pandas as pd
import pytest

import svmscore
from conftest import EXAMPLES, MIXED, run_program

IRIS = EXAMPLES / "iris/model.pmml"


def cases(rows=200):
    return np.random.default_rng(3).uniform(0, 8, (rows, 4))


def test_a_document_comes_from_anywhere(iris, tmp_path):
    data = IRIS.read_bytes()
    gone = tmp_path / os.fsdecode(b"gone\xff.pmml")  # no UTF-8
    gone.write_bytes(data)
    sources = [str(IRIS), IRIS, data, bytearray(data), io.BytesIO(data), data.decode(),
               io.StringIO(data.decode()), IRIS.open("rb"), gone, next(os.scandir(bytes(tmp_path)))]
    models = [svmscore.load(source) for source in sources]
    gone.unlink()
    wanted = iris.predict(cases())
    for model in [*models, pickle.loads(pickle.dumps(models[-1]))]:
        assert model.sha256 == iris.sha256 and (model.predict(cases()) == wanted).all()
    with pytest.raises(FileNotFoundError):
        svmscore.load(gone)
    for other, error, message in (
        (5, TypeError, "int"),
        (b"svm_type c_svc\n", svmscore.DocumentError, "svmscore.from_libsvm"),
        (pickle.dumps(5), svmscore.DocumentError, "pickle.*svmscore.to_pmml"),
        (__import__("sklearn.svm").svm.SVC(), TypeError, "svmscore.to_pmml"),
    ):
        with pytest.raises(error, match=message):
            svmscore.load(other)


def test_a_model_tells_what_the_program_tells(iris):
    described = json.loads(run_program("describe", "--json", IRIS))
    assert iris.describe() | {"file": 0} == described | {"file": 0}
    assert iris.kind == "classification" and iris.percentages == "votes"
    assert iris.classes_.tolist() == described["target"]["categories"]
    assert iris.feature_names_in_.tolist() == [field["name"] for field in described["inputs"]]
    assert iris.decision_pairs == [(m["target"], m["alternate"]) for m in described["machines"]]
    assert iris.remarks == () and not hasattr(svmscore.load(MIXED.encode()), "classes_")
    assert iris.decision_function(cases(5)).shape == (5, 3)
    with pytest.raises(svmscore.NotCalibrated, match="votes"):
        iris.predict_proba(cases())
    for threads in (0, -2, 1025, 1 << 31, 1.0):
        with pytest.raises(ValueError, match="from 1 on"):
            iris.predict(cases(), threads=threads)
    assert len(iris.predict(cases(), threads=np.int64(2))) == 200


def test_the_package_shows_its_names():
    shown = dir(svmscore)
    assert set(svmscore.__all__) < set(shown) and not {"annotations", "Any", "TYPE_CHECKING"} & set(shown)
    for shown in (getattr(svmscore, name) for name in svmscore.__all__):
        if isinstance(shown, type) and issubclass(shown, Exception):
            assert shown.__module__ == "svmscore" and pickle.loads(pickle.dumps(shown)) is shown


def test_probabilities_are_in_the_order_of_the_classes():
    model = svmscore.load(EXAMPLES / "digits/model.pmml")
    frame = pd.read_csv(EXAMPLES / "digits/cases.csv")
    chances = model.predict_proba(frame)
    assert chances.shape == (len(frame), len(model.classes_))
    np.testing.assert_allclose(chances.sum(axis=1), 1, atol=1e-12)
    assert (model.classes_[chances.argmax(axis=1)] == model.predict(frame)).all()


@pytest.mark.parametrize("data_type, texts, values", [
    ("integer", ["-1", "1", "20"], [-1, 1, 20]), ("double", ["0.5", "2", "3"], [0.5, 2.0, 3.0]),
    ("string", ["1", "b", "true"], ["1", "b", "true"]),
])
def test_categories_have_the_type_of_the_target(iris, data_type, texts, values):
    document = IRIS.read_text().replace('name="species" optype="categorical" dataType="string"',
                                        f'name="species" optype="categorical" dataType="{data_type}"')
    for name, text in zip(iris.classes_, texts):
        document = document.replace(f'"{name}"', f'"{text}"')
    model = svmscore.load(document)
    assert model.classes_.tolist() == values
    places = [iris.classes_.tolist().index(name) for name in iris.predict(cases())]
    assert model.predict(cases()).tolist() == [values[place] for place in places]
    holed = cases()
    holed[3, 0] = np.nan
    got = model.predict(holed, errors="status").tolist()
    assert got[3] is None or np.isnan(got[3])
    assert got[:3] + got[4:] == [values[p] for p in places[:3] + places[4:]]


def test_guesses_and_losses_are_told(iris):
    broken = EXAMPLES / "broken/model.pmml"
    findings = svmscore.doctor(broken)["findings"]
    assert findings and findings == json.loads(
        run_program_whatever("doctor", "--json", broken))["findings"]
    cut = IRIS.read_text().replace('numberOfVectors="34"', 'numberOfVectors="35"')
    with pytest.raises(svmscore.DocumentError, match="35") as refused:
        svmscore.load(cut, strict_document=True)
    assert pickle.loads(pickle.dumps(refused.value)).code == refused.value.code != 0
    with pytest.warns(svmscore.DocumentWarning, match="35") as told:
        model = svmscore.load(cut)
    assert [str(warning.message) for warning in told] == list(model.remarks)
    with pytest.raises(ValueError, match="contradict"):
        svmscore.load(IRIS, as_is=True, strict_document=True)
    with pytest.raises(ValueError, match="missing_policy"):
        svmscore.load(IRIS, missing_policy="guess")
    with pytest.raises(svmscore.DocumentError):
        svmscore.load(IRIS, limits={"document-size": 100})
    with pytest.raises(ValueError, match="document-size.*-1"):
        svmscore.load(IRIS, limits={"document-size": -1})


def run_program_whatever(*arguments):
    from conftest import PROGRAM

    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True).stdout


def test_scores_are_compared_with_expected_ones(iris):
    frame = pd.read_csv(EXAMPLES / "iris/cases.csv")
    expected = pd.read_csv(EXAMPLES / "iris/expected.csv")
    assert iris.verify(frame, expected)["agrees"]
    wrong = iris.predict(frame)
    wrong[0] = "setosa" if wrong[0] != "setosa" else "virginica"
    told = iris.verify(frame, wrong)
    assert not told["agrees"] and told["disagreements"] == 1
    assert told["agreement"]["accuracy"] == pytest.approx(1 - 1 / len(frame))
    assert svmscore.doctor(IRIS, frame, wrong)["agreement"]["accuracy"] < 1
    for column in (pd.Series(wrong), __import__("polars").Series(wrong.tolist()), wrong.tolist(),
                   __import__("pyarrow").chunked_array([wrong.tolist()])):
        assert iris.verify(frame, column)["disagreements"] == 1
    with pytest.raises(ValueError, match="both"):
        iris.verify(frame)
    with pytest.raises(svmscore.DocumentError):  # the document has no records
        iris.verify()


def test_the_interpreter_goes_on_while_rows_are_scored(iris):
    many, done = cases(300_000), []
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)  # nothing but a lock that is released lets another thread in
    try:
        worker = threading.Thread(target=lambda: (iris.predict(many), done.append(True)))
        worker.start()
        assert not done
        worker.join()
    finally:
        sys.setswitchinterval(interval)


@pytest.fixture(scope="module")
def slow():
    """A model of many vectors, and 16,384 cases for it."""
    vectors = np.random.default_rng(6).integers(-9, 9, (4000, 100))
    lines = [f"{1 - 2 * (row % 2)} " + " ".join(f"{i}:{v}" for i, v in enumerate(vector, 1))
             for row, vector in enumerate(vectors)]
    text = ("svm_type c_svc\nkernel_type rbf\ngamma 0.001\nnr_class 2\ntotal_sv 4000\nrho 0\n"
            "label 1 -1\nnr_sv 2000 2000\nSV\n")
    return svmscore.load(svmscore.from_libsvm(text + "\n".join(lines) + "\n")), np.tile(vectors, (5, 1))[:16384]


def test_the_interpreter_goes_on_while_a_long_case_is_scored(slow):
    model, rows = slow
    case, done = dict(zip(model.feature_names_in_, rows[0].tolist())), []
    model.predict(case)  # shows how long it takes
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        worker = threading.Thread(target=lambda: done.extend(model.predict(case) for _ in range(99)))
        worker.start()
        assert len(done) < 99
        worker.join()
    finally:
        sys.setswitchinterval(interval)


@pytest.mark.parametrize("kind", ["array", "stream"])
def test_signals_are_heard_while_rows_are_scored(slow, kind):
    import pyarrow

    model, rows = slow
    table = rows if kind == "array" else pyarrow.table(dict(zip(model.feature_names_in_, rows.T.copy())))
    heard = []
    before = signal.signal(signal.SIGALRM, lambda *_: heard.append(0))
    signal.setitimer(signal.ITIMER_REAL, 0.001, 0.001)
    try:
        model.predict(table)
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert len(heard) > 3


def test_output_columns_may_be_named_alike(iris):
    import polars

    fields = "".join(f'<OutputField name="{name}" feature="predictedValue"/>' for name in ("status", "a"))
    text = IRIS.read_text().replace("</MiningSchema>", f"</MiningSchema><Output>{fields}</Output>", 1)
    model = svmscore.load(text)
    frame = pd.DataFrame(cases(3), columns=iris.feature_names_in_)
    scores = model.table(frame, errors="raise")
    assert list(scores.columns) == ["status", "a", "status"]
    assert scores.iloc[:, 0].tolist() == scores["a"].tolist() == iris.predict(frame).tolist()
    assert scores.iloc[:, 2].tolist() == [0] * 3
    for table in (cases(3), polars.DataFrame(frame)):
        with pytest.raises(ValueError, match="alike"):
            model.table(table)


OUT_OF_MEMORY = """
import resource, sys
import duckdb, numpy, svmscore  # duckdb's module translates exceptions, too
model = svmscore.load(sys.argv[1])
rows = numpy.zeros(1 << 28, dtype=numpy.int8)
pages = int(open("/proc/self/statm").read().split()[0])
resource.setrlimit(resource.RLIMIT_AS, (pages * 4096 + (200 << 20),) * 2)
try:
    model.predict(dict.fromkeys(model.feature_names_in_, rows))
except MemoryError:
    print("told")
"""


def test_memory_that_runs_out_is_told():
    done = subprocess.run([sys.executable, "-c", OUT_OF_MEMORY, IRIS], capture_output=True, text=True)
    assert done.stdout == "told\n", done.stderr


def test_threads_share_a_model(iris):
    wanted = iris.decision_function(cases()).tobytes()

    def use(turn):
        if turn % 4 == 0:
            return svmscore.load(IRIS).decision_function(cases()).tobytes()
        if turn % 4 == 1:
            iris.describe(), iris.verify(cases(), iris.predict(cases()))
        return iris.decision_function(cases()).tobytes()

    with ThreadPoolExecutor(8) as pool:
        assert set(pool.map(use, range(64))) == {wanted}


def score_in_worker(model):
    return model.decision_function(cases()).tobytes()


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_share_a_model(iris, method):
    wanted = score_in_worker(iris)
    with multiprocessing.get_context(method).Pool(2) as pool:
        assert set(pool.map(score_in_worker, [iris] * 4)) == {wanted}


@pytest.mark.parametrize("backend", ["loky", "threading"])
def test_joblib_shares_a_model(iris, backend):
    import joblib

    got = joblib.Parallel(2, backend=backend)(joblib.delayed(iris.predict)(cases()) for _ in range(4))
    assert {tuple(part) for part in got} == {tuple(iris.predict(cases()))}


def resident_kilobytes():
    with open("/proc/self/status") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))


def test_loading_and_scoring_keep_no_memory():
    data, rows = IRIS.read_bytes(), cases(50)
    seen = []
    for turn in range(3000):
        model = svmscore.load(data)
        model.predict(rows)
        if turn % 1000 == 999:
            gc.collect()
            seen.append(resident_kilobytes())
    assert seen[2] - seen[0] < 4096, seen


def test_failed_calls_keep_no_memory(iris):
    before = None
    for turn in range(3000):
        for broken in (b"<PMML/>", {"sepal_length": [1.0]}):
            with pytest.raises(ValueError):
                svmscore.load(broken) if isinstance(broken, bytes) else iris.predict(broken)
        if turn == 1000:
            before = resident_kilobytes()
    assert resident_kilobytes() - before < 4096


def test_models_of_libsvm_are_converted(tmp_path):
    text = (
        "svm_type c_svc\nkernel_type linear\nnr_class 2\ntotal_sv 2\nrho 0.5\nlabel 1 -1\n"
        "nr_sv 1 1\nSV\n1 1:1 2:2\n-1 1:-1\n"
    )
    file = tmp_path / "model"
    file.write_text(text)
    document = svmscore.from_libsvm(file, feature_names=["a", "b"], labels=["good", "bad"])
    assert svmscore.from_libsvm(text, feature_names="ab", labels=("good", "bad")) == document
    model = svmscore.load(document)
    assert model.feature_names_in_.tolist() == ["a", "b"]
    assert model.predict([{"a": 1, "b": 0}, {"a": 0, "b": 0}]).tolist() == ["good", "bad"]
    assert svmscore.load(svmscore.from_libsvm(text)).classes_.tolist() == [1, -1]
    scaled = svmscore.from_libsvm(text, ranges="x\n-1 1\n1 0 10\n2 0 10\n")
    assert svmscore.load(scaled).decision_function([[10, 5]]) == model.decision_function([[1, 0]])
    with pytest.raises(svmscore.DocumentError, match="recomputed.*line 2"):
        svmscore.from_libsvm(text.replace("linear", "precomputed"))
    for options, message in (({"labels": ["one"]}, r"has 2: 1, -1 \(labels\)"),
                             ({"feature_names": ["a"]}, r"\(feature_names\)"),
                             ({"labels": {1: "good", -1: "bad"}}, "labels is a sequence")):
        with pytest.raises((ValueError, TypeError), match=message):
            svmscore.from_libsvm(text, **options)
