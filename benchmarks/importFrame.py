"""importFrame.py ROOT MARKER...: the import of import.py as a dataframe script, for comparison."""

import os
import sys
import time

import pandas

NUMBER = r"([-+]?(?:\d+(?:\.\d+)?|\.\d+)(?:[DEde][-+]?\d+)?)"


def main(root, *markers):
    start = time.perf_counter()
    paths = []
    below = len(os.path.join(root, ""))
    for folder, _, names in os.walk(root):
        prefix = os.path.join(folder, "")[below:]
        paths += [prefix + name for name in names]
    values = pandas.Series(sorted(paths)).str.extract(".*?".join(m + NUMBER for m in markers))
    cases = values.dropna().groupby(list(values.columns), sort=False).ngroup()
    seconds = time.perf_counter() - start
    print(f"import {seconds:.6f}\nfiles {len(paths)}\ncases {cases.nunique()}")


main(*sys.argv[1:])
