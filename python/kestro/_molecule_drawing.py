"""Molecules, and patterns of them, drawn by RDKit.

Aromatic bonds are drawn as such, a dashed line beside another: patterns seldom
have whole rings, and single and double bonds in turn would say what their labels
do not.  For the same reason nothing tells of hydrogens or charges that labels do
not.
"""

from __future__ import annotations

import re
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._atoms import atom_of, import_rdkit, molecules_of
from kestro._database import AtomLabels, Graph
from kestro._picture import Picture, Size

# Light enough for the letters on it, dark enough to be seen in grey.
_HIGHLIGHT = (1.0, 0.8, 0.4)
# Of the picture's width or height, what an angstrom may have: a pattern of two atoms
# is not drawn larger than its neighbours.
_LARGEST = 0.17
# Of some elements RDKit's colours are too light for letters on white.
COLOURS = {
    8: (0.85, 0.0, 0.0),
    9: (0.0, 0.45, 0.45),
    15: (0.65, 0.3, 0.0),
    16: (0.48, 0.41, 0.0),
    17: (0.0, 0.5, 0.0),
}
_FRAME = re.compile(r"\A.*?<!-- END OF HEADER -->\n|</svg>\s*\Z", re.DOTALL)


def molecule_of(g: Graph, labels: AtomLabels) -> Any:
    """Return a molecule of RDKit's that is drawn with what labels tell alone."""
    molecule = molecules_of([g], labels)[0]
    for atom, label in zip(molecule.GetAtoms(), g.vertex_labels, strict=True):
        atom.SetNoImplicit(True)
        # Where no bond shows that an atom is aromatic, its letter does.
        if atom.GetIsAromatic() and not any(
            bond.GetIsAromatic() for bond in atom.GetBonds()
        ):
            _, _, charge = atom_of(label)
            symbol = atom.GetSymbol().lower()
            atom.SetProp("_displayLabel", symbol + _charge_text(charge))
    molecule.UpdatePropertyCache(strict=False)
    return molecule


def _charge_text(charge: int) -> str:
    if not charge:
        return ""
    many = str(abs(charge)) if abs(charge) > 1 else ""
    return f"<sup>{many}{'+' if charge > 0 else '-'}</sup>"


def with_wedges(molecule: Any) -> Any:
    """Return a copy of a molecule that RDKit has read, laid out with its stereo."""
    import_rdkit()
    from rdkit.Chem.Draw import rdMolDraw2D

    return rdMolDraw2D.PrepareMolForDrawing(
        molecule, kekulize=False, addChiralHs=False, wedgeBonds=True, forceCoords=True
    )


def drawing(
    title: str,
    molecule: Any,
    size: Size,
    highlighted: tuple[NDArray[np.int32], list[tuple[int, int]]] | None = None,
) -> Picture:
    """Return the picture of a molecule.

    Highlighted are atoms, and bonds by their two atoms.
    """
    import_rdkit()
    from rdkit.Chem import rdDepictor
    from rdkit.Chem.Draw import rdMolDraw2D

    if not molecule.GetNumConformers():
        rdDepictor.Compute2DCoords(molecule)
    drawer = rdMolDraw2D.MolDraw2DSVG(*size)
    options: Any = drawer.drawOptions()  # whose stubs have one type for all
    options.prepareMolsBeforeDrawing = False
    options.includeRadicals = False
    options.updateAtomPalette(COLOURS)
    options.fixedBondLength = _LARGEST * min(size)
    options.setHighlightColour(_HIGHLIGHT)
    options.highlightBondWidthMultiplier = 14
    atoms: list[int] = []
    bonds: list[int] = []
    if highlighted is not None:
        atoms = highlighted[0].tolist()
        bonds = [molecule.GetBondBetweenAtoms(a, b).GetIdx() for a, b in highlighted[1]]
    drawer.DrawMolecule(molecule, highlightAtoms=atoms, highlightBonds=bonds)
    drawer.FinishDrawing()
    return Picture(title, *size, _FRAME.sub("", drawer.GetDrawingText()))
