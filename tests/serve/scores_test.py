"""Scores over HTTP are those of the program, digit for digit, by every way in.

Usage: scores_test.py PROGRAM EXAMPLES
"""
import csv
import io
import json
import re
import sys
import tempfile
import unittest
from pathlib import Path

from service import Service, score

PROGRAM, EXAMPLES = sys.argv[1], Path(sys.argv[2])
CASES = sorted(folder for folder in EXAMPLES.iterdir() if (folder / "cases.csv").exists())
# Rows of each example.
MOST = 300
FAULTY = ("", "NA", "x", "1e999", "-0", " 1", "1.0", "true")
NUMBERS = ("-0", "1e999", "1e-5")  # cells of tables that are numbers in JSON, too
NUMBER = r"-?(?:0|[1-9][0-9]*)(?:[.][0-9]+)?(?:e[+-]?[0-9]+)?"


def document(folder):
    return next(iter(sorted(folder.glob("model.pmml*"))))


def table(folder, odd=FAULTY):
    """The header and the first rows, and the same with odd cells."""
    with open(folder / "cases.csv", encoding="utf-8", newline="") as file:
        rows = list(csv.reader(file))[: MOST + 1]
    header, rows = rows[0], rows[1:]
    broken = [list(row) for row in rows[:20]]
    for number, row in enumerate(broken):
        row[number % len(row)] = odd[number % len(odd)]
    return header, rows + broken


def as_csv(header, rows):
    out = io.StringIO()
    csv.writer(out, lineterminator="\n").writerows([header, *rows])
    return out.getvalue().encode()


class Raw(float):
    """A number that keeps its spelling."""

    def __new__(cls, text):
        number = super().__new__(cls, text)
        number.text = text
        return number


def cells(text):
    return json.loads(text, parse_float=Raw, parse_int=Raw)


def plain(value):
    return value.text if isinstance(value, Raw) else "" if value is None else value


