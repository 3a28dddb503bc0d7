"""Runs commands in turn and keeps what they took; see scripts/benchmark.

Everything that this makes stands in build/benchmark, where the programs must have been built.
"""

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
PROGRAMS = BUILD / "benchmarks"
OUTPUT = BUILD / "output"
CASETABLE = BUILD / "casetable" / "casetable"

MARKERS = ["Mach", "AoA", "Re", "run_"]
# Reads the same values; Campaign.cpp has it too.
TEMPLATE = "**Mach{Mach:number}[_][/]AoA{AoA:number}/Re{Re:number}/run_{run_:number}/*"
BY_MARKERS = [word for marker in MARKERS for word in ("-n", marker)]
BASELINE = "casetable"


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


def run_in_turn(programs, runs, agreed, what):
    """Measures all so often, each time one behind the other, as the machine has moods."""
    for run in range(runs):
        say(f"{what}: run {run + 1} of {runs}")
        for program in programs:
            program.measure(agreed)


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
    """What each program took; `files` is how many paths each reads."""
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


def ratio(left, right):
    return f"{left / right:.2f}" if left is not None and right else "not measured"


def machine():
    cpu = re.search(r"^model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text(), re.M)
    cache = (BUILD / "CMakeCache.txt").read_text()
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
