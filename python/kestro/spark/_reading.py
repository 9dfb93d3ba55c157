"""What readers on workers do: a file, or some rows, as blocks of graphs."""

from __future__ import annotations

import json
from collections.abc import Iterator
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._native import Arrays
from kestro._transactions import parse_transactions
from kestro.spark._blocks import Block, Tables, into_buckets


class Described(NamedTuple):
    """What a block has, in numbers."""

    bucket: int
    graphs: int
    vertices: int
    edges: int
    cost: int  # about how long it takes to mine, in no unit
    max_vertices: int  # of a graph
    max_edges: int
    tables: Tables  # labels of the source


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


def describe(bucket: int, block: Block) -> Described:
    """Return what a block has, in numbers."""
    a = block.arrays
    return Described(
        bucket,
        len(block),
        int(a.vertex_counts.sum()),
        int(a.edge_counts.sum()),
        # Embeddings grow faster than graphs; any such figure spreads large ones.
        int((1 + a.edge_counts + a.edge_counts**2 // 32).sum()),
        int(a.vertex_counts.max(initial=0)),
        int(a.edge_counts.max(initial=0)),
        block.tables,
    )
