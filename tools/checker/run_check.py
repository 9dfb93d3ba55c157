"""A finished run, proved: read, its levels proved, then all that rests on them.

A maximal run is compared with all frequent patterns; where the budget of
extensions does not reach so far, each listed pattern is extended by itself.
"""

import dataclasses
import os
from collections import Counter
from pathlib import Path

from checker import estimate, plan, report
from checker.certificates import Certificate, certificate
from checker.findings import Findings, Name, name_text
from checker.graphs import BadFile, Labels, TransactionFile, read_label_file, read_transactions
from checker.growth import Growth, PatternClass, distinct_parents
from checker.levels import Levels
from checker.progress import Progress
from checker.run_files import (
    Pattern,
    RunFiles,
    match_names,
    mistaken_output,
    read_blocks,
    read_parents,
    read_patterns,
    read_tids,
)


@dataclasses.dataclass
class Request:
    """What to check, and what the files do not tell."""

    input_file: Path
    output: bytes | None = None  # what the run printed
    label_file: Path | None = None
    support: float | None = None  # per cent
    threshold: int = 5  # --stabilizer-threshold
    budget: int | None = 500_000  # extensions to look at; None: all
    candidates: bool = True  # whether a candidate file is of this run


@dataclasses.dataclass
class Outcome:
    findings: Findings
    patterns: int
    files: RunFiles | None  # None when they cannot be told apart
    labels: Labels


def check_run(request: Request, progress: Progress | None = None) -> Outcome:
    """Read and prove a finished run.  An input that cannot be read raises."""
    progress = progress or Progress()
    progress.begin("reading")
    mistaken = mistaken_output(request.input_file)
    if mistaken is not None:
        raise BadFile(mistaken)
    findings = Findings()
    labels = Labels()
    read = read_transactions(request.input_file.read_bytes(), labels)
    base = report.derived_name(str(request.input_file), "")
    pattern_file = Path(base + ".fp")
    if not pattern_file.is_file():
        raise BadFile(f"there is no {pattern_file}")
    comments, blocks = read_blocks(pattern_file.read_bytes(), pattern_file.name, findings)
    try:
        settings = report.read_settings(comments)
    except report.NoHead as error:
        findings.add("wrong-header", str(error))
        return Outcome(findings, len(blocks), None, labels)
    names, patterns = read_patterns(blocks, "pattern", labels, settings.maximal, findings)
    files = RunFiles(comments, names, patterns, None, None, None)
    if settings.tid_list:
        files.tids = read_tids(Path(base + ".tid"), findings)
    if settings.pc_list:
        files.parents = read_parents(Path(base + ".pc"), findings)
    candidate_file = Path(base + ".c.g")
    if candidate_file.is_file() and not request.candidates:
        findings.note(f"{candidate_file.name} is of another run unless --candidates says so")
    elif (blocks := read_candidates(candidate_file, findings)) is not None:
        _, files.candidates = read_patterns(blocks, "candidate", labels, False, findings)
    _Check(request, read, files, settings, findings, labels, progress).run()
    return Outcome(findings, len(names), files, labels)


def read_candidates(path: Path, findings: Findings) -> list | None:
    if not path.is_file():
        return None
    comments, blocks = read_blocks(path.read_bytes(), path.name, findings)
    if comments:
        findings.add("bad-line", f"{path.name}: {comments[0]!r}")
    return blocks


