"""Good runs to plant errors in, and what the checker then says.

The run is that of a small random database, which has patterns of several sizes.
"""

import re
import subprocess
import sys
import tempfile
import unittest
from collections.abc import Callable
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parents[1] / "tools"), str(HERE.parent / "random")]

from checker.findings import Findings  # noqa: E402
from checker.run_check import Request, check_run  # noqa: E402
from databases import Case, Transaction, random_case  # noqa: E402

__all__ = ["PROGRAM", "SUPPORT", "Case", "Findings", "PlantedErrors", "Run", "Transaction"]

PROGRAM = Path(sys.argv.pop(1) if len(sys.argv) > 1 else "kestro").resolve()
SEED = 14  # 28 patterns, up to seven edges
SUPPORT = "40"


class Run:
    """The files of a run, in a scratch folder of its own."""

    def __init__(self, options: list[str], case: Case | None = None) -> None:
        self._scratch = tempfile.TemporaryDirectory(prefix="kestro-checker-")
        self.folder = Path(self._scratch.name)
        self.input = self.folder / "db.txt"
        self.input.write_text((case or random_case(SEED)).text())
        ran = subprocess.run(
            [PROGRAM, "-s", SUPPORT, *options, "db.txt"],
            cwd=self.folder,
            capture_output=True,
            check=True,
        )
        self.output = ran.stdout

    def close(self) -> None:
        self._scratch.cleanup()

    def read(self, suffix: str) -> list[str]:
        return (self.folder / f"db.{suffix}").read_text().splitlines()

    def write(self, suffix: str, lines: list[str]) -> None:
        text = "".join(line + "\n" for line in lines)
        (self.folder / f"db.{suffix}").write_text(text)

    def edit(self, suffix: str, change: Callable[[list[str]], list[str]]) -> None:
        self.write(suffix, change(self.read(suffix)))

    def replace(self, suffix: str, pattern: str, by: str | Callable[[re.Match], str]) -> None:
        """Replace the first match, of which there has to be one."""
        path = self.folder / f"db.{suffix}"
        text, count = re.subn(pattern, by, path.read_text(), count=1, flags=re.MULTILINE)
        assert count == 1, f"nothing like {pattern} in {suffix}"
        path.write_text(text)

    def check(self, **more: object) -> Findings:
        request = Request(self.input, output=self.output, support=float(SUPPORT), budget=None)
        for name, value in more.items():
            setattr(request, name, value)
        return check_run(request).findings


class PlantedErrors(unittest.TestCase):
    options = ["-t", "-p", "--candidates"]

    def setUp(self) -> None:
        self.run_files = Run(self.options)
        self.addCleanup(self.run_files.close)

    def names(self) -> list[str]:
        return [line.split(" ")[0] for line in self.run_files.read("tid")]

    def expect(self, *kinds: str, **more: object) -> list[str]:
        """Exactly these kinds are found; the findings."""
        found = self.run_files.check(**more)
        self.assertEqual(set(found.kinds()), set(kinds), found.lines[:5])
        self.assertEqual(found.limits, [])
        return [f"{kind} {text}" for kind, text in found.lines]

    def change_table(self, name: str, by: int) -> None:
        """Let the pattern file's foot count more or fewer of that size."""

        def more(match: re.Match) -> str:
            return f"{match[1]}{int(match[2]) + by:<{len(match[2] + match[3])}d}"

        size = name.split("-")[0]
        self.run_files.replace("fp", rf"^(#   {size} +(?:\d+ +)?)(\d+)( +)$", more)
        self.run_files.replace("fp", r"(Patterns Found: +)(\d+)()$", more)
        generated = int(size) > 2 and by > 0
        if generated:
            self.run_files.replace("fp", rf"^(#   {size} +)(\d+)( +)(?=\d)", more)
            self.run_files.replace("fp", r"(Candidates Generated: +)(\d+)()$", more)
            (self.run_files.folder / "db.c.g").unlink()

    def drop_pattern(self, name: str) -> None:
        for suffix in ("tid", "pc"):
            self.run_files.edit(suffix, lambda lines: [x for x in lines if x.split(" ")[0] != name])
        self.run_files.replace("fp", rf"^t # {name},.*\n(?:[vu] .*\n)*", "")

    def close_gap(self, dropped: str) -> None:
        """Count the ids of that size on as if that one had never been."""
        size, gone = map(int, dropped.split("-"))

        def lower(match: re.Match) -> str:
            number = int(match[1])
            return f"{size}-{number - (number > gone)}"

        for suffix in ("fp", "tid", "pc"):
            head = "t # " if suffix == "fp" else ""
            lines = [
                re.sub(rf"(?<![\w-]){size}-(\d+)\b", lower, x) if x.startswith(head) else x
                for x in self.run_files.read(suffix)
            ]
            self.run_files.write(suffix, lines)
