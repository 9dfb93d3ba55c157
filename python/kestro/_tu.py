"""Data sets with classes, in the files of the TU collection."""

from __future__ import annotations

import os
from collections.abc import Sequence
from pathlib import Path

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._files import drop_blank_end, lines_of, read_text
from kestro._packing import Packer

_EDGES = "_A.txt"
_NO_CLASS = ("", "nan")  # in lower case


def from_tu(
    folder: str | os.PathLike[str],
    *,
    vertex_label: str = "0",
    edge_label: str = "0",
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of a data set of the TU collection.

    Parameters
    ----------
    folder : path
        With the files ``NAME_A.txt`` and ``NAME_graph_indicator.txt``, and
        where there are any ``NAME_node_labels.txt``, ``NAME_edge_labels.txt``,
        ``NAME_graph_labels.txt``; each may be compressed by gzip, with ``.gz``
        behind its name.  Attributes are numbers, not labels, and not read.
        Labels are numbers, too; what they stand for is told by the set's
        README.
    vertex_label, edge_label : str
        The label of all vertices, or edges, where the file of labels is
        missing.
    on_error : {"raise", "skip"}
        With "skip", what is no graph is left out and listed in ``skipped``.

    Returns
    -------
    GraphDatabase
        With the graph labels in ``classes``, as int64 if they are whole
        numbers, else float64 or str.  An edge that stands once in each
        direction is one edge.  Blank lines at the end of a file are ignored.
        ``source`` counts the graphs from 0.

    Raises
    ------
    KestroError
        With path and line for a line that is none of such a file, and for
        files whose lines do not match in number, whatever ``on_error`` says:
        no graph is certain then.  For loops, edges that stand twice in one
        direction or have two labels, edges between two graphs, missing labels
        and missing classes, NaN among them.
    OSError
        When a file cannot be read.
    """
    files = _Files(Path(folder))
    packer = Packer(on_error, str(files.folder))
    owner = files.numbers("graph_indicator")
    classes = files.optional_lines("graph_labels", int(owner.max(initial=0)))
    graphs = int(owner.max(initial=0)) if classes is None else len(classes)
    if len(owner) and not 1 <= owner.min() <= owner.max() <= graphs:
        raise KestroError(
            f"the graphs are numbered from {owner.min()} to {owner.max()}, "
            f"where there are {graphs}",
            files.path("graph_indicator"),
        )
    ends = files.pairs(len(owner))
    vertex_labels = files.labels("node_labels", len(owner), vertex_label)
    edge_labels = files.labels("edge_labels", len(ends), edge_label)

    # Vertices and edges by graph, each in the order of the files.
    vertices = _groups(owner - 1, graphs)
    edges = _groups(owner[ends[:, 0]] - 1, graphs)
    place = np.zeros(len(owner), np.int64)
    for chosen in vertices:
        place[chosen] = np.arange(len(chosen))
    strangers = _strangers(owner, ends)
    for record in range(graphs):
        if record in strangers:
            packer.refuse(record, strangers[record])
            continue
        if classes is not None and classes[record].lower() in _NO_CLASS:
            packer.refuse(record, f"its class is missing: {classes[record]!r}")
            continue
        found = _undirected(
            place[ends[edges[record]]], [edge_labels[i] for i in edges[record]]
        )
        if isinstance(found, str):
            packer.refuse(record, found)
            continue
        labels = [vertex_labels[i] for i in vertices[record]]
        packer.add(record, labels, list(found), list(found.values()))
    if classes is None:
        return packer.build()
    texts = np.array(classes, object)
    return packer.build(classes=lambda source: _typed(texts[source].tolist()))


class _Files:
    """The files of a data set."""

    def __init__(self, folder: Path) -> None:
        names = sorted(
            name.removesuffix(".gz").removesuffix(_EDGES)
            for name in os.listdir(folder)
            if name.removesuffix(".gz").endswith(_EDGES)
        )
        if len(names) != 1:
            raise KestroError(
                f"a data set has one file NAME{_EDGES} in its folder, not {len(names)}",
                str(folder),
            )
        self.folder = folder
        self._start = str(folder / names[0])

    def path(self, kind: str) -> str:
        plain = f"{self._start}_{kind}.txt"
        return plain if os.path.exists(plain) else f"{plain}.gz"

    def lines(self, kind: str, least: int = 0) -> list[str]:
        """Return the lines without blanks around them.

        Empty ones at the end are left out, but for the least number of lines.
        """
        lines = [line.strip() for line in lines_of(read_text(self.path(kind))[0])]
        drop_blank_end(lines, least)
        return lines

    def optional_lines(self, kind: str, least: int) -> list[str] | None:
        """Return the lines, None without the file."""
        return self.lines(kind, least) if os.path.exists(self.path(kind)) else None

    def numbers(self, kind: str) -> NDArray[np.int64]:
        """Return a number per line."""
        lines = self.lines(kind)
        return np.array(
            [self._number(kind, i, line) for i, line in enumerate(lines)], np.int64
        )

    def pairs(self, vertices: int) -> NDArray[np.int64]:
        """Return the ends of edges, shape (lines, 2), counted from 0."""
        lines = self.lines("A")
        ends = np.zeros((len(lines), 2), np.int64)
        for i, line in enumerate(lines):
            words = line.split(",")
            if len(words) != 2:
                raise KestroError(f"no edge: {line!r}", self.path("A"), i + 1)
            for side, word in enumerate(words):
                end = self._number("A", i, word)
                if not 1 <= end <= vertices:
                    raise KestroError(
                        f"there is no vertex {end}, only {vertices} of them",
                        self.path("A"),
                        i + 1,
                    )
                ends[i, side] = end - 1
        return ends

    def labels(self, kind: str, count: int, unlabelled: str) -> Sequence[str | None]:
        """Return a label per line; columns are joined, empty lines are missing."""
        lines = self.optional_lines(kind, count)
        if lines is None:
            return [unlabelled] * count
        if len(lines) != count:
            raise KestroError(
                f"{len(lines)} labels, where {count} are needed", self.path(kind)
            )
        return [
            ",".join(word.strip() for word in line.split(",")) or None for line in lines
        ]

    def _number(self, kind: str, i: int, text: str) -> int:
        try:
            return int(np.int64(text))
        except (ValueError, OverflowError):
            raise KestroError(f"no number: {text!r}", self.path(kind), i + 1) from None


def _groups(owner: NDArray[np.int64], count: int) -> list[NDArray[np.int64]]:
    """Return the positions of each owner from 0 to count - 1, ascending."""
    order = np.argsort(owner, kind="stable")
    ends = np.cumsum(np.bincount(owner, minlength=count))
    return np.split(order, ends[:-1]) if count else []


def _strangers(owner: NDArray[np.int64], ends: NDArray[np.int64]) -> dict[int, str]:
    """Return what is wrong with the graphs that share an edge with another."""
    graphs = owner[ends] - 1 if len(ends) else ends
    reasons: dict[int, str] = {}
    for a, b in graphs[graphs[:, 0] != graphs[:, 1]].tolist():
        reasons.setdefault(a, f"an edge leads to graph {b}")
        reasons.setdefault(b, f"an edge leads to graph {a}")
    return reasons


def _undirected(
    ends: NDArray[np.int64], labels: list[str | None]
) -> dict[tuple[int, int], str | None] | str:
    """Return edges and their labels, or why there are none."""
    directed: dict[tuple[int, int], str | None] = {}
    for (a, b), label in zip(ends.tolist(), labels, strict=True):
        if (a, b) in directed:
            return f"vertices {a} and {b} have two edges in one direction"
        if directed.get((b, a), label) != label:
            return (
                f"the edge of vertices {b} and {a} has two labels, "
                f"{directed[b, a]} and {label}"
            )
        directed[a, b] = label
    return {
        (a, b): label
        for (a, b), label in directed.items()
        if a <= b or (b, a) not in directed
    }


def _typed(classes: list[str]) -> NDArray[np.int64 | np.float64 | np.str_]:
    for kind in (np.int64, np.float64):
        try:
            return np.array([kind(text) for text in classes])
        except (ValueError, OverflowError):
            continue
    return np.array(classes)
