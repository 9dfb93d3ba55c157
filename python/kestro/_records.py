"""Databases of records as models get them: lists, arrays and Series.

What is a graph keeps the number of its record, so that a row can be made for each
record, whether it could be read or not.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Iterable, Mapping, Set
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._database import AtomLabels, Graph, GraphDatabase, Skipped
from kestro._molecules import from_rdkit, from_smiles
from kestro._networkx import from_networkx
from kestro._packing import Packer

_Reader = Callable[[list[Any], OnError, AtomLabels], GraphDatabase]
_READ = "SMILES, molecules of RDKit's, graphs of NetworkX's or kestro.Graph"


class Records(NamedTuple):
    """The graphs of some records."""

    db: GraphDatabase
    rows: NDArray[np.int64]  # per graph, the record that it is; ascending
    total: int  # of all records, those that could not be read among them
    skipped: tuple[Skipped, ...]  # those that could not be read


def read_records(
    X: object, on_error: OnError, labels: AtomLabels | None = None
) -> Records:
    """Return the graphs of records.

    The first record that is none of missing ones tells by which reader all are
    read; of another kind than that one they cannot be read.

    Parameters
    ----------
    X : GraphDatabase or iterable
        A database is taken as it is, and each graph is a record.
    on_error : {"raise", "skip"}
        Whether a record that cannot be read raises or is no graph.
    labels : AtomLabels, optional
        What labels of molecules are to tell.

    Raises
    ------
    KestroError
        For a record that cannot be read.
    TypeError
        For what is no list of records, and for records of which none is of a
        kind that is read.
    ValueError
        For an array of another dimension than 1.
    """
    if isinstance(X, GraphDatabase):
        return Records(X, np.arange(len(X), dtype=np.int64), len(X), ())
    records = _listed(X)
    read = _reader_of(records)
    db = read(records, on_error, labels or AtomLabels(charge=False, hydrogens=False))
    return Records(db, db.source, len(records), db.skipped)


def _listed(X: Any) -> list[Any]:
    if isinstance(X, bytes) or _kind_of(X) is not None:
        raise TypeError(f"X must be a list of graphs, not a single one: {X!r}")
    dimensions = getattr(X, "ndim", 1)
    if dimensions != 1:
        raise ValueError(
            f"X must have one dimension, a graph an entry, not {dimensions}: a "
            f"column of a table is X['smiles'] or X[:, 0]"
        )
    # A set has no order by which rows could be told apart.
    if not isinstance(X, Iterable) or isinstance(X, (Mapping, Set)):
        raise TypeError(
            f"X must be a GraphDatabase or a list of {_READ}, not {type(X).__name__}"
        )
    return list(X)


def _reader_of(records: list[Any]) -> _Reader:
    """Return what reads records of the first kind that there is."""
    for record in records:
        read = _kind_of(record)
        if read is not None:
            return read
    for i, record in enumerate(records):
        if not _is_missing(record):
            raise TypeError(f"X must hold {_READ}, not {record!r} as record {i}")
    return _read_graphs


def _kind_of(record: object) -> _Reader | None:
    """Return what reads records such as this one, None where it is none."""
    if isinstance(record, str):
        return _read_smiles
    if isinstance(record, Graph):
        return _read_graphs
    if _is_of("networkx", "Graph", record):
        return _read_networkx
    if _is_of("rdkit.Chem", "Mol", record):
        return _read_rdkit
    return None


def _is_of(module: str, name: str, record: object) -> bool:
    """Return whether it is an object of a library, which it takes to be imported."""
    there = sys.modules.get(module)
    return there is not None and isinstance(record, getattr(there, name))


def _is_missing(record: object) -> bool:
    import pandas as pd

    return bool(pd.api.types.is_scalar(record) and pd.isna(record))


def _read_smiles(
    records: list[Any], on_error: OnError, labels: AtomLabels
) -> GraphDatabase:
    return from_smiles(records, on_error=on_error, **labels._asdict())


def _read_rdkit(
    records: list[Any], on_error: OnError, labels: AtomLabels
) -> GraphDatabase:
    return from_rdkit(records, on_error=on_error, **labels._asdict())


def _read_networkx(
    records: list[Any], on_error: OnError, labels: AtomLabels
) -> GraphDatabase:
    return from_networkx(records, on_error=on_error)


def _read_graphs(
    records: list[Any], on_error: OnError, labels: AtomLabels
) -> GraphDatabase:
    packer = Packer(on_error)
    for i, g in enumerate(records):
        if isinstance(g, Graph):
            packer.add(i, g.vertex_labels, g.edges.tolist(), g.edge_labels)
        else:
            missing = _is_missing(g)
            packer.refuse(i, "it is missing" if missing else f"no kestro.Graph: {g!r}")
    return packer.build()
