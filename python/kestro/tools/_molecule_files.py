"""Molecules from one format of molecules into another, with all that they have.

Labels tell elements and bonds alone, so each molecule that was read is taken from
the text of its record once more.  SMILES stay as they are written.
"""

from __future__ import annotations

import argparse
from collections.abc import Iterator
from typing import Any

from kestro._atoms import import_rdkit
from kestro._csv import _read_rows
from kestro._files import lines_of, read_text
from kestro._sdf import _records
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
    records = list(_records(read_text(source.again())[0]))
    for record in source.db.source.tolist():
        title = records[record].items.get("title", "")
        yield (
            title,
            Chem.MolFromMolBlock(records[record].molfile, removeHs=not hydrogens),
        )


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
    at = rows[0].cells.index(args.smiles_column)
    for record in kept:
        yield "", rows[record + 1].cells[at].strip()


def _columns(
    source: _reading.Input, args: argparse.Namespace
) -> tuple[list[str], list[list[str]]]:
    """Return the names of the columns beside the molecules, and their rows.

    Of text they are the text that was read: 007 is no 7.0.
    """
    kept = source.db.source.tolist()
    if source.form == "csv":
        sign = delimiter_of(source.name, args.delimiter)
        rows = [row.cells for row in _read_rows(read_text(source.again())[0], sign)]
        at = rows[0].index(args.smiles_column)
        names, *values = (
            [*cells[:at], *cells[at + 1 :]]
            for cells in (rows[0], *(rows[record + 1] for record in kept))
        )
        return names, values
    if source.form == "sdf" and source.db.table is not None:
        records = list(_records(read_text(source.again())[0]))
        names = [str(x) for x in source.db.table.columns]
        return names, [[records[i].items.get(x, "") for x in names] for i in kept]
    table = source.db.table
    if table is None:
        return [], [[] for _ in range(len(source.db))]
    texts = table.astype(object).where(table.notna(), "")
    return [str(x) for x in table.columns], [
        [str(cell) for cell in row] for row in texts.itertuples(index=False, name=None)
    ]


def _smi(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    for name, smiles in _smiles(source, args):
        flat = " ".join(name.split())
        yield f"{smiles}\t{flat}\n" if flat else f"{smiles}\n"


def _csv(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    names, rows = _columns(source, args)
    has_names = source.form == "smi"
    sign = delimiter_of(args.output, None)
    yield from _writing.csv_lines([["smiles", *["name"][:has_names], *names]], sign)
    yield from _writing.csv_lines(
        (
            [smiles, *[name][:has_names], *row]
            for (name, smiles), row in zip(_smiles(source, args), rows, strict=True)
        ),
        sign,
    )


def _sdf(source: _reading.Input, args: argparse.Namespace) -> Iterator[str]:
    Chem = import_rdkit()
    names, rows = _columns(source, args)
    if source.form == "sdf":
        read = _molfiles(source, True)
    else:
        read = ((name, Chem.MolFromSmiles(x)) for name, x in _smiles(source, args))
    for (name, molecule), row in zip(read, rows, strict=True):
        molecule.SetProp("_Name", " ".join(name.split()))
        out = [Chem.MolToMolBlock(molecule, forceV3000=_is_large(molecule))]
        for key, value in zip(names, row, strict=True):
            if value and not (source.form == "sdf" and key == "title"):
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
