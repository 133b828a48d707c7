"""What the tests of the Python package share."""

import csv
import io
import os
import pathlib
import subprocess

import pytest

import svmscore

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
PROGRAM = os.environ.get("SVMSCORE_PROGRAM", str(ROOT / "build/release/bin/svmscore"))


def run_program(*arguments, text=""):
    """What the program writes; it must end well."""
    done = subprocess.run(
        [PROGRAM, *map(str, arguments)], input=text, capture_output=True, text=True, check=False
    )
    assert done.returncode == 0, done.stderr
    return done.stdout


def program_table(model, cases, *options):
    """The program's scores: {column: cells}."""
    rows = list(csv.reader(io.StringIO(run_program("score", *options, model, cases))))
    return {name: [row[at] for row in rows[1:]] for at, name in enumerate(rows[0])}


@pytest.fixture(scope="session")
def iris():
    return svmscore.load(EXAMPLES / "iris/model.pmml")


@pytest.fixture(scope="session")
def mixed():
    """A regression of fields of every kind: y = n + 10 x + 100 [red] + 200 [flag] + days of 1960."""
    return svmscore.load(MIXED.encode())


def mixed_result(n, x, colour, flag, days):
    return n + 10 * x + 100 * (colour == "red") + 200 * flag + days


_DERIVED = """
    <DerivedField name="red" optype="continuous" dataType="double">
      <NormDiscrete field="colour" value="red"/></DerivedField>
    <DerivedField name="flagged" optype="continuous" dataType="double">
      <NormDiscrete field="flag" value="true"/></DerivedField>
    <DerivedField name="days" optype="continuous" dataType="double">
      <Apply function="dateDaysSinceYear"><FieldRef field="when"/><Constant>1960</Constant></Apply>
    </DerivedField>"""
_NAMES = ["n", "x", "red", "flagged", "days"]
MIXED = f"""<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
  <DataDictionary>
    <DataField name="n" optype="continuous" dataType="integer"/>
    <DataField name="x" optype="continuous" dataType="double"/>
    <DataField name="colour" optype="categorical" dataType="string">
      <Value value="red"/><Value value="green"/></DataField>
    <DataField name="flag" optype="categorical" dataType="boolean">
      <Value value="true"/><Value value="false"/></DataField>
    <DataField name="when" optype="continuous" dataType="date"/>
    <DataField name="y" optype="continuous" dataType="double"/>
  </DataDictionary>
  <SupportVectorMachineModel functionName="regression" svmRepresentation="Coefficients">
    <MiningSchema>
      <MiningField name="n"/><MiningField name="x"/><MiningField name="colour"/>
      <MiningField name="flag"/><MiningField name="when"/><MiningField name="y" usageType="target"/>
    </MiningSchema>
    <LocalTransformations>{_DERIVED}</LocalTransformations>
    <LinearKernelType/>
    <VectorDictionary><VectorFields>
      {"".join(f'<FieldRef field="{name}"/>' for name in _NAMES)}
    </VectorFields></VectorDictionary>
    <SupportVectorMachine><Coefficients absoluteValue="0">
      {"".join(f'<Coefficient value="{value}"/>' for value in (1, 10, 100, 200, 1))}
    </Coefficients></SupportVectorMachine>
  </SupportVectorMachineModel></PMML>"""
