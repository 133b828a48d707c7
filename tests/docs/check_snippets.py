"""check_snippets.py PAGE FILE...: fails where a block of C in PAGE is not, line by line, part of one of the
programs FILE, which tests compile; and where PAGE has none."""
import pathlib
import sys

page, programs = sys.argv[1], [pathlib.Path(name).read_text(encoding='utf-8') for name in sys.argv[2:]]
blocks, block = [], None
for line in pathlib.Path(page).read_text(encoding='utf-8').splitlines():
    if block is None and line in ('```c', '```cpp'):
        block = []
    elif block is not None and line == '```':
        blocks.append('\n'.join(block) + '\n')
        block = None
    elif block is not None:
        block.append(line)
wrong = [block for block in blocks if not any(block in program for program in programs)]
for block in wrong:
    print(f'{page}: not in {" or ".join(sys.argv[2:])}:\n{block}')
sys.exit(bool(wrong) or not blocks)
