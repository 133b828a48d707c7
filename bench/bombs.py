#!/usr/bin/env python3
"""How long it takes to refuse documents that would blow up: bombs.py SVMSCORE

Has `describe` refuse each, nine times, and prints as Markdown the median of the processor time, in
milliseconds, and the peak of resident memory. Exit status 1 if one is not refused, or takes more
than 100 ms.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

MOST_MS = 100
RUNS = 9

program = sys.argv[1]


def chain(declaration, reference):
    first = declaration.format("a0", "aaaaaaaaaa")
    return first + "".join(declaration.format(f"a{i}", reference.format(i - 1) * 10)
                           for i in range(1, 30))


ENTITY = "<!ENTITY {} '{}'>"
LAUGHS = chain(ENTITY, "&a{};")
LONG = ENTITY.format("b", "b" * 200000)
MANY = "&b;" * 20000

BOMBS = {
    "nested entities in a text": (LAUGHS, "<a>&a29;</a>"),
    "nested entities in an attribute": (LAUGHS, "<a b='&a29;'/>"),
    "nested entities in a default": (LAUGHS + "<!ATTLIST a b CDATA '&a29;'>", "<a/>"),
    "nested parameter entities": (chain("<!ENTITY % {} '{}'>", "&#37;a{};") + "%a29;", "<a/>"),
    "a long entity many times in a text": (LONG, f"<a>{MANY}</a>"),
    "a long entity many times in an attribute": (LONG, f"<a b='{MANY}'/>"),
    "a long default on many elements": (f"<!ATTLIST c b CDATA '{'b' * 200000}'>",
                                        "<a>" + "<c/>" * 20000 + "</a>"),
    "a thousand empty defaults on many elements": (
        "<!ATTLIST c " + " ".join(f"a{i} CDATA ''" for i in range(1000)) + ">",
        "<a>" + "<c/>" * 1000 + "</a>"),
    "a content model of a million parentheses": ("<!ELEMENT a " + "(" * 1000000, ""),
    "a content model of a million names": (f"<!ELEMENT a (b{'|b' * 1000000})>", "<a/>"),
}


def refuse(path):
    """Milliseconds and MB."""
    child = subprocess.Popen([program, "describe", str(path)], stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if os.waitstatus_to_exitcode(status) != 3:
        raise SystemExit(f"{path.name}: not refused, status {status}")
    return 1000 * (usage.ru_utime + usage.ru_stime), usage.ru_maxrss / 1000


def main():
    print("| document | ms | MB |\n|---|---|---|")
    worst = 0.0
    with tempfile.TemporaryDirectory() as folder:
        for name, (declared, root) in {"no document": ("", ""), **BOMBS}.items():
            path = pathlib.Path(folder) / "bomb.pmml"
            path.write_text(f"<!DOCTYPE a [{declared}]>{root}")
            runs = [refuse(path) for _ in range(RUNS)]
            taken = statistics.median(run[0] for run in runs)
            print(f"| {name} | {taken:.0f} | {max(run[1] for run in runs):.0f} |")
            worst = max(worst, taken)
    return 1 if worst > MOST_MS else 0


sys.exit(main())
