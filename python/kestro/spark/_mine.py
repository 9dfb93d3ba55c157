"""Mining on Spark."""

from __future__ import annotations

import os
from collections.abc import Iterator
from contextlib import contextmanager
from typing import TYPE_CHECKING

from kestro._arguments import (
    MinSupport,
    OnError,
    check_choice,
    optional_number,
    truth,
    whole_number,
)
from kestro._database import AtomLabels
from kestro._errors import KestroError
from kestro._mine import receiver, request
from kestro._progress import ProgressBar, ProgressCallback
from kestro._result import Result
from kestro.spark import _sources
from kestro.spark._cluster import SparkEngine
from kestro.spark._plan import Plan, make_plan
from kestro.spark._run import Division, run
from kestro.spark._session import session_of, sparks_errors, tasks_at_once
from kestro.spark._tasks import Caps

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession

_MOST_SHARDS = 1 << 14
_MOST_PATTERNS = 2_000_000


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
    progress: bool | ProgressCallback | None = None,
    time_limit: float | None = None,
    max_patterns: int | None = None,
    form: str = "exact",
    smiles: str | None = None,
    id_col: str | None = None,
    charge: bool = False,
    hydrogens: bool = False,
    on_error: OnError = "raise",
    tids: bool = False,
    shards: int | None = None,
    min_local_support: int = 30,
    max_local_patterns: int | None = _MOST_PATTERNS,
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
        Transaction files on a file system that Spark reads, but for names that
        begin with a dot or an underscore, which Spark takes for hidden, and for
        those in folders below; what is compressed by gzip is unpacked.  Graphs are
        numbered along the names of the files, then as they come in them.  Or a
        DataFrame with a column of SMILES, or with the columns of
        ``GraphDatabase.to_arrow``.
    spark : SparkSession, optional
        The session, classic or of Spark Connect; None is the one that is active.
    min_support, min_size, max_size, maximal, closed, max_patterns
        As `kestro.mine` takes them.
    n_jobs : int, optional
        Threads of the driver's own work; None is 1.
    progress : bool or callable, optional
        True shows a bar.  A callable is called with a `Progress`: of size 0 and the
        step "mining shards" or "counting in shards" while Spark works, perhaps by
        another thread, then as `kestro.mine` does, last of size 0 and "finding in
        shards" for TIDs.  What it raises ends the run after the pass.
    time_limit : float, optional
        Seconds for the driver's own work, after the two passes.
    form : "exact"
        No other: the command line's form of a pattern may depend on the graphs
        that are mined together, so that shards would not speak of the same ones.
    smiles : str, optional
        The column of SMILES.
    id_col : str, optional
        The column of a DataFrame that tells graphs apart, of whole numbers or
        text, which every DataFrame needs: the order of the ids is that of the TIDs.
        Ids have to be the same each time the rows are computed.
    charge, hydrogens : bool
        As `kestro.from_smiles` takes them.
    on_error : {"raise", "skip"}
        What to do with a row that is no graph: end the run, or leave it out and
        say in the log how many there were.  A file's faults end the run.
    tids : bool
        Whether it is to be found out, in a third pass, which graphs contain each
        pattern.  They come to the driver, eight bytes each, as far as Spark's
        ``spark.driver.maxResultSize`` allows; `occurrences` leaves them where they
        are.
    shards : int, optional
        How many; None is twice the number of tasks that Spark runs at once.  Empty
        ones are dropped.
    min_local_support : int
        While a shard's share of the minimum support is less, there is one shard
        fewer: at a share of few graphs nearly everything is frequent.
    max_local_patterns : int, optional
        A shard with more patterns ends the run with an error.
    max_local_memory : int, optional
        So does one whose process holds more bytes, some 150 million of which are
        the interpreter's; and in any case one that leaves less than a sixteenth of
        its machine's memory, or of its container's.

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
    with_tids = truth("tids", tids)
    session = session_of(spark)
    division = _division(
        session, shards, min_local_support, max_local_patterns, max_local_memory
    )
    bar = ProgressBar() if progress is True else None
    callback = receiver(bar if bar else progress)
    with (
        sparks_errors(),
        _engine(session, source, smiles, id_col, charge, hydrogens, on_error) as (
            engine,
            labels,
        ),
    ):
        try:
            return run(
                engine,
                wanted,
                division,
                with_tids=with_tids,
                atom_labels=labels,
                callback=callback,
            )
        finally:
            if bar:
                bar.close()


def plan(
    source: str | os.PathLike[str] | DataFrame,
    spark: SparkSession | None = None,
    *,
    min_support: MinSupport,
    max_size: int | None = None,
    smiles: str | None = None,
    id_col: str | None = None,
    charge: bool = False,
    hydrogens: bool = False,
    on_error: OnError = "raise",
    shards: int | None = None,
    min_local_support: int = 30,
    max_local_patterns: int | None = _MOST_PATTERNS,
    max_local_memory: int | None = None,
) -> Plan:
    """Return what `mine` would come to with the same arguments.

    All graphs are read, and three of the shards are mined; what these report
    tells how fast their union grows.

    Returns
    -------
    Plan
        The numbers of graphs, shards and patterns, seconds, memory and bytes.

    Raises
    ------
    KestroError, TypeError, ValueError
        As `mine` does, but for a cap, which ``Plan.capped`` tells of.
    """
    wanted = request(min_support=min_support, max_size=max_size)
    session = session_of(spark)
    division = _division(
        session, shards, min_local_support, max_local_patterns, max_local_memory
    )
    with (
        sparks_errors(),
        _engine(session, source, smiles, id_col, charge, hydrogens, on_error) as (
            engine,
            _,
        ),
    ):
        return make_plan(engine, wanted, division)


@contextmanager
def _engine(
    spark: SparkSession,
    source: str | os.PathLike[str] | DataFrame,
    smiles: str | None,
    id_col: str | None,
    charge: bool,
    hydrogens: bool,
    on_error: OnError,
) -> Iterator[tuple[SparkEngine, AtomLabels | None]]:
    """Lend who reads and mines the source; tell what labels say of atoms."""
    rows, reader, labels = _sources.reading(
        spark,
        source,
        smiles=smiles,
        id_col=id_col,
        atom_labels=AtomLabels(truth("charge", charge), truth("hydrogens", hydrogens)),
        on_error=on_error,
    )
    engine = SparkEngine(spark, rows, reader)
    try:
        yield engine, labels
    finally:
        engine.close()


def _division(
    spark: SparkSession,
    shards: int | None,
    min_local_support: int,
    max_local_patterns: int | None,
    max_local_memory: int | None,
) -> Division:
    caps = Caps(
        optional_number("max_local_patterns", max_local_patterns, 1, 2**63 - 1),
        optional_number("max_local_memory", max_local_memory, 1, 2**63 - 1),
    )
    count = optional_number("shards", shards, 1, _MOST_SHARDS)
    least = whole_number("min_local_support", min_local_support, 1)
    return Division(count or 2 * tasks_at_once(spark), least, caps)


def check_form(form: object) -> None:
    """Raise for another form than the exact one."""
    check_choice("form", form, ("exact", "command-line"))
    if form != "exact":
        raise KestroError(
            "form must be 'exact' here: the command line's form of a pattern may "
            "depend on the graphs that are mined together, so that shards would "
            "not speak of the same patterns"
        )
