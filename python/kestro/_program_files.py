"""The program's files: writing them, and reading them again.

The pattern file begins and ends with the program's report as comments.  Of a run
that a limit ended, which the program does not have, the report says so in one
more line.  Of a selection the report tells of the run, so that a reader sees
that patterns are missing; of the maximal patterns it tells what the program
would tell.
"""

from __future__ import annotations

import os
import re
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._errors import KestroError
from kestro._patterns import NO, STOPPED, Patterns
from kestro._ragged import offsets_of

if TYPE_CHECKING:
    from kestro._result import Result

_STARS = "*" * 55
_LARGEST = 2**31 - 1
_PATTERN = re.compile(rb"^t # (\d+)-(\d+), (\d+)\r?$", re.MULTILINE)
_ROW = re.compile(rb"^#   (\d+) +(?:(\d+) +)?(\d+) *\r?$", re.MULTILINE)
_STOPPED_BY = "Stopped By:"
# What the head says of the graphs, by the name it has in a summary.
_COUNTS = {
    "edge_labels": "Number of Distinct Edge Labels:",
    "vertex_labels": "Number of Distinct Vertex Labels:",
    "average_edges": "Average Number of Edges In a Transaction:",
    "average_vertices": "Average Number of Vertices In a Transaction:",
    "max_edges": "Max Number of Edges In a Transaction:",
    "max_vertices": "Max Number of Vertices In a Transaction:",
}


def write_aside(path: Path, lines: Iterable[str]) -> None:
    """Write a file that appears when it is whole."""
    _write_all_aside({path: lines})


def _write_all_aside(contents: dict[Path, Iterable[str]]) -> None:
    """Write files that appear together, when all are whole."""
    written: dict[Path, Path] = {}
    try:
        for path, lines in contents.items():
            aside = path.with_name(f".{path.name}.{os.getpid()}")
            written[aside] = path
            with open(aside, "w", encoding="utf-8", errors="surrogateescape") as f:
                f.writelines(lines)
        for aside, path in written.items():
            os.replace(aside, path)
    except BaseException:
        for aside in written:
            aside.unlink(missing_ok=True)
        raise


def write(
    result: Result,
    patterns: Patterns,
    folder: Path,
    name: str,
    source: str | None,
    *,
    tids: bool,
    parents: bool,
) -> None:
    """Write the files of a result; see ``Result.write``."""
    p = patterns
    chosen = np.unique(result.positions)
    input_name = name if source is None else source
    if "\n" in input_name or "\n" in name:
        raise KestroError("the name of a file holds a newline")
    files = {".fp": "Frequent Pattern File"}
    files |= {".pc": "PC-List File"} if parents else {}
    files |= {".tid": "TID-List File"} if tids else {}
    report = _Report(result, patterns, input_name)
    outputs = [(what, name + suffix) for suffix, what in files.items()]
    lines: dict[Path, Iterable[str]] = {
        folder / f"{name}.fp": _whole(report, outputs, pattern_lines(p, chosen))
    }
    if tids:
        own_tids = lists(p.tid_offsets, p.tids, chosen)
        lines[folder / f"{name}.tid"] = (
            " ".join([own, *map(str, of)]) + "\n"
            for own, of in zip(p.names(chosen), own_tids, strict=True)
        )
    if parents:
        lines[folder / f"{name}.pc"] = (
            " ".join([own, *of]) + "\n"
            for own, of in zip(p.names(chosen), parent_names(p, chosen), strict=True)
        )
    _write_all_aside(lines)


def _whole(
    report: _Report, outputs: list[tuple[str, str]], patterns: Iterable[str]
) -> Iterator[str]:
    yield from (f"# {line}\n" for line in report.head(outputs))
    yield from patterns
    yield from (f"# {line}\n" for line in report.foot())


def lists(
    offsets: NDArray[np.int64], items: NDArray[np.int32], chosen: NDArray[np.int64]
) -> Iterator[list[int]]:
    for first, end in zip(
        offsets[chosen].tolist(), offsets[chosen + 1].tolist(), strict=True
    ):
        yield items[first:end].tolist()


