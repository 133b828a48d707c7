#!/usr/bin/env python3
"""check_pages.py PROGRAM EXAMPLES FOLDER: opens reports in Chromium and looks at them.

The pages of the examples and of hostile documents, and pictures of them, go to FOLDER. Fails with a
line for each thing that is wrong on a page: something that runs or loads, a dialog, a missing name,
headings out of order, or text that a screen does not hold. A page on which everything is wrong is
checked first, so that each check is known to see what it looks for.
"""

import base64
import csv
import io
import os
import subprocess
import sys
from xml.sax.saxutils import quoteattr

from browser import Browser

WIDTHS = (360, 1280)

# What a look at a page tells: everything that is decided inside it, in one object.
LOOK = r"""(() => {
  const all = (q) => [...document.querySelectorAll(q)];
  const headings = all('h1,h2,h3,h4,h5,h6').map((h) => Number(h.tagName[1]));
  const handlers = all('*').filter((e) => [...e.attributes].some(
      (a) => a.name.startsWith('on') ||
          (/^(href|src|action|data|xlink:href)$/.test(a.name) && !a.value.startsWith('#')))).length;
  const wide = document.documentElement.clientWidth;
  const scrolls = (e) => { for (let p = e.parentElement; p; p = p.parentElement)
      if (p.classList.contains('scroll')) return true; return false; };
  const beyond = [], cut = [];
  for (const e of all('body *')) {
    const box = e.getBoundingClientRect();
    if (box.width && !scrolls(e) && !e.closest('.skip') && !e.closest('.defs') && box.right > wide + 1)
      beyond.push(e.tagName + ' ' + (e.textContent || '').slice(0, 40));
  }
  const edge = document.querySelector('main')?.getBoundingClientRect().right ?? wide;
  for (const e of all('figure, p, caption')) {
    const box = e.getBoundingClientRect();
    if (box.width && box.left >= 0 && box.right > edge + 1 && !e.closest('.skip'))
      beyond.push('beyond the margin: ' + e.tagName + ' ' + e.textContent.slice(0, 40));
  }
  const overlaps = [];
  for (const s of all('svg[role=img]')) {
    const frame = s.getBoundingClientRect();
    const texts = [...s.querySelectorAll('text')].map((t) => [t, t.getBoundingClientRect()]);
    for (const [t, b] of texts) if (b.left < frame.left - 2 || b.right > frame.right + 2 ||
        b.top < frame.top - 2 || b.bottom > frame.bottom + 2) cut.push(t.textContent.slice(0, 40));
    texts.forEach(([t, b], i) => { for (const [u, c] of texts.slice(i + 1)) {
      if (t.getAttribute('transform') || u.getAttribute('transform')) continue;
      if (Math.min(b.right, c.right) - Math.max(b.left, c.left) > 1.5 &&
          Math.min(b.bottom, c.bottom) - Math.max(b.top, c.top) > 4)
        overlaps.push(t.textContent.slice(0, 30) + ' | ' + u.textContent.slice(0, 30)); } });
  }
  const ids = all('[id]').map((e) => e.id);
  return { title: document.title, lang: document.documentElement.lang, headings,
    scripts: all('script,iframe,object,embed,img,link,base,form').length, handlers,
    hijacked: typeof window.hijacked !== 'undefined',
    nameless: all('svg').filter((s) => s.getAttribute('aria-hidden') !== 'true' &&
        !(s.getAttribute('role') === 'img' && (s.getAttribute('aria-label') || '').trim() &&
          s.querySelector('title') && s.querySelector('desc'))).length,
    pictures: all('svg[role=img]').length,
    tables: all('table').filter((t) => !t.caption || !t.querySelector('th[scope]')).length,
    landmarks: ['header', 'nav', 'main', 'footer'].filter((n) => !document.querySelector(n)),
    twice: ids.filter((id, i) => ids.indexOf(id) !== i),
    beyond: beyond.slice(0, 3), cut: cut.slice(0, 3), overlaps: overlaps.slice(0, 3),
    scrollWidth: document.documentElement.scrollWidth, wide };
})()"""

ALLOWED = "file:"
WRONG_PAGE = """<!DOCTYPE html><html><head><title></title></head><body><h1>a</h1><h1>b</h1><h3>c</h3>
<script>window.hijacked = 1; console.error('x'); alert(1);</script>
<img src="http://127.0.0.1:9/x.png"><p onclick="x()">p</p><p id="a"></p><p id="a"></p>
<table><tr><td>1</td></tr></table><div style="width:5000px">wide</div>
<svg role="img" viewBox="0 0 100 100" width="100"><text x="90" y="20">much too long</text>
<text x="90" y="22">on each other</text></svg></body></html>"""


