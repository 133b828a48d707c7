"""Models come, change and go while they are scored with; uploads survive whatever ends the service.

Usage: models_test.py PROGRAM EXAMPLES
"""
import contextlib
import gzip
import http.client
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

from service import Service, exchange

PROGRAM, EXAMPLES = sys.argv[1], Path(sys.argv[2])
IRIS = (EXAMPLES / "iris" / "model.pmml").read_bytes()
# The same model with the names of two categories exchanged: other scores for the same cases.
OTHER = IRIS.replace(b"virginica", b"VIRGINICA")
CASE = b'{"arguments":{"sepal_length":5.6,"sepal_width":2.8,"petal_length":4.9,"petal_width":2}}'
JSON = {"Content-Type": "application/json"}
XML = {"Content-Type": "application/xml"}
SWAPS = int(os.environ.get("SVMSCORE_SWAPS", "200"))
# Records that the model does not confirm.
WRONG = IRIS.replace(b"</SupportVectorMachineModel>", b"""
<ModelVerification recordCount="1" fieldCount="5"><VerificationFields>
<VerificationField field="sepal_length" column="a"/><VerificationField field="sepal_width" column="b"/>
<VerificationField field="petal_length" column="c"/><VerificationField field="petal_width" column="d"/>
<VerificationField field="species" column="e"/></VerificationFields><InlineTable>
<row><a>5.6</a><b>2.8</b><c>4.9</c><d>2</d><e>setosa</e></row></InlineTable></ModelVerification>
</SupportVectorMachineModel>""")


def put(folder, name, document):
    """As careful writers do it."""
    hidden = folder / ".new"
    hidden.write_bytes(document)
    hidden.rename(folder / name)


