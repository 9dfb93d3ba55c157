#!/usr/bin/python3
"""What the checker tells while it works: what there is to do and how long that
takes, by a clock that the tests turn, and how far it is, on a terminal.

    progress_test.py PROGRAM
"""

import io
import os
import pty
import subprocess
import sys
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))

from checker import estimate, plan  # noqa: E402
from checker.findings import Findings  # noqa: E402
from checker.graphs import Labels, read_transactions  # noqa: E402
from checker.occurrences import Database  # noqa: E402
from checker.plan import EXTEND, GROUP, PARENTS, SEARCH, UNLISTED, Plan, Step  # noqa: E402
from checker.progress import Progress, on_terminal  # noqa: E402
from checker.report import Settings, read_settings  # noqa: E402
from checker.run_check import Request, check_run  # noqa: E402
from checker.run_files import RunFiles, read_blocks, read_patterns, read_tids  # noqa: E402
from planting import SUPPORT, Case, Run, Transaction  # noqa: E402

COMMAND = TOOLS / "check_run.py"


class Clock:
    """Goes on when told, and by a step whenever it is read."""

    def __init__(self, step: float = 0.0) -> None:
        self.now = 100.0
        self.step = step

    def __call__(self) -> float:
        self.now += self.step
        return self.now


def screen(text: str) -> list[str]:
    """The lines that a terminal shows in the end."""
    lines = []
    for line in text.split("\n"):
        shown = ""
        for part in line.split("\r"):
            shown = part + shown[len(part) :]
        lines.append(shown.rstrip())
    return lines


class Line(unittest.TestCase):
    def setUp(self) -> None:
        self.clock = Clock()
        self.stream = io.StringIO()
        self.progress = Progress(self.stream, self.clock)

    def written(self) -> str:
        """Since last asked."""
        text = self.stream.getvalue()
        self.stream.seek(0)
        self.stream.truncate()
        return text

    def follow(self, budget: int | None = 50) -> None:
        steps = [
            Step(GROUP, 1, 10),
            Step(SEARCH, 1, 30),
            Step(EXTEND, 2, 60, 40),
            Step(PARENTS, 0, 0),
        ]
        self.progress.follow(Plan(steps, 7, budget))

    def test_nothing_without_a_terminal(self) -> None:
        progress = on_terminal(self.stream)
        self.assertFalse(progress.is_shown)
        self.assertFalse(on_terminal(None).is_shown)
        progress.begin(SEARCH, 1, 2)
        progress.advance(1)
        progress.look(3)
        progress.note("said to nobody")
        progress.erase()
        self.assertEqual(self.written(), "")

    def test_counts_and_times(self) -> None:
        self.follow()
        self.progress.begin(GROUP, 1, 2)
        self.assertEqual(
            self.written(), "\r0:00 gone, ~2 min left; size 1: 0/7 patterns, 0/50 extensions"
        )
        self.clock.now += 3700
        self.progress.advance(3)
        self.progress.look(12)
        self.assertIn("1:01:40 gone, ", self.stream.getvalue())
        self.clock.now += 1
        self.progress.look(13)
        self.assertTrue(self.written().endswith("size 1: 3/7 patterns, 13/50 extensions"))

    def test_without_a_budget(self) -> None:
        self.follow(None)
        self.progress.begin(SEARCH, 1, 2)
        self.assertTrue(self.written().endswith("0/7 patterns, 0 extensions"))

    def test_other_steps(self) -> None:
        self.progress.begin("reading")
        self.assertEqual(self.written(), "\r0:00 gone; reading")
        self.follow()
        self.progress.begin(PARENTS)
        self.assertEqual(self.written(), "\r0:00 gone, <10 s left; parents")

    def test_not_more_often_than_can_be_read(self) -> None:
        self.follow()
        self.progress.begin(SEARCH, 1, 2)
        self.written()
        for looked_at in range(1000):
            self.progress.look(looked_at)
        self.assertEqual(self.written(), "")
        self.progress.begin(EXTEND, 2, 1)
        self.assertIn("999/50", self.written())

    def test_line_is_written_over_and_erased(self) -> None:
        self.progress.begin("what takes many columns")
        self.progress.note("stays")
        self.progress.begin("more")
        with self.progress:
            pass
        text = self.written()
        self.assertEqual(screen(text), ["check_run: stays", ""])

    def test_shorter_line_hides_the_longer_one(self) -> None:
        self.progress.begin("what takes many columns")
        self.progress.begin("few")
        self.assertEqual(screen(self.written()), ["0:00 gone; few"])

    def test_line_fits_the_terminal(self) -> None:
        self.progress.begin("x" * 200)
        self.assertEqual(len(self.written()), 1 + 79)

    def test_terminal_that_went_away(self) -> None:
        class Gone(io.StringIO):
            def write(self, _: str) -> int:
                raise OSError

        progress = Progress(Gone(), self.clock)
        progress.begin("reading")
        self.assertFalse(progress.is_shown)
        progress.erase()


