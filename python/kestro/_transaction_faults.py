"""Why a transaction is no graph, in words.

The library tells the line and the check that failed, as the program does; what
is wrong with the line is found out here, by reading it as the library does.
"""

from __future__ import annotations

import re
from collections.abc import Sequence

# White space is that of C.  Numbers are followed by anything, also by nothing.
_BLANK = rb"[ \t\v\f\r]*"
_NUMBER = _BLANK + rb"([+-]?[0-9]++)"
_WORD = _BLANK + rb"([^ \t\v\f\r]*)"
_VERTEX = re.compile(_BLANK + rb"[vV]" + _NUMBER + _WORD)
_EDGE = re.compile(_BLANK + rb"[udeUDE]" + _NUMBER + _NUMBER + _WORD)
# A byte that is no UTF-8, as repr writes what stands for it.
_BYTE = re.compile(r"(?<!\\)\\udc([89a-f][0-9a-f])")
_QUOTED = 60  # bytes of a line that are shown


def faults(lines: Sequence[bytes]) -> dict[int, str]:
    """Return what is wrong with the lines of one transaction, by position."""
    found: dict[int, str] = {}
    vertices: set[int] = set()
    edges: list[tuple[int, int, int]] = []
    for i, line in enumerate(lines):
        kind = line.lstrip()[:1].lower()
        if b"\0" in line and kind and kind in b"vude":
            found[i] = f"a NUL byte, which ends labels: {_quoted(line)}"
        elif kind == b"v":
            if match := _VERTEX.match(line):
                vertices.add(_id(match[1]))
            if not match or not match[2]:
                found[i] = _incomplete("vertex", "number", bool(match), line)
        elif kind in (b"u", b"d", b"e"):
            if match := _EDGE.match(line):
                edges.append((i, _id(match[1]), _id(match[2])))
            if not match or not match[3]:
                found[i] = _incomplete("edge", "two numbers", bool(match), line)
        elif not kind:
            found[i] = "an empty line"
        elif kind not in b"t#%":
            found[i] = f"no line of a graph: {_quoted(line)}"
    return _edge_faults(edges, vertices) | found


def _incomplete(what: str, numbers: str, has_numbers: bool, line: bytes) -> str:
    missing = "label" if has_numbers else numbers
    return f"the {what} has no {missing}: {_quoted(line)}"


def _edge_faults(
    edges: list[tuple[int, int, int]], vertices: set[int]
) -> dict[int, str]:
    found = {}
    before: set[tuple[int, int]] = set()
    for i, a, b in edges:
        pair = min(a, b), max(a, b)
        strangers = [end for end in (a, b) if end not in vertices]
        if a == b:
            found[i] = f"a loop: the edge joins vertex {a} with itself"
        elif strangers:
            found[i] = f"an edge to vertex {strangers[0]}, which is not there"
        elif pair in before:
            found[i] = f"vertices {a} and {b} have an edge already"
        before.add(pair)
    return found


def _id(digits: bytes) -> int:
    """Return the number that C makes of digits: a long, cut to an int."""
    value = min(max(int(digits[:_QUOTED]), -(2**63)), 2**63 - 1)
    return (value + 2**31) % 2**32 - 2**31


def _quoted(line: bytes) -> str:
    text = line.strip()
    short = repr(text[:_QUOTED].decode("utf-8", "surrogateescape"))
    return _BYTE.sub(r"\\x\1", short) + ("…" if len(text) > _QUOTED else "")
