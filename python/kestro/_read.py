"""Reading results from files."""

from __future__ import annotations

import os
from pathlib import Path

import numpy as np

from kestro import _jsonl, _matching, _program_files
from kestro._arguments import job_count
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._files import read_bytes
from kestro._patterns import Patterns
from kestro._result import Result


def read_result(
    path: str | os.PathLike[str],
    db: GraphDatabase | None = None,
    *,
    n_jobs: int | None = None,
) -> Result:
    """Read the patterns of a run from files.

    Parameters
    ----------
    path : path
        A pattern file of the program or of `Result.write`, with the extension
        ``.fp``; ``.tid`` and ``.pc`` files of the same name beside it are read,
        too.  Or what `Result.to_jsonl` wrote.  Either may be compressed by
        gzip.
    db : GraphDatabase, optional
        What was mined.  Without a file of TIDs the patterns are looked for in
        it.
    n_jobs : int, optional
        Threads for that: None is 1, -1 all cores that the process may use.

    Returns
    -------
    Result
        Where there are neither files nor ``db``, asking for TIDs, parents or
        the database raises `KestroError`, and whether patterns are closed and
        maximal is unknown.  So it is in the last level of a bounded run.

    Raises
    ------
    KestroError
        For a file that is not whole or of another kind, and when the files or
        ``db`` do not belong together.
    OSError
        When a file cannot be read.
    """
    jobs = job_count(n_jobs)
    file = Path(path)
    text, _ = read_bytes(file)
    own = _jsonl if text.startswith(b"{") else _program_files
    patterns = own.read(file, text)
    if db is not None:
        graphs = patterns.summary["graphs"]
        if len(db) != graphs:
            raise KestroError(
                f"{graphs} graphs were mined, db has {len(db)}", str(file)
            )
        patterns.summary["atom_labels"] = db.atom_labels
        if not patterns.has_tids:
            patterns = _with_tids(patterns, db, jobs, file)
    return Result(patterns, db)


def _with_tids(
    patterns: Patterns, db: GraphDatabase, jobs: int, file: Path
) -> Patterns:
    """Return the patterns with the TIDs that matching gives."""
    lattice = _matching.Lattice(patterns, np.arange(len(patterns)))
    found = lattice.match(db._native, jobs).tocsc()
    if not np.array_equal(np.diff(found.indptr), patterns.support):
        raise KestroError("the patterns are not as frequent in db", str(file))
    return patterns.with_arrays(
        tids=found.indices.astype(np.int32), tid_offsets=found.indptr.astype(np.int64)
    )