def parent_names(p: Patterns, chosen: NDArray[np.int64]) -> Iterator[list[str]]:
    """Return the ids of the parents of each of these patterns."""
    below = lists(p.parent_offsets, p.parents, chosen)
    for size, numbers in zip(p.sizes(chosen).tolist(), below, strict=True):
        yield [f"{size - 1}-{number}" for number in numbers]


def graphs(
    p: Patterns, chosen: NDArray[np.int64]
) -> Iterator[tuple[list[str], list[list[int]], list[str]]]:
    """Return labels of vertices, ends of edges, labels of edges of each pattern."""
    edge_offsets = p.edge_offsets
    for vertex, vertex_end, edge, edge_end in zip(
        p.vertex_offsets[chosen].tolist(),
        p.vertex_offsets[chosen + 1].tolist(),
        edge_offsets[chosen].tolist(),
        edge_offsets[chosen + 1].tolist(),
        strict=True,
    ):
        yield (
            [p.vertex_table[x] for x in p.vertex_labels[vertex:vertex_end].tolist()],
            p.edges[edge:edge_end].tolist(),
            [p.edge_table[x] for x in p.edge_labels[edge:edge_end].tolist()],
        )


def pattern_lines(p: Patterns, chosen: NDArray[np.int64]) -> Iterator[str]:
    """Return the patterns as the pattern file has them."""
    supports = p.support[chosen].tolist()
    for name, support, (vertices, ends, labels) in zip(
        p.names(chosen), supports, graphs(p, chosen), strict=True
    ):
        lines = [f"t # {name}, {support}\n"]
        lines += [f"v {i} {label}\n" for i, label in enumerate(vertices)]
        lines += [
            f"u {a} {b} {label}\n" for (a, b), label in zip(ends, labels, strict=True)
        ]
        yield "".join(lines)


def described(result: Result, patterns: Patterns) -> dict[str, str]:
    """Return what the head says of the graphs."""
    known: dict[str, str] | None = patterns.summary.get("described")
    if known is not None:
        return known
    packed = result.db._native.to_arrays()
    n = len(result.db)
    counts = {"edge_labels": len(packed["edge_table"])}
    counts["vertex_labels"] = len(packed["vertex_table"])
    found = {name: str(count) for name, count in counts.items()}
    for name in ("edges", "vertices"):
        each = packed["edge_counts" if name == "edges" else "vertex_counts"]
        found[f"average_{name}"] = f"{int(each.sum()) / n:.0f}" if n else "-nan"
        found[f"max_{name}"] = str(int(each.max(initial=0)))
    return found


def is_maximal_choice(result: Result, patterns: Patterns) -> bool:
    """Whether the result holds what the filter for maximal patterns lets pass."""
    if result._chosen is None:
        return bool(patterns.summary.get("maximal"))
    return np.array_equal(result._chosen, np.flatnonzero(patterns.maximal != NO))


