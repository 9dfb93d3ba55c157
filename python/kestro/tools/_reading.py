"""Reading whatever a command is given, by the package's own readers."""

from __future__ import annotations

import argparse
import warnings
from typing import Any, NamedTuple

import numpy as np

import kestro
from kestro._classes import classes
from kestro._database import AtomLabels, GraphDatabase, Skipped
from kestro._errors import KestroError
from kestro._files import Source, read_bytes
from kestro._result import Result
from kestro.tools import _skipped
from kestro.tools._formats import (
    FORMATS,
    MOLECULES,
    check_column,
    check_transactions,
    delimiter_of,
    format_of,
)
from kestro.tools._source import STDIN, Again, called, file_name, kept
from kestro.tools._status import UsageError
from kestro.tools._terminal import Terminal

# Which formats an option says something of; of others it would change nothing.
_OF_FORMATS = {
    "smiles_column": ("csv",),
    "delimiter": ("csv",),
    "class_column": ("csv", "sdf", "parquet"),
    "charge": MOLECULES,
    "hydrogens": MOLECULES,
    "vertex_label": ("graphml", "tu"),
    "edge_label": ("graphml", "tu"),
}
_SMILES = "smiles"


class Input(NamedTuple):
    """What was read.

    Attributes
    ----------
    db : GraphDatabase
        The graphs.
    form : str
        One of `FORMATS`.
    again : callable
        Returns the source once more, to be read in another way.
    name : str
        What to call it.
    """

    db: GraphDatabase
    form: str
    again: Again
    name: str


def add_input(
    parser: argparse.ArgumentParser, what: str = "a file, a TU folder, or -"
) -> None:
    """Add the argument that names an input."""
    parser.add_argument("input", type=file_name, metavar="INPUT", help=what)


def add_arguments(parser: argparse.ArgumentParser, what: str = "input") -> None:
    """Add the options that say how an input is read."""
    group = parser.add_argument_group(f"how the {what} is read")
    group.add_argument(
        "--from",
        dest="form",
        choices=FORMATS,
        help="the format, where the extension does not tell it; transactions where "
        "nothing does",
    )
    group.add_argument(
        "--smiles-column",
        metavar="NAME",
        help=f"the column of a CSV file with the SMILES ({_SMILES})",
    )
    group.add_argument(
        "--delimiter",
        metavar="SIGN",
        help="what stands between columns (a comma; a tab in .tsv)",
    )
    group.add_argument(
        "--class-column",
        metavar="NAME",
        help="the column of a CSV, SD or Parquet file with the class of each graph",
    )
    group.add_argument(
        "--charge", action="store_true", help="labels of atoms tell the charge"
    )
    group.add_argument(
        "--hydrogens", action="store_true", help="all hydrogens are vertices"
    )
    group.add_argument(
        "--vertex-label",
        metavar="TEXT",
        help="GraphML: the attribute with the labels of nodes (label); "
        "TU: the label of all vertices where the file of labels is missing (0)",
    )
    group.add_argument(
        "--edge-label", metavar="TEXT", help="the same of edges (label; 0)"
    )
    group.add_argument(
        "--strict",
        action="store_true",
        help="end at the first record that cannot be read instead of leaving it out",
    )


def read(
    name: str,
    args: argparse.Namespace,
    terminal: Terminal,
    like: Result | None = None,
) -> Input:
    """Return the graphs of a file, a folder or standard input; tell what is skipped.

    With a result that tells it, labels of atoms are like those of its patterns;
    options that say otherwise are warned of.

    Raises
    ------
    KestroError, OSError
        For what cannot be read.
    UsageError
        For options that do not fit the format.
    """
    form = format_of(name, args.form)
    if form == "tu" and name == STDIN:
        raise UsageError("a TU data set is a folder, not standard input")
    _check_options(form, args)
    labels = AtomLabels(args.charge, args.hydrogens)
    if like is not None and form in MOLECULES:
        labels = _labels_like(like, labels, terminal)
    terminal.passing(f"reading {called(name)}")
    try:
        again = kept(name)
        with warnings.catch_warnings():
            # That all records were skipped is told below.
            warnings.simplefilter("ignore", UserWarning)
            try:
                db = _read(form, again(), name, labels, args)
            except KestroError:
                _check_form(form, again, name, args)
                raise
            if db.skipped:
                _check_form(form, again, name, args)
    finally:
        terminal.clear()
    is_strange = len(db.skipped) > len(db)
    if args.class_column is not None:
        db = _with_classes(db, args.class_column)
    _skipped.tell(db, called(name), terminal)
    if is_strange:
        terminal.list([f"is this really {form}? --from names another format"])
    if db.skipped and not len(db):
        raise KestroError("not one of the records can be read", called(name))
    return Input(db, form, again, called(name))


