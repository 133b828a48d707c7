"""The service as programs of others use it: clients, validators, a monitor and a browser."""

import base64
import json
import os
import pathlib
import shutil
import ssl
import subprocess
import urllib.error
import urllib.request

import numpy
import pytest
import tritonclient.http
import yaml
from service import (
    BUILD,
    DESCRIPTION,
    EXAMPLES,
    PROGRAM,
    ROOT,
    SCORED_EXAMPLES,
    fetch,
    free_port,
    node_program,
    program_output,
    running,
    service,
    table,
    wait_for,
)


@pytest.fixture(scope="module", name="models")
def fixture_models(tmp_path_factory):
    """A folder with a model of each example, and one whose texts try to be HTML."""
    folder = tmp_path_factory.mktemp("models")
    for example in (*SCORED_EXAMPLES, "broken"):
        shutil.copy(EXAMPLES / example / "model.pmml", folder / f"{example}.pmml")
    text = (EXAMPLES / "iris/model.pmml").read_text()
    text = text.replace("setosa", "&lt;img src=x onerror=hacked=1&gt;")
    (folder / "hostile.pmml").write_text(text.replace("sepal_length", "&lt;b&gt;long&lt;/b&gt;"))
    return folder


@pytest.fixture(scope="module", name="url")
def fixture_url(models, tmp_path_factory):
    log = tmp_path_factory.mktemp("log") / "service"
    with service(log, "--models", models, "--allow-upload") as url:
        yield url


def run(command, **options):
    """Runs a checker; shows what it says unless it ends well."""
    done = subprocess.run(
        command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options
    )
    assert done.returncode == 0, done.stdout
    return done.stdout


def post(url, body, content_type="application/json"):
    data = body if isinstance(body, bytes) else json.dumps(body).encode()
    request = urllib.request.Request(url, data, {"Content-Type": content_type})
    with urllib.request.urlopen(request, timeout=60) as answer:
        return answer.read().decode(), answer.headers


def test_description_is_linted():
    config = pathlib.Path(__file__).with_name("redocly.yaml")
    run([node_program("redocly"), "lint", "--config", config, "--max-problems", "50", DESCRIPTION])


# ---- The protocol's own client


def tensors(metadata, rows):
    for tensor in metadata["inputs"]:
        cells = [row[tensor["name"]] for row in rows]
        kind = {"FP64": numpy.float64, "INT64": numpy.int64}.get(tensor["datatype"], numpy.object_)
        given = tritonclient.http.InferInput(tensor["name"], [len(cells)], tensor["datatype"])
        given.set_data_from_numpy(numpy.array(cells).astype(kind), binary_data=False)
        yield given


def same(cell, text):
    """Whether an element of a tensor is what the program writes."""
    if isinstance(cell, bytes):
        cell = cell.decode()
    return cell == text if isinstance(cell, str) else float(cell) == float(text)


@pytest.mark.parametrize("example", SCORED_EXAMPLES)
def test_tritonclient_infers_the_scores_of_the_program(url, example):
    model, cases = EXAMPLES / example / "model.pmml", EXAMPLES / example / "cases.csv"
    rows, expected = table(cases.read_text()), table(program_output(model, cases))
    with tritonclient.http.InferenceServerClient(url.removeprefix("http://")) as client:
        assert client.is_server_live() and client.is_server_ready() and client.is_model_ready(example)
        metadata = client.get_model_metadata(example)
        wanted = [
            tritonclient.http.InferRequestedOutput(output["name"], binary_data=False)
            for output in metadata["outputs"]
        ]
        answer = client.infer(example, list(tensors(metadata, rows)), outputs=wanted)
        assert {output["name"] for output in metadata["outputs"]} == set(expected[0])
        for name in expected[0]:
            cells = answer.as_numpy(name)
            assert len(cells) == len(expected)
            assert all(same(cell, row[name]) for cell, row in zip(cells, expected)), name


# ---- Validators of the description


def schemathesis(url, folder, settings, *options):
    (folder / "schemathesis.toml").write_text(settings)
    run(
        [
            BUILD / "python/bin/schemathesis",
            *("run", DESCRIPTION, "--url", url, "--seed", "1", "--no-color"),
            *options,
        ],
        cwd=folder,
    )


