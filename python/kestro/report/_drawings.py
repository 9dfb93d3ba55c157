"""Patterns drawn as SVG.

Molecules are drawn by RDKit, all other graphs with the layout of pictures, but in
small, as a page has hundreds.  Drawings show what the labels say, no more: no
hydrogens but those that are vertices, and aromatic bonds as such.
"""

from __future__ import annotations

import re
from html import escape
from typing import Any

from kestro._database import AtomLabels, Graph
from kestro._graph_drawing import connected_layout
from kestro._molecule_drawing import molecule_of
from kestro._pattern import Pattern

WIDTH, HEIGHT = 150, 110  # pixels
LONGEST = 14  # characters shown of a label
_BOND_LENGTH = 26.0  # pixels
# What no document may hold: control characters, halves of pairs.
_UNPRINTABLE = re.compile("[\x00-\x1f\x7f-\x9f\ud800-\udfff\ufffe\uffff]")
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
    return _graph_svg(pattern.graph, len(pattern._all.edge_table) > 1)


def _molecule_svg(g: Graph, labels: AtomLabels) -> str:
    molecule = molecule_of(g, labels)
    from rdkit.Chem import rdDepictor
    from rdkit.Chem.Draw import rdMolDraw2D

    rdDepictor.Compute2DCoords(molecule)
    drawer = rdMolDraw2D.MolDraw2DSVG(WIDTH, HEIGHT, -1, -1, True)
    options: Any = drawer.drawOptions()
    options.clearBackground = False
    options.fixedBondLength = _BOND_LENGTH
    options.padding = 0.06
    options.prepareMolsBeforeDrawing = False
    drawer.DrawMolecule(molecule)
    drawer.FinishDrawing()
    text = _NEEDLESS.sub("", drawer.GetDrawingText())
    return " ".join(text.split())


def _graph_svg(g: Graph, tells_edges: bool) -> str:
    places = _places(g)
    parts = []
    for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True):
        (x, y), (x2, y2) = places[a], places[b]
        parts.append(
            f"<line x1='{x:.0f}' y1='{y:.0f}' x2='{x2:.0f}' y2='{y2:.0f}' "
            f"stroke='#333'/>"
        )
        if tells_edges:
            middle = ((x + x2) / 2, (y + y2) / 2)
            parts.append(_text(*middle, label, 7, "edge", "#555"))
    for (x, y), label in zip(places, g.vertex_labels, strict=True):
        width = max(16.0, 5.2 * len(shown(label)) + 8)
        parts.append(
            f"<rect x='{x - width / 2:.1f}' y='{y - 8:.1f}' width='{width:.1f}' "
            f"height='16' rx='8' fill='#fff' stroke='#333'/>"
            + _text(x, y, label, 9, "vertex", "#000")
        )
    return (
        f"<svg xmlns='http://www.w3.org/2000/svg' "
        f"viewBox='0 0 {WIDTH} {HEIGHT}'>{''.join(parts)}</svg>"
    )


def _places(g: Graph) -> list[tuple[float, float]]:
    """Return where the vertices lie, in pixels."""
    edges = tuple(sorted((min(e), max(e)) for e in g.edges.tolist()))
    points = connected_layout(len(g.vertex_labels), edges).tolist()
    low = [min(p[k] for p in points) for k in (0, 1)]
    wide = [max(p[k] for p in points) - low[k] for k in (0, 1)]
    room = (WIDTH - 60, HEIGHT - 24)
    # Stretched to fill the room, twice at most.
    scale = [room[k] / max(wide[k], 1e-3) for k in (0, 1)]
    scale = [min(scale[k], 2 * scale[1 - k]) for k in (0, 1)]
    middle = (WIDTH / 2, HEIGHT / 2)
    x, y = (
        [middle[k] + scale[k] * (p[k] - low[k] - wide[k] / 2) for p in points]
        for k in (0, 1)
    )
    return list(zip(x, y, strict=True))


def _text(x: float, y: float, label: str, size: int, kind: str, colour: str) -> str:
    return (
        f"<text class='{kind}' x='{x:.1f}' y='{y:.1f}' dy='.35em' "
        f"text-anchor='middle' font-size='{size}' font-family='sans-serif' "
        f"fill='{colour}' stroke='#fff' stroke-width='{2 if size == 7 else 0}' "
        f"paint-order='stroke'>{escape(shown(label))}</text>"
    )


def shown(label: str) -> str:
    """Return of a label what a drawing has room for."""
    text = _UNPRINTABLE.sub("\ufffd", label)
    return text if len(text) <= LONGEST else text[: LONGEST - 1] + "…"