class _Report:
    """The program's report on a run."""

    def __init__(self, result: Result, patterns: Patterns, input_name: str) -> None:
        self._summary = patterns.summary
        self._input_name = input_name
        self._described = described(result, patterns)
        self._maximal = is_maximal_choice(result, patterns)
        self._frequent = [int(count) for count in self._summary["frequent"]]
        self._candidates = [int(count) for count in self._summary["candidates"]]
        if self._maximal:
            counts = np.bincount(result.size, minlength=len(self._frequent))
            self._frequent = counts.tolist()
            self._candidates = [0] * len(self._frequent)

    def head(self, outputs: list[tuple[str, str]]) -> Iterator[str]:
        """Return the lines in front of the patterns."""
        s = self._summary
        names = [name for _, name in outputs]
        most = s["max_size"]
        graphs = s["min_support"]
        yield _STARS
        yield "kestro 1.34 (VESK 1.0)"
        yield ""
        yield "Transaction File Information --------------------------"
        yield _row("Transaction File Name:", self._input_name)
        yield _row("Number of Input Transactions:", s["graphs"])
        for name, text in _COUNTS.items():
            yield _row(text, self._described[name])
        yield ""
        yield "Options -----------------------------------------------"
        yield _row("Min Output Pattern Size:", s["min_size"])
        yield _row(
            "Max Output Pattern Size:", f"{_LARGEST}(INT_MAX)" if most is None else most
        )
        yield _row(
            "Min Support Threshold:",
            f"{s['per_cent']:.1f}% ({graphs} transaction{'s' if graphs != 1 else ''})",
        )
        yield _row("Generate Only Maximal Patterns:", _yes_no(self._maximal))
        yield _row("Generate PC-List:", _yes_no(_has(names, ".pc")))
        yield _row("Generate TID-List:", _yes_no(_has(names, ".tid")))
        yield ""
        yield "Outputs -----------------------------------------------"
        for what, name in outputs:
            yield _row(f"{what}:", name)
        yield ""

    def foot(self) -> Iterator[str]:
        """Return the lines behind them."""
        s = self._summary
        yield from self._table()
        yield ""
        first, end = s["min_size"], (s["max_size"] or _LARGEST) + 1
        found = [size for size, count in enumerate(self._frequent) if count]
        yield _row("Largest Frequent Pattern Size:", max(found, default=0))
        generated = sum(self._candidates[first:end])
        if generated:
            yield _row("Total Number of Candidates Generated:", generated)
        yield _row(
            "Total Number of Frequent Patterns Found:", sum(self._frequent[first:end])
        )
        if s["ending"] in STOPPED:
            yield _row(_STOPPED_BY, s["ending"])
        yield ""
        yield "Timing Information ------------------------------------"
        yield _row("Elapsed User CPU Time:", f"{s['seconds']:.1f}[sec]")
        yield _STARS

    def _table(self) -> Iterator[str]:
        s = self._summary
        last = s["last_size"]
        headed = False
        for size in range(
            max(1, s["min_size"]), min(last, s["max_size"] or _LARGEST) + 1
        ):
            candidates, frequent = self._candidates[size], self._frequent[size]
            if size == last and candidates == 0 and frequent == 0:
                break
            # Of maximal patterns there is no column of candidates.
            middle = "" if self._maximal else f"{candidates if size > 2 else '':<10} "
            if not headed:
                title = "" if self._maximal else f"{'Candidates':<10} "
                yield f"  {'Size':<4} {title}{'Frequent Patterns':<17} "
            headed = True
            yield f"  {size:<4} {middle}{frequent:<17} "


def _row(text: str, value: object) -> str:
    return f"  {text:<45}{value}"


def _yes_no(flag: bool) -> str:
    return "Yes" if flag else "No"


def _has(names: list[str], suffix: str) -> bool:
    return any(name.endswith(suffix) for name in names)


def read(path: Path, text: bytes) -> Patterns:
    """Read a pattern file, and the files beside it."""
    summary = _summary_of(text, path)
    names = np.array(
        [[int(number) for number in found] for found in _PATTERN.findall(text)],
        dtype=np.int64,
    ).reshape(-1, 3)
    packed, tables = _packed_graphs(text, path)
    if len(packed["vertex_offsets"]) != len(names) + 1:
        raise KestroError("a pattern has no head like 't # 3-7, 12'", str(path))
    packed |= levels(names, packed.pop("edge_counts"), path)
    packed["support"] = names[:, 2].astype(np.int32)
    packed |= _tids(path, names)
    packed |= _parents(path, names)
    counted = sum(summary["frequent"][max(1, summary["min_size"]) :])
    if len(names) > counted:
        raise KestroError(
            f"there are {len(names)} patterns, {counted} in the table", str(path)
        )
    summary["selection"] = len(names) < counted
    return Patterns(packed, summary, *tables, "exact")


