"""Molecules from one format of molecules into another, with all that they have.

Labels tell elements and bonds alone, so each molecule that was read is taken from
the text of its record once more.  SMILES stay as they are written.
"""

from __future__ import annotations

import argparse
from collections.abc import Iterator, Sequence
from typing import Any

from kestro._atoms import import_rdkit
from kestro._csv import _read_rows
from kestro._errors import KestroError
from kestro._files import lines_of, read_text
from kestro._sdf import _Record, _records
from kestro.tools import _reading, _writing
from kestro.tools._formats import delimiter_of, format_of


def write(source: _reading.Input, args: argparse.Namespace) -> None:
    """Write the molecules of the database, in their order."""
    to = args.to or format_of(args.output, None)
    from rdkit import rdBase

    with rdBase.BlockLogs():
        _writing.write_lines(args.output, _FORMS[to](source, args))


def _molfiles(source: _reading.Input, hydrogens: bool) -> Iterator[tuple[str, Any]]:
    """Yield the title and RDKit's molecule of each record of an SD file.

    With hydrogens those that are atoms of the record stay atoms.
    """
    Chem = import_rdkit()
    for record in _kept_records(source):
        molecule = Chem.MolFromMolBlock(record.molfile, removeHs=not hydrogens)
        yield record.title, molecule


def _smiles(
    source: _reading.Input, args: argparse.Namespace
) -> Iterator[tuple[str, str]]:
    """Yield the name, which may be empty, and the SMILES of each molecule."""
    if source.form == "sdf":
        Chem = import_rdkit()
        yield from ((name, Chem.MolToSmiles(x)) for name, x in _molfiles(source, False))
        return
    text, _ = read_text(source.again())
    kept = source.db.source.tolist()
    if source.form == "smi":
        lines = lines_of(text)
        for record in kept:
            smiles, *name = lines[record].split(maxsplit=1)
            yield " ".join(name).strip(), smiles
        return
    rows = _read_rows(text, delimiter_of(source.name, args.delimiter))
    head = rows[0].cells
    at = head.index(_reading.smiles_column(args))
    column = name_column([*head[:at], *head[at + 1 :]])
    for record in kept:
        cells = rows[record + 1].cells
        yield cells[head.index(column)] if column else "", cells[at].strip()


def name_column(names: Sequence[str]) -> str | None:
    """Return which column beside the SMILES has the names of molecules."""
    return next((name for name in ("name", "title") if name in names), None)


def has_names(source: _reading.Input) -> bool:
    """Whether molecules have names that are in no column."""
    kept = source.db.source.tolist()
    if source.form == "smi":
        lines = lines_of(read_text(source.again())[0])
        return any(len(lines[record].split(maxsplit=1)) > 1 for record in kept)
    return source.form == "sdf" and any(
        record.title not in ("", record.items.get("title", record.title))
        for record in _kept_records(source)
    )


def _kept_records(source: _reading.Input) -> list[_Record]:
    records = list(_records(read_text(source.again())[0]))
    return [records[record] for record in source.db.source.tolist()]


def _columns(
    source: _reading.Input, args: argparse.Namespace, with_titles: bool = True
) -> tuple[list[str], list[list[str]]]:
    """Return the names of the columns beside the molecules, and their rows.

    Of text they are the text that was read: 007 is no 7.0.  Titles of an SD file
    are one, as in its table, where they do not go to a place of their own.
    """
    kept = source.db.source.tolist()
    if source.form == "csv":
        sign = delimiter_of(source.name, args.delimiter)
        rows = [row.cells for row in _read_rows(read_text(source.again())[0], sign)]
        at = rows[0].index(_reading.smiles_column(args))
        names, *values = (
            [*cells[:at], *cells[at + 1 :]]
            for cells in (rows[0], *(rows[record + 1] for record in kept))
        )
        return names, values
    if source.form == "sdf" and source.db.table is not None:
        records = list(_records(read_text(source.again())[0]))
        names = [str(x) for x in source.db.table.columns]
        return names, [[_item(records[i], x, with_titles) for x in names] for i in kept]
    table = source.db.table
    if table is None:
        return [], [[] for _ in range(len(source.db))]
    texts = table.astype(object).where(table.notna(), "")
    return [str(x) for x in table.columns], [
        [str(cell) for cell in row] for row in texts.itertuples(index=False, name=None)
    ]


def _item(record: _Record, name: str, with_titles: bool) -> str:
    title = record.title if with_titles and name == "title" else ""
    return record.items.get(name, title)


def _smi(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    for name, smiles in _smiles(source, args):
        flat = " ".join(name.split())
        yield f"{smiles}\t{flat}\n" if flat else f"{smiles}\n"


def _csv(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    names, rows = _columns(source, args)
    with_names = source.form == "smi"
    sign = delimiter_of(args.output, None)
    own = ["smiles", *["name"][:with_names]]
    taken = [name for name in names if name in own]
    if taken:
        raise KestroError(f"a column has a name in use: {taken[0]!r}", source.name)
    yield from _writing.csv_lines([[*own, *names]], sign)
    yield from _writing.csv_lines(
        (
            [smiles, *[name][:with_names], *row]
            for (name, smiles), row in zip(_smiles(source, args), rows, strict=True)
        ),
        sign,
    )


def _sdf(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    Chem = import_rdkit()
    names, rows = _columns(source, args, with_titles=False)
    if source.form == "sdf":
        read = _molfiles(source, True)
    else:
        read = ((name, Chem.MolFromSmiles(x)) for name, x in _smiles(source, args))
    for (name, molecule), row in zip(read, rows, strict=True):
        molecule.SetProp("_Name", " ".join(name.split()))
        out = [Chem.MolToMolBlock(molecule, forceV3000=_is_large(molecule))]
        for key, value in zip(names, row, strict=True):
            if value:
                # An empty line would end the value, and others begin something new.
                lines = [
                    " " * line.startswith((">", "$$$$")) + line
                    for line in value.splitlines()
                    if line.strip()
                ]
                out.append(f"> <{' '.join(key.split())}>\n" + "\n".join(lines) + "\n\n")
        yield "".join([*out, "$$$$\n"])


def _is_large(molecule: Any) -> bool:
    """Whether the columns of the old form of molfiles are too narrow for it."""
    return bool(max(molecule.GetNumAtoms(), molecule.GetNumBonds()) > 999)


_FORMS = {"smi": _smi, "csv": _csv, "sdf": _sdf}
