"""Sub-command ``check``: what is wrong with a transaction file, and what is in it."""

from __future__ import annotations

import argparse
import io
import shlex
import sys
import warnings
from collections import Counter

import numpy as np

import kestro
from kestro._database import GraphDatabase, number_of
from kestro._errors import KestroError
from kestro._files import read_bytes
from kestro.tools import _source, _writing
from kestro.tools._formats import NO_TRANSACTIONS, format_of, is_transactions
from kestro.tools._status import Status
from kestro.tools._terminal import Terminal, shown, styled, table
from kestro.tools._transaction_check import Problem, problems

HELP = "tell all problems of a transaction file at once"
DESCRIPTION = """\
Tell all problems of a transaction file at once, each with its line, its column and
a hint; then what the file holds: its labels, and the highest support at which
anything is found.

Errors are what is refused or left out when the file is read; warnings are read,
though hardly as they were meant.
"""
EPILOG = """\
examples:
  kestro-tools check graphs.txt
  zcat graphs.txt.gz | kestro-tools check -

exit codes: 0 no error, 1 nothing to mine, 3 errors
"""
_LABELS = 20  # rows of the table of labels


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    parser.add_argument(
        "input", type=_source.file_name, metavar="FILE", help="a transaction file, or -"
    )
    parser.add_argument(
        "--max-problems",
        type=int,
        default=100,
        metavar="N",
        help="lines of problems that are shown (100); all are counted",
    )
    parser.add_argument(
        "--labels",
        type=int,
        default=_LABELS,
        metavar="N",
        help=f"labels that are shown, the most frequent ones ({_LABELS})",
    )


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Check."""
    name = _source.called(args.input)
    terminal.passing(f"checking {name}")
    data, _ = read_bytes(_source.kept(args.input)())
    found = problems(data)
    if any(p.kind == "error" for p in found) and not is_transactions(data):
        raise KestroError(f"{NO_TRANSACTIONS}; {_hint(args.input)}", name)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", UserWarning)
        db = kestro.read_transactions(io.BytesIO(data), on_error="skip")
    terminal.clear()
    lines = [
        *_problem_lines(found, name, args.max_problems),
        *_contents(db, args.labels),
    ]
    _writing.write_lines(_writing.STDOUT, (f"{line}\n" for line in lines))
    if any(p.kind == "error" for p in found):
        return Status.INPUT
    return Status.FOUND if highest_support(db) else Status.NOTHING


def _hint(name: str) -> str:
    """Return how transactions are made of a file of another format."""
    form = format_of(name, "FORMAT" if name == _source.STDIN else None)
    told = f" --from {'FORMAT' if form in ('transactions', 'FORMAT') else form}"
    return (
        f"of another format this makes one: "
        f"kestro-tools convert{told} {shlex.quote(name)} -o graphs.txt"
    )


def highest_support(db: GraphDatabase) -> int:
    """Return the support of the most frequent edge, 0 without an edge.

    No pattern is more frequent, as each has an edge.
    """
    if not len(db):
        return 0
    edges = kestro.mine(db, min_support=1, max_size=1)
    return int(edges.support.max(initial=0))


def _problem_lines(found: list[Problem], name: str, most: int) -> list[str]:
    lines = []
    for p in found[: max(0, most)]:
        kind = styled(p.kind, p.kind, sys.stdout)
        lines.append(f"{shown(name)}:{p.line}:{p.column}: {kind}: {shown(p.text)}")
        if p.hint:
            lines.append(f"    {p.hint}")
    if len(found) > most:
        lines.append(f"… and {number_of(len(found) - max(0, most), 'problem')} more")
    counts = Counter(p.kind for p in found)
    summary = ", ".join(number_of(counts[kind], kind) for kind in ("error", "warning"))
    return [*lines, summary]


def _contents(db: GraphDatabase, most: int) -> list[str]:
    packed = db._native.to_arrays()
    vertices, edges = (
        int(packed[name].sum()) for name in ("vertex_counts", "edge_counts")
    )
    lines = [
        f"{number_of(len(db), 'graph')}, "
        f"{vertices} {'vertex' if vertices == 1 else 'vertices'}, "
        f"{number_of(edges, 'edge')}"
    ]
    for what in ("vertex", "edge"):
        lines += _label_lines(db, what, most)
    highest = highest_support(db)
    if highest:
        lines.append(
            f"highest support at which anything is found: {highest} of "
            f"{number_of(len(db), 'graph')} ({100 * highest / len(db):.4g}%)"
        )
    else:
        lines.append("nothing is found at any support: there is no edge")
    return lines


def _label_lines(db: GraphDatabase, what: str, most: int) -> list[str]:
    packed = db._native.to_arrays()
    names = db._native.labels()[0 if what == "vertex" else 1]
    ids = packed[f"{what}_labels"].astype(np.int64)
    owners = np.repeat(np.arange(len(db)), packed[f"{what}_counts"])
    counts = np.bincount(ids, minlength=len(names))
    pairs = np.unique(np.column_stack((ids, owners)), axis=0)
    graphs = np.bincount(pairs[:, 0], minlength=len(names))
    order = [
        i for i in np.lexsort((np.arange(len(names)), -counts)).tolist() if counts[i]
    ]
    rows = [(names[i], counts[i], graphs[i]) for i in order[: max(0, most)]]
    if not rows:
        return []
    lines = table([(f"{what} label", "times", "graphs"), *rows])
    if len(order) > len(rows):
        lines.append(f"… and {number_of(len(order) - len(rows), 'label')} more")
    return lines
