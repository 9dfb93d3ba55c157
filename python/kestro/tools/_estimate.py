"""Which support gives about so many patterns, from a few runs that are bounded.

One run tells more than its own number of patterns: those of a larger support are
the patterns that are at least as frequent.  So a run that goes low enough gives
the support of the N-th pattern exactly.  First samples of the graphs tell how low
that is, and the spread between them how sure this is; then the graphs themselves
are mined there.  Each run ends by itself when it has found too much, when its time
is over, or when the memory of the process has grown too much.

Sampling follows H. Toivonen, Sampling large databases for association rules,
VLDB 1996.
"""

from __future__ import annotations

import os
import time
import warnings
from collections.abc import Callable
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

import kestro
from kestro._database import GraphDatabase
from kestro._errors import StopMining
from kestro._progress import Progress

SAMPLE = 300  # graphs of one
_SAMPLES = 3
_STEP = 0.7  # by which the support goes down from run to run
_TOO_MANY = 3  # times as many patterns end a run
_LEAST = 3  # graphs: what is rarer says nothing in a sample
_GROWTH = 1 << 30  # bytes of memory that a run may take
_RUNS = 40  # on one set of graphs


class Run(NamedTuple):
    """A run, of which supports are kept alone.

    Attributes
    ----------
    graphs, support : int
        How many there were, and in how many a pattern had to occur.
    seconds : float
        How long it took.
    patterns : int
        How many were found; of a run that was ended, until then.
    stopped_by : str or None
        "patterns", "time", "memory", or None for one that came to its end.
    """

    graphs: int
    support: int
    seconds: float
    patterns: int
    stopped_by: str | None


class Curve(NamedTuple):
    """What the runs on one set of graphs told.

    Attributes
    ----------
    supports : ndarray of int64
        Of the patterns of the lowest run that came to its end, falling.
    lowest : Run or None
        That run.
    runs : list of Run
        All.
    """

    supports: NDArray[np.int64]
    lowest: Run | None
    runs: list[Run]

    def nth(self, patterns: int) -> int | None:
        """Return the largest support with that many patterns, if it is known."""
        if len(self.supports) < patterns:
            return None
        return int(self.supports[patterns - 1])

    def count(self, support: int) -> int:
        """Return how many patterns there are at a support that is known."""
        return int(np.count_nonzero(self.supports >= support))


class Estimate(NamedTuple):
    """What is suggested.

    Attributes
    ----------
    samples : list of Curve
        Those of the samples; empty where all graphs were taken at once.
    whole : Curve
        That of the graphs.
    fractions : list of float
        Of the samples, the fraction of graphs at which there are N patterns.
    """

    samples: list[Curve]
    whole: Curve
    fractions: list[float]


class _Guard:
    """Ends a run whose memory or number of candidates has grown too much."""

    def __init__(self, most: int, memory: Callable[[], int]) -> None:
        self._most = most
        self._memory = memory
        self._before = memory()
        self.patterns = 0
        self.reason = ""

    def __call__(self, now: Progress) -> None:
        if now.step == "complete":
            self.patterns += now.done
            if self.patterns > self._most:
                self.reason = "patterns"
        # Each pattern was a candidate; far more of these are a level that explodes.
        if now.candidates > 100 * self._most:
            self.reason = "patterns"
        if self._memory() - self._before > _GROWTH:
            self.reason = "memory"
        if self.reason:
            raise StopMining