def complaints(browser, url, title):
    """What is wrong on a page, as a list of kinds and details."""
    wrong = []
    for width in WIDTHS:
        browser.look(width, 900)
        browser.open(url)
        seen = browser.evaluate(LOOK)

        def check(kind, fault, detail, width=width):
            if fault:
                wrong.append((kind, f"{detail} ({width} px)"))

        for name, event in browser.events:
            check("console", name in ("Runtime.exceptionThrown", "Log.entryAdded",
                                      "Runtime.consoleAPICalled"), str(event)[:200])
            check("dialog", name == "Page.javascriptDialogOpening", str(event)[:200])
            if name == "Network.requestWillBeSent":
                asked = event["request"]["url"]
                check("request", asked != url, asked[:100])
        levels = seen["headings"]
        in_order = levels[:1] == [1] and levels.count(1) == 1 and all(
            b <= a + 1 for a, b in zip(levels, levels[1:]))
        check("headings", not in_order, str(levels))
        check("title", seen["title"] != title, repr(seen["title"][:100]))
        check("lang", seen["lang"] != "en", seen["lang"])
        check("elements that load or run", seen["scripts"], seen["scripts"])
        check("handlers", seen["handlers"], seen["handlers"])
        check("a script ran", seen["hijacked"], "")
        check("pictures without a name", seen["nameless"], seen["nameless"])
        check("tables without a caption or headings", seen["tables"], seen["tables"])
        check("landmarks", seen["landmarks"], seen["landmarks"])
        check("an id twice", seen["twice"], seen["twice"])
        check("wider than the screen", seen["beyond"] or seen["scrollWidth"] > seen["wide"],
              seen["beyond"])
        check("text beyond its picture", seen["cut"], seen["cut"])
        check("texts on each other", seen["overlaps"], seen["overlaps"])
    return wrong


def picture(browser, path, width, scheme, media=""):
    browser.look(width, 900, scheme, media)
    height = int(browser.evaluate("document.documentElement.scrollHeight"))
    browser.look(width, min(height, 8000), scheme, media)
    shot = browser.send("Page.captureScreenshot", format="png")
    with open(path, "wb") as file:
        file.write(base64.b64decode(shot["data"]))


HOSTILE = ["<script>window.hijacked=1;alert(1)</script>", "\"'><img src=x onerror=alert(1)>",
           "]]>-->", "javascript:alert(1)", "\u202eabc\u2066 \u05d0\u05d1\u05d2", "two\nlines\tand more",
           "\U0001f600 \U0001f9ea", "x" * 5000, "\u6f22\u5b57" * 40, "</style><style>*{display:none}",
           "&lt;b&gt; &amp;", "\ufffe\u0085"]


def attribute(text):
    return quoteattr(text, {"\n": "&#10;", "\t": "&#9;"}).replace("\ufffe", "")


def hostile_model(names, categories, machines_of):
    """A document of these inputs and categories; `machines_of` says which pairs have a machine."""
    fields = "".join(f'<DataField name={attribute(n)} optype="continuous" dataType="double"/>'
                     for n in names)
    values = "".join(f"<Value value={attribute(c)}/>" for c in categories)
    mining = "".join(f"<MiningField name={attribute(n)}/>" for n in names)
    refs = "".join(f"<FieldRef field={attribute(n)}/>" for n in names)
    entries = [" ".join(str((i * 7 + j * 3) % 11 / 2) for i in range(len(names))) for j in range(6)]
    vectors = "".join(f'<VectorInstance id="v{j}"><Array type="real">{e}</Array></VectorInstance>'
                      for j, e in enumerate(entries))
    machines = "".join(
        f"<SupportVectorMachine targetCategory={attribute(categories[a])}"
        + (f" alternateTargetCategory={attribute(categories[b])}" if b is not None else "")
        + '><SupportVectors>' + "".join(f'<SupportVector vectorId="v{j}"/>' for j in range(6))
        + f'</SupportVectors><Coefficients absoluteValue="{(k % 7 - 3) / 10}">'
        + "".join(f'<Coefficient value="{((k + j * 5) % 9 - 4) / 3}"/>' for j in range(6))
        + "</Coefficients></SupportVectorMachine>\n"
        for k, (a, b) in enumerate(machines_of(len(categories))))
    method = "OneAgainstAll" if machines_of is each else "OneAgainstOne"
    return (f'<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4"><Header>'
            f'<Application name={attribute(HOSTILE[0])} version="1"/></Header><DataDictionary>'
            f'{fields}<DataField name="y" optype="categorical" dataType="string">{values}'
            f'</DataField></DataDictionary><SupportVectorMachineModel modelName='
            f'{attribute(HOSTILE[0])} functionName="classification" classificationMethod="{method}">'
            f'<MiningSchema>{mining}<MiningField name="y" usageType="target"/></MiningSchema>'
            f'<RadialBasisKernelType gamma="0.02"/><VectorDictionary><VectorFields>{refs}'
            f'</VectorFields>{vectors}</VectorDictionary>{machines}'
            f'</SupportVectorMachineModel></PMML>\n')


