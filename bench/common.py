"""What the whole-run benchmarks share: workloads, databases, runs, counts.

Every run takes place in the folder of its database, which is a fresh copy,
since the program writes beside what it reads.  Wrong usage ends with status 2;
a run that fails raises Failed, so that the next workload still gets its turn.
"""

import csv
import dataclasses
import datetime
import gzip
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator
from pathlib import Path
from typing import NoReturn

BENCH = Path(__file__).resolve().parent
TREE = BENCH.parent
GENERATE = "generate:"  # a file column that starts so holds settings instead
GNU_TIME = "/usr/bin/time"
COLLECTED = re.compile(r"Collected : (\d+)")
LAST_LEVEL = "8388608,16,64"  # bytes, ways and bytes of a line, for cachegrind
MISSES = re.compile(r"LLd misses: +[\d,]+ +\( *([\d,]+) rd +\+ +([\d,]+) wr\)")
MISPREDICTS = re.compile(r"Mispredicts: +([\d,]+)")
CPU_TIME_LINE = re.compile(rb"(Elapsed User CPU Time:)[^\n]*")
TABLE_HEADING = re.compile(r" *Size +Candidates +Frequent Patterns *")
TABLE_ROW = re.compile(r" *(\d+)(?: +(\d+))? +(\d+) *")
TOTAL = re.compile(r"Total Number of Frequent Patterns Found: +(\d+)")


@dataclasses.dataclass(frozen=True)
class Program:
    name: str
    path: Path


@dataclasses.dataclass(frozen=True)
class Workload:
    name: str
    file: str  # relative to the data folder, or "generate:" and settings
    options: list[str]
    more: tuple[str, ...] = ()  # the columns behind these


@dataclasses.dataclass(frozen=True)
class Figures:
    wall: float  # seconds
    cpu: float  # seconds, user and system
    peak: int  # KiB


@dataclasses.dataclass(frozen=True)
class Misses:
    """What a run waits for, by cachegrind."""
    reads: int  # of data, that miss the last level of cache
    writes: int
    branches: int  # mispredicted


@dataclasses.dataclass(frozen=True)
class Limits:
    """What a process may take before it is ended."""
    cpu: int  # seconds
    memory: int  # bytes of address space

    def set(self) -> None:
        """For this process and those that it starts."""
        # The hard limit would end it by a signal that can mean anything.
        resource.setrlimit(resource.RLIMIT_CPU, (self.cpu, self.cpu + 5))
        resource.setrlimit(resource.RLIMIT_AS, (self.memory, self.memory))


@dataclasses.dataclass(frozen=True)
class Level:
    """A row of the report's table."""
    size: int
    candidates: int  # 0 for sizes 1 and 2, which have none
    frequent: int


class Failed(Exception):
    """A workload that cannot be measured; the text says why."""


class TooMuch(Failed):
    """A run that was ended at a limit."""


def usage_error(message: str) -> NoReturn:
    print(f"bench/{Path(sys.argv[0]).name}: {message}", file=sys.stderr)
    sys.exit(2)


# What to run


def read_workloads(path: Path) -> Iterator[Workload]:
    if not path.is_file():
        usage_error(f"no such workload file: {path}")
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if not line or line.startswith("#"):
            continue
        columns = line.split("\t")
        if len(columns) < 3:
            usage_error(f"{path}:{number}: expected name, file and options")
        yield Workload(columns[0], columns[1], shlex.split(columns[2]),
                       tuple(columns[3:]))


def select_workloads(files: list[Path], only: str,
                     data: Path | None) -> list[Workload]:
    """The workloads whose name matches, each with its database at hand."""
    try:
        pattern = re.compile(only)
    except re.error as error:
        usage_error(f"--only '{only}': {error}")
    workloads = [workload for file in files for workload in read_workloads(file)
                 if pattern.search(workload.name)]
    if not workloads:
        usage_error(f"no workload matches '{only}'")
    check_databases(workloads, data)
    return workloads


def check_databases(workloads: list[Workload], data: Path | None) -> None:
    if data is not None and not data.is_dir():
        usage_error(f"no such data folder: {data}")
    for workload in workloads:
        if workload.file.startswith(GENERATE):
            continue
        if data is None:
            usage_error(f"workload '{workload.name}' needs --data")
        if not (data / workload.file).is_file():
            usage_error(f"workload '{workload.name}': no such file: "
                        f"{data / workload.file}")


