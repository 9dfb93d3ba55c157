"""What is mined: files, or the rows of a DataFrame."""

from __future__ import annotations

import os
import warnings
from collections.abc import Iterable, Iterator, Sequence
from functools import partial
from typing import TYPE_CHECKING, Any

import numpy as np
import pyarrow as pa

from kestro._arguments import OnError, check_choice
from kestro._arrow import from_arrow
from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import KestroError, printable
from kestro._files import unpacked
from kestro._molecules import from_smiles
from kestro.spark._blocks import Block, into_buckets
from kestro.spark._cluster import Reader
from kestro.spark._reading import Passed, block_of, read_file

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession

_AT_ONCE = 1 << 16  # rows that are read before they are mixed

_PACKED = ("vertex_labels", "edges", "edge_labels")


def reading(
    spark: SparkSession,
    source: str | os.PathLike[str] | DataFrame,
    *,
    smiles: str | None,
    id_col: str | None,
    atom_labels: AtomLabels,
    on_error: OnError,
) -> tuple[DataFrame, Reader, AtomLabels | None]:
    """Return the rows that are read, how, and what labels tell of atoms."""
    check_choice("on_error", on_error, ("raise", "skip"))
    if isinstance(source, (str, os.PathLike)):
        if on_error == "skip":
            raise ValueError("on_error is of the rows of DataFrames, not of files")
        if smiles is not None or id_col is not None:
            raise ValueError("smiles and id_col are of DataFrames, not of files")
        return _files(spark, os.fspath(source)), read_files, None
    if not hasattr(source, "mapInArrow"):
        raise TypeError(
            "source must be a path, a glob or a DataFrame of Spark's, not "
            f"{type(source).__module__}.{type(source).__name__}"
        )
    if id_col is None:
        raise ValueError("id_col must name a column that tells graphs apart")
    names = [(id_col, "id")]  # and what they become
    names += [(n, n) for n in _PACKED] if smiles is None else [(smiles, "smiles")]
    missing = [name for name, _ in names if name not in source.columns]
    if missing:
        raise KestroError(
            f"no column {', '.join(map(repr, missing))}; there are "
            f"{', '.join(map(repr, source.columns))}"
        )
    from pyspark.sql import functions as f

    # In quotes, as a name may hold a dot.
    rows = source.select(*(f.col(quoted(name)).alias(new) for name, new in names))
    _check_ids(rows, id_col)
    if smiles is None:
        return rows, partial(read_packed, on_error), None
    return rows, partial(read_smiles, on_error, atom_labels), atom_labels


def quoted(name: str) -> str:
    """Return the name of a column as Spark's expressions take it."""
    return "`" + name.replace("`", "``") + "`"


def _files(spark: SparkSession, path: str) -> DataFrame:
    """Return paths and contents of files; raise KestroError where there are none."""
    from pyspark.errors import AnalysisException

    try:
        files = spark.read.format("binaryFile").load(path).select("path", "content")
        files.schema  # noqa: B018  (Spark Connect looks for files only now)
    except AnalysisException as e:
        if e.getCondition() != "PATH_NOT_FOUND":
            raise
        raise KestroError("there is no such file", path) from None
    return files


def _check_ids(rows: DataFrame, id_col: str) -> None:
    """Raise for ids of another type, that are missing or come twice."""
    kind = dict(rows.dtypes)["id"]
    if kind not in ("tinyint", "smallint", "int", "bigint", "string"):
        raise KestroError(
            f"column {id_col!r} must be of whole numbers or text, not {kind}"
        )
    rows_of = rows.groupBy("id").count()
    wrong = rows_of.where("id is null or `count` > 1").limit(1).toArrow()
    if len(wrong):
        own = wrong["id"][0].as_py()
        if own is None:
            raise KestroError(f"column {id_col!r} lacks the id of a row")
        raise KestroError(f"column {id_col!r} has {own!r} more than once")


def read_files(
    batches: Iterable[pa.RecordBatch], buckets: int
) -> Iterator[tuple[int, Block] | Passed]:
    """Return the graphs of transaction files."""
    for batch in batches:
        for path, content in zip(
            batch.column("path").to_pylist(),
            batch.column("content").to_pylist(),
            strict=True,
        ):
            yield from read_file(path, unpacked(content, path), buckets)


def read_smiles(
    on_error: OnError,
    atom_labels: AtomLabels,
    batches: Iterable[pa.RecordBatch],
    buckets: int,
) -> Iterator[tuple[int, Block] | Passed]:
    """Return the molecules of rows of an id and a SMILES."""
    for table in _gathered(batches):
        texts = table.column(1).to_pylist()
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", UserWarning)  # that nothing is left
            db = from_smiles(texts, on_error="skip", **atom_labels._asdict())
        yield from _rows(db, table.column(0).to_pylist(), on_error, buckets)


def read_packed(
    on_error: OnError, batches: Iterable[pa.RecordBatch], buckets: int
) -> Iterator[tuple[int, Block] | Passed]:
    """Return the graphs of rows of an id and the packed columns."""
    for table in _gathered(batches):
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", UserWarning)  # that nothing is left
            db = from_arrow(table.select(_PACKED), on_error="skip")
        yield from _rows(db, table.column(0).to_pylist(), on_error, buckets)


def _gathered(batches: Iterable[pa.RecordBatch]) -> Iterator[pa.Table]:
    """Return the rows in fewer batches: many buckets of few graphs take long."""
    held: list[pa.RecordBatch] = []
    for batch in batches:
        held.append(batch)
        if sum(one.num_rows for one in held) >= _AT_ONCE:
            yield pa.Table.from_batches(held)
            held = []
    if held:
        yield pa.Table.from_batches(held)


def _rows(
    db: GraphDatabase, ids: Sequence[Any], on_error: OnError, buckets: int
) -> Iterator[tuple[int, Block] | Passed]:
    """Return graphs by bucket, and tell of the rows that are none."""
    if db.skipped:
        record, reason = db.skipped[0]
        first = printable(f"id {ids[record]!r}: {reason}")
        if on_error == "raise":
            raise KestroError(first)
        yield Passed(len(db.skipped), first)
        left_out = {record for record, _ in db.skipped}
        ids = [own for record, own in enumerate(ids) if record not in left_out]
    yield from into_buckets(block_of(db, *_names(ids)), buckets)


def _names(
    ids: Sequence[Any],
) -> tuple[tuple[str, ...], np.ndarray[Any, np.dtype[np.int64]]]:
    """Return sources and numbers that come in the order of the ids."""
    if ids and isinstance(ids[0], str):
        return tuple(ids), np.zeros(len(ids), np.int64)
    return ("",), np.array(ids, np.int64)
