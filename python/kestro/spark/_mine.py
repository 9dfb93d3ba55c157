"""Mining on Spark."""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Any

from kestro._arguments import (
    MinSupport,
    check_choice,
    optional_number,
    truth,
    whole_number,
)
from kestro._database import AtomLabels
from kestro._errors import KestroError
from kestro._mine import receiver, request
from kestro._progress import ProgressCallback
from kestro._result import Result
from kestro.spark import _sources
from kestro.spark._cluster import SparkEngine
from kestro.spark._run import Division, run
from kestro.spark._tasks import Caps

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession

_MOST_SHARDS = 1 << 14


def mine(
    source: str | os.PathLike[str] | DataFrame,
    spark: SparkSession | None = None,
    *,
    min_support: MinSupport,
    min_size: int = 1,
    max_size: int | None = None,
    maximal: bool = False,
    closed: bool = False,
    n_jobs: int | None = None,
    progress: ProgressCallback | None = None,
    time_limit: float | None = None,
    max_patterns: int | None = None,
    form: str = "exact",
    smiles: str | None = None,
    id_col: str | None = None,
    charge: bool = False,
    hydrogens: bool = False,
    tids: bool = False,
    shards: int | None = None,
    min_local_support: int = 30,
    max_local_patterns: int | None = 2_000_000,
    max_local_memory: int | None = None,
) -> Result:
    """Find every connected subgraph that occurs in enough graphs, on a cluster.

    The graphs are mixed into shards, which the workers mine, each by its share of
    the minimum support; what may be frequent is counted where it was not found
    [1]_.  The result is that of `kestro.mine` over all graphs, ids and files
    included.  Graphs are never collected.

    Parameters
    ----------
    source : path, glob or DataFrame
        Transaction files on a file system that Spark reads; what is compressed by
        gzip is unpacked.  Graphs are numbered along the names of the files, then
        as they come in them.  Or a DataFrame with a column of SMILES, or with the
        columns of ``GraphDatabase.to_arrow``.
    spark : SparkSession, optional
        The session, classic or of Spark Connect; None is the one that is active.
    min_support, min_size, max_size, maximal, closed, max_patterns
        As `kestro.mine` takes them.
    n_jobs : int, optional
        Threads of the driver's own work; None is 1.
    progress : callable, optional
        Is called with a `Progress` while the driver looks supports up.
    time_limit : float, optional
        Seconds for the driver's own work, after the two passes.
    form : "exact"
        No other: the command line's form of a pattern may depend on the graphs
        that are mined together, so that shards would not speak of the same ones.
    smiles : str, optional
        The column of SMILES.
    id_col : str, optional
        The column of a DataFrame that tells graphs apart, of whole numbers or
        text: the order of the ids is that of the TIDs.
    charge, hydrogens : bool
        As `kestro.from_smiles` takes them.
    tids : bool
        Whether it is to be found out, in a third pass, which graphs contain each
        pattern.
    shards : int, optional
        How many; None is twice the number of tasks that Spark runs at once.  Empty
        ones are dropped.
    min_local_support : int
        While a shard's share of the minimum support is less, there is one shard
        fewer: at a share of few graphs nearly everything is frequent.
    max_local_patterns : int, optional
        A shard with more patterns ends the run with an error.
    max_local_memory : int, optional
        So does one whose process holds more bytes.

    Returns
    -------
    Result
        Without ``db``; without TIDs unless they were asked for.

    Raises
    ------
    KestroError
        With the path and the line, for files that cannot be read; where a shard
        reaches a cap, with what may help; for ids that are missing or come twice.
    TypeError, ValueError
        For arguments that make no sense.

    References
    ----------
    .. [1] A. Savasere, E. Omiecinski, S. Navathe, An efficient algorithm for
       mining association rules in large databases, VLDB 1995.
    """
    check_form(form)
    wanted = request(
        min_support=min_support,
        min_size=min_size,
        max_size=max_size,
        maximal=maximal,
        closed=closed,
        n_jobs=n_jobs,
        time_limit=time_limit,
        max_patterns=max_patterns,
    )
    caps = Caps(
        optional_number("max_local_patterns", max_local_patterns, 1, 2**63 - 1),
        optional_number("max_local_memory", max_local_memory, 1, 2**63 - 1),
    )
    count = optional_number("shards", shards, 1, _MOST_SHARDS)
    least = whole_number("min_local_support", min_local_support, 1)
    callback = receiver(progress)
    with_tids = truth("tids", tids)
    session = session_of(spark)
    rows, reader, labels = _sources.reading(
        session,
        source,
        smiles=smiles,
        id_col=id_col,
        atom_labels=AtomLabels(truth("charge", charge), truth("hydrogens", hydrogens)),
    )
    engine = SparkEngine(session, rows, reader)
    try:
        return run(
            engine,
            wanted,
            Division(count or 2 * _tasks_at_once(session), least, caps),
            with_tids=with_tids,
            atom_labels=labels,
            callback=callback,
        )
    finally:
        engine.close()


def check_form(form: object) -> None:
    """Raise for another form than the exact one."""
    check_choice("form", form, ("exact", "command-line"))
    if form != "exact":
        raise KestroError(
            "form must be 'exact' here: the command line's form of a pattern may "
            "depend on the graphs that are mined together, so that shards would "
            "not speak of the same patterns"
        )


def session_of(spark: Any) -> SparkSession:
    """Return the session, or the one that is active."""
    try:
        from pyspark.sql import SparkSession
    except ImportError as e:
        raise ImportError("this needs PySpark: pip install 'kestro[spark]'") from e
    if spark is None:
        spark = SparkSession.getActiveSession()
        if spark is None:
            raise ValueError("spark must be given: no session is active")
    if not hasattr(spark, "range") or not hasattr(spark, "read"):
        raise TypeError(f"spark must be a SparkSession, not {type(spark).__name__}")
    session: SparkSession = spark
    return session


def _tasks_at_once(spark: SparkSession) -> int:
    """Return how many parts Spark makes of something by itself."""
    from pyspark.sql import functions as f

    # Spark Connect does not tell, but does it.
    parts = spark.range(1 << 16).select(f.spark_partition_id().alias("part"))
    return parts.distinct().count()
