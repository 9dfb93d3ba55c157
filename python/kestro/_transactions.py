"""Reading the transaction format of the command line."""

from __future__ import annotations

import io
import os
import re
import stat
from collections.abc import Iterable
from itertools import pairwise
from typing import IO

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._arguments import OnError, check_choice
from kestro._database import GraphDatabase, Skipped, warn_if_all_skipped
from kestro._errors import KestroError, printable
from kestro._files import BYTE_ORDER_MARK, GZIP, read_bytes
from kestro._transaction_faults import faults

# Where a transaction begins, and the line that ends some data sets: a
# transaction without a vertex or an edge, numbered -1, behind the last one.  A
# NUL byte in a vertex or an edge ends the line for the library.
_HEAD = re.compile(rb"^[ \t\v\f\r]*[tT]", re.MULTILINE)
_END_MARK = re.compile(rb"(?:^|\n)[ \t]*t[ \t]*#[ \t]*-1\s*\Z")
_CUT_LABEL = re.compile(rb"^[ \t\v\f\r]*[vudeVUDE][^\n\0]*\0", re.MULTILINE)
_TAIL = 256  # bytes in which it is looked for
_BLOCK = 1 << 20  # bytes of a file that are looked at together


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
        ``source`` counts the transactions of the file from 0, whichever numbers
        stand behind their t.  What is no graph by the format's rules is listed
        in ``skipped`` whatever ``on_error`` says: vertices and edges in front
        of the first transaction, as record -1, and a line ``t # -1`` at the
        very end, with which some programs end their files.  Elsewhere such a
        line begins a graph like any line with a t, and without vertices that
        is an empty graph, which counts.  A byte order mark and blank lines at
        the end are ignored.

    Raises
    ------
    KestroError
        With the path and the line, in the first transaction that cannot be
        read: for a line that is none, an empty one among them, and for loops,
        double edges and ends without a vertex.
        For a vertex or an edge with a NUL byte, which the program takes
        for the end of the label.
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
            return GraphDatabase(_core.Database.read(os.fsencode(source)))
        except KestroError:
            pass  # why is looked for in the text
    db = parse_transactions(*read_bytes(source), on_error)
    return warn_if_all_skipped(db, stacklevel=3)


def parse_transactions(
    data: bytes, name: str, on_error: OnError = "raise"
) -> GraphDatabase:
    """Return the graphs of a file's bytes; the name is for errors."""
    text, has_end_mark = _without_end(data.removeprefix(BYTE_ORDER_MARK))
    try:
        native = parse(text, name)
        records = np.arange(len(native), dtype=np.int64)
        skipped = _skipped_in_front(text)
    except KestroError as e:
        if on_error == "raise":
            raise _first(e, text) from None
        native, records, skipped = _parse_records(text)
    if has_end_mark:
        taken = [-1, *records[-1:].tolist(), *(s.record for s in skipped)]
        skipped.append(Skipped(max(taken) + 1, "the end mark 't # -1' is no graph"))
    return GraphDatabase(native, records, tuple(skipped))


def _is_plain(path: str | os.PathLike[str]) -> bool:
    """Whether the library can read the file itself, where it lies."""
    if not stat.S_ISREG(os.stat(path).st_mode):
        return False  # a pipe can be opened once, and a folder not at all
    with open(path, "rb") as f:
        if f.read(_TAIL).startswith((GZIP, BYTE_ORDER_MARK)):
            return False
        f.seek(0)
        if _line_in_front(f):
            return False
        f.seek(0)
        while block := f.read(_BLOCK):
            if b"\0" in block:
                return False
        f.seek(max(0, f.tell() - _TAIL))
        tail = f.read()
        return _without_end(tail) == (tail, False)


def _without_end(text: bytes) -> tuple[bytes, bool]:
    """Return the text without blank lines and a mark at its end.

    The second is whether there was such a mark.
    """
    end = len(text)
    while end > 0 and text[end - 1 : end].isspace():
        end -= 1
    if end == 0:
        return b"", False
    newline = text.find(b"\n", end)
    if newline >= 0:
        text = text[: newline + 1]
    mark = _END_MARK.search(text, max(0, len(text) - _TAIL))
    if not mark:
        return text, False
    return text[: mark.start()] + b"\n" if mark.start() else b"", True


def _line_in_front(lines: Iterable[bytes]) -> int:
    """Return the number of the first vertex or edge in front of all transactions.

    It is 0 where there is none.
    """
    for number, line in enumerate(lines, 1):
        kind = line.lstrip()[:1].lower()
        if kind == b"t":
            return 0
        if kind and kind in b"vude":
            return number
    return 0


def _skipped_in_front(text: bytes) -> list[Skipped]:
    line = _line_in_front(io.BytesIO(text))
    reason = f"vertices or edges in front of all transactions, from line {line} on"
    return [Skipped(-1, reason)] if line else []


def parse(text: bytes, name: str) -> _core.Database:
    """Parse transactions; raise for labels that a NUL byte would end."""
    cut = _CUT_LABEL.search(text) if b"\0" in text else None
    if cut:
        line = text.count(b"\n", 0, cut.start()) + 1
        raise _explained(KestroError("", name or None, line), text)
    try:
        return _core.Database.parse(text, os.fsencode(name))
    except KestroError as e:
        raise _explained(e, text) from None


def _explained(e: KestroError, text: bytes) -> KestroError:
    """Return the error in words, where they are known: the library's are for it."""
    lines = text.split(b"\n")
    if not lines[-1]:
        lines.pop()
    at = 0 if e.line is None else e.line - 1
    heads = [i for i, line in enumerate(lines) if _HEAD.match(line)]
    first = max((i for i in heads if i <= at), default=0)
    end = min((i for i in heads if i > at), default=len(lines))
    found = faults(lines[first:end])
    reason = found.get(at - first)
    if reason is None:
        return e
    return KestroError(reason, e.path, e.line)


def _first(e: KestroError, text: bytes) -> KestroError:
    """Return the error of the first transaction that cannot be read.

    The library looks at the lines of all before it looks at edges.
    """
    end = len(text) if e.line is None else _end_of_line(text, e.line)
    start = 0
    for cut in [m.start() for m in _HEAD.finditer(text, 0, end)]:
        try:
            parse(text[start:cut], "")
        except KestroError as first:
            if first.line is None:
                break
            line = text.count(b"\n", 0, start) + first.line
            return KestroError(first.text, e.path, line)
        start = cut
    return e


def _end_of_line(text: bytes, number: int) -> int:
    """Return where a line ends, from 1 on."""
    end = -1
    for _ in range(number):
        end = text.find(b"\n", end + 1)
        if end < 0:
            return len(text)
    return end


def _parse_records(
    text: bytes,
) -> tuple[_core.Database, NDArray[np.int64], list[Skipped]]:
    """Parse record by record, then those together that can be read."""
    cuts = [0, *(m.start() for m in _HEAD.finditer(text)), len(text)]
    kept = io.BytesIO()
    records = []
    skipped = []
    for record, (start, end) in enumerate(pairwise(cuts), -1):
        piece = text[start:end]
        try:
            parse(piece, "")
        except KestroError as e:
            reason = e.text if e.line is None else f"{e.text} (line {e.line} of it)"
            skipped.append(Skipped(record, printable(reason)))
        else:
            # In front of all transactions there are labels, which count.
            kept.write(piece if piece.endswith(b"\n") or not piece else piece + b"\n")
            if record >= 0:
                records.append(record)
            else:
                skipped += _skipped_in_front(piece)
    native = _core.Database.parse(kept.getvalue(), b"")
    return native, np.array(records, dtype=np.int64), skipped
