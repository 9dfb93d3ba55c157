"""Mining a database in parts, exactly, in two passes.

A pattern that is frequent in the whole is frequent, by the same share, in some
part [1]_.  So the parts are mined first, each by its share of the minimum
support.  What cannot reach the whole one, even if every part that did not report
it has just missed it, is dropped; what is left is counted where it was not
reported.  Then all supports are known, and the search over the whole database
looks them up.

.. [1] A. Savasere, E. Omiecinski, S. Navathe, An efficient algorithm for mining
   association rules in large databases, VLDB 1995.
"""

from __future__ import annotations

import heapq
from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from typing import NamedTuple, Protocol

import numpy as np
from numpy.typing import NDArray

from kestro._errors import KestroError
from kestro._summary import Described as Header
from kestro.spark._blocks import Tables
from kestro.spark._reading import Described, Read
from kestro.spark._tasks import Caps, Found
from kestro.spark._watching import Advanced


@dataclass(frozen=True)
class Shard:
    """A part of the database."""

    number: int
    buckets: tuple[int, ...]
    graphs: int
    cost: int
    min_support: int  # by the share of the whole one, in graphs


@dataclass(frozen=True)
class Totals:
    """The whole database, in numbers."""

    graphs: int
    tables: Tables
    header: Header

    @classmethod
    def of(cls, whole: Described) -> Totals:
        """Return the numbers as they are told."""
        graphs = int(whole.graphs.sum())

        def average(total: int) -> str:
            return f"{total / graphs:.0f}" if graphs else "-nan"

        return cls(
            graphs,
            whole.tables,
            Header(
                edge_labels=str(len(whole.tables.edge)),
                vertex_labels=str(len(whole.tables.vertex)),
                average_edges=average(whole.edges),
                average_vertices=average(whole.vertices),
                max_edges=str(whole.max_edges),
                max_vertices=str(whole.max_vertices),
            ),
        )


def share(min_support: int, part: int, whole: int) -> int:
    """Return the minimum support of a part: its share, rounded up, in integers."""
    return -(-min_support * part // whole)


def make_shards(
    whole: Described,
    min_support: int,
    shards: int,
    min_local_support: int,
) -> list[Shard]:
    """Share the buckets out, the costliest first, always to the cheapest shard.

    Shards without a graph are dropped.  While the share of one is below
    min_local_support, there is one shard fewer, or one of 64.
    """
    graphs, cost = whole.graphs.tolist(), whole.cost.tolist()
    everything = sum(graphs)
    order = sorted(
        np.flatnonzero(whole.graphs).tolist(),
        key=lambda bucket: (-cost[bucket], bucket),
    )
    most = min(shards, len(order))
    if min_local_support > 1:
        # Shares are rounded up by less than a graph each.
        most = min(most, max(1, min_support // (min_local_support - 1)))
    count = most
    while count > 0:
        made = _share_out(order, graphs, cost, count, min_support, everything)
        if count == 1 or all(s.min_support >= min_local_support for s in made):
            return made
        count -= max(1, count // 64)
    return []


def _share_out(
    order: Sequence[int],
    graphs: Sequence[int],
    cost: Sequence[int],
    count: int,
    min_support: int,
    whole: int,
) -> list[Shard]:
    held: list[list[int]] = [[] for _ in range(count)]
    costs = [0] * count
    cheapest = [(0, number) for number in range(count)]  # a heap
    for bucket in order:
        number = cheapest[0][1]
        held[number].append(bucket)
        costs[number] += cost[bucket]
        heapq.heapreplace(cheapest, (costs[number], number))
    return [
        Shard(
            number,
            tuple(sorted(buckets)),
            sum(graphs[bucket] for bucket in buckets),
            costs[number],
            share(min_support, sum(graphs[bucket] for bucket in buckets), whole),
        )
        for number, buckets in enumerate(held)
    ]


# What a shard that has reached a cap reports in place of patterns, as if it were in
# all graphs.  Another shard cannot be taken for silent then, should these rows be
# made once more, when nobody looks at what else the task tells.
CAPPED = b""


class MinedShard(NamedTuple):
    """How mining one shard went."""

    shard: int
    patterns: int
    capped: str | None  # by what: "patterns", "memory" or "machine"
    last_size: int
    seconds: float  # of the processor
    memory: int  # bytes, the most that the process has held
    bytes_sent: int


class CountedShard(NamedTuple):
    """How counting in one shard went."""

    shard: int
    patterns: int
    seconds: float  # of the processor
    bytes_sent: int


class Union(NamedTuple):
    """How many patterns the shards reported, and how many may be frequent."""

    reported: int
    kept: int


class Engine(Protocol):
    """Who runs the tasks, and keeps what they return until it is asked for.

    Calls come in this order, each once, but for `close`, which frees all.
    """

    def read(self, buckets: int) -> Read:
        """Read the graphs; raise KestroError for what cannot be read."""

    def mine(
        self,
        shards: Sequence[Shard],
        tables: Tables,
        max_size: int | None,
        caps: Caps,
        advanced: Advanced | None = None,
    ) -> list[MinedShard]:
        """Mine these shards."""

    def bound(self, min_support: int) -> Union:
        """Drop what cannot reach the minimum support."""

    def count(self, advanced: Advanced | None = None) -> list[CountedShard]:
        """Count what is left in the shards that did not report it."""

    def supports(self, min_support: int) -> tuple[list[bytes], NDArray[np.int64]]:
        """Return the keys that reach the minimum support, and their supports."""

    def find(
        self, wanted: Sequence[bytes], advanced: Advanced | None = None
    ) -> Iterable[Found]:
        """Find the patterns of these keys in every shard."""

    def close(self) -> None:
        """Free all that is kept."""


class Reported(NamedTuple):
    """A pattern that shards reported."""

    support: int  # in these shards
    shards: frozenset[int]


def may_be_frequent(
    reported: Reported, shards: Sequence[Shard], min_support: int
) -> bool:
    """Whether it can reach the minimum support.

    In a shard that did not report it, it is in fewer graphs than would have been
    enough there.
    """
    silent = sum(s.min_support - 1 for s in shards if s.number not in reported.shards)
    return reported.support + silent >= min_support


def refuse_capped(
    mined: Sequence[MinedShard], shards: Sequence[Shard], caps: Caps
) -> None:
    """Raise where a shard has reached a cap."""
    for one in mined:
        if one.capped is None:
            continue
        shard = shards[one.shard]
        what = {
            "patterns": f"more than {caps.patterns} patterns",
            "memory": f"more than {caps.memory} bytes of memory",
            "machine": "the end of its machine's memory",
        }[one.capped]
        advice = "ask for a higher minimum support, or a bound on the size"
        if one.capped == "patterns" and len(shards) > 1:
            advice = f"ask for fewer shards, {advice.removeprefix('ask for ')}"
        elif one.capped != "patterns":
            advice += (
                "; where it is the graphs that take it, for more shards, and where it "
                "is patterns that are frequent in this shard alone, for fewer"
            )
        raise KestroError(
            f"shard {one.shard} of {len(shards)}, {shard.graphs} graphs at a local "
            f"minimum support of {shard.min_support}, has come to {what} at "
            f"{one.last_size} edges with {one.patterns} patterns; {advice}"
        )


def refuse_lost(keys: Sequence[bytes]) -> None:
    """Raise where a shard was mined again, as its rows were lost, up to a cap."""
    if CAPPED in keys:
        raise KestroError(
            "rows of a shard were lost, and mining it again has come to the end of "
            "the memory that it may hold; ask for tasks with more memory"
        )