def find_program(argument: str, default_name: str) -> Program:
    """A program given as PATH or NAME=PATH."""
    name, equals, path = argument.rpartition("=")
    found = Path(path).resolve()
    if not found.is_file() or not os.access(found, os.X_OK):
        usage_error(f"no such program: {path}")
    return Program(name if equals else default_name, found)


def check_tools(needs_valgrind: bool) -> None:
    if not os.access(GNU_TIME, os.X_OK):
        usage_error(f"GNU time is missing: {GNU_TIME}")
    if needs_valgrind and shutil.which("valgrind") is None:
        usage_error("valgrind is missing, which counts instructions")


def provide_database(workload: Workload, data: Path | None,
                     folder: Path) -> Path:
    """Put the workload's database into folder as plain text."""
    if workload.file.startswith(GENERATE):
        target = folder / "generated.txt"
        settings = workload.file.removeprefix(GENERATE)
        made = subprocess.run([sys.executable, BENCH / "generate_database",
                               settings, "--out", target])
        if made.returncode != 0:
            raise Failed(f"cannot generate '{settings}'")
        return target
    assert data is not None
    source = data / workload.file
    if source.suffix != ".gz":
        return Path(shutil.copy(source, folder))
    target = folder / source.stem
    with gzip.open(source) as packed, open(target, "wb") as plain:
        shutil.copyfileobj(packed, plain)
    return target


def build(folder: str, target: str, *settings: str) -> None:
    """Configure the tree into folder, relative to it, and build target."""
    if shutil.which("cmake") is None:
        usage_error("cmake is missing, which builds the program")
    place = str(TREE / folder)
    configure = ["cmake", "-S", str(TREE), "-B", place,
                 "-DCMAKE_BUILD_TYPE=Release", *settings]
    make = ["cmake", "--build", place, "--target", target]
    for command in (configure, make):
        # What they say is not part of the tables on standard output.
        if subprocess.run(command, stdout=sys.stderr).returncode != 0:
            print(f"bench/{Path(sys.argv[0]).name}: cannot build {target} "
                  f"into {place}", file=sys.stderr)
            sys.exit(1)


# One run


def run_timed(program: Program, options: list[str], database: Path,
              stdout: Path, stderr: Path,
              limits: Limits | None = None) -> Figures:
    """Run in the database's folder.

    GNU time stands between this process and the program because a process
    inherits the peak memory of the one that started it, and Python's is
    larger than that of many a run.
    """
    with tempfile.NamedTemporaryFile("r") as report:
        command = [GNU_TIME, "-f", "%M", "-o", report.name, str(program.path),
                   *options, database.name]
        with open(stdout, "wb") as out, open(stderr, "wb") as err:
            start = time.perf_counter()
            child = subprocess.Popen(command, cwd=database.parent,
                                     stdin=subprocess.DEVNULL,
                                     stdout=out, stderr=err,
                                     preexec_fn=limits and limits.set)
            _, status, used = os.wait4(child.pid, 0)
            wall = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
        cpu = used.ru_utime + used.ru_stime
        if child.returncode != 0 and limits is not None:
            if child.returncode == 128 + signal.SIGXCPU:  # by GNU time
                raise TooMuch(f"more than {limits.cpu} s of CPU time")
            if b"not enough memory" in stderr.read_bytes():
                raise TooMuch(f"more than {limits.memory >> 20} MiB")
        if child.returncode != 0:
            raise Failed(f"{program.name} ended with status "
                         f"{child.returncode}: {stderr.read_text().strip()}")
        peak = int(report.read().split()[-1])
    return Figures(wall, cpu, peak)


def run_reported(program: Program, options: list[str],
                 database: Path) -> tuple[Figures, str]:
    """Run in the database's folder: the figures, and the report."""
    with tempfile.TemporaryDirectory() as scratch:
        out, err = Path(scratch, "stdout"), Path(scratch, "stderr")
        figures = run_timed(program, options, database, out, err)
        return figures, out.read_text()


def run_once(program: Program, options: list[str],
             database: Path) -> tuple[Figures, dict[str, bytes]]:
    """Run in the database's folder: the figures, and the results by name."""
    with tempfile.TemporaryDirectory() as scratch:
        out, err = Path(scratch, "stdout"), Path(scratch, "stderr")
        figures = run_timed(program, options, database, out, err)
        results = {"standard output": out.read_bytes(),
                   "standard error": err.read_bytes()}
    for file in database.parent.iterdir():
        if file != database:
            results[file.name] = file.read_bytes()
    masked = {name: CPU_TIME_LINE.sub(rb"\1", text)
              for name, text in results.items()}
    return figures, masked


