#!/usr/bin/env python3
"""Write molecules.txt, kestro's example database, from molecules.smi.

Each line of molecules.smi holds a SMILES string, a name and a molecular
formula.  The SMILES is read into a graph of heavy atoms and bonds, the
hydrogens it leaves unsaid are counted from the valences, and the sum must be
the formula; a wrong atom, bond or ring closure nearly always breaks it.
Nothing is written unless every molecule passes.

Usage: python3 make_molecules.py
"""

import re
import sys
from collections import Counter
from dataclasses import dataclass, field
from pathlib import Path

HERE = Path(__file__).resolve().parent

# The valences an unbracketed atom may have; hydrogens fill up to the first
# that is large enough.
VALENCES = {
    "C": (4,), "N": (3, 5), "O": (2,), "P": (3, 5), "S": (2, 4, 6),
    "F": (1,), "Cl": (1,), "Br": (1,),
}  # fmt: skip

BOND_SYMBOLS = {"-": "s", "=": "d", "#": "t"}
BOND_ORDERS = {"s": 1, "d": 2, "t": 3, "a": 1}  # an aromatic bond's sigma part

TOKEN = re.compile(
    r"\[(?P<symbol>Cl|Br|[CNOPSF]|[cnops])(?P<h>H\d?)?(?P<charge>[+-])?\]"
    r"|(?P<atom>Cl|Br|[CNOPSF]|[cnops])"
    r"|(?P<bond>[-=#])|(?P<ring>\d)|(?P<open>\()|(?P<close>\))"
)

HEADER = """\
# kestro's example database: {count} well-known small molecules, one per
# transaction: the amino acids of proteins, messengers, vitamins, medicines.
# Vertices are the heavy atoms, labelled with their element (hydrogens are left
# out); edges are the bonds: s single, d double, t triple, a aromatic.
# Charges and stereochemistry are not coded.  The comment under each "t" line
# gives the name and the molecular formula, hydrogens included.
# Made by make_molecules.py from molecules.smi; edit that file, not this one.
# MIT licence, as all of kestro.
"""


class MoleculeError(Exception):
    """A line of molecules.smi that is malformed or contradicts itself."""


@dataclass
class Atom:
    element: str
    aromatic: bool
    charge: int = 0
    hydrogens: int | None = None  # None: to be counted from the valence


@dataclass
class Molecule:
    atoms: list[Atom] = field(default_factory=list)
    bonds: dict[tuple[int, int], str] = field(default_factory=dict)

    def add_bond(self, a: int, b: int, label: str | None) -> None:
        """Join two atoms; an unwritten bond is aromatic or single."""
        edge = (min(a, b), max(a, b))
        if a == b or edge in self.bonds:
            raise MoleculeError(f"atoms {a} and {b} are joined twice")
        if label is None:
            both = self.atoms[a].aromatic and self.atoms[b].aromatic
            label = "a" if both else "s"
        self.bonds[edge] = label

    def bond_labels(self, atom: int) -> list[str]:
        return [label for edge, label in self.bonds.items() if atom in edge]


def make_atom(token: re.Match[str]) -> Atom:
    """The atom a token stands for; only brackets state hydrogens and charge."""
    symbol = token["symbol"] or token["atom"]
    atom = Atom(symbol.capitalize(), symbol.islower())
    if token["symbol"]:
        atom.hydrogens = int(token["h"][1:] or 1) if token["h"] else 0
        atom.charge = {"+": 1, "-": -1, None: 0}[token["charge"]]
    return atom


def parse_smiles(smiles: str) -> Molecule:
    """Read a SMILES string; atoms are numbered in the order written."""
    molecule = Molecule()
    rings: dict[str, tuple[int, str | None]] = {}  # digit -> atom, bond
    branches: list[int] = []
    previous: int | None = None
    bond: str | None = None
    at = 0
    while at < len(smiles):
        token = TOKEN.match(smiles, at)
        if not token:
            raise MoleculeError(f"unknown SMILES text '{smiles[at:]}'")
        at = token.end()
        if token["bond"]:
            bond = BOND_SYMBOLS[token["bond"]]
            continue
        if token["symbol"] or token["atom"]:
            molecule.atoms.append(make_atom(token))
            atom = len(molecule.atoms) - 1
            if previous is not None:
                molecule.add_bond(previous, atom, bond)
            elif bond:
                raise MoleculeError("a SMILES must begin with an atom")
            previous = atom
        elif previous is None:
            raise MoleculeError("a SMILES must begin with an atom")
        elif token["ring"] in rings:
            start, start_bond = rings.pop(token["ring"])
            molecule.add_bond(start, previous, bond or start_bond)
        elif token["ring"]:
            rings[token["ring"]] = (previous, bond)
        elif token["open"]:
            branches.append(previous)
        elif branches:
            previous = branches.pop()
        else:
            raise MoleculeError("unbalanced ')'")
        bond = None
    if rings or branches or bond:
        raise MoleculeError("a ring, branch or bond is left open")
    return molecule


