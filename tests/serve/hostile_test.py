"""What clients send that mean ill, or do not know better.

Usage: hostile_test.py PROGRAM EXAMPLES
"""
import contextlib
import email.utils
import gzip
import json
import os
import resource
import select
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from service import Service, exchange

PROGRAM, EXAMPLES = sys.argv[1], Path(sys.argv[2])
SLOW = int(os.environ.get("SVMSCORE_SLOW_SENDERS", "100"))
CASE = b'{"arguments":{"sepal_length":5.6,"sepal_width":2.8,"petal_length":4.9,"petal_width":2}}'
JSON = {"Content-Type": "application/json"}
CSV = {"Content-Type": "text/csv"}
PATH = "/model/model"
INFER = "/v2/models/model/infer"


def post(body, head=b"", path=PATH, length=None):
    length = len(body) if length is None else length
    return (b"POST %s HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n%s"
            b"Content-Length: %d\r\n\r\n%s" % (path.encode(), head, length, body))


class Hostile(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.service = Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--max-body", 1, "--max-rows", 1000,
                              "--read-seconds", 2, "--idle-seconds", 5)

    @classmethod
    def tearDownClass(cls):
        ended = cls.service.end()
        cls.service.__exit__()
        assert ended == 0, ended

    def tearDown(self):
        # Whatever came before, the next client is served.
        self.assertEqual(200, self.service.ask("POST", PATH, CASE, JSON)[0])

    def raw(self, data, end=False):
        """All that comes back for these bytes until the service closes."""
        with contextlib.closing(self.service.socket(30)) as connection:
            answer = b""
            with contextlib.suppress(ConnectionError):
                connection.sendall(data)
                if end:
                    connection.shutdown(socket.SHUT_WR)
            with contextlib.suppress(ConnectionError):
                while chunk := connection.recv(65536):
                    answer += chunk
            return answer

    def statuses(self, data, end=True):
        answer = self.raw(data, end)
        return [int(part[:3]) for part in answer.split(b"HTTP/1.1 ")[1:]]

    def test_framing(self):
        get = b"GET /v2/health/live HTTP/1.1\r\nHost: localhost\r\n%s\r\n"
        chunked = (b"POST /model/model HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                   b"Transfer-Encoding: chunked\r\n%s\r\n")
        chunks = b"%x\r\n%s\r\n0\r\n\r\n" % (len(CASE), CASE)
        close = b"Connection: close\r\n"
        for name, data, wanted in (
                ("nothing", b"", []),
                ("a line cut short", b"GET / HT", []),
                ("a head cut short", get[:-6], []),
                ("a body cut short", post(CASE, length=len(CASE) + 1), []),
                ("pipelined", get % b"" + post(CASE) + get % close, [200, 200, 200]),
                ("pipelined, a bad one", get % b"" + post(b"[") + b"nonsense\r\n\r\n", [200, 400, 400]),
                ("chunks", chunked % b"" + chunks + get % close, [200, 200]),
                ("a bad chunk size", chunked % b"" + b"xyz\r\n" + CASE, [400]),
                ("a huge chunk size", chunked % b"" + b"ffffffffffffffffff\r\n" + CASE, [400]),
                ("a large chunk", chunked % b"" + b"ffffffff\r\n" + CASE, [413]),
                ("an endless chunk extension", chunked % b"" + b"5;" + 500_000 * b"a", [400]),
                ("endless trailers", chunked % b"" + b"0\r\n" + 100_000 * b"a: b\r\n", [400]),
                ("a chunk without end", chunked % b"" + b"4\r\nnull0\r\n\r\n", [400]),
                ("chunks and a length", chunked % b"Content-Length: 5\r\n" + chunks, [400]),
                ("a length and chunks", post(CASE, b"Transfer-Encoding: chunked\r\n"), [400]),
                ("two lengths", post(CASE, b"Content-Length: 5\r\n"), [400]),
                ("the same length twice", post(CASE, b"Content-Length: %d\r\n" % len(CASE)), [400]),
                ("a list of lengths", get % b"Content-Length: 0, 0\r\n", [400]),
                ("a length below 0", post(CASE, length=-1), [400]),
                ("4 GiB", post(CASE, length=4 << 30), [413]),
                ("2^64", post(CASE, length=1 << 64), [400]),
                ("an unknown coding", get % b"Transfer-Encoding: gzip, chunked\r\n", [400]),
                ("a coding twice", get % b"Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", [400]),
                ("a blank before a colon", get % b"Content-Length : 5\r\n", [400]),
                ("a bare line feed", b"GET / HTTP/1.1\nHost: localhost\n\n", [505]),
                ("a folded coding", chunked.replace(b"Encoding: ", b"Encoding:\r\n ") % b"" + chunks, [400]),
                ("a folded header", get % b"X: a\r\n\tb\r\n", [400]),
                ("two hosts", get % b"Host: localhost\r\n", [400]),
                ("no host", b"GET / HTTP/1.1\r\n\r\n", [400]),
                ("no length", b"POST /model/model HTTP/1.1\r\nHost: localhost\r\n\r\n", [411]),
                ("HTTP/2", b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", [505]),
                ("HTTP/1.0", b"GET /v2 HTTP/1.0\r\n\r\n", [200]),
                ("chunks of HTTP/1.0", (chunked % b"").replace(b"1.1", b"1.0") + chunks, [400]),
                ("TLS", b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + bytes(300), [400]),
                ("a control character", get % b"X: a\x00b\r\n", [400]),
                ("an endless target", b"GET /" + 100_000 * b"a", [414]),
                ("a long target", b"GET /" + 5000 * b"a" + b" HTTP/1.1\r\nHost: localhost\r\n\r\n", [414]),
                ("an endless header", get[:-4] + b"X: " + 100_000 * b"a", [431]),
                ("a million headers", get[:-4] + 1_000_000 * b"a: b\r\n", [431]),
                ("a trailer beyond the parser", chunked % b"" + chunks[:-2] + b"X: %s\r\n\r\n" % (70_000 * b"a"), [431]),
                ("an expectation of HTTP/1.0", post(CASE, b"Expect: 100-continue\r\n").replace(b"1.1", b"1.0", 1), [200]),
                ("an expectation", post(CASE, b"Expect: 100-continue\r\n" + close), [100, 200]),
                ("a refused expectation", post(CASE, b"Expect: 100-continue\r\n", "/nowhere"), [404]),
                ("another expectation", post(CASE, b"Expect: miracles\r\n"), [417])):
            with self.subTest(name):
                self.assertEqual(wanted, self.statuses(data))
        # Where a request is unclear about its end, what follows is not read as another one.
        for unclear in (b"Transfer-Encoding: chunked, gzip", b"Transfer-Encoding: identity", b"X: a\r\n b", b"Host: localhost",
                        b"Content-Length: 0\r\nContent-Length: 0", b"Content-Length:\r\n 0"):
            with self.subTest(unclear):
                self.assertEqual([400], self.statuses(get % (unclear + b"\r\n") + get % close))

    def test_headers_that_end_one_byte_into_a_piece(self):
        """So that the parser never has to wait for the rest of one."""
        with contextlib.closing(self.service.socket(30)) as connection:
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            with contextlib.suppress(ConnectionError):
                connection.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\na")
                for _ in range(100):
                    time.sleep(0.005)
                    connection.sendall(100 * b":\r\na")
            self.assertTrue(connection.recv(1000).startswith(b"HTTP/1.1 431 "))

    def test_what_is_refused(self):
        zeros = gzip.compress(bytes(64 << 20))
        table = gzip.compress(b"sepal_length,sepal_width,petal_length,petal_width\n" + (1 << 20) * b"1,2,3,4\n")
        packed = {**JSON, "Content-Encoding": "gzip"}
        for method, path, body, headers, wanted in (
                ("GET", "/nowhere", None, {}, 404), ("GET", "/model/none", None, {}, 404),
                ("POST", "/model/none", CASE, JSON, 404), ("GET", "/v2/models/model/versions/2", None, {}, 404),
                ("GET", "/model/%2e%2e%2f%2e%2e%2fetc%2fpasswd", None, {}, 404), ("GET", "/../etc/passwd", None, {}, 404),
                ("GET", "/model/model%2", None, {}, 404), ("GET", "/m%6fdel/model", None, {}, 404),
                ("PATCH", PATH, CASE, JSON, 405), ("PUT", "/model", CASE, JSON, 405), ("POST", "/metrics", b"", {}, 405),
                ("PUT", PATH, CASE, {}, 403), ("DELETE", PATH, None, {}, 403), ("TRACE", PATH, None, {}, 405),
                ("POST", PATH, CASE, {"Content-Type": "text/plain"}, 415),
                ("POST", PATH, CASE, {"Content-Type": "application/x-www-form-urlencoded"}, 415),
                ("POST", PATH + "/csv", CASE, JSON, 415), ("POST", PATH, CASE, {**JSON, "Content-Encoding": "br"}, 415),
                ("GET", "/v2", None, {"Host": "evil.example"}, 403), ("GET", "/v2", None, {"Host": "localhost.evil.example"}, 403),
                ("GET", "/v2", None, {"Host": "LocalHost:1"}, 200), ("GET", "/v2", None, {"Host": ""}, 403),
                ("GET", "/v2", None, {"Host": "[::1]evil.example"}, 403), ("GET", "/v2", None, {"Host": "localhost:a@evil.example"}, 403),
                ("POST", PATH, bytes(1 << 21), JSON, 413), ("POST", PATH, zeros, packed, 413),
                ("POST", PATH, gzip.compress(CASE), packed, 200), ("POST", PATH, gzip.compress(CASE)[:-4], packed, 400),
                ("POST", PATH, CASE, packed, 400), ("POST", PATH + "/csv", table, CSV, 413),
                ("POST", PATH + "/batch", b'{"requests":[%s{}]}' % (1000 * b"{},"), JSON, 413),
                ("POST", INFER, CASE, {**JSON, "Inference-Header-Content-Length": "5"}, 400)):
            with self.subTest(f"{method} {path[:40]} {headers}"):
                status, answered, text = self.service.ask(method, path, body, headers)
                self.assertEqual(wanted, status, text)
                self.assertRegex(answered["X-Request-Id"], "^[0-9a-f]{16}$")
                self.assertEqual("nosniff", answered["X-Content-Type-Options"])
                self.assertIsNone(answered["Access-Control-Allow-Origin"])
                self.assertIn("sandbox", answered["Content-Security-Policy"])
                named = ("model/model" in path or "models/model" in path) and status not in (401, 403, 404)
                self.assertEqual(named, "X-Model-SHA256" in answered)
                if status >= 400:
                    member = "error" if path.startswith("/v2") else "message"
                    self.assertTrue(json.loads(text)[member])
                if status == 405:
                    self.assertIn("OPTIONS", answered["Allow"])

    def test_bodies_that_are_not_json(self):
        deep = 100_000
        for body in (b"", b" ", b"{", b"[]", b"null", b"1", b'"x"', b"{}x", b"{'a':1}", b'{"a":1,}', b"\xef\xbb\xbf{}",
                     b'{"arguments":{"a":1,"a":2}}', b'{"arguments":{},"arguments":{}}', b'{"arguments":[]}',
                     b'{"arguments":{"sepal_length":1,"sepal\\u005flength":2}}', b'{"arguments":{"sepal_length":1,"sepal_length":2}}',
                     b'{"arguments":{"sepal_length":01}}', b'{"arguments":{"sepal_length":1.}}', b'{"arguments":{"sepal_length" 1}}',
                     b'{"arguments":{"sepal_length":1 "sepal_width":1}}', b'{"arguments":{"sepal_length":1,,"sepal_width":1}}',
                     b'{"arguments":{,"sepal_length":1}}', b'{"arguments":{"sepal_length":1,}}', b'{"arguments":{"x":{"a":1,"a":2}}}',
                     b'{"arguments":{"a":NaN}}', b'{"arguments":{"a":Infinity}}', b'{"arguments":{"a":-Infinity}}',
                     b'{"arguments":{"a":01}}', b'{"arguments":{"a":1.}}', b'{"arguments":{"a":.5}}',
                     b'{"arguments":{"a":+1}}', b'{"arguments":{"a":0x10}}', b'{"arguments":{"a":1e}}',
                     b'{"arguments":{"a":"\\ud800"}}', b'{"arguments":{"a":"\\udc00\\ud800"}}', b'{"arguments":{"a":"\\u12"}}',
                     b'{"arguments":{"a":"\xff"}}', b'{"arguments":{"a":"\xc0\x80"}}', b'{"arguments":{"a":"\xed\xa0\x80"}}',
                     b'{"arguments":{"a":"\x01"}}', b'{"arguments":{"a":"\\x"}}', b'{"arguments":{"a":tru}}',
                     b'{"arguments":' + deep * b"[" + deep * b"]" + b"}", b'{"x":' + deep * b'{"a":', b'{"id":{},"arguments":{}}'):
            for path in (PATH, PATH + "/batch", PATH + "/explain", INFER):
                with self.subTest(f"{path} {body[:60]}"):
                    status, _, text = self.service.ask("POST", path, body, JSON)
                    self.assertEqual(400, status, text)

    def test_bad_cells_fail_alone(self):
        good = json.loads(CASE)["arguments"]
        for value, status, reason in (
                ([1], 90027, "array or object"), ({"a": 1}, 90027, "array or object"), ("x", 90027, "not a number"),
                (True, 0, ""), (None, 90029, "sepal_width"), ("", 90029, "sepal_width"), ("NA", 90029, "sepal_width"),
                ("2.8", 0, ""), (" 2.8 ", 0, ""), ("\ud83d\ude00", 90027, "not a number"), ("1e999", 90027, "")):
            requests = [{"id": "a", "arguments": good},
                        {"id": "b", "arguments": {**good, "sepal_width": value, "more": [{}]}},
                        {"id": "c", "arguments": good}]
            code, answer = self.service.json("POST", PATH + "/batch", {"requests": requests})
            self.assertEqual(200, code)
            results = [one["results"] for one in answer["responses"]]
            self.assertEqual([0, status, 0], [one["status"] for one in results], value)
            self.assertEqual(results[0], results[2])
            self.assertIn(reason, results[1].get("reason", ""))
            self.assertEqual(status == 0, results[1]["prediction"] is not None)
        answer = json.loads(self.service.ask("POST", PATH + "/batch", b'{"requests":[5,{"id":"x"},{"arguments":3},'
                                             b'{"arguments":{"sepal_length":1e999}},{"id":[],"arguments":{}},'
                                             b'{"arguments":{"sepal_length":1,"sepal_length":1}},%s,{"id":5.0,%s]}'
                                             % (CASE, CASE[1:]), JSON)[2])
        self.assertEqual(6 * [90027] + 2 * [0], [one["results"]["status"] for one in answer["responses"]])
        self.assertIn("given twice", answer["responses"][5]["results"]["reason"])
        self.assertEqual([None, "5.0"], [one["id"] for one in answer["responses"][-2:]])

    def test_bad_tensors(self):
        column = {"name": "sepal_length", "datatype": "FP64", "shape": [2], "data": [1, 2]}
        for inputs, wanted in (
                ([column], 200), ([{**column, "shape": [2, 1], "data": [[1], [2]]}], 200), ([{**column, "shape": [3]}], 400),
                ([{**column, "shape": [1, 2]}], 400), ([{**column, "shape": []}], 400), ([{**column, "shape": [-1]}], 400),
                ([{**column, "shape": [2.5]}], 400), ([{**column, "shape": [1 << 62]}], 400), ([{**column, "datatype": "FP16"}], 400),
                ([column, column], 400), ([column, {**column, "name": "x", "shape": [1], "data": [1]}], 400), ([], 400),
                ([{"name": "sepal_length"}], 400), ([{**column, "data": "x"}], 400), ([{**column, "data": [1, [[2]]]}], 400),
                (5, 400), ([5], 400), ([{**column, "shape": [1001], "data": 1001 * [0]}], 413)):
            with self.subTest(str(inputs)[:80]):
                self.assertEqual(wanted, self.service.json("POST", INFER, {"inputs": inputs})[0])
        for datatype, taken, refused in (
                ("FP64", (1, 1.5, 10**30, None), (True, "1.5")), ("FP32", (1, 1.5, 10**30), (False,)),
                ("INT64", (2**63 - 1, -2**63, 5.0, None), (2**63, 5.5, 1e300, True, "5")),
                ("INT32", (2**31 - 1, -2**31, 7.0), (2**31, 5.6, 1e30)),
                ("BOOL", (True, 0, 1, None), (7, 1.0, "true")), ("BYTES", ("x", "5", None), (5, True))):
            for value, wanted in [(value, 200) for value in taken] + [(value, 400) for value in refused]:
                tensor = {**column, "datatype": datatype, "data": [None, value]}
                status, answer = self.service.json("POST", INFER, {"inputs": [tensor]})
                self.assertEqual(wanted, status, (datatype, value))
                if status == 400:
                    self.assertEqual(f"input sepal_length: element 2 is no value of the data type {datatype}", answer["error"])
        # A number beyond single precision is no number, as one beyond double precision.
        names = ("sepal_length", "sepal_width", "petal_length", "petal_width")
        for datatype, large in (("FP32", "1e39"), ("FP32", "-1e39"), ("FP32", "1e999"), ("FP64", "1e999")):
            tensors = [{**column, "name": name, "datatype": datatype, "data": [1, 0]} for name in names]
            text = json.dumps({"inputs": tensors, "outputs": [{"name": "status"}]}).replace("[1, 0]", f"[1, {large}]")
            self.assertIn(b"[0,90027]", self.service.ask("POST", INFER, text, JSON)[2], (datatype, large))
        body = {"inputs": [{**column, "data": [None, 5]}], "outputs": [{"name": "status"}, {"name": "reason"}]}
        status, answer = self.service.json("POST", INFER, body)
        self.assertEqual((200, ["status", "reason"]), (status, [one["name"] for one in answer["outputs"]]))
        self.assertEqual([90029, 90029], answer["outputs"][0]["data"])
        self.assertEqual(400, self.service.json("POST", INFER, {**body, "outputs": [{"name": "x"}]})[0])
        self.assertEqual(400, self.service.json("POST", INFER, {**body, "outputs": 2 * [{"name": "status"}]})[0])
        nan = b'{"inputs":[{"name":"sepal_length","datatype":"FP64","shape":[1],"data":[NaN]}]}'
        self.assertEqual(200, self.service.ask("POST", INFER, nan, JSON)[0])

    def test_bad_tables(self):
        path = PATH + "/csv"
        head = b"sepal_length,sepal_width,petal_length,petal_width\n"
        for body, query, wanted in (
                (b"", "", 400), (b"a,b\n1,2\n", "", 400), (head + b"1,2,3\n", "", 400), (head + b'1,2,"3,4\n', "", 400),
                (head + b"1,2,3,4\0\n", "", 400), (b"\x7fELF" + bytes(100), "", 400), (head + 1001 * b"1,2,3,4\n", "", 413),
                (head, "", 200), (head + b"x,,NA,4\n", "", 200), (head.replace(b",", b";") + b"1,5;2;3;4\n", "?delimiter=%3B&decimalComma=true", 200),
                (head, "?delimiter=ab", 400), (head, "?quoteChar='", 400),
                (head.replace(b",", b";") + b"1;2;3;4\n", "?delimiterChar=%3B&quoteChar=%22", 200), (head, "?reasons=x", 400), (head + b"-,2,3,4\n", "?reasons=true&missingToken=-", 200),
                (gzip.compress(head + b"1,2,3,4\n"), "", 200), (gzip.compress(gzip.compress(head)), "", 400),
                (gzip.compress(head)[:-4], "", 400), (gzip.compress((4 << 20) * b"\n"), "", 413)):
            with self.subTest(f"{body[:60]}{query}"):
                self.assertEqual(wanted, self.service.ask("POST", path + query, body, CSV)[0])

    def test_long_answers(self):
        rows = 20000
        batch = b'{"requests":[%s{}]}' % (rows * b"{},")
        table = b"sepal_length,sepal_width,petal_length,petal_width\n" + rows * b"1,2,3,4\n"
        tensor = {"name": "x", "datatype": "FP64", "shape": [rows], "data": rows * [1]}
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--max-answer", 1,
                     "--limit", "cell-length=20") as service:
            for path, body, headers in ((PATH + "/batch", batch, JSON), (PATH + "/csv", table, CSV),
                                        (INFER, json.dumps({"inputs": [tensor]}), JSON)):
                status, _, text = service.ask("POST", path, body, headers)
                self.assertEqual(413, status)
                self.assertIn(b"fewer rows", text)
            status, _, text = service.ask("POST", PATH + "/csv", table[:50] + b"1,2,3,%s\n" % (21 * b"4"), CSV)
            self.assertEqual((400, True), (status, b"cell-length" in text), text)
            few = json.dumps({"inputs": [tensor], "outputs": [{"name": "status"}]})
            self.assertEqual(200, service.ask("POST", INFER, few, JSON)[0])

    def test_slow_senders(self):
        """They are cut off in the end, and others do not wait for that."""
        slow = [self.service.socket() for _ in range(SLOW)]
        for number, connection in enumerate(slow):
            connection.sendall((b"GET / HTTP/1.1\r\nX: ", post(CASE)[:-20], post(CASE, length=1 << 19)[:-50])[number % 3])
        with contextlib.closing(self.service.connect()) as connection:
            for _ in range(200):
                self.assertEqual(200, exchange(connection, "POST", PATH, CASE, JSON)[0])
        for connection in slow:
            with contextlib.suppress(ConnectionError):
                while connection.recv(4096):
                    pass
            connection.close()

    def test_those_who_keep_memory(self):
        """Stalled senders of bodies and readers of answers give way, and small requests never wait for them."""
        batch = PATH + "/batch"
        large = b'{"requests":[%s%s]}' % (CASE, 900_000 * b" ")
        wide = b'{"requests":[%s{}]}' % (40_000 * b"{},")
        for sent, wanted, cut in ((post(large, path=batch)[:-50], large, False), (post(wide, path=batch), wide, True)):
            with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--max-body", 1, "--max-upload", 1, "--max-answer", 10,
                         "--log", "events") as service, contextlib.ExitStack() as stack:
                for _ in range(6):
                    stalled = stack.enter_context(socket.socket())
                    stalled.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
                    stalled.connect(("127.0.0.1", service.port))
                    stalled.sendall(sent)
                for _ in range(20):
                    self.assertEqual(200, service.ask("POST", PATH, CASE, JSON)[0])
                time.sleep(1.5)
                for _ in range(3):
                    service.until(lambda: service.ask("POST", batch, wanted, JSON)[0] == 200)
                cuts = [event["message"] for event in service.events() if event["event"] == "cut"]
                self.assertEqual(cut, bool(cuts))
                for message in cuts:
                    self.assertRegex(message, r"^the client took \d+ of the 8\d{6} bytes of answer [0-9a-f]{16}$")

    def test_messages_say_what_to_do(self):
        semicolons = (EXAMPLES / "iris/cases.csv").read_bytes().replace(b",", b";")
        changing = {"Content-Type": "application/xml", "Authorization": "Bearer wrong"}
        folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "token").write_text("right")
        service = self.enterContext(Service(
            PROGRAM, EXAMPLES / "iris" / "model.pmml", "--models", folder, "--max-body", 1, "--allow-upload",
            "--upload-token-file", folder / "token"))
        for method, path, body, headers, told in (
                ("GET", "/models", None, {}, "GET /model lists the models"),
                ("PUT", PATH + "/csv", b"", CSV, "it knows POST, OPTIONS"),
                ("POST", PATH + "/csv", semicolons, CSV, "give the parameter delimiter ';'"),
                ("POST", PATH, bytes(1 << 21), JSON, "more than 1048576 bytes (--max-body)"),
                ("PUT", "/model/new", b"", changing, "Authorization: Bearer TOKEN")):
            with self.subTest(path):
                self.assertIn(told, json.loads(service.ask(method, path, body, headers)[2])["message"])

    def test_readers_who_take_just_enough(self):
        """Who takes a little all the time does not keep the memory of large answers for long."""
        wide = b'{"requests":[%s{}]}' % (40_000 * b"{},")
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--max-body", 1, "--max-upload", 1, "--max-answer", 10) as service, \
                contextlib.ExitStack() as stack:
            slow = []
            for _ in range(2):
                slow.append(stack.enter_context(contextlib.closing(socket.socket())))
                slow[-1].setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
                slow[-1].connect(("127.0.0.1", service.port))
                slow[-1].sendall(post(wide, path=PATH + "/batch"))
            taken = time.monotonic()

            def asked():
                nonlocal taken
                # Some 40 KiB a second at most, with which the whole would take minutes.
                if time.monotonic() - taken > 0.5:
                    taken = time.monotonic()
                    for connection in slow:
                        for _ in range(5):
                            with contextlib.suppress(ConnectionError):
                                connection.recv(4096)
                return service.ask("POST", PATH + "/batch", wide, JSON)[0] == 200
            service.until(asked)

    # The sanitizers keep what is freed.
    @unittest.skipIf("SVMSCORE_SWAPS" in os.environ, "sanitized")
    def test_a_connection_that_had_a_body_costs_little(self):
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml") as service, contextlib.ExitStack() as stack:
            def kilobytes():
                return int(Path(f"/proc/{service.process.pid}/status").read_text().split("VmRSS:")[1].split()[0])
            before = kilobytes()
            for _ in range(300):
                connection = stack.enter_context(contextlib.closing(service.socket()))
                connection.sendall(post(CASE + 60_000 * b" "))
                self.assertTrue(connection.recv(4096).startswith(b"HTTP/1.1 200 "))
            self.assertLess(kilobytes() - before, 300 * 30)

    def test_origins(self):
        self.assertEqual(204, self.service.ask("OPTIONS", PATH, None, {"Origin": "https://a.example",
                                                                      "Access-Control-Request-Method": "POST"})[0])
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--allow-origin", "https://a.example",
                     "--allow-host", "Score.example") as service:
            for origin, allowed in (("https://a.example", "https://a.example"), ("https://b.example", None), ("null", None)):
                for method in ("OPTIONS", "POST", "HEAD"):
                    headers = {**JSON, "Origin": origin, "Host": "score.example:8", "Access-Control-Request-Method": "POST"}
                    status, answered, _ = service.ask(method, PATH, CASE if method == "POST" else None, headers)
                    self.assertLess(status, 300)
                    self.assertEqual(allowed, answered["Access-Control-Allow-Origin"])
                    self.assertEqual(bool(allowed) and method == "OPTIONS", "Access-Control-Allow-Methods" in answered)

    def test_odd_origins_and_hosts_are_refused(self):
        for option, values in (("--allow-origin", ("*", "null", "https://a.example/", "a.example", "https://", "https://*.example")),
                               ("--allow-host", ("a.example:80", "*", "http://a.example", "::1"))):
            for value in values:
                ended = subprocess.run([PROGRAM, "serve", "--models", EXAMPLES, "--listen", "127.0.0.1:0", f"{option}={value}"],
                                       check=False, timeout=60, capture_output=True, text=True)
                self.assertNotEqual(0, ended.returncode)
                self.assertRegex(ended.stderr, option + ": .* is no ")

    def test_options_that_cannot_work_are_refused(self):
        listen = f"127.0.0.1:{self.service.port}"
        for arguments, told in (
                (("--models", EXAMPLES, "--listen", listen), "Address already in use; name another port, or 0"),
                (("--models", EXAMPLES, "--allow-upload", "--upload-token-file", "nowhere"), "cannot read nowhere: No such file"),
                (("--models", EXAMPLES, "--upload-token-file", __file__), "needs --allow-upload"),
                (("--allow-upload", EXAMPLES / "iris" / "model.pmml"), "needs --models")):
            ended = subprocess.run([PROGRAM, "serve", *arguments], check=False, timeout=60, capture_output=True, text=True)
            self.assertEqual(2, ended.returncode)
            self.assertIn(told, ended.stderr)

    def test_head_is_get_without_a_body(self):
        for path in ("/model", PATH, "/metrics", "/v2", PATH + "/pmml"):
            get, head = (self.service.ask(method, path) for method in ("GET", "HEAD"))
            self.assertEqual((get[0], get[1]["Content-Type"], b""), (head[0], head[1]["Content-Type"], head[2]))

    def test_documents_are_for_storing(self):
        _, headers, _ = self.service.ask("GET", PATH + "/pmml")
        self.assertEqual('attachment; filename="model.pmml"', headers["Content-Disposition"])
        self.assertEqual("default-src 'none'; sandbox; frame-ancestors 'none'", headers["Content-Security-Policy"])
        policies = self.service.ask("GET", "/")[1].get_all("Content-Security-Policy")
        self.assertEqual([True], ["script-src" in policy for policy in policies])

    def test_every_answer_has_its_date(self):
        told = self.service.ask("GET", "/model")[1]["Date"]
        date = email.utils.parsedate_to_datetime(told)
        self.assertEqual(email.utils.format_datetime(date, usegmt=True), told)
        self.assertLess(abs(date.timestamp() - time.time()), 7200)

    def test_every_answer_has_an_id(self):
        for data, status in ((b"nonsense\r\n\r\n", b"400"), (b"GET / HTTP/1.1\r\nX: ", b"408")):
            answer = self.raw(data)
            self.assertRegex(answer, b"HTTP/1.1 " + status)
            self.assertRegex(answer, b"X-Request-Id: [0-9a-f]{16}\r\n")

    def test_too_many_connections(self):
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml", "--max-connections", 8) as service:
            held = [service.connect() for _ in range(8)]
            for connection in held:
                self.assertEqual(200, exchange(connection, "GET", "/v2")[0])
            status, headers, _ = service.ask("GET", "/v2")
            self.assertEqual((503, "1"), (status, headers["Retry-After"]))
            self.assertTrue(headers["X-Request-Id"])
            time.sleep(1.2)  # one that waits so long makes room
            self.assertEqual(200, service.ask("GET", "/v2")[0])
            for connection in held:
                connection.close()

    # The sanitizers need descriptors of their own, and report what is not when they get none.
    @unittest.skipIf("SVMSCORE_SWAPS" in os.environ, "sanitized")
    def test_no_descriptors(self):
        with Service(PROGRAM, EXAMPLES / "iris" / "model.pmml") as service, contextlib.ExitStack() as stack:
            resource.prlimit(service.process.pid, resource.RLIMIT_NOFILE, (40, 40))
            clients = [stack.enter_context(contextlib.closing(service.socket())) for _ in range(60)]
            # The first without a descriptor is told so; one that waits for a second makes room for later ones.
            told = b""
            while not told:
                readable = select.select(clients, [], [], 60)[0]
                self.assertTrue(readable)
                told = readable[0].recv(65536)
                clients.remove(readable[0])
            self.assertRegex(told, b"^HTTP/1.1 503 (?s:.*)\r\nRetry-After: 1\r\n")

            def asked():
                with contextlib.suppress(ConnectionError):
                    return service.ask("GET", "/v2")[0] == 200
            service.until(asked)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
