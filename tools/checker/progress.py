"""How far a check is: one live line on a terminal, and nothing anywhere else.

The line is written over itself, a few times a second at most and whenever another
step begins, and is gone at the end.  How long the rest takes is told once there
is a plan (tools/checker/estimate.py), whose guesses the clock puts right.
"""

import os
import time
from collections.abc import Callable
from typing import TextIO

from checker.plan import EXTEND, GROUP, SEARCH, Plan, in_words

INTERVAL = 0.2  # seconds between two lines of the same step
SOME_COLUMNS = 80  # of a terminal that does not tell


class Progress:
    """Told by what works how far it is; silent without a stream."""

    def __init__(
        self, stream: TextIO | None = None, clock: Callable[[], float] = time.monotonic
    ) -> None:
        self.clock = clock
        self._stream = stream
        self._start = clock() if stream else 0.0
        self._plan: Plan | None = None
        self._plan_start = 0.0
        self._step = ""
        self._proved = 0
        self._looked_at = 0
        self._next_line = 0.0
        self._shown = 0  # columns of the line that stands there

    def __enter__(self) -> "Progress":
        return self

    def __exit__(self, *_: object) -> None:
        self.erase()

    @property
    def is_shown(self) -> bool:
        return self._stream is not None

    def note(self, text: str) -> None:
        """A line that stays."""
        self.erase()
        self._write(f"check_run: {text}\n")

    def follow(self, plan: Plan) -> None:
        """From here on it goes by this plan."""
        self._plan = plan
        self._plan_start = self.clock()

    def begin(self, step: str, size: int = 0, count: int = 0) -> None:
        """A step of so many equal parts."""
        if self._stream is None:
            return
        self._step = f"size {size}" if step in (GROUP, SEARCH, EXTEND) else step
        if self._plan is not None:
            self._plan.begin(step, size, count)
        self._draw()

    def advance(self, proved: int = 0) -> None:
        """A part is done; with it so many patterns are proved."""
        if self._stream is None:
            return
        self._proved += proved
        if self._plan is not None:
            self._plan.advance()
        self._draw_in_time()

    def look(self, looked_at: int) -> None:
        """So many extensions have been looked at."""
        if self._stream is None:
            return
        self._looked_at = looked_at
        self._draw_in_time()

    def erase(self) -> None:
        if self._shown:
            self._write("\r" + " " * self._shown + "\r")
            self._shown = 0

    def _draw_in_time(self) -> None:
        if self.clock() >= self._next_line:
            self._draw()

    def _draw(self) -> None:
        text = self.line()[: self._columns() - 1]
        self._write("\r" + text + " " * (self._shown - len(text)))
        self._shown = len(text)
        self._next_line = self.clock() + INTERVAL

    def line(self) -> str:
        """The time first, since a narrow terminal cuts the end off."""
        now = self.clock()
        seconds = int(now - self._start)
        hours, minutes = seconds // 3600, seconds // 60 % 60
        gone = f"{hours}:{minutes:02d}" if hours else f"{minutes}"
        text = f"{gone}:{seconds % 60:02d} gone"
        if self._plan is None:
            return f"{text}; {self._step}"
        left = self._plan.seconds_left(now - self._plan_start, self._looked_at)
        if left is not None:
            text += f", {in_words(left, short=True)} left"
        if not self._step.startswith("size"):
            return f"{text}; {self._step}"
        of_budget = "" if self._plan.budget is None else f"/{self._plan.budget}"
        return (
            f"{text}; {self._step}: {self._proved}/{self._plan.patterns} patterns, "
            f"{self._looked_at}{of_budget} extensions"
        )

    def _columns(self) -> int:
        if self._stream is None:
            return SOME_COLUMNS
        try:
            return os.get_terminal_size(self._stream.fileno()).columns or SOME_COLUMNS
        except (OSError, ValueError):
            return SOME_COLUMNS

    def _write(self, text: str) -> None:
        if self._stream is None:
            return
        try:
            self._stream.write(text)
            self._stream.flush()
        except OSError:  # a terminal that went away does not end the check
            self._stream = None


def on_terminal(stream: TextIO | None) -> Progress:
    """One that tells on stream when this is a terminal."""
    return Progress(stream if stream is not None and stream.isatty() else None)
