"""check_includes.py ROOT TABLE: fails where a source file under ROOT includes what TABLE does not let
its room include, where a room is not in TABLE, and where a room has no README.md."""
import fnmatch
import os
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
TOPS = ('app', 'capi', 'common', 'fuzz', 'host', 'math', 'svm', 'tools')
SYSTEM = re.compile(r'^(sys/.*|linux/.*|unistd\.h|fcntl\.h|poll\.h|dlfcn\.h|locale\.h|math\.h)$')
INTRINSICS = re.compile(r'^([a-z0-9]+intrin|immintrin|x86intrin|arm_neon|cpuid)\.h$')


def library_of(header):
    """The name by which the table calls the library of a header; None for the standard library's."""
    if SYSTEM.match(header):
        return 'system'
    if INTRINSICS.match(header):
        return 'intrinsics'
    if header == 'pcre2.h':
        return 'pcre2'
    if '/' in header:
        return header.split('/')[0]
    return header if header.endswith('.h') else None


def read_table(path):
    rooms = {}
    for number, line in enumerate(open(path, encoding='utf-8'), 1):
        line = line.split('#')[0].strip()
        if not line:
            continue
        room, below, libraries = (part.strip() for part in line.split('|'))
        for other in below.split():
            if other not in rooms and not other.startswith('tests/'):
                sys.exit(f'{path}:{number}: {room} may not include {other}, which is not below it')
        rooms[room] = (set(below.split()), libraries.split())
    return rooms


def sources(root):
    for top in TOPS:
        for folder, _, files in os.walk(os.path.join(root, top)):
            for name in sorted(files):
                if name.endswith(('.h', '.cpp', '.inc')):
                    yield os.path.relpath(os.path.join(folder, name), root)


def complaint(root, rooms, source, quoted, included):
    """What is wrong with the include; None where nothing is."""
    room = os.path.dirname(source)
    below, libraries = rooms[room]
    if quoted:
        target = os.path.dirname(included)
        if not target or not os.path.exists(os.path.join(root, included)):
            return f'"{included}" is not a path from the root of the project'
        if target != room and target not in below:
            return f'{room} may not include {target}'
        return None
    library = library_of(included)
    if library is None:
        return None
    for allowed in libraries:
        name, _, pattern = allowed.partition('@')
        if name == library and (not pattern or fnmatch.fnmatch(os.path.basename(source), pattern)):
            return None
    return f'{source} may not include <{included}> ({library})'


def main(root, table):
    rooms = read_table(table)
    wrong, seen = [], 0
    for source in sources(root):
        room = os.path.dirname(source)
        if room not in rooms:
            wrong.append(f'{source}: {room} has no place in the order of rooms')
            continue
        if not os.path.exists(os.path.join(root, room, 'README.md')):
            wrong.append(f'{room} has no README.md')
        with open(os.path.join(root, source), encoding='utf-8') as text:
            for number, line in enumerate(text, 1):
                match = INCLUDE.match(line)
                if not match:
                    continue
                seen += 1
                what = complaint(root, rooms, source, match[1] == '"', match[2])
                if what:
                    wrong.append(f'{source}:{number}: {what}')
    for line in sorted(set(wrong)):
        print(line)
    if not seen:
        print(f'no include found under {root}')
    return bool(wrong) or not seen


if __name__ == '__main__':
    sys.exit(main(sys.argv[1], sys.argv[2]))
