"""Molecules, read by RDKit."""

from __future__ import annotations

import csv
import io
from collections.abc import Callable, Iterable, Iterator, Sequence
from typing import TYPE_CHECKING, Any

from kestro._arguments import OnError, job_count
from kestro._atoms import import_rdkit
from kestro._conversion import (
    Converter,
    Text,
    Unread,
    convert_molfiles,
    convert_smiles,
    query_reason,
)
from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import KestroError
from kestro._files import Source, is_source, lines_of, read_text
from kestro._packing import Packed, Packer
from kestro._workers import in_order

if TYPE_CHECKING:
    import pandas as pd

_CHUNK = 500  # records that a process converts in one go
_RECORD_END = "$$$$"
_MOLFILE_END = "M  END"


def from_rdkit(
    molecules: Iterable[Any],
    *,
    charge: bool = False,
    hydrogens: bool = False,
    chirality: bool = False,
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of RDKit's molecules, which are taken as they are.

    Parameters
    ----------
    molecules : iterable of rdkit.Chem.Mol
        None, which RDKit's readers give for what they cannot read, is refused;
        so are queries, as made from SMARTS.
    charge, hydrogens, chirality, on_error
        As for `from_smiles`.

    Returns
    -------
    GraphDatabase
        Of molecules; ``source`` counts them from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        For what is no molecule, and for bonds without a label.

    Examples
    --------
    >>> import kestro
    >>> from rdkit import Chem
    >>> kestro.from_rdkit([Chem.MolFromSmiles("CCO")])
    <GraphDatabase: 1 molecules>
    """
    labels = _atom_labels(charge, hydrogens, chirality)
    Chem = import_rdkit()
    packer = Packer(on_error)
    converter = Converter(packer, labels)
    for record, molecule in enumerate(molecules):
        if molecule is None:
            reason: str | None = "no molecule: None, as of what RDKit cannot read"
        elif not isinstance(molecule, Chem.Mol):
            reason = f"no molecule of RDKit's: {molecule!r}"
        else:
            reason = query_reason(molecule)
        if reason:
            packer.refuse(record, reason)
        else:
            converter.add(record, molecule)
    converter.finish()
    return packer.build(labels)


def from_smiles(
    source: Iterable[str] | Source,
    *,
    charge: bool = False,
    hydrogens: bool = False,
    chirality: bool = False,
    n_jobs: int | None = None,
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of molecules.

    The label of an atom is its element's symbol, in lower case where RDKit
    takes the atom for aromatic; ``*`` and ``*a`` stand for an atom that may be
    any.  That of a bond is ``-``, ``=``, ``#`` or ``:``.

    Parameters
    ----------
    source : iterable of str, path or file object
        SMILES, or a file with one a line, ended by white space and anything;
        it may be a pipe or compressed by gzip.  A single str is a path.
    charge : bool
        Put the formal charge behind the symbol, as in ``N+1`` and ``O-1``.
    hydrogens : bool
        Make all hydrogens atoms of the graph.  Otherwise there are those that
        RDKit keeps as atoms, as of ``[2H]C`` and ``[H][H]``.
    chirality : bool
        Must be false: which neighbour comes first is no property of an atom or
        a bond alone, so no label could tell it.
    n_jobs : int, optional
        Processes: None is this one alone, -1 as many as there are cores.  The
        database is the same for any number.
    on_error : {"raise", "skip"}
        With "skip", molecules that cannot be read are left out and listed in
        ``skipped``; so are those with bonds of another kind.  A dative bond is
        one: it has a direction, which edges have not.

    Returns
    -------
    GraphDatabase
        Of molecules; those without a bond are among them.  ``source`` counts
        the strings or lines from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        For what is no molecule.
    OSError
        When the file cannot be read.

    Examples
    --------
    >>> import kestro
    >>> db = kestro.from_smiles(["c1ccccc1", "CC(=O)[O-]"], charge=True)
    >>> db[1].vertex_labels
    ('C', 'C', 'O', 'O-1')
    """
    labels = _atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    texts: list[Text] = (
        list(_first_words(source))
        if is_source(source)
        else [_smiles_text(smiles) for smiles in source]  # type: ignore[union-attr]
    )
    return _convert(convert_smiles, texts, labels, n_jobs, on_error).build(labels)


def from_csv(
    source: Source,
    *,
    smiles_column: str = "smiles",
    delimiter: str = ",",
    charge: bool = False,
    hydrogens: bool = False,
    chirality: bool = False,
    n_jobs: int | None = None,
    on_error: OnError = "raise",
) -> GraphDatabase:
    r"""Make a database of the molecules in a table.

    Parameters
    ----------
    source : path or file object
        Text with the columns' names in its first row; it may be a pipe or
        compressed by gzip.
    smiles_column : str
        The name of the column with the SMILES.
    delimiter : str
        What stands between columns.
    charge, hydrogens, chirality, n_jobs, on_error
        As for `from_smiles`.  Rows of another length than the first one are no
        records that can be read, nor are empty ones.

    Returns
    -------
    GraphDatabase
        Of molecules, with the other columns in ``table``, typed as
        ``pandas.read_csv`` does; bytes that are no UTF-8 stand there as in
        ``\\xe9``.  ``source`` counts the rows below the names
        from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        When there is no such column, or two of a name, and for what is no
        molecule.
    OSError
        When the file cannot be read.

    Examples
    --------
    >>> import io, kestro
    >>> db = kestro.from_csv(io.StringIO("smiles,class\nCCO,1\nCO,0\n"))
    >>> db.table["class"].tolist()
    [1, 0]
    """
    labels = _atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    text, name = read_text(source)
    try:
        rows = list(csv.reader(io.StringIO(text, newline=""), delimiter=delimiter))
    except csv.Error as e:
        raise KestroError(f"no table: {e}", name or None) from e
    names = rows[0] if rows else []
    if names.count(smiles_column) != 1:
        raise KestroError(
            f"{names.count(smiles_column)} columns are named {smiles_column!r}; "
            f"the names are {', '.join(map(repr, names))}",
            name or None,
            1,
        )
    at = names.index(smiles_column)
    texts = [_cell(row, at, len(names)) for row in rows[1:]]
    packer = _convert(convert_smiles, texts, labels, n_jobs, on_error)
    return packer.build(labels, _table(names, rows[1:], at))


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
        out, or all put in.

    Returns
    -------
    GraphDatabase
        Of molecules, with the data items of the records in ``table``, as text,
        a column per name, and the records' titles in ``title``, unless they
        have an item of that name.  ``source`` counts the records from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        For what is no molecule.
    OSError
        When the file cannot be read.
    """
    import pandas as pd

    labels = _atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    records = [_sd_record(lines) for lines in _sd_records(read_text(source)[0])]
    texts = [molfile for molfile, _ in records]
    packer = _convert(convert_molfiles, texts, labels, n_jobs, on_error)
    return packer.build(labels, pd.DataFrame([items for _, items in records]))


def _atom_labels(charge: bool, hydrogens: bool, chirality: bool) -> AtomLabels:
    if chirality:
        raise ValueError(
            "chirality cannot be mined: it is the order of an atom's neighbours, "
            "and labels tell of single atoms and bonds"
        )
    return AtomLabels(charge=bool(charge), hydrogens=bool(hydrogens))


def _convert(
    function: Callable[[int, Sequence[Text], AtomLabels, OnError], Packed],
    texts: Sequence[Text],
    labels: AtomLabels,
    n_jobs: int | None,
    on_error: OnError,
) -> Packer:
    """Return the molecules of texts, whose numbers are those of the records."""
    packer = Packer(on_error)
    tasks = [
        (first, texts[first : first + _CHUNK], labels, on_error)
        for first in range(0, len(texts), _CHUNK)
    ]
    jobs = max(1, min(job_count(n_jobs), len(tasks)))
    for packed in in_order(function, tasks, jobs):
        packer.extend(packed)
    return packer


def _smiles_text(smiles: object) -> Text:
    if isinstance(smiles, str):
        return str(smiles)
    return Unread(f"a SMILES is a str, not {smiles!r}")


def _first_words(source: Source) -> Iterator[str]:
    for line in lines_of(read_text(source)[0]):
        words = line.split(maxsplit=1)
        yield words[0] if words else ""


def _cell(row: list[str], at: int, width: int) -> Text:
    if len(row) == width:
        return row[at]
    if not row:
        return Unread("an empty row")
    return Unread(f"a row of {len(row)} cells, where the first one has {width}")


def _table(names: list[str], rows: list[list[str]], left_out: int) -> pd.DataFrame:
    """Return the other columns, with cells of nothing where a row is no record."""
    import pandas as pd

    def others(row: list[str]) -> list[str]:
        return row[:left_out] + row[left_out + 1 :]

    if len(names) == 1:
        return pd.DataFrame(index=range(len(rows)))
    text = io.StringIO()
    writer = csv.writer(text)
    writer.writerow(others(names))
    nothing = [""] * len(names)
    writer.writerows(others(row if len(row) == len(names) else nothing) for row in rows)
    return pd.read_csv(
        io.StringIO(_valid(text.getvalue())), skip_blank_lines=False, index_col=False
    )


def _valid(text: str) -> str:
    """Return the text with bytes that are no UTF-8 written out, as tables need."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "backslashreplace")


def _sd_records(text: str) -> Iterator[list[str]]:
    record: list[str] = []
    for line in lines_of(text):
        if line.startswith(_RECORD_END):
            yield record
            record = []
        else:
            record.append(line)
    # Only the last one may lack its end; empty lines are none.
    if any(line.strip() for line in record):
        yield record


def _sd_record(lines: list[str]) -> tuple[Text, dict[str, str]]:
    """Return the molfile and the data items of a record."""
    ends = [i for i, line in enumerate(lines) if line.startswith(_MOLFILE_END)]
    if not ends:
        return Unread(f"the record has no line {_MOLFILE_END!r}"), {}
    items = {"title": lines[0].strip()}
    items.update(_data_items(lines[ends[0] + 1 :]))
    items = {_valid(name): _valid(value) for name, value in items.items()}
    return "\n".join(lines[: ends[0] + 1]) + "\n", items


def _data_items(lines: list[str]) -> Iterator[tuple[str, str]]:
    """Yield names and values: "> <name>", lines of the value, an empty line."""
    name = None
    value: list[str] = []
    for line in [*lines, ""]:
        if name is None:
            if line.startswith(">") and "<" in line:
                name = line[line.index("<") + 1 :].rpartition(">")[0]
        elif line.strip():
            value.append(line)
        else:
            yield name, "\n".join(value)
            name, value = None, []
