"""svmscore.dask and svmscore.spark with a real scheduler and two workers on this machine."""

import concurrent.futures
import contextlib
import os
import pathlib
import pickle
import re
import signal
import socket
import subprocess
import sys
import time

import cloudpickle
import dask
import dask.dataframe
import numpy as np
import pandas
import psutil
import pyarrow
import pyspark
import pyspark.cloudpickle
import pytest
from distributed import Client, LocalCluster, as_completed, futures_of

import svmscore
import svmscore.dask
import svmscore.spark
from svmscore import _shipping

ROOT = pathlib.Path(__file__).resolve().parents[2]
IRIS = ROOT / "examples/iris/model.pmml"
PAGES = [ROOT / "docs/cluster.md", ROOT / "docs/python.md"]
PARTITIONS = 200
SPARK_PARTITIONS = 24  # whose tasks take longer
QUICK_START = "-XX:TieredStopAtLevel=1 -XX:+UseSerialGC"

# Of whole categories beyond 2^53, so that digits are lost where they become doubles.
WHOLE = """<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
  <DataDictionary>
    <DataField name="x" optype="continuous" dataType="double"/>
    <DataField name="a.b" optype="categorical" dataType="string">
      <Value value="p"/><Value value="q"/></DataField>
    <DataField name="y" optype="categorical" dataType="integer">
      <Value value="9007199254740993"/><Value value="7"/></DataField>
  </DataDictionary>
  <SupportVectorMachineModel functionName="classification" svmRepresentation="Coefficients">
    <MiningSchema>
      <MiningField name="x"/><MiningField name="a.b"/><MiningField name="y" usageType="target"/>
    </MiningSchema>
    <Output>
      <OutputField name="truth" feature="transformedValue" dataType="boolean" optype="categorical">
        <Apply function="greaterThan"><FieldRef field="x"/><Constant>0</Constant></Apply>
      </OutputField>
      <OutputField name="class" feature="predictedValue" dataType="integer" optype="categorical"/>
    </Output>
    <LocalTransformations>
      <DerivedField name="d" optype="continuous" dataType="double">
        <NormDiscrete field="a.b" value="p"/></DerivedField>
    </LocalTransformations>
    <LinearKernelType/>
    <VectorDictionary>
      <VectorFields><FieldRef field="x"/><FieldRef field="d"/></VectorFields>
    </VectorDictionary>
    <SupportVectorMachine targetCategory="9007199254740993" alternateTargetCategory="7">
      <Coefficients absoluteValue="0"><Coefficient value="1"/><Coefficient value="0.5"/></Coefficients>
    </SupportVectorMachine>
  </SupportVectorMachineModel></PMML>"""


# Workers cannot import this file.
for pickler in (cloudpickle, pyspark.cloudpickle):
    pickler.register_pickle_by_value(sys.modules[__name__])


@pytest.fixture(scope="module")
def iris():
    return svmscore.load(IRIS)


@pytest.fixture(scope="module")
def whole():
    return svmscore.load(WHOLE)


def make_cases(part, rows=50):
    """Made where they are scored; a value is missing now and then, and all are in partition 3."""
    values = np.random.default_rng(part).uniform(0, 8, (rows, 4))
    values[rng_rows(part, rows), 1] = np.nan
    if part == 3:
        values[:] = np.nan
    names = ["petal_width", "petal_length", "sepal_width", "sepal_length"]
    frame = pandas.DataFrame(values, columns=names, index=range(part * rows, (part + 1) * rows))
    return frame.assign(note="n", key=frame.index)


def rng_rows(part, rows):
    return np.random.default_rng(part + 1000).integers(0, rows, 2)


def slowly(frame):
    time.sleep(0.02)
    return frame


def all_cases(parts=PARTITIONS):
    return pandas.concat(map(make_cases, range(parts)))


def process_state():
    """Of the process of a worker: how many models it has loaded, and the most memory, in MB."""
    import resource

    return _shipping.loads, resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024


def kept_in_few_megabytes(states):
    return max(megabytes for _, megabytes in states)


# --- Dask -----------------------------------------------------------------------------------------


@pytest.fixture(scope="module")
def client():
    with (
        dask.config.set({"distributed.scheduler.allowed-failures": 10}),
        LocalCluster(
            n_workers=2, threads_per_worker=2, processes=True, dashboard_address=":0"
        ) as cluster,
        Client(cluster) as client,
    ):
        yield client