class _Check:
    def __init__(
        self,
        request: Request,
        read: TransactionFile,
        files: RunFiles,
        settings: report.Settings,
        findings: Findings,
        labels: Labels,
        progress: Progress,
    ) -> None:
        self._progress = progress
        self._request = request
        self._read = read
        self._files = files
        self._settings = settings
        self._findings = findings
        self._levels = Levels(
            read.graphs,
            labels,
            files,
            settings,
            request.threshold,
            request.budget,
            findings,
            progress,
        )

    def run(self) -> None:
        if self._progress.is_shown:
            self._estimate()
        self._check_support()
        self._check_names()
        self._levels.prove()
        self._progress.begin(plan.PARENTS)
        self._check_parents()
        if self._settings.maximal:
            self._check_maximal()
        if self._files.candidates is not None:
            self._check_candidates()
        self._progress.begin(plan.REPORT)
        self._check_report()

    def _estimate(self) -> None:
        """What there is to do and how long it takes, for whoever looks on."""
        progress, files, settings = self._progress, self._files, self._settings
        progress.begin("measuring a few patterns")
        levels = self._levels
        sample = estimate.Sample(levels.db, levels.least, files, progress.clock)
        steps = estimate.make_plan(sample, settings, files.candidates, self._request.budget)
        for text in estimate.notes(steps, sample, settings, len(levels.db.graphs)):
            progress.note(text)
        progress.follow(steps)

    # Names and settings

    def _check_support(self) -> None:
        count, n = self._settings.least, len(self._read.graphs)
        support = self._request.support
        if support is None:
            first, last = report.possible_counts(self._settings.percentage, n)
        else:
            first = last = report.support_count(support, n)
            if f"{support:.1f}" != self._settings.percentage:
                self._findings.add("wrong-header", f"a support of {self._settings.percentage}%")
        if not first <= count <= last:
            self._findings.add(
                "wrong-header",
                f"{self._settings.percentage}% of {n} transactions are not {count}",
            )

    def _check_names(self) -> None:
        smallest, largest = self._settings.minsize, self._settings.maxsize
        for name in self._files.names:
            if not smallest <= name[0] <= largest:
                self._findings.add("wrong-size", f"{name_text(name)}: not of a size to report")
        for lines, wanted, what in (
            (self._files.tids, self._settings.tid_list, "TID list"),
            (self._files.parents, self._settings.pc_list, "PC list"),
        ):
            if wanted and lines is None:
                self._findings.add("missing-line", f"{what}: there is no file")
            match_names(self._files.names, lines, what, self._findings)

    # Parents

    def _check_parents(self) -> None:
        """Those listed are of the classes of all parts, of each at least one;
        where their records are not written, an id stands for one class."""
        if self._files.parents is None:
            return
        meant: dict[Name, Certificate] = {}
        for pattern in self._files.patterns:
            listed = self._files.parents.get(pattern.name)
            if listed is not None:
                self._check_parent_list(pattern, listed, meant)

    def _check_parent_list(
        self, pattern: Pattern, listed: list[Name], meant: dict[Name, Certificate]
    ) -> None:
        size = pattern.name[0]
        text = name_text(pattern.name)
        shapes = self._levels.class_of(pattern).parents
        below = self._levels.of_size.get(size - 1, {})
        if self._settings.maximal or size == self._settings.minsize:
            self._check_unwritten_parents(pattern, listed, shapes)
            return
        for name in listed:
            if self._levels.shapes.get(name) not in shapes:
                self._findings.add("extra-parent", f"{text}: {name_text(name)}")
        for shape in shapes:
            names = {(size - 1, number) for number in below[shape].ids} if shape in below else set()
            if names and not names & set(listed):
                self._findings.add("missing-parent", f"{text}: {size - 1}-{min(names)[1]}")

    def _check_unwritten_parents(
        self, pattern: Pattern, listed: list[Name], shapes: list[Certificate]
    ) -> None:
        """As many as there are parts; more where a part may have two forms."""
        text = name_text(pattern.name)
        size = pattern.name[0]
        for name in listed:
            if name[0] != size - 1:
                self._findings.add("extra-parent", f"{text}: {name_text(name)}")
        if len(listed) < len(shapes):
            self._findings.add("missing-parent", f"{text}: has {len(shapes)} parents")
        if len(listed) > len(shapes):
            part_varies = any(
                self._levels.may_vary(certificate(part), part)
                for part in (
                    pattern.graph.without_edge(u, w) for u, w, _ in pattern.graph.removable_edges()
                )
            )
            self._findings.add(
                "extra-parent", f"{text}: has {len(shapes)} parents", limit=part_varies
            )
        for name in listed:
            shape = self._levels.shapes.get(name)
            if shape is not None and shape not in shapes:
                self._findings.add("extra-parent", f"{text}: {name_text(name)}")

    # Maximal runs

    def _check_maximal(self) -> None:
        if self._levels.is_whole():
            self._compare_maximal()
            return
        # Only the listed ones can be judged, by their own extensions.
        growth = Growth(self._levels.db, self._levels.least, None)
        refuted: set[Certificate] = set()
        self._progress.begin(plan.MAXIMAL, count=len(self._files.patterns))
        for pattern in self._files.patterns:
            self._progress.advance()
            if pattern.name[0] >= self._settings.maxsize:
                continue
            known = self._levels.class_of(pattern)
            larger = growth.frequent_extension(known.graph, known.bits, refuted)
            if larger is not None:
                self._findings.add(
                    "not-maximal",
                    f"{name_text(pattern.name)}: part of {self._levels.describe(larger)}",
                    limit=self._levels.may_vary(self._levels.shapes[pattern.name], known.graph),
                )

    def _compare_maximal(self) -> None:
        """The listed patterns against those of all that no other holds."""
        for size, level in self._levels.of_size.items():
            for shape, known in level.items():
                for parent in known.parents:
                    if parent in self._levels.of_size[size - 1]:
                        self._levels.of_size[size - 1][parent].children.append(shape)
        for size, level in self._levels.of_size.items():
            if size < self._settings.minsize:
                continue
            for shape, known in level.items():
                self._compare_class(size, shape, known)

    def _compare_class(self, size: int, shape: Certificate, known: PatternClass) -> None:
        above = self._levels.of_size.get(size + 1, {})
        if known.ids and known.children:
            excused = self._levels.may_vary(shape, known.graph) or all(
                self._levels.is_excused(size + 1, above[child]) for child in known.children
            )
            larger = self._levels.describe(above[known.children[0]].graph)
            for number in known.ids:
                self._findings.add(
                    "not-maximal", f"{size}-{number}: part of {larger}", limit=excused
                )
        if not known.ids and not known.children:
            self._findings.add(
                "missing-pattern",
                f"size {size}, maximal: {self._levels.describe(known.graph)}",
                limit=self._levels.is_excused(size, known),
            )

    # Candidates

    def _check_candidates(self) -> None:
        """None twice, none with an infrequent part, none counted, and every
        frequent pattern among them."""
        shapes: dict[Certificate, Name] = {}
        candidates = self._files.candidates or []
        self._progress.begin(plan.CANDIDATES, count=len(candidates))
        for candidate in candidates:
            self._progress.advance()
            text = f"candidate {name_text(candidate.name)}"
            shape = certificate(candidate.graph)
            if shape in shapes:
                self._findings.add(
                    "isomorphic-pair",
                    f"{text} and {name_text(shapes[shape])}",
                    limit=self._levels.may_vary(shape, candidate.graph),
                )
            shapes[shape] = candidate.name
            if candidate.count != 0:
                self._findings.add("wrong-count", f"{text}: {candidate.count}, not 0")
            size = candidate.name[0]
            if size < 3:
                self._findings.add("wrong-size", text)
            elif self._levels.complete >= size - 1:
                below = self._levels.of_size.get(size - 1, {})
                if any(part not in below for part in distinct_parents(candidate.graph)):
                    self._findings.add("infrequent", f"{text}: a part of it is")
        for pattern in self._files.patterns:
            if pattern.name[0] > 2 and self._levels.shapes[pattern.name] not in shapes:
                self._findings.add("missing-candidate", name_text(pattern.name))

    # The report

    def _check_report(self) -> None:
        read, settings = self._read, self._settings
        facts = report.Facts(read.graphs, read.vertex_labels, read.edge_labels)
        if self._request.label_file is not None:
            facts.vertex_labels, facts.edge_labels = read_label_file(self._request.label_file)
        counts = Counter(size for size, _ in self._files.names)
        candidates = None
        if self._files.candidates is not None:
            candidates = Counter(candidate.name[0] for candidate in self._files.candidates)
        expected = report.Expected(settings, dict(counts), candidates, self._levels.largest())
        head = report.expected_head(settings, facts)
        self._check_one_report(self._files.comments, head, expected, "pattern file", False)
        if Path(settings.input_file).name != self._request.input_file.name:
            self._findings.add("wrong-header", f"the input is called {settings.input_file!r}")
        if self._request.output is not None:
            lines = os.fsdecode(self._request.output).split("\n")
            if lines.pop() != "":
                self._findings.add("wrong-total", "standard output: the last line has no end")
            self._check_one_report(lines, head, expected, "standard output", True)

    def _check_one_report(
        self, lines: list[str], head: list[str], expected: report.Expected, where: str, live: bool
    ) -> None:
        report.check_head(lines, head, where, self._findings)
        report.check_foot(lines[len(head) :], expected, where, live, self._findings)
