#!/usr/bin/python3
"""Planted errors: in the files of a good run each has to be found, as what it
is, and nothing has to be found in the files as they were.

    check_run_test.py PROGRAM
"""

import contextlib
import io
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path.insert(0, str(TOOLS))

from check_run import SHOWN, tell  # noqa: E402
from checker.graphs import Labels  # noqa: E402
from checker.run_check import Outcome  # noqa: E402
from planting import (  # noqa: E402
    PROGRAM,
    SUPPORT,
    Case,
    Findings,
    PlantedErrors,
    Run,
    Transaction,
)

COMMAND = TOOLS / "check_run.py"


class PlainRun(PlantedErrors):
    def test_untouched_run_has_no_finding(self) -> None:
        self.expect()
        self.assertGreater(len(self.names()), 20)

    def test_added_tid(self) -> None:
        """One that its count and its parents' lists do not betray."""
        n = self.run_files.read("fp")[5].split()[-1]
        sizes = [line for line in self.run_files.read("tid") if line.startswith("3-")]
        line = next(line for line in sizes if len(line.split()) - 1 < int(n))
        name, *tids = line.split()
        added = min(set(range(int(n))) - set(map(int, tids)))
        longer = " ".join([name, *map(str, sorted([*map(int, tids), added]))])
        self.run_files.replace("tid", f"^{line}$", longer)
        self.run_files.replace("fp", f"^t # {name}, .*", f"t # {name}, {len(tids) + 1}")
        found = self.expect("wrong-tid")
        self.assertEqual(found, [f"wrong-tid {name}: transaction {added} does not contain it"])

    def test_removed_tid(self) -> None:
        name, *tids = self.run_files.read("tid")[-1].split()
        self.run_files.replace("tid", f"^({name} .*) {tids[-1]}$", r"\1")
        self.run_files.replace("fp", f"^t # {name}, .*", f"t # {name}, {len(tids) - 1}")
        found = self.expect("wrong-tid")
        self.assertEqual(found, [f"wrong-tid {name}: transaction {tids[-1]} contains it, too"])

    def test_tid_of_no_transaction(self) -> None:
        self.run_files.replace("tid", r"^(1-0 .*)$", r"\1 999")
        self.assertIn("transaction 999 does not exist", self.expect("wrong-tid", "wrong-count")[0])

    def test_tids_out_of_order(self) -> None:
        self.run_files.replace("tid", r"^(1-0) (\d+) (\d+)", r"\1 \3 \2")
        self.expect("wrong-tid")

    def test_wrong_count(self) -> None:
        self.run_files.replace("fp", r"^t # (3-1), (\d+)", r"t # \1, 1\2")
        self.expect("wrong-count")

    def test_wrong_count_without_tids(self) -> None:
        """The lists are not needed to tell."""
        self.run_files.replace("fp", r"^t # (3-1), (\d+)", r"t # \1, 1\2")
        self.run_files.replace("fp", "(Generate TID-List: +)Yes", r"\1No")
        self.run_files.replace("fp", r"^#   TID-List File:.*\n", "")
        self.expect("wrong-count", output=None)

    def test_missing_parent(self) -> None:
        self.run_files.replace("pc", r"^(4-\d+) (3-\d+) (3-\d+.*)", r"\1 \3")
        self.expect("missing-parent")

    def test_extra_parent(self) -> None:
        parents = {name for name in self.names() if name.startswith("3-")}
        line = next(line for line in self.run_files.read("pc") if line.startswith("4-"))
        name, *listed = line.split()
        listed.append(min(parents - set(listed)))
        listed.sort(key=lambda text: int(text[2:]))
        self.run_files.replace("pc", f"^{line}$", " ".join([name, *listed]))
        self.expect("extra-parent")

    def test_isomorphic_pair(self) -> None:
        """The last pattern once more, under the next id, with its own lines."""
        name = self.names()[-1]
        again = f"{name.split('-')[0]}-{int(name.split('-')[1]) + 1}"
        block = re.search(
            rf"^t # {name},(?:.*\n)+?(?=#)", "\n".join(self.run_files.read("fp")), re.MULTILINE
        )
        assert block is not None
        for suffix in ("tid", "pc"):
            self.run_files.edit(suffix, lambda lines: [*lines, lines[-1].replace(name, again, 1)])
        text = block[0] + block[0].replace(name, again, 1)
        self.run_files.replace("fp", re.escape(block[0]), lambda _: text)
        self.change_table(name, +1)
        self.expect("isomorphic-pair", output=None)

    def test_pattern_missing(self) -> None:
        """One that is nobody's parent, so that nothing else betrays it."""
        named = set(re.findall(r" (\S+)", "\n".join(self.run_files.read("pc"))))
        names = self.names()
        name = next(x for x in names if x not in named and x != names[-1])
        self.drop_pattern(name)
        self.close_gap(name)
        self.change_table(name, -1)
        self.expect("missing-pattern", output=None)

    def test_single_edge_missing(self) -> None:
        name = [x for x in self.names() if x.startswith("1-")][-1]
        self.drop_pattern(name)
        self.change_table(name, -1)
        found = self.run_files.check(output=None)
        self.assertIn("missing-pattern", found.kinds())

    def test_ids_out_of_order(self) -> None:
        """Two ids exchanged everywhere."""
        swap = {"3-0": "3-1", "3-1": "3-0"}
        for suffix in ("fp", "tid", "pc"):
            text = "\n".join(self.run_files.read(suffix))
            text = re.sub(r"\b3-[01]\b", lambda m: swap[m[0]], text)
            lines = [self.sorted_parents(x) if suffix == "pc" else x for x in text.split("\n")]
            self.run_files.write(suffix, lines)
        self.expect("wrong-id")

    @staticmethod
    def sorted_parents(line: str) -> str:
        name, *listed = line.split(" ")
        return " ".join([name, *sorted(listed, key=lambda x: int(x.split("-")[1]))])

    def test_gap_in_ids(self) -> None:
        last = [name for name in self.names() if name.startswith("2-")][-1]
        for suffix in ("fp", "tid", "pc"):
            lines = [re.sub(rf"\b{last}\b", "2-99", x) for x in self.run_files.read(suffix)]
            self.run_files.write(suffix, lines)
        self.expect("wrong-id")

    def test_disconnected_pattern(self) -> None:
        """One more of size 2, of two edges that lie apart."""
        last = [name for name in self.names() if name.startswith("2-")][-1]
        name = f"2-{int(last[2:]) + 1}"
        text = "\n".join(self.run_files.read("fp"))
        edge = re.search(r"^v 0 (\S+)\nv 1 (\S+)\nu 0 1 (\S+)$", text, re.MULTILINE)
        assert edge is not None
        apart = (
            f"t # {name}, 9\n"
            + "".join(f"v {i} {edge[1 + i % 2]}\n" for i in range(4))
            + f"u 0 1 {edge[3]}\nu 2 3 {edge[3]}\n"
        )
        self.run_files.replace("fp", r"^t # 3-0,", lambda m: apart + m[0])
        for suffix in ("tid", "pc"):
            line = f"{name} 0" if suffix == "tid" else f"{name} 1-0"
            self.run_files.replace(suffix, r"^3-0 ", lambda m: f"{line}\n{m[0]}")
        self.change_table(name, +1)
        self.expect("disconnected", output=None)

    def test_wrong_size(self) -> None:
        self.run_files.replace("fp", r"^(t # 3-0, (?:.*\n)(?:v .*\n)+)u .*\n", r"\1")
        self.assertIn("wrong-size", self.run_files.check().kinds())

    def test_vertices_not_numbered_in_order(self) -> None:
        self.run_files.replace("fp", r"^v 1 (.*)$", r"v 7 \1")
        self.assertIn("bad-numbering", self.run_files.check().kinds())

    def test_unknown_label(self) -> None:
        self.run_files.replace("fp", r"^v 1 (.*)$", r"v 1 nowhere")
        self.assertIn("unknown-label", self.run_files.check().kinds())

    def test_line_missing(self) -> None:
        for suffix in ("tid", "pc"):
            self.run_files.edit(suffix, lambda lines: lines[:-1])
            self.assertIn("missing-line", self.run_files.check().kinds())

    def test_line_of_no_pattern(self) -> None:
        self.run_files.edit("tid", lambda lines: [*lines, "99-0 1"])
        self.expect("extra-line")

    def test_file_cut_short(self) -> None:
        path = self.run_files.folder / "db.tid"
        path.write_bytes(path.read_bytes()[:-1])
        self.assertIn("bad-line", self.run_files.check().kinds())

    def test_wrong_table_row(self) -> None:
        self.run_files.replace("fp", r"^(#   2 +)(\d)", r"\g<1>9\2")
        self.expect("wrong-table")

    def test_missing_table_row(self) -> None:
        self.run_files.replace("fp", r"^#   2 .*\n", "")
        self.expect("wrong-table")

    def test_wrong_table_row_on_standard_output(self) -> None:
        output = re.sub(rb"(?m)^(  2 +)(\d)", rb"\g<1>9\2", self.run_files.output)
        self.expect("wrong-table", output=output)

    def test_wrong_number_of_candidates(self) -> None:
        self.run_files.replace("fp", r"^(#   3 +)(\d)", r"\g<1>9\2")
        self.expect("wrong-table", "wrong-total")

    def test_wrong_totals(self) -> None:
        for title in ("Patterns Found", "Frequent Pattern Size", "Candidates Generated"):
            with self.subTest(title):
                before = self.run_files.read("fp")
                self.run_files.replace("fp", rf"({title}: +)(\d+)$", r"\g<1>9\2")
                self.expect("wrong-total")
                self.run_files.write("fp", before)

    def test_wrong_header_facts(self) -> None:
        facts = (
            "Input Transactions",
            "Distinct Edge Labels",
            "Distinct Vertex Labels",
            "Edges In a Transaction",
            "Vertices In a Transaction",
            "Frequent Pattern File",
        )
        for fact in facts:
            with self.subTest(fact):
                before = self.run_files.read("fp")
                self.run_files.replace("fp", rf"({fact}: +)(\S)", r"\g<1>9\2")
                self.expect("wrong-header")
                self.run_files.write("fp", before)

    def test_wrong_header_on_standard_output(self) -> None:
        output = self.run_files.output.replace(b"Distinct Edge", b"Distinct Age")
        self.expect("wrong-header", output=output)

    def test_another_support(self) -> None:
        self.expect("wrong-header", support=41.0)

    def test_minimum_count_that_no_such_percentage_has(self) -> None:
        """Also without the exact support."""
        self.run_files.replace("fp", r"\((\d+) transactions\)", "(3 transactions)")
        self.assertIn("wrong-header", self.run_files.check(support=None).kinds())

    def test_candidate_missing(self) -> None:
        """That of a pattern."""
        text = "\n".join(self.run_files.read("fp"))
        block = re.search(r"^t # 3-0, .*\n((?:[vu] .*\n)+)", text, re.MULTILINE)
        assert block is not None
        self.run_files.replace("c.g", r"^t # .*\n" + re.escape(block[1]), "")
        self.assertIn("missing-candidate", self.run_files.check().kinds())

    def test_candidate_counted(self) -> None:
        self.run_files.replace("c.g", r"^(t # 3-0), 0$", r"\1, 2")
        self.expect("wrong-count")

    def test_budget_is_told(self) -> None:
        """What the extensions did not reach is not called proved."""
        found = self.run_files.check(budget=3)
        self.assertEqual(found.lines, [])
        self.assertTrue(any("up to size" in note for note in found.notes), found.notes)
        self.assertTrue(any("all sizes" in note for note in self.run_files.check().notes))


