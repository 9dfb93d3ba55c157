"""Patterns drawn as SVG.

Molecules are drawn by RDKit, all other graphs as boxes with their labels.  Drawings
show what the labels say, no more: no hydrogens but those that are vertices, and
aromatic bonds as such.
"""

from __future__ import annotations

import re
from typing import Any

from kestro._database import AtomLabels, Graph
from kestro._molecule_drawing import COLOURS, molecule_of
from kestro._pattern import Pattern
from kestro.report._graphs import WIDTH, graph_svg

_HEIGHT = 115  # pixels
_BOND_LENGTH = 26.0
_LETTERS = 11
_NEEDLESS = re.compile(
    r"<\?xml.*?\?>|<!--.*?-->| class='[^']*'|fill-rule:evenodd;|stroke-miterlimit:10;"
    r"|stroke-linejoin:miter;|stroke-linecap:butt;|stroke-opacity:1;?",
    re.DOTALL,
)


def pattern_svg(pattern: Pattern) -> str:
    """Return the drawing of a pattern, an ``svg`` element.

    Raises
    ------
    ImportError
        For molecules, without RDKit.
    """
    labels = pattern._all.summary.atom_labels
    if labels is not None:
        return _molecule_svg(pattern.graph, labels)
    # A label that all edges have tells nothing.
    return graph_svg(pattern.graph, len(pattern._all.edge_table) > 1)


def _molecule_svg(g: Graph, labels: AtomLabels) -> str:
    molecule = molecule_of(g, labels)
    from rdkit.Chem import rdDepictor
    from rdkit.Chem.Draw import rdMolDraw2D

    rdDepictor.Compute2DCoords(molecule)
    drawer = rdMolDraw2D.MolDraw2DSVG(WIDTH, _HEIGHT, -1, -1, True)
    options: Any = drawer.drawOptions()
    options.clearBackground = False
    options.fixedBondLength = _BOND_LENGTH
    options.minFontSize = _LETTERS
    options.padding = 0.06
    options.updateAtomPalette(COLOURS)
    options.prepareMolsBeforeDrawing = False
    drawer.DrawMolecule(molecule)
    drawer.FinishDrawing()
    text = _NEEDLESS.sub("", drawer.GetDrawingText())
    return " ".join(text.split())
