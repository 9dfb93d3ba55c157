"""A run from reading to the result, on any engine."""

from __future__ import annotations

import itertools
import logging
import os
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from statistics import median
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro import _core, _native
from kestro._database import AtomLabels
from kestro._errors import KestroError, StopMining
from kestro._mine import Request, settle, summary_of
from kestro._patterns import Patterns
from kestro._ragged import offsets_of
from kestro._result import Result
from kestro.spark._blocks import Tables
from kestro.spark._keys import keys_of, packed_of, patterns_of
from kestro.spark._scheme import (
    Engine,
    Shard,
    Totals,
    make_shards,
    refuse_capped,
)
from kestro.spark._tasks import Caps, Found
from kestro.spark._watching import Advanced

LOG = logging.getLogger("kestro.spark")

Callback = Callable[[int, str, int, int, int], object]

_MAX_BUCKETS = 1 << 14
_MAX_GRAPHS = 2**31 - 1


@dataclass(frozen=True)
class Division:
    """How the database is divided."""

    shards: int
    min_local_support: int
    caps: Caps

    @property
    def buckets(self) -> int:
        """How many buckets graphs are mixed into, from which shards are made."""
        return min(max(256, 8 * self.shards), _MAX_BUCKETS)


def run(
    engine: Engine,
    wanted: Request,
    division: Division,
    *,
    with_tids: bool,
    atom_labels: AtomLabels | None = None,
    callback: Callback | None = None,
) -> Result:
    """Mine what the engine reads.

    The callback is that of the extension; of passes it is told as of size 0.
    """
    before = os.times().user
    whole, passed = engine.read(division.buckets)
    totals = Totals.of(whole)
    if passed:
        LOG.warning(
            "%d rows are skipped, such as %s",
            sum(one.rows for one in passed),
            min(one.first for one in passed),
        )
    if totals.graphs > _MAX_GRAPHS:
        raise KestroError(
            f"{totals.graphs} graphs; {_MAX_GRAPHS} are the most that can be counted"
        )
    min_support = _core.min_support(wanted.unit, wanted.amount, totals.graphs)
    shards = make_shards(
        whole, min_support, division.shards, division.min_local_support
    )
    if not totals.graphs:
        LOG.warning("there are no graphs")
    LOG.info(
        "read: %d graphs, minimum support %d, in %d shards of %s to %s",
        totals.graphs,
        min_support,
        len(shards),
        min((s.graphs for s in shards), default=0),
        max((s.graphs for s in shards), default=0),
    )
    keys, supports = _known(
        engine, shards, totals.tables, min_support, wanted, division.caps, callback
    )
    known = _native.database_of(patterns_of(keys, totals.tables), all_labels=True)
    packed, told, raised = _core.mine_known(
        known,
        supports.astype(np.int32),
        totals.graphs,
        min_support,
        wanted.min_size,
        wanted.max_size,
        wanted.jobs,
        wanted.seconds,
        wanted.max_patterns,
        callback,
    )
    if with_tids and (raised is None or isinstance(raised, StopMining)):
        packed |= _tids(engine, packed, totals.tables, callback)
    summary = summary_of(
        wanted,
        told,
        raised,
        form="exact",
        graphs=totals.graphs,
        seconds=os.times().user - before,
        atom_labels=atom_labels,
        described=totals.header,
    )
    patterns = Patterns(packed, summary, *map(list, totals.tables))
    result = Result(patterns, None, filters=wanted.filters)
    settle(raised, result)
    return result


def _known(
    engine: Engine,
    shards: Sequence[Shard],
    tables: Tables,
    min_support: int,
    wanted: Request,
    caps: Caps,
    callback: Callback | None,
) -> tuple[list[bytes], NDArray[np.int64]]:
    """Return all frequent patterns and their supports: the two passes."""
    if not shards:
        return [], np.zeros(0, np.int64)
    told = _of_pass(callback, "mining shards")
    mined = engine.mine(shards, tables, wanted.max_size, caps, told)
    refuse_capped(mined, shards, caps)
    union = engine.bound(min_support)
    LOG.info(
        "pass 1: %d shards mined, %d patterns reported, %d may be frequent, "
        "%.1f s the slowest shard, %.1f s the median one, %d bytes sent",
        len(shards),
        union.reported,
        union.kept,
        max(one.seconds for one in mined),
        median(one.seconds for one in mined),
        sum(one.bytes_sent for one in mined),
    )
    counted = engine.count(_of_pass(callback, "counting in shards"))
    keys, supports = engine.supports(min_support)
    LOG.info(
        "pass 2: %d counts in %d shards, %d frequent, union over frequent %.2f, "
        "%.1f s the slowest shard, %.1f s the median one, %d bytes sent",
        sum(one.patterns for one in counted),
        len(counted),
        len(keys),
        union.reported / max(1, len(keys)),
        max((one.seconds for one in counted), default=0),
        median([one.seconds for one in counted] or [0]),
        sum(one.bytes_sent for one in counted),
    )
    return keys, supports


def _of_pass(callback: Callback | None, step: str) -> Advanced | None:
    if callback is None:
        return None
    return lambda done, known: callback(0, step, done, known, 0)


def _tids(
    engine: Engine,
    packed: dict[str, NDArray[Any]],
    tables: Tables,
    callback: Callback | None,
) -> dict[str, NDArray[Any]]:
    """Return the TID lists: ranks of ids among those of all graphs."""
    wanted = keys_of(packed_of(packed, tables))
    found: list[Found] = []
    if wanted:
        found += engine.find(wanted, _of_pass(callback, "finding in shards"))
    lengths = sum((one.counts for one in found), np.zeros(len(wanted), np.int64))
    offsets = offsets_of(lengths)
    tids = np.empty(offsets[-1], np.int32)
    free = offsets[:-1].copy()  # of each pattern: where the next shard's go
    for one, ranks in zip(found, _ranks(found), strict=True):
        starts = free - offsets_of(one.counts)[:-1]
        tids[np.repeat(starts, one.counts) + np.arange(len(one.tids))] = ranks[one.tids]
        free += one.counts
    for first, end in itertools.pairwise(offsets.tolist()):
        tids[first:end].sort()
    LOG.info("TIDs: %d of %d patterns", len(tids), len(wanted))
    return {"tid_offsets": offsets, "tids": tids}


def _ranks(found: Sequence[Found]) -> list[NDArray[np.int64]]:
    """Return of each shard's graphs the ranks of their ids among all."""
    sources = [source for one in found for source in one.sources]
    place = {source: at for at, source in enumerate(sorted(set(sources)))}
    places = np.array([place[source] for source in sources], np.int64)
    numbers = np.concatenate([np.zeros(0, np.int64), *(one.numbers for one in found)])
    ranks = np.empty(len(numbers), np.int64)
    ranks[np.lexsort((numbers, places))] = np.arange(len(numbers))
    return np.split(ranks, np.cumsum([len(one.numbers) for one in found]))[:-1]