def compare_results(results: list[dict[str, bytes]]) -> None:
    first, last = results[0], results[-1]
    differing = [name for name in sorted(first.keys() | last.keys())
                 if first.get(name) != last.get(name)]
    if differing:
        raise Failed("results differ: " + ", ".join(differing))


def run_under_valgrind(options: list[str], program: Program,
                       arguments: list[str], database: Path) -> str:
    """What valgrind says of a run."""
    with tempfile.NamedTemporaryFile("r") as log:
        command = ["valgrind", *options, f"--log-file={log.name}",
                   str(program.path), *arguments, database.name]
        ended = subprocess.run(command, cwd=database.parent,
                               stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
        said = log.read()
    if ended.returncode != 0:
        raise Failed(f"{program.name} under valgrind ended with status "
                     f"{ended.returncode}")
    return said


def count_instructions(program: Program, options: list[str],
                       database: Path) -> int:
    """User-space instructions of one run, which no other process disturbs."""
    collected = COLLECTED.search(run_under_valgrind(
        ["--tool=callgrind", "--callgrind-out-file=/dev/null"], program,
        options, database))
    if collected is None:
        raise Failed(f"valgrind counted nothing for {program.name}")
    return int(collected[1])


def count_misses(program: Program, options: list[str],
                 database: Path) -> Misses:
    """Misses of one run with a last level of cache as LAST_LEVEL tells."""
    said = run_under_valgrind(
        ["--tool=cachegrind", "--cachegrind-out-file=/dev/null",
         "--branch-sim=yes", f"--LL={LAST_LEVEL}"], program, options, database)
    misses, branches = MISSES.search(said), MISPREDICTS.search(said)
    if misses is None or branches is None:
        raise Failed(f"valgrind counted no misses for {program.name}")
    return Misses(*(int(number.replace(",", "")) for number in
                    (misses[1], misses[2], branches[1])))


# What a run has found


def count_patterns(database: Path) -> int:
    """Patterns in the pattern file that stands beside the database."""
    file = database.with_suffix(".fp")
    if not file.is_file():
        raise Failed("no pattern file was written")
    with open(file, "rb") as patterns:
        return sum(line.startswith(b"t #") for line in patterns)


def read_total(report: str) -> int:
    """The report's number of frequent patterns."""
    total = TOTAL.search(report)
    if total is None:
        raise Failed("the report has no number of frequent patterns")
    return int(total[1])


def read_levels(report: str) -> list[Level]:
    """The report's table, which begins with a heading and ends with a gap."""
    lines = iter(report.splitlines())
    for line in lines:
        if TABLE_HEADING.fullmatch(line):
            break
    levels = []
    for line in lines:
        row = TABLE_ROW.fullmatch(line)
        if row is None:
            break
        levels.append(Level(int(row[1]), int(row[2] or 0), int(row[3])))
    if sum(level.frequent for level in levels) != read_total(report):
        raise Failed("the report's table does not add up to its total")
    return levels


# What is kept


class Table:
    """Raw rows, appended to a file as they come; nothing without a file.

    Each begins with the time and the machine.
    """

    def __init__(self, path: Path | None, columns: list[str]) -> None:
        headings = ["date", "cpu", "cores", *columns]
        self._path = path
        self._machine = [cpu_model(), str(os.cpu_count())]
        try:
            if path is not None and not path.exists():
                self._write(headings)
            elif path is not None:
                with open(path, encoding="utf-8", newline="") as kept:
                    if next(csv.reader(kept, delimiter="\t"), []) != headings:
                        usage_error(f"--out: {path} has other columns")
        except OSError as error:
            usage_error(f"--out: {error}")

    def add(self, *cells: str) -> None:
        now = datetime.datetime.now(datetime.timezone.utc)
        self._write([now.strftime("%Y-%m-%dT%H:%M:%SZ"), *self._machine,
                     *cells])

    def _write(self, row: list[str]) -> None:
        if self._path is not None:
            with open(self._path, "a", encoding="utf-8", newline="") as out:
                csv.writer(out, delimiter="\t",
                           lineterminator="\n").writerow(row)


def cpu_model() -> str:
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return os.uname().machine
