"""Patterns that were read from files, brought into arrays and checked.

What reads a file knows of each pattern its id, its support and its graph, and of
some files its TIDs and parents.  Matching and matrices take the arrays as they
are, so that whatever does not fit is found here.
"""

from __future__ import annotations

import re
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._ragged import offsets_of
from kestro._summary import RunSummary

_LARGEST = 2**31 - 1
_ID = re.compile(r"([0-9]{1,10})-([0-9]{1,10})")


class Heads(NamedTuple):
    """What the patterns are called, and how frequent they are."""

    sizes: NDArray[np.int64]  # edges, as the ids tell
    numbers: NDArray[np.int64]  # ids within their size
    supports: NDArray[np.int64]


class WrongPatternError(Exception):
    """The first pattern that does not fit, and why."""

    def __init__(self, i: int, text: str) -> None:
        super().__init__(text)
        self.i = i
        self.text = text


def levels(
    heads: Heads, edge_counts: NDArray[np.int64], summary: RunSummary
) -> dict[str, NDArray[Any]]:
    """Return the arrays by which patterns of these sizes and ids are found.

    Raises
    ------
    WrongPatternError
        When patterns do not come by size, then id, or are of another size or
        more frequent than they can be.
    """
    sizes, numbers, supports = heads
    in_range = (sizes <= _LARGEST) & (numbers <= _LARGEST)
    _refuse(~in_range, "its id is no pattern's")
    keys = (sizes << 32) + numbers
    behind = np.concatenate([np.zeros(min(1, len(keys)), np.bool_), np.diff(keys) <= 0])
    _refuse(behind, "patterns do not come by size and id")
    _refuse(sizes != edge_counts, "it has another size than its id tells")
    too_frequent = (supports < 1) | (supports > summary.graphs)
    _refuse(too_frequent, f"its support is none in {summary.graphs} graphs")
    distinct, counts = np.unique(sizes, return_counts=True)
    ends = np.cumsum(counts)
    found: dict[str, NDArray[Any]] = {
        "level_sizes": distinct.astype(np.int32),
        "level_ends": ends.astype(np.int64),
        "support": supports.astype(np.int32),
    }
    if not np.array_equal(
        numbers, np.arange(len(keys)) - np.repeat(ends - counts, counts)
    ):
        found["numbers"] = numbers.astype(np.int32)
    return found


def tid_arrays(
    heads: Heads, lists: list[NDArray[np.int64]], summary: RunSummary
) -> dict[str, NDArray[Any]]:
    """Return the TIDs of all patterns as arrays.

    Raises
    ------
    WrongPatternError
        When TIDs do not ascend, are no graphs, or are not as many as the
        support.
    """
    counts, tids, owners = _joined(lists)
    _refuse(counts != heads.supports, "its TIDs are not as many as its support")
    outside = (tids < 0) | (tids >= summary.graphs)
    _refuse_owner(
        outside, owners, f"a TID is none of the {summary.graphs} graphs that were mined"
    )
    behind = (np.diff(tids) <= 0) & (np.diff(owners) == 0)
    _refuse_owner(behind, owners[1:], "its TIDs do not ascend")
    return {"tids": tids.astype(np.int32), "tid_offsets": offsets_of(counts)}


def parent_arrays(
    heads: Heads, names: list[list[str]], summary: RunSummary
) -> dict[str, NDArray[Any]]:
    """Return the parents of all patterns as arrays.

    Raises
    ------
    WrongPatternError
        When a parent is no id of the size before, or, where all patterns of
        that size are there, none of them.
    """
    parsed = []
    for i, own in enumerate(names):
        try:
            parsed.append(np.array([key_of(name) for name in own], np.int64))
        except ValueError as e:
            raise WrongPatternError(i, str(e)) from None
    pairs = [keys.reshape(-1, 2) for keys in parsed]
    counts, numbers, owners = _joined([keys[:, 1] for keys in pairs])
    _, sizes, _ = _joined([keys[:, 0] for keys in pairs])
    wrong = (sizes != heads.sizes[owners] - 1) | (sizes < 1) | (numbers > _LARGEST)
    _refuse_owner(wrong, owners, "a parent is not of the size before")
    if summary.holds == "all":
        there = np.isin(sizes, heads.sizes)
        keys = (heads.sizes << 32) + heads.numbers
        found = np.isin((sizes << 32) + numbers, keys)
        _refuse_owner(there & ~found, owners, "a parent is no pattern")
    return {"parents": numbers.astype(np.int32), "parent_offsets": offsets_of(counts)}


def key_of(name: str) -> tuple[int, int]:
    """Return size and number of an id such as "3-7".

    Raises
    ------
    ValueError
        When it is none.
    """
    found = _ID.fullmatch(name)
    if not found:
        raise ValueError(f"no id of a pattern: {name!r}")
    size, number = found.groups()
    return int(size), int(number)


def _joined(
    lists: list[NDArray[np.int64]],
) -> tuple[NDArray[np.int64], NDArray[np.int64], NDArray[np.int64]]:
    """Return the lengths, all items, and per item the list that it is of."""
    counts = np.array([len(own) for own in lists], np.int64)
    items = np.concatenate([np.zeros(0, np.int64), *lists])
    return counts, items, np.repeat(np.arange(len(lists)), counts)


def _refuse(wrong: NDArray[np.bool_], text: str) -> None:
    if wrong.any():
        raise WrongPatternError(int(np.argmax(wrong)), text)


def _refuse_owner(
    wrong: NDArray[np.bool_], owners: NDArray[np.int64], text: str
) -> None:
    if wrong.any():
        raise WrongPatternError(int(owners[np.argmax(wrong)]), text)
