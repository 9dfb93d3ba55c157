"""Molecules in tables."""

from __future__ import annotations

import csv
import io
import sys
import threading
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import OnError
from kestro._atoms import import_rdkit
from kestro._conversion import Text, Unread, convert_smiles
from kestro._database import GraphDatabase
from kestro._errors import KestroError, printable
from kestro._files import Source, drop_blank_end, read_text
from kestro._molecules import atom_labels, convert, smiles_text
from kestro._packing import Packer

if TYPE_CHECKING:
    import pandas as pd

# The longest cell that csv takes is a setting of the process.
_LIMIT = threading.Lock()


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
        records that can be read, nor are empty ones but at the end, nor those
        with a quote that is not closed or has more behind it: of such a row
        the first line is one record, and reading goes on in the next.

    Returns
    -------
    GraphDatabase
        Of molecules, with the other columns in ``table``, typed as
        ``pandas.read_csv`` does by the rows of the graphs alone; in columns of
        text just the empty cells are missing, NA is a text; but where a column
        holds nothing else than such words, all of it is missing.  Bytes that are
        no UTF-8 stand there as in ``\\xe9``.  ``source`` counts the rows below the
        names from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        When there is no such column, or two of a name, and for what is no
        molecule; with path and line.
    OSError
        When the file cannot be read.

    Examples
    --------
    >>> import io, kestro
    >>> db = kestro.from_csv(io.StringIO("smiles,class\nCCO,1\nCO,0\n"))
    >>> db.table["class"].tolist()
    [1, 0]
    """
    labels = atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    text, name = read_text(source)
    rows = _read_rows(text, delimiter)
    names = _names(rows, smiles_column, name)
    del rows[:1]
    at = names.index(smiles_column)
    texts = [_smiles(row, at, len(names)) for row in rows]
    packer = Packer(on_error, name, [row.line for row in rows])
    convert(convert_smiles, texts, labels, n_jobs, packer)

    def table(source: NDArray[np.int64]) -> pd.DataFrame:
        kept = [rows[record].cells for record in source.tolist()]
        return _table([x[:at] + x[at + 1 :] for x in (names, *kept)])

    return packer.build(labels, table)


class _Row(NamedTuple):
    line: int  # where it begins
    cells: list[str]
    fault: str = ""


def _read_rows(text: str, delimiter: str) -> list[_Row]:
    lines = list(io.StringIO(text, newline=""))
    drop_blank_end(lines)
    with _LIMIT:
        usual = csv.field_size_limit(sys.maxsize)
        try:
            return list(_rows(lines, delimiter))
        finally:
            csv.field_size_limit(usual)


def _rows(lines: list[str], delimiter: str) -> Iterator[_Row]:
    """Yield the rows; one whose quotes are wrong ends with its first line.

    A quote that is not closed would swallow all rows behind it.
    """
    first = 0
    while first < len(lines):
        rest = map(lines.__getitem__, range(first, len(lines)))
        reader = csv.reader(rest, delimiter=delimiter, strict=True)
        read = 0
        try:
            for cells in reader:
                yield _Row(first + read + 1, cells)
                read = reader.line_num
            return
        except csv.Error as e:
            yield _Row(first + read + 1, [], f"a row with wrong quotes: {e}")
            first += read + 1


def _names(rows: list[_Row], smiles_column: str, path: str) -> list[str]:
    """Return the names of the columns."""
    if rows and rows[0].fault:
        raise KestroError(rows[0].fault, path or None, 1)
    if not rows:
        raise KestroError("the file is empty", path or None)
    names = rows[0].cells
    if not names:
        raise KestroError("the row with the names of columns is empty", path or None, 1)
    if names.count(smiles_column) != 1:
        raise KestroError(
            f"{names.count(smiles_column)} columns are named {smiles_column!r}; "
            f"the names are {', '.join(map(repr, names))}",
            path or None,
            1,
        )
    return names


def _smiles(row: _Row, at: int, width: int) -> Text:
    if row.fault:
        return Unread(row.fault)
    if len(row.cells) == width:
        return smiles_text(row.cells[at])
    if not row.cells:
        return Unread("an empty row")
    return Unread(f"a row of {len(row.cells)} cells, where the first one has {width}")


def _table(rows: list[list[str]]) -> pd.DataFrame:
    """Return rows below their names, typed by pandas.

    In a column of texts NA and None are texts, as of elements and people.
    """
    import pandas as pd

    names = rows[0]
    if not names:
        return pd.DataFrame(index=range(len(rows) - 1))
    text = io.StringIO()
    csv.writer(text).writerows(rows)
    written = printable(text.getvalue())

    def read(**how: Any) -> pd.DataFrame:
        return pd.read_csv(
            io.StringIO(written),
            skip_blank_lines=False,
            index_col=False,
            low_memory=False,
            **how,
        )

    table = read()
    are_texts = [
        pd.api.types.infer_dtype(table.iloc[:, i], skipna=True) == "string"
        for i in range(len(names))
    ]
    if any(are_texts):
        texts = read(dtype=str, keep_default_na=False, na_values=[""])
        for i in np.flatnonzero(are_texts).tolist():
            table.isetitem(i, texts.iloc[:, i])
    return table
