"""Small drawings of patterns that are no molecules.

They are drawn in the size in which the page shows them, so that letters can be
read.  So little room wants a place for every box: the layout is turned and
stretched in some ways, and the one is taken in which least lies on top of each
other.  Labels of edges that find no room are left out, and of large graphs all
labels, as a text beside the drawing has them.  ``graphs.js`` does the same in the
page.
"""

from __future__ import annotations

import re
from html import escape

import numpy as np
from numpy.typing import NDArray

from kestro._database import Graph
from kestro._graph_drawing import connected_layout

WIDTH = 180  # pixels
MOST_HIGH = 170
LONGEST = 14  # characters shown of a label
LARGE = 25  # vertices, above which they are dots
_LETTERS, _EDGE_LETTERS = 11, 10  # pixels
_BOX, _DOT = 17, 6  # pixels that boxes and dots are high
_MARGIN = 2
_LONGEST_EDGE = 110
_STRETCH = 2.5
_ANGLES = np.pi * np.arange(12) / 12
_ROOMS = np.linspace(1, MOST_HIGH - _BOX - 2 * _MARGIN, 9)
# What it costs that two boxes, an edge and a box, or a label and another lie on
# top of each other.
_BOXES, _CROSSED, _LABEL = 100.0, 20.0, 3.0
_ON_EDGE = np.array([0.2, 0.35, 0.65, 0.8])
# What no document may hold: control characters, halves of pairs.
_UNPRINTABLE = re.compile("[\x00-\x1f\x7f-\x9f\ud800-\udfff\ufffe\uffff]")

Places = NDArray[np.float64]


def graph_svg(g: Graph, tells_edges: bool) -> str:
    """Return the drawing of a connected graph, an ``svg`` element."""
    edges = g.edges.astype(np.int64).reshape(-1, 2)
    is_large = len(g.vertex_labels) > LARGE
    tells_edges = tells_edges and not is_large
    box = _DOT if is_large else _BOX
    boxes = np.array(
        [_DOT if is_large else _wide(x, _LETTERS) + 9 for x in g.vertex_labels]
    )
    labels = np.array(
        [_wide(x, _EDGE_LETTERS) if tells_edges else 0.0 for x in g.edge_labels]
    )
    places = arranged(edges, boxes, labels)
    high = round(float(np.ptp(places[:, 1])) + _BOX + 2 * _MARGIN)
    places = places + np.array([WIDTH / 2, high / 2])
    lines, texts = [], []
    taken = [(x, y, w / 2, _BOX / 2) for (x, y), w in zip(places, boxes, strict=True)]
    for (a, b), label, w in zip(edges, g.edge_labels, labels, strict=True):
        (x, y), (x2, y2) = places[a], places[b]
        lines.append(
            f"<line x1='{x:.0f}' y1='{y:.0f}' x2='{x2:.0f}' y2='{y2:.0f}' "
            f"stroke='#333'/>"
        )
        own = ((x + x2) / 2, (y + y2) / 2, w / 2, _EDGE_LETTERS / 2)
        if tells_edges and not any(_meet(own, other) for other in taken):
            taken.append(own)
            texts.append(_text(own[0], own[1], label, _EDGE_LETTERS, "edge"))
    for (x, y), w, label in zip(places, boxes, g.vertex_labels, strict=True):
        texts.append(
            f"<rect x='{x - w / 2:.1f}' y='{y - box / 2:.1f}' width='{w:.1f}' "
            f"height='{box}' rx='{box / 2}' fill='#fff' stroke='#333'/>"
        )
        if not is_large:
            texts.append(_text(x, y, label, _LETTERS, "vertex"))
    return (
        f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {WIDTH} {high}'>"
        f"{''.join(lines)}{''.join(texts)}</svg>"
    )


