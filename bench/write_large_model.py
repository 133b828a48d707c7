#!/usr/bin/env python3
"""Writes a large document for `load`: write_large_model.py FILE [VECTORS [FIELDS [FORM]]]

An RBF regression of 50,000 vectors of 200 fields, about 100 MB; FORM is array (dense, the default) or
sparse. The numbers are made up from a fixed seed.
"""
import random
import sys


def parts(vectors, fields, form):
    rng = random.Random(5)
    names = [f"x{f}" for f in range(1, fields + 1)]
    yield '<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>'
    yield from (f'<DataField name="{n}" optype="continuous" dataType="double"/>'
                for n in [*names, "y"])
    yield ('</DataDictionary><SupportVectorMachineModel functionName="regression"><MiningSchema>')
    yield from (f'<MiningField name="{n}"/>' for n in names)
    yield ('<MiningField name="y" usageType="target"/></MiningSchema>'
           '<RadialBasisKernelType gamma="0.005"/><VectorDictionary><VectorFields>')
    yield from (f'<FieldRef field="{n}"/>' for n in names)
    yield "</VectorFields>\n"
    indices = " ".join(str(f) for f in range(1, fields + 1))
    for v in range(vectors):
        entries = " ".join(f"{rng.uniform(-1, 1):.6g}" for _ in names)
        array = (f'<Array type="real" n="{fields}">{entries}</Array>' if form == "array" else
                 f'<REAL-SparseArray n="{fields}"><Indices>{indices}</Indices>'
                 f"<REAL-Entries>{entries}</REAL-Entries></REAL-SparseArray>")
        yield f'<VectorInstance id="v{v}">{array}</VectorInstance>\n'
    yield "</VectorDictionary><SupportVectorMachine><SupportVectors>"
    yield from (f'<SupportVector vectorId="v{v}"/>' for v in range(vectors))
    yield '</SupportVectors><Coefficients absoluteValue="0.1">'
    yield from (f'<Coefficient value="{rng.uniform(-1, 1):.6g}"/>' for _ in range(vectors))
    yield "</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>\n"


def main():
    file, *given = sys.argv[1:]
    usual = ["50000", "200", "array"]
    vectors, fields, form = given + usual[len(given):]
    with open(file, "w", encoding="utf-8") as out:
        out.writelines(parts(int(vectors), int(fields), form))


main()
