"""Which format a file has: what ``--from`` tells, else its extension.

An extension that is none of those known means transactions, which have none of
their own; a file that does not look like them is refused with the choices.
"""

from __future__ import annotations

import re
from pathlib import Path

from kestro._csv import _read_rows
from kestro._errors import KestroError
from kestro._files import plain_name, read_bytes, read_text
from kestro.tools._source import STDIN, Again
from kestro.tools._status import UsageError

MOLECULES = ("smi", "sdf", "csv")
FORMATS = (*MOLECULES, "tu", "graphml", "parquet", "transactions")
NO_TRANSACTIONS = "no transaction file: no line begins a graph, as 't # 0' does"
_SUFFIXES = {
    ".smi": "smi",
    ".smiles": "smi",
    ".sdf": "sdf",
    ".sd": "sdf",
    ".csv": "csv",
    ".tsv": "csv",
    ".graphml": "graphml",
    ".parquet": "parquet",
}
# A line that begins a graph, is a vertex or an edge; more is read, but a file of
# transactions has at least one of these.
_LINE = re.compile(
    rb"^[ \t]*(?:t[ \t]*(?:#|\r?$)|t[ \t]+-?\d|v[ \t]+-?\d+[ \t]+\S"
    rb"|[ude][ \t]+-?\d+[ \t]+-?\d+(?:[ \t]|\r?$))",
    re.MULTILINE | re.IGNORECASE,
)


def format_of(name: str, told: str | None) -> str:
    """Return the format of a file.

    Raises
    ------
    UsageError
        Where nothing tells it.
    """
    if told:
        return told
    if name == STDIN:
        raise UsageError("--from must tell the format of standard input")
    if Path(name).is_dir():
        return "tu"
    return _SUFFIXES.get(_suffix(name), "transactions")


def _suffix(name: str) -> str:
    return Path(plain_name(name)).suffix.lower()


def delimiter_of(name: str, told: str | None) -> str:
    r"""Return the sign between columns; ``\t`` is a tab, as of .tsv files."""
    if told is None:
        return "\t" if _suffix(name) == ".tsv" else ","
    sign = told.replace("\\t", "\t")
    if len(sign) != 1 or sign in '"\r\n':
        raise UsageError(f"--delimiter must be one sign, not {told!r}")
    return sign


def is_transactions(data: bytes) -> bool:
    r"""Whether there is a line of a graph, or nothing at all.

    Examples
    --------
    >>> from kestro.tools._formats import is_transactions
    >>> is_transactions(b"t # 0\nv 0 C\n"), is_transactions(b"smiles\nCCO\n")
    (True, False)
    """
    return not data.strip() or bool(_LINE.search(data))


def check_transactions(again: Again, name: str, told: str | None) -> None:
    """Raise where a file does not look like transactions; say what it may be.

    Raises
    ------
    KestroError
        With the choices there are.
    """
    data, _ = read_bytes(again())
    if is_transactions(data):
        return
    text = NO_TRANSACTIONS
    if not told and name != STDIN:
        extension = _suffix(name)
        of = f"the extension {extension} tells" if extension else "no extension tells"
        others = ", ".join(FORMATS[:-1])
        text += f"; {of} no other format, --from does: {others}"
    raise KestroError(text, name)


def check_column(again: Again, name: str, column: str, sign: str) -> None:
    """Raise where a table does not have the column with the SMILES.

    Raises
    ------
    KestroError
        With the columns there are.
    """
    rows = _read_rows(read_text(again())[0], sign)
    if not rows or rows[0].fault or rows[0].cells.count(column) == 1:
        return
    names = rows[0].cells
    hint = "--smiles-column names the one with the SMILES"
    if len(names) == 1:
        others = [x for x in (";", "\t", ",", "|") if x in names[0]]
        hint += "".join(f", --delimiter {x!r} what is between" for x in others[:1])
    count = names.count(column)
    there = f"{count} columns are" if count else "no column is"
    raise KestroError(
        f"{there} named {column!r}; there are {', '.join(map(repr, names))}; {hint}",
        name,
        1,
    )