def count_hydrogens(molecule: Molecule, index: int) -> int:
    """Hydrogens on one atom, as stated in brackets or left by its valence."""
    atom = molecule.atoms[index]
    if atom.hydrogens is not None:
        return atom.hydrogens
    used = sum(BOND_ORDERS[label] for label in molecule.bond_labels(index))
    for valence in VALENCES[atom.element]:
        if valence >= used:
            # An aromatic atom gives one electron more to the ring's pi system
            # if it has one to spare: c and n, not c=O, substituted n, o or s.
            return max(valence - used - atom.aromatic, 0)
    raise MoleculeError(f"atom {index} ({atom.element}) has valence {used}")


def hill_formula(molecule: Molecule) -> str:
    """The formula with hydrogens: C, H, the rest by name, then the charge."""
    count = Counter(atom.element for atom in molecule.atoms)
    count["H"] = sum(
        count_hydrogens(molecule, i) for i in range(len(molecule.atoms))
    )
    order = ["C", "H", *sorted(count.keys() - {"C", "H"})]
    parts = [
        e + (str(count[e]) if count[e] > 1 else "") for e in order if count[e]
    ]
    charge = sum(atom.charge for atom in molecule.atoms)
    return "".join(parts) + ("+" if charge > 0 else "-") * abs(charge)


def reaches(edges: list[tuple[int, int]], start: int, goal: int) -> bool:
    """Whether the edges hold a path from start to goal."""
    seen, todo = {start}, [start]
    while todo:
        at = todo.pop()
        for a, b in edges:
            if at in (a, b) and a + b - at not in seen:
                seen.add(a + b - at)
                todo.append(a + b - at)
    return goal in seen


def check_aromatic_rings(molecule: Molecule) -> None:
    """Each aromatic bond must lie on a ring of aromatic bonds.

    This catches two aromatic rings whose link was written without "-".
    """
    aromatic = [edge for edge, label in molecule.bonds.items() if label == "a"]
    for edge in aromatic:
        others = [other for other in aromatic if other != edge]
        if not reaches(others, *edge):
            raise MoleculeError(
                f"aromatic bond {edge} lies on no aromatic ring"
            )
    for index, atom in enumerate(molecule.atoms):
        if atom.aromatic and "a" not in molecule.bond_labels(index):
            raise MoleculeError(f"aromatic atom {index} lies on no ring")


def read_molecule(line: str) -> tuple[Molecule, str, str]:
    """One line of molecules.smi, checked: molecule, name and formula."""
    fields = line.split("\t")
    if len(fields) != 3:
        raise MoleculeError("expected SMILES, name and formula between tabs")
    smiles, name, formula = fields
    molecule = parse_smiles(smiles)
    check_aromatic_rings(molecule)
    found = hill_formula(molecule)
    if found != formula:
        raise MoleculeError(f"{name} is {formula}, but {smiles} is {found}")
    return molecule, name, formula


def transaction_lines(tid: int, molecule: Molecule, title: str) -> list[str]:
    lines = [f"t # {tid}", f"# {title}"]
    lines += [f"v {i} {atom.element}" for i, atom in enumerate(molecule.atoms)]
    lines += [
        f"u {a} {b} {label}" for (a, b), label in sorted(molecule.bonds.items())
    ]
    return lines


def main() -> int:
    transactions: list[str] = []
    count = 0
    source = HERE / "molecules.smi"
    for number, line in enumerate(source.read_text().splitlines(), start=1):
        if line.startswith("#"):
            continue
        try:
            molecule, name, formula = read_molecule(line)
        except MoleculeError as error:
            print(f"{source.name}:{number}: {error}", file=sys.stderr)
            return 1
        transactions += transaction_lines(count, molecule, f"{name}, {formula}")
        count += 1
    text = HEADER.format(count=count) + "\n".join(transactions) + "\n"
    (HERE / "molecules.txt").write_text(text)
    print(f"molecules.txt: {count} molecules, every formula as expected")
    return 0


if __name__ == "__main__":
    sys.exit(main())
