"""The program's report on a run: writing it, and reading it again.

Of a run that a limit ended, which the program does not have, the report says so
in one more line.  Of a selection it tells of the run, so that a reader sees that
patterns are missing; of the maximal patterns it tells what the program would.
"""

from __future__ import annotations

import re
from collections.abc import Iterator, Sequence

import numpy as np
from numpy.typing import NDArray

from kestro._errors import KestroError
from kestro._summary import STOPPED, Described, Ending, RunSummary

_STARS = "*" * 55
_LARGEST = 2**31 - 1
_ROW = re.compile(rb"^#   (\d+) +(?:(\d+) +)?(\d+) *\r?$", re.MULTILINE)
_STOPPED_BY = "Stopped By:"
_COUNTS = Described(
    edge_labels="Number of Distinct Edge Labels:",
    vertex_labels="Number of Distinct Vertex Labels:",
    average_edges="Average Number of Edges In a Transaction:",
    average_vertices="Average Number of Vertices In a Transaction:",
    max_edges="Max Number of Edges In a Transaction:",
    max_vertices="Max Number of Vertices In a Transaction:",
)


class Report:
    """The report on a run.

    Parameters
    ----------
    summary : RunSummary
        With what is written in ``holds``, and with ``described``.
    sizes : ndarray, shape (patterns,)
        Edges of each pattern that is written.
    input_name : str
        The name of the file that was mined.
    """

    def __init__(
        self, summary: RunSummary, sizes: NDArray[np.int32], input_name: str
    ) -> None:
        self._summary = summary
        self._input_name = input_name
        self._maximal = summary.holds == "maximal"
        self._frequent: Sequence[int] = summary.frequent
        self._candidates: Sequence[int] = summary.candidates
        if self._maximal:
            counts = np.bincount(sizes, minlength=len(self._frequent))
            self._frequent = counts.tolist()
            self._candidates = [0] * len(self._frequent)

    def head(self, outputs: list[tuple[str, str]]) -> Iterator[str]:
        """Return the lines in front of the patterns.

        Outputs are the files that are written: what they are, and their names.
        """
        s = self._summary
        names = [name for _, name in outputs]
        most = s.max_size
        graphs = s.min_support
        assert s.described is not None
        yield _STARS
        yield "kestro 1.34 (VESK 1.0)"
        yield ""
        yield "Transaction File Information --------------------------"
        yield _row("Transaction File Name:", self._input_name)
        yield _row("Number of Input Transactions:", s.graphs)
        for text, count in zip(_COUNTS, s.described, strict=True):
            yield _row(text, count)
        yield ""
        yield "Options -----------------------------------------------"
        yield _row("Min Output Pattern Size:", s.min_size)
        yield _row(
            "Max Output Pattern Size:", f"{_LARGEST}(INT_MAX)" if most is None else most
        )
        yield _row(
            "Min Support Threshold:",
            f"{s.per_cent:.1f}% ({graphs} transaction{'s' if graphs != 1 else ''})",
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
        first, end = s.min_size, (s.max_size or _LARGEST) + 1
        found = [size for size, count in enumerate(self._frequent) if count]
        yield _row("Largest Frequent Pattern Size:", max(found, default=0))
        generated = sum(self._candidates[first:end])
        if generated:
            yield _row("Total Number of Candidates Generated:", generated)
        yield _row(
            "Total Number of Frequent Patterns Found:", sum(self._frequent[first:end])
        )
        if s.stopped_by:
            yield _row(_STOPPED_BY, s.stopped_by)
        yield ""
        yield "Timing Information ------------------------------------"
        yield _row("Elapsed User CPU Time:", f"{s.seconds:.1f}[sec]")
        yield _STARS

    def _table(self) -> Iterator[str]:
        s = self._summary
        last = s.last_size
        headed = False
        for size in range(max(1, s.min_size), min(last, s.max_size or _LARGEST) + 1):
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


def read(text: bytes, name: str | None) -> RunSummary:
    """Return what the report in a pattern file tells; name is for errors."""

    def value(what: str, pattern: str = r"(.*?)") -> str:
        wanted = rf"^#   {re.escape(what)} *{pattern}\r?$"
        found = re.search(wanted.encode(), text, re.MULTILINE)
        if not found:
            raise KestroError(f"no pattern file of a run that ended: no {what!r}", name)
        return found[1].decode("utf-8", "surrogateescape")

    if not text.rstrip().endswith(b"# " + _STARS.encode()):
        raise KestroError("no pattern file of a run that ended: no last line", name)
    number = r"(-?\d+)"
    seconds = float(value("Elapsed User CPU Time:", r"([0-9.]+)\[sec\]"))
    most = int(value("Max Output Pattern Size:", rf"{number}(?:\(INT_MAX\))?"))
    rows = [[int(x or 0) for x in found] for found in _ROW.findall(text)]
    sizes = [size for size, _, _ in rows]
    last = sizes[-1] if rows else 0
    if last > _LARGEST or sizes != list(range(last - len(rows) + 1, last + 1)):
        raise KestroError("the table of sizes has a gap", name)
    before = (0,) * (last + 1 - len(rows))
    candidates = before + tuple(row[1] for row in rows)
    frequent = before + tuple(row[2] for row in rows)
    maximal = value("Generate Only Maximal Patterns:") == "Yes"
    graphs = int(value("Number of Input Transactions:", r"(\d{1,10})"))
    if graphs > _LARGEST:
        raise KestroError(f"there cannot have been {graphs} graphs", name)
    return RunSummary(
        form="exact",
        graphs=graphs,
        min_support=int(
            value("Min Support Threshold:", r"[0-9.]+% \((\d+) transactions?\)")
        ),
        per_cent=float(value("Min Support Threshold:", r"([0-9.]+)% .*")),
        min_size=int(value("Min Output Pattern Size:", number)),
        max_size=None if most == _LARGEST else most,
        ending=_ending(text, last == most and frequent[last] > 0),
        last_size=last,
        order_dependent=None,
        candidates=candidates,
        frequent=frequent,
        seconds=seconds,
        described=Described(*(value(row) for row in _COUNTS)),
        holds="maximal" if maximal else "all",
    )


def _ending(text: bytes, bounded: bool) -> Ending:
    """Return what ended the run; bounded if it found patterns of the largest size."""
    for ending in STOPPED:
        row = rf"^#   {_STOPPED_BY} *{ending}\r?$".encode()
        if re.search(row, text, re.MULTILINE):
            return ending
    return "max_size" if bounded else "complete"


def _row(text: str, value: object) -> str:
    return f"  {text:<45}{value}"


def _yes_no(flag: bool) -> str:
    return "Yes" if flag else "No"


def _has(names: list[str], suffix: str) -> bool:
    return any(name.endswith(suffix) for name in names)
