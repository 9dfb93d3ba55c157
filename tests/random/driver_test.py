#!/usr/bin/python3
"""Broken programs, which the random driver has to find and to make small.

    driver_test.py PROGRAM

Each is a script that runs PROGRAM and then spoils what it has written, on some
databases only.
"""

import random
import re
import shlex
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "tools"))

import databases  # noqa: E402
import metamorphic  # noqa: E402
import shrink  # noqa: E402
import trial  # noqa: E402
from checker.report import support_count  # noqa: E402

PROGRAM = Path(sys.argv.pop(1) if len(sys.argv) > 1 else "kestro").resolve()
DRIVER = HERE / "run"

WRAPPER = """#!/bin/sh
{program} "$@" || exit
{spoil}
"""

# The first pattern of two edges and several transactions loses the last one.
DROPS_TID = r"""
[ ! -f db.tid ] || sed -i '0,/^2-[0-9]* [0-9].* [0-9]/s/^\(2-[0-9]* [0-9].*\) [0-9]*$/\1/' db.tid
"""
# Patterns of three edges are not listed when the input has a label A.
DROPS_PATTERN = r"""
grep -q '^v [0-9]* A$' db.txt || exit 0
awk '/^t/ { drop = /^t # 3-/ } /^#/ { drop = 0 } !drop' db.fp >db.new
mv db.new db.fp
for file in db.tid db.pc; do
  [ ! -f $file ] || sed -i '/^3-/d' $file
done
"""
# Negative vertex ids, which only one guise has, add a transaction.
ADDS_TID_WITH_NEGATIVE_IDS = r"""
! grep -q '^v -' db.txt || sed -i '1s/$/ 99/' db.tid
"""
# Three edges in a row are too many.
ABORTS = r"""
awk '/^u/ { if (++row == 3) exit 1 } !/^u/ { row = 0 }' db.txt ||
  { echo assertion >&2; exit 134; }
"""


class BrokenPrograms(unittest.TestCase):
    def setUp(self) -> None:
        scratch = tempfile.TemporaryDirectory(prefix="kestro-driver-")
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)

    def drive(self, spoil: str, *options: str) -> tuple[int, str]:
        program = self.folder / "kestro"
        program.write_text(WRAPPER.format(program=shlex.quote(str(PROGRAM)), spoil=spoil))
        program.chmod(0o755)
        ran = subprocess.run(
            [sys.executable, DRIVER, program, "--keep", self.folder / "kept", *options],
            capture_output=True,
            text=True,
            check=False,
        )
        self.assertEqual(ran.stderr, "")
        return ran.returncode, ran.stdout

    def kept(self) -> tuple[Path, list[str]]:
        """The first case kept, and its transactions."""
        folder = min((self.folder / "kept").iterdir())
        transactions = re.split(r"(?m)^t.*\n", (folder / "db.txt").read_text())[1:]
        return folder, transactions

    def test_good_program_has_no_failure(self) -> None:
        status, said = self.drive("", "--seeds", "1..6")
        self.assertEqual(status, 0, said)
        self.assertRegex(said, r"^proved: 6 databases, \d+ patterns, 0 failures")

    def test_dropped_tid(self) -> None:
        """Shrinks to two paths of two edges."""
        status, said = self.drive(DROPS_TID, "--seeds", "13..13")
        self.assertEqual(status, 1)
        self.assertIn("FAILED proved seed 13: wrong-", said)
        folder, transactions = self.kept()
        self.assertIn((folder / "db.txt").read_text(), said)
        self.assertIn("-t", (folder / "args").read_text().split())
        self.assertEqual([t.count("u ") for t in transactions], [2, 2])

    def test_dropped_pattern(self) -> None:
        """Shrinks to one transaction of three edges."""
        status, said = self.drive(DROPS_PATTERN, "--seeds", "32..32")
        self.assertEqual(status, 1, said)
        _, transactions = self.kept()
        self.assertEqual([t.count("u ") for t in transactions], [3])
        self.assertIn(" A\n", transactions[0])

    def test_failing_program(self) -> None:
        status, said = self.drive(ABORTS, "--seeds", "13..13")
        self.assertEqual(status, 1)
        self.assertIn("FAILED proved seed 13: status", said)
        folder, transactions = self.kept()
        self.assertEqual((folder / "problem").read_text(), "status 134\nassertion\n\n")
        self.assertEqual([t.count("u ") for t in transactions], [3])

    def test_wrong_only_in_one_guise(self) -> None:
        status, said = self.drive(ADDS_TID_WITH_NEGATIVE_IDS, "--metamorphic", "--seeds", "1..2")
        self.assertEqual(status, 1)
        failed = set(re.findall(r"FAILED (\S+) seed", said))
        self.assertEqual(failed, {"vertices-moved"})


