"""Packed arrays handed to the extension as graphs."""

from __future__ import annotations

import re
from collections.abc import Sequence
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._errors import KestroError

# How the extension begins its reasons; places in arrays are no help to anybody.
_GRAPH_NUMBER = re.compile(r"^graph \d+, ")


class RefusedError(KestroError):
    """A graph that is none; ``i`` is its place."""

    def __init__(self, i: int, reason: str) -> None:
        super().__init__(reason)
        self.i = i


class Arrays(NamedTuple):
    """Graphs, one behind another; labels are positions in the tables."""

    vertex_counts: NDArray[np.int64]
    edge_counts: NDArray[np.int64]
    vertex_labels: NDArray[np.int32]
    edges: NDArray[np.int64]  # shape (edges, 2)
    edge_labels: NDArray[np.int32]
    vertex_table: Sequence[str]
    edge_table: Sequence[str]


def graphs_of(
    arrays: Arrays, *, skip: bool, readable: bool = False, all_labels: bool = False
) -> tuple[_core.Database, list[tuple[int, str]]]:
    """Return the graphs, and place and reason of those that are none.

    Without ``skip`` the first of these is the last graph looked at.  With
    ``readable`` labels are taken that only files can hold.  With ``all_labels``
    the graphs' labels are those of the tables, else those that occur.
    """
    native, refused = _core.Database.from_arrays(
        *arrays[:5],
        [label.encode("utf-8", "surrogateescape") for label in arrays.vertex_table],
        [label.encode("utf-8", "surrogateescape") for label in arrays.edge_table],
        skip=skip,
        readable=readable,
        all_labels=all_labels,
    )
    return native, [(i, _GRAPH_NUMBER.sub("", reason)) for i, reason in refused]


def database_of(arrays: Arrays, *, all_labels: bool = False) -> _core.Database:
    """Return the graphs, which may be of a database that was read from a file.

    Its labels may be long or hold control characters; whatever is made of it
    must take the same ones.  With ``all_labels`` it has all labels of the tables.

    Raises
    ------
    RefusedError
        For the first that is no graph.
    """
    native, refused = graphs_of(
        arrays, skip=False, readable=True, all_labels=all_labels
    )
    for i, reason in refused:
        raise RefusedError(i, reason)
    return native