def dask_cases(parts=PARTITIONS, **given):
    return dask.dataframe.from_map(make_cases, range(parts), **given)


def test_dask_gives_the_bytes_of_one_machine(client, iris):
    expected = iris.table(all_cases()).to_csv()
    scores = svmscore.dask.table(iris, dask_cases())
    assert scores.compute().to_csv() == expected
    for scheduler in ("sync", "threads"):
        assert scores.compute(scheduler=scheduler).to_csv() == expected


def test_dask_loads_a_model_once_in_each_worker(client, iris):
    for columns in ("auto", "all"):
        svmscore.dask.table(iris, dask_cases(40), columns).compute()
    assert [loads for loads, _ in client.run(process_state).values()] == [1, 1]


def test_dask_sends_a_document_once_whatever_the_number_of_partitions(iris):
    large = svmscore.load(IRIS.read_bytes() + b"<!--" + b" " * 1_000_000 + b"-->")
    graph = svmscore.dask.table(large, dask_cases(50)).optimize().__dask_graph__()
    assert 1_000_000 < len(pickle.dumps(dict(graph))) < 1_200_000


def test_dask_types_are_those_promised_in_every_partition(whole):
    cases = pandas.DataFrame(
        {"x": [1.0, -1.0, None, 2.0], "a.b": ["p", "q", "p", None], "other": 1}, index=[4, 5, 7, 9]
    )
    for kind in ("object", "category"):
        frame = dask.dataframe.from_pandas(cases.astype({"a.b": kind}), npartitions=3)
        scores = svmscore.dask.table(whole, frame, reasons=True)
        assert scores.divisions == frame.divisions
        for part in scores.partitions:
            computed = part.compute(scheduler="sync")
            assert (computed.dtypes == scores.dtypes).all()
        computed = scores.compute(scheduler="sync")
        assert computed.index.tolist() == [4, 5, 7, 9]
        assert computed["class"].tolist() == [7, 9007199254740993, pandas.NA, pandas.NA]
    with pytest.raises(svmscore.TableError, match="no column"):
        svmscore.dask.table(whole, frame[["x"]])
    with pytest.raises(svmscore.ScoringError):
        svmscore.dask.table(whole, frame, errors="raise").compute(scheduler="sync")


def test_dask_memory_of_a_worker_does_not_grow_with_partitions(client, iris):
    def rows(parts):
        cases = dask.dataframe.from_map(make_cases, range(parts), rows=10_000)
        return svmscore.dask.table(iris, cases)["status"].size.compute()

    rows(20)
    before = kept_in_few_megabytes(client.run(process_state).values())
    assert rows(PARTITIONS) == PARTITIONS * 10_000  # 160 MB in and out
    assert kept_in_few_megabytes(client.run(process_state).values()) < before + 60