class Following(unittest.TestCase):
    def plan(self, budget: int | None) -> Plan:
        steps = [Step(SEARCH, 1, 20), Step(EXTEND, 2, 100, 1000), Step(PARENTS, 0, 0)]
        return Plan(steps, 5, budget)

    def test_budget_ends_extensions(self) -> None:
        self.assertEqual(self.plan(None).total, 120)
        self.assertEqual(self.plan(1000).total, 120)
        self.assertEqual(self.plan(500).total, 70)
        followed = self.plan(500)
        followed.begin(EXTEND, 2, 4)
        self.assertEqual(followed.seconds_left(20, 0), 50)
        followed.advance()
        self.assertEqual(followed.seconds_left(45, 250), 25)
        self.assertEqual(followed.seconds_left(70, 500), 0)
        self.assertEqual(followed.seconds_left(70, 501), 0)

    def test_what_it_took_scales_what_is_left(self) -> None:
        followed = self.plan(None)
        followed.begin(SEARCH, 1, 2)
        self.assertEqual(followed.seconds_left(0, 0), 120)
        followed.begin(EXTEND, 2, 2)
        followed.advance()
        self.assertEqual(followed.seconds_left(70, 0), 50)
        slow = followed.seconds_left(700, 0)
        quick = followed.seconds_left(7, 0)
        assert slow is not None and quick is not None
        self.assertTrue(350 < slow < 500 and 5 < quick < 15, (slow, quick))

    def test_step_that_is_not_planned_ends_the_one_before(self) -> None:
        followed = self.plan(None)
        followed.begin(SEARCH, 1, 2)
        followed.begin(SEARCH, 9, 2)
        self.assertEqual(followed.seconds_left(20, 0), 100)
        followed.advance()
        self.assertEqual(followed.seconds_left(20, 0), 100)

    def test_nothing_is_left_in_the_end(self) -> None:
        followed = self.plan(None)
        followed.begin(PARENTS, 0, 0)
        self.assertEqual(followed.seconds_left(10, 0), 0)

    def test_times_in_words(self) -> None:
        for seconds, long, short in (
            (0, "a few seconds", "<10 s"),
            (44, "about 40 seconds", "~40 s"),
            (94, "about 90 seconds", "~90 s"),
            (125, "about 2 minutes", "~2 min"),
            (5600, "about 93 minutes", "~93 min"),
            (7300, "about 2 hours", "~2 h"),
            (300_000, "about 3 days", "~3 days"),
        ):
            self.assertEqual(plan.in_words(seconds), long)
            self.assertEqual(plan.in_words(seconds, short=True), short)

    def test_numbers_are_not_told_better_than_known(self) -> None:
        self.assertEqual(estimate.about(17_969.4), "about 18000")
        self.assertEqual(estimate.about(98.7), "about 99")


