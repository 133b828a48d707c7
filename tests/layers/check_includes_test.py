"""The checker accepts includes that go down and refuses each kind of breach, by the table that the tree
itself is held to."""
import os
import subprocess
import sys
import tempfile

FOLDER = os.path.dirname(os.path.abspath(__file__))
TABLE = os.path.join(FOLDER, 'rooms.txt')

RIGHT = [
    ('app/score/a.cpp', '"tools/base/t.h"'),
    ('host/load/l.cpp', '"host/intake/i.h"'),
    ('svm/model/m.cpp', '"svm/kernel/k.h"'),
    ('svm/kernel/packed/isa_avx2.cpp', '<immintrin.h>'),
    ('host/text/t.cpp', '<fmt/format.h>'),
    ('host/text/t.cpp', '<vector>'),
]
WRONG = [
    ('host/text/t.cpp', '"host/model/m.h"'),  # up
    ('host/xml/x.cpp', '"host/transform/t.h"'),
    ('host/output/o.cpp', '"host/translate/t.h"'),  # sideways
    ('host/load/l.cpp', '"host/f.h"'),  # a forwarding header
    ('host/load/l.cpp', '"app/base/a.h"'),
    ('tools/doctor/d.cpp', '"app/base/a.h"'),
    ('app/base/a.cpp', '"app/files/f.h"'),
    ('app/score/a.cpp', '"svm/model/m.h"'),
    ('svm/kernel/k.cpp', '"svm/model/m.h"'),
    ('svm/kernel/k.cpp', '<xercesc/dom/DOM.hpp>'),
    ('svm/kernel/packed/packed_engine.cpp', '<immintrin.h>'),
    ('app/table/c.cpp', '<emmintrin.h>'),
    ('host/model/v.cpp', '<xercesc/dom/DOM.hpp>'),
    ('host/transform/functions/f.cpp', '<unistd.h>'),
    ('app/load/l.cpp', '<CLI/CLI.hpp>'),
    ('host/load/l.cpp', '"l.h"'),  # not from the root
    ('host/load/l.cpp', '"host/load/missing.h"'),
    ('host/other/o.cpp', '"host/text/t.h"'),  # a room without a place
    ('app/score/a.cpp', '"fuzz/f.h"'),
]
HEADERS = ['host/text/t.h', 'host/model/m.h', 'host/transform/t.h', 'host/translate/t.h', 'host/f.h',
           'host/intake/i.h', 'host/load/l.h', 'tools/base/t.h', 'app/base/a.h', 'app/files/f.h',
           'svm/model/m.h', 'svm/kernel/k.h', 'fuzz/f.h']


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'w', encoding='utf-8') as file:
        file.write(text)


def status_with(source, include, readme=True):
    with tempfile.TemporaryDirectory() as tree:
        for header in HEADERS + [source]:
            write(os.path.join(tree, header), '#include <string>\n')
            if readme:
                write(os.path.join(tree, os.path.dirname(header), 'README.md'), '')
        write(os.path.join(tree, source), f'  #  include {include}\n')
        checker = [sys.executable, os.path.join(FOLDER, 'check_includes.py'), tree, TABLE]
        return subprocess.run(checker, stdout=subprocess.DEVNULL, check=False).returncode


failures = [f'{source} including {include} is refused' for source, include in RIGHT
            if status_with(source, include) != 0]
failures += [f'{source} including {include} is accepted' for source, include in WRONG
             if status_with(source, include) != 1]
if status_with(*RIGHT[0], readme=False) != 1:
    failures.append('a room without a README.md is accepted')
print('\n'.join(failures))
sys.exit(bool(failures))
