"""All problems of a transaction file.

Errors are what the package's reader refuses or skips, no more and no less: each
transaction is given to it, and only where it refuses is looked for all that is
wrong.  Warnings are what is read, though hardly as it was meant.
"""

from __future__ import annotations

import re
from collections import Counter, defaultdict
from collections.abc import Iterator
from itertools import pairwise
from typing import NamedTuple

from kestro._errors import KestroError, printable
from kestro._files import BYTE_ORDER_MARK
from kestro._transaction_faults import _EDGE, _VERTEX, _id, faults
from kestro._transactions import (
    _HEAD,
    _line_in_front,
    _without_end,
    parse,
)

# Possessive, as blanks that could be shared out would be so in all ways.
_HEAD_NUMBER = re.compile(
    rb"[ \t\v\f\r]*+[tT][ \t\v\f\r]*+#?[ \t\v\f\r]*+([+-]?[0-9]++)"
)
_TRAILING = re.compile(rb"[ \t\v\f\r]*(\S.*)")
_SHOWN = 60  # signs of a label that are shown


class Problem(NamedTuple):
    """What is wrong in a place.

    Attributes
    ----------
    line, column : int
        From 1 on; a column counts bytes.
    kind : str
        "error" for what is refused or skipped, else "warning".
    text, hint : str
        What it is, and what to do about it.
    record : int
        The transaction it is in, from 0 on; -1 in front of the first.
    """

    line: int
    column: int
    kind: str
    text: str
    hint: str
    record: int


def problems(data: bytes) -> list[Problem]:
    r"""Return all problems of a file by line and column.

    Examples
    --------
    >>> from kestro.tools._transaction_check import problems
    >>> [found] = problems(b"t # 0\nv 0 C\nv 1 O\nu 0 2 s\nt # 1\nv 0 N\n")
    >>> found.line, found.column, found.text
    (4, 5, 'an edge to vertex 2, which is not there')
    """
    body = data.removeprefix(BYTE_ORDER_MARK)
    text, has_end_mark = _without_end(body)
    found = []
    cuts = [0, *(m.start() for m in _HEAD.finditer(text)), len(text)]
    first = 1
    heads: dict[int, int] = {}
    graphs: dict[bytes, tuple[int, int]] = {}
    records = len(cuts) - 2
    for record, (start, end) in enumerate(pairwise(cuts), -1):
        piece = text[start:end]
        lines = piece.split(b"\n")
        if not lines[-1]:
            lines.pop()
        errors = list(_errors(piece, lines, first, record))
        found += errors
        found += _warnings(lines, first, record)
        if record >= 0 and not errors:
            found += _repeated(lines, first, record, heads, graphs)
        first += len(lines)
    if has_end_mark:
        number = text.count(b"\n") + 1
        found.append(
            Problem(
                number,
                1,
                "error",
                "the end mark 't # -1' is no graph",
                "take the line out: the program counts it as an empty graph",
                records,
            )
        )
    if records == 1 and not has_end_mark:
        found.append(
            Problem(
                1,
                1,
                "warning",
                "one single graph",
                "supports count graphs, so all patterns have support 1; cut it into "
                "several",
                0,
            )
        )
    found += _merged_labels(text)
    return sorted(found)


def _errors(
    piece: bytes, lines: list[bytes], first: int, record: int
) -> Iterator[Problem]:
    try:
        parse(piece, "")
    except KestroError as e:
        wrong = faults(lines)
        if not wrong:
            wrong = {(e.line or 1) - 1: printable(e.text)}
        vertices = {_id(m[1]) for x in lines if (m := _VERTEX.match(x))}
        for i, text in wrong.items():
            line = lines[i] if i < len(lines) else b""
            column = _column(line, vertices)
            yield Problem(first + i, column, "error", text, _hint(text), record)
        return
    in_front = _line_in_front(lines) if record < 0 else 0
    if in_front:
        yield Problem(
            in_front,
            1,
            "error",
            "vertices or edges in front of all transactions",
            "begin the graph with a line 't # 0'",
            record,
        )


def _column(line: bytes, vertices: set[int]) -> int:
    """Return the column of what is wrong with a line, from 1 on."""
    begin = len(line) - len(line.lstrip())
    nul = line.find(b"\0")
    if nul >= 0:
        return nul + 1
    edge = _EDGE.match(line)
    vertex = _VERTEX.match(line)
    if edge and edge[3]:
        a, b = _id(edge[1]), _id(edge[2])
        if a == b:
            return edge.start(2) + 1
        if {a, b} <= vertices:
            return begin + 1
        return edge.start(2 if a in vertices else 1) + 1
    if edge or (vertex and not vertex[2]):
        return len(line.rstrip()) + 1
    return begin + 1