def _summary_of(text: bytes, path: Path) -> dict[str, Any]:
    """Return what the report tells."""

    def value(name: str, pattern: str = r"(.*?)") -> str:
        wanted = rf"^#   {re.escape(name)} *{pattern}\r?$"
        found = re.search(wanted.encode(), text, re.MULTILINE)
        if not found:
            raise KestroError(
                f"no pattern file of a run that ended: no {name!r}", str(path)
            )
        return found[1].decode("utf-8", "surrogateescape")

    number = r"(-?\d+)"
    seconds = float(value("Elapsed User CPU Time:", r"([0-9.]+)\[sec\]"))
    most = int(value("Max Output Pattern Size:", rf"{number}(?:\(INT_MAX\))?"))
    rows = [[int(x or 0) for x in found] for found in _ROW.findall(text)]
    last = rows[-1][0] if rows else 0
    counts = np.zeros((3, last + 1), np.int64)
    for size, candidates, frequent in rows:
        counts[1:, size] = candidates, frequent
    stopped = re.search(rf"^#   {_STOPPED_BY} *(\w+)".encode(), text, re.MULTILINE)
    bounded = last == most and counts[2, last] > 0
    return {
        "ending": stopped[1].decode()
        if stopped
        else "max_size"
        if bounded
        else "complete",
        "graphs": int(value("Number of Input Transactions:", number)),
        "min_support": int(
            value("Min Support Threshold:", r"[0-9.]+% \((\d+) transactions?\)")
        ),
        "per_cent": float(value("Min Support Threshold:", r"([0-9.]+)% .*")),
        "min_size": int(value("Min Output Pattern Size:", number)),
        "max_size": None if most == _LARGEST else most,
        "last_size": last,
        "order_dependent": None,
        "candidates": counts[1].tolist(),
        "frequent": counts[2].tolist(),
        "seconds": seconds,
        "maximal": value("Generate Only Maximal Patterns:") == "Yes",
        "described": {name: value(row) for name, row in _COUNTS.items()},
    }


def _packed_graphs(
    text: bytes, path: Path
) -> tuple[dict[str, Any], tuple[list[str], list[str]]]:
    native = _core.Database.parse(text, os.fsencode(path))
    own = native.to_arrays()
    packed = {
        "vertex_offsets": offsets_of(own["vertex_counts"]),
        "vertex_labels": own["vertex_labels"],
        "edges": own["edges"].astype(np.int32),
        "edge_labels": own["edge_labels"],
        "edge_counts": own["edge_counts"],
    }
    return packed, native.labels()


def levels(
    names: NDArray[np.int64], edge_counts: NDArray[np.int64], path: Path
) -> dict[str, NDArray[Any]]:
    """Return the arrays by which patterns of these sizes and ids are found."""
    sizes, numbers = names[:, 0], names[:, 1]
    keys = (sizes << 32) + numbers
    if (np.diff(keys) <= 0).any() or not np.array_equal(sizes, edge_counts):
        raise KestroError(
            "the patterns do not come by size and id, or have other sizes than "
            "their ids tell",
            str(path),
        )
    distinct, counts = np.unique(sizes, return_counts=True)
    ends = np.cumsum(counts)
    found: dict[str, NDArray[Any]] = {
        "level_sizes": distinct.astype(np.int32),
        "level_ends": ends.astype(np.int64),
    }
    if not np.array_equal(
        numbers, np.arange(len(names)) - np.repeat(ends - counts, counts)
    ):
        found["numbers"] = numbers.astype(np.int32)
    return found


def _lines(path: Path, names: NDArray[np.int64]) -> list[bytes] | None:
    """Return of each pattern the line without its id, None without the file."""
    try:
        lines = path.read_bytes().splitlines()
    except FileNotFoundError:
        return None
    own = [b"%d-%d" % (size, number) for size, number in names[:, :2].tolist()]
    parts = [line.partition(b" ") for line in lines]
    if [part[0] for part in parts] != own:
        raise KestroError("its patterns are not those of the pattern file", str(path))
    return [part[2] for part in parts]


def _tids(path: Path, names: NDArray[np.int64]) -> dict[str, NDArray[Any]]:
    file = path.with_suffix(".tid")
    lines = _lines(file, names)
    if lines is None:
        return {}
    lists = [np.array(line.split(), dtype=np.int32) for line in lines]
    counts = np.array([len(tids) for tids in lists], np.int64)
    if not np.array_equal(counts, names[:, 2]):
        raise KestroError("its lists are not as long as the supports", str(file))
    tids = np.concatenate([np.zeros(0, np.int32), *lists])
    return {"tids": tids, "tid_offsets": offsets_of(counts)}


def _parents(path: Path, names: NDArray[np.int64]) -> dict[str, NDArray[Any]]:
    lines = _lines(path.with_suffix(".pc"), names)
    if lines is None:
        return {}
    lists = [[int(name.rpartition(b"-")[2]) for name in line.split()] for line in lines]
    counts = np.array([len(own) for own in lists], np.int64)
    numbers = np.array([number for own in lists for number in own], dtype=np.int32)
    return {"parents": numbers, "parent_offsets": offsets_of(counts)}
