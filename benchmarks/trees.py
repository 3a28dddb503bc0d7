"""Imports of the campaign as a tree, beside other ways of doing the same; see scripts/benchmark."""

import os
import shutil
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
    span,
    stop,
)

TREES = BUILD / "trees"

# The campaign of so many files has 2,000 folders.
FILES_OF_SLOW_TREE = 16_000


def finders(root, environment=None):
    """What lists the files alone: on one thread, and on all."""
    programs = [Program("find", ["find", root, "-type", "f"], read_lines("files"), environment)]
    if shutil.which("fdfind"):
        parallel = ["fdfind", "--unrestricted", "--type", "f", ".", root]
        programs.append(Program("fd", parallel, read_lines("files"), environment))
    return programs


def programs_for(root, with_duckdb, with_pandas):
    casetable = [CASETABLE, root, "-q", "--format", "csv"]
    programs = [
        Program("stages", [PROGRAMS / "stages", root, "--peers"], read_values),
        Program("stages -t", [PROGRAMS / "stages", root, "--template"], read_values),
        Program(BASELINE, casetable + BY_MARKERS, read_lines("cases", header=1)),
        Program("casetable -t", [*casetable, "-t", TEMPLATE], read_lines("cases", header=1)),
        Program("floor", [PROGRAMS / "floor", root, *MARKERS], read_values),
        *finders(root),
        Program("sed, sort", [SOURCES / "import.sh", root, *MARKERS], read_lines("cases")),
        Program("Python", [sys.executable, SOURCES / "import.py", root, *MARKERS], read_values),
    ]
    if with_pandas:
        # Debian's package belongs to Debian's Python.
        frame = ["/usr/bin/python3", SOURCES / "importFrame.py", root, *MARKERS]
        programs.append(Program("pandas", frame, read_values))
    if with_duckdb:
        duckdb = ["node", SOURCES / "import.mjs", root, *MARKERS]
        programs.append(Program("DuckDB", duckdb, read_values))
    return {program.name: program for program in programs}


def make_tree(files):
    tree = TREES / str(files)
    if not tree.exists():
        say(f"making a tree of {files:,} files")
        TREES.mkdir(parents=True, exist_ok=True)
        # Under another name until it is whole; such a rest of an interrupted run goes first.
        part = TREES / f"{files}.part"
        if part.exists():
            shutil.rmtree(part)
        if subprocess.run([PROGRAMS / "make_tree", part, str(files)]).returncode != 0:
            stop(f"cannot make {part}")
        part.rename(tree)
        # Else the first runs would compete with the writing.
        os.sync()
    return tree


def measure(files, runs, options, with_qregexp):
    root = make_tree(files)
    programs = programs_for(root, options.duckdb, options.pandas)
    agreed = {"files": files}
    say(f"{files:,} files: one run of each to warm the cache")
    for program in programs.values():
        program.check(program.run()[2], agreed)
    run_in_turn(programs.values(), runs, agreed, f"{files:,} files")
    if with_qregexp:
        say(f"{files:,} files: the auxiliary files with QRegExp, once")
        stages = programs["stages"]
        slow = Program("qregexp", [*stages.command, "--qregexp"], read_values)
        slow.measure(agreed)
        name = "auxFilesWithQRegExp"
        stages.stages[name] = slow.stages.get(name, [])
    return programs


def measure_slow_folders(runs):
    """Runs where opening a folder takes a millisecond more."""
    root = make_tree(FILES_OF_SLOW_TREE)
    slow = {"LD_PRELOAD": str(PROGRAMS / "libslow_folders.so")}
    command = [CASETABLE, root, "-q", "--format", "csv", *BY_MARKERS]
    programs = [
        Program(BASELINE, command, read_lines("cases", header=1), slow),
        *finders(root, slow),
    ]
    run_in_turn(programs, runs, {"files": FILES_OF_SLOW_TREE}, "slow folders")
    return {program.name: program for program in programs}


def print_stages(programs):
    print_table(
        ["stage", "median s", "min to max s"],
        [
            [f"{program.name}: {stage}", f"{program.median(stage):.4f}", span(values, 4)]
            for program in programs.values()
            for stage, values in program.stages.items()
            if values
        ],
    )


def without_walk(program):
    return program.median("import") - program.median("walk")


def print_ratios(files, programs):
    stages = programs["stages"]
    by_template = programs["stages -t"]
    floor = programs["floor"]
    duckdb = programs["DuckDB"].median("import") if "DuckDB" in programs else None
    imported = stages.median("import")
    peak = programs[BASELINE].peak() / files
    rows = [
        ("casetable / find", programs[BASELINE].median(), programs["find"].median()),
        ("walk / find", stages.median("walk"), programs["find"].median()),
        ("import by a template / by markers", by_template.median("import"), imported),
        (
            "import by a template / by markers, without the walk",
            without_walk(by_template),
            without_walk(stages),
        ),
        (
            "import by a template / Python's import",
            by_template.median("import"),
            programs["Python"].median("import"),
        ),
        (
            "setMetadataPatternList / floor's match",
            stages.median("setMetadataPatternList"),
            floor.median("match"),
        ),
        ("import / floor's import", imported, floor.median("import")),
        ("import / DuckDB's import", imported, duckdb),
        ("import / Python's import", imported, programs["Python"].median("import")),
        (
            "auxFilesWithQRegExp / auxFiles",
            stages.median("auxFilesWithQRegExp"),
            stages.median("auxFiles"),
        ),
        (
            "extractAgain / fillByHand",
            stages.median("extractAgain"),
            stages.median("fillByHand"),
        ),
    ]
    print_table(
        ["ratio", "measured"],
        [
            *([what, ratio(left, right)] for what, left, right in rows),
            [f"peak memory of {BASELINE} a file", f"{peak:,.0f} B ({peak / 1024:.2f} KiB)"],
        ],
    )


def print_growth(imports):
    small, large = 200_000, 2_000_000
    if small in imports and large in imports:
        growth = ratio(imports[large] / large, imports[small] / small)
        print_table(
            ["ratio", "measured"],
            [[f"import's time a file at {large:,} files / at {small:,}", growth]],
        )


def compare_trees(options):
    """Prints what imports of campaigns of so many files take."""
    imports = {}
    for files in options.files:
        runs = options.runs or (3 if files > 500_000 else 7)
        programs = measure(files, runs, options, with_qregexp=files == options.files[0])
        imports[files] = programs["stages"].median("import")
        print(f"## {files:,} files, runs: {runs}\n")
        print_programs(files, programs)
        print_stages(programs)
        print_ratios(files, programs)
    print_growth(imports)
    slow = measure_slow_folders(options.runs or 5)
    print("## Opening a folder takes 1 ms more\n")
    print_programs(FILES_OF_SLOW_TREE, slow)