class Scores(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.service = Service(PROGRAM, *[f"{folder.name}={document(folder)}" for folder in CASES])

    @classmethod
    def tearDownClass(cls):
        assert cls.service.end() == 0
        cls.service.__exit__()

    def check(self, folder, odd, answers):
        """`answers(header, rows)` gives dictionaries of spellings, one for each row."""
        header, rows = table(folder, odd)
        path = Path(self.id() + ".csv")
        path.write_bytes(as_csv(header, rows))
        expected = list(csv.DictReader(io.StringIO(score(PROGRAM, document(folder), path).decode())))
        path.unlink()
        got = answers(header, rows)
        self.assertEqual(len(expected), len(got))
        for want, row in zip(expected, got):
            reason = row.pop("reason", "")
            self.assertEqual(want, row)
            self.assertEqual(want["status"] != "0", reason != "")

    def each(self, answers):
        self.assertGreater(len(CASES), 3)
        for folder in CASES:
            for numbers in (False, True):
                with self.subTest(folder.name, numbers=numbers):
                    self.check(folder, NUMBERS if numbers else FAULTY,
                               lambda header, rows, name=folder.name, numbers=numbers:
                               answers(name, header, rows, numbers))

    def post(self, path, value, numbers=False):
        """With `numbers`, values whose texts are numbers are sent as numbers."""
        body = json.dumps(value)
        if numbers:
            body = re.sub(f'"({NUMBER})"(?!:)', r"\1", body)
        status, _, text = self.service.ask("POST", path, body, {"Content-Type": "application/json"})
        self.assertEqual(200, status, text)
        return cells(text)

    def test_one_by_one(self):
        def answers(name, header, rows, numbers):
            got = []
            for number, row in enumerate(rows):
                answer = self.post(f"/model/{name}",
                                   {"id": f"row {number}", "arguments": dict(zip(header, row))}, numbers)
                self.assertEqual(f"row {number}", answer["id"])
                got.append({key: plain(value) for key, value in answer["results"].items()})
            return got

        self.each(answers)

    def test_batches(self):
        def answers(name, header, rows, numbers):
            answer = self.post(f"/openscoring/model/{name}/batch", {
                "id": "all",
                "requests": [{"id": str(i), "arguments": dict(zip(header, row))}
                             for i, row in enumerate(rows)]}, numbers)
            self.assertEqual("all", answer["id"])
            self.assertEqual([str(i) for i in range(len(rows))], [one["id"] for one in answer["responses"]])
            return [{key: plain(value) for key, value in one["results"].items()}
                    for one in answer["responses"]]

        self.each(answers)

    def test_tensors(self):
        def answers(name, header, rows, numbers):
            given = [i for i in range(len(header)) if not numbers or all(re.fullmatch(NUMBER, row[i]) for row in rows)]
            answer = self.post(f"/v2/models/{name}/infer", {
                "id": "x",
                "inputs": [{"name": header[i], "datatype": "FP64" if numbers else "BYTES",
                            "shape": [len(rows), 1], "data": [row[i] for row in rows]} for i in given]}, numbers)
            self.assertEqual(("x", name, "1"),
                             (answer["id"], answer["model_name"], answer["model_version"]))
            columns = {}
            for output in answer["outputs"]:
                self.assertEqual([len(rows)], [int(size) for size in output["shape"]])
                columns[output["name"]] = [plain(cell) for cell in output["data"]]
            return [dict(zip(columns, row)) for row in zip(*columns.values())]

        self.each(answers)

    def test_tables(self):
        for folder in CASES:
            with self.subTest(folder.name):
                path = folder / "cases.csv"
                status, headers, text = self.service.ask(
                    "POST", f"/model/{folder.name}/csv", path.read_bytes(), {"Content-Type": "text/csv"})
                self.assertEqual(200, status)
                self.assertEqual(score(PROGRAM, document(folder), path), text)
                self.assertRegex(headers["X-Model-SHA256"], "^[0-9a-f]{64}$")

    def test_explanations_say_what_a_decision_speaks_for(self):
        header, rows = table(EXAMPLES / "tumour")
        arguments = dict(zip(header, rows[0]))
        text = document(EXAMPLES / "tumour").read_text(encoding="utf-8")
        self.assertIn(' maxWins="true"', text)
        versions = {
            "as-is": (text, "malignant", "benign", 0),
            "turned": (text.replace(' maxWins="true"', ""), "benign", "malignant", 0),
            "shifted": (text.replace(' maxWins="true"', ' threshold="0.25"'), "benign", "malignant", 0.25),
        }
        with tempfile.TemporaryDirectory() as folder:
            for name, (document_text, *_) in versions.items():
                Path(folder, name + ".pmml").write_text(document_text, encoding="utf-8")
            with Service(PROGRAM, "--models", folder) as service:
                for name, (_, above, below, threshold) in versions.items():
                    _, answer = service.json("POST", f"/model/{name}/explain", {"arguments": arguments})
                    (told,) = answer["explanations"]
                    self.assertEqual((above, below, threshold), (told["above"], told["below"], told["threshold"]), name)
        header, rows = table(EXAMPLES / "diabetes")
        told = self.post("/model/diabetes/explain", {"arguments": dict(zip(header, rows[0]))})["explanations"][0]
        self.assertEqual((None, None, None), (told["above"], told["below"], told["threshold"]))

    def test_a_model_of_weights_is_not_explained(self):
        document_text = """<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>
            <DataField name="x" optype="continuous" dataType="double"/>
            <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
            <SupportVectorMachineModel functionName="regression" svmRepresentation="Coefficients">
            <MiningSchema><MiningField name="x"/><MiningField name="y" usageType="target"/></MiningSchema>
            <LinearKernelType/><VectorDictionary numberOfVectors="0"><VectorFields><FieldRef field="x"/></VectorFields>
            </VectorDictionary><SupportVectorMachine><Coefficients absoluteValue="1"><Coefficient value="2"/></Coefficients>
            </SupportVectorMachine></SupportVectorMachineModel></PMML>"""
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "line.pmml").write_text(document_text, encoding="utf-8")
            with Service(PROGRAM, "--models", folder) as service:
                case = {"arguments": {"x": 3}}
                self.assertEqual(7, service.json("POST", "/model/line", case)[1]["results"]["prediction"])
                status, answer = service.json("POST", "/model/line/explain", case)
                self.assertEqual(501, status)
                self.assertIn("svmscore explain takes a table of some with --background", answer["message"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
