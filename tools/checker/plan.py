"""The steps of a check in their order, with a guess of the time that each takes.

While the plan is followed, what it took so far against what was guessed for it
scales what is left.
"""

import dataclasses
import math

GROUP = "classes"
SEARCH = "transactions"
EXTEND = "extensions"
UNLISTED = "extensions to what is not listed"
PARENTS = "parents"
MAXIMAL = "maximal patterns"
CANDIDATES = "candidates"
REPORT = "report"


@dataclasses.dataclass
class Step:
    name: str
    size: int
    seconds: float
    extensions: float = 0.0  # that it looks at


class Plan:
    """The steps of a check, and how far it is."""

    def __init__(
        self, steps: list[Step], patterns: int, budget: int | None, known: bool = True
    ) -> None:
        self.patterns = patterns
        self.budget = budget
        self.steps = steps
        self.is_known = known  # whether anything bounds the time
        self._index = {(step.name, step.size): i for i, step in enumerate(steps)}
        self._at = 0
        self._done = 0.0  # share of that step
        self._part = 0.0  # share that each part of it has
        self.total = self._guess(0)

    def begin(self, name: str, size: int, count: int) -> None:
        """A step of so many parts; one that is not planned ends the one before."""
        at = self._index.get((name, size))
        if at is None:
            self._done, self._part = 1.0, 0.0
        else:
            self._at = at
            self._done, self._part = 0.0, 1 / max(1, count)

    def advance(self) -> None:
        self._done = min(1.0, self._done + self._part)

    def _guess(self, looked_at: int) -> float:
        """For what is left, as it was measured; the budget ends extensions."""
        allowed = math.inf if self.budget is None else max(0, self.budget - looked_at)
        seconds = 0.0
        share = 1 - self._done
        for step in self.steps[self._at :]:
            wanted = step.extensions * share
            if wanted > allowed:
                share *= allowed / wanted
                wanted = allowed
            allowed -= wanted
            seconds += step.seconds * share
            share = 1.0
        return seconds

    def seconds_left(self, elapsed: float, looked_at: int) -> float | None:
        """None when it cannot be told.  What was measured counts as if a
        twentieth of the time had gone by it, so that the first steps do not mislead."""
        if not self.is_known:
            return None
        left = self._guess(looked_at)
        weight = self.total / 20 + 1
        return left * (elapsed + weight) / (max(0.0, self.total - left) + weight)

    def extensions(self) -> float:
        """All that the steps would look at without a budget."""
        return sum(step.extensions for step in self.steps)


def in_words(seconds: float, short: bool = False) -> str:
    """A time as roughly as it is known."""
    if seconds < 10:
        return "<10 s" if short else "a few seconds"
    if seconds < 95:
        number, long, brief = round(seconds, -1), "seconds", "s"
    elif seconds < 95 * 60:
        number, long, brief = seconds / 60, "minutes", "min"
    elif seconds < 48 * 3600:
        number, long, brief = seconds / 3600, "hours", "h"
    else:
        number, long, brief = seconds / 86400, "days", "days"
    return f"~{number:.0f} {brief}" if short else f"about {number:.0f} {long}"
