"""Times whole imports of the campaign against other ways of doing the same; see scripts/benchmark."""

import argparse

from lists import compare_lists
from measuring import OUTPUT, machine
from trees import compare_trees


def positive(text):
    number = int(text)
    if number < 1:
        raise ValueError(text)
    return number


def sizes(text):
    return sorted({positive(size) for size in text.split(",")})


def parse_options():
    parser = argparse.ArgumentParser(prog="scripts/benchmark", description="Times whole imports.")
    parser.add_argument("--files", metavar="N[,N...]", type=sizes, default=[200_000, 1_000_000])
    parser.add_argument("--paths", metavar="N", type=positive, default=4_000_000)
    parser.add_argument("--before", metavar="PROGRAM", help="an earlier casetable")
    parser.add_argument(
        "--runs", metavar="R", type=positive, help="default: 7, and 3 above 500,000 files"
    )
    parser.add_argument("--duckdb", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--pandas", action="store_true", help=argparse.SUPPRESS)
    return parser.parse_args()


def main():
    options = parse_options()
    OUTPUT.mkdir(parents=True, exist_ok=True)
    print(f"{machine()}\n")
    compare_trees(options)
    compare_lists(options)


main()
