"""Graphs as bytes, as readers hand them to shards."""

from __future__ import annotations

import io
from collections.abc import Iterable, Sequence
from hashlib import blake2b
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._native import Arrays
from kestro._ragged import offsets_of, places


class Tables(NamedTuple):
    """The labels of all graphs, in the order of their bytes; ids are positions."""

    vertex: tuple[bytes, ...]
    edge: tuple[bytes, ...]

    @classmethod
    def of(cls, tables: Iterable[Tables]) -> Tables:
        """Return the labels of all these."""
        vertex: set[bytes] = set()
        edge: set[bytes] = set()
        for one in tables:
            vertex.update(one.vertex)
            edge.update(one.edge)
        return cls(tuple(sorted(vertex)), tuple(sorted(edge)))


class Block(NamedTuple):
    """Some graphs of one source, with labels of their own.

    A graph is known by its source, a path or an id that is text, and a number:
    tasks that are run again name it alike.
    """

    sources: tuple[str, ...]  # one for all graphs, or one for each
    numbers: NDArray[np.int64]
    arrays: Arrays  # tables of bytes

    def __len__(self) -> int:
        return len(self.numbers)

    @property
    def tables(self) -> Tables:
        """The labels that occur."""
        return Tables(
            _as_bytes(self.arrays.vertex_table), _as_bytes(self.arrays.edge_table)
        )

    def source(self, i: int) -> str:
        """Return the source of graph i."""
        return self.sources[i if len(self.sources) > 1 else 0]

    def select(self, chosen: NDArray[np.int64]) -> Block:
        """Return a block of these graphs; labels that are left over stay."""
        a = self.arrays
        vertices, _ = places(offsets_of(a.vertex_counts), chosen)
        edges, _ = places(offsets_of(a.edge_counts), chosen)
        return Block(
            tuple(self.sources[i] for i in chosen.tolist())
            if len(self.sources) > 1
            else self.sources,
            self.numbers[chosen],
            Arrays(
                a.vertex_counts[chosen],
                a.edge_counts[chosen],
                a.vertex_labels[vertices],
                a.edges[edges],
                a.edge_labels[edges],
                a.vertex_table,
                a.edge_table,
            ),
        )

    def to_bytes(self) -> bytes:
        """Return what `from_bytes` reads."""
        out = io.BytesIO()
        for texts in (
            [s.encode("utf-8", "surrogateescape") for s in self.sources],
            self.arrays.vertex_table,
            self.arrays.edge_table,
        ):
            lengths = np.array([len(text) for text in texts], np.int64)
            _write(out, lengths)
            out.write(b"".join(_as_bytes(texts)))
        for array in (self.numbers, *self.arrays[:5]):
            _write(out, array)
        return out.getvalue()

    @classmethod
    def from_bytes(cls, data: bytes) -> Block:
        """Read what `to_bytes` returned."""
        source = io.BytesIO(data)
        texts = []
        for _ in range(3):
            lengths = np.lib.format.read_array(source, allow_pickle=False)
            texts.append([source.read(n) for n in lengths.tolist()])
        numbers, *arrays = (
            np.lib.format.read_array(source, allow_pickle=False) for _ in range(6)
        )
        return cls(
            tuple(s.decode("utf-8", "surrogateescape") for s in texts[0]),
            numbers,
            Arrays(*arrays, texts[1], texts[2]),
        )


def _write(out: io.BytesIO, array: NDArray[Any]) -> None:
    np.lib.format.write_array(out, np.ascontiguousarray(array), allow_pickle=False)


def _as_bytes(texts: Sequence[str] | Sequence[bytes]) -> tuple[bytes, ...]:
    return tuple(
        text if isinstance(text, bytes) else text.encode("utf-8", "surrogateescape")
        for text in texts
    )


def bucket_of(source: str, number: int, buckets: int) -> int:
    """Return the bucket of a graph, which depends on its id alone."""
    text = f"{number}:{source}".encode("utf-8", "surrogateescape")
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
    renumbered = [_with_ids(block, tables) for block in blocks]
    if not renumbered:
        nothing = np.zeros(0, np.int64)
        no_labels = nothing.astype(np.int32)
        renumbered = [
            Arrays(
                nothing, nothing, no_labels, nothing.reshape(0, 2), no_labels, (), ()
            )
        ]
    joined = [
        np.concatenate(parts)
        for parts in zip(*(a[:5] for a in renumbered), strict=True)
    ]
    native, refused = _core.Database.from_arrays(
        *joined,
        list(tables.vertex),
        list(tables.edge),
        skip=False,
        readable=True,
        all_labels=True,
    )
    for i, reason in refused:
        raise ValueError(f"block with a broken graph {i}: {reason}")
    return native


def _with_ids(block: Block, tables: Tables) -> Arrays:
    own = block.tables
    a = block.arrays
    return a._replace(
        vertex_labels=_places(own.vertex, tables.vertex)[a.vertex_labels],
        edge_labels=_places(own.edge, tables.edge)[a.edge_labels],
    )


def _places(own: tuple[bytes, ...], everything: tuple[bytes, ...]) -> NDArray[np.int32]:
    place = {text: i for i, text in enumerate(everything)}
    return np.array([place[text] for text in own], np.int32)