class MaximalRun(PlantedErrors):
    options = ["-t", "-x"]

    def test_untouched_run_has_no_finding(self) -> None:
        self.expect()
        self.expect(budget=0)

    def plant_part(self) -> None:
        """Let the run list a pattern that another one holds, as a full run
        would: the maximal ones of size 3 are all but all at the front."""
        plain = Run(["-t", "-p"])
        self.addCleanup(plain.close)
        size, kept = 3, set(self.names())
        names = [line.split(" ")[0] for line in plain.read("tid")]
        name = next(x for x in names if x.startswith(f"{size}-") and x not in kept)
        blocks = re.compile(rf"^t # {name},.*\n(?:[vu] .*\n)+", re.MULTILINE)
        found = blocks.search("\n".join(plain.read("fp")))
        assert found is not None
        later = [x for x in self.names() if self.key(x) > self.key(name)][0]
        self.run_files.replace("fp", rf"^t # {later},", lambda m: found[0] + m[0])
        for suffix in ("tid", "pc"):
            line = next(x for x in plain.read(suffix) if x.split(" ")[0] == name)
            self.run_files.edit(
                suffix,
                lambda lines: sorted([*lines, line], key=lambda x: self.key(x.split(" ")[0])),
            )

        def more(match: re.Match) -> str:
            return f"{match[1]}{int(match[2]) + 1:<{len(match[2] + match[3])}d}"

        self.run_files.replace("fp", rf"^(#   {size} +)(\d+)( +)$", more)
        self.run_files.replace("fp", r"(Patterns Found: +)(\d+)()$", more)

    @staticmethod
    def key(name: str) -> list[int]:
        return list(map(int, name.split("-")))

    def test_pattern_that_is_not_maximal(self) -> None:
        self.plant_part()
        self.expect("not-maximal", output=None)

    def test_pattern_that_is_not_maximal_within_any_budget(self) -> None:
        self.plant_part()
        self.expect("not-maximal", output=None, budget=0)

    def test_maximal_pattern_missing(self) -> None:
        last = self.names()[-1]
        for suffix in ("tid", "pc"):
            self.run_files.edit(suffix, lambda lines: lines[:-1])
        self.run_files.replace("fp", rf"^t # {last},.*\n(?:[vu] .*\n)*", "")
        found = self.run_files.check(output=None)
        self.assertIn("missing-pattern", found.kinds())

    def test_missing_parent(self) -> None:
        """Their records are not there, but their number is known."""
        self.run_files.replace("pc", r"^((?:[2-9]|\d\d)-\d+ .*) \S+$", r"\1")
        self.expect("missing-parent")


