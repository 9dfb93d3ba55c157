"""What labels of atoms and bonds say, and how SMARTS and RDKit say it."""

from __future__ import annotations

import re
from typing import TYPE_CHECKING, Any

from kestro._database import AtomLabels, Graph, GraphDatabase

if TYPE_CHECKING:
    from collections.abc import Iterable, Iterator

# By atomic number; 0 is an atom that may be any.
ELEMENTS = (
    "* H He Li Be B C N O F Ne Na Mg Al Si P S Cl Ar K Ca Sc Ti V Cr Mn Fe Co Ni "
    "Cu Zn Ga Ge As Se Br Kr Rb Sr Y Zr Nb Mo Tc Ru Rh Pd Ag Cd In Sn Sb Te I Xe "
    "Cs Ba La Ce Pr Nd Pm Sm Eu Gd Tb Dy Ho Er Tm Yb Lu Hf Ta W Re Os Ir Pt Au Hg "
    "Tl Pb Bi Po At Rn Fr Ra Ac Th Pa U Np Pu Am Cm Bk Cf Es Fm Md No Lr Rf Db Sg "
    "Bh Hs Mt Ds Rg Cn Nh Fl Mc Lv Ts Og"
).split()

# By RDKit's names.
BONDS = {"SINGLE": "-", "DOUBLE": "=", "TRIPLE": "#", "AROMATIC": ":"}

_LABEL = re.compile(r"([*A-Za-z]+)([+-][0-9]+)?")


def atom_label(number: int, aromatic: bool, charge: int) -> str:
    """Return the label of an atom; a charge of 0 is not told."""
    symbol = ELEMENTS[number]
    if aromatic:
        symbol = symbol.lower() if number else "*a"
    return f"{symbol}{charge:+d}" if charge else symbol


def _atoms() -> Iterator[tuple[str, tuple[int, bool]]]:
    for number in range(len(ELEMENTS)):
        for aromatic in (False, True):
            yield atom_label(number, aromatic, 0), (number, aromatic)


_ATOMS = dict(_atoms())


def atom_of(label: str) -> tuple[int, bool, int]:
    """Return atomic number, aromaticity and charge of a label.

    Raises
    ------
    ValueError
        When it is no label of an atom.
    """
    found = _LABEL.fullmatch(label)
    if not found or found[1] not in _ATOMS:
        raise ValueError(f"{label!r} is no label of an atom")
    number, aromatic = _ATOMS[found[1]]
    return number, aromatic, int(found[2] or 0)


def atom_smarts(label: str, labels: AtomLabels) -> str:
    """Return the SMARTS of the atoms that have a label."""
    number, aromatic, charge = atom_of(label)
    told = f"&{charge:+d}" if labels.charge else ""
    return f"[#{number}&{'a' if aromatic else 'A'}{told}]"


def graph_smarts(g: Graph, labels: AtomLabels) -> tuple[str, list[int]]:
    """Return the SMARTS of a connected graph, and its vertices in their order.

    They match the molecules that contain the graph, where these have the atoms
    that were read: all hydrogens or those only that RDKit keeps.
    """
    atoms = [atom_smarts(label, labels) for label in g.vertex_labels]
    if not atoms:
        return "", []
    children, rings = _spanning_tree(len(atoms), g)
    written: list[str] = []
    order: list[int] = []
    todo: list[str | int] = [0]
    while todo:
        next_one = todo.pop()
        if isinstance(next_one, str):
            written.append(next_one)
            continue
        written.append(atoms[next_one] + "".join(rings[next_one]))
        order.append(next_one)
        # The last branch stands without brackets; what comes first is pushed last.
        for i, (child, bond) in enumerate(reversed(children[next_one])):
            todo += [child, bond] if i == 0 else [")", child, bond, "("]
    return "".join(written), order


def _spanning_tree(
    vertices: int, g: Graph
) -> tuple[list[list[tuple[int, str]]], list[list[str]]]:
    """Return the children of each vertex, and the ends of rings that it has."""
    neighbours: list[list[tuple[int, int]]] = [[] for _ in range(vertices)]
    for edge, (a, b) in enumerate(g.edges.tolist()):
        neighbours[a].append((b, edge))
        neighbours[b].append((a, edge))
    children: list[list[tuple[int, str]]] = [[] for _ in range(vertices)]
    rings: list[list[str]] = [[] for _ in range(vertices)]
    closed = 0
    used = [False] * len(g.edges)
    seen = [False] * vertices
    seen[0] = True
    path = [0]
    ways = [iter(around) for around in neighbours]
    while path:
        vertex = path[-1]
        for neighbour, edge in ways[vertex]:
            if used[edge]:
                continue
            used[edge] = True
            bond = g.edge_labels[edge]
            if not seen[neighbour]:
                seen[neighbour] = True
                children[vertex].append((neighbour, bond))
                path.append(neighbour)
                break
            closed += 1
            number = _ring_number(closed)
            rings[vertex].append(bond + number)
            rings[neighbour].append(bond + number)
        else:
            path.pop()
    return children, rings


def _ring_number(number: int) -> str:
    if number < 10:
        return str(number)
    return f"%{number}" if number < 100 else f"%({number})"


def to_rdkit(db: GraphDatabase) -> list[Any]:
    """Return the molecules of a database; see `GraphDatabase.to_rdkit`."""
    labels = db.atom_labels
    if labels is None:
        raise ValueError("the labels of this database are not those of atoms")
    return molecules_of(db, labels)


def molecules_of(graphs: Iterable[Graph], labels: AtomLabels) -> list[Any]:
    """Return the molecules of graphs, made from labels alone, not sanitized."""
    Chem = import_rdkit()
    bonds = {text: Chem.BondType.names[name] for name, text in BONDS.items()}
    return [_molecule(Chem, g, bonds, labels) for g in graphs]


def _molecule(Chem: Any, g: Graph, bonds: dict[str, Any], labels: AtomLabels) -> Any:
    molecule = Chem.RWMol()
    for label in g.vertex_labels:
        number, aromatic, charge = atom_of(label)
        atom = Chem.Atom(number)
        atom.SetIsAromatic(aromatic)
        atom.SetFormalCharge(charge)
        atom.SetNoImplicit(labels.hydrogens)
        molecule.AddAtom(atom)
    for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True):
        molecule.AddBond(a, b, bonds[label])
        molecule.GetBondBetweenAtoms(a, b).SetIsAromatic(label == ":")
    molecule.UpdatePropertyCache(strict=False)
    Chem.FastFindRings(molecule)
    return molecule.GetMol()


def import_rdkit() -> Any:
    """Return rdkit.Chem; without RDKit raise an ImportError that says how to get it."""
    try:
        from rdkit import Chem
    except ImportError as e:
        raise ImportError("this needs RDKit: pip install 'kestro[rdkit]'") from e
    return Chem