# Requests that no description tells apart from good ones, such as a tensor whose shape and data
# differ, are rightly refused: so a refusal of valid data is no violation.
CHECKS = """
[checks]
positive_data_acceptance.enabled = false
[phases.coverage]
unexpected-methods = ["PATCH", "TRACE"]
"""


def test_schemathesis_finds_no_violation_for_a_model(url, tmp_path):
    settings = CHECKS + '[parameters]\n"path.id" = "tumour"\n"path.version" = "1"\n'
    schemathesis(url, tmp_path, settings, "--max-examples", "15", "--exclude-method", "DELETE")
    assert json.loads(fetch(url + "/model/tumour"))["ready"]


# It also deletes what it finds.
def test_schemathesis_finds_no_violation_for_any_path(models, tmp_path):
    folder = shutil.copytree(models, tmp_path / "models")
    with service(tmp_path / "log", "--models", folder, "--allow-upload") as url:
        schemathesis(url, tmp_path, CHECKS, "--max-examples", "8")


def validated(description, url, log, requests):
    """Sends requests through Prism, which answers 500 where one, or its answer, is not as described."""
    port = free_port()
    address = f"http://127.0.0.1:{port}"
    command = ["proxy", description, url, "--port", str(port), "--errors", "--cors", "false"]
    with running([node_program("prism"), *map(str, command)], log) as process:
        wait_for(lambda: "is listening" in log.read_text() or process.poll() is not None)
        try:
            answers = [send(address) for send in requests]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{error.url}: {error.code} {error.read().decode()}") from error
    return answers


def iris_request():
    rows = table((EXAMPLES / "iris/cases.csv").read_text())[:2]
    names = [name for name in rows[0] if name != "species"]
    return [{name: float(row[name]) for name in names} for row in rows]


def inference_request(outputs=None):
    cases = iris_request()
    inputs = [
        {"name": name, "datatype": "FP64", "shape": [2], "data": [case[name] for case in cases]}
        for name in cases[0]
    ]
    inputs[0]["data"][1] = None
    return {"id": "7", "inputs": inputs, **({"outputs": outputs} if outputs else {})}


def test_prism_finds_no_violation_of_the_description(url, tmp_path):
    cases = iris_request()
    csv = (EXAMPLES / "iris/cases.csv").read_bytes()
    answers = validated(
        DESCRIPTION,
        url,
        tmp_path / "prism",
        [lambda at, path=path: fetch(at + path) for path in (
            "/", "/metrics", "/model", "/model/iris", "/model/broken", "/model/iris/pmml",
            "/v2", "/v2/health/live", "/v2/health/ready", "/v2/models/iris", "/v2/models/iris/ready",
            "/v2/models/iris/versions/1", "/v2/models/iris/versions/1/ready",
        )] + [
            lambda at: post(at + "/model/iris", {"id": "a", "arguments": cases[0]})[0],
            lambda at: post(at + "/model/iris", {"arguments": {"sepal_length": "5%"}})[0],
            lambda at: post(at + "/model/iris/batch",
                            {"id": None, "requests": [{"arguments": case} for case in cases]})[0],
            lambda at: post(at + "/model/iris/explain", {"arguments": cases[0]})[0],
            lambda at: post(at + "/model/iris/csv", csv, "text/csv")[0],
            lambda at: post(at + "/v2/models/iris/infer", inference_request())[0],
            lambda at: post(at + "/v2/models/iris/versions/1/infer",
                            inference_request([{"name": "prediction"}]))[0],
        ],
    )  # fmt: skip
    assert answers[-3] == program_output(EXAMPLES / "iris/model.pmml", EXAMPLES / "iris/cases.csv")


