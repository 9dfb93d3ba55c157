"""Patterns as bytes: two are equal exactly when the patterns are.

A key is the pattern in the exact form by ids of the labels of all graphs: how
many vertices there are, their labels, then ends and label of each edge, in words
of one width.
"""

from __future__ import annotations

import itertools
from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._ragged import offsets_of
from kestro.spark._blocks import Tables


def word_of(tables: Tables) -> np.dtype[Any]:
    """Return the type of the words of keys: two bytes where all ids fit."""
    largest = max(len(tables.vertex), len(tables.edge))
    return np.dtype("<u2" if largest <= 2**16 else "<i4")


class Packed(NamedTuple):
    """Patterns one behind another."""

    vertex_counts: NDArray[np.int64]
    edge_counts: NDArray[np.int64]
    vertex_labels: NDArray[np.int32]
    edges: NDArray[np.int64]  # shape (edges, 2)
    edge_labels: NDArray[np.int32]

    def to_database(self, tables: Tables) -> _core.Database:
        """Return the patterns as graphs with all labels."""
        native, refused = _core.Database.from_arrays(
            *self,
            list(tables.vertex),
            list(tables.edge),
            skip=False,
            readable=True,
            all_labels=True,
        )
        for i, reason in refused:
            raise ValueError(f"key {i} is no pattern: {reason}")
        return native


def keys_of(packed: Packed, word: np.dtype[Any]) -> list[bytes]:
    """Return the key of each pattern."""
    vertices, edges = packed.vertex_counts, packed.edge_counts
    lengths = 1 + vertices + 3 * edges
    starts = offsets_of(lengths)
    words = np.empty(starts[-1], word)
    words[starts[:-1]] = vertices
    at = _spread(starts[:-1] + 1, vertices)
    words[at] = packed.vertex_labels
    at = _spread(starts[:-1] + 1 + vertices, edges, step=3)
    words[at] = packed.edges[:, 0]
    words[at + 1] = packed.edges[:, 1]
    words[at + 2] = packed.edge_labels
    text = words.tobytes()
    ends = (starts * word.itemsize).tolist()
    return [text[a:b] for a, b in itertools.pairwise(ends)]


def _spread(
    starts: NDArray[np.int64], counts: NDArray[np.int64], step: int = 1
) -> NDArray[np.int64]:
    """Return count places from each start on, so far apart."""
    own = offsets_of(counts)
    within = np.arange(own[-1]) - np.repeat(own[:-1], counts)
    return np.repeat(starts, counts) + step * within


def patterns_of(keys: Sequence[bytes], word: np.dtype[Any]) -> Packed:
    """Return the patterns of these keys."""
    lengths = np.array([len(key) for key in keys], np.int64) // word.itemsize
    starts = offsets_of(lengths)
    words = np.frombuffer(b"".join(keys), word).astype(np.int32)
    vertices = words[starts[:-1]].astype(np.int64)
    edges = (lengths - 1 - vertices) // 3
    labels = words[_spread(starts[:-1] + 1, vertices)]
    at = _spread(starts[:-1] + 1 + vertices, edges, step=3)
    ends = np.stack([words[at], words[at + 1]], axis=1).astype(np.int64)
    return Packed(vertices, edges, labels, ends.reshape(-1, 2), words[at + 2])


def size_of(key: bytes, word: np.dtype[Any]) -> int:
    """Return the edges of the pattern of a key."""
    words = len(key) // word.itemsize
    return (words - 1 - int(np.frombuffer(key, word, 1)[0])) // 3


def packed_of(found: dict[str, NDArray[Any]]) -> Packed:
    """Return the patterns that a run handed over."""
    ends = found["level_ends"]
    counts = np.diff(ends, prepend=0)
    return Packed(
        np.diff(found["vertex_offsets"]),
        np.repeat(found["level_sizes"].astype(np.int64), counts),
        found["vertex_labels"],
        found["edges"].astype(np.int64),
        found["edge_labels"],
    )


def parents_of(
    found: dict[str, NDArray[Any]],
) -> tuple[NDArray[np.int64], NDArray[np.int64]]:
    """Return offsets and positions of the parents of a run's patterns.

    Those of the first size, which are not among the patterns, are left out.
    """
    ends = found["level_ends"]
    offsets = found["parent_offsets"]
    if not len(ends):
        return offsets, np.zeros(0, np.int64)
    left_out = offsets[ends[0]]
    starts = np.concatenate([np.zeros(2, np.int64), ends])[: len(ends)]
    # The level below begins where the one before it ended.
    below = np.repeat(starts, np.diff(ends, prepend=0))
    parents = found["parents"] + np.repeat(below, np.diff(offsets))
    return np.maximum(offsets - left_out, 0), parents[left_out:]
