"""Molecules in SD files.

A record is a molfile, data items and a line of four dollar signs.  Where such a
line is missing, or the empty line behind an item, readers that go on silently
lose molecules and values; here it is found out.
"""

from __future__ import annotations

from collections.abc import Iterator
from typing import NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._atoms import import_rdkit
from kestro._conversion import Text, Unread, convert_molfiles
from kestro._database import GraphDatabase
from kestro._errors import printable
from kestro._files import Source, lines_of, read_text
from kestro._molecules import atom_labels, convert
from kestro._packing import Packer

_RECORD_END = "$$$$"
_MOLFILE_END = "M  END"


def from_sdf(
    source: Source,
    *,
    charge: bool = False,
    hydrogens: bool = False,
    chirality: bool = False,
    n_jobs: int | None = None,
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of the molecules in an SD file.

    Parameters
    ----------
    source : path or file object
        The file; it may be a pipe or compressed by gzip.
    charge, hydrogens, chirality, n_jobs, on_error
        As for `from_smiles`: hydrogens that the file has as atoms are taken
        out, or all put in.  A record with two molfiles in it, for want of a
        line ``$$$$``, cannot be read, nor can one with lines behind the
        molfile that belong to no data item.

    Returns
    -------
    GraphDatabase
        Of molecules, with the data items of the records in ``table``, as text,
        a column per name, and the records' titles in ``title``, unless they
        have an item of that name.  Items of one name in one record are joined
        by a newline.  ``source`` counts the records from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        For what is no molecule, with path and line of the record.
    OSError
        When the file cannot be read.
    """
    import pandas as pd

    labels = atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    text, name = read_text(source)
    records = list(_records(text))
    packer = Packer(on_error, name, [record.line for record in records])
    convert(convert_molfiles, [r.molfile for r in records], labels, n_jobs, packer)

    def table(source: NDArray[np.int64]) -> pd.DataFrame:
        kept = [
            {"title": records[record].title, **records[record].items}
            for record in source.tolist()
        ]
        return pd.DataFrame(kept, index=range(len(kept)))

    return packer.build(labels, table)


class _Record(NamedTuple):
    line: int  # where it begins
    molfile: Text
    title: str
    items: dict[str, str]


def _records(text: str) -> Iterator[_Record]:
    first = 0
    lines = lines_of(text)
    for i, line in enumerate(lines):
        if line.startswith(_RECORD_END):
            yield _record(first + 1, lines[first:i])
            first = i + 1
    # Only the last one may lack its end; empty lines are none.
    if any(line.strip() for line in lines[first:]):
        yield _record(first + 1, lines[first:])


def _record(number: int, lines: list[str]) -> _Record:
    ends = [i for i, line in enumerate(lines) if line.startswith(_MOLFILE_END)]
    if not ends:
        return _Record(
            number, Unread(f"the record has no line {_MOLFILE_END!r}"), "", {}
        )
    if len(ends) > 1:
        reason = f"{len(ends)} molfiles in a record: a line {_RECORD_END!r} is missing"
        return _Record(number, Unread(reason), "", {})
    own: dict[str, list[str]] = {}
    for name, value in _data_items(lines[ends[0] + 1 :]):
        if name is None:
            reason = f"a line that belongs to no data item: {value!r}"
            return _Record(number, Unread(reason), "", {})
        own.setdefault(name, []).append(value)
    molfile = printable("\n".join(lines[: ends[0] + 1]) + "\n")
    items = {printable(name): printable("\n".join(own[name])) for name in own}
    return _Record(number, molfile, printable(lines[0].strip()), items)


def _data_items(lines: list[str]) -> Iterator[tuple[str | None, str]]:
    """Yield names and values, and lines that belong to none without a name.

    An item is "> <name>", lines of the value, an empty line.  Where that is
    missing, the next name ends the value.
    """
    name = None
    value: list[str] = []
    for line in [*lines, ""]:
        if line.startswith(">") and (name is None or _name(line)):
            if name is not None:
                yield name, "\n".join(value)
            name, value = _name(line) or line[1:].strip(), []
        elif line.strip() and name is not None:
            value.append(line)
        elif line.strip():
            yield None, line
        elif name is not None:
            yield name, "\n".join(value)
            name = None


def _name(line: str) -> str:
    """Return the name in "> <name>", empty where there is none."""
    return line.partition("<")[2].rpartition(">")[0]
