"""Databases of labelled graphs."""

from __future__ import annotations

import os
import warnings
from collections.abc import Iterator, Sized
from dataclasses import dataclass
from typing import IO, TYPE_CHECKING, Any, NamedTuple, TypeVar, overload

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro import _core
from kestro._arguments import Index, Selection, position, positions

if TYPE_CHECKING:
    import networkx as nx
    import pandas as pd
    import pyarrow as pa


_Sized = TypeVar("_Sized", bound=Sized | None)


def number_of(count: int, what: str) -> str:
    """Return how many there are of what, in words."""
    return f"{count} {what}" if count == 1 else f"{count} {what}s"


class Skipped(NamedTuple):
    """A record that a reader left out.

    Attributes
    ----------
    record : int
        Its number in the source, counted from 0 as in ``GraphDatabase.source``,
        whichever line it is in; -1 for what lies before the first.
    reason : str
        Why.
    """

    record: int
    reason: str


class AtomLabels(NamedTuple):
    """What the labels of molecules tell beside element and aromaticity.

    Attributes
    ----------
    charge : bool
        Whether they tell the formal charge.
    hydrogens : bool
        Whether all hydrogens are vertices.
    """

    charge: bool
    hydrogens: bool


@dataclass(frozen=True, eq=False)
class Graph:
    """A labelled undirected graph.

    Attributes
    ----------
    vertex_labels : tuple of str
        One per vertex; vertices are numbered from 0.
    edges : ndarray of int32, shape (edges, 2)
        The ends of each edge, the smaller one first.
    edge_labels : tuple of str
        One per edge.
    """

    vertex_labels: tuple[str, ...]
    edges: NDArray[np.int32]
    edge_labels: tuple[str, ...]

    def __repr__(self) -> str:
        """Return the numbers of vertices and edges."""
        return f"<Graph: {len(self.vertex_labels)} vertices, {len(self.edges)} edges>"

    def lines(self) -> str:
        """Return the vertex and edge lines of the transaction format."""
        lines = [f"v {i} {label}\n" for i, label in enumerate(self.vertex_labels)]
        lines += [
            f"u {a} {b} {label}\n"
            for (a, b), label in zip(self.edges.tolist(), self.edge_labels, strict=True)
        ]
        return "".join(lines)

    def to_networkx(
        self, *, vertex_label: str = "label", edge_label: str = "label"
    ) -> nx.Graph:
        """Return the graph as NetworkX's.

        Parameters
        ----------
        vertex_label, edge_label : str
            The attributes that take the labels.
        """
        import networkx as nx

        g = nx.Graph()
        for i, label in enumerate(self.vertex_labels):
            g.add_node(i, **{vertex_label: label})
        for (a, b), label in zip(self.edges.tolist(), self.edge_labels, strict=True):
            g.add_edge(a, b, **{edge_label: label})
        return g


