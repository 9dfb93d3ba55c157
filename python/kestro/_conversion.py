"""Molecules of RDKit's, packed.

RDKit answers one question per call, and a call costs as much as the parsing of
some atoms.  So atoms are asked one by one, but bonds all at once, by the
adjacency matrix of the molecule.
"""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy as np

from kestro._arguments import OnError
from kestro._atoms import BONDS, atom_label, import_rdkit
from kestro._database import AtomLabels
from kestro._packing import Packed, Packer

_DIRECTED = ("DATIVE", "DATIVEL", "DATIVER", "DATIVEONE")
# Bonds per entry of RDKit's adjacency matrix.
_ORDERS = {1.0: "-", 1.5: ":", 2.0: "=", 3.0: "#"}
# The matrix has atoms times atoms entries: for more it costs more than calls do.
_MATRIX_ATOMS = 250


class Unread(NamedTuple):
    """What stands where a molecule should, and is none."""

    reason: str


Text = str | Unread


class Converter:
    """Puts molecules into a packer; each kind of atom is put into words once."""

    def __init__(self, packer: Packer, labels: AtomLabels) -> None:
        self._chem = import_rdkit()
        self._packer = packer
        self._labels = labels
        self._kinds: dict[tuple[int, bool, int], int] = {}
        ids = {text: packer.edge_label(text) for text in BONDS.values()}
        names = self._chem.BondType.names
        self._bonds = {names[name]: ids[text] for name, text in BONDS.items()}
        # Twice the entry of the matrix gives the bond's label.
        self._orders = np.zeros(7, np.intc)
        for order, text in _ORDERS.items():
            self._orders[int(2 * order)] = ids[text]
        # The entries of other bonds may be the same, or nought.
        self._other_bond = self._chem.MolFromSmarts("*!-!=!#!:*")

    def add(self, record: int, molecule: Any) -> None:
        """Add a molecule as it is, or refuse it."""
        if self._labels.hydrogens:
            molecule = self._chem.AddHs(molecule)
        atoms = self._atoms(molecule)
        if len(atoms) <= _MATRIX_ATOMS:
            if not molecule.HasSubstructMatch(self._other_bond):
                ends, bonds = self._matrix(molecule)
                return self._packer.add_packed(record, atoms, ends, bonds)
        return self._add_bond_by_bond(record, molecule, atoms)

    def _atoms(self, molecule: Any) -> list[int]:
        labels = []
        atom_at = molecule.GetAtomWithIdx
        for i in range(molecule.GetNumAtoms()):
            atom = atom_at(i)
            charge = atom.GetFormalCharge() if self._labels.charge else 0
            kind = atom.GetAtomicNum(), atom.GetIsAromatic(), charge
            label = self._kinds.get(kind)
            labels.append(self._new_kind(kind) if label is None else label)
        return labels

    def _matrix(self, molecule: Any) -> tuple[list[int], list[int]]:
        """Return ends and labels of bonds, all of which have a label."""
        matrix = self._chem.GetAdjacencyMatrix(molecule, True, force=True)
        rows, columns = np.triu(matrix).nonzero()
        labels = self._orders[(2 * matrix[rows, columns]).astype(np.intp)]
        return np.column_stack((rows, columns)).ravel().tolist(), labels.tolist()

    def _add_bond_by_bond(self, record: int, molecule: Any, atoms: list[int]) -> None:
        ends = []
        labels = []
        bond_at = molecule.GetBondWithIdx
        for i in range(molecule.GetNumBonds()):
            bond = bond_at(i)
            label = self._bonds.get(bond.GetBondType())
            if label is None:
                return self._packer.refuse(record, _bond_reason(bond))
            ends.append(bond.GetBeginAtomIdx())
            ends.append(bond.GetEndAtomIdx())
            labels.append(label)
        return self._packer.add_packed(record, atoms, ends, labels)

    def _new_kind(self, kind: tuple[int, bool, int]) -> int:
        return self._kinds.setdefault(
            kind, self._packer.vertex_label(atom_label(*kind))
        )


def _bond_reason(bond: Any) -> str:
    name = str(bond.GetBondType())
    where = f"between atoms {bond.GetBeginAtomIdx()} and {bond.GetEndAtomIdx()}"
    if name in _DIRECTED:
        return f"the bond {where} is dative: it has a direction, which no edge has"
    return f"the bond {where} is {name.lower()}, for which there is no label"


def query_reason(molecule: Any) -> str | None:
    """Return why a molecule is a query, None when it is none."""
    for atom in molecule.GetAtoms():
        if atom.HasQuery():
            return f"atom {atom.GetIdx()} is a query: it stands for several elements"
    for bond in molecule.GetBonds():
        if bond.HasQuery():
            ends = f"{bond.GetBeginAtomIdx()} and {bond.GetEndAtomIdx()}"
            return f"the bond between atoms {ends} is a query: it stands for several"
    return None


def convert_smiles(
    first: int, texts: Sequence[Text], labels: AtomLabels, on_error: OnError
) -> Packed:
    """Pack molecules from SMILES; records are numbered from first on."""
    Chem = import_rdkit()
    from rdkit import rdBase

    packer = Packer(on_error)
    converter = Converter(packer, labels)
    parse = Chem.MolFromSmiles
    with rdBase.BlockLogs():
        for record, smiles in enumerate(texts, first):
            if isinstance(smiles, Unread):
                packer.refuse(record, smiles.reason)
                continue
            molecule = parse(smiles) if smiles.strip() else None
            if molecule is None:
                packer.refuse(record, _smiles_reason(smiles))
            else:
                converter.add(record, molecule)
    return packer.packed()


def convert_molfiles(
    first: int, texts: Sequence[Text], labels: AtomLabels, on_error: OnError
) -> Packed:
    """Pack molecules from molfiles, as the records of an SD file begin with."""
    Chem = import_rdkit()
    from rdkit import rdBase

    packer = Packer(on_error)
    converter = Converter(packer, labels)
    with rdBase.BlockLogs():
        for record, text in enumerate(texts, first):
            if isinstance(text, Unread):
                packer.refuse(record, text.reason)
                continue
            molecule = Chem.MolFromMolBlock(text)
            reason = (
                _molfile_reason(text) if molecule is None else query_reason(molecule)
            )
            if reason:
                packer.refuse(record, reason)
            else:
                converter.add(record, molecule)
    return packer.packed()


def _smiles_reason(smiles: str) -> str:
    """Return why RDKit made no molecule of it."""
    if not smiles.strip():
        return "no SMILES"
    raw = import_rdkit().MolFromSmiles(smiles, sanitize=False)
    if raw is None:
        return f"no SMILES that can be parsed: {smiles!r}"
    return _problems(raw) or f"no molecule: {smiles!r}"


def _molfile_reason(text: str) -> str:
    raw = import_rdkit().MolFromMolBlock(text, sanitize=False, removeHs=False)
    if raw is None:
        return "no molfile that can be parsed"
    return _problems(raw) or "no molecule"


def _problems(molecule: Any) -> str:
    problems = import_rdkit().DetectChemistryProblems(molecule)
    text = "; ".join(p.Message().strip() for p in problems)
    return f"no molecule: {text}" if text else ""


