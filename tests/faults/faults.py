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
from collections.abc import Iterator
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


@dataclasses.dataclass(frozen=True)
class Call:
    """A system call of a traced run."""

    name: str
    target: str  # the file as messages name it


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
        settings = {"stdout": subprocess.PIPE, "env": environment(), **how}
        ended = subprocess.run(
            [*before, str(program or Programs.kestro), *words],
            cwd=self.path,
            stdin=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            timeout=SECONDS,
            check=False,
            **settings,
        )
        return Ended(
            ended.returncode,
            masked(ended.stdout or b""),
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


def injecting(fault: str, trace: str = "/dev/null") -> tuple[str, ...]:
    """The words that start a program with a fault in its system calls."""
    return (
        "strace",
        "-qq",
        "-y",
        "-o",
        trace,
        "-e",
        "trace=write,close",
        "-e",
        f"inject={fault}",
    )


def calls_of(words: list[str]) -> list[Call]:
    """The calls of write and close of an undisturbed run, in order."""
    with Folder() as folder, tempfile.NamedTemporaryFile("r") as trace:
        # An injection that never comes, so that all runs are traced alike.
        folder.run(*words, before=injecting("write:error=EIO:when=65535", trace.name))
        return list(parse_calls(trace.read()))


def parse_calls(trace: str) -> Iterator[Call]:
    for line in trace.splitlines():
        found = re.match(r"(write|close)\((\d+)(?:<(.*?)>(\(deleted\))?)?[,)]", line)
        if found:
            call, fd, path, deleted = found.groups()
            if fd == "1" or (path or "").startswith("pipe:"):
                yield Call(call, STDOUT)
            else:
                yield Call(call, TEMPORARY if deleted else Path(path or "").name)


def cannot_write(name: str) -> str:
    return f"can't write a file '{name}'\n"


def cannot_open(name: str) -> str:
    return f"can't open a file '{name}'\n"


def complete_patterns(pattern_file: bytes) -> list[bytes]:
    """The patterns of a pattern file whose end is there: another line follows."""
    starts = [m.start() for m in re.finditer(rb"^[t#]", pattern_file, re.MULTILINE)]
    pieces = [pattern_file[a:b] for a, b in itertools.pairwise(starts)]
    return [piece for piece in pieces if piece.startswith(b"t")]
