#!/usr/bin/env python3
"""Times the service over the loopback, with wrk: service_times.py SVMSCORE FOLDER [SECONDS]

FOLDER holds what write_files.py wrote. wrk asks from the same machine, and so takes a part of it. Rounds
take turns; prints Markdown with medians of the rounds, and their spread:

- single rows of the iris example over connections that stay open, as many as there is time for;
- how long one takes where connections pause, so that about half as many are asked for, and 12,500 a second;
- rows of workload a in batches of 1,000, beside the program from file to file;
- the slowest of many single rows while a model of 10 MB is swapped, beside the slowest without.
"""
import http.client
import json
import os
import pathlib
import random
import re
import statistics
import subprocess
import sys
import tempfile
import threading
import time

ROUNDS = 5
CONNECTIONS = 32
SOME = 12_500  # rows a second
PAUSE = 5  # milliseconds on average
BATCH = 1000
BATCH_CONNECTIONS = 4
SWAPS = 20
EXAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples"
CASE = {"sepal_length": 5.6, "sepal_width": 2.8, "petal_length": 4.9, "petal_width": 2}

# What wrk counts, as one line.
REPORT = """
done = function(summary, latency)
  local e = summary.errors
  io.write(string.format("REPORT %d %d %d %d %d %d\\n", summary.requests, summary.duration,
    e.connect + e.read + e.write + e.status + e.timeout,
    latency:percentile(50), latency:percentile(99), latency.max))
end
"""


