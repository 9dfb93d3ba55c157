"""Databases as tables of Arrow's."""

from __future__ import annotations

import json
from collections.abc import Sequence
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import KestroError
from kestro._packing import Packer
from kestro._ragged import offsets_of

if TYPE_CHECKING:
    import pyarrow as pa

_VERTEX_LABELS = "vertex_labels"
_EDGES = "edges"
_EDGE_LABELS = "edge_labels"
_CLASS = "class"
_NEEDED = (_VERTEX_LABELS, _EDGES, _EDGE_LABELS)
_METADATA = b"kestro"


def from_arrow(table: Any, *, on_error: OnError = "raise") -> GraphDatabase:
    """Make a database of a table with a row per graph.

    Parameters
    ----------
    table : pyarrow.Table, or what has a method ``__arrow_c_stream__``
        As of PyArrow, Polars and DuckDB.  Columns are ``vertex_labels``, lists
        of text or whole numbers; ``edges``, lists of pairs of whole numbers,
        which count vertices from 0; ``edge_labels``, lists like the first.
    on_error : {"raise", "skip"}
        With "skip", what is no graph is left out and listed in ``skipped``.

    Returns
    -------
    GraphDatabase
        With a column ``class`` in ``classes``, and further ones in ``table``.
        Of molecules where ``GraphDatabase.to_arrow`` made the table so.
        ``source`` counts the rows from 0.

    Raises
    ------
    ImportError
        Without PyArrow, which ``pip install kestro[arrow]`` brings.
    KestroError
        When a column is missing, and for rows that `from_edges` refuses.

    Examples
    --------
    >>> import kestro
    >>> db = kestro.from_edges([["C", "O"]], [[(0, 1, "=")]])
    >>> kestro.from_arrow(db.to_arrow())
    <GraphDatabase: 1 graph>
    """
    pa = import_pyarrow()
    packer = Packer(on_error)
    if not isinstance(table, pa.Table):
        if not hasattr(table, "__arrow_c_stream__"):
            raise TypeError(f"table must be a table of Arrow's, not {table!r}")
        table = pa.RecordBatchReader.from_stream(table).read_all()
    for name in _NEEDED:
        if table.column_names.count(name) != 1:
            count = table.column_names.count(name)
            raise KestroError(f"{count} columns are named {name!r}, where 1 is needed")
    columns = [table.column(name).to_pylist() for name in _NEEDED]
    for record, (vertices, ends, labels) in enumerate(zip(*columns, strict=True)):
        _add(packer, record, vertices, ends, labels)
    others = [name for name in table.column_names if name not in (*_NEEDED, _CLASS)]

    def beside(source: NDArray[np.int64]) -> Any:
        return table.select(others).take(pa.array(source)).to_pandas()

    def classes(source: NDArray[np.int64]) -> Any:
        return table.column(_CLASS).take(pa.array(source)).to_pandas().to_numpy()

    return packer.build(
        _atom_labels(table),
        beside if others else None,
        classes if _CLASS in table.column_names else None,
    )


def _add(packer: Packer, record: int, vertices: Any, ends: Any, labels: Any) -> None:
    for name, cell in zip(_NEEDED, (vertices, ends, labels), strict=True):
        if not isinstance(cell, list):
            return packer.refuse(record, f"{name} is no list: {cell!r}")
    pairs = []
    for pair in ends:
        if not (isinstance(pair, list) and list(map(type, pair)) == [int, int]):
            return packer.refuse(record, f"an edge is a pair of numbers, not {pair!r}")
        pairs.append((pair[0], pair[1]))
    return packer.add(
        record, [_label(x) for x in vertices], pairs, [_label(x) for x in labels]
    )


def _label(label: object) -> object:
    return (
        label.decode("utf-8", "surrogateescape") if isinstance(label, bytes) else label
    )


def _atom_labels(table: pa.Table) -> AtomLabels | None:
    told = (table.schema.metadata or {}).get(_METADATA)
    if told is None:
        return None
    try:
        labels = json.loads(told)["atom_labels"]
        return None if labels is None else AtomLabels(**labels)
    except (KeyError, TypeError, ValueError) as e:
        raise KestroError(f"metadata that this version cannot read: {told!r}") from e


def to_arrow(db: GraphDatabase) -> pa.Table:
    """Return the graphs as a table; see `GraphDatabase.to_arrow`."""
    pa = import_pyarrow()
    packed = db._native.to_arrays()
    vertex_counts = packed["vertex_counts"]
    edge_counts = packed["edge_counts"]
    pairs = pa.FixedSizeListArray.from_arrays(
        pa.array(packed["edges"].ravel().astype(np.int32)), 2
    )
    columns = {
        _VERTEX_LABELS: _lists(
            vertex_counts, _labels(packed["vertex_table"], packed["vertex_labels"])
        ),
        _EDGES: _lists(edge_counts, pairs),
        _EDGE_LABELS: _lists(
            edge_counts, _labels(packed["edge_table"], packed["edge_labels"])
        ),
    }
    if db.classes is not None:
        columns[_CLASS] = pa.array(db.classes)
    if db.table is not None:
        beside = pa.Table.from_pandas(db.table, preserve_index=False)
        taken = sorted(columns.keys() & set(beside.column_names))
        if taken:
            raise ValueError(f"the table has columns with names in use: {taken}")
        columns.update(zip(beside.column_names, beside.columns, strict=True))
    labels = db.atom_labels
    told = {"atom_labels": None if labels is None else labels._asdict()}
    return pa.table(columns, metadata={_METADATA: json.dumps(told)})


def _labels(table: Sequence[bytes], ids: Any) -> Any:
    pa = import_pyarrow()
    texts = pa.array(table, pa.binary())
    try:
        texts = texts.cast(pa.string())
    except pa.ArrowInvalid:
        pass  # not all of them are UTF-8
    return texts.take(pa.array(ids))


def _lists(counts: Any, values: Any) -> Any:
    pa = import_pyarrow()
    offsets = offsets_of(counts)
    if offsets[-1] > np.iinfo(np.int32).max:
        return pa.LargeListArray.from_arrays(pa.array(offsets), values)
    return pa.ListArray.from_arrays(pa.array(offsets.astype(np.int32)), values)


def import_pyarrow() -> Any:
    """Return pyarrow; without it raise an ImportError that says how to get it."""
    try:
        import pyarrow
    except ImportError as e:
        raise ImportError("this needs PyArrow: pip install 'kestro[arrow]'") from e
    return pyarrow
