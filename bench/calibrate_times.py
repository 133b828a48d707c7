"""How long calibration takes beyond scoring: two categories, a linear machine of one vector.

    bench/calibrate_times.py PROGRAM [ROWS]

Runs `calibrate` and `score --decisions` on the same table in turn, and prints the least processor time of
each and the difference: fitting, cross-validation, writing and checking the document.
"""
import os
import pathlib
import random
import subprocess
import sys
import tempfile

MODEL = '''<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/>
<DataDictionary><DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="categorical" dataType="string"><Value value="no"/><Value value="yes"/></DataField>
</DataDictionary>
<SupportVectorMachineModel functionName="classification"><MiningSchema><MiningField name="x"/>
<MiningField name="y" usageType="target"/></MiningSchema><LinearKernelType/>
<VectorDictionary numberOfVectors="1"><VectorFields numberOfFields="1"><FieldRef field="x"/></VectorFields>
<VectorInstance id="v"><REAL-SparseArray n="1"><Indices>1</Indices><REAL-Entries>1</REAL-Entries></REAL-SparseArray>
</VectorInstance></VectorDictionary>
<SupportVectorMachine targetCategory="yes" alternateTargetCategory="no"><SupportVectors>
<SupportVector vectorId="v"/></SupportVectors><Coefficients absoluteValue="0.25"><Coefficient value="-1"/>
</Coefficients></SupportVectorMachine></SupportVectorMachineModel></PMML>
'''
ROUNDS = 7


def seconds(command):
    """The processor's time of one run, so that other programs matter little; its messages are dropped."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        raise SystemExit(f'{command}: status {status}')
    return usage.ru_utime + usage.ru_stime


def main():
    program = sys.argv[1]
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    draw = random.Random(1)
    with tempfile.TemporaryDirectory() as folder:
        model = pathlib.Path(folder, 'model.pmml')
        cases = pathlib.Path(folder, 'cases.csv')
        model.write_text(MODEL)
        with cases.open('w') as out:
            out.write('x,y\n')
            for _ in range(rows):
                x = draw.gauss(0, 1)
                out.write(f'{x!r},{"yes" if draw.gauss(x, 1) > 0 else "no"}\n')
        calibrated = str(pathlib.Path(folder, 'calibrated.pmml'))
        scores = str(pathlib.Path(folder, 'scores.csv'))
        calibrate = [program, 'calibrate', model, cases, '--actual', 'y', '-o', calibrated]
        score = [program, 'score', model, cases, '--decisions', '--threads', '1', '-o', scores]
        times = [(seconds(calibrate), seconds(score)) for _ in range(ROUNDS)]
    with_scoring = min(calibrating for calibrating, _ in times)
    scoring = min(scoring for _, scoring in times)
    print(f'{rows} rows: calibrate {with_scoring:.3f} s, score {scoring:.3f} s, '
          f'difference {with_scoring - scoring:.3f} s')


if __name__ == '__main__':
    main()
