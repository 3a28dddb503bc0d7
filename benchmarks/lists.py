"""Imports of the campaign from lists of its paths; see scripts/benchmark."""

import os
import subprocess
import sys

from measuring import (
    BASELINE,
    BUILD,
    BY_MARKERS,
    CASETABLE,
    MARKERS,
    PROGRAMS,
    SOURCES,
    TEMPLATE,
    Program,
    print_programs,
    print_table,
    ratio,
    read_lines,
    read_values,
    run_in_turn,
    say,
    stop,
)

LISTS = BUILD / "lists"


def make_list(paths, command, name):
    """What `command` prints of that number of paths, as a file."""
    file = LISTS / f"{paths}.{name}"
    if not file.exists():
        say(f"making a list of {paths:,} paths: {file.name}")
        LISTS.mkdir(parents=True, exist_ok=True)
        part = LISTS / f"{file.name}.part"
        with open(part, "wb") as output:
            if subprocess.run(command, stdout=output).returncode != 0:
                stop(f"cannot make {part}")
        part.rename(file)
        os.sync()
    return file


def list_in_order(paths):
    return make_list(paths, [PROGRAMS / "make_list", str(paths)], "ordered")


def shuffled_list(paths):
    ordered = list_in_order(paths)
    return make_list(paths, ["shuf", f"--random-source={ordered}", ordered], "shuffled")


def casetable(name, paths, *options, program=CASETABLE, rows="cases"):
    command = [program, "-q", "--format", "csv", "--from-list", paths, *options]
    return Program(name, command, read_lines(rows, header=1))


def programs_for(paths, with_duckdb):
    ordered = list_in_order(paths)
    shuffled = shuffled_list(paths)
    template = ["-t", TEMPLATE]
    programs = [
        casetable(BASELINE, ordered, *BY_MARKERS),
        casetable("casetable -j 1", ordered, *BY_MARKERS, "-j", "1"),
        casetable("casetable -j 2", ordered, *BY_MARKERS, "-j", "2"),
        casetable("casetable, no order", shuffled, *BY_MARKERS),
        casetable("casetable -t", ordered, *template),
        casetable("casetable -t, no order", shuffled, *template),
        casetable("casetable --files", ordered, *BY_MARKERS, "--files", rows="files"),
        casetable("casetable, few cases", ordered, "-n", "Mach", rows="few cases"),
    ]
    python = [sys.executable, SOURCES / "import.py", "--list", ordered, *MARKERS]
    programs.append(Program("Python", python, read_values))
    if with_duckdb:
        for name, file in (("DuckDB", ordered), ("DuckDB, no order", shuffled)):
            command = ["node", SOURCES / "import.mjs", "--list", file, *MARKERS]
            programs.append(Program(name, command, read_values))
    return {program.name: program for program in programs}


def measure(paths, runs, with_duckdb):
    programs = programs_for(paths, with_duckdb)
    run_in_turn(programs.values(), runs, {"files": paths}, f"{paths:,} paths")
    return programs


def measure_growth(paths, runs, before):
    """The import of a twentieth and of twice the paths, and on one thread beside an earlier one."""
    small = list_in_order(paths // 20)
    programs = [
        casetable("small", small, *BY_MARKERS),
        casetable("small -j 1", small, *BY_MARKERS, "-j", "1"),
    ]
    if before:
        programs.append(casetable("before", small, *BY_MARKERS, program=before))
    run_in_turn(programs, 3 * runs, {}, f"{paths // 20:,} paths")
    large = casetable("large", list_in_order(2 * paths), *BY_MARKERS)
    run_in_turn([large], runs, {}, f"{2 * paths:,} paths")
    return {program.name: program for program in [*programs, large]}


def bytes_a_case(programs, cases):
    return (programs[BASELINE].peak() - programs["casetable, few cases"].peak()) / cases


def print_ratios(paths, programs, growth):
    def median(name):
        return programs[name].median() if name in programs else None

    def imported(name):
        return programs[name].median("import") if name in programs else None

    duckdb = imported("DuckDB")
    unordered = imported("DuckDB, no order")
    before = growth["before"].median() if "before" in growth else None
    peak = max(programs[name].peak() for name in (BASELINE, "casetable, no order"))
    by_files = programs["casetable --files"].peak() / paths
    rows = [
        ("in byte order / DuckDB", ratio(median(BASELINE), duckdb)),
        ("no order / DuckDB", ratio(median("casetable, no order"), unordered)),
        ("by a template / DuckDB", ratio(median("casetable -t"), duckdb)),
        ("by a template, no order / DuckDB", ratio(median("casetable -t, no order"), unordered)),
        ("in byte order / Python", ratio(median(BASELINE), imported("Python"))),
        ("-j 2 / -j 1", ratio(median("casetable -j 2"), median("casetable -j 1"))),
        (
            f"time a path at {2 * paths:,} / at {paths // 20:,}",
            ratio(growth["large"].median() / 40, growth["small"].median()),
        ),
        (f"-j 1 at {paths // 20:,} / before", ratio(growth["small -j 1"].median(), before)),
        ("peak memory", f"{peak / 2**20:,.0f} MiB"),
        ("bytes a case", f"{bytes_a_case(programs, paths // 10):,.0f}"),
        ("bytes a file with --files", f"{by_files:,.0f}"),
    ]
    print_table(["ratio", "measured"], [list(row) for row in rows])


def compare_lists(options):
    """Prints what imports of lists of so many paths take."""
    runs = options.runs or 3
    programs = measure(options.paths, runs, options.duckdb)
    growth = measure_growth(options.paths, runs, options.before)
    print(f"## A list of {options.paths:,} paths, runs: {runs}\n")
    print_programs(options.paths, programs)
    print_ratios(options.paths, programs, growth)