class Service:
    def __init__(self, program, *arguments):
        self.process = subprocess.Popen(
            [program, "serve", "--listen", "127.0.0.1:0", *map(str, arguments)],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        line = self.process.stdout.readline()
        match = re.search(r"http://(127\.0\.0\.1):(\d+)", line)
        if match is None:
            raise SystemExit("the service does not start")
        self.port = int(match.group(2))

    def seconds(self):
        """Of processor time so far."""
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(") ")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


class Asked:
    """A run of wrk: requests a second, and milliseconds that they took."""

    def __init__(self, service, path, body, content_type, connections, seconds, pause=0):
        with tempfile.TemporaryDirectory() as folder:
            data = pathlib.Path(folder, "body")
            data.write_bytes(body)
            script = pathlib.Path(folder, "script.lua")
            script.write_text(
                f'wrk.method = "POST"\nwrk.headers["Content-Type"] = "{content_type}"\n'
                f'local file = io.open("{data}", "rb")\nwrk.body = file:read("*a")\nfile:close()\n'
                + (f"delay = function() return math.random(0, {2 * pause}) end\n" if pause else "") + REPORT)
            run = subprocess.run(
                ["wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "-s", str(script),
                 f"http://127.0.0.1:{service.port}{path}"],
                stdout=subprocess.PIPE, text=True, check=True)
        requests, duration, errors, half, most, slowest = map(
            int, re.search(r"^REPORT (.*)", run.stdout, re.M).group(1).split())
        if errors > 0 or requests == 0:
            raise SystemExit(f"{errors} of {requests} requests failed:\n{run.stdout}")
        self.connections = connections
        self.rate = requests / (duration / 1e6)
        self.median, self.p99, self.slowest = half / 1e3, most / 1e3, slowest / 1e3


def told(values, digits=0):
    return f"{statistics.median(values):.{digits}f} ({min(values):.{digits}f}-{max(values):.{digits}f})"


def single_rows(program, seconds):
    body = json.dumps({"arguments": CASE}).encode()
    free, half, some = [], [], []
    with Service(program, EXAMPLES / "iris" / "model.pmml") as service:
        path = "/model/model"
        for _ in range(ROUNDS):
            run = Asked(service, path, body, "application/json", CONNECTIONS, seconds)
            free.append(run)
            for runs, rate in ((half, run.rate / 2), (some, SOME)):
                # wrk pauses for whole milliseconds after each answer, here of random numbers, so that
                # connections do not ask all at once.
                connections = max(round(rate * PAUSE / 1e3), 1)
                runs.append(Asked(service, path, body, "application/json", connections, seconds, PAUSE))
    print("| single rows of iris | median of the rounds (least-most) |\n|---|--:|")
    print(f"| a second, {CONNECTIONS} connections that stay open | {told([run.rate for run in free])} |")
    for runs in (half, some):
        print(f"| a second, {runs[-1].connections} connections that pause | {told([run.rate for run in runs])} |")
        print(f"| half of these take at most, ms | {told([run.median for run in runs], 2)} |")
        print(f"| 99 of 100 of these take at most, ms | {told([run.p99 for run in runs], 2)} |", flush=True)


def batches(program, folder, seconds):
    model, table = folder / "a.pmml", folder / "a.csv"
    with open(table, "rb") as source:
        lines = [next(source) for _ in range(BATCH + 1)]
        rows = BATCH + sum(1 for _ in source)
    header, *cases = [line.decode().rstrip().split(",") for line in lines]
    as_json = json.dumps({"requests": [
        {"arguments": {name: float(cell) for name, cell in zip(header, case) if cell}}
        for case in cases]}).encode()
    bodies = {"/model/a/csv": (b"".join(lines), "text/csv"), "/model/a/batch": (as_json, "application/json")}
    rates = {path: [] for path in ("program", *bodies)}
    costs = {path: [] for path in rates}
    with Service(program, model) as service:
        for _ in range(ROUNDS):
            start, before = time.perf_counter(), os.times()
            subprocess.run([program, "score", model, table, "-o", os.devnull], check=True,
                           stderr=subprocess.DEVNULL)
            after = os.times()
            rates["program"].append(rows / (time.perf_counter() - start))
            costs["program"].append(
                (after.children_user + after.children_system - before.children_user
                 - before.children_system) / rows)
            for path, (body, content_type) in bodies.items():
                used = service.seconds()
                run = Asked(service, path, body, content_type, BATCH_CONNECTIONS, seconds)
                rates[path].append(run.rate * BATCH)
                costs[path].append((service.seconds() - used) / (run.rate * BATCH * seconds))
    print("\n| workload a | thousands of rows a second | of the program's | processor's microseconds a row |\n"
          "|---|--:|--:|--:|")
    for path, values in rates.items():
        name = "`svmscore score`, all processors" if path == "program" else f"`{path}`, {BATCH} rows each"
        shares = [100 * mine / its for mine, its in zip(values, rates["program"])]
        print(f"| {name} | {told([value / 1e3 for value in values])} | {told(shares)} % "
              f"| {told([cost * 1e6 for cost in costs[path]], 2)} |", flush=True)


def write_large_model(path, seed):
    """About 10 MB: 8,000 vectors of 64 fields."""
    draw = random.Random(seed)
    fields = [f"x{i}" for i in range(64)]
    with open(path, "w", encoding="ascii") as out:
        out.write('<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>')
        for name in fields + ["y"]:
            out.write(f'<DataField name="{name}" optype="continuous" dataType="double"/>')
        out.write('</DataDictionary><SupportVectorMachineModel functionName="regression"><MiningSchema>')
        for name in fields:
            out.write(f'<MiningField name="{name}"/>')
        out.write('<MiningField name="y" usageType="target"/></MiningSchema><RadialBasisKernelType gamma="0.01"/>'
                  '<VectorDictionary><VectorFields>')
        for name in fields:
            out.write(f'<FieldRef field="{name}"/>')
        out.write("</VectorFields>")
        for vector in range(8000):
            numbers = " ".join(repr(draw.gauss(0, 1)) for _ in fields)
            out.write(f'<VectorInstance id="v{vector}"><Array type="real" n="64">{numbers}</Array></VectorInstance>')
        out.write("</VectorDictionary><SupportVectorMachine><SupportVectors>")
        for vector in range(8000):
            out.write(f'<SupportVector vectorId="v{vector}"/>')
        out.write('</SupportVectors><Coefficients absoluteValue="0">')
        for _ in range(8000):
            out.write(f'<Coefficient value="{draw.gauss(0, 1)!r}"/>')
        out.write("</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>\n")


class Prober(threading.Thread):
    """Asks for one row after the other; the slowest in milliseconds since it was last asked."""

    def __init__(self, port):
        super().__init__(daemon=True)
        self.port, self.slowest, self.ends = port, 0.0, False

    def run(self):
        connection = http.client.HTTPConnection("127.0.0.1", self.port)
        body = json.dumps({"arguments": CASE})
        while not self.ends:
            start = time.perf_counter()
            connection.request("POST", "/model/iris", body, {"Content-Type": "application/json"})
            answer = connection.getresponse()
            answer.read()
            if answer.status != 200:
                raise SystemExit(f"status {answer.status}")
            self.slowest = max(self.slowest, 1e3 * (time.perf_counter() - start))
            time.sleep(0.0005)
        connection.close()

    def take(self):
        slowest, self.slowest = self.slowest, 0.0
        return slowest


def swaps(program):
    with tempfile.TemporaryDirectory() as root:
        models = pathlib.Path(root, "models")
        models.mkdir()
        large = [pathlib.Path(root, f"large{i}") for i in range(2)]
        for seed, path in enumerate(large):
            write_large_model(path, seed)
        (models / "iris.pmml").write_bytes((EXAMPLES / "iris" / "model.pmml").read_bytes())
        (models / "large.pmml").write_bytes(large[0].read_bytes())
        with Service(program, "--models", models) as service:
            connection = http.client.HTTPConnection("127.0.0.1", service.port)

            def served():
                connection.request("GET", "/v2/models/large/ready")
                answer = connection.getresponse()
                answer.read()
                return answer.headers["X-Model-SHA256"]

            prober = Prober(service.port)
            prober.start()
            quiet, swapped, took = [], [], []
            for turn in range(SWAPS):
                (models / ".new").write_bytes(large[(turn + 1) % 2].read_bytes())
                time.sleep(0.2)
                prober.take()
                before, start = served(), time.perf_counter()
                os.rename(models / ".new", models / "large.pmml")
                while served() == before:
                    time.sleep(0.02)
                took.append(time.perf_counter() - start)
                swapped.append(prober.take())
                time.sleep(took[-1])
                quiet.append(prober.take())
            prober.ends = True
            prober.join()
            connection.close()
        size = large[0].stat().st_size / 1e6
    print(f"\n{SWAPS} swaps of a model of {size:.0f} MB, each after {told(took, 2)} s: the slowest of the rows "
          f"asked for meanwhile, one after the other, took {told(swapped, 1)} ms, in as long a time without a "
          f"swap {told(quiet, 1)} ms.")


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    seconds = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    single_rows(program, seconds)
    batches(program, folder, seconds)
    swaps(program)


if __name__ == "__main__":
    main()
