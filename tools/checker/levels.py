"""The patterns of each size: their classes, their transactions, and whether one
is missing.

Size by size: the patterns of a size are grouped into isomorphism classes; the
transactions of a class are searched for among those that all its parts have,
which are proved by then, and compared with what is listed.  Then all extensions
of the size below are gone through, which shows whether one that is frequent is
not listed.  Sizes that are not listed, below the smallest one reported and in a
maximal run, are found by the same extensions, as far as the budget reaches.
"""

from collections.abc import Iterator

from checker import plan
from checker.certificates import Certificate, certificate
from checker.findings import Findings, Name, name_text
from checker.graphs import Graph, Labels
from checker.growth import (
    BudgetSpent,
    Growth,
    Level,
    PatternClass,
    distinct_parents,
    single_edges,
)
from checker.limits import form_may_vary
from checker.occurrences import Database, bits_of, members
from checker.progress import Progress
from checker.report import Settings
from checker.run_files import Pattern, RunFiles


class Levels:
    """What prove() has found out: the classes of each size."""

    def __init__(
        self,
        graphs: list[Graph],
        labels: Labels,
        files: RunFiles,
        settings: Settings,
        threshold: int,
        budget: int | None,
        findings: Findings,
        progress: Progress,
    ) -> None:
        self.of_size: dict[int, Level] = {}
        self.complete = 0  # up to this size, these are all frequent classes
        self.shapes: dict[Name, Certificate] = {}  # of the patterns
        self.db = Database(graphs)
        self.least = max(1, settings.least)
        self._labels = labels
        self._files = files
        self._settings = settings
        self._threshold = threshold
        self._findings = findings
        self._progress = progress
        self._growth = Growth(self.db, self.least, budget, progress)
        self._varying: dict[Certificate, bool] = {}
        self._written: dict[int, list[Pattern]] = {}
        for pattern in files.patterns:
            self._written.setdefault(pattern.name[0], []).append(pattern)

    def class_of(self, pattern: Pattern) -> PatternClass:
        return self.of_size[pattern.name[0]][self.shapes[pattern.name]]

    def is_whole(self) -> bool:
        """Whether all frequent classes are known."""
        last = max(self._written, default=0)
        return self.complete >= min(last + 1, self._settings.maxsize)

    def prove(self) -> None:
        last_written = max(self._written, default=0)
        size = 0
        while size < self._settings.maxsize:
            size += 1
            level = self._group(size)
            self.of_size[size] = level
            self._find_sets(size, level)
            self._check_records(size, level)
            self._complete_level(size, level)
            if size >= last_written and (self.complete < size or not level):
                break
        if not self.of_size.get(size):
            self.of_size.pop(size, None)
        self._tell_how_far()

    def _tell_how_far(self) -> None:
        spent = f"{self._growth.looked_at} extensions, {self.db.searches} searches"
        if self.is_whole():
            self._findings.note(f"complete: all sizes, {spent}")
        else:
            self._findings.note(f"complete: up to size {self.complete} only, {spent}")

    def _group(self, size: int) -> Level:
        """The written patterns of a size, by class."""
        level: Level = {}
        written = self._written.get(size, [])
        self._progress.begin(plan.GROUP, size, len(written))
        for pattern in written:
            shape = certificate(pattern.graph)
            self.shapes[pattern.name] = shape
            known = level.get(shape)
            if known is None:
                parents = distinct_parents(pattern.graph)
                known = level[shape] = PatternClass(pattern.graph, -1, parents, [], [])
            else:
                self._findings.add(
                    "isomorphic-pair",
                    f"{name_text(pattern.name)} and {size}-{known.ids[0]}",
                    limit=self.may_vary(shape, pattern.graph),
                )
            known.ids.append(pattern.name[1])
            self._progress.advance()
        return level

    def _find_sets(self, size: int, level: Level) -> None:
        below = self.of_size.get(size - 1, {})
        self._progress.begin(plan.SEARCH, size, len(level))
        for known in level.values():
            bound = self.db.all
            for shape in known.parents:
                part = below.get(shape)
                if part is not None:
                    bound &= part.bits
            known.bits = self.db.containing(known.graph, bound)
            self._progress.advance(len(known.ids))

    def _check_records(self, size: int, level: Level) -> None:
        for pattern in self._written.get(size, []):
            bits = level[self.shapes[pattern.name]].bits
            self._check_record(pattern, bits)

    def _check_record(self, pattern: Pattern, bits: int) -> None:
        text = name_text(pattern.name)
        listed = (self._files.tids or {}).get(pattern.name)
        count = bits.bit_count()
        if listed is not None:
            count = len(listed)
            self._compare_tids(text, bits_of(listed), bits)
        if pattern.count != count:
            self._findings.add("wrong-count", f"{text}: {pattern.count}, not {count}")
        if bits.bit_count() < self.least:
            self._findings.add("infrequent", f"{text}: in {bits.bit_count()} transactions")

    def _compare_tids(self, text: str, listed: int, bits: int) -> None:
        for tid in members(listed & ~bits):
            wrong = "does not contain it" if tid < len(self.db.graphs) else "does not exist"
            self._findings.add("wrong-tid", f"{text}: transaction {tid} {wrong}")
        for tid in members(bits & ~listed):
            self._findings.add("wrong-tid", f"{text}: transaction {tid} contains it, too")

    def _complete_level(self, size: int, level: Level) -> None:
        """Add what is frequent and not listed, if the size below is complete."""
        if self.complete != size - 1:
            return
        if size == 1:
            every = single_edges(self.db, self.least)
            missing = {shape: c for shape, c in every.items() if shape not in level}
        else:
            below = self.of_size[size - 1]
            self._progress.begin(plan.EXTEND, size, len(below))
            try:
                missing = self._growth.next_level(below, level)
            except BudgetSpent:
                return
        self.complete = size
        listed = size >= self._settings.minsize and not self._settings.maximal
        for shape, found in missing.items():
            level[shape] = found
            if listed:
                self._findings.add(
                    "missing-pattern",
                    f"size {size}, in {found.bits.bit_count()} transactions: "
                    + self.describe(found.graph),
                    limit=self.is_excused(size, found),
                )

    # The known limit

    def may_vary(self, shape: Certificate, g: Graph) -> bool:
        known = self._varying.get(shape)
        if known is None:
            known = self._varying[shape] = form_may_vary(g, self._threshold)
        return known

    def is_excused(self, size: int, missing: PatternClass) -> bool:
        """Whether the known limit may explain why a class is not listed, or was
        not found where its size is not listed: a candidate is joined from parts
        one and two edges smaller, and dropped when a part is not found; so one
        of these may have several forms, or be excused itself."""
        if missing.excused is None:
            missing.excused = any(
                self.may_vary(shape, part.graph)
                or (not part.ids and self.is_excused(part_size, part))
                for part_size, shape, part in self._parts(size, missing)
            )
        return missing.excused

    def _parts(
        self, size: int, known: PatternClass
    ) -> Iterator[tuple[int, Certificate, PatternClass]]:
        """Those known, one and two edges smaller."""
        for shape in known.parents:
            part = self.of_size[size - 1].get(shape)
            if part is None:
                continue
            yield size - 1, shape, part
            for smaller_shape in part.parents:
                smaller = self.of_size[size - 2].get(smaller_shape)
                if smaller is not None:
                    yield size - 2, smaller_shape, smaller

    def largest(self) -> int | None:
        """The largest size when no pattern is written; None if not known."""
        if self._settings.maximal or self._settings.maxsize < 1:
            return 0
        last = max((size for size, level in self.of_size.items() if level), default=0)
        return last if self.complete > last or last == self._settings.maxsize else None

    def describe(self, g: Graph) -> str:
        vertices = _by_number(self._labels.vertex)
        edges = _by_number(self._labels.edge)
        shown = [
            f"{vertices[g.vlabel[u]]}{u}-{edges[label]}-{vertices[g.vlabel[w]]}{w}"
            for u, w, label in g.edges()
        ]
        return " ".join(shown)


def _by_number(numbers: dict[bytes, int]) -> list[str]:
    return [label.decode("latin-1") for label in numbers]