def resident() -> int:
    """Return the bytes of memory that the process has."""
    with open("/proc/self/statm") as f:
        return int(f.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def bounded_run(
    db: GraphDatabase,
    support: int,
    patterns: int,
    seconds: float,
    max_size: int | None,
    n_jobs: int | None = None,
    memory: Callable[[], int] = resident,
) -> tuple[Run, NDArray[np.int64]]:
    """Return a run that ends by itself, and the supports that it found, falling."""
    guard = _Guard(_TOO_MANY * patterns, memory)
    start = time.monotonic()
    with warnings.catch_warnings():
        # That it was interrupted is raised below.
        warnings.simplefilter("ignore", RuntimeWarning)
        result = kestro.mine(
            db,
            min_support=support,
            max_size=max_size,
            n_jobs=n_jobs,
            time_limit=max(0.0, seconds),
            progress=guard,
        )
    took = time.monotonic() - start
    reason: str | None = guard.reason or None
    if result.stopped_by == "interrupt":
        raise KeyboardInterrupt
    if result.stopped_by == "time_limit":
        reason = "time"
    elif result.complete:
        reason = None
    found = np.sort(result.support.astype(np.int64))[::-1]
    return Run(len(db), support, took, len(found), reason), found


def descend(
    db: GraphDatabase,
    patterns: int,
    seconds: float,
    max_size: int | None,
    *,
    start: int,
    least: int = 1,
    n_jobs: int | None = None,
    told: Callable[[Run], object] = lambda run: None,
) -> Curve:
    """Go down with the support until there are enough patterns, or none more.

    After a run that was ended it goes up again, half way to the last one that was
    not: the curve is that of the lowest run that came to its end.  No run lasts
    longer than what is left of the seconds.
    """
    lowest: Run | None = None
    supports = np.zeros(0, np.int64)
    runs: list[Run] = []
    end = time.monotonic() + seconds
    support, floor = start, least - 1  # at the floor a run was ended
    while len(runs) < _RUNS:
        left = end - time.monotonic()
        if left <= 0:
            break
        run, found = bounded_run(db, support, patterns, left, max_size, n_jobs)
        runs.append(run)
        told(run)
        if run.stopped_by is None:
            lowest, supports = run, found
            if len(found) >= patterns or support <= least:
                break
            support = max(least, min(support - 1, int(support * _STEP)))
        else:
            floor = support
            above = lowest.support if lowest else min(len(db), 2 * support)
            support = (above + floor + 1) // 2
        if lowest and support <= floor:
            support = (lowest.support + floor) // 2
        if (lowest and support >= lowest.support) or support <= floor:
            break
    return Curve(supports, lowest, runs)


def estimate(
    db: GraphDatabase,
    patterns: int,
    seconds: float,
    max_size: int | None,
    *,
    seed: int = 0,
    n_jobs: int | None = None,
    told: Callable[[str, Run], object] = lambda what, run: None,
) -> Estimate:
    """Estimate at which support there are about so many patterns.

    Parameters
    ----------
    db : GraphDatabase
        The graphs.
    patterns : int
        How many there should be.
    seconds : float
        How long it should take to mine them; no run lasts longer.
    max_size : int or None
        Edges of the patterns at most.
    seed : int
        Of the samples.
    n_jobs : int or None
        Threads.
    told : callable
        Called after each run with the name of the graphs and the run.

    Returns
    -------
    Estimate
    """
    samples: list[Curve] = []
    fractions: list[float] = []
    start = len(db)
    if len(db) >= 2 * SAMPLE:
        order = np.random.default_rng(seed).permutation(len(db))
        count = min(_SAMPLES, len(db) // SAMPLE)
        for i in range(count):
            chosen = np.sort(order[i * SAMPLE : (i + 1) * SAMPLE])
            curve = descend(
                db[chosen],
                patterns,
                seconds / _SAMPLES,
                max_size,
                start=SAMPLE,
                least=_LEAST,
                n_jobs=n_jobs,
                told=lambda run, i=i: told(f"sample {i + 1}", run),  # type: ignore[misc]
            )
            samples.append(curve)
            nth = curve.nth(patterns)
            lowest = curve.lowest
            if nth is not None:
                fractions.append(nth / SAMPLE)
            elif lowest is not None:
                start = min(start, _of(len(db), lowest.support / SAMPLE))
        if fractions:
            start = _of(len(db), float(np.median(fractions)))
    whole = descend(
        db,
        patterns,
        seconds,
        max_size,
        start=start,
        n_jobs=n_jobs,
        told=lambda run: told("all graphs", run),
    )
    return Estimate(samples, whole, fractions)


def _of(graphs: int, fraction: float) -> int:
    return max(1, round(graphs * fraction))
