"""Golden cases, those of tests/regression included: what one holds, how it is run, how results are told apart.

A case is a folder named after what it shows:

    args      the command line after the program's name, quoted as in a shell
    in/       the files that the run finds; none when absent
    status    the exit status, 128 + the signal for a run that was ended by one
    stdout    what the run prints
    stderr
    out/      the files that it creates or changes

Each run has a fresh folder of its own.  A result is a map from these names
("status", "out/db.fp") to bytes.  Three things that may differ between equal
runs are masked: the CPU time, the source line in "name.c:12:", and the name
that getopt puts in front of its messages.  What an aborted run prints is its
own affair: such a case has neither stdout nor stderr.
"""

import difflib
import os
import re
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

# Without what would change getopt's order of words or its texts.
ENVIRONMENT = {k: v for k, v in os.environ.items() if k != "POSIXLY_CORRECT"}
ENVIRONMENT["LC_ALL"] = "C"

HERE = Path(__file__).resolve().parent
SHELVES = [HERE, HERE.parent / "regression"]
ABORTED = 134
SECONDS = 600  # for one run, under the slowest of sanitizers

Result = dict[str, bytes]


def case_folders() -> dict[str, Path]:
    """All cases: where each is, by its name, in the order of names."""
    found = [args.parent for shelf in SHELVES for args in shelf.glob("*/args")]
    return {folder.name: folder for folder in sorted(found, key=lambda f: f.name)}


def files_below(folder: Path) -> Result:
    """The bytes of all files below folder, by their names within it."""
    paths = (p for p in folder.rglob("*") if p.is_file())
    return {p.relative_to(folder).as_posix(): p.read_bytes() for p in paths}


def mask(data: bytes) -> bytes:
    data = re.sub(rb"\b([a-z_]+\.c):\d+:", rb"\1:N:", data)
    return re.sub(rb"(Elapsed User CPU Time: +)\d+\.\d\[sec\]", rb"\1T[sec]", data)


def mask_messages(data: bytes) -> bytes:
    return re.sub(rb"(?m)^\S*kestro\S*: ", b"PROG: ", mask(data))


def expected(case: Path) -> Result:
    files = files_below(case)
    return {n: b for n, b in files.items() if n != "args" and not n.startswith("in/")}


def changes(before: Result, after: Result) -> Result:
    """What a run did to its folder, as part of a result."""
    changed = {"out/" + n: mask(b) for n, b in after.items() if before.get(n) != b}
    gone = sorted(set(before) - set(after))
    if gone:
        changed["removed"] = "".join(n + "\n" for n in gone).encode()
    return changed


def actual(case: Path, program: Path) -> Result:
    args = shlex.split((case / "args").read_text())
    with tempfile.TemporaryDirectory(prefix="kestro-golden-") as name:
        folder = Path(name)
        if (case / "in").is_dir():
            shutil.copytree(case / "in", folder, dirs_exist_ok=True)
        before = files_below(folder)
        try:
            run = subprocess.run(
                [program, *args],
                cwd=folder,
                env=ENVIRONMENT,
                stdin=subprocess.DEVNULL,
                capture_output=True,
                timeout=SECONDS,
            )
        except subprocess.TimeoutExpired:
            return {"status": b"out of time\n"}
        result = changes(before, files_below(folder))
    status = 128 - run.returncode if run.returncode < 0 else run.returncode
    result["status"] = b"%d\n" % status
    if status != ABORTED:
        result["stdout"] = mask(run.stdout)
        result["stderr"] = mask_messages(run.stderr)
    return result


def difference(want: Result, got: Result) -> list[str]:
    """Lines that show where two results differ; none when they are equal."""
    shown = []
    for name in sorted(set(want) | set(got)):
        if name not in got:
            shown.append(f"{name}: missing")
        elif name not in want:
            shown.append(f"{name}: not expected")
        if want.get(name) != got.get(name):
            shown += line_difference(name, want.get(name, b""), got.get(name, b""))
    return shown


def line_difference(name: str, want: bytes, got: bytes) -> list[str]:
    return list(
        difflib.unified_diff(
            [repr(line)[2:-1] for line in want.splitlines(keepends=True)],
            [repr(line)[2:-1] for line in got.splitlines(keepends=True)],
            fromfile=f"{name} expected",
            tofile=f"{name} found",
            n=1,
            lineterm="",
        )
    )