class Estimate(unittest.TestCase):
    """By a clock on which every reading takes a second."""

    def setUp(self) -> None:
        self.run_files = Run(["-t", "-p"])
        self.addCleanup(self.run_files.close)
        labels, findings = Labels(), Findings()
        graphs = read_transactions(self.run_files.input.read_bytes(), labels).graphs
        self.db = Database(graphs)
        folder = self.run_files.folder
        comments, blocks = read_blocks((folder / "db.fp").read_bytes(), "db.fp", findings)
        self.settings = read_settings(comments)
        names, patterns = read_patterns(blocks, "pattern", labels, False, findings)
        tids = read_tids(folder / "db.tid", findings)
        self.files = RunFiles(comments, names, patterns, tids, None, None)

    def sample(self, seconds: float, step: float = 1.0) -> estimate.Sample:
        return estimate.Sample(self.db, self.settings.least, self.files, Clock(step), seconds)

    def told(self, budget: int | None, **changed: object) -> list[str]:
        sample = self.sample(1e6)
        settings = Settings(**{**vars(self.settings), **changed})  # type: ignore[arg-type]
        steps = estimate.make_plan(sample, settings, None, budget)
        return estimate.notes(steps, sample, settings, len(self.db.graphs))

    def test_all_sizes_are_measured(self) -> None:
        sample = self.sample(1e6)
        sizes = {pattern.name[0] for pattern in self.files.patterns}
        self.assertEqual(set(sample.costs), sizes)
        self.assertEqual(sum(sample.counts.values()), len(self.files.patterns))
        self.assertEqual(sample.cost(1).group, 1.0)
        self.assertEqual(sample.cost(99), sample.cost(max(sizes)))

    def test_measuring_ends_in_time(self) -> None:
        self.assertEqual(self.sample(0.5).measured, 1)
        self.assertGreater(self.sample(20).measured, 1)

    def test_measuring_proves_nothing(self) -> None:
        self.sample(1e6)
        self.assertEqual(self.db.searches, 0)

    def test_transactions_searched_are_those_of_all_parents(self) -> None:
        sample = self.sample(1e6)
        pattern = next(p for p in self.files.patterns if p.name[0] == 2)
        self.files.parents = {pattern.name: [(1, 0), (1, 1)]}
        assert self.files.tids is not None
        both = set(self.files.tids[1, 0]) & set(self.files.tids[1, 1])
        self.assertEqual(sample.searched(pattern), sum(1 << tid for tid in both))

    def test_what_is_told(self) -> None:
        n, t = len(self.files.patterns), len(self.db.graphs)
        what, long = self.told(500_000)
        self.assertRegex(
            what,
            rf"^to prove: {n} patterns \(sizes 1 to 7\) in {t} transactions, "
            r"about \d+ extensions$",
        )
        self.assertRegex(long, r"^this takes about \d+ \w+, judged by \d+ of the patterns$")

    def test_small_budget_is_told(self) -> None:
        self.assertRegex(self.told(3)[0], r", 3 of about \d+ extensions \(--complete: all\)$")

    def test_nothing_is_guessed_of_what_is_not_listed(self) -> None:
        for changed in ({"maximal": True}, {"minsize": 3}):
            for budget, looked in [(1000, "up to 1000"), (None, "all")]:
                what, long = self.told(budget, **changed)
                self.assertTrue(what.endswith(f", {looked} extensions"), what)
                self.assertEqual(long, "how long this takes cannot be told beforehand")

    def test_run_without_patterns(self) -> None:
        self.files.patterns.clear()
        what, long = self.told(1000)
        self.assertIn("0 patterns (none)", what)
        self.assertTrue(long.startswith("this takes a few seconds"), long)
        self.assertIn("cannot be told", self.told(1000, maximal=True)[1])

    def test_plan_has_every_step_of_a_check(self) -> None:
        steps = estimate.make_plan(self.sample(1e6), self.settings, [], 1000)
        followed = [(step.name, step.size) for step in steps.steps]
        self.assertEqual(followed[:4], [(GROUP, 1), (SEARCH, 1), (EXTEND, 1), (GROUP, 2)])
        last = [(SEARCH, 8), (EXTEND, 8), (PARENTS, 0), (plan.CANDIDATES, 0)]
        self.assertEqual(followed[-4:], last)
        settings = Settings(**{**vars(self.settings), "maximal": True})
        steps = estimate.make_plan(self.sample(1e6), settings, None, 1000)
        followed = [(step.name, step.size) for step in steps.steps]
        self.assertEqual(followed[-3:], [(UNLISTED, 0), (PARENTS, 0), (plan.MAXIMAL, 0)])


