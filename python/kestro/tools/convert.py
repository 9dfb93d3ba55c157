"""Sub-command ``convert``: graphs from one format into another."""

from __future__ import annotations

import argparse
from collections.abc import Callable, Iterable, Iterator
from pathlib import Path
from typing import Any

from kestro._aside import write_all_aside
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._graphml import graphml_lines
from kestro.tools import _molecule_files, _reading, _source, _tu_files, _writing
from kestro.tools._formats import MOLECULES, format_of
from kestro.tools._status import OutputError, Status, UsageError
from kestro.tools._terminal import Terminal

HELP = "turn graphs from one format into another"
DESCRIPTION = """\
Turn graphs from one format into another.

Molecules go into each format.  Where a format of molecules (smi, sdf, csv) is
written they are taken from the input in full, with charges, stereo and the
columns beside them; everywhere else there are elements and bonds as labels.
Other graphs go into transactions, GraphML, TU folders and Parquet.
"""
EPILOG = """\
examples:
  kestro-tools convert molecules.smi -o molecules.txt
  kestro-tools convert MUTAG -o mutag.graphml
  zcat table.csv.gz | kestro-tools convert - --from csv --to transactions > t.txt

Records that cannot be read are left out; what they are and why stands on
standard error.
"""
_TO = (*MOLECULES, "tu", "graphml", "parquet", "transactions")


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _reading.add_input(parser)
    parser.add_argument(
        "-o",
        "--output",
        type=_source.file_name,
        default=_writing.STDOUT,
        metavar="FILE",
        help="where to; standard output when not given, a folder for tu",
    )
    parser.add_argument(
        "--to",
        choices=_TO,
        help="the format, where the extension of the output does not tell it",
    )
    _reading.add_arguments(parser)


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Convert."""
    to = _format_of(args.output, args.to)
    form = format_of(args.input, args.form)
    if to in MOLECULES and form not in MOLECULES:
        raise UsageError(f"{form} holds no molecules, so it cannot become {to}")
    if to in ("tu", "parquet") and args.output == _writing.STDOUT:
        raise UsageError(f"--output must name the file or folder for {to}")
    _source.check_outputs([args.output], args.input)
    if to != "tu":
        _writing.check_file(args.output)
    source = _reading.read(args.input, args, terminal)
    db = source.db
    lost = _lost(source, to, args.class_column)
    if lost:
        terminal.warn(f"{to} has no place for {' and '.join(lost)}")
    _WRITERS[to](source, args)
    terminal.say(f"{args.output}: {len(db)} written as {to}")
    return Status.FOUND if len(db) else Status.NOTHING


def _format_of(output: str, told: str | None) -> str:
    if output == _writing.STDOUT:
        return told or "transactions"
    if output.endswith("/") or _writing.is_folder(output):
        return told or "tu"
    if told != "tu":
        _writing.check_plain(output)
    return format_of(output, told)


def _lost(source: _reading.Input, to: str, class_column: str | None) -> list[str]:
    """Return what of the graphs the format does not hold."""
    db, lost = source.db, []
    beside = [] if db.table is None else [str(name) for name in db.table.columns]
    names_are_told = source.form in MOLECULES and _molecule_files.has_names(source)
    if to == "smi" and source.form == "csv":
        taken = _molecule_files.name_column(beside)
        beside = [name for name in beside if name != taken]
    elif to == "smi" and not names_are_told:  # titles are no items of records
        beside = [name for name in beside if name != "title"]
    beside = [name for name in beside if name != class_column]
    # A table has names of its own for those of SMILES.
    holds_names = to in ("smi", "sdf") or (to == "csv" and source.form == "smi")
    if names_are_told and not holds_names:
        lost.append("names")
    if beside and to in ("transactions", "graphml", "tu", "smi"):
        lost.append(f"columns {', '.join(map(repr, beside))}")
    if db.classes is not None and to in ("transactions", "graphml", "smi"):
        lost.append("classes")
    return lost


def _transactions(source: _reading.Input, args: argparse.Namespace) -> None:
    lines = (f"t # {tid}\n{g.lines()}" for tid, g in enumerate(source.db))
    _writing.write_lines(args.output, lines)


def _graphml(source: _reading.Input, args: argparse.Namespace) -> None:
    _writing.write_lines(args.output, graphml_lines(source.db, source.name))


def _parquet(source: _reading.Input, args: argparse.Namespace) -> None:
    db = source.db
    if db.table is not None and args.class_column is not None:
        # The classes are a column of their own.
        db.table = db.table.drop(columns=args.class_column)
    try:
        table = db.to_arrow()
    except ValueError as e:
        raise KestroError(str(e), source.name) from e
    _writing.write_parquet(args.output, table)


def _tu(source: _reading.Input, args: argparse.Namespace) -> None:
    db = source.db
    folder = Path(args.output)
    if db.classes is None and len(db) and not len(db[len(db) - 1].vertex_labels):
        raise KestroError(
            "a TU data set without classes cannot end with an empty graph", source.name
        )
    start = folder / folder.resolve().name
    vertex_names = _Numbers(x for g in db for x in g.vertex_labels)
    edge_names = _Numbers(x for g in db for x in g.edge_labels)
    files: dict[str, Iterable[str]] = {
        "graph_indicator": (
            f"{tid}\n" for tid, g in enumerate(db, 1) for _ in g.vertex_labels
        ),
        "node_labels": (f"{vertex_names[x]}\n" for g in db for x in g.vertex_labels),
        "edge_labels": (f"{edge_names[x]}\n" * 2 for g in db for x in g.edge_labels),
        "A": _adjacency(db),
    }
    if db.classes is not None:
        files["graph_labels"] = (f"{x}\n" for x in db.classes.tolist())
    lines = {Path(f"{start}_{kind}.txt"): text for kind, text in files.items()}
    lines[folder / _tu_files.README] = [
        f"{_tu_files.VERTICES}\n",
        *vertex_names.lines(),
        f"{_tu_files.EDGES}\n",
        *edge_names.lines(),
    ]
    with _writing.output_errors():
        folder.mkdir(parents=True, exist_ok=True)
        in_the_way = _tu_files.in_the_way(folder, start.name, set(lines))
        if in_the_way:
            raise OutputError(
                f"cannot write {args.output}: {', '.join(in_the_way)} would stay or "
                f"be lost; only the same files that convert wrote are written over"
            )
        write_all_aside(lines)


def _adjacency(db: GraphDatabase) -> Iterator[str]:
    first = 1
    for g in db:
        for a, b in (g.edges + first).tolist():
            yield f"{a}, {b}\n{b}, {a}\n"
        first += len(g.vertex_labels)


class _Numbers(dict[str, str]):
    """The numbers that stand for labels: themselves where all are numbers."""

    def __init__(self, labels: Iterable[str]) -> None:
        distinct = sorted(set(labels))
        are_numbers = all(x.isascii() and x.isdecimal() for x in distinct)
        super().__init__(
            (x, x if are_numbers else str(i)) for i, x in enumerate(distinct)
        )

    def lines(self) -> Iterator[str]:
        return (f"  {number} {label}\n" for label, number in self.items())


_WRITERS: dict[str, Callable[[_reading.Input, argparse.Namespace], Any]] = {
    "transactions": _transactions,
    "graphml": _graphml,
    "parquet": _parquet,
    "tu": _tu,
    **{form: _molecule_files.write for form in MOLECULES},
}
