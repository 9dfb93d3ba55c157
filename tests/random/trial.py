"""A case put to the program: one run in a scratch folder, and what is wrong."""

import dataclasses
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

from checker.graphs import BadFile  # noqa: E402
from checker.run_check import Outcome, Request, check_run  # noqa: E402
from databases import Case  # noqa: E402

SECONDS = 300  # for one run, under the slowest of sanitizers
TIME = re.compile(rb"(Elapsed User CPU Time: +)\d+\.\d\[sec\]")
ENVIRONMENT = {k: v for k, v in os.environ.items() if k != "POSIXLY_CORRECT"}
ENVIRONMENT["LC_ALL"] = "C"


@dataclasses.dataclass(frozen=True)
class Problem:
    """What is wrong, behind a word for its kind."""

    kind: str
    text: str


@dataclasses.dataclass
class Verdict:
    problem: Problem | None
    patterns: int = 0
    limits: int = 0  # known limits met
    candidates: int = 0


class RunFailed(Exception):
    def __init__(self, problem: Problem) -> None:
        super().__init__(problem.text)
        self.problem = problem


def start(program: Path, case: Case, folder: Path) -> bytes:
    """Run in folder, which becomes that of the case: what is printed."""
    (folder / "db.txt").write_text(case.text())
    if case.labels:
        (folder / "db.ls").write_text(case.label_text())
    try:
        run = subprocess.run(
            [program, *case.args()],
            cwd=folder,
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=SECONDS,
        )
    except subprocess.TimeoutExpired:
        raise RunFailed(Problem("time", f"no end after {SECONDS} seconds")) from None
    if run.returncode != 0 or run.stderr:
        said = run.stderr.decode("utf-8", "replace")[-2000:]
        raise RunFailed(Problem("status", f"status {run.returncode}\n{said}"))
    return run.stdout


def result(folder: Path, output: bytes) -> dict[str, bytes]:
    """All that a run has left, but for the time it took."""
    files = {path.name: path.read_bytes() for path in folder.iterdir()}
    files["standard output"] = output
    return {name: TIME.sub(rb"\1", data) for name, data in files.items()}


def inspect(case: Case, folder: Path, output: bytes) -> Outcome:
    return check_run(
        Request(
            folder / "db.txt",
            output,
            folder / "db.ls" if case.labels else None,
            float(case.support),
            case.threshold(),
            None,
        )
    )


def checked_run(program: Path, case: Case, folder: Path) -> tuple[Outcome, bytes]:
    """A run and what the checker says of it; raises where it ends badly."""
    output = start(program, case, folder)
    try:
        return inspect(case, folder, output), output
    except (BadFile, OSError) as error:
        raise RunFailed(Problem("files", str(error))) from None


def judge(program: Path, case: Case) -> Verdict:
    """Run twice, prove the first, compare the second."""
    try:
        with tempfile.TemporaryDirectory(prefix="kestro-random-") as name:
            folder = Path(name, "first")
            folder.mkdir()
            outcome, output = checked_run(program, case, folder)
            again = Path(name, "again")
            again.mkdir()
            first = result(folder, output)
            second = result(again, start(program, case, again))
    except RunFailed as failed:
        return Verdict(failed.problem)
    verdict = Verdict(None, outcome.patterns, len(outcome.findings.limits))
    if outcome.findings.lines:
        kind = outcome.findings.lines[0][0]
        text = "\n".join(f"{kind} {text}" for kind, text in outcome.findings.lines[:20])
        verdict.problem = Problem(kind, text)
    elif first != second:
        names = sorted(n for n in first.keys() | second.keys() if first.get(n) != second.get(n))
        verdict.problem = Problem("bytes", f"a second run differs in {', '.join(names)}")
    return verdict
