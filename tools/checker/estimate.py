"""What there is to prove, and about how long that takes.

A few patterns of each size are put through the steps that all have to go through,
and the clock says what each step costs.  That gives a plan (tools/checker/plan.py):
the steps of the check in their order, with a guess for each.

Of patterns that are not listed, below the smallest size or in a maximal run, it is
not known how many there are.  How long the check takes is not told then: the budget
of extensions would bound it, but by far too much.
"""

import dataclasses
import itertools
from collections.abc import Callable

from checker.certificates import certificate
from checker.findings import Name
from checker.growth import Growth, distinct_parents, parts
from checker.occurrences import Database, bits_of, members
from checker.plan import (
    CANDIDATES,
    EXTEND,
    GROUP,
    MAXIMAL,
    PARENTS,
    SEARCH,
    UNLISTED,
    Plan,
    Step,
    in_words,
)
from checker.report import Settings
from checker.run_files import Pattern, RunFiles

ROUNDS = 8  # patterns measured of each size, at most
SECONDS = 3.0  # after which no more are measured
TRANSACTIONS = 200  # searched for a measured pattern, at most
CERTIFIED = 50  # extensions of it gone into, at most


@dataclasses.dataclass
class Cost:
    """What one pattern takes, in seconds."""

    group: float  # its certificate and its parts
    search: float  # its transactions
    extend: float  # its extensions
    extensions: float  # how many these are


class Sample:
    """Patterns measured: what those of each size cost."""

    def __init__(
        self,
        db: Database,
        least: int,
        files: RunFiles,
        clock: Callable[[], float],
        seconds: float = SECONDS,
    ) -> None:
        self._db = db
        self._files = files
        self._clock = clock
        self._growth = Growth(db, least, None)
        self.counts: dict[int, int] = {}
        self.measured = 0
        self.costs: dict[int, Cost] = {}
        searches = db.searches
        self._measure(seconds)
        db.searches = searches  # these prove nothing

    def _measure(self, seconds: float) -> None:
        """A pattern of each size, most frequent sizes first, then another."""
        end = self._clock() + seconds
        of_size: dict[int, list[Pattern]] = {}
        for pattern in self._files.patterns:
            of_size.setdefault(pattern.name[0], []).append(pattern)
        self.counts = {size: len(patterns) for size, patterns in of_size.items()}
        found: dict[int, list[Cost]] = {}
        by_count = sorted(of_size, key=lambda size: -self.counts[size])
        for number, size in itertools.product(range(ROUNDS), by_count):
            patterns = of_size[size]
            if number >= len(patterns):
                continue
            if found and self._clock() >= end:
                break
            # Spread over the size, however many rounds there are.
            place = int((number + 0.5) * 0.6180339887 % 1 * len(patterns))
            found.setdefault(size, []).append(self._cost(patterns[place]))
            self.measured += 1
        for size, costs in found.items():
            self.costs[size] = mean(costs)

    def _cost(self, pattern: Pattern) -> Cost:
        g = pattern.graph
        start = self._clock()
        certificate(g)
        distinct_parents(g)
        grouped = self._clock()
        bits = self._db.bound(g, self.searched(pattern))
        some = bits_of(list(itertools.islice(members(bits), TRANSACTIONS)))
        self._db.containing(g, some)
        searched = self._clock()
        number = 0
        certified = searched
        for grown, _ in self._growth.extensions(g, self._listed(pattern.name, bits), True):
            if number < CERTIFIED:
                certificate(grown)
                next(parts(grown), None)
                certified = self._clock()
            number += 1
        return Cost(
            grouped - start,
            (searched - grouped) * bits.bit_count() / max(1, some.bit_count()),
            (certified - searched) * max(1.0, number / CERTIFIED),
            number,
        )

    def _listed(self, name: Name, otherwise: int) -> int:
        """The transactions that the run lists."""
        tids = (self._files.tids or {}).get(name)
        return otherwise if tids is None else bits_of(tids) & self._db.all

    def searched(self, pattern: Pattern) -> int:
        """The transactions of all its parents, where these are listed: what the
        check will search, as far as can be told before."""
        bits = self._db.all
        for name in (self._files.parents or {}).get(pattern.name, []):
            bits &= self._listed(name, bits)
        return bits if bits != self._db.all else self._listed(pattern.name, bits)

    def cost(self, size: int) -> Cost:
        """That of the nearest size measured."""
        if not self.costs:
            return Cost(0, 0, 0, 0)
        return self.costs[min(self.costs, key=lambda other: (abs(other - size), other))]


def mean(costs: list[Cost]) -> Cost:
    return Cost(*(sum(column) / len(costs) for column in zip(*map(dataclasses.astuple, costs))))


def make_plan(
    sample: Sample, settings: Settings, candidates: list[Pattern] | None, budget: int | None
) -> Plan:
    """What the check will do, by what the sample has cost."""
    unlisted = settings.maximal or settings.minsize > 1
    steps: list[Step] = []
    last = min(max(sample.counts, default=0) + 1, settings.maxsize)
    for size in range(1, last + 1):
        count, cost = sample.counts.get(size, 0), sample.cost(size)
        steps.append(Step(GROUP, size, count * cost.group))
        steps.append(Step(SEARCH, size, count * cost.search))
        if not unlisted:
            count, cost = sample.counts.get(size - 1, 0), sample.cost(size - 1)
            steps.append(Step(EXTEND, size, count * cost.extend, count * cost.extensions))
    if unlisted and budget is not None:
        steps.append(Step(UNLISTED, 0, budget * cost_of_extension(sample), budget))
    steps.append(Step(PARENTS, 0, 0.0))
    patterns = sum(sample.counts.values())
    if settings.maximal:
        steps.append(Step(MAXIMAL, 0, sum(step.seconds for step in steps if step.name == SEARCH)))
    if candidates is not None:
        seconds = sum(sample.cost(candidate.name[0]).group for candidate in candidates)
        steps.append(Step(CANDIDATES, 0, seconds))
    known = not unlisted
    return Plan(steps, patterns, budget, known)


def cost_of_extension(sample: Sample) -> float:
    """With its share of what becomes of the patterns found by it."""
    costs = sample.costs.values()
    seconds = sum(cost.group + cost.search + cost.extend for cost in costs)
    return seconds / max(1.0, sum(cost.extensions for cost in costs))


def notes(plan: Plan, sample: Sample, settings: Settings, transactions: int) -> list[str]:
    """What is to be proved, and about how long that takes."""
    unlisted = settings.maximal or settings.minsize > 1
    sizes = "none"
    if sample.counts:
        first, last = min(sample.counts), max(sample.counts)
        sizes = f"size {first}" if first == last else f"sizes {first} to {last}"
    wanted = plan.extensions()
    if unlisted:
        looked = "all extensions" if plan.budget is None else f"up to {plan.budget} extensions"
    elif plan.budget is not None and wanted > plan.budget:
        looked = f"{plan.budget} of {about(wanted)} extensions (--complete: all)"
    else:
        looked = f"{about(wanted)} extensions"
    what = f"{plan.patterns} patterns ({sizes}) in {transactions} transactions, {looked}"
    if not plan.is_known:
        return [f"to prove: {what}", "how long this takes cannot be told beforehand"]
    return [
        f"to prove: {what}",
        f"this takes {in_words(plan.total)}, judged by {sample.measured} of the patterns",
    ]


def about(number: float) -> str:
    """Two digits of it are known at best."""
    whole = round(number)
    return f"about {round(whole, 2 - len(str(whole)))}" if whole >= 100 else f"about {whole}"
