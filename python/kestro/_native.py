"""Databases of graphs whose labels files can hold.

What is mined may come from a file, whose labels may be long or hold control
characters; whatever is made of it must take the same ones.
"""

from __future__ import annotations

import re
from collections.abc import Sequence

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._errors import KestroError

# How the extension begins its reasons; places in arrays are no help to anybody.
_GRAPH_NUMBER = re.compile(r"^graph \d+, ")


class RefusedError(KestroError):
    """A graph that is none; ``i`` is its place."""

    def __init__(self, i: int, reason: str) -> None:
        super().__init__(_GRAPH_NUMBER.sub("", reason))
        self.i = i


def database_of(
    vertex_counts: NDArray[np.int64],
    edge_counts: NDArray[np.int64],
    vertex_labels: NDArray[np.int32],
    edges: NDArray[np.int64],
    edge_labels: NDArray[np.int32],
    vertex_table: Sequence[str],
    edge_table: Sequence[str],
) -> _core.Database:
    """Return the graphs of packed arrays.

    Raises
    ------
    RefusedError
        For the first that is no graph.
    """
    native, refused = _core.Database.from_arrays(
        vertex_counts,
        edge_counts,
        vertex_labels,
        edges,
        edge_labels,
        [label.encode("utf-8", "surrogateescape") for label in vertex_table],
        [label.encode("utf-8", "surrogateescape") for label in edge_table],
        skip=False,
        readable=True,
    )
    for i, reason in refused:
        raise RefusedError(i, reason)
    return native