_HINTS = (
    ("an empty line", "take it out; blank lines may stand at the end alone"),
    ("a NUL byte", "the file may be UTF-16 or damaged; save it as UTF-8"),
    ("a loop", "edges join two different vertices; tell loops by a vertex label"),
    ("an edge to vertex", "list the vertices of a graph before its edges"),
    ("vertices ", "there is one edge between two vertices; join both labels into one"),
    ("the vertex has no label", "write 'v NUMBER LABEL'; 0 does for a label"),
    ("the vertex has no number", "write 'v NUMBER LABEL'"),
    ("the edge has no label", "write 'u NUMBER NUMBER LABEL'; 0 does for a label"),
    ("the edge has no two numbers", "write 'u NUMBER NUMBER LABEL'"),
    ("no line of a graph", "lines begin with t, v, u, d, e, # or %"),
)


def _hint(text: str) -> str:
    return next((hint for start, hint in _HINTS if text.startswith(start)), "")


def _warnings(lines: list[bytes], first: int, record: int) -> Iterator[Problem]:
    numbers: set[int] = set()
    for i, line in enumerate(lines):

        def problem(column: int, text: str, hint: str, at: int = i) -> Problem:
            return Problem(first + at, column, "warning", text, hint, record)

        lone = line.rstrip(b"\r").find(b"\r")
        if lone >= 0:
            yield problem(
                lone + 1,
                "a carriage return that ends no line",
                "lines end with a line feed; what stands behind it is not a line "
                "of its own",
            )
        vertex, edge = _VERTEX.match(line), _EDGE.match(line)
        match = vertex or edge
        for group in (1, 2)[: 1 if vertex else 2 if edge else 0]:
            assert match
            written = match[group][:_SHOWN]
            if int(written) != _id(written):
                yield problem(
                    match.start(group) + 1,
                    f"vertex {written.decode()} is read as {_id(written)}",
                    "numbers are cut to 32 bits; number the vertices of each graph "
                    "from 0",
                )
        if not vertex:
            continue
        folded = _id(vertex[1])
        if folded in numbers:
            yield problem(
                vertex.start(1) + 1,
                f"vertex {folded} is there already",
                "both are vertices; edges go to one of them alone",
            )
        numbers.add(folded)


def _repeated(
    lines: list[bytes],
    first: int,
    record: int,
    heads: dict[int, int],
    graphs: dict[bytes, tuple[int, int]],
) -> Iterator[Problem]:
    """Yield heads and graphs that were there before."""
    head = _HEAD_NUMBER.match(lines[0])
    number = int(head[1][:_SHOWN]) if head else None
    body = [
        b" ".join(line.split()) for line in lines[1:] if line.lstrip()[:1] in _KINDS
    ]
    if number == -1 and not body:
        yield Problem(
            first,
            1,
            "warning",
            "'t # -1' inside the file begins an empty graph, which counts",
            "take the line out, as of files that were put together",
            record,
        )
    elif number is not None and number in heads:
        yield Problem(
            first,
            1,
            "warning",
            f"graph {number} was there in line {heads[number]}",
            "TIDs count graphs in order from 0; the number written is not looked at",
            record,
        )
    elif number is not None:
        heads[number] = first
    key = b"\n".join(body)
    if body and key in graphs:
        other, line = graphs[key]
        yield Problem(
            first,
            1,
            "warning",
            f"the same graph as transaction {other} in line {line}",
            "a graph that stands twice counts twice in each support",
            record,
        )
    graphs.setdefault(key, (record, first))


_KINDS = frozenset(bytes([x]) for x in b"vudeVUDE")


def _merged_labels(text: bytes) -> Iterator[Problem]:
    """Yield labels that are one because what stands behind a blank is cut off."""
    for what, pattern, group in (("vertex", _VERTEX, 2), ("edge", _EDGE, 3)):
        rests: dict[bytes, Counter[bytes]] = defaultdict(Counter)
        places: dict[bytes, tuple[int, int]] = {}
        for number, line in enumerate(text.split(b"\n"), 1):
            match = pattern.match(line)
            if not match or not match[group]:
                continue
            label = match[group]
            behind = _TRAILING.match(line, match.end())
            rest = behind[1].rstrip() if behind else b""
            rests[label][rest] += 1
            if behind and label not in places:
                places[label] = number, behind.start(1) + 1
        for label, own in rests.items():
            if len(own) < 2:
                continue
            several = [_text(label + b" " * bool(x) + x) for x in sorted(own)[:3]]
            more = " …" if len(own) > 3 else ""
            yield Problem(
                *places[label],
                "warning",
                f"{len(own)} {what} labels are read as one, {_text(label)!r}: "
                f"{', '.join(map(repr, several))}{more}",
                "a label ends at white space; join its words with _",
                -1,
            )


def _text(label: bytes) -> str:
    return label[:_SHOWN].decode("utf-8", "surrogateescape")
