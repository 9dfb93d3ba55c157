"""Showing how far a run is."""

from __future__ import annotations

import sys
from collections.abc import Callable
from typing import Any, NamedTuple


class Progress(NamedTuple):
    """How far a run is within one size of patterns.

    Attributes
    ----------
    size : int
        Edges of the patterns that are being looked for; 0 for the passes over a
        cluster.
    step : str
        "joining", "bounding", "counting" or "complete"; of a pass "mining shards",
        "counting in shards" or "finding in shards".
    done, known : int
        Items of this step, done and in all: patterns that are joined,
        candidates that are bounded or counted, patterns found, shards.
    candidates : int
        Candidates of this size; 0 while joining.
    """

    size: int
    step: str
    done: int
    known: int
    candidates: int


_FORMAT = "{desc}{percentage:3.0f}%|{bar}| {n_fmt}/{total_fmt} [{elapsed}]"

ProgressCallback = Callable[[Progress], object]


class ProgressBar:
    """A bar of tqdm's on standard error, one step at a time.

    It is shown in terminals and notebooks and silent elsewhere.
    """

    def __init__(self) -> None:
        from tqdm.auto import tqdm

        # None means silence where standard error is no terminal, which it never
        # is in a notebook.
        silent = False if "ipykernel.zmqshell" in sys.modules else None
        # Every step counts other items, so a rate would mean nothing.
        self._bar: Any = tqdm(
            file=sys.stderr, disable=silent, leave=True, bar_format=_FORMAT
        )
        self._patterns = 0

    def __call__(self, now: Progress) -> None:
        """Show where the run is."""
        if now.step == "complete":
            self._patterns += now.done
        if now.known == 0:
            return
        told = f"size {now.size}, {now.step}, {self._patterns} patterns"
        self._bar.set_description(told if now.size else now.step, refresh=False)
        # What notebooks show has to be told of another total.
        if self._bar.total != now.known:
            self._bar.reset(now.known)
        self._bar.n = now.done
        self._bar.refresh()

    def close(self) -> None:
        """Take the bar away."""
        self._bar.close()