class Shrinking(unittest.TestCase):
    def test_reaches_the_least_case(self) -> None:
        """Any transaction with an edge between two labels fails."""

        def fails(case: databases.Case) -> bool:
            return any(
                t.vertices[u] != t.vertices[w] for t in case.transactions for u, w, _ in t.edges
            )

        for seed in range(40):
            case = databases.random_case(seed)
            if not fails(case):
                continue
            small = shrink.shrink(case, fails)
            (left,) = small.transactions
            self.assertEqual((len(left.vertices), len(left.edges)), (2, 1))
            self.assertEqual((small.options, small.labels, small.comments), ([], False, False))


class Guises(unittest.TestCase):
    def test_every_change_can_be_undone(self) -> None:
        """Transactions and labels are traced back to what they were."""
        for kind, make in metamorphic.KINDS.items():
            for seed in range(30):
                with self.subTest(kind=kind, seed=seed):
                    case = metamorphic.plain_case(seed)
                    self.check(case, make(case, random.Random(seed)))

    def check(self, case: databases.Case, change: metamorphic.Change) -> None:
        self.assertEqual(len(change.tids), len(change.case.transactions))
        for was, t in zip(change.tids, change.case.transactions):
            if was is None:
                self.assertEqual((t.vertices, t.edges), ([], []))
                continue
            first = case.transactions[was]
            labels = [change.vertex_labels.get(label, label) for label in t.vertices]
            self.assertEqual(sorted(labels), sorted(first.vertices))
            self.assertEqual(
                self.edges(t.edges, labels, change.edge_labels),
                self.edges(first.edges, first.vertices, {}),
            )

    @staticmethod
    def edges(edges: list[databases.Edge], vertices: list[str], was: dict[str, str]) -> list[tuple]:
        return sorted(
            (*sorted((vertices[u], vertices[w])), was.get(label, label)) for u, w, label in edges
        )

    def test_differences_are_seen(self) -> None:
        """Two good runs, of which the second is not what it is said to be."""
        path = databases.Transaction(["A", "B", "C"], [(0, 1, "x"), (1, 2, "y")])
        edge = databases.Transaction(["A", "B"], [(0, 1, "x")])
        other = databases.Transaction(["B", "C"], [(0, 1, "y")])
        case = databases.Case([path, edge, other], "33", ["-t"])
        swapped = databases.Case([path, other, edge], "33", ["-t"])
        fewer = databases.Case([path, edge], "50", ["-t"])
        change = metamorphic.unchanged(case)
        right = metamorphic.Change(swapped, [0, 2, 1], {}, {})
        without = metamorphic.Change(fewer, [0, 1], {}, {})
        for made, told, wrong in (
            (case, change, False),
            (swapped, right, False),
            (swapped, change, True),
            (fewer, without, True),
        ):
            outcomes = [self.outcome(case), self.outcome(made)]
            verdict = metamorphic.differences(case, told, outcomes, "any")
            self.assertEqual(verdict.problem is not None, wrong, verdict.problem)

    @staticmethod
    def outcome(case: databases.Case) -> trial.Outcome:
        with tempfile.TemporaryDirectory() as name:
            return trial.checked_run(PROGRAM, case, Path(name))[0]

    def test_counts_stay(self) -> None:
        for seed in range(200):
            case = metamorphic.plain_case(seed)
            n, least = len(case.transactions), metamorphic.least(case)
            empty = metamorphic.with_empty(case, random.Random(seed)).case
            twice = metamorphic.doubled(case, random.Random(seed)).case
            self.assertEqual(self.count(case), least)
            self.assertEqual(self.count(empty), least)
            self.assertEqual(self.count(twice), 2 * least)
            self.assertLessEqual(1, least)
            self.assertLessEqual(least, n)

    @staticmethod
    def count(case: databases.Case) -> int:
        return support_count(float(case.support), len(case.transactions))


if __name__ == "__main__":
    unittest.main()