class Whole(unittest.TestCase):
    def lines(self, options: list[str], **more: object) -> str:
        """What a check writes, every line of it; it finds the same as a silent one."""
        files = Run(options)
        self.addCleanup(files.close)
        request = Request(files.input, files.output, support=float(SUPPORT))
        for name, value in more.items():
            setattr(request, name, value)
        stream = io.StringIO()
        with Progress(stream, Clock(0.5)) as progress:
            told = check_run(request, progress).findings
        silent = check_run(request).findings
        self.assertEqual((told.lines, told.notes), (silent.lines, silent.notes))
        return stream.getvalue()

    def test_counts_reach_all_patterns(self) -> None:
        text = self.lines(["-t", "-p", "--candidates"])
        for size in range(1, 8):
            self.assertIn(f"; size {size}: ", text)
        self.assertIn("size 8: 28/28 patterns", text)
        self.assertIn("left; candidates", text)
        self.assertEqual(screen(text)[-1], "")

    def test_runs_that_list_less(self) -> None:
        self.assertIn("gone; maximal patterns", self.lines(["-t", "-x"], budget=3))
        self.assertIn("gone; size 7: ", self.lines(["-t", "-x"], budget=None))
        self.assertIn("gone; size 7: ", self.lines(["-t", "-m", "3"]))
        self.assertIn("left; size 2: ", self.lines(["-M", "2"]))

    def test_database_without_frequent_patterns(self) -> None:
        case = Case([Transaction(["A", "B"], [(0, 1, "x")]), Transaction(["A"], [])] * 2, "100", [])
        files = Run([], case)
        self.addCleanup(files.close)
        stream = io.StringIO()
        check_run(Request(files.input), Progress(stream, Clock()))
        self.assertIn("to prove: ", stream.getvalue())


class Terminal(unittest.TestCase):
    def on_terminal(self, *args: object) -> tuple[str, str, int]:
        """Standard output, what a terminal gets as standard error, the status."""
        master, slave = pty.openpty()
        told = b""
        with subprocess.Popen(
            [sys.executable, COMMAND, *map(str, args)], stdout=subprocess.PIPE, stderr=slave
        ) as ran:
            os.close(slave)
            try:
                while some := os.read(master, 4096):
                    told += some
            except OSError:  # how Linux says that nobody writes any more
                pass
            os.close(master)
            assert ran.stdout is not None
            output = ran.stdout.read()
        return output.decode(), told.decode().replace("\r\n", "\n"), ran.returncode

    def test_terminal_gets_progress_and_output_stays_as_it_is(self) -> None:
        files = Run(["-t", "-p"])
        self.addCleanup(files.close)
        output, told, status = self.on_terminal(files.input)
        quiet = subprocess.run(
            [sys.executable, COMMAND, files.input], capture_output=True, text=True, check=False
        )
        self.assertEqual((output, status), (quiet.stdout, 0))
        self.assertEqual(quiet.stderr, "")
        self.assertRegex(told, r"^\r\d+:\d\d gone; reading")
        for size in range(1, 8):
            self.assertIn(f"; size {size}: ", told)
        shown = screen(told)
        self.assertRegex(shown[0], r"^check_run: to prove: 28 patterns \(sizes 1 to 7\) in ")
        self.assertRegex(shown[1], r"^check_run: this takes a")
        self.assertEqual(shown[2:], [""])

    def test_line_is_gone_before_a_message(self) -> None:
        files = Run(["-t"])
        self.addCleanup(files.close)
        (files.folder / "db.fp").unlink()
        output, told, status = self.on_terminal(files.input)
        self.assertEqual((output, status), ("", 2))
        self.assertEqual(screen(told), [f"check_run: there is no {files.folder / 'db.fp'}", ""])


if __name__ == "__main__":
    unittest.main()
