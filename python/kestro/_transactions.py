"""Reading the transaction format of the command line."""

from __future__ import annotations

import io
import os
import re
import stat
from itertools import pairwise
from typing import IO

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._arguments import OnError, check_choice
from kestro._database import GraphDatabase, Skipped
from kestro._errors import KestroError
from kestro._files import GZIP, read_bytes

# Where a transaction begins, and the line that ends some data sets: a
# transaction without a vertex or an edge, numbered -1, behind the last one.
_HEAD = re.compile(rb"^[ \t\v\f\r]*[tT]", re.MULTILINE)
_TAIL = 256  # bytes in which it is looked for
_END_MARK = re.compile(rb"(?:^|\n)[ \t]*t[ \t]*#[ \t]*-1\s*\Z")


def read_transactions(
    source: str | os.PathLike[str] | IO[bytes] | IO[str],
    *,
    on_error: OnError = "raise",
) -> GraphDatabase:
    r"""Read graphs in the transaction format of the command line.

    Parameters
    ----------
    source : path or file object
        A file, a pipe, or what has a method ``read``; what is compressed by
        gzip is unpacked.  A file object is read from where it stands.
    on_error : {"raise", "skip"}
        With "skip", a transaction that cannot be read is left out and listed
        in ``skipped``.

    Returns
    -------
    GraphDatabase
        ``source`` numbers the transactions of the file.  A line ``t # -1`` at
        the very end, with which some programs end their files, is no graph;
        it is listed in ``skipped``.

    Raises
    ------
    KestroError
        With the path and the line, for a line that cannot be read, an empty
        one among them, and for loops, double edges and ends without a vertex.
    OSError
        When the file cannot be read.

    Examples
    --------
    >>> import io, kestro
    >>> kestro.read_transactions(io.StringIO("t # 0\nv 0 C\nv 1 O\nu 0 1 d\n"))
    <GraphDatabase: 1 graph>
    """
    check_choice("on_error", on_error, ("raise", "skip"))
    if isinstance(source, (str, os.PathLike)) and _is_plain(source):
        try:
            return GraphDatabase(_read(source))
        except KestroError:
            if on_error == "raise":
                raise
    text, name = read_bytes(source)
    end_mark = _END_MARK.search(text, max(0, len(text) - _TAIL))
    if end_mark:
        text = text[: end_mark.start()] + b"\n" if end_mark.start() else b""
    try:
        native = _parse(text, name)
        source_records = np.arange(len(native), dtype=np.int64)
        skipped: list[Skipped] = []
    except KestroError:
        if on_error == "raise":
            raise
        native, source_records, skipped = _parse_records(text)
    if end_mark:
        after = max([len(native) - 1, *(s.record for s in skipped)]) + 1
        after = max(after, int(source_records[-1]) + 1 if len(source_records) else 0)
        skipped.append(Skipped(after, "the end mark 't # -1' is no graph"))
    return GraphDatabase(native, source_records, tuple(skipped))


def _is_plain(path: str | os.PathLike[str]) -> bool:
    """Whether the library can read the file itself, where it lies."""
    if not stat.S_ISREG(os.stat(path).st_mode):
        return False  # a pipe can be opened once, and a folder not at all
    with open(path, "rb") as f:
        head = f.read(len(GZIP))
        f.seek(max(0, f.seek(0, os.SEEK_END) - _TAIL))
        return head != GZIP and not _END_MARK.search(f.read())


def _read(path: str | os.PathLike[str]) -> _core.Database:
    try:
        return _core.Database.read(os.fsencode(path))
    except KestroError as e:
        raise _explained(e) from None


def _parse(text: bytes, name: str) -> _core.Database:
    try:
        return _core.Database.parse(text, os.fsencode(name))
    except KestroError as e:
        raise _explained(e) from None


def _explained(e: KestroError) -> KestroError:
    """Return the error, in words where the line that it quotes is empty."""
    if e.text.rstrip().endswith("invalid input line:"):
        return KestroError("an empty line", e.path, e.line)
    return e


def _parse_records(
    text: bytes,
) -> tuple[_core.Database, NDArray[np.int64], list[Skipped]]:
    """Parse record by record, then those together that can be read."""
    cuts = [0, *(m.start() for m in _HEAD.finditer(text)), len(text)]
    pieces = [(i - 1, text[a:b]) for i, (a, b) in enumerate(pairwise(cuts))]
    kept = io.BytesIO()
    records = []
    skipped = []
    for record, piece in pieces:
        try:
            _parse(piece, "")
        except KestroError as e:
            reason = e.text if e.line is None else f"{e.text} (line {e.line} of it)"
            skipped.append(Skipped(record, reason))
        else:
            kept.write(piece if piece.endswith(b"\n") or not piece else piece + b"\n")
            if record >= 0:
                records.append(record)
    return (
        _parse(kept.getvalue(), ""),
        np.array(records, dtype=np.int64),
        skipped,
    )