def test_prism_finds_the_answers_as_the_protocol_has_them(url, tmp_path):
    beside = ROOT.parent / "shared/openapi/open_inference_rest.yaml"
    path = pathlib.Path(os.environ.get("SVMSCORE_INFERENCE_YAML", beside))
    if not path.is_file():
        pytest.skip(f"SVMSCORE_INFERENCE_YAML names no description of the protocol; none at {path}")
    text = path.read_text().replace("${", "{")
    protocol = yaml.safe_load(text)
    # It has the routes with a version alone, calls the version optional, and knows no null.
    for route, item in list(protocol["paths"].items()):
        short = route.replace("/versions/{MODEL_VERSION}", "")
        if short != route:
            item = json.loads(json.dumps(item))
            item["parameters"] = [p for p in item["parameters"] if p["name"] != "MODEL_VERSION"]
            protocol["paths"][short] = item
    for kind in protocol["components"]["schemas"]["tensor_data"]["items"]["anyOf"]:
        if "type" in kind:
            kind["nullable"] = True
    copy = tmp_path / "protocol.yaml"
    copy.write_text(yaml.safe_dump(protocol))
    paths = ["/v2/", "/v2/health/live", "/v2/health/ready"]
    for model in ("/v2/models/iris", "/v2/models/iris/versions/1"):
        paths += [model, model + "/ready"]
    requests = [lambda at, path=path: fetch(at + path) for path in paths]
    for route in ("/v2/models/iris/infer", "/v2/models/iris/versions/1/infer"):
        requests.append(lambda at, route=route: post(at + route, inference_request())[0])
    answers = validated(copy, url, tmp_path / "prism", requests)
    assert [output["data"] for output in json.loads(answers[-1])["outputs"]][0][1] is None


# ---- Monitoring


def test_prometheus_scrapes_the_metrics(url, tmp_path):
    program = BUILD / "prometheus/usr/bin"
    post(url + "/model/iris", {"arguments": iris_request()[0]})
    metrics = fetch(url + "/metrics")
    said = run([program / "promtool", "check", "metrics"], input=metrics)
    assert said == "", said
    port = free_port()
    settings = tmp_path / "prometheus.yml"
    shown = (ROOT / "docs/service.md").read_text().split("```yaml\n")[1].split("```")[0]
    job = yaml.safe_load(shown)
    job["scrape_configs"][0]["static_configs"][0]["targets"] = [url.removeprefix("http://")]
    job["scrape_configs"][0]["scrape_interval"] = "1s"
    settings.write_text(yaml.safe_dump(job))
    run([program / "promtool", "check", "config", settings])
    command = [
        program / "prometheus",
        f"--config.file={settings}",
        f"--storage.tsdb.path={tmp_path / 'data'}",
        f"--web.listen-address=127.0.0.1:{port}",
    ]

    def asked(query):
        answer = json.loads(fetch(f"http://127.0.0.1:{port}/api/v1/query?query={query}"))
        return answer["data"]["result"]

    with running(list(map(str, command)), tmp_path / "prometheus"):
        rows = wait_for(lambda: asked("svmscore_rows_total{model='iris',status='0'}".replace("'", '%22')))
        assert int(rows[0]["value"][1]) >= 1
        info = asked("svmscore_model_info{model=%22iris%22}")[0]["metric"]
        assert info["sha256"] == json.loads(fetch(url + "/model/iris"))["properties"]["file.checksum"]


# ---- The page


def drive_page(url, models, **further):
    expected = {}
    for name in ("iris", "diabetes"):
        files = EXAMPLES / name / "model.pmml", EXAMPLES / name / "cases.csv"
        expected[name] = program_output(*files)
        if name == "iris":
            expected["table"] = program_output(*files, "--reasons")
    shots = BUILD / "screenshots"
    shots.mkdir(parents=True, exist_ok=True)
    plan = {
        "url": url + "/",
        "models": str(models),
        "examples": str(EXAMPLES),
        "expected": expected,
        "shots": str(shots),
        **further,
    }
    run(
        ["node", "--test", pathlib.Path(__file__).with_name("page_test.js")],
        env={**os.environ, "PLAN": json.dumps(plan), "NODE_PATH": str(BUILD / "node/node_modules")},
    )


def test_browser_drives_the_page(models, url):
    drive_page(url, models)


@pytest.mark.skipif(not os.environ.get("SVMSCORE_WRITE_SCREENSHOT"), reason="not asked for")
def test_browser_takes_the_picture_of_the_documentation(tmp_path):
    picture = ROOT / "docs/service.png"
    models = [f"{name}={EXAMPLES / name / 'model.pmml'}" for name in (*SCORED_EXAMPLES, "broken")]
    with service(tmp_path / "log", *models) as url:
        drive_page(url, tmp_path, picture=str(picture))
    assert picture.stat().st_size < 150_000


