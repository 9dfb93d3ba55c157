"""Graphs from Python, packed for the extension."""

from __future__ import annotations

from array import array
from collections.abc import Callable, Iterable, Sequence
from typing import TYPE_CHECKING, Any, NamedTuple, TypeVar

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError, check_choice
from kestro._database import (
    AtomLabels,
    GraphDatabase,
    Skipped,
    warn_if_all_skipped,
)
from kestro._errors import KestroError, printable
from kestro._native import Arrays, graphs_of

if TYPE_CHECKING:
    import pandas as pd

_T = TypeVar("_T", bound=np.generic)


def label_text(label: object) -> str:
    """Return the text of a label: a str as it is, an int in digits.

    Raises
    ------
    KestroError
        For None, NaN and any other type: two labels that print alike need not
        be meant to be equal.
    """
    if isinstance(label, str):
        return str(label)
    if isinstance(label, (int, np.integer)) and not isinstance(label, bool):
        return str(int(label))
    if _is_missing(label):
        raise KestroError("a label is missing")
    raise KestroError(f"a label is a str or an int, not {label!r}")


def _is_missing(label: object) -> bool:
    import pandas as pd

    return bool(pd.api.types.is_scalar(label) and pd.isna(label))


class Packed(NamedTuple):
    """Some graphs, as one process hands them to another."""

    records: NDArray[np.int64]
    graphs: Arrays
    skipped: list[Skipped]


class Packer:
    """Collects graphs with the numbers of their records, then builds them.

    Parameters
    ----------
    on_error : {"raise", "skip"}
        What to do with a record that is no graph.
    path : str, optional
        What the records are read from, for messages.
    lines : sequence of int, optional
        The line, from 1 on, in which each record begins.
    """

    def __init__(
        self,
        on_error: OnError,
        path: str | None = None,
        lines: Sequence[int] | None = None,
    ) -> None:
        check_choice("on_error", on_error, ("raise", "skip"))
        self._on_error = on_error
        self._path = path or None
        self._lines = lines
        self._records = array("q")
        self._vertex_counts = array("q")
        self._edge_counts = array("q")
        self._vertex_labels = array("i")
        self._edges = array("q")
        self._edge_labels = array("i")
        self._vertex_ids: dict[str, int] = {}
        self._edge_ids: dict[str, int] = {}
        self._skipped: list[Skipped] = []

    def refuse(self, record: int, reason: str) -> None:
        """Skip a record, or raise."""
        if self._on_error == "raise":
            line = None if self._lines is None else self._lines[record]
            raise KestroError(f"record {record}: {reason}", self._path, line)
        self._skipped.append(Skipped(record, printable(reason)))

    def add(
        self,
        record: int,
        vertex_labels: Iterable[object],
        edges: Sequence[tuple[int, int]],
        edge_labels: Iterable[object],
    ) -> None:
        """Add the graph of a record; ends of edges count vertices from 0."""
        try:
            vertex_ids = _ids("vertex", self.vertex_label, vertex_labels)
            edge_ids = _ids("edge", self.edge_label, edge_labels)
            ends = _ends(edges, len(vertex_ids))
            if len(edge_ids) != len(edges):
                raise KestroError(f"{len(edges)} edges, {len(edge_ids)} edge labels")
        except KestroError as e:
            return self.refuse(record, e.text)
        return self.add_packed(record, vertex_ids, ends, edge_ids)

    def vertex_label(self, label: object) -> int:
        """Return the id that a vertex label has here."""
        return _label_id(self._vertex_ids, label)

    def edge_label(self, label: object) -> int:
        """Return the id that an edge label has here."""
        return _label_id(self._edge_ids, label)

    def add_packed(
        self,
        record: int,
        vertex_ids: Sequence[int],
        ends: Sequence[int],
        edge_ids: Sequence[int],
    ) -> None:
        """Add a graph by ids of labels, and two ends per edge."""
        self._records.append(record)
        self._vertex_counts.append(len(vertex_ids))
        self._edge_counts.append(len(edge_ids))
        self._vertex_labels.extend(vertex_ids)
        self._edges.extend(ends)
        self._edge_labels.extend(edge_ids)

    def packed(self) -> Packed:
        """Return all that was added."""
        return Packed(
            _numbers(self._records, np.int64),
            Arrays(
                _numbers(self._vertex_counts, np.int64),
                _numbers(self._edge_counts, np.int64),
                _numbers(self._vertex_labels, np.int32),
                _numbers(self._edges, np.int64).reshape(-1, 2),
                _numbers(self._edge_labels, np.int32),
                list(self._vertex_ids),
                list(self._edge_ids),
            ),
            self._skipped,
        )

    def extend(self, more: Packed) -> None:
        """Add what another packer, which skips, has packed."""
        for record, reason in more.skipped:
            self.refuse(record, reason)
        graphs = more.graphs
        vertex_ids = np.array([self.vertex_label(x) for x in graphs.vertex_table])
        edge_ids = np.array([self.edge_label(x) for x in graphs.edge_table])
        _append(self._records, more.records)
        _append(self._vertex_counts, graphs.vertex_counts)
        _append(self._edge_counts, graphs.edge_counts)
        if len(vertex_ids):
            _append(self._vertex_labels, vertex_ids[graphs.vertex_labels])
        _append(self._edges, graphs.edges)
        if len(edge_ids):
            _append(self._edge_labels, edge_ids[graphs.edge_labels])

    def build(
        self,
        atom_labels: AtomLabels | None = None,
        table: Callable[[NDArray[np.int64]], pd.DataFrame] | None = None,
        classes: Callable[[NDArray[np.int64]], NDArray[Any]] | None = None,
    ) -> GraphDatabase:
        """Return the database of all graphs added.

        The table and the classes are made of the numbers of the records that
        are graphs, in their order: what is no graph must not decide on types.
        A warning that nothing is left points at the caller of the caller.
        """
        packed = self.packed()
        records = packed.records
        native, refused = graphs_of(packed.graphs, skip=self._on_error == "skip")
        kept = np.ones(len(records), dtype=np.bool_)
        for i, reason in refused:
            kept[i] = False
            self.refuse(int(records[i]), reason)
        source = records[kept]
        db = GraphDatabase(
            native,
            source,
            tuple(sorted(self._skipped)),
            atom_labels=atom_labels,
            table=None if table is None else table(source),
            classes=None if classes is None else classes(source),
        )
        return warn_if_all_skipped(db, stacklevel=4)