def pairs(count):
    return [(a, b) for a in range(count) for b in range(a + 1, count)]


def each(count):
    return [(a, None) for a in range(count)]


def hostile_cases(names, categories, rows):
    out = io.StringIO()
    table = csv.writer(out, lineterminator="\n")
    table.writerow(names + ["y"])
    for r in range(rows):
        table.writerow([(i * 5 + r * 3) % 13 / 2 for i in range(len(names))]
                       + [categories[r % len(categories)]])
    return out.getvalue()


def write(path, text):
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write(text)
    return path


def pages(program, examples, folder):
    """Writes all pages; yields the name and the title of each."""
    def report(name, model, *options):
        page = os.path.join(folder, name + ".html")
        subprocess.run([program, "report", model, *options, "-o", page], check=True,
                       stderr=subprocess.DEVNULL)
        size = os.path.getsize(page)
        if size > 2_000_000:
            raise SystemExit(f"{name}: the page has {size} bytes")
        return page

    for name, actual in (("iris", "species"), ("digits", "digit"), ("diabetes", "progression"),
                         ("tumour", "diagnosis")):
        model = os.path.join(examples, name, "model.pmml")
        report(name, model, "--input", os.path.join(examples, name, "cases.csv"),
               "--actual", actual)
        yield name, "Report on model.pmml"
    report("broken", os.path.join(examples, "broken", "model.pmml"))
    yield "broken", "Report on model.pmml"

    inputs = [n.replace("\ufffe", "") for n in HOSTILE]
    many = [f"{i} <b onclick='alert(1)'>" for i in range(10_000)]
    for name, names, categories, machines, rows in (
            ("hostile", inputs, [c + "!" for c in inputs], pairs, 60),
            ("many-categories", ["a", "b"], many, each, 50),
            ("many-inputs", [f"{n} <i>" for n in range(10_000)], ["p", "q"], pairs, 50)):
        model = write(os.path.join(folder, name + ".pmml"),
                      hostile_model(names, categories, machines))
        cases = write(os.path.join(folder, name + ".csv"), hostile_cases(names, categories, rows))
        report(name, model, "--input", cases, "--actual", "y")
        yield name, "Report on " + HOSTILE[0]


def main():
    program, examples, folder = sys.argv[1:]
    os.makedirs(folder, exist_ok=True)
    faults = 0
    browser = Browser()
    try:
        bad = write(os.path.join(folder, "wrong.html"), WRONG_PAGE)
        found = {kind for kind, _ in complaints(browser, "file://" + os.path.abspath(bad), "right")}
        expected = {"console", "dialog", "request", "headings", "title", "lang", "handlers",
                    "elements that load or run", "a script ran", "pictures without a name",
                    "tables without a caption or headings", "landmarks", "an id twice",
                    "wider than the screen", "text beyond its picture", "texts on each other"}
        for kind in sorted(expected - found):
            print(f"the page on which all is wrong: nobody saw: {kind}")
            faults += 1
        count = 0
        for name, title in pages(program, examples, folder):
            url = "file://" + os.path.abspath(os.path.join(folder, name + ".html"))
            for kind, detail in complaints(browser, url, title):
                print(f"{name}: {kind}: {detail}")
                faults += 1
            for looks in ((1280, "light"), (1280, "dark"), (360, "light"), (800, "light", "print")):
                picture(browser, os.path.join(folder, f"{name}-{'-'.join(map(str, looks))}.png"),
                        *looks)
            count += 1
    finally:
        browser.close()
    print(f"{count} pages, {faults} faults; pictures are in {folder}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
