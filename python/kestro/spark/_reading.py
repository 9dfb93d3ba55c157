"""What readers on workers do: a file, or some rows, as blocks of graphs."""

from __future__ import annotations

import json
from collections.abc import Iterator, Sequence
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._native import Arrays
from kestro._transactions import parse_transactions
from kestro.spark._blocks import Block, Tables, into_buckets

_GIANT = 1000  # edges


class Described(NamedTuple):
    """What was read, in numbers."""

    graphs: NDArray[np.int64]  # by bucket
    cost: NDArray[np.int64]  # by bucket: about how long mining takes, in no unit
    vertices: int
    edges: int
    max_vertices: int  # of a graph
    max_edges: int
    tables: Tables

    @classmethod
    def of(cls, parts: Sequence[Described], buckets: int) -> Described:
        """Add up what parts have."""
        zeros = np.zeros(buckets, np.int64)
        return cls(
            sum((part.graphs for part in parts), zeros),
            sum((part.cost for part in parts), zeros),
            sum(part.vertices for part in parts),
            sum(part.edges for part in parts),
            max((part.max_vertices for part in parts), default=0),
            max((part.max_edges for part in parts), default=0),
            Tables.of(part.tables for part in parts),
        )


class Tally:
    """Adds up what blocks have."""

    def __init__(self, buckets: int) -> None:
        self._graphs = np.zeros(buckets, np.int64)
        self._cost = np.zeros(buckets, np.int64)
        self._vertices = self._edges = 0
        self._max_vertices = self._max_edges = 0
        self._tables: set[Tables] = set()

    def add(self, bucket: int, block: Block) -> None:
        """Add a block."""
        vertices, edges = block.arrays.vertex_counts, block.arrays.edge_counts
        self._graphs[bucket] += len(block)
        # A giant counts for less than it costs: all of its subgraphs would be
        # frequent where it has a shard of its own.
        self._cost[bucket] += (1 + np.minimum(edges, _GIANT)).sum()
        self._vertices += int(vertices.sum())
        self._edges += int(edges.sum())
        self._max_vertices = max(self._max_vertices, int(vertices.max(initial=0)))
        self._max_edges = max(self._max_edges, int(edges.max(initial=0)))
        self._tables.add(block.tables)

    def described(self) -> Described:
        """Return what all of them have."""
        return Described(
            self._graphs,
            self._cost,
            self._vertices,
            self._edges,
            self._max_vertices,
            self._max_edges,
            Tables.of(self._tables),
        )


class Passed(NamedTuple):
    """Rows that are passed over."""

    rows: int
    first: str  # id and reason of one of them


class Read(NamedTuple):
    """What reading gave."""

    whole: Described
    passed: list[Passed]


class Fault(NamedTuple):
    """Input that cannot be read: told once, as trying again is no help."""

    text: str
    path: str | None
    line: int | None

    @classmethod
    def of(cls, e: KestroError) -> Fault:
        """Return what the error tells."""
        return cls(e.text, e.path, e.line)

    def to_json(self) -> str:
        """Return what `from_json` reads."""
        return json.dumps(self)

    @classmethod
    def from_json(cls, text: str) -> Fault:
        """Read what `to_json` returned."""
        return cls(*json.loads(text))

    def error(self) -> KestroError:
        """Return the error again."""
        return KestroError(*self)


def read_file(path: str, data: bytes, buckets: int) -> Iterator[tuple[int, Block]]:
    """Return the graphs of a transaction file by bucket.

    Graphs are numbered from 0 on in their file.

    Raises
    ------
    KestroError
        With the path and the line, for what cannot be read.
    """
    db = parse_transactions(data, path)
    numbers = np.arange(len(db), dtype=np.int64)
    yield from into_buckets(block_of(db, (path,), numbers), buckets)


def block_of(
    db: GraphDatabase, sources: tuple[str, ...], numbers: NDArray[np.int64]
) -> Block:
    """Return the graphs of a database as a block."""
    packed = db._native.to_arrays()
    vertex_table, edge_table = db._native.labels()
    packed |= {"vertex_table": vertex_table, "edge_table": edge_table}
    return Block(sources, numbers, Arrays(**packed))
