"""Which graphs contain which pattern, as rows that stay on the cluster."""

from __future__ import annotations

import os
from collections.abc import Iterable, Iterator, Sequence
from functools import partial
from typing import TYPE_CHECKING

import numpy as np
import pyarrow as pa
from numpy.typing import NDArray

from kestro import _core, _native
from kestro._arguments import OnError
from kestro._database import AtomLabels
from kestro._matching import parents_among, pattern_arrays
from kestro._native import Arrays
from kestro._result import Result
from kestro._summary import check_atom_labels
from kestro.spark import _sources
from kestro.spark._blocks import Block, Tables, database_of
from kestro.spark._cluster import Reader
from kestro.spark._reading import Passed
from kestro.spark._session import session_of

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession


def occurrences(
    result: Result,
    source: str | os.PathLike[str] | DataFrame,
    spark: SparkSession | None = None,
    *,
    smiles: str | None = None,
    id_col: str | None = None,
    on_error: OnError = "raise",
) -> DataFrame:
    """Return which graphs contain which pattern, a row for each pair.

    Of a DataFrame the ids are looked at; all else is done when the rows are asked
    for, and nothing is collected.

    Parameters
    ----------
    result : Result
        Patterns of any run, all or some of them.
    source, smiles, id_col, on_error
        The graphs that were mined, or others, as `kestro.spark.mine` takes them.
        Molecules are read with charges and hydrogens as those mined were.
    spark : SparkSession, optional
        The session; None is the one that is active.

    Returns
    -------
    pyspark.sql.DataFrame
        Columns ``pattern``, the id, and ``path`` and ``record``, from 0 on in its
        file, or that of the ids.

    Raises
    ------
    TypeError, ValueError, KestroError
        For arguments that make no sense.  What cannot be read ends the job.
    """
    if not isinstance(result, Result):
        raise TypeError(f"result must be a Result, not {type(result).__name__}")
    session = session_of(spark)
    patterns = result._patterns
    labels = patterns.summary.atom_labels
    rows, reader, read_with = _sources.reading(
        session,
        source,
        smiles=smiles,
        id_col=id_col,
        atom_labels=labels or AtomLabels(False, False),
        on_error=on_error,
    )
    check_atom_labels(labels, read_with)
    kind = None
    schema = "pattern string, path string, record bigint"
    if id_col is not None:
        kind = "string" if dict(rows.dtypes)["id"] == "string" else "bigint"
        schema = f"pattern string, {_sources.quoted(id_col)} {kind}"
    chosen = np.unique(result.positions)
    arrays = pattern_arrays(patterns, chosen)
    lattice = (arrays, *parents_among(patterns, chosen))
    names = patterns.names(chosen)
    return rows.mapInArrow(
        partial(_pairs, reader, lattice, names, id_col, kind), schema
    )


def _pairs(
    reader: Reader,
    lattice: tuple[Arrays, NDArray[np.int64], NDArray[np.int32]],
    names: Sequence[str],
    id_col: str | None,
    kind: str | None,
    batches: Iterable[pa.RecordBatch],
) -> Iterator[pa.RecordBatch]:
    texts = pa.array(names, pa.string())
    patterns, offsets, parents = lattice
    matcher = _core.LatticeMatcher(
        _native.database_of(patterns, all_labels=True), offsets, parents
    )
    for source, number, found in _found(matcher, reader(batches, 1)):
        here = np.full(len(found), number)
        told = texts.take(pa.array(found))
        path = pa.array([source] * len(found), pa.string())
        if id_col is None:
            columns, heads = [told, path, pa.array(here)], ["pattern", "path", "record"]
        else:
            columns = [told, path if kind == "string" else pa.array(here)]
            heads = ["pattern", id_col]
        yield pa.RecordBatch.from_arrays(columns, names=heads)


def _found(
    matcher: _core.LatticeMatcher, read: Iterable[tuple[int, Block] | Passed]
) -> Iterator[tuple[str, int, NDArray[np.int32]]]:
    """Return of each graph its id and the positions of its patterns."""
    for one in read:
        if isinstance(one, Passed):
            continue
        _, block = one
        db = database_of([block], Tables.of([block.tables]))
        for tid, number in enumerate(block.numbers.tolist()):
            _, found = matcher.contained(db, tid, tid + 1)
            yield block.source(tid), number, found
