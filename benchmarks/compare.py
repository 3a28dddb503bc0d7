"""Times whole imports of the campaign against other ways of doing the same; see scripts/benchmark.

Everything that this makes stands in build/benchmark, where the programs must have been built.
"""

import argparse
import datetime
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import time

SOURCES = pathlib.Path(__file__).resolve().parent
BUILD = SOURCES.parent / "build" / "benchmark"
PROGRAMS = BUILD / "release" / "benchmarks"
TREES = BUILD / "trees"
OUTPUT = BUILD / "output"

MARKERS = ["Mach", "AoA", "Re", "run_"]
# Reads the same values; Campaign.cpp has it too.
TEMPLATE = "**Mach{Mach:number}[_][/]AoA{AoA:number}/Re{Re:number}/run_{run_:number}/*"
BASELINE = "casetable"

# The campaign of so many files has 2,000 folders.
FILES_OF_SLOW_TREE = 16_000


def say(text):
    print(f"scripts/benchmark: {text}", file=sys.stderr, flush=True)


def stop(text):
    sys.exit(f"scripts/benchmark: {text}")


class Program:
    """A command with what its runs gave; `read` tells what a run found from its output file."""

    def __init__(self, name, command, read, environment=None):
        self.name = name
        self.environment = {**os.environ, **(environment or {})}
        self.command = [str(word) for word in command]
        self.read = read
        self.seconds = []
        self.peaks = []
        self.stages = {}

    def run(self):
        """Runs once; returns the wall seconds, the peak memory in bytes and what was found."""
        output = OUTPUT / self.name
        peak = OUTPUT / "peak"
        # Not os.wait4: to the kernel a child's peak is at least that of the process that forked it,
        # and this one is bigger than some of the programs. time(1) is not.
        command = [shutil.which("time"), "-f", "%M", "-o", peak, *self.command]
        with open(output, "wb") as file:
            start = time.perf_counter()
            status = subprocess.run(
                command, stdin=subprocess.DEVNULL, stdout=file, env=self.environment
            ).returncode
            seconds = time.perf_counter() - start
        if status != 0:
            stop(f"exit code {status} from {' '.join(self.command)}")
        return seconds, int(peak.read_text()) * 1024, self.read(output)

    def measure(self, agreed):
        """Runs once and keeps the measurements; `agreed` is what every run must find."""
        seconds, peak, found = self.run()
        self.check(found, agreed)
        self.seconds.append(seconds)
        self.peaks.append(peak)
        for name, value in found.items():
            if isinstance(value, float):
                self.stages.setdefault(name, []).append(value)

    def check(self, found, agreed):
        for name in ("files", "cases"):
            value = found.get(name)
            if value is not None and value != agreed.setdefault(name, value):
                stop(f"{self.name} finds {value} {name}, not {agreed[name]}")

    def median(self, stage=None):
        """The median seconds of a run or of one of its stages; None where there are none."""
        values = self.stages.get(stage, []) if stage else self.seconds
        return statistics.median(values) if values else None

    def peak(self):
        return statistics.median(self.peaks)


def read_lines(name, header=0):
    def read(output):
        with open(output, "rb") as file:
            return {name: sum(1 for _ in file) - header}

    return read


def read_values(output):
    """Reads lines of "name value"; seconds have a decimal point, counts have none."""
    pairs = (line.split() for line in output.read_text().splitlines())
    return {name: float(value) if "." in value else int(value) for name, value in pairs}


def programs_for(root, with_duckdb, with_pandas):
    casetable = [BUILD / "release" / "casetable" / "casetable", root, "-q", "--format", "csv"]
    markers = [word for marker in MARKERS for word in ("-n", marker)]
    programs = [
        Program("stages", [PROGRAMS / "stages", root, "--peers"], read_values),
        Program("stages -t", [PROGRAMS / "stages", root, "--template"], read_values),
        Program(BASELINE, casetable + markers, read_lines("cases", header=1)),
        Program("casetable -t", [*casetable, "-t", TEMPLATE], read_lines("cases", header=1)),
        Program("floor", [PROGRAMS / "floor", root, *MARKERS], read_values),
        Program("find", ["find", root, "-type", "f"], read_lines("files")),
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
    for run in range(runs):
        say(f"{files:,} files: run {run + 1} of {runs}")
        for program in programs.values():
            program.measure(agreed)
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
    markers = [word for marker in MARKERS for word in ("-n", marker)]
    command = [BUILD / "release" / "casetable" / "casetable", root, "-q", "--format", "csv"]
    programs = [
        Program(BASELINE, [*command, *markers], read_lines("cases", header=1), slow),
        Program("find", ["find", root, "-type", "f"], read_lines("files"), slow),
    ]
    say(f"slow folders: {runs} runs")
    agreed = {"files": FILES_OF_SLOW_TREE}
    for _ in range(runs):
        for program in programs:
            program.measure(agreed)
    return {program.name: program for program in programs}


def print_table(head, rows):
    # Figures to the right; the first column is text.
    print("| " + " | ".join(head) + " |")
    print("|---|" + "---:|" * (len(head) - 1))
    for row in rows:
        print("| " + " | ".join(row) + " |")
    print(flush=True)


def span(values, digits):
    return f"{min(values):.{digits}f} to {max(values):.{digits}f}"


def print_programs(files, programs):
    baseline = programs[BASELINE].median()
    print_table(
        ["program", "median s", "min to max s", "peak MB", "B a file", f"time / {BASELINE}"],
        [
            [
                program.name,
                f"{program.median():.3f}",
                span(program.seconds, 3),
                f"{program.peak() / 1e6:.1f}",
                f"{program.peak() / files:,.0f}",
                f"{program.median() / baseline:.2f}",
            ]
            for program in programs.values()
            if not program.name.startswith("stages")
        ],
    )


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


def ratio(left, right):
    return f"{left / right:.2f}" if left is not None and right else "not measured"


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


def machine():
    cpu = re.search(r"^model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    cache = (BUILD / "release" / "CMakeCache.txt").read_text()
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)", cache, re.M).group(1)
    version = subprocess.run([compiler, "--version"], capture_output=True, text=True, check=True)
    return ", ".join(
        [
            cpu.group(1) if cpu else platform.machine(),
            f"{os.cpu_count()} cores",
            f"{platform.system()} {platform.release()}",
            version.stdout.splitlines()[0],
            datetime.date.today().isoformat(),
        ]
    )


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


main()
