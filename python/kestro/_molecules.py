"""Molecules, read by RDKit."""

from __future__ import annotations

import gzip
import os
from collections.abc import Iterable, Iterator
from typing import Any

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._packing import Packer

_BONDS = {"SINGLE": "-", "DOUBLE": "=", "TRIPLE": "#", "AROMATIC": ":"}
_DIRECTED = ("DATIVE", "DATIVEL", "DATIVER", "DATIVEONE")


def from_smiles(
    source: Iterable[str] | str | os.PathLike[str],
    *,
    charge: bool = False,
    hydrogens: bool = False,
    chirality: bool = False,
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of molecules.

    The label of an atom is its element's symbol, in lower case where RDKit
    takes the atom for aromatic; that of a bond is ``-``, ``=``, ``#`` or ``:``.

    Parameters
    ----------
    source : iterable of str, or path
        SMILES, or a file with one a line, ended by white space and anything;
        it may be compressed by gzip.  A single str is a path.
    charge : bool
        Put the formal charge behind the symbol, as in ``N+1`` and ``O-1``.
    hydrogens : bool
        Make all hydrogens atoms of the graph.  Otherwise there are those that
        RDKit keeps as atoms, as of ``[2H]C`` and ``[H][H]``.
    chirality : bool
        Must be false: which neighbour comes first is no property of an atom or
        a bond alone, so no label could tell it.
    on_error : {"raise", "skip"}
        With "skip", molecules that cannot be read are left out and listed in
        ``skipped``; so are those with bonds of another kind.  A dative bond is
        one: it has a direction, which edges have not.

    Returns
    -------
    GraphDatabase
        Of the kind "molecules"; molecules without a bond are among them.
        ``source`` counts the strings or lines from 0.

    Raises
    ------
    ImportError
        Without RDKit, which ``pip install kestro[rdkit]`` brings.
    KestroError
        For what is no molecule.
    OSError
        When the file cannot be read.
    """
    from rdkit import Chem, rdBase

    if chirality:
        raise ValueError(
            "chirality cannot be mined: it is the order of an atom's neighbours, "
            "and labels tell of single atoms and bonds"
        )
    packer = Packer(on_error)
    converter = _Converter(charge=charge)
    with rdBase.BlockLogs():
        for record, smiles in enumerate(_strings(source)):
            if not isinstance(smiles, str):
                packer.refuse(record, f"a SMILES is a str, not {smiles!r}")
                continue
            molecule = Chem.MolFromSmiles(smiles) if smiles.strip() else None
            if molecule is None:
                packer.refuse(record, _reason(smiles))
                continue
            if hydrogens:
                molecule = Chem.AddHs(molecule)
            converter.add(record, molecule, packer)
    return packer.build("molecules")


class _Converter:
    """Atoms and bonds to labels; each kind of atom is put into words once."""

    def __init__(self, *, charge: bool) -> None:
        from rdkit import Chem

        self._charge = charge
        self._symbol = Chem.GetPeriodicTable().GetElementSymbol
        self._labels: dict[tuple[int, bool, int], str] = {}
        self._bonds = {
            bond: _BONDS[name]
            for name, bond in Chem.BondType.names.items()
            if name in _BONDS
        }

    def add(self, record: int, molecule: Any, packer: Packer) -> None:
        atoms = [self._atom(atom) for atom in molecule.GetAtoms()]
        ends = []
        bonds = []
        for bond in molecule.GetBonds():
            label = self._bonds.get(bond.GetBondType())
            if label is None:
                return packer.refuse(record, _bond_reason(bond))
            ends.append((bond.GetBeginAtomIdx(), bond.GetEndAtomIdx()))
            bonds.append(label)
        return packer.add(record, atoms, ends, bonds)

    def _atom(self, atom: Any) -> str:
        charge = atom.GetFormalCharge() if self._charge else 0
        key = atom.GetAtomicNum(), atom.GetIsAromatic(), charge
        label = self._labels.get(key)
        if label is None:
            symbol = "*" if key[0] == 0 else str(self._symbol(key[0]))
            label = symbol.lower() if key[1] else symbol
            label += f"{charge:+d}" if charge else ""
            self._labels[key] = label
        return label


def _strings(source: Iterable[str] | str | os.PathLike[str]) -> Iterator[str]:
    if not isinstance(source, (str, os.PathLike)):
        yield from source
        return
    with open(source, "rb") as f:
        data = f.read()
    if data.startswith(b"\x1f\x8b"):
        data = gzip.decompress(data)
    for line in data.decode("utf-8", "surrogateescape").splitlines():
        words = line.split(maxsplit=1)
        yield words[0] if words else ""


def _bond_reason(bond: Any) -> str:
    name = str(bond.GetBondType())
    where = f"between atoms {bond.GetBeginAtomIdx()} and {bond.GetEndAtomIdx()}"
    if name in _DIRECTED:
        return f"the bond {where} is dative: it has a direction, which no edge has"
    return f"the bond {where} is {name.lower()}, for which there is no label"


def _reason(smiles: str) -> str:
    """Return why RDKit made no molecule of it."""
    from rdkit import Chem

    if not smiles.strip():
        return "no SMILES"
    raw = Chem.MolFromSmiles(smiles, sanitize=False)
    if raw is None:
        return f"no SMILES that can be parsed: {smiles!r}"
    problems = "; ".join(p.Message() for p in Chem.DetectChemistryProblems(raw))
    return f"no molecule: {problems or smiles}"
