"""Choices of patterns: the best by a number, and some that cover the graphs."""

from __future__ import annotations

import heapq
from typing import get_args

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro import _scoring
from kestro._arguments import check_choice, whole_number
from kestro._patterns import NO, Patterns


def values(
    patterns: Patterns, chosen: NDArray[np.int64], by: object, y: ArrayLike | None
) -> NDArray[np.float64]:
    """Return by what ``Result.top`` ranks these patterns."""
    if not isinstance(by, str):
        own = np.asarray(by, dtype=np.float64)
        if own.shape != (len(chosen),):
            raise ValueError(
                f"by must be one number for each of {len(chosen)} patterns, "
                f"not of shape {own.shape}"
            )
        return own
    check_choice("by", by, ("support", "size", *get_args(_scoring.Method)))
    if by == "support":
        return patterns.support[chosen].astype(np.float64)
    if by == "size":
        return patterns.sizes(chosen).astype(np.float64)
    if y is None:
        raise ValueError(f"{by!r} needs y, the classes of the graphs")
    scores = _scoring.table(patterns, chosen, y, method=by, correction=None, alpha=0.5)
    if not len(chosen):
        return np.zeros(0)
    by_class = scores["score"].to_numpy(np.float64).reshape(-1, len(chosen))
    best: NDArray[np.float64] = np.fmax.reduce(by_class, axis=0)
    return best


def largest(ranks: NDArray[np.float64], k: int) -> NDArray[np.int64]:
    """Return the places of the k largest numbers, the largest first, NaN last."""
    return np.argsort(-ranks, kind="stable")[: whole_number("k", k, 0)]


def covering(
    patterns: Patterns, chosen: NDArray[np.int64], k: int
) -> NDArray[np.int64]:
    """Return the patterns that ``Result.representative`` chooses.

    What a pattern adds can only become less while graphs are covered, so one
    that still adds as much as it did when it was last looked at is the best:
    M. Minoux, Accelerated greedy algorithms for maximizing submodular set
    functions, 1978.
    """
    wanted = whole_number("k", k, 0)
    tids, offsets = patterns.tids, patterns.tid_offsets
    candidates = np.unique(chosen)
    candidates = candidates[patterns.closed[candidates] != NO]
    support = patterns.support[candidates]
    is_left = np.zeros(patterns.summary.graphs, np.bool_)
    is_left[_all_tids(patterns, candidates)] = True
    left = int(is_left.sum())
    by_size = np.lexsort((candidates, -patterns.sizes(candidates)))
    added = (-support[by_size]).tolist()
    # Sorted, and so a heap.
    queue = sorted(zip(added, range(len(added)), by_size.tolist(), strict=True))
    taken: list[int] = []
    while left and len(taken) < wanted:
        before, rank, i = queue[0]
        own = tids[offsets[candidates[i]] : offsets[candidates[i] + 1]]
        now = -int(np.count_nonzero(is_left[own]))
        if now != before:
            heapq.heapreplace(queue, (now, rank, i))
            continue
        heapq.heappop(queue)
        is_left[own] = False
        left += now
        taken.append(i)
    rest = np.lexsort((candidates, -support))
    rest = rest[~np.isin(rest, taken)][: wanted - len(taken)]
    order = np.concatenate([np.array(taken, np.int64), rest])
    found: NDArray[np.int64] = candidates[order]
    return found


def _all_tids(patterns: Patterns, chosen: NDArray[np.int64]) -> NDArray[np.int32]:
    """Return the TIDs of these patterns, one list behind another."""
    is_chosen = np.zeros(len(patterns), np.bool_)
    is_chosen[chosen] = True
    return patterns.tids[np.repeat(is_chosen, np.diff(patterns.tid_offsets))]
