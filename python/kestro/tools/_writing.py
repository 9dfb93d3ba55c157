"""Writing what a command makes: to standard output, or aside and then renamed."""

from __future__ import annotations

import csv
import io
import sys
import uuid
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any

from kestro._aside import write_aside
from kestro._result import Result
from kestro.tools._status import OutputError, told

STDOUT = "-"


@contextmanager
def output_errors() -> Iterator[None]:
    """Turn what goes wrong with files into `OutputError`."""
    try:
        yield
    except OSError as e:
        raise OutputError(told("cannot write", e)) from e


def write_lines(target: str, lines: Iterable[str]) -> None:
    """Write to standard output for "-", else to a file that appears when whole."""
    with output_errors():
        if target != STDOUT:
            write_aside(Path(target), lines)
            return
        if sys.stdout is None:
            raise OutputError("cannot write: standard output is closed")
        out = getattr(sys.stdout, "buffer", None)
        if out is None:  # a stand-in that takes text alone
            sys.stdout.writelines(lines)
            return
        sys.stdout.flush()
        for line in lines:
            out.write(line.encode("utf-8", "surrogateescape"))
        out.flush()


def csv_lines(rows: Iterable[Iterable[object]], delimiter: str = ",") -> Iterator[str]:
    """Yield the rows as lines of CSV."""
    for row in rows:
        line = io.StringIO()
        csv.writer(line, delimiter=delimiter, lineterminator="\n").writerow(row)
        yield line.getvalue()


def write_parquet(target: str, table: Any) -> None:
    """Write a table of Arrow's as a file that appears when it is whole."""
    import pyarrow.parquet

    path = Path(target)
    if path.exists() and not path.is_file():
        raise OutputError(f"cannot write {target}: it is no file")
    aside = path.with_name(f".{path.name}.{uuid.uuid4().hex}")
    with output_errors():
        try:
            pyarrow.parquet.write_table(table, aside)
            aside.replace(path)
        finally:
            aside.unlink(missing_ok=True)


def write_page(result: Result, target: str, **settings: Any) -> None:
    """Write the page on a result; standard output for "-"."""
    if target == STDOUT:
        page = io.StringIO()
        result.report(page, **settings)
        write_lines(target, [page.getvalue()])
        return
    with output_errors():
        result.report(target, **settings)
