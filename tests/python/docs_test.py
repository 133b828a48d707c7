"""Every example of the pages on Python gives what the page shows."""

import doctest
import re

import pytest

from conftest import EXAMPLES, ROOT

FLAGS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE


@pytest.mark.parametrize("page", ["docs/python.md"])
def test_examples_give_what_they_show(page, monkeypatch):
    monkeypatch.chdir(EXAMPLES)
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.DOTALL)
    examples = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, page, page, 0)
    assert len(examples.examples) > 10
    told = []
    runner = doctest.DocTestRunner(optionflags=FLAGS)
    runner.run(examples, out=told.append)
    assert runner.summarize(verbose=False).failed == 0, "".join(told)
