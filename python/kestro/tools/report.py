"""Sub-command ``report``: a result as a page to look at."""

from __future__ import annotations

import argparse

from kestro.tools import _reading, _results, _source, _writing
from kestro.tools._options import INT_MAX, add_jobs, whole
from kestro.tools._status import Status
from kestro.tools._terminal import Terminal

HELP = "turn a result into a page of HTML"
DESCRIPTION = """\
Turn a result into a page of HTML that needs no network: a table that sorts and
filters, drawings, the way from pattern to pattern, and, where the graphs have
classes, what tells these apart.
"""
EPILOG = """\
examples:
  kestro-tools report found/molecules.fp molecules.smi -o report.html
  kestro-tools report found/table.jsonl table.csv --class-column active \\
      --title "Active ones" -o report.html

INPUT is what was mined, read in the same way.
"""


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _results.add_argument(parser, "result")
    _reading.add_input(parser, "what was mined, or -")
    parser.add_argument(
        "-o",
        "--output",
        type=_source.file_name,
        required=True,
        metavar="FILE",
        help="the page",
    )
    parser.add_argument("--title", metavar="TEXT", help="what stands on top")
    parser.add_argument(
        "--max-patterns",
        type=whole(1, INT_MAX),
        default=5000,
        metavar="N",
        help="patterns in the page at most, the best (5000)",
    )
    parser.add_argument(
        "--without-structures",
        action="store_true",
        help="a smaller page, without the search by SMARTS",
    )
    add_jobs(parser)
    _reading.add_arguments(parser)


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Write the page."""
    _source.check_names(args.result, args.input)
    again = _source.kept(args.result)
    db = _reading.read(args.input, args, terminal, like=_results.read(again)).db
    _reading.check_classes(db, args, terminal)
    terminal.passing("looking for the patterns in the graphs")
    try:
        result = _results.read(again, db, n_jobs=args.jobs)
        _writing.write_page(
            result,
            args.output,
            title=args.title,
            max_patterns=args.max_patterns,
            with_structures=not args.without_structures,
        )
    finally:
        terminal.clear()
    terminal.say(f"{args.output}: a page of {min(len(result), args.max_patterns)}")
    return Status.FOUND if len(result) else Status.NOTHING
