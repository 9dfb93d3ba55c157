"""What the fault tests share: runs, in a fresh folder and under strace, and what came of them.

Each test file is a script that takes the programs as arguments.  The runs are of
the example database, small but with outputs of several buffers each.
"""

import dataclasses
import itertools
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Self

TREE = Path(__file__).resolve().parents[2]
DATABASE = (TREE / "examples" / "molecules.txt").read_bytes()
INPUT = "db.txt"
OUTPUTS = {"db.fp", "db.tid", "db.pc", "db.c.g", "db.ls"}
SECONDS = 600  # for one run, under the slowest of sanitizers

# The runs that are disturbed, by what they are for.
RUNS = {
    "all outputs": ["-s", "10", "-t", "-p", "--candidates", INPUT],
    "maximal patterns": ["-s", "10", "-t", "-x", INPUT],
    "labels": ["--save-labels", INPUT],
}

STDOUT = "standard output"
TEMPORARY = "temporary file"
OURS = OUTPUTS | {INPUT, STDOUT, TEMPORARY}  # a sanitizer has files of its own
REPORT = "kestro-report-"  # what the names of files that get reports begin with

Files = dict[str, bytes]


@dataclasses.dataclass(frozen=True)
class Ended:
    """A run that has ended, the CPU times in its texts masked."""

    status: int  # negative: the signal that ended it
    out: bytes
    err: str
    files: Files

    def results(self) -> tuple[bytes, Files]:
        return self.out, self.files


class Programs:
    """The programs that the command line names."""

    kestro = Path()
    short_writes = Path()


def main() -> None:
    """Run the tests of the calling script on the programs of the command line."""
    if len(sys.argv) < 3:
        sys.exit(f"usage: {sys.argv[0]} KESTRO SHORT_WRITES [TEST ...]")
    Programs.kestro = Path(sys.argv.pop(1)).resolve()
    Programs.short_writes = Path(sys.argv.pop(1)).resolve()
    unittest.main(module="__main__", verbosity=2)


def environment() -> dict[str, str]:
    """Ours, without the search for leaks, which cannot go on in a traced process."""
    options = os.environ.get("ASAN_OPTIONS")
    leaks = "detect_leaks=0"
    return {
        **os.environ,
        "LC_ALL": "C",
        "ASAN_OPTIONS": f"{options}:{leaks}" if options else leaks,
    }


def masked(data: bytes) -> bytes:
    return re.sub(rb"(Elapsed User CPU Time: +)\d+\.\d\[sec\]", rb"\1T[sec]", data)


def read_files(folder: Path) -> Files:
    return {p.name: masked(p.read_bytes()) for p in folder.iterdir() if p.is_file()}


class Folder:
    """A fresh folder that holds the database, gone at the end of a with statement."""

    def __enter__(self) -> Self:
        self.path = Path(tempfile.mkdtemp(prefix="kestro-faults-"))
        self.write(INPUT, DATABASE)
        return self

    def __exit__(self, *_: object) -> None:
        shutil.rmtree(self.path)

    def write(self, name: str, data: bytes) -> None:
        (self.path / name).write_bytes(data)

    def read(self, name: str) -> bytes:
        return masked((self.path / name).read_bytes())

    def run(
        self,
        *words: str,
        before: tuple[str, ...] = (),
        program: Path | None = None,
        **how: object,
    ) -> Ended:
        """Run the program, or a copy of it, behind the words of one that starts it."""
        with tempfile.NamedTemporaryFile(prefix=REPORT) as report:
            settings = {"stdout": report, "env": environment(), **how}
            ended = subprocess.run(
                [*before, str(program or Programs.kestro), *words],
                cwd=self.path,
                stdin=subprocess.DEVNULL,
                stderr=subprocess.PIPE,
                timeout=SECONDS,
                check=False,
                **settings,
            )
            out = Path(report.name).read_bytes()
        return Ended(
            ended.returncode,
            masked(out),
            ended.stderr.decode(errors="replace"),
            read_files(self.path),
        )


def run_once(*words: str, **how: object) -> Ended:
    with Folder() as folder:
        return folder.run(*words, **how)


def undisturbed(words: list[str]) -> Ended:
    ended = run_once(*words)
    if ended.status or ended.err:
        raise AssertionError(f"status {ended.status} undisturbed: {ended.err}")
    return ended


def tracing(trace: str, calls: str, *more: str) -> tuple[str, ...]:
    """The words that start a program whose calls are noted in the file trace."""
    return ("strace", "-qq", "-y", "-o", trace, "-e", f"trace={calls}", *more)


def injecting(fault: str) -> tuple[str, ...]:
    """The words that start a program with a fault, "CALL:...", in its calls."""
    call = fault.partition(":")[0]
    return tracing("/dev/null", call, "-e", f"inject={fault}")


def calls_of(words: list[str], call: str) -> list[tuple[int, str]]:
    """An undisturbed run's calls of that name: number and file, as messages name it."""
    with Folder() as folder, tempfile.NamedTemporaryFile("r") as trace:
        folder.run(*words, before=tracing(trace.name, call))
        lines = [line for line in trace.read().splitlines() if line.startswith(call)]
    numbered = enumerate(map(target_of, lines), 1)
    return [(n, target) for n, target in numbered if target in OURS]


def target_of(call: str) -> str:
    found = re.match(r"\w+\((\d+)(?:<(.*?)>(\(deleted\))?)?[,)]", call)
    if not found:
        return ""  # of a call that is not about an open file
    fd, path, deleted = found.groups()
    name = Path(path or "").name
    if fd == "1" or name.startswith(REPORT):
        return STDOUT
    return TEMPORARY if deleted else name


def cannot_write(name: str) -> str:
    return f"can't write a file '{name}'\n"


def cannot_read(name: str) -> str:
    return f"can't read a file '{name}'\n"


def cannot_open(name: str) -> str:
    return f"can't open a file '{name}'\n"


def complete_patterns(pattern_file: bytes) -> list[bytes]:
    """The patterns of a pattern file whose end is there: another line follows."""
    starts = [m.start() for m in re.finditer(rb"^[t#]", pattern_file, re.MULTILINE)]
    pieces = [pattern_file[a:b] for a, b in itertools.pairwise(starts)]
    return [piece for piece in pieces if piece.startswith(b"t")]
