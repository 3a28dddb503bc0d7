"""import.py ROOT MARKER...: the import of number markers as a page of plain Python, for comparison.
import.py --list FILE MARKER...: the same of the paths in a file, a line each.

Prints the seconds of the import and what it found. On the campaign that is the same as floor's; a
marker that no number follows, or a number such as 5.e6, is read otherwise.
"""

import os
import re
import sys
import time

NUMBER = rb"([-+]?(?:\d+(?:\.\d+)?|\.\d+)(?:[DEde][-+]?\d+)?)"


def walk(root):
    """The paths of the files below `root`, relative to it."""
    files = []
    below = len(os.path.join(root, b""))
    for folder, _, names in os.walk(root):
        prefix = os.path.join(folder, b"")[below:]
        files += [prefix + name for name in names]
    return files


def group(files, markers):
    """The files of each case by its values; the cases in the byte order of their first paths."""
    search = re.compile(
        b".*?".join(re.escape(marker) + NUMBER for marker in markers), re.DOTALL
    ).search
    cases = {}
    for path in sorted(files):
        if match := search(path):
            cases.setdefault(match.groups(), []).append(path)
    return cases


def read(file):
    with open(file, "rb") as lines:
        return lines.read().splitlines()


def main(*words):
    start = time.perf_counter()
    if words[0] == b"--list":
        files, markers = read(words[1]), words[2:]
    else:
        files, markers = walk(words[0]), words[1:]
    cases = group(files, markers)
    table = list(zip(*cases))
    seconds = time.perf_counter() - start
    print(f"import {seconds:.6f}\nfiles {len(files)}\ncases {len(table[0]) if table else 0}")


main(*map(os.fsencode, sys.argv[1:]))