class KnownLimit(unittest.TestCase):
    """Three vertices joined with three others, a perfect matching with another
    label: nine edges whose form depends on the order of the vertices."""

    def check(self, *options: str, **more: object) -> Findings:
        edges = [(u, 3 + w, "y" if u == w else "x") for u in range(3) for w in range(3)]
        files = Run(list(options), Case([Transaction(["A"] * 6, edges)], SUPPORT, []))
        self.addCleanup(files.close)
        return files.check(**more)

    def test_pair_is_counted_apart(self) -> None:
        found = self.check("-t", "-p", "--candidates")
        self.assertEqual(found.lines, [])
        self.assertEqual([kind for kind, _ in found.limits], ["isomorphic-pair"] * 2)

    def test_pair_of_maximal_patterns(self) -> None:
        found = self.check("-t", "-x")
        self.assertEqual(found.lines, [])
        self.assertEqual(found.limits, [("isomorphic-pair", "9-1 and 9-0")])

    def test_no_excuse_where_all_orders_are_tried(self) -> None:
        """The files of a run with one threshold, checked as those of another."""
        found = self.check("-t", threshold=7)
        self.assertEqual(found.lines, [("isomorphic-pair", "9-1 and 9-0")])
        found = self.check("-t", "--stabilizer-threshold=7", threshold=7)
        self.assertEqual((found.lines, found.limits), ([], []))


