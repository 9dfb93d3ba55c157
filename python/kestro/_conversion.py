"""Molecules of RDKit's, packed.

RDKit answers one question per call, and a call costs as much as the parsing of
some atoms.  So atoms are asked one by one, but bonds all at once, by the
adjacency matrix of the molecule.
"""

from __future__ import annotations

import re
from array import array
from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from kestro._atoms import BONDS, ELEMENTS, atom_label, import_rdkit
from kestro._database import AtomLabels
from kestro._native import Arrays
from kestro._packing import Packed, Packer

_DIRECTED = ("DATIVE", "DATIVEL", "DATIVER", "DATIVEONE")
# Entries of RDKit's adjacency matrix, and the bonds that they stand for.
_ORDERS = {"SINGLE": 1.0, "AROMATIC": 1.5, "DOUBLE": 2.0, "TRIPLE": 3.0}
_EDGE_TABLE = [BONDS[name] for name in _ORDERS]
# By twice the entry, the position in that table.
_EDGE_LABELS = np.zeros(7, np.int32)
_EDGE_LABELS[[round(2 * order) for order in _ORDERS.values()]] = range(len(_ORDERS))
# The matrix has atoms times atoms entries: for more it costs more than calls do.
_MATRIX_ATOMS = 250
# Signs in SMILES without which there are only these bonds: those of other bonds,
# of extensions, and of atoms in brackets, since RDKit makes bonds to metals dative.
_MAY_BE_OTHER = re.compile(r"[\[$~<>|]")
_CHUNK = 500  # molecules that are packed together

Bonds = tuple[NDArray[np.int64], NDArray[np.float64]]


class Unread(NamedTuple):
    """What stands where a molecule should, and is none."""

    reason: str


Text = str | Unread


class _Kinds(dict[int, int]):
    """Positions in a table of labels by kind of atom; a new kind is appended.

    A kind is a number: charge, atomic number and aromaticity.
    """

    def __init__(self) -> None:
        super().__init__()
        self.table: list[str] = []

    def __missing__(self, kind: int) -> int:
        rest, aromatic = divmod(kind, 2)
        charge, number = divmod(rest, len(ELEMENTS))
        self.table.append(atom_label(number, bool(aromatic), charge))
        return self.setdefault(kind, len(self))


class Converter:
    """Puts molecules into a packer; `finish` hands over the last of them."""

    def __init__(self, packer: Packer, labels: AtomLabels) -> None:
        self._chem = import_rdkit()
        self._packer = packer
        self._labels = labels
        self._kinds = _Kinds()
        names = self._chem.BondType.names
        self._orders = {names[name]: order for name, order in _ORDERS.items()}
        # The entries of other bonds may be the same, or zero.
        self._other_bond = self._chem.MolFromSmarts("*!-!=!#!:*")
        self._clear()

    def _clear(self) -> None:
        self._records: list[int] = []
        self._sizes: list[int] = []
        self._atoms = array("i")
        self._entries: list[NDArray[np.int64]] = []
        self._entry_orders: list[NDArray[np.float64]] = []

    def add(self, record: int, molecule: Any, usual_bonds: bool = False) -> None:
        """Add a molecule as it is, or refuse it.

        With usual_bonds it is known to have those bonds only that have labels.
        """
        if self._labels.hydrogens:
            molecule = self._chem.AddHs(molecule)
        size = molecule.GetNumAtoms()
        usual_bonds = usual_bonds or not molecule.HasSubstructMatch(self._other_bond)
        if size > _MATRIX_ATOMS or not usual_bonds:
            bonds = self._bond_by_bond(record, molecule, size)
            if bonds is None:
                return
        else:
            # Forced: RDKit keeps the matrix when a bond is changed.
            matrix = self._chem.GetAdjacencyMatrix(molecule, True, force=True).ravel()
            entries = matrix.nonzero()[0]
            bonds = entries, matrix[entries]
        self._records.append(record)
        self._sizes.append(size)
        self._add_atoms(molecule, size)
        self._entries.append(bonds[0])
        self._entry_orders.append(bonds[1])
        if len(self._records) == _CHUNK:
            self.finish()

    def _add_atoms(self, molecule: Any, size: int) -> None:
        # Functions of the class are called faster than methods.
        atom_at = molecule.GetAtomWithIdx
        number = self._chem.Atom.GetAtomicNum
        is_aromatic = self._chem.Atom.GetIsAromatic
        charge = self._chem.Atom.GetFormalCharge
        kinds = self._kinds
        add = self._atoms.append
        if self._labels.charge:
            for i in range(size):
                atom = atom_at(i)
                kind = number(atom) + len(ELEMENTS) * charge(atom)
                add(kinds[2 * kind + is_aromatic(atom)])
        else:
            for i in range(size):
                atom = atom_at(i)
                add(kinds[2 * number(atom) + is_aromatic(atom)])

    def _bond_by_bond(self, record: int, molecule: Any, size: int) -> Bonds | None:
        """Return what the matrix would hold above its diagonal."""
        entries = []
        orders = []
        bond_at = molecule.GetBondWithIdx
        for i in range(molecule.GetNumBonds()):
            bond = bond_at(i)
            order = self._orders.get(bond.GetBondType())
            if order is None:
                self._packer.refuse(record, _bond_reason(bond))
                return None
            a, b = bond.GetBeginAtomIdx(), bond.GetEndAtomIdx()
            entries.append(min(a, b) * size + max(a, b))
            orders.append(order)
        return np.array(entries, np.int64), np.array(orders, np.float64)

    def finish(self) -> None:
        """Hand all molecules over to the packer."""
        if not self._records:
            return
        counts = [len(entries) for entries in self._entries]
        molecules = np.repeat(np.arange(len(counts)), counts)
        sizes = np.array(self._sizes, np.int64)
        rows, columns = np.divmod(np.concatenate(self._entries), sizes[molecules])
        once = rows < columns  # the matrix holds each bond twice
        orders = np.concatenate(self._entry_orders)[once]
        self._packer.extend(
            Packed(
                np.array(self._records, np.int64),
                Arrays(
                    sizes,
                    np.bincount(molecules[once], minlength=len(counts)),
                    np.array(self._atoms, np.int32),
                    np.column_stack((rows[once], columns[once])),
                    _EDGE_LABELS[(2 * orders).astype(np.intp)],
                    self._kinds.table,
                    _EDGE_TABLE,
                ),
                [],
            )
        )
        self._clear()


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


def convert_smiles(first: int, texts: Sequence[Text], labels: AtomLabels) -> Packed:
    """Pack molecules from SMILES; records are numbered from first on.

    What is no molecule is skipped.
    """
    Chem = import_rdkit()
    from rdkit import rdBase

    packer = Packer("skip")
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
                converter.add(record, molecule, not _MAY_BE_OTHER.search(smiles))
    converter.finish()
    return packer.packed()


def convert_molfiles(first: int, texts: Sequence[Text], labels: AtomLabels) -> Packed:
    """Pack molecules from molfiles, as the records of an SD file begin with.

    What is no molecule is skipped.
    """
    Chem = import_rdkit()
    from rdkit import rdBase

    packer = Packer("skip")
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
    converter.finish()
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