def smiles_column(args: argparse.Namespace) -> str:
    """Return the name of the column with the SMILES."""
    name: str | None = args.smiles_column
    return _SMILES if name is None else name


def _check_options(form: str, args: argparse.Namespace) -> None:
    for option, forms in _OF_FORMATS.items():
        if getattr(args, option) not in (None, False) and form not in forms:
            name = option.replace("_", "-")
            raise UsageError(f"--{name} is for {', '.join(forms)}, not for {form}")


def _labels_like(like: Result, labels: AtomLabels, terminal: Terminal) -> AtomLabels:
    """Return the labels of the result where it tells them, else those given."""
    own = like._patterns.summary.atom_labels
    if own is None:
        return labels
    for option, told, used in zip(AtomLabels._fields, labels, own, strict=True):
        if told and not used:
            terminal.warn(f"--{option} changes nothing: the result is without")
    return own


def _check_form(form: str, again: Again, name: str, args: argparse.Namespace) -> None:
    """Raise where what goes wrong is that the file has another format."""
    if form == "transactions":
        check_transactions(again, name, args.form)
    if form == "csv":
        sign = delimiter_of(name, args.delimiter)
        check_column(again, called(name), smiles_column(args), sign)


def _read(
    form: str, source: Any, name: str, labels: AtomLabels, args: argparse.Namespace
) -> GraphDatabase:
    on_error: Any = "raise" if args.strict else "skip"
    of_atoms = labels._asdict()
    of_labels = {
        key: value
        for key, value in (
            ("vertex_label", args.vertex_label),
            ("edge_label", args.edge_label),
        )
        if value is not None
    }
    if form == "smi":
        return kestro.from_smiles(source, **of_atoms, on_error=on_error)
    if form == "sdf":
        return kestro.from_sdf(source, **of_atoms, on_error=on_error)
    if form == "csv":
        return kestro.from_csv(
            source,
            smiles_column=smiles_column(args),
            delimiter=delimiter_of(name, args.delimiter),
            **of_atoms,
            on_error=on_error,
        )
    if form == "tu":
        return kestro.from_tu(source, **of_labels, on_error=on_error)
    if form == "graphml":
        return kestro.from_graphml(source, **of_labels, on_error=on_error)
    if form == "parquet":
        return kestro.from_arrow(_parquet(source), on_error=on_error)
    return kestro.read_transactions(source, on_error=on_error)


def _parquet(source: Source) -> Any:
    from kestro._arrow import import_pyarrow

    pa = import_pyarrow()
    import pyarrow.parquet

    data, name = read_bytes(source)
    try:
        return pyarrow.parquet.read_table(pa.BufferReader(data))
    except pa.ArrowInvalid as e:
        raise KestroError(f"no Parquet file: {e}", name) from e


def _with_classes(db: GraphDatabase, column: str) -> GraphDatabase:
    """Return the molecules whose class is known; the others are skipped."""
    if db.table is None or column not in db.table.columns:
        names = [] if db.table is None else [str(x) for x in db.table.columns]
        raise KestroError(
            f"there is no column {column!r} beside the {db.kind}; "
            f"there are: {', '.join(map(repr, names)) or 'none'}"
        )
    values = db.table[column]
    missing = values.isna().to_numpy()
    skipped = [
        Skipped(record, f"its class is missing in column {column!r}")
        for record in db.source[missing].tolist()
    ]
    chosen = db[np.flatnonzero(~missing)]
    chosen.classes = values[~missing].to_numpy()
    chosen.skipped = tuple(sorted((*db.skipped, *skipped)))
    return chosen


def check_classes(
    db: GraphDatabase, args: argparse.Namespace, terminal: Terminal
) -> None:
    """Take classes away that cannot be compared, as measurements; tell of it.

    Raises
    ------
    KestroError
        Where they were asked for.
    """
    if db.classes is None or len(set(db.classes.tolist())) < 2:
        return  # one class is nothing to compare
    reason = _no_classes(db)
    if not reason:
        return
    if args.class_column is not None:
        raise KestroError(f"column {args.class_column!r} holds no classes: {reason}")
    terminal.warn(f"the graphs are taken without classes: {reason}")
    db.classes = None


def _no_classes(db: GraphDatabase) -> str:
    values = np.asarray(db.classes)
    if np.issubdtype(values.dtype, np.inexact):
        broken = values[~np.isnan(values) & (values % 1 != 0)]
        if len(broken):
            return f"these are measurements, such as {broken[0]}"
    try:
        classes(values, len(db))
    except KestroError as e:
        return e.text
    return ""