class GraphDatabase:
    """Labelled undirected graphs, held once and never changed.

    What stands beside them may be set: a ``table`` or ``classes`` of their own.

    The readers make databases: `read_transactions`, `from_edges`,
    `from_networkx`, `from_graphml`, `from_tu`, `from_arrow`, and of molecules
    `from_rdkit`, `from_smiles`, `from_csv`, `from_sdf`.  An int gives a
    `Graph`; a slice, a boolean mask or an array of positions gives a database,
    with ``source``, ``table`` and ``classes`` of the graphs chosen.  Databases
    can be pickled.

    Attributes
    ----------
    source : ndarray of int64, shape (graphs,)
        Per graph, the number of its record in what was read, from 0 on.
    skipped : tuple of Skipped
        The records that were left out, by their numbers, and why; a selection has
        those of the whole.
    table : DataFrame or None
        A row per graph: what stood beside the graphs.  To set another one
        raises a ValueError unless it has as many rows.
    classes : ndarray, shape (graphs,), or None
        The class of each graph, where the source has classes; set like
        ``table``.
    atom_labels : AtomLabels or None
        What labels tell of atoms; None where graphs are no molecules.
    """

    __slots__ = ("_classes", "_native", "_table", "atom_labels", "skipped", "source")

    def __init__(
        self,
        native: _core.Database,
        source: NDArray[np.int64] | None = None,
        skipped: tuple[Skipped, ...] = (),
        *,
        atom_labels: AtomLabels | None = None,
        table: pd.DataFrame | None = None,
        classes: NDArray[Any] | None = None,
    ) -> None:
        self._native = native
        self.source = (
            np.arange(len(native), dtype=np.int64) if source is None else source
        )
        self.source.flags.writeable = False
        self.skipped = skipped
        self.atom_labels = atom_labels
        self.table = table
        self.classes = classes

    @property
    def table(self) -> pd.DataFrame | None:
        return self._table

    @table.setter
    def table(self, table: pd.DataFrame | None) -> None:
        if table is not None and not hasattr(table, "iloc"):
            raise TypeError(f"table must be a DataFrame, not {type(table).__name__}")
        self._table = self._beside("table", table)

    @property
    def classes(self) -> NDArray[Any] | None:
        return self._classes

    @classes.setter
    def classes(self, classes: ArrayLike | None) -> None:
        array = None if classes is None else np.asarray(classes)
        if array is not None and array.ndim != 1:
            raise ValueError(f"classes must have one dimension, not {array.ndim}")
        self._classes = self._beside("classes", array)

    def _beside(self, name: str, values: _Sized) -> _Sized:
        if values is not None and len(values) != len(self):
            raise ValueError(
                f"{name} must have {number_of(len(self), 'row')}, one per graph, "
                f"not {len(values)}"
            )
        return values

    @property
    def kind(self) -> str:
        """Either "molecules", of atoms and bonds, or "graphs"."""
        return "graphs" if self.atom_labels is None else "molecules"

    def __len__(self) -> int:
        """Return the number of graphs."""
        return len(self._native)

    def __iter__(self) -> Iterator[Graph]:
        """Return the graphs one by one."""
        return (self[tid] for tid in range(len(self)))

    @overload
    def __getitem__(self, key: Index) -> Graph: ...
    @overload
    def __getitem__(self, key: slice | Selection) -> GraphDatabase: ...
    def __getitem__(self, key: Index | slice | Selection) -> Graph | GraphDatabase:
        """Return a graph, or a database of those selected."""
        if isinstance(key, (int, np.integer, np.bool_)):
            tid = position(key, len(self), "graph")
            vertex_labels, edges, edge_labels = self._native.graph(tid)
            return Graph(tuple(vertex_labels), edges, tuple(edge_labels))
        tids = positions(key, len(self))
        return GraphDatabase(
            self._native.select(tids),
            self.source[tids],
            self.skipped,
            atom_labels=self.atom_labels,
            table=None
            if self.table is None
            else self.table.iloc[tids].reset_index(drop=True),
            classes=None if self.classes is None else self.classes[tids],
        )

    def __repr__(self) -> str:
        """Return the numbers of graphs and of skipped records."""
        return f"<GraphDatabase: {self._headline()}>"

    def _repr_html_(self) -> str:
        """Return what notebooks show: the numbers, and the first graphs."""
        from kestro._html import database_page

        return database_page(self._headline(), self)

    def _headline(self) -> str:
        graphs = number_of(len(self), self.kind.removesuffix("s"))
        records = number_of(len(self.skipped), "record")
        return f"{graphs}, {records} skipped" if self.skipped else graphs

    def __reduce__(self) -> tuple[Any, ...]:
        """Pickle the packed arrays."""
        packed = self._native.to_arrays()
        return _unpickled, (
            packed,
            self.source,
            self.skipped,
            self.atom_labels,
            self.table,
            self.classes,
        )

    def to_networkx(
        self, *, vertex_label: str = "label", edge_label: str = "label"
    ) -> list[nx.Graph]:
        """Return the graphs as NetworkX's, with labels in these attributes."""
        return [
            g.to_networkx(vertex_label=vertex_label, edge_label=edge_label)
            for g in self
        ]

    @overload
    def to_transactions(self, path: None = None) -> str: ...
    @overload
    def to_transactions(self, path: str | os.PathLike[str] | IO[str]) -> None: ...
    def to_transactions(
        self, path: str | os.PathLike[str] | IO[str] | None = None
    ) -> str | None:
        """Write the graphs in the transaction format of the command line.

        Parameters
        ----------
        path : path or text file, optional
            Where to; None returns the text.
        """
        text = "".join(f"t # {tid}\n{g.lines()}" for tid, g in enumerate(self))
        if path is None:
            return text
        if isinstance(path, (str, os.PathLike)):
            with open(path, "w", encoding="utf-8", errors="surrogateescape") as f:
                f.write(text)
        else:
            path.write(text)
        return None

    def to_rdkit(self) -> list[Any]:
        """Return the molecules as RDKit's, made from labels alone.

        Atoms have the element, the aromaticity and the charge that labels
        tell, in the order of vertices.  The molecules are not sanitized, as
        labels do not tell all that this takes; substructures can be looked
        for.  `from_rdkit` makes the same database of them again.

        Returns
        -------
        list of rdkit.Chem.Mol

        Raises
        ------
        ImportError
            Without RDKit, which ``pip install kestro[rdkit]`` brings.
        ValueError
            When the graphs are no molecules.
        """
        from kestro._atoms import to_rdkit

        return to_rdkit(self)

    def to_arrow(self) -> pa.Table:
        """Return the graphs as a table of PyArrow's, a row per graph.

        Columns are ``vertex_labels``, a list of str; ``edges``, a list of
        pairs of int32, which count vertices from 0; ``edge_labels``, a list of
        str; ``class``, where there are classes; then those of ``table``.
        Labels are binary where one of them is no UTF-8.  What labels tell of
        atoms stands in the metadata of the schema.

        Raises
        ------
        ImportError
            Without PyArrow, which ``pip install kestro[arrow]`` brings.
        ValueError
            When ``table`` has a column of such a name.
        """
        from kestro._arrow import to_arrow

        return to_arrow(self)


def warn_if_all_skipped(db: GraphDatabase, stacklevel: int) -> GraphDatabase:
    """Return the database; warn when there were records, and none is a graph.

    The stacklevel is that of the reader's caller, counted from here on.
    """
    if db.skipped and not len(db):
        record, reason = db.skipped[0]
        if len(db.skipped) == 1:
            text = f"the only record, {record}, was skipped: {reason}"
        else:
            text = (
                f"all {len(db.skipped)} records were skipped; "
                f"the first, record {record}: {reason}"
            )
        warnings.warn(text, UserWarning, stacklevel=stacklevel)
    return db


def _unpickled(
    packed: dict[str, Any],
    source: NDArray[np.int64],
    skipped: tuple[Skipped, ...],
    atom_labels: AtomLabels | None,
    table: pd.DataFrame | None,
    classes: NDArray[Any] | None,
) -> GraphDatabase:
    native, refused = _core.Database.from_arrays(**packed, skip=False, readable=True)
    if refused:
        raise ValueError(f"a broken pickle: {refused[0][1]}")
    return GraphDatabase(
        native,
        source,
        skipped,
        atom_labels=atom_labels,
        table=table,
        classes=classes,
    )