class CommandTest(unittest.TestCase):
    def run_command(self, *args: object) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [sys.executable, COMMAND, *map(str, args)], capture_output=True, text=True, check=False
        )


class Command(CommandTest):
    def test_good_run(self) -> None:
        files = Run(["-t"])
        self.addCleanup(files.close)
        report = files.folder / "report"
        report.write_bytes(files.output)
        ran = self.run_command(files.input, "--report", report, "--support", SUPPORT)
        self.assertEqual((ran.returncode, ran.stderr), (0, ""), ran.stdout)
        self.assertRegex(ran.stdout, r"check_run: \d+ patterns, 0 findings, 0 known limits\n$")

    def test_candidates_of_another_run(self) -> None:
        files = Run(["-t"])
        self.addCleanup(files.close)
        (files.folder / "db.c.g").write_bytes(b"t # 3-0, 0\n")
        ran = self.run_command(files.input, "--support", SUPPORT)
        self.assertEqual(ran.returncode, 0, ran.stdout)
        self.assertIn("db.c.g is of another run unless", ran.stdout)
        ran = self.run_command(files.input, "--support", SUPPORT, "--candidates")
        self.assertEqual(ran.returncode, 1, ran.stdout)

    def test_bad_run(self) -> None:
        files = Run(["-t"])
        self.addCleanup(files.close)
        files.replace("tid", r"^(1-0 .*)$", r"\1 999")
        ran = self.run_command(files.input)
        self.assertEqual(ran.returncode, 1)
        self.assertIn("wrong-tid 1-0: transaction 999 does not exist\n", ran.stdout)

    def test_no_run(self) -> None:
        with tempfile.TemporaryDirectory() as name:
            shutil.copy(__file__, Path(name, "db.txt"))
            self.assertEqual(self.run_command(Path(name, "db.txt")).returncode, 2)
            self.assertEqual(self.run_command(Path(name, "none.txt")).returncode, 2)