def test_dask_loses_nothing_with_a_worker(client, iris):
    scores = svmscore.dask.table(iris, dask_cases().map_partitions(slowly)).persist()
    finished = as_completed(futures_of(scores))
    for _ in range(PARTITIONS // 4):
        next(finished)
    os.kill(next(iter(client.run(os.getpid).values())), signal.SIGKILL)
    assert scores.compute().to_csv() == iris.table(all_cases()).to_csv()


# --- Spark ----------------------------------------------------------------------------------------


@contextlib.contextmanager
def spark_process(folder, name, *arguments):
    """Master or Worker, from the package's own script."""
    script = pathlib.Path(pyspark.__file__).parent / "bin/spark-class"
    environment = {
        **os.environ,
        "SPARK_LOCAL_IP": "127.0.0.1",
        "SPARK_DAEMON_MEMORY": "256m",
        "SPARK_DAEMON_JAVA_OPTS": QUICK_START,
        "SPARK_NO_DAEMONIZE": "1",
        "PYSPARK_PYTHON": sys.executable,
    }
    with open(folder / f"{name}-{time.monotonic_ns()}.log", "wb") as log:
        process = subprocess.Popen(
            [script, f"org.apache.spark.deploy.{name}", *arguments],
            env=environment,
            stdout=log,
            stderr=log,
            start_new_session=True,
        )
        try:
            yield process
        finally:
            process.kill()
            process.wait()


def free_port():
    with socket.socket() as found:
        found.bind(("127.0.0.1", 0))
        return found.getsockname()[1]


def wait_for_port(port):
    while True:
        with (
            contextlib.suppress(ConnectionRefusedError),
            socket.create_connection(("127.0.0.1", port)),
        ):
            return
        time.sleep(0.1)


@pytest.fixture(scope="module")
def spark_workers(tmp_path_factory):
    folder = tmp_path_factory.mktemp("spark")
    port = free_port()
    address = f"spark://127.0.0.1:{port}"
    with contextlib.ExitStack() as stack:
        stack.enter_context(
            spark_process(
                folder,
                "master.Master",
                "--host",
                "127.0.0.1",
                "--port",
                str(port),
                "--webui-port",
                "0",
            )
        )
        wait_for_port(port)  # a worker that comes too early waits for long
        workers = [
            stack.enter_context(
                spark_process(
                    folder,
                    "worker.Worker",
                    "--host",
                    "127.0.0.1",
                    "--cores",
                    "1",
                    "--memory",
                    "1g",
                    "--webui-port",
                    "0",
                    "--work-dir",
                    str(folder / str(number)),
                    address,
                )
            )
            for number in range(2)
        ]
        yield address, workers


@pytest.fixture(scope="module")
def spark(spark_workers):
    from pyspark.sql import SparkSession

    os.environ["PYSPARK_PYTHON"] = sys.executable
    os.environ.setdefault("SPARK_LOCAL_IP", "127.0.0.1")
    session = (
        SparkSession.builder.master(spark_workers[0])
        .config("spark.driver.memory", "512m")
        .config("spark.executor.memory", "512m")
        .config("spark.driver.defaultJavaOptions", QUICK_START)
        .config("spark.executor.defaultJavaOptions", QUICK_START)
        .config("spark.executor.cores", "1")
        .config("spark.ui.enabled", "false")
        .config("spark.driver.host", "127.0.0.1")
        .config("spark.sql.shuffle.partitions", "4")
        .config("spark.scheduler.minRegisteredResourcesRatio", "1.0")
        .config("spark.scheduler.maxRegisteredResourcesWaitingTime", "120s")
        .getOrCreate()
    )
    yield session
    session.stop()


def spark_cases(spark, parts=SPARK_PARTITIONS, rows=50, before=lambda part: None):
    """One partition for each part, made where it is scored."""

    def make(batches):
        for batch in batches:
            for part in batch.column(0).to_pylist():
                before(part)
                yield pyarrow.RecordBatch.from_pandas(make_cases(part, rows), preserve_index=False)

    columns = ["petal_width", "petal_length", "sepal_width", "sepal_length"]
    types = ", ".join(f"{name} double" for name in columns) + ", note string, key long"
    return spark.range(0, parts, 1, parts).mapInArrow(make, types)


def spark_states(spark):
    """Of each Python worker process: what process_state gives."""

    def tell(batches):
        for _ in batches:
            loads, megabytes = process_state()
            columns = [[os.getpid()], [loads], [megabytes]]
            yield pyarrow.RecordBatch.from_arrays(
                [pyarrow.array(c) for c in columns], ["pid", "loads", "mb"]
            )
            time.sleep(0.05)  # so that no worker gets all of them

    rows = spark.range(0, 16, 1, 16).mapInArrow(tell, "pid long, loads long, mb double").collect()
    return {row.pid: (row.loads, row.mb) for row in rows}


def same_as_on_one_machine(scores, model):
    cases = all_cases(SPARK_PARTITIONS)
    expected = pandas.concat([cases["key"], model.table(cases)], axis=1)
    return scores.toPandas().to_csv(index=False) == expected.to_csv(index=False)


def test_spark_gives_the_bytes_of_one_machine(spark, iris):
    scores = svmscore.spark.table(iris, spark_cases(spark), passthrough=["key"])
    assert same_as_on_one_machine(scores, iris)


def test_spark_loads_a_model_once_in_each_worker(spark, iris):
    for columns in ("auto", "all"):
        svmscore.spark.table(iris, spark_cases(spark), columns).count()
    loads = [loads for loads, _ in spark_states(spark).values()]
    assert max(loads) == 1 and sum(loads) >= 2, loads  # some processes only make cases


def test_spark_types_and_nulls(spark, whole):
    cases = [(1.0, "p", 1), (-1.0, "q", 2), (None, "p", 3), (float("nan"), "q", 4), (2.0, None, 5)]
    df = spark.createDataFrame(cases, "x double, `a.b` string, id int")
    df = df.selectExpr("cast(x as decimal(9,2)) as x", "`a.b`", "id", "x as other").repartition(2)
    scores = svmscore.spark.table(whole, df, passthrough=["id", "x"], reasons=True)
    assert (
        scores.schema.simpleString()
        == "struct<id:int,x:decimal(9,2),truth:string,class:bigint,status:bigint,reason:string>"
    )
    rows = {row.id: row for row in scores.collect()}
    assert [rows[i]["class"] for i in range(1, 6)] == [7, 9007199254740993, None, None, None]
    assert [rows[i].status for i in range(1, 6)] == [0, 0, 90029, 90029, 90029]
    assert rows[1].reason is None and "x" in rows[3].reason
    assert scores.join(df, "id").filter("status = 0").count() == 2
    for wrong, given, text in [
        (df.drop("x"), {}, "no column"),
        (df.selectExpr("array(x) as x", "`a.b`"), {}, "type list"),
        (df, {"passthrough": ["no"]}, "no column 'no'"),
        (df.withColumnRenamed("other", "status"), {"passthrough": ["status"]}, "rename"),
        (df, {"columns": "most"}, "auto"),
    ]:
        with pytest.raises(ValueError, match=text):
            svmscore.spark.table(whole, wrong, **given)


def test_spark_memory_of_a_worker_does_not_grow_with_partitions(spark, iris):
    def rows(parts):
        return (
            svmscore.spark.table(iris, spark_cases(spark, parts, 4_000))
            .selectExpr("sum(status + 1 - status)")
            .first()[0]
        )

    rows(20)
    before = kept_in_few_megabytes(spark_states(spark).values())
    assert rows(PARTITIONS) == PARTITIONS * 4_000  # 80 MB in and out
    assert kept_in_few_megabytes(spark_states(spark).values()) < before + 40


def test_spark_loses_nothing_with_a_worker(spark, spark_workers, iris, tmp_path):
    folder = str(tmp_path)

    def begin(part):
        time.sleep(0.02)
        pathlib.Path(folder, str(part)).touch()

    scores = svmscore.spark.table(iris, spark_cases(spark, before=begin), passthrough=["key"])
    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        answer = pool.submit(same_as_on_one_machine, scores, iris)
        while len(list(tmp_path.iterdir())) < SPARK_PARTITIONS // 4 and not answer.done():
            time.sleep(0.01)
        assert not answer.done()
        worker = psutil.Process(spark_workers[1][0].pid)
        executors = worker.children(recursive=True)
        for process in [worker, *executors]:
            process.kill()
        assert executors and answer.result()


# --- Both -----------------------------------------------------------------------------------------


def test_examples_of_the_page_run(client, spark, iris, tmp_path):
    cases = make_cases(1).assign(id=range(50))
    (tmp_path / "cases").mkdir()
    cases.to_parquet(tmp_path / "cases/0.parquet", index=False)
    (tmp_path / "model.pmml").write_bytes(IRIS.read_bytes())
    cases.to_csv(tmp_path / "cases.csv", index=False)
    text = "".join(page.read_text() for page in PAGES)
    examples = [e for e in re.findall(r"```python\n(.*?)```", text, re.DOTALL) if ">>>" not in e]
    assert len(examples) == 3
    with dask.config.set({"scheduler-address": client.scheduler.address}):
        for example in examples:
            known = {}
            exec(re.sub(r'"([\w.-]+(/(\*.csv)?|\.pmml|\.csv))"', rf'"{tmp_path}/\1"', example), known)
            if "client" in known:
                known["client"].close()
    scores = iris.table(cases)
    (csv,) = (tmp_path / "csv-scores").iterdir()
    assert csv.read_text() == scores.to_csv(index=False)
    for folder in ("scores", "spark-scores"):
        written = pandas.read_parquet(tmp_path / folder)
        assert written[list(scores)].to_csv(index=False) == scores.to_csv(index=False)


def test_nothing_of_them_is_imported_before_use():
    code = """import sys, svmscore
svmscore.dask.table, svmscore.spark.table
print({"dask", "pyspark", "pandas"} & {*sys.modules})"""
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout == "set()\n"
