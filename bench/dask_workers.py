#!/usr/bin/env python3
"""Two Dask workers over one, and over no Dask, on the same rows in the same run.

    bench/dask_workers.py [MODEL] [--rows N] [--rounds N]

Rows are made up where they are scored, in partitions of 20,000, and only counts come back: what is
measured is scoring with what Dask adds, not a disk or a network. One thread for each worker. The three
take turns, round after round. The time is that of the wall clock, which says something only where two
cores are idle; the processor time of all processes beside it shows what Dask adds.
"""

import argparse
import collections
import functools
import os
import pathlib
import statistics
import time

import dask.dataframe
import numpy as np
import pandas
from distributed import Client, LocalCluster

import svmscore
import svmscore.dask

PARTITION = 20_000
EXAMPLE = pathlib.Path(__file__).resolve().parents[1] / "examples/digits/model.pmml"


def make_cases(part, names):
    values = np.random.default_rng(part).integers(0, 17, (PARTITION, len(names))).astype(float)
    return pandas.DataFrame(values, columns=names)


def by_dask(client, model, partitions):
    make = functools.partial(make_cases, names=list(model.feature_names_in_))
    scores = svmscore.dask.table(model, dask.dataframe.from_map(make, range(partitions)))
    return client.compute((scores["status"] == 0).sum()).result()


def by_itself(model, partitions):
    names = list(model.feature_names_in_)
    tables = (model.table(make_cases(part, names)) for part in range(partitions))
    return sum((table["status"] == 0).sum() for table in tables)


def processor_time(clients):
    """Of this process and all workers."""
    return time.process_time() + sum(
        seconds for client in clients for seconds in client.run(time.process_time).values()
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("model", nargs="?", default=EXAMPLE)
    parser.add_argument("--rows", type=int, default=2_000_000)
    parser.add_argument("--rounds", type=int, default=3)
    given = parser.parse_args()
    model = svmscore.load(given.model)
    partitions = -(-given.rows // PARTITION)
    print(f"load before: {os.getloadavg()[0]:.2f}, processors: {len(os.sched_getaffinity(0))}")
    walls, processors = collections.defaultdict(list), collections.defaultdict(list)
    options = {"threads_per_worker": 1, "processes": True, "dashboard_address": ":0"}
    with (
        LocalCluster(n_workers=1, **options) as one,
        LocalCluster(n_workers=2, **options) as two,
        Client(one, set_as_default=False) as first,
        Client(two, set_as_default=False) as second,
    ):
        runs = {
            "no Dask": functools.partial(by_itself, model),
            "one worker": functools.partial(by_dask, first, model),
            "two workers": functools.partial(by_dask, second, model),
        }
        for run in runs.values():
            run(4)  # starts and loads what is needed
        for _ in range(given.rounds):
            for name, run in runs.items():
                busy, started = processor_time([first, second]), time.perf_counter()
                scored = run(partitions)
                walls[name].append(time.perf_counter() - started)
                processors[name].append(processor_time([first, second]) - busy)
                assert scored == partitions * PARTITION, f"{scored} rows scored"
    print(f"load after: {os.getloadavg()[0]:.2f}")
    for name, seconds in walls.items():
        rate = partitions * PARTITION / statistics.median(seconds)
        rounds = ", ".join(f"{wall:.1f}" for wall in seconds)
        busy = statistics.median(processors[name])
        print(f"{name}: {rate:,.0f} rows a second ({rounds} s), {busy:.1f} s of processor time")
    for other in ("one worker", "no Dask"):
        ratios = [a / b for a, b in zip(walls[other], walls["two workers"], strict=True)]
        spread = f"({min(ratios):.2f}-{max(ratios):.2f})"
        print(f"two workers over {other}: {statistics.median(ratios):.2f} {spread}")


if __name__ == "__main__":
    main()