def arranged(edges: NDArray[np.int64], boxes: Places, labels: Places) -> Places:
    """Return where vertices lie, in pixels around the middle of the drawing.

    Parameters
    ----------
    edges : ndarray, shape (edges, 2)
    boxes : ndarray, shape (vertices,)
        How wide those of the vertices are.
    labels : ndarray, shape (edges,)
        How wide those of the edges are, 0 where they are not drawn.
    """
    key = tuple(sorted((min(e), max(e)) for e in edges.tolist()))
    places = connected_layout(len(boxes), key)
    # Dots can do with the layout as it is.
    is_large = len(boxes) > LARGE
    angles, high = (_ANGLES[:1], _ROOMS[-1:]) if is_large else (_ANGLES, _ROOMS)
    cos, sin = np.cos(angles), np.sin(angles)
    turned = places @ np.moveaxis(np.array([[cos, sin], [-sin, cos]]), 2, 0)
    turned -= (turned.min(axis=1) + turned.max(axis=1))[:, None] / 2
    across = np.full(len(high), max(WIDTH - boxes.max() - 2 * _MARGIN, 1.0))
    rooms = np.stack([across, high], axis=1)
    scale = rooms / np.maximum(np.ptp(turned, axis=1), 1e-3)[:, None]
    scale = np.minimum(np.minimum(scale, _LONGEST_EDGE), _STRETCH * scale[..., ::-1])
    every = turned[:, None] * scale[:, :, None]
    every = every.reshape(-1, len(boxes), 2)
    if is_large:
        return np.asarray(every[0])
    best: Places = every[int(_costs(every, edges, boxes, labels).argmin())]
    return best


def _costs(
    places: Places, edges: NDArray[np.int64], boxes: Places, labels: Places
) -> Places:
    """Return what each of several arrangements costs."""
    a, b = places[:, edges[:, 0]], places[:, edges[:, 1]]
    at = np.concatenate([places, (a + b) / 2], axis=1)
    high = np.where(labels > 0, _EDGE_LETTERS, 2.0)
    half = np.stack(
        [np.append(boxes + 3, labels + 2), np.append(np.full_like(boxes, 19), high)], 1
    )
    half /= 2
    apart = np.abs(at[:, :, None] - at[:, None])
    meet = (apart < half[:, None] + half[None]).all(axis=3)
    n = len(boxes)
    weight = np.full((len(at[0]), len(at[0])), _LABEL)
    weight[n:, :n] = np.where(labels > 0, _LABEL, _CROSSED)[:, None]
    weight[:n, :n] = _BOXES
    costs = (meet * np.tril(weight, -1)).sum(axis=(1, 2))
    on = a[:, :, None] + _ON_EDGE[:, None] * (b - a)[:, :, None]
    away = np.abs(on[:, :, :, None] - places[:, None, None])
    inside: NDArray[np.bool_] = np.all(away < half[:n], axis=4)
    own: NDArray[np.bool_] = edges[:, :, None] == np.arange(n)
    costs += _CROSSED * (inside.any(axis=2) & ~own.any(axis=1)).sum(axis=(1, 2))
    total: Places = costs + np.ptp(places[..., 1], axis=1) / 60
    return total


def _meet(a: tuple[float, ...], b: tuple[float, ...]) -> bool:
    """Return whether boxes lie on top of each other: middles, half their sizes."""
    return abs(a[0] - b[0]) < a[2] + b[2] and abs(a[1] - b[1]) < a[3] + b[3]


def _wide(label: str, letters: int) -> float:
    return 0.58 * letters * len(shown(label))


def _text(x: float, y: float, label: str, letters: int, kind: str) -> str:
    halo = " stroke='#fff' stroke-width='2' paint-order='stroke'"
    return (
        f"<text class='{kind}' x='{x:.1f}' y='{y:.1f}' dy='.35em' "
        f"text-anchor='middle' font-size='{letters}' font-family='sans-serif' "
        f"fill='#000'{halo if kind == 'edge' else ''}>{escape(shown(label))}</text>"
    )


def shown(label: str) -> str:
    """Return of a label what a drawing has room for."""
    text = _UNPRINTABLE.sub("\ufffd", label)
    return text if len(text) <= LONGEST else text[: LONGEST - 1] + "…"
