"""Sub-command ``match``: the patterns of a result in other graphs."""

from __future__ import annotations

import argparse
from collections.abc import Iterator

import numpy as np
import scipy.sparse

import kestro
from kestro._arguments import job_count
from kestro._errors import KestroError
from kestro.tools import _reading, _results, _source, _writing
from kestro.tools._options import add_jobs
from kestro.tools._status import Status
from kestro.tools._terminal import Terminal

HELP = "look for the patterns of a result in other graphs"
DESCRIPTION = """\
Look for the patterns of a result in other graphs: a row of CSV per graph, with
its number, that of its record in the input, and how many patterns it contains.
"""
EPILOG = """\
examples:
  kestro-tools match found/molecules.jsonl new.smi > counts.csv
  kestro-tools match found/molecules.fp new.txt --ids
  kestro-tools match found/molecules.jsonl new.smi --matrix > features.csv

Molecules are read with charges and hydrogens as those were that were mined, where
the result tells: a .jsonl file does, a .fp file does not.
"""


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _results.add_argument(parser, "result")
    _reading.add_input(parser)
    columns = parser.add_mutually_exclusive_group()
    columns.add_argument(
        "--ids", action="store_true", help="the ids of the patterns in each graph"
    )
    columns.add_argument(
        "--matrix", action="store_true", help="a column of 0 and 1 per pattern"
    )
    add_jobs(parser)
    parser.add_argument(
        "-o",
        "--output",
        type=_source.file_name,
        default=_writing.STDOUT,
        metavar="FILE",
        help="where to",
    )
    _reading.add_arguments(parser)


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Match."""
    _source.check_names(args.result, args.input)
    result = _results.read(_source.kept(args.result))
    source = _reading.read(args.input, args, terminal, like=result)
    terminal.passing("matching")
    try:
        found = result._found_in(source.db, job_count(args.jobs), terminal.warn)
    except KestroError as e:
        raise KestroError(e.text, source.name) from e
    finally:
        terminal.clear()
    names = [p.id for p in result]
    rows = _rows(found, names, source.db, args)
    _writing.write_lines(args.output, _writing.csv_lines(rows))
    terminal.say(f"{np.count_nonzero(np.diff(found.indptr))} graphs contain a pattern")
    return Status.FOUND if found.nnz else Status.NOTHING


def _rows(
    found: scipy.sparse.csr_array,
    names: list[str],
    db: kestro.GraphDatabase,
    args: argparse.Namespace,
) -> Iterator[list[object]]:
    head: list[object] = ["graph", "record"]
    yield (
        [*head, *names]
        if args.matrix
        else [
            *head,
            "patterns",
            *(["ids"] if args.ids else []),
        ]
    )
    for tid, record in enumerate(db.source.tolist()):
        own = np.sort(found.indices[found.indptr[tid] : found.indptr[tid + 1]])
        if args.matrix:
            row = np.zeros(len(names), np.int64)
            row[own] = 1
            yield [tid, record, *row.tolist()]
        elif args.ids:
            yield [tid, record, len(own), " ".join(names[i] for i in own)]
        else:
            yield [tid, record, len(own)]
