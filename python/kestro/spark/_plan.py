"""What a run would come to, by mining a few of its shards."""

from __future__ import annotations

import math
from collections.abc import Sequence
from typing import NamedTuple

from kestro import _core
from kestro._mine import Request
from kestro.spark._run import Division
from kestro.spark._scheme import Engine, MinedShard, Totals, make_shards

_SAMPLED = 3


class Plan(NamedTuple):
    """What a run would come to.

    Attributes
    ----------
    graphs : int
        Of the database.
    min_support : int
        Graphs.
    shards : int
        How many there would be.
    min_local_support : int
        The least of any shard, in graphs.
    sampled : int
        Shards that were mined for this; the figures below follow from them.
    local_patterns : int
        The most that one of them reported.
    union : int
        How many patterns all shards would report.
    seconds : float
        Of the processor, for pass 1, in all.
    memory : int
        The most bytes that a worker's process has held.
    bytes_sent : int
        By all shards, in pass 1.
    capped : str or None
        Which cap a sampled shard has reached: "patterns", "memory" or "machine";
        the figures are too small then.
    """

    graphs: int
    min_support: int
    shards: int
    min_local_support: int
    sampled: int
    local_patterns: int
    union: int
    seconds: float
    memory: int
    bytes_sent: int
    capped: str | None


def make_plan(engine: Engine, wanted: Request, division: Division) -> Plan:
    """Read what the engine reads, and mine some of the shards."""
    whole, _ = engine.read(division.buckets)
    totals = Totals.of(whole)
    min_support = _core.min_support(wanted.unit, wanted.amount, totals.graphs)
    shards = make_shards(
        whole, min_support, division.shards, division.min_local_support
    )
    sample = shards[:_SAMPLED]
    mined: Sequence[MinedShard] = []
    union = 0
    if sample:
        mined = engine.mine(sample, totals.tables, wanted.max_size, division.caps)
        # A shard that has reached a cap reports no pattern.
        union = max(
            engine.bound(0).reported, max((one.patterns for one in mined), default=0)
        )
    return Plan(
        totals.graphs,
        min_support,
        len(shards),
        min((s.min_support for s in shards), default=0),
        len(sample),
        max((one.patterns for one in mined), default=0),
        grown([one.patterns for one in mined], union, len(shards)),
        sum(one.seconds for one in mined) / max(1, len(sample)) * len(shards),
        max((one.memory for one in mined), default=0),
        sum(one.bytes_sent for one in mined) * len(shards) // max(1, len(sample)),
        next((one.capped for one in mined if one.capped), None),
    )


def grown(patterns: Sequence[int], union: int, shards: int) -> int:
    """Return how large a union over all shards is to be expected.

    A union over more and more parts grows like a power of their number, as the
    words of a text do [1]_; what of one shard to the sampled ones tells which.

    .. [1] H. S. Heaps, Information Retrieval: Computational and Theoretical
       Aspects, 1978.
    """
    one = sum(patterns) / max(1, len(patterns))
    if len(patterns) < 2 or not one or union <= one:
        return union
    power = math.log(union / one) / math.log(len(patterns))
    return max(union, round(one * math.pow(shards, power)))
