"""What workers do: functions of bytes, which keep nothing.

A task that is run again, or twice at once, gives the same.  None of them knows
which engine runs it.
"""

from __future__ import annotations

import resource
import time
from collections.abc import Iterable, Sequence
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core, _native
from kestro._errors import StopMining
from kestro._ragged import places
from kestro.spark._blocks import Block, Tables, database_of
from kestro.spark._keys import keys_of, packed_of, patterns_of
from kestro.spark._memory import is_memory_scarce, resident_bytes


class Caps(NamedTuple):
    """What one shard may come to; None is no cap.

    All but a sixteenth of the machine's memory is a cap in any case.
    """

    patterns: int | None = None
    memory: int | None = None  # bytes of the process


class Mined(NamedTuple):
    """What mining a shard gave."""

    keys: list[bytes]
    supports: list[int]
    capped: str | None  # which cap ended it: "patterns", "memory" or "machine"
    last_size: int
    seconds: float  # of the processor
    memory: int  # bytes, the most that the process has held


class Counted(NamedTuple):
    """What counting in a shard gave."""

    supports: NDArray[np.int64]  # of what was wanted, in that order
    seconds: float  # of the processor


class Found(NamedTuple):
    """Which graphs of a shard contain which pattern."""

    sources: tuple[str, ...]  # of each graph
    numbers: NDArray[np.int64]  # likewise
    counts: NDArray[np.int64]  # of each pattern: how many graphs
    tids: NDArray[np.int32]  # their positions above, pattern by pattern


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
        callback=watch,
    )
    if raised is not None and not isinstance(raised, StopMining):
        raise raised
    capped = watch.exceeded
    patterns = len(found["vertex_offsets"]) - 1
    if capped is None and caps.patterns is not None and patterns > caps.patterns:
        capped = "patterns"
    return Mined(
        keys_of(packed_of(found, tables)),
        np.diff(found["tid_offsets"]).tolist(),
        capped,
        told["last_size"],
        time.process_time() - before,
        1024 * resource.getrusage(resource.RUSAGE_SELF).ru_maxrss,
    )


class _MemoryWatch:
    """Ends a run that holds more memory than it may, or than there is."""

    def __init__(self, most: int | None) -> None:
        self._most = most
        self.exceeded: str | None = None

    def __call__(self, *_now: object) -> None:
        if self._most is not None and resident_bytes() > self._most:
            self.exceeded = "memory"
        elif is_memory_scarce():
            self.exceeded = "machine"
        if self.exceeded is not None:
            raise StopMining


def count_patterns(
    blocks: Iterable[bytes], tables: Tables, wanted: Sequence[bytes]
) -> Counted:
    """Count in how many graphs of a shard the patterns of these keys are."""
    before = time.process_time()
    lengths, _ = _look_for(map(Block.from_bytes, blocks), tables, wanted)
    return Counted(lengths, time.process_time() - before)


def find_patterns(
    blocks: Iterable[bytes], tables: Tables, wanted: Sequence[bytes]
) -> Found:
    """Find in which graphs of a shard the patterns of these keys are."""
    read = [Block.from_bytes(data) for data in blocks]
    counts, tids = _look_for(read, tables, wanted)
    return Found(
        tuple(block.source(i) for block in read for i in range(len(block))),
        np.concatenate([np.zeros(0, np.int64), *(block.numbers for block in read)]),
        counts,
        tids,
    )


def _look_for(
    blocks: Iterable[Block], tables: Tables, wanted: Sequence[bytes]
) -> tuple[NDArray[np.int64], NDArray[np.int32]]:
    """Return of each pattern how many graphs it is in, and then which ones.

    The graphs are mined for these patterns and what leads to them, which takes a
    fraction of the time in which the patterns are matched one after another.
    """
    counts = np.zeros(len(wanted), np.int64)
    if not wanted:
        return counts, np.zeros(0, np.int32)
    sought = _native.database_of(patterns_of(wanted, tables), all_labels=True)
    found, _, raised = _core.mine_sought(database_of(blocks, tables), sought, jobs=1)
    if raised is not None:
        raise raised
    place = {key: at for at, key in enumerate(keys_of(packed_of(found, tables)))}
    positions = np.array([place.get(key, -1) for key in wanted], np.int64)
    known = positions >= 0
    counts[known] = np.diff(found["tid_offsets"])[positions[known]]
    tids, _ = places(found["tid_offsets"], positions[known])
    return counts, found["tids"][tids]