# ---- On a server


@pytest.fixture(name="proxy")
def fixture_proxy(url, tmp_path):
    """nginx with the snippet, made to fit this machine; gives its address."""
    port = free_port()
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2",
         "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
         "-keyout", tmp_path / "key", "-out", tmp_path / "certificate"],
        check=True, capture_output=True,
    )  # fmt: skip
    password = subprocess.run(
        ["openssl", "passwd", "-apr1", "secret"], check=True, capture_output=True, text=True
    ).stdout
    (tmp_path / "passwords").write_text("ann:" + password)
    (tmp_path / "passwords").chmod(0o644)
    tmp_path.chmod(0o755)
    snippet = (ROOT / "packaging/service/nginx.conf").read_text()
    for shown, here in (
        ("server 127.0.0.1:8080", "server " + url.removeprefix("http://")),
        ("Host 127.0.0.1:8080", "Host " + url.removeprefix("http://")),
        ("listen 443", f"listen 127.0.0.1:{port}"),
        ("scores.example;", "localhost;"),
        ("/etc/ssl/certs/scores.example.pem", str(tmp_path / "certificate")),
        ("/etc/ssl/private/scores.example.key", str(tmp_path / "key")),
        ("/etc/nginx/svmscore.htpasswd", str(tmp_path / "passwords")),
    ):
        assert snippet.count(shown) >= 1, shown
        snippet = snippet.replace(shown, here)
    scratch = "".join(
        f"{kind}_temp_path {tmp_path}/{kind};\n"
        for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi")
    )
    user = "user root;" if os.geteuid() == 0 else ""
    (tmp_path / "nginx.conf").write_text(
        f"daemon off; pid {tmp_path}/pid; {user}\nevents {{}}\nhttp {{ access_log off;\n{scratch}{snippet}}}\n"
    )
    command = [BUILD / "nginx/usr/sbin/nginx", "-p", tmp_path, "-c", tmp_path / "nginx.conf", "-e", "stderr"]
    with running(list(map(str, command)), tmp_path / "nginx.log") as process:

        def listens():
            assert process.poll() is None, (tmp_path / "nginx.log").read_text()
            try:
                ask(f"https://localhost:{port}", "/model", tmp_path)
            except urllib.error.HTTPError as error:
                return error.code == 401
            return False

        wait_for(listens)
        yield f"https://localhost:{port}"


def ask(at, path, folder, body=None, password=None):
    headers = {"Content-Type": "application/json"}
    if password:
        headers["Authorization"] = "Basic " + base64.b64encode(password.encode()).decode()
    request = urllib.request.Request(at + path, body, headers)
    context = ssl.create_default_context(cafile=folder / "certificate")
    with urllib.request.urlopen(request, timeout=20, context=context) as answer:
        return answer.read().decode(), answer.headers


def test_nginx_passes_on_what_the_service_answers(url, proxy, tmp_path):
    body = json.dumps({"arguments": iris_request()[0]}).encode()
    direct, headers = post(url + "/model/iris", body)
    answer, proxied = ask(proxy, "/model/iris", tmp_path, body, "ann:secret")
    assert answer == direct
    assert proxied["X-Model-SHA256"] == headers["X-Model-SHA256"]
    with pytest.raises(urllib.error.HTTPError, match="401"):
        ask(proxy, "/model/iris", tmp_path, body, "ann:wrong")
    for path in ("/metrics", "/metrics/"):
        with pytest.raises(urllib.error.HTTPError, match="403"):
            ask(proxy, path, tmp_path, password="ann:secret")


def test_systemd_takes_the_unit_as_secure(tmp_path):
    text = (ROOT / "packaging/service/svmscore-serve.service").read_text()
    unit = tmp_path / "svmscore-serve.service"
    unit.write_text(text.replace("/usr/bin/svmscore", PROGRAM).replace("man:svmscore(1) ", ""))
    said = run(["systemd-analyze", "verify", "--man=no", unit])
    assert "svmscore" not in said, said
    run(["systemd-analyze", "security", "--offline=true", "--threshold=20", unit])