class ManyFindings(CommandTest):
    def test_first_of_each_kind(self) -> None:
        """Two kinds of many, one of few; the last line counts them all."""
        files = Run(["-t"])
        self.addCleanup(files.close)
        tids = " ".join(str(1000 + i) for i in range(SHOWN + 134))
        files.replace("tid", r"^(1-0 .*)$", rf"\1 {tids}")
        more = [f"99-{i} 1" for i in range(SHOWN + 1)]
        files.edit("tid", lambda lines: [*lines, *more])
        ran = self.run_command(files.input)
        lines = ran.stdout.splitlines()
        self.assertEqual((ran.returncode, ran.stderr), (1, ""))
        self.assertEqual(self.shown(lines, "wrong-tid 1-0: "), SHOWN)
        self.assertIn(f"wrong-tid 1-0: transaction {1000 + SHOWN - 1} does not exist", lines)
        self.assertIn("wrong-tid: 134 more (--all shows them)", lines)
        self.assertEqual(self.shown(lines, "extra-line "), SHOWN)
        self.assertIn("extra-line: 1 more (--all shows them)", lines)
        self.assertEqual(self.shown(lines, "wrong-count"), 1)
        findings = 2 * SHOWN + 134 + 1 + 1
        self.assertRegex(lines[-1], rf"^check_run: \d+ patterns, {findings} findings, 0 known")

        every = self.run_command(files.input, "--all").stdout.splitlines()
        self.assertEqual(self.shown(every, "wrong-tid 1-0: "), SHOWN + 134)
        self.assertEqual(self.shown(every, "extra-line "), SHOWN + 1)
        self.assertFalse([line for line in every if "--all" in line])
        self.assertEqual(every[-1], lines[-1])

    @staticmethod
    def shown(lines: list[str], start: str) -> int:
        return sum(line.startswith(start) for line in lines)

    def told(self, findings: Findings, most: int | None) -> list[str]:
        with contextlib.redirect_stdout(io.StringIO()) as out:
            tell(Outcome(findings, 5, None, Labels()), most)
        return out.getvalue().splitlines()

    def test_known_limits_too(self) -> None:
        findings = Findings()
        for i in range(4):
            findings.add("isomorphic-pair", f"9-{i}", limit=True)
        findings.add("isomorphic-pair", "8-1")
        self.assertEqual(
            self.told(findings, 3),
            [
                "isomorphic-pair 8-1",
                "known-limit isomorphic-pair 9-0",
                "known-limit isomorphic-pair 9-1",
                "known-limit isomorphic-pair 9-2",
                "known-limit isomorphic-pair: 1 more (--all shows them)",
                "check_run: 5 patterns, 1 findings, 4 known limits",
            ],
        )
        self.assertIn("known-limit isomorphic-pair 9-3", self.told(findings, None))

    def test_no_more_where_all_are_shown(self) -> None:
        findings = Findings()
        for i in range(3):
            findings.add("wrong-tid", f"1-{i}")
        self.assertEqual(len(self.told(findings, 3)), 4)


class OutputForInput(CommandTest):
    """A file of the run is given where its input belongs."""

    def setUp(self) -> None:
        self.run_files = Run(["-t", "-p"])
        self.addCleanup(self.run_files.close)
        self.folder = self.run_files.folder
        (self.folder / "db.c.g").write_text("t # 3-0, 0\n")

    def refused(self, name: str) -> str:
        ran = self.run_command(self.folder / name)
        self.assertEqual((ran.returncode, ran.stdout), (2, ""))
        self.assertIn(f"{name} looks like the ", ran.stderr)
        self.assertIn("FILE is the input of the run, of lines such as 't # 0'", ran.stderr)
        return ran.stderr

    def test_input_is_named(self) -> None:
        for name in ("db.fp", "db.tid", "db.pc", "db.c.g"):
            with self.subTest(name):
                told = self.refused(name)
                self.assertTrue(told.endswith(f"check_run.py {self.folder / 'db.txt'}\n"), told)

    def test_input_is_not_there(self) -> None:
        self.run_files.input.unlink()
        self.assertTrue(self.refused("db.fp").endswith("called db.txt, and is not here\n"))

    def test_pattern_file_is_not_there_or_has_no_head(self) -> None:
        self.run_files.edit("fp", lambda lines: [x for x in lines if "Transaction File" not in x])
        for name in ("db.fp", "db.tid"):
            self.assertTrue(self.refused(name).endswith("'u 0 1 s'\n"))
        (self.folder / "db.fp").unlink()
        self.assertTrue(self.refused("db.pc").endswith("'u 0 1 s'\n"))

    def test_input_called_like_an_output(self) -> None:
        """Its own pattern file says that it is one."""
        for name in ("mine.tid", "mine.c.g", "für.tid", "é.txt", " lead.txt"):
            with self.subTest(name):
                shutil.copy(self.run_files.input, self.folder / name)
                subprocess.run(
                    [PROGRAM, "-s", SUPPORT, name], cwd=self.folder, capture_output=True, check=True
                )
                ran = self.run_command(self.folder / name)
                self.assertEqual((ran.returncode, ran.stderr), (0, ""), ran.stdout)


if __name__ == "__main__":
    unittest.main()
