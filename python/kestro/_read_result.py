"""Reading results from files."""

from __future__ import annotations

import os
from dataclasses import replace
from pathlib import Path

import numpy as np

from kestro import _jsonl, _matching, _program_files
from kestro._arguments import job_count
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._files import Source, plain_name, read_bytes
from kestro._patterns import Patterns
from kestro._result import Result
from kestro._summary import Described, check_atom_labels, describe

# Patterns that are looked for where their TIDs are known, to see that they are db's.
_LOOKED_FOR = 10


def read_result(
    source: Source,
    db: GraphDatabase | None = None,
    *,
    n_jobs: int | None = None,
) -> Result:
    """Read the patterns of a run from files.

    Parameters
    ----------
    source : path or file object
        A pattern file of the program or of `Result.write`, with the extension
        ``.fp``; ``.tid`` and ``.pc`` files of the same name beside it are read,
        too, but not those beside a file object.  Or what `Result.to_jsonl`
        wrote.  Each may be compressed by gzip.
    db : GraphDatabase, optional
        What was mined.  Without a file of TIDs the patterns are looked for in
        it; with one, ten of them are, to see that the TIDs are those of ``db``.
    n_jobs : int, optional
        Threads for that: None is 1, -1 all cores that the process may use.

    Returns
    -------
    Result
        Where there are neither files nor ``db``, asking for TIDs, parents or
        the database raises `KestroError`, and whether patterns are closed and
        maximal is unknown.  So it is in the last level of a bounded run, and
        in pattern files of a selection; lines of JSON tell it.

    Raises
    ------
    KestroError
        For a file that is not whole or of another kind, and when the files or
        ``db`` do not belong together.
    OSError
        When a file cannot be read.
    """
    jobs = job_count(n_jobs)
    text, name = read_bytes(source)
    place = name or None
    if text.startswith(b"{"):
        patterns = _jsonl.read(text, place)
    else:
        is_path = isinstance(source, (str, os.PathLike))
        beside = [_beside(Path(name), x) if is_path else None for x in (".tid", ".pc")]
        patterns = _program_files.read(text, place, *beside)
    if db is not None:
        patterns = _with_db(patterns, db, jobs, place)
    summary = patterns.summary
    maximal = summary.holds == "maximal" and "maximal" not in summary.filters
    filters = ("maximal", *summary.filters) if maximal else summary.filters
    return Result(patterns, db, filters=filters)


def _beside(path: Path, suffix: str) -> _program_files.Beside | None:
    """Return the file beside a pattern file if it is there.

    Beside ``p.fp.gz`` it may be compressed, too.
    """
    plain = Path(plain_name(str(path)))
    files = [plain.with_suffix(suffix)]
    if plain != path:
        files.insert(0, plain.with_suffix(f"{suffix}{path.suffix}"))
    for file in files:
        try:
            return _program_files.Beside(str(file), read_bytes(file)[0].splitlines())
        except FileNotFoundError:
            continue
    return None


def _with_db(
    patterns: Patterns, db: GraphDatabase, jobs: int, name: str | None
) -> Patterns:
    """Return the patterns with what the database tells beside the files."""
    graphs = patterns.summary.graphs
    if len(db) != graphs:
        raise KestroError(f"{graphs} graphs were mined, db has {len(db)}", name)
    try:
        check_atom_labels(patterns.summary.atom_labels, db.atom_labels)
    except KestroError as e:
        raise KestroError(e.text, name) from None
    wrong = _other_counts(patterns.summary.described, describe(db))
    if wrong:
        raise KestroError(f"the graphs of db are others: {wrong}", name)
    if db.atom_labels is not None:
        patterns = patterns.with_summary(
            replace(patterns.summary, atom_labels=db.atom_labels)
        )
    if not patterns.has_tids:
        return _with_tids(patterns, db, jobs, name)
    _check_tids(patterns, db, jobs, name)
    return patterns


def _other_counts(mined: Described | None, db: Described) -> str:
    """Return the count of the graphs that is another one, if any is.

    There may be labels in a file that no graph of it has.
    """
    if mined is None:
        return ""
    for field, told, own in zip(Described._fields, mined, db, strict=True):
        is_label = field.endswith("_labels") and told.isdecimal()
        if int(told) < int(own) if is_label else told != own:
            what = field.replace("_", " ")
            return f"{what} are {own}, in what was mined {told}"
    return ""


def _check_tids(
    patterns: Patterns, db: GraphDatabase, jobs: int, name: str | None
) -> None:
    """Raise where a pattern, of some, is not in the graphs of its TIDs.

    Whether it is in others is not asked: in the command line's form some very
    symmetric patterns are counted in parts.
    """
    if not len(patterns):
        return
    spread = np.linspace(0, len(patterns) - 1, _LOOKED_FOR)
    chosen = np.unique(spread.astype(np.int64))
    found = _matching.Lattice(patterns, chosen).match(db._native, jobs).tocsc()
    for column, (i, own) in enumerate(
        zip(chosen, patterns.tid_lists(chosen), strict=True)
    ):
        there = found.indices[found.indptr[column] : found.indptr[column + 1]]
        if not np.isin(own, there).all():
            [pattern] = patterns.names(np.array([i]))
            raise KestroError(
                f"the graphs of db are others: {pattern} is not in all of its TIDs",
                name,
            )


def _with_tids(
    patterns: Patterns, db: GraphDatabase, jobs: int, name: str | None
) -> Patterns:
    """Return the patterns with the TIDs that matching gives."""
    lattice = _matching.Lattice(patterns, np.arange(len(patterns)))
    found = lattice.match(db._native, jobs).tocsc()
    if not np.array_equal(np.diff(found.indptr), patterns.support):
        raise KestroError("the patterns are not as frequent in db", name)
    return patterns.with_arrays(
        tids=found.indices.astype(np.int32), tid_offsets=found.indptr.astype(np.int64)
    )
