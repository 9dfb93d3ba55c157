"""Results that a command is given."""

from __future__ import annotations

import argparse

import kestro
from kestro._database import Graph, GraphDatabase
from kestro._errors import KestroError
from kestro._files import read_bytes
from kestro._result import Result
from kestro.tools._source import Again, file_name

_BEGINNINGS = (b"{", b"# ***")
_READABLE = "of the files of a run the .fp and the .jsonl one can be read"


def add_argument(parser: argparse.ArgumentParser, name: str) -> None:
    """Add an argument that names a result."""
    parser.add_argument(
        name,
        type=file_name,
        metavar=name.upper(),
        help="a .fp or .jsonl file of a run, or -",
    )


def read(
    again: Again, db: GraphDatabase | None = None, n_jobs: int | None = None
) -> Result:
    """Return a result; where the file is none, say which files are.

    Raises
    ------
    KestroError, OSError
        For what cannot be read.
    """
    try:
        return kestro.read_result(again(), db, n_jobs=n_jobs)
    except IsADirectoryError as e:
        raise KestroError(f"no result but a folder; {_READABLE}", e.filename) from e
    except KestroError:
        data, name = read_bytes(again())
        if data.startswith(_BEGINNINGS):
            raise
        raise KestroError(f"no result; {_READABLE}", name or None) from None


def line_of(graph: Graph) -> str:
    """Return the lines of a graph in one."""
    return graph.lines().strip().replace("\n", "; ")
