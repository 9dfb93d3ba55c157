"""The program's files: writing them, and reading them again.

The pattern file begins and ends with the program's report as comments; TIDs and
parents stand in files beside it, a line per pattern.
"""

from __future__ import annotations

import os
import re
from collections.abc import Callable, Iterable, Iterator
from dataclasses import replace
from pathlib import Path
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro import _checks, _report
from kestro._aside import write_all_aside
from kestro._errors import KestroError
from kestro._patterns import Patterns
from kestro._ragged import offsets_of
from kestro._summary import RunSummary
from kestro._transactions import parse

_TID = rb"[0-9]{1,18}"
_TIDS = re.compile(rb"\s*(?:" + _TID + rb"\s+)*(?:" + _TID + rb")?")
_PATTERN = re.compile(rb"^t # (\d+)-(\d+), (\d+)\r?$", re.MULTILINE)


def write(
    p: Patterns,
    chosen: NDArray[np.int64],
    summary: RunSummary,
    folder: Path,
    name: str,
    source: str | None,
    *,
    tids: bool,
    parents: bool,
) -> None:
    """Write the files of chosen patterns; see ``Result.write``.

    Positions ascend, each once; the summary tells what they are.
    """
    input_name = name if source is None else source
    _check_names(name, input_name)
    files = {".fp": "Frequent Pattern File"}
    files |= {".pc": "PC-List File"} if parents else {}
    files |= {".tid": "TID-List File"} if tids else {}
    report = _report.Report(summary, p.sizes(chosen), input_name)
    outputs = [(what, name + suffix) for suffix, what in files.items()]
    names = p.names(chosen)
    lines: dict[Path, Iterable[str]] = {}
    if tids:
        lines[folder / f"{name}.tid"] = (
            " ".join([own, *map(str, of)]) + "\n"
            for own, of in zip(names, p.tid_lists(chosen), strict=True)
        )
    if parents:
        lines[folder / f"{name}.pc"] = (
            " ".join([own, *of]) + "\n"
            for own, of in zip(names, p.parent_names(chosen), strict=True)
        )
    # The last to appear: who finds it finds the others.
    lines[folder / f"{name}.fp"] = _whole(report, outputs, _pattern_lines(p, chosen))
    # Files of an earlier run would be taken for this one's.
    others = [name + suffix for suffix in (".tid", ".pc") if suffix not in files]
    write_all_aside(lines, [folder / other for other in others])


def _check_names(name: str, input_name: str) -> None:
    if "\n" in input_name or "\n" in name:
        raise KestroError("the name of a file holds a newline")
    if name in ("", ".", "..") or "/" in name or "\0" in name or os.sep in name:
        raise KestroError(
            f"name must be that of a file, without a folder, not {name!r}"
        )


def _whole(
    report: _report.Report, outputs: list[tuple[str, str]], patterns: Iterable[str]
) -> Iterator[str]:
    yield from (f"# {line}\n" for line in report.head(outputs))
    yield from patterns
    yield from (f"# {line}\n" for line in report.foot())


def _pattern_lines(p: Patterns, chosen: NDArray[np.int64]) -> Iterator[str]:
    """Return the patterns as the pattern file has them."""
    supports = p.support[chosen].tolist()
    for name, support, (vertices, ends, labels) in zip(
        p.names(chosen), supports, p.graphs(chosen), strict=True
    ):
        lines = [f"t # {name}, {support}\n"]
        lines += [f"v {i} {label}\n" for i, label in enumerate(vertices)]
        lines += [
            f"u {a} {b} {label}\n" for (a, b), label in zip(ends, labels, strict=True)
        ]
        yield "".join(lines)


class Beside(NamedTuple):
    """A file that holds a line per pattern."""

    name: str
    lines: list[bytes]


def read(
    text: bytes, name: str | None, tids: Beside | None, parents: Beside | None
) -> Patterns:
    """Read a pattern file, and those beside it; the name is for errors."""
    summary = _report.read(text, name)
    found = list(_PATTERN.finditer(text))
    numbers = [[int(number) for number in head.groups()] for head in found]
    if any(number > 2**31 - 1 for head in numbers for number in head):
        raise KestroError("an id or a support is too large", name)
    heads = _checks.Heads(*np.array(numbers, np.int64).reshape(-1, 3).T)
    native = parse(text, name or "")
    own = native.to_arrays()
    if len(own["vertex_counts"]) != len(found):
        raise KestroError("a pattern has no head like 't # 3-7, 12'", name)
    summary = _with_holds(summary, len(found), name)
    packed: dict[str, NDArray[Any]] = {
        "vertex_offsets": offsets_of(own["vertex_counts"]),
        "vertex_labels": own["vertex_labels"],
        "edges": own["edges"].astype(np.int32),
        "edge_labels": own["edge_labels"],
    }
    try:
        packed |= _checks.levels(heads, own["edge_counts"], summary)
    except _checks.WrongPatternError as e:
        line = text.count(b"\n", 0, found[e.i].start()) + 1
        raise KestroError(e.text, name, line) from None
    ids = [head[0].split()[2].rstrip(b",") for head in found]
    if tids:
        packed |= _read_beside(tids, ids, heads, summary, _tid_arrays)
    if parents:
        packed |= _read_beside(parents, ids, heads, summary, _parent_arrays)
    return Patterns(packed, summary, *native.labels())


def _with_holds(summary: RunSummary, patterns: int, name: str | None) -> RunSummary:
    """Return the summary; where patterns of the table are missing it says so."""
    counted = sum(summary.frequent[max(1, summary.min_size) :])
    if patterns > counted:
        raise KestroError(
            f"there are {patterns} patterns, {counted} in the table", name
        )
    return summary if patterns == counted else replace(summary, holds="some")


def _read_beside(
    beside: Beside,
    ids: list[bytes],
    heads: _checks.Heads,
    summary: RunSummary,
    arrays: Callable[[_checks.Heads, list[bytes], RunSummary], dict[str, NDArray[Any]]],
) -> dict[str, NDArray[Any]]:
    """Return the arrays that are made of the lines without their ids."""
    parts = [line.partition(b" ") for line in beside.lines]
    if [part[0] for part in parts] != ids:
        raise KestroError("its patterns are not those of the pattern file", beside.name)
    try:
        return arrays(heads, [part[2] for part in parts], summary)
    except _checks.WrongPatternError as e:
        raise KestroError(e.text, beside.name, e.i + 1) from None


def _tid_arrays(
    heads: _checks.Heads, lines: list[bytes], summary: RunSummary
) -> dict[str, NDArray[Any]]:
    lists = []
    for i, line in enumerate(lines):
        if not _TIDS.fullmatch(line):
            words = line.split()
            wrong = next(word for word in words if not re.fullmatch(_TID, word))
            text = wrong.decode("utf-8", "backslashreplace")
            raise _checks.WrongPatternError(i, f"no TID: {text!r}")
        lists.append(np.array(list(map(int, line.split())), np.int64))
    return _checks.tid_arrays(heads, lists, summary)


def _parent_arrays(
    heads: _checks.Heads, lines: list[bytes], summary: RunSummary
) -> dict[str, NDArray[Any]]:
    names = [line.decode("utf-8", "backslashreplace").split() for line in lines]
    return _checks.parent_arrays(heads, names, summary)
