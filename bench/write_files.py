#!/usr/bin/env python3
"""Writes what the whole program reads, from what train_models.py wrote: write_files.py FOLDER ROWS

FOLDER/NAME.pmml (vectors as sparse arrays), FOLDER/NAME.csv and FOLDER/NAME.svm: the workload's
cases, again and again up to ROWS rows (a fifth of that for all but the smallest, a), for svmscore and
for svm-predict. Dense workloads only.
"""
import pathlib
import sys
from itertools import cycle, islice


def read_model(path):
    head, vectors = {}, []
    lines = iter(path.read_text().splitlines())
    for line in lines:
        if line == "SV":
            break
        key, *values = line.split()
        head[key] = values
    classes = int(head["nr_class"][0]) if head["svm_type"][0] == "c_svc" else 2
    for line in lines:
        words = line.split()
        pairs = [word.split(":") for word in words[classes - 1:]]
        vectors.append((words[:classes - 1], pairs))
    return head, classes, vectors


def kernel(head):
    name = head["kernel_type"][0]
    if name == "linear":
        return "<LinearKernelType/>"
    if name == "rbf":
        return f'<RadialBasisKernelType gamma="{head["gamma"][0]}"/>'
    return (f'<PolynomialKernelType gamma="{head["gamma"][0]}" coef0="{head["coef0"][0]}" '
            f'degree="{head["degree"][0]}"/>')


def machines(head, classes, vectors):
    """(categories, positions of vectors, coefficients, constant) of every machine."""
    if "label" not in head:
        every = range(len(vectors))
        yield None, every, [vectors[v][0][0] for v in every], head["rho"][0]
        return
    starts = [0]
    for count in head["nr_sv"]:
        starts.append(starts[-1] + int(count))
    rho = iter(head["rho"])
    for i in range(classes):
        for j in range(i + 1, classes):
            first, second = (range(starts[k], starts[k + 1]) for k in (i, j))
            coefficients = [vectors[v][0][j - 1] for v in first] + [vectors[v][0][i] for v in second]
            yield (head["label"][i], head["label"][j]), [*first, *second], coefficients, next(rho)


def negated(number):
    return number[1:] if number.startswith("-") else "-" + number


def write_pmml(path, head, classes, vectors, fields):
    classifies = "label" in head
    out = ['<?xml version="1.0"?>',
           '<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>']
    names = [f"x{f}" for f in range(1, fields + 1)]
    out += [f'<DataField name="{n}" optype="continuous" dataType="double"/>' for n in names]
    if classifies:
        out.append('<DataField name="y" optype="categorical" dataType="string">')
        out += [f'<Value value="{label}"/>' for label in head["label"]] + ["</DataField>"]
    else:
        out.append('<DataField name="y" optype="continuous" dataType="double"/>')
    function = "classification" if classifies else "regression"
    method = "OneAgainstAll" if classes == 2 else "OneAgainstOne"
    out.append(f'</DataDictionary><SupportVectorMachineModel functionName="{function}" '
               f'svmRepresentation="SupportVectors" classificationMethod="{method}" '
               'maxWins="true"><MiningSchema>')
    out += [f'<MiningField name="{n}"/>' for n in names]
    out.append('<MiningField name="y" usageType="target"/></MiningSchema>')
    out.append(kernel(head) + "<VectorDictionary><VectorFields>")
    out += [f'<FieldRef field="{n}"/>' for n in names]
    out.append("</VectorFields>")
    for v, (_, pairs) in enumerate(vectors):
        indices = " ".join(p[0] for p in pairs)
        entries = " ".join(p[1] for p in pairs)
        out.append(f'<VectorInstance id="v{v}"><REAL-SparseArray n="{fields}"><Indices>{indices}'
                   f'</Indices><REAL-Entries>{entries}</REAL-Entries></REAL-SparseArray>'
                   "</VectorInstance>")
    out.append("</VectorDictionary>")
    for categories, positions, coefficients, rho in machines(head, classes, vectors):
        named = "" if categories is None else (f' targetCategory="{categories[0]}" '
                                               f'alternateTargetCategory="{categories[1]}"')
        out.append(f"<SupportVectorMachine{named}><SupportVectors>")
        out.append("".join(f'<SupportVector vectorId="v{v}"/>' for v in positions))
        out.append(f'</SupportVectors><Coefficients absoluteValue="{negated(rho)}">')
        out.append("".join(f'<Coefficient value="{c}"/>' for c in coefficients))
        out.append("</Coefficients></SupportVectorMachine>")
    out.append("</SupportVectorMachineModel></PMML>")
    path.write_text("\n".join(out) + "\n")


def main():
    folder, most = pathlib.Path(sys.argv[1]), int(sys.argv[2])
    for name in ["a", "b", "c", "d", "e", "f"]:
        rows = most if name == "a" else most // 5
        head, classes, vectors = read_model(folder / f"{name}.model")
        fields, *cases = (folder / f"{name}.cases").read_text().splitlines()
        fields = int(fields)
        write_pmml(folder / f"{name}.pmml", head, classes, vectors, fields)
        with open(folder / f"{name}.svm", "w") as out:
            out.writelines(f"0 {case}\n" for case in islice(cycle(cases), rows))
        table = []
        for case in cases:
            cells = ["0"] * fields
            for pair in case.split():
                position, value = pair.split(":")
                cells[int(position) - 1] = value
            table.append(",".join(cells) + "\n")
        with open(folder / f"{name}.csv", "w") as out:
            out.write(",".join(f"x{f}" for f in range(1, fields + 1)) + "\n")
            out.writelines(islice(cycle(table), rows))


main()
