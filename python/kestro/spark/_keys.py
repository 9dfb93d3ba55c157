"""Patterns as bytes: two are equal exactly when the patterns are.

A key is the pattern in the exact form by ids of the labels of all graphs: how
many vertices there are, their labels, then ends and label of each edge, in words
of one width.
"""

from __future__ import annotations

import itertools
from collections.abc import Sequence
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._native import Arrays
from kestro._ragged import offsets_of
from kestro.spark._blocks import Tables


def _word_of(
    vertex_table: Sequence[str], edge_table: Sequence[str]
) -> np.dtype[np.integer[Any]]:
    """Return the type of the words of keys: two bytes where all ids fit."""
    largest = max(len(vertex_table), len(edge_table))
    return np.dtype("<u2" if largest <= 2**16 else "<i4")


def keys_of(packed: Arrays) -> list[bytes]:
    """Return the key of each pattern; the tables are those of all graphs."""
    word = _word_of(packed.vertex_table, packed.edge_table)
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
    places: NDArray[np.int64] = np.repeat(starts, counts) + step * within
    return places


def patterns_of(keys: Sequence[bytes], tables: Tables) -> Arrays:
    """Return the patterns of these keys."""
    word = _word_of(*tables)
    lengths = np.array([len(key) for key in keys], np.int64) // word.itemsize
    starts = offsets_of(lengths)
    words = np.frombuffer(b"".join(keys), word).astype(np.int32)
    vertices = words[starts[:-1]].astype(np.int64)
    edges = (lengths - 1 - vertices) // 3
    labels = words[_spread(starts[:-1] + 1, vertices)]
    at = _spread(starts[:-1] + 1 + vertices, edges, step=3)
    ends = np.stack([words[at], words[at + 1]], axis=1).astype(np.int64)
    return Arrays(vertices, edges, labels, ends, words[at + 2], *tables)


def packed_of(found: dict[str, NDArray[Any]], tables: Tables) -> Arrays:
    """Return the patterns that a run handed over."""
    ends = found["level_ends"]
    counts = np.diff(ends, prepend=0)
    return Arrays(
        np.diff(found["vertex_offsets"]),
        np.repeat(found["level_sizes"].astype(np.int64), counts),
        found["vertex_labels"],
        found["edges"].astype(np.int64),
        found["edge_labels"],
        *tables,
    )
