"""Graphs from lists of edges."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from itertools import repeat
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._packing import Packer

Column = Sequence[Any] | NDArray[Any]


def from_edges(
    vertex_labels: Iterable[Column],
    edges: Iterable[Column],
    edge_labels: Iterable[Column] | None = None,
    *,
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of labels and edges.

    Parameters
    ----------
    vertex_labels : iterable of sequences
        Per graph the labels of its vertices, which are numbered in this order
        from 0: str without white space, or int.
    edges : iterable of sequences of pairs or triples, or of arrays
        Per graph the ends of its edges, shape (edges, 2), or with the label as
        the third column, shape (edges, 3).
    edge_labels : iterable of sequences, optional
        Per graph the labels of its edges, where ``edges`` has two columns.
    on_error : {"raise", "skip"}
        With "skip", what is no graph is left out and listed in ``skipped``.

    Returns
    -------
    GraphDatabase

    Raises
    ------
    KestroError
        For a graph with a loop, two edges between the same ends, an end that
        is no vertex, or a label that is missing, empty, longer than 998 bytes
        or with white space or control characters in it.
    ValueError
        When there are not as many graphs in all arguments.

    Examples
    --------
    >>> import kestro
    >>> kestro.from_edges([["C", "O"]], [[(0, 1, "=")]])
    <GraphDatabase: 1 graphs>
    """
    packer = Packer(on_error)
    labels = repeat(None) if edge_labels is None else edge_labels
    graphs = zip(vertex_labels, edges, strict=True)
    for record, ((vertices, pairs), own) in enumerate(
        zip(graphs, labels, strict=edge_labels is not None)
    ):
        try:
            ends, names = _columns(pairs, own)
        except (TypeError, ValueError) as e:
            packer.refuse(record, str(e))
            continue
        packer.add(record, _plain(vertices), ends, names)
    return packer.build()


def _plain(column: Column) -> Sequence[Any]:
    """Return a list of Python objects, which are faster to walk than an array."""
    return column.tolist() if isinstance(column, np.ndarray) else column


def _columns(
    pairs: Column, own: Column | None
) -> tuple[list[tuple[int, int]], Sequence[Any]]:
    rows = _plain(pairs)
    width = 2 if own is not None else 3
    for row in rows:
        if len(row) != width:
            raise ValueError(
                f"an edge has two ends{'' if own is not None else ' and a label'}, "
                f"not {row!r}"
            )
    ends = [(_end(row[0]), _end(row[1])) for row in rows]
    return ends, _plain(own) if own is not None else [row[2] for row in rows]


def _end(vertex: Any) -> int:
    if isinstance(vertex, bool) or not isinstance(vertex, (int, np.integer)):
        raise TypeError(f"an edge's end is the number of a vertex, not {vertex!r}")
    return int(vertex)
