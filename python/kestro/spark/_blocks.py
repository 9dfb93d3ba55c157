"""Graphs as bytes, as readers hand them to shards."""

from __future__ import annotations

import io
from collections.abc import Iterable, Mapping, Sequence
from hashlib import blake2b
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core, _native
from kestro._native import Arrays
from kestro._ragged import offsets_of, places


class Tables(NamedTuple):
    """The labels of all graphs, in the order of their bytes; ids are positions."""

    vertex: tuple[str, ...]
    edge: tuple[str, ...]

    @classmethod
    def of(cls, tables: Iterable[Tables]) -> Tables:
        """Return the labels of all these."""
        vertex: set[str] = set()
        edge: set[str] = set()
        for one in tables:
            vertex.update(one.vertex)
            edge.update(one.edge)
        return cls(
            tuple(sorted(vertex, key=_as_bytes)), tuple(sorted(edge, key=_as_bytes))
        )


class Block(NamedTuple):
    """Some graphs of one source, with labels of their own.

    A graph is known by its source, a path or an id that is text, and a number:
    tasks that are run again name it alike.
    """

    sources: tuple[str, ...]  # one for all graphs, or one for each
    numbers: NDArray[np.int64]
    arrays: Arrays

    def __len__(self) -> int:
        return len(self.numbers)

    @property
    def tables(self) -> Tables:
        """The labels that the ids are of."""
        return Tables(tuple(self.arrays.vertex_table), tuple(self.arrays.edge_table))

    def source(self, i: int) -> str:
        """Return the source of graph i."""
        return self.sources[i if len(self.sources) > 1 else 0]

    def select(self, chosen: NDArray[np.int64]) -> Block:
        """Return a block of these graphs, with the labels that occur in them."""
        a = self.arrays
        vertices, _ = places(offsets_of(a.vertex_counts), chosen)
        edges, _ = places(offsets_of(a.edge_counts), chosen)
        vertex_labels, vertex_table = _used(a.vertex_labels[vertices], a.vertex_table)
        edge_labels, edge_table = _used(a.edge_labels[edges], a.edge_table)
        return Block(
            tuple(self.sources[i] for i in chosen.tolist())
            if len(self.sources) > 1
            else self.sources,
            self.numbers[chosen],
            Arrays(
                a.vertex_counts[chosen],
                a.edge_counts[chosen],
                vertex_labels,
                a.edges[edges],
                edge_labels,
                vertex_table,
                edge_table,
            ),
        )

    def to_bytes(self) -> bytes:
        """Return what `from_bytes` reads."""
        out = io.BytesIO()
        for texts in (self.sources, self.arrays.vertex_table, self.arrays.edge_table):
            encoded = [_as_bytes(text) for text in texts]
            _write(out, np.array([len(text) for text in encoded], np.int64))
            out.write(b"".join(encoded))
        _write(out, self.numbers)
        for array in self.arrays[:5]:
            # In as few bytes as hold the largest number: mostly one.
            _write(out, array.astype(np.min_scalar_type(array.max(initial=0))))
        return out.getvalue()

    @classmethod
    def from_bytes(cls, data: bytes) -> Block:
        """Read what `to_bytes` returned."""
        source = io.BytesIO(data)
        texts = []
        for _ in range(3):
            lengths = np.lib.format.read_array(source, allow_pickle=False)
            texts.append([_as_text(source.read(n)) for n in lengths.tolist()])
        sources, vertex_table, edge_table = texts
        numbers, vertex_counts, edge_counts, vertex_labels, edges, edge_labels = (
            np.lib.format.read_array(source, allow_pickle=False) for _ in range(6)
        )
        return cls(
            tuple(sources),
            numbers,
            Arrays(
                vertex_counts.astype(np.int64),
                edge_counts.astype(np.int64),
                vertex_labels.astype(np.int32),
                edges.astype(np.int64),
                edge_labels.astype(np.int32),
                vertex_table,
                edge_table,
            ),
        )


def _used(
    ids: NDArray[np.int32], table: Sequence[str]
) -> tuple[NDArray[np.int32], list[str]]:
    """Return ids of the labels that are used, and their texts."""
    used, own = np.unique(ids, return_inverse=True)
    return own.astype(np.int32), [table[i] for i in used.tolist()]


def _write(out: io.BytesIO, array: NDArray[Any]) -> None:
    np.lib.format.write_array(out, np.ascontiguousarray(array), allow_pickle=False)


def _as_bytes(text: str) -> bytes:
    return text.encode("utf-8", "surrogateescape")


def _as_text(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")


def bucket_of(source: str, number: int, buckets: int) -> int:
    """Return the bucket of a graph, which depends on its id alone."""
    text = _as_bytes(f"{number}:{source}")
    return int.from_bytes(blake2b(text, digest_size=8).digest(), "little") % buckets


def into_buckets(block: Block, buckets: int) -> list[tuple[int, Block]]:
    """Return the graphs by their buckets, in order."""
    of_graph = np.array(
        [
            bucket_of(block.source(i), number, buckets)
            for i, number in enumerate(block.numbers.tolist())
        ],
        np.int64,
    )
    return [
        (bucket, block.select(np.flatnonzero(of_graph == bucket)))
        for bucket in np.unique(of_graph).tolist()
    ]


def database_of(blocks: Iterable[Block], tables: Tables) -> _core.Database:
    """Return the graphs of all blocks with the ids of these labels."""
    nothing, no_labels = np.zeros(0, np.int64), np.zeros(0, np.int32)
    vertex_ids = {text: i for i, text in enumerate(tables.vertex)}
    edge_ids = {text: i for i, text in enumerate(tables.edge)}
    parts = [
        Arrays(nothing, nothing, no_labels, nothing.reshape(0, 2), no_labels, (), ()),
        *(_with_ids(block, vertex_ids, edge_ids) for block in blocks),
    ]
    return _native.database_of(
        Arrays(
            np.concatenate([part.vertex_counts for part in parts]),
            np.concatenate([part.edge_counts for part in parts]),
            np.concatenate([part.vertex_labels for part in parts]),
            np.concatenate([part.edges for part in parts]),
            np.concatenate([part.edge_labels for part in parts]),
            tables.vertex,
            tables.edge,
        ),
        all_labels=True,
    )


def _with_ids(
    block: Block, vertex_ids: Mapping[str, int], edge_ids: Mapping[str, int]
) -> Arrays:
    a = block.arrays
    vertex = np.array([vertex_ids[text] for text in a.vertex_table], np.int32)
    edge = np.array([edge_ids[text] for text in a.edge_table], np.int32)
    return a._replace(
        vertex_labels=vertex[a.vertex_labels], edge_labels=edge[a.edge_labels]
    )
