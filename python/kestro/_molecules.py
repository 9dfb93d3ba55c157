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
    converter = _Converter(packer, charge=charge)
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
            converter.add(record, molecule)
    return packer.build("molecules")


class _Converter:
    """Packs molecules; each kind of atom and bond is put into words once.

    Atoms and bonds are asked for by number, which costs half of walking them.
    """

    def __init__(self, packer: Packer, *, charge: bool) -> None:
        from rdkit import Chem

        self._packer = packer
        self._charge = charge
        self._symbol = Chem.GetPeriodicTable().GetElementSymbol
        self._atoms: dict[tuple[int, bool, int], int] = {}
        self._bonds = {
            bond: packer.edge_label(_BONDS[name])
            for name, bond in Chem.BondType.names.items()
            if name in _BONDS
        }

    def add(self, record: int, molecule: Any) -> None:
        atoms = []
        atom_at = molecule.GetAtomWithIdx
        for i in range(molecule.GetNumAtoms()):
            atom = atom_at(i)
            charge = atom.GetFormalCharge() if self._charge else 0
            kind = atom.GetAtomicNum(), atom.GetIsAromatic(), charge
            label = self._atoms.get(kind)
            atoms.append(self._new_kind(kind) if label is None else label)
        ends = []
        bonds = []
        bond_at = molecule.GetBondWithIdx
        for i in range(molecule.GetNumBonds()):
            bond = bond_at(i)
            label = self._bonds.get(bond.GetBondType())
            if label is None:
                return self._packer.refuse(record, _bond_reason(bond))
            ends.append(bond.GetBeginAtomIdx())
            ends.append(bond.GetEndAtomIdx())
            bonds.append(label)
        return self._packer.add_packed(record, atoms, ends, bonds)

    def _new_kind(self, kind: tuple[int, bool, int]) -> int:
        number, aromatic, charge = kind
        symbol = "*" if number == 0 else str(self._symbol(number))
        text = symbol.lower() if aromatic else symbol
        text += f"{charge:+d}" if charge else ""
        return self._atoms.setdefault(kind, self._packer.vertex_label(text))


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
