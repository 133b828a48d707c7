#!/usr/bin/env python3
"""make_picture.py PROGRAM EXAMPLES FILE: writes the picture of a report that README.md shows."""

import base64
import os
import subprocess
import sys
import tempfile

from browser import Browser

WIDTH = 1180


def main():
    program, examples, target = sys.argv[1:]
    tumour = os.path.join(examples, "tumour")
    with tempfile.TemporaryDirectory() as folder:
        page = os.path.join(folder, "report.html")
        subprocess.run([program, "report", os.path.join(tumour, "model.pmml"), "--input",
                        os.path.join(tumour, "cases.csv"), "--actual", "diagnosis", "-o", page],
                       check=True)
        browser = Browser()
        try:
            browser.look(WIDTH, 900)
            browser.open("file://" + page)
            # The last of the decision values, the reliability diagram, and what the inputs do, each
            # as it stands on the page, in one row.
            browser.evaluate("""(() => {
              const figures = [...document.querySelectorAll('figure')];
              const named = (text) => figures.find((f) => f.textContent.includes(text));
              const shown = [named('Machine 1'), named('Reliability'), named('Which inputs'),
                             named('surest for'), document.querySelector('#inputs .figures + h3 + p ~ .figures figure'),
                             figures[figures.length - 1]];
              const grid = document.createElement('div');
              grid.className = 'figures';
              grid.style.gridTemplateColumns = 'repeat(3, 1fr)';
              grid.style.margin = '0';
              grid.append(...shown);
              const page = document.querySelector('.page');
              page.replaceChildren(grid);
              page.style.padding = '12px';
            })()""")
            height = browser.evaluate("document.documentElement.scrollHeight")
            shot = browser.send("Page.captureScreenshot", format="png", captureBeyondViewport=True,
                                clip={"x": 0, "y": 0, "width": WIDTH, "height": height,
                                      "scale": 0.75})
        finally:
            browser.close()
    with open(target, "wb") as file:
        file.write(base64.b64decode(shot["data"]))


if __name__ == "__main__":
    main()
