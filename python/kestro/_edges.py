"""Graphs from lists of edges."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Sequence, Sized
from itertools import zip_longest
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._packing import Packer

Column = Sequence[Any] | NDArray[Any]

_NONE_LEFT = object()


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
        ``source`` counts the graphs from 0.

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
    <GraphDatabase: 1 graph>
    """
    packer = Packer(on_error)
    columns = {"vertex_labels": vertex_labels, "edges": edges}
    if edge_labels is not None:
        columns["edge_labels"] = edge_labels
    for record, (vertices, pairs, *own) in enumerate(_together(columns)):
        try:
            ends, names = _columns(pairs, own[0] if own else None)
        except (TypeError, ValueError) as e:
            packer.refuse(record, str(e))
            continue
        packer.add(record, _plain(vertices), ends, names)
    return packer.build()


def _together(columns: dict[str, Iterable[Column]]) -> Iterator[tuple[Any, ...]]:
    for record, row in enumerate(zip_longest(*columns.values(), fillvalue=_NONE_LEFT)):
        ended = [n for n, x in zip(columns, row, strict=True) if x is _NONE_LEFT]
        if ended:
            longer = [name for name in columns if name not in ended]
            raise ValueError(
                f"{' and '.join(ended)} ends before graph {record}, "
                f"which {' and '.join(longer)} has"
            )
        yield row


def _plain(column: Column) -> Sequence[Any]:
    """Return a list of Python objects, which are faster to walk than an array."""
    return column.tolist() if isinstance(column, np.ndarray) else column


def _columns(
    pairs: Column, own: Column | None
) -> tuple[list[tuple[int, int]], Sequence[Any]]:
    rows = _plain(pairs)
    if not isinstance(rows, Iterable):
        raise TypeError(f"no sequence of edges: {rows!r}")
    width = 2 if own is not None else 3
    for row in rows:
        if not isinstance(row, Sized) or len(row) != width:
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