def _numbers(numbers: array[int], dtype: type[_T]) -> NDArray[_T]:
    return np.array(numbers, dtype=dtype)


def _append(numbers: array[int], more: NDArray[Any]) -> None:
    numbers.frombytes(np.ascontiguousarray(more, numbers.typecode).tobytes())


def _ids(
    what: str, id_of: Callable[[object], int], labels: Iterable[object]
) -> list[int]:
    try:
        each = iter(labels)
    except TypeError:
        raise KestroError(f"no sequence of {what} labels: {labels!r}") from None
    return [id_of(label) for label in each]


def _ends(edges: Sequence[tuple[int, int]], vertices: int) -> array[int]:
    """Return the ends of all edges, one behind another."""
    try:
        ends = array("q", [end for a, b in edges for end in (a, b)])
    except OverflowError:
        raise KestroError("an edge with an end beyond all vertices") from None
    except (TypeError, ValueError) as e:
        raise KestroError(f"an edge is no pair of vertices: {e}") from None
    if ends and not 0 <= min(ends) <= max(ends) < vertices:
        i = next(i for i, end in enumerate(ends) if not 0 <= end < vertices)
        raise KestroError(
            f"edge {i // 2}: there is no vertex {ends[i]}, only {vertices} of them"
        )
    return ends


def _label_id(ids: dict[str, int], label: object) -> int:
    text = label_text(label)
    found = ids.get(text)
    if found is None:
        try:
            text.encode("utf-8", "surrogateescape")
        except UnicodeEncodeError:
            raise KestroError(f"a label that is no text: {text!r}") from None
        found = ids[text] = len(ids)
    return found
