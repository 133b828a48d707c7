#!/usr/bin/env python3
"""How much memory and time a document takes: document_memory.py SVMSCORE [MEGABYTES]

Writes documents of several shapes, each of about that size (20 MB), has `describe` and `score` load
them, and prints as Markdown the peak of resident memory divided by the size of the document, without
the memory for an empty document, and the seconds that `describe` took. Documents of many records or
classes are also examined by `doctor`, whose seconds follow. The last shapes are as hard for the
parser as the default limits allow.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

program = sys.argv[1]
size = int(float(sys.argv[2] if len(sys.argv) > 2 else 20) * 1e6)

VECTOR = "<VectorInstance id='{}'>{}</VectorInstance>"
SPARSE = ("<REAL-SparseArray n='{0}'><Indices>{1}</Indices><REAL-Entries>{2}</REAL-Entries>"
          "</REAL-SparseArray>")
ONE = VECTOR.format("v", SPARSE.format(1, "1", "1"))


def model(vectors=ONE, fields=1, derived="", header="", data="", machine="", verification=""):
    references = "<FieldRef field='x'/>" * fields
    return (f"<PMML version='4.4'><Header>{header}</Header><DataDictionary>"
            f"<DataField name='x' optype='continuous' dataType='double'/>"
            f"<DataField name='y' optype='continuous' dataType='double'/>{data}</DataDictionary>"
            f"<SupportVectorMachineModel functionName='regression'><MiningSchema>"
            f"<MiningField name='x'/><MiningField name='y' usageType='target'/></MiningSchema>"
            f"<LocalTransformations>{derived}</LocalTransformations>{verification}"
            f"<LinearKernelType/><VectorDictionary><VectorFields>{references}</VectorFields>"
            f"{vectors}</VectorDictionary><SupportVectorMachine><SupportVectors>"
            f"<SupportVector vectorId='v'/>{machine[0] if machine else ''}</SupportVectors>"
            f"<Coefficients><Coefficient value='1'/>{machine[1] if machine else ''}</Coefficients>"
            f"</SupportVectorMachine></SupportVectorMachineModel></PMML>")


def repeat(form):
    """As many as the size asks for; `form` makes the i-th."""
    parts, length = [], 0
    while length < size:
        parts.append(form(len(parts)))
        length += len(parts[-1])
    return "".join(parts)


def numbers(text, count):
    return " ".join([text] * count)


def derived(i, content):
    return (f"<DerivedField name='d{i}' optype='continuous' dataType='double'>{content}"
            "</DerivedField>")


def inline_table():
    rows = repeat(lambda i: f"<row><i>{i}</i><o>{i}</o></row>")
    return derived(0, "<MapValues outputColumn='o'><FieldColumnPair field='x' column='i'/>"
                      f"<InlineTable>{rows}</InlineTable></MapValues>")


def nested(tag, content):
    """Elements 1,900 deep; the first 990 are the numbered tag."""
    return ("".join(tag.format(i) if i < 990 else "<a>" for i in range(1900)) + content
            + "</a>" * 1900)


def sparse_table(columns):
    """Rows of one cell each, in one of the columns."""
    rows = repeat(lambda i: f"<row><c{i % columns}>{i}</c{i % columns}><o>1</o></row>")
    pairs = "".join(f"<FieldColumnPair field='x' column='c{i}'/>" for i in range(columns))
    return derived(0, f"<MapValues outputColumn='o'>{pairs}<InlineTable>{rows}</InlineTable>"
                      "</MapValues>")


def records(columns):
    fields = "".join(f"<VerificationField field='x' column='c{i}'/>" for i in range(columns))
    rows = repeat(lambda i: f"<row><c{i % columns}>{i}</c{i % columns}><y>1</y></row>")
    return (f"<ModelVerification><VerificationFields>{fields}<VerificationField field='y'/>"
            f"</VerificationFields><InlineTable>{rows}</InlineTable></ModelVerification>")


def classes():
    count = size // 220
    text = model(data="<DataField name='c' optype='categorical' dataType='string'>" + "".join(
        f"<Value value='c{i}'/>" for i in range(count)) + "</DataField>")
    text = text.replace("<MiningField name='y'", "<MiningField name='c'")
    text = text.replace("'regression'", "'classification' classificationMethod='OneAgainstAll'")
    start, rest = text.split("<SupportVectorMachine>")
    machine, end = rest.split("</SupportVectorMachine>")
    return start + "".join(f"<SupportVectorMachine targetCategory='c{i}'>{machine}"
                           "</SupportVectorMachine>" for i in range(count)) + end


def dense(text):
    array = f"<Array type='real' n='100'>{numbers(text, 100)}</Array>"
    return lambda: model(ONE.replace("n='1'", "n='100'") + repeat(
        lambda i: VECTOR.format(i, array)), fields=100)


SHAPES = {
    "dense vectors, 16 digits": dense("0.1234567890123456"),
    "dense vectors, 1 digit": dense("1"),
    "sparse vectors": lambda: model(ONE + repeat(lambda i: VECTOR.format(
        i, SPARSE.format(10000, "3 70 500 2000 9000", numbers("0.25", 5)))), fields=10000),
    "vectors of one entry": lambda: model(ONE + repeat(
        lambda i: VECTOR.format(i, SPARSE.format(1, "1", "1")))),
    "vectors of zeros": lambda: model(ONE + repeat(
        lambda i: VECTOR.format(i, "<REAL-SparseArray n='50'/>")), fields=50),
    "support vectors of one machine": lambda: model(machine=(
        "<SupportVector vectorId='v'/>" * (size // 60), "<Coefficient value='1'/>" * (size // 60))),
    "20,000 derived fields": lambda: model(derived="".join(derived(i, (
        "<Apply function='+'><FieldRef field='x'/><Constant>1</Constant></Apply>"))
                                                           for i in range(20000))),
    "derived fields": lambda: model(derived=repeat(lambda i: derived(i, (
        "<Apply function='+'><FieldRef field='x'/><Constant>1</Constant></Apply>")))),
    "inline table": lambda: model(derived=inline_table()),
    "a table of 10,000 columns": lambda: model(derived=sparse_table(10000)),
    "records of 10,000 fields": lambda: model(verification=records(10000)),
    "classes of one-against-all": classes,
    "data fields": lambda: model(data=repeat(
        lambda i: f"<DataField name='f{i}' optype='continuous' dataType='double'/>")),
    "categories": lambda: model(data="<DataField name='c' optype='categorical' dataType='string'>"
                                + repeat(lambda i: f"<Value value='{i}'/>") + "</DataField>"),
    "vector fields": lambda: model(fields=size // 22),
    "the smallest elements": lambda: model(header=repeat(lambda i: "<a/>")),
    "the smallest elements, with blanks": lambda: model(header=repeat(lambda i: "<a/> ")),
    "the smallest attributes": lambda: model(header=repeat(
        lambda i: "<a b='' c='' d='' e='' f='' g='' h='' i='' j='' k='' l='' m=''/>")),
    "one text": lambda: model(header="x" * size),
    "50,000 names of elements": lambda: model(header=repeat(lambda i: f"<a{i % 49900}/>")),
    "10,000 names of attributes": lambda: model(header=repeat(lambda i: f"<a b{i % 9900}=''/>")),
    "10,000 prefixes": lambda: model(header=repeat(
        lambda i: f"<p{i % 9900}:a xmlns:p{i % 9900}='u{i % 990}'/>")),
    "elements 1,900 deep": lambda: model(header=nested("<a>", repeat(lambda i: "<b/>"))),
    "elements 1,900 deep, 990 prefixes in force": lambda: model(header=nested(
        "<a xmlns:p{0}='u{0}'>", repeat(lambda i: "<b/>"))),
    "the same with attributes": lambda: model(header=nested("<a xmlns:p{0}='u{0}'>", repeat(
        lambda i: "<p0:b " + " ".join(f"p{j}:c=''" for j in range(12)) + "/>"))),
}
EXAMINED = ["a table of 10,000 columns", "records of 10,000 fields", "classes of one-against-all"]


def peak(command, path):
    """Bytes, and seconds."""
    start = time.perf_counter()
    arguments = [program, command, str(path)] + (["/dev/null"] if command == "score" else [])
    child = subprocess.Popen(arguments, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    # Without cases, score loads the model and then fails; doctor may report findings.
    if os.waitstatus_to_exitcode(status) not in (0, 1 if command == "doctor" else 5):
        raise SystemExit(f"{command} {path}: status {status}")
    return usage.ru_maxrss * 1024, time.perf_counter() - start


def main():
    print("| document | MB | describe | score | seconds | doctor | seconds |\n" + "|---" * 7 + "|")
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "model.pmml"
        path.write_text(model())
        base = {command: peak(command, path)[0] for command in ("describe", "score", "doctor")}
        worst = 0.0
        for name, make in SHAPES.items():
            path.write_text(make())
            length = path.stat().st_size
            commands = ["describe", "score"] + ["doctor"] * (name in EXAMINED)
            taken = {command: peak(command, path) for command in commands}
            ratios = {command: (taken[command][0] - base[command]) / length for command in commands}
            worst = max(worst, *ratios.values())
            examined = (f"{ratios['doctor']:.1f} | {taken['doctor'][1]:.2f}" if "doctor" in taken
                        else " | ")
            print(f"| {name} | {length / 1e6:.1f} | {ratios['describe']:.1f} "
                  f"| {ratios['score']:.1f} | {taken['describe'][1]:.2f} | {examined} |",
                  flush=True)
        print(f"\nThe worst is {worst:.1f} times the size of the document.")


main()
