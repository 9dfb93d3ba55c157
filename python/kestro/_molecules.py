"""Molecules, read by RDKit."""

from __future__ import annotations

import os
import re
from collections.abc import Callable, Iterable, Sequence
from contextlib import closing
from typing import Any

from kestro._arguments import OnError, job_count
from kestro._atoms import import_rdkit
from kestro._conversion import Converter, Text, Unread, convert_smiles, query_reason
from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import printable
from kestro._files import Source, drop_blank_end, is_source, lines_of, read_text
from kestro._packing import Packed, Packer
from kestro._workers import in_order

_CHUNK = 500  # records that a process converts in one go
# What RDKit takes for more of the molecule behind white space, not for a name.
_EXTENSION = re.compile(r"\|[^|\n\r]*\|")


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
    <GraphDatabase: 1 molecule>
    """
    labels = atom_labels(charge, hydrogens, chirality)
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
        it may be a pipe or compressed by gzip.  A single str is a path.  In
        a file blank lines at the end are no records.  A SMILES by itself has
        no white space in it but in front of an extension, as in ``C |^1:0|``.
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
        database is the same for any number.  As processes have to
        start and to hand over what they made, it pays for large files only.
    on_error : {"raise", "skip"}
        With "skip", molecules that cannot be read are left out and listed in
        ``skipped``; so are those with bonds of another kind.  A dative bond is
        one: it has a direction, which edges have not.  Where nothing is left,
        a `UserWarning` says so.

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
        For what is no molecule, with path and line where it is a file's.
    OSError
        When the file cannot be read.

    Examples
    --------
    >>> import kestro
    >>> db = kestro.from_smiles(["c1ccccc1", "CC(=O)[O-]"], charge=True)
    >>> db[1].vertex_labels
    ('C', 'C', 'O', 'O-1')
    """
    labels = atom_labels(charge, hydrogens, chirality)
    import_rdkit()
    if is_source(source):
        texts, name = _first_words(source)
        packer = Packer(on_error, name, range(1, len(texts) + 1))
    else:
        texts = [smiles_text(x) for x in source]  # type: ignore[union-attr]
        packer = Packer(on_error)
    convert(convert_smiles, texts, labels, n_jobs, packer)
    return packer.build(labels)


def atom_labels(charge: bool, hydrogens: bool, chirality: bool) -> AtomLabels:
    """Return what labels are to tell; raise for what they cannot."""
    if chirality:
        raise ValueError(
            "chirality cannot be mined: it is the order of an atom's neighbours, "
            "and labels tell of single atoms and bonds"
        )
    return AtomLabels(charge=bool(charge), hydrogens=bool(hydrogens))


def convert(
    function: Callable[[int, Sequence[Text], AtomLabels], Packed],
    texts: Sequence[Text],
    labels: AtomLabels,
    n_jobs: int | None,
    packer: Packer,
) -> None:
    """Pack the molecules of texts, whose numbers are those of the records."""
    tasks = [
        (first, texts[first : first + _CHUNK], labels)
        for first in range(0, len(texts), _CHUNK)
    ]
    jobs = max(1, min(job_count(n_jobs), len(tasks)))
    # Closed at once where something is raised: that ends the processes.
    with closing(in_order(function, tasks, jobs)) as parts:
        for packed in parts:
            packer.extend(packed)


def smiles_text(smiles: object) -> Text:
    """Return the SMILES, or why there is none.

    RDKit takes what follows white space for a name, and a molecule that stands
    there would be lost.
    """
    if not isinstance(smiles, str):
        return Unread(f"a SMILES is a str, not {smiles!r}")
    words = smiles.split(maxsplit=1)
    if len(words) > 1 and not _EXTENSION.fullmatch(words[1].rstrip()):
        return Unread(f"a SMILES with white space in it: {smiles!r}")
    if not smiles.isascii() and printable(smiles) != smiles:
        return Unread(f"a SMILES with bytes that are no UTF-8: {smiles!r}")
    return str(smiles).strip()


def _first_words(source: Source) -> tuple[list[Text], str]:
    text, name = _read(source)
    lines = lines_of(text)
    drop_blank_end(lines)
    return [smiles_text((line.split(maxsplit=1) or [""])[0]) for line in lines], name


def _read(source: Source) -> tuple[str, str]:
    try:
        return read_text(source)
    except FileNotFoundError as e:
        if not isinstance(source, str) or _looks_like_a_path(source):
            raise
        hint = f"{e.strerror}; a SMILES is handed over in a list, as [{source!r}]"
        raise FileNotFoundError(e.errno, hint, source) from None


def _looks_like_a_path(text: str) -> bool:
    return "/" in text or bool(os.path.splitext(text)[1])
