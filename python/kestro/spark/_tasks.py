"""What workers do: functions of bytes, which keep nothing.

A task that is run again, or twice at once, gives the same.  None of them knows
which engine runs it.
"""

from __future__ import annotations

import itertools
import resource
import time
from collections.abc import Iterable, Sequence
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core, _native
from kestro._errors import StopMining
from kestro._native import Arrays
from kestro._ragged import offsets_of
from kestro.spark._blocks import Block, Tables, database_of
from kestro.spark._keys import (
    keys_of,
    packed_of,
    parents_of,
    patterns_of,
)

_AT_ONCE = 1024  # graphs that are matched between two sums


class Caps(NamedTuple):
    """What one shard may come to; None is no cap."""

    patterns: int | None = None
    memory: int | None = None  # bytes of the process


class Mined(NamedTuple):
    """What mining a shard gave."""

    keys: list[bytes]
    supports: list[int]
    parents: list[list[bytes]]  # keys, of each pattern
    capped: str | None  # which cap ended it: "patterns" or "memory"
    last_size: int
    seconds: float  # of the processor
    memory: int  # bytes, the most that the process has held


class Wanted(NamedTuple):
    """A pattern that is to be counted, and those by which it can be ruled out."""

    key: bytes
    parents: Sequence[bytes]


class Counted(NamedTuple):
    """What counting in a shard gave."""

    supports: NDArray[np.int64]  # of what was wanted, in that order
    steps: int  # patterns that were matched as steps only
    seconds: float  # of the processor


def mine_shard(
    blocks: Iterable[bytes],
    tables: Tables,
    min_support: int,
    max_size: int | None,
    caps: Caps,
) -> Mined:
    """Mine the graphs of a shard, from one edge on.

    The shard is mined whole or, where it reaches a cap, in vain.
    """
    before = time.process_time()
    db = database_of(map(Block.from_bytes, blocks), tables)
    watch = _MemoryWatch(caps.memory)
    found, told, raised = _core.mine(
        db,
        "count",
        min_support,
        min_size=1,
        max_size=max_size,
        jobs=1,
        exact=True,
        time_limit=None,
        pattern_limit=caps.patterns,
        callback=None if caps.memory is None else watch,
    )
    if raised is not None and not isinstance(raised, StopMining):
        raise raised
    capped = None
    if watch.exceeded:
        capped = "memory"
    elif caps.patterns is not None and len(found["vertex_offsets"]) - 1 > caps.patterns:
        capped = "patterns"
    keys = keys_of(packed_of(found, tables))
    offsets, positions = parents_of(found)
    ends = offsets.tolist()
    parents = positions.tolist()
    return Mined(
        keys,
        np.diff(found["tid_offsets"]).tolist(),
        [[keys[p] for p in parents[a:b]] for a, b in itertools.pairwise(ends)],
        capped,
        told["last_size"],
        time.process_time() - before,
        1024 * resource.getrusage(resource.RUSAGE_SELF).ru_maxrss,
    )


class _MemoryWatch:
    """Ends a run that holds more memory than it may."""

    def __init__(self, most: int | None) -> None:
        self._most = most
        self.exceeded = False

    def __call__(self, *_now: object) -> None:
        if self._most is not None and _resident_bytes() > self._most:
            self.exceeded = True
            raise StopMining


def _resident_bytes() -> int:
    with open("/proc/self/statm", "rb") as f:
        return int(f.read().split()[1]) * resource.getpagesize()


def count_patterns(
    blocks: Iterable[bytes], tables: Tables, wanted: Sequence[Wanted]
) -> Counted:
    """Count in how many graphs of a shard each of these patterns is.

    A pattern is looked for where one of its parents is, or all of them that are
    wanted, too.
    """
    before = time.process_time()
    lattice, positions, steps = _lattice(wanted, tables)
    db = database_of(map(Block.from_bytes, blocks), tables)
    found = np.zeros(len(wanted) + steps, np.int64)
    for first in range(0, len(db), _AT_ONCE):
        _, columns = lattice.contained(db, first, min(first + _AT_ONCE, len(db)))
        found += np.bincount(columns, minlength=len(found))
    return Counted(found[positions], steps, time.process_time() - before)


def find_patterns(
    blocks: Iterable[Block], tables: Tables, wanted: Sequence[Wanted]
) -> Iterable[tuple[str, int, NDArray[np.int32]]]:
    """Return of each graph its id and the positions of its patterns.

    Patterns come after their parents.
    """
    lattice, positions, _ = _lattice(wanted, tables)
    place = np.empty(len(positions), np.int32)
    place[positions] = np.arange(len(positions), dtype=np.int32)
    for block in blocks:
        # Where labels are others, the matcher compares their texts.
        known = set(block.tables.vertex) <= set(tables.vertex) and set(
            block.tables.edge
        ) <= set(tables.edge)
        db = database_of([block], tables if known else Tables.of([block.tables]))
        for tid, number in enumerate(block.numbers.tolist()):
            _, columns = lattice.contained(db, tid, tid + 1)
            yield block.source(tid), number, np.sort(place[columns])


def wanted_of(
    patterns: Arrays, offsets: NDArray[np.int64], parents: NDArray[np.integer[Any]]
) -> list[Wanted]:
    """Return patterns with those of their parents that are among them.

    The parents of pattern i are at ``parents[offsets[i]]`` and on.
    """
    keys = keys_of(patterns)
    flat = parents.tolist()
    return [
        Wanted(key, [keys[p] for p in flat[a:b]])
        for key, (a, b) in zip(keys, itertools.pairwise(offsets.tolist()), strict=True)
    ]


def _lattice(
    wanted: Sequence[Wanted], tables: Tables
) -> tuple[_core.LatticeMatcher, NDArray[np.int64], int]:
    """Return a matcher, where in it what is wanted is, and how many steps it has.

    Of a pattern's parents those that are wanted rule it out for nothing.  Where
    none is, one of the others is matched as a step: of these the one that most
    patterns have, so that few are needed.
    """
    known = {w.key for w in wanted}
    children: dict[bytes, int] = {}
    for w in wanted:
        if not any(parent in known for parent in w.parents):
            for parent in w.parents:
                children[parent] = children.get(parent, 0) + 1
    steps: dict[bytes, None] = {}
    used: list[list[bytes]] = []
    for w in wanted:
        own = [parent for parent in w.parents if parent in known]
        if not own and w.parents:
            own = [max(w.parents, key=lambda parent: (children[parent], parent))]
            steps[own[0]] = None
        used.append(own)
    keys = [*(w.key for w in wanted), *steps]
    used += [[] for _ in steps]
    # By length of keys: a parent has one edge fewer, and no more vertices.
    order = sorted(range(len(keys)), key=lambda i: (len(keys[i]), keys[i]))
    place = {keys[i]: at for at, i in enumerate(order)}
    parents = [sorted(place[parent] for parent in used[i]) for i in order]
    offsets = offsets_of(np.array([len(p) for p in parents], np.int64))
    flat = np.array([parent for own in parents for parent in own], np.int32)
    patterns = patterns_of([keys[i] for i in order], tables)
    matcher = _core.LatticeMatcher(
        _native.database_of(patterns, all_labels=True), offsets, flat
    )
    positions = np.array([place[w.key] for w in wanted], np.int64)
    return matcher, positions, len(steps)