class Models(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)

    def serve(self, *arguments):
        return Service(PROGRAM, "--models", self.folder, *arguments)

    def state(self, service, model):
        status, answer = service.json("GET", f"/model/{model}")
        return None if status == 404 else answer

    def checksum(self, service, model):
        state = self.state(service, model)
        return (state or {}).get("properties", {}).get("file.checksum")

    def test_files_come_change_and_go(self):
        put(self.folder, "first.pmml", IRIS)
        (self.folder / "note.txt").write_text("no model")
        with self.serve() as service:
            self.assertEqual(["first"], [m["id"] for m in service.json("GET", "/model")[1]["models"]])
            earlier = self.checksum(service, "first")
            put(self.folder, "second.xml", OTHER)  # by renaming
            (self.folder / "third.pmml").write_bytes(IRIS)  # in place
            service.until(lambda: self.state(service, "second") and self.state(service, "third"))
            put(self.folder, "first.pmml", OTHER)
            service.until(lambda: self.checksum(service, "first") != earlier)
            for document, words in ((IRIS[:-40], "XML"), (b"", "XML"), (WRONG, "verification records")):
                put(self.folder, "first.pmml", document)
                service.until(lambda w=words: w in str(self.state(service, "first")["problem"]))
                # The one that works goes on.
                status, headers, text = service.ask("POST", "/model/first", CASE, JSON)
                self.assertEqual((200, self.checksum(service, "second")), (status, headers["X-Model-SHA256"]))
                self.assertIn(b"VIRGINICA", text)
            put(self.folder, "broken.pmml", b"<x/>")
            service.until(lambda: self.state(service, "broken"))
            self.assertFalse(self.state(service, "broken")["ready"])
            self.assertEqual(503, service.ask("POST", "/model/broken", CASE, JSON)[0])
            put(self.folder, "first.pmml", IRIS)
            service.until(lambda: self.state(service, "first")["problem"] is None)
            for name in ("first.pmml", "second.xml", "broken.pmml"):
                (self.folder / name).unlink()
            service.until(lambda: ["third"] == [m["id"] for m in service.json("GET", "/model")[1]["models"]])
            self.assertEqual(0, service.end())
            told = [(event["event"], event.get("model")) for event in service.events() if "event" in event]
            for event in (("refused", "first"), ("refused", "broken"), ("swapped", "first"),
                          ("loaded", "second"), ("dropped", "second")):
                self.assertIn(event, told)

    def test_uploads(self):
        token = self.folder.parent / (self.folder.name + ".token")
        token.write_text("open sesame\n")
        self.addCleanup(token.unlink)
        key = {**XML, "Authorization": "Bearer open sesame"}
        with self.serve("--allow-upload", "--upload-token-file", token) as service:
            for headers, wanted in ((XML, 401), ({**XML, "Authorization": "Bearer open Sesame"}, 401),
                                    ({**XML, "Authorization": "Bearer open sesame2"}, 401),
                                    ({**key, "Content-Type": "text/csv"}, 415), (key, 201), (key, 200)):
                self.assertEqual(wanted, service.ask("PUT", "/model/a.b-C_1", IRIS, headers)[0])
            packed = gzip.compress(OTHER)
            for document, more, kept in ((IRIS, {}, IRIS), (gzip.compress(IRIS), {"Content-Encoding": "gzip"}, IRIS),
                                         (packed, {}, packed), (iter([IRIS[:100], IRIS[100:]]), {}, IRIS)):
                self.assertEqual(200, service.ask("PUT", "/model/a.b-C_1", document, {**key, **more})[0])
                self.assertEqual(kept, service.ask("GET", "/model/a.b-C_1/pmml")[2])
            for document, words in ((b"<PMML", b"XML"), (WRONG, b"verification records")):
                status, _, text = service.ask("PUT", "/model/a.b-C_1", document, key)
                self.assertEqual((400, True), (status, words in text), text)
                self.assertIn("refused", self.state(service, "a.b-C_1")["problem"])
                self.assertEqual(400, service.ask("PUT", "/model/new", document, key)[0])
                self.assertIsNone(self.state(service, "new"))
            broken = {**key, "Content-Encoding": "gzip"}
            self.assertEqual(400, service.ask("PUT", "/model/new", packed[:-4], broken)[0])
            self.assertEqual(413, service.ask("PUT", "/model/new", gzip.compress(bytes(129 << 20)), broken)[0])
            for path in ("/model/..%2fx", "/model/%2e%2e", "/model/.hidden", "/model/a%00b", "/model/a%2500",
                         "/model/" + 129 * "a", "/model/../../x", "/model/a/../b", "/model/%zz"):
                self.assertEqual(404, service.ask("PUT", path, IRIS, key)[0], path)
            self.assertEqual(["a.b-C_1.pmml"], os.listdir(self.folder))
            self.assertEqual((200, {}), service.json("DELETE", "/model/a.b-C_1", headers=key))
            self.assertEqual(404, service.ask("DELETE", "/model/a.b-C_1", None, key)[0])
            self.assertEqual([], os.listdir(self.folder))
        with self.serve() as service:
            self.assertEqual(403, service.ask("PUT", "/model/a", IRIS, XML)[0])
            self.assertEqual(403, service.ask("DELETE", "/model/a")[0])

    def test_clients_of_openscoring(self):
        """They refuse answers that are otherwise."""
        with self.serve("--allow-upload") as service:
            for wanted in (201, 200):
                status, headers, text = service.ask("PUT", "/openscoring/model/a", IRIS, XML)
                self.assertEqual((wanted, ["id", "miningFunction", "properties", "schema", "summary"]),
                                 (status, sorted(json.loads(text))))
                self.assertRegex(headers["X-Application"], "^Openscoring/2[.]0")
            table = b"ID\tsepal_length\tsepal_width\tpetal_length\tpetal_width\nx\t5.6\t2.8\t4.9\t2\n"
            path = "/openscoring/model/a/csv?delimiterChar=%09&quoteChar=%22"
            scored = service.ask("POST", path, table, {"Content-Type": "text/plain"})[2].decode()
            self.assertEqual([("ID", "prediction", "status"), ("x", "virginica", "0")],
                             [(*line.split("\t")[:2], line.split("\t")[6]) for line in scored.splitlines()])
            self.assertRegex(service.ask("GET", "/openscoring/model/b")[1]["X-Application"], "^Openscoring/2[.]0")
            self.assertIsNone(service.ask("GET", "/model/a")[1]["X-Application"])

    def test_values_of_inputs_are_all_there_are(self):
        three = (EXAMPLES.parent / "tests/app/data/three.pmml").read_bytes()
        values = b'<Value value="red"/><Value value="blue"/>'
        with self.serve("--allow-upload") as service:
            for document, listed in ((three, ["red", "blue"]), (three.replace(values, b""), [])):
                fields = json.loads(service.ask("PUT", "/model/a", document, XML)[2])["schema"]["inputFields"]
                self.assertEqual([listed], [field["values"] for field in fields if field["id"] == "colour"])

    def problem(self, service, model):
        """As the metrics have it, for alarms."""
        text = service.ask("GET", "/metrics")[2].decode()
        return f'svmscore_model_problem{{model="{model}"}} 1' in text

    def test_files_of_one_id(self):
        for name in ("a.pmml.gz", "a.xml", "b.xml", "fixed.pmml"):
            put(self.folder, name, gzip.compress(IRIS) if name.endswith("gz") else IRIS)
        fixed = self.folder / "fixed.model"
        fixed.write_bytes(OTHER)
        with self.serve("--allow-upload", f"fixed={fixed}") as service:
            self.assertEqual(200, service.ask("POST", "/model/a", CASE, JSON)[0])
            self.assertEqual((200, {}), service.json("DELETE", "/model/a"))
            self.assertEqual(200, service.ask("PUT", "/model/b", OTHER, XML)[0])
            self.assertEqual(["b.pmml", "fixed.model", "fixed.pmml"], sorted(os.listdir(self.folder)))
            time.sleep(1.5)
            self.assertIsNone(self.state(service, "a"))
            self.assertNotIn('model="a"', service.ask("GET", "/metrics")[2].decode())
            self.assertEqual(OTHER, service.ask("GET", "/model/fixed/pmml")[2])
            service.end()
            warned = [event["model"] for event in service.events() if event.get("event") == "warning"]
            self.assertEqual(["a", "fixed"], sorted(warned))

    def test_documents_whose_names_are_no_ids_are_told_of_once(self):
        (self.folder / "notes.txt").write_bytes(IRIS)
        put(self.folder, "my iris.pmml", IRIS)
        with self.serve() as service:
            put(self.folder, "übersicht.xml.gz", gzip.compress(IRIS))
            put(self.folder, "good.pmml", IRIS)
            service.until(lambda: self.state(service, "good"))
            service.end()
            warned = [event["message"] for event in service.events() if event.get("event") == "warning"]
            self.assertEqual(2, len(warned), warned)
            for name, message in zip(("my iris.pmml", "übersicht.xml.gz"), warned):
                self.assertTrue(message.startswith(f"{self.folder / name} is not served: rename it"), message)

    def test_what_changes_scores_is_told_at_loading(self):
        put(self.folder, "broken.pmml", (EXAMPLES / "broken" / "model.pmml").read_bytes())
        put(self.folder, "good.pmml", IRIS)
        with self.serve() as service:
            service.end()
            warned = [event for event in service.events() if event.get("event") == "warning"]
            self.assertEqual(["broken"], [event["model"] for event in warned])
            self.assertIn("first machine-sign: ", warned[0]["message"])

    def test_faults_of_files_are_for_the_log(self):
        put(self.folder, "good.pmml", IRIS)
        (self.folder / "text.pmml").write_text("hunter2: 'secret'")
        (self.folder / "io.pmml").symlink_to("/proc/self/mem")  # cannot be read at its beginning
        closed = self.folder / "closed.pmml"
        closed.write_bytes(IRIS)
        closed.chmod(0)
        with self.serve("--allow-upload") as service:
            for model in ("text", "io"):
                told = service.ask("GET", f"/model/{model}")[2] + service.ask("POST", f"/model/{model}", CASE, JSON)[2]
                self.assertIn(b"the log says", told)
                for word in (b"hunter2", b"secret", str(self.folder).encode(), b"Input/output"):
                    self.assertNotIn(word, told)
                self.assertTrue(self.problem(service, model))
            self.assertEqual(400, service.ask("PUT", "/model/good", b"<x/>", XML)[0])
            self.assertIn("refused", self.state(service, "good")["problem"])
            self.assertFalse(self.problem(service, "good"))  # what a client sends is no reason for an alarm
            time.sleep(1.5)
            closed.chmod(0o600)
            service.until(lambda: self.state(service, "closed")["ready"])
            service.end()
            faults = [event["model"] for event in service.events() if "Input/output" in event.get("message", "")]
            self.assertEqual(["io"], faults)  # tried again and again, and told once

    def test_the_end_does_not_wait_for_uploads(self):
        big = IRIS.replace(b"</Header>", b"</Header>" + b"<Extension/>" * 400_000)
        with self.serve("--allow-upload", "--drain-seconds", 1) as service:
            connections = [service.connect() for _ in range(8)]
            for number, connection in enumerate(connections):
                connection.request("PUT", f"/model/m{number}", big, XML)
            self.assertEqual(0, service.end())
            for connection in connections:
                connection.close()

    def test_nothing_acknowledged_is_lost(self):
        (self.folder / ".unfinished-abcdef").write_bytes(b"<PMML")
        for times in range(4):
            acknowledged = {}
            with self.serve("--allow-upload") as service:
                def upload(name, service=service, acknowledged=acknowledged):
                    number = 0
                    with contextlib.suppress(OSError, http.client.HTTPException):
                        while True:
                            number += 1
                            document = IRIS.replace(b"<PMML", b"<!-- %d -->\n<PMML" % number)
                            status, headers, _ = service.ask("PUT", f"/model/{name}", document, XML)
                            assert status in (200, 201)
                            acknowledged[name] = (number, document)

                threads = [threading.Thread(target=upload, args=(name,)) for name in "xyz"]
                for thread in threads:
                    thread.start()
                service.until(lambda: len(acknowledged) == 3)
                time.sleep(0.05 * times)
                service.end(signal.SIGKILL)
                for thread in threads:
                    thread.join()
            with self.serve() as service:
                for name, (number, document) in acknowledged.items():
                    kept = service.ask("GET", f"/model/{name}/pmml")[2]
                    # What was under way when the service was killed may be there, too.
                    later = IRIS.replace(b"<PMML", b"<!-- %d -->\n<PMML" % (number + 1))
                    self.assertIn(kept, (document, later))
                self.assertEqual(["x.pmml", "y.pmml", "z.pmml"], sorted(os.listdir(self.folder)))

    def test_every_answer_is_of_one_model(self):
        """Each category's spelling tells which model gave it, and so does the checksum."""
        put(self.folder, "m.pmml", IRIS)
        many = b'{"requests":[' + b",".join([CASE] * 40) + b"]}"
        with self.serve("--allow-upload") as service:
            ends = threading.Event()
            answers, faults = {}, []

            def ask(path, body):
                with contextlib.closing(service.connect()) as connection:
                    while not ends.is_set():
                        status, headers, text = exchange(connection, "POST", path, body, JSON)
                        spellings = {word for word in (b"virginica", b"VIRGINICA") if word in text}
                        if status != 200 or len(spellings) != 1:
                            faults.append((status, text))
                            return
                        answers.setdefault(headers["X-Model-SHA256"], set()).update(spellings)

            def guarded(path, body):
                try:
                    ask(path, body)
                except Exception as error:  # pylint: disable=broad-except
                    faults.append(repr(error))

            clients = [threading.Thread(target=guarded, args=args)
                       for args in [("/model/m", CASE), ("/model/m/batch", many)] * 8]
            for client in clients:
                client.start()
            for number in range(SWAPS):
                document = (OTHER, IRIS)[number % 2]
                self.assertEqual(200, service.ask("PUT", "/model/m", document, XML)[0])
            ends.set()
            for client in clients:
                client.join()
            self.assertEqual([], faults)
            self.assertEqual([[b"VIRGINICA"], [b"virginica"]], sorted(map(list, answers.values())))

    def test_it_answers_while_it_loads(self):
        digits = (EXAMPLES / "digits" / "model.pmml").read_bytes()
        for number in range(300):
            (self.folder / f"{number}.pmml").write_bytes(digits)
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        process = subprocess.Popen([PROGRAM, "serve", "--models", self.folder, "--listen", f"127.0.0.1:{port}"],
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        def status(path):
            with contextlib.closing(http.client.HTTPConnection("127.0.0.1", port, timeout=60)) as connection:
                return exchange(connection, "GET", path)[0]
        end = time.monotonic() + 60
        while True:
            with contextlib.suppress(ConnectionError):
                self.assertEqual(200, status("/v2/health/live"))
                break
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)
        self.assertEqual([503, 503], [status("/v2/health/ready"), status("/model/none")])
        process.terminate()
        self.assertEqual((b"", 0), (process.communicate(timeout=60)[0], process.returncode))

    def test_what_runs_is_finished(self):
        with Service(PROGRAM, EXAMPLES / "digits" / "model.pmml", "--drain-seconds", 30) as service:
            idle = service.connect()
            exchange(idle, "GET", "/v2/health/ready")
            table = (EXAMPLES / "digits" / "cases.csv").read_bytes()
            lines = table.split(b"\n", 1)
            body = lines[0] + b"\n" + lines[1] * max(1, 4_000_000 // len(lines[1]))
            connection = service.connect()
            connection.request("POST", "/model/model/csv", body, {"Content-Type": "text/csv"})
            time.sleep(0.2)
            service.process.send_signal(signal.SIGTERM)
            answer = connection.getresponse()
            self.assertEqual(200, answer.status)
            self.assertEqual(body.count(b"\n"), answer.read().count(b"\n"))
            self.assertEqual(0, service.process.wait(timeout=60))
            with self.assertRaises(OSError):
                service.connect().connect()
            idle.close()
            connection.close()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
