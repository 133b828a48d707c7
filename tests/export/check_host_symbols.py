"""check_host_symbols.py NM LIBRARY LIST [--write]: fails where the functions and data that LIBRARY offers
are not those of LIST, one a line, sorted. With --write LIST becomes what LIBRARY offers.

Weak symbols are left out: which inline functions a compiler keeps is its own affair."""
import subprocess
import sys

nm, library, listed = sys.argv[1:4]
table = subprocess.run([nm, '-DC', '--defined-only', library], check=True, text=True,
                       stdout=subprocess.PIPE).stdout
offered, foreign = set(), []
for line in table.splitlines():
    kind, name = line[17:].split(' ', 1)
    if 'svmscore' not in name and 'MCZandor_850' not in name:
        foreign.append(name)
    elif kind not in 'WVu':
        offered.add(name)
if '--write' in sys.argv:
    with open(listed, 'w', encoding='utf-8') as file:
        file.writelines(f'{name}\n' for name in sorted(offered))
with open(listed, encoding='utf-8') as file:
    wanted = set(file.read().splitlines())
for name in sorted(offered - wanted):
    print(f'offered, and not in {listed}: {name}')
for name in sorted(wanted - offered):
    print(f'in {listed}, and not offered: {name}')
for name in sorted(foreign):
    print(f'offered, though of another library: {name}')
sys.exit(bool(foreign) or offered != wanted or not offered)
