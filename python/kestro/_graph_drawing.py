"""Graphs that are no molecules, drawn: vertices in boxes with their labels.

The layout is that of T. Kamada and S. Kawai, An algorithm for drawing general
undirected graphs, 1989, by NetworkX, component by component.  It costs the cube of
the vertices, so of a large graph those are drawn that lie nearest to what is
highlighted.
"""

from __future__ import annotations

import unicodedata
from collections.abc import Mapping, Sequence
from functools import lru_cache
from itertools import chain

import numpy as np
from numpy.typing import NDArray

from kestro._database import Graph
from kestro._picture import Picture, Size, xml_text

MOST = 60  # vertices of a graph that are drawn
_LONGEST = 18  # characters of a label that are drawn
_LETTER = 7.0  # pixels that a letter is wide, at most on average
_BOX = 22  # pixels that a box is high
_MARGIN = 8
_LINE = "#555"
_HIGHLIGHT = "#fc6"

Places = NDArray[np.float64]
Start = Mapping[int, NDArray[np.float64]]
Ends = NDArray[np.int64]  # shape (edges, 2), positions among the places


def drawing(
    title: str,
    g: Graph,
    size: Size | None,
    embedding: NDArray[np.int32] | None = None,
    edges: Sequence[tuple[int, int]] = (),
) -> Picture:
    """Return the picture of a graph.

    Parameters
    ----------
    title : str
        What it shows.
    g : Graph
        At least one vertex; it may have more components than one.
    size : tuple of int, optional
        Pixels; what is larger is drawn smaller.  None is as large as it gets.
    embedding : ndarray, optional
        Vertices that are highlighted.
    edges : sequence of pairs
        Edges that are highlighted.
    """
    chosen = embedding if embedding is not None else np.zeros(0, np.int32)
    near = _nearest(g, chosen)
    if len(near) < len(g.vertex_labels):
        title += f"; {len(near)} of {len(g.vertex_labels)} vertices, those nearest"
    places = _layout(g, near) * _edge_length(g, near)
    texts = [_short(g.vertex_labels[v]) for v in near]
    boxes = np.array([_width(text) + 12 for text in texts]).reshape(-1, 1) / 2
    low = places - np.hstack([boxes, np.full_like(boxes, _BOX / 2)])
    high = places + np.hstack([boxes, np.full_like(boxes, _BOX / 2)])
    origin = low.min(axis=0) - _MARGIN
    own = high.max(axis=0) + _MARGIN - origin
    width, height = size or (int(np.ceil(own[0])), int(np.ceil(own[1])))
    scale = min(1.0, width / own[0], height / own[1])
    corner = (np.array([width, height]) - scale * own) / 2
    body = [
        f'<rect width="{width}" height="{height}" fill="#fff"/>\n',
        f'<g transform="translate({corner[0]:.1f} {corner[1]:.1f}) '
        f'scale({scale:.4f})" font-family="sans-serif" font-size="12" '
        f'text-anchor="middle">\n',
    ]
    at = dict(zip(near, places - origin, strict=True))
    half = dict(zip(near, boxes[:, 0].tolist(), strict=True))
    body += _edges(g, at, half, {(min(e), max(e)) for e in edges})
    marked = set(chosen.tolist())
    for v, text in zip(near, texts, strict=True):
        body.append(_vertex(v, g.vertex_labels[v], text, at[v], half[v], v in marked))
    return Picture(title, width, height, "".join(body) + "</g>\n")


def _edges(
    g: Graph,
    at: dict[int, Places],
    half: dict[int, float],
    marked: set[tuple[int, int]],
) -> list[str]:
    lines, labels = [], []
    for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True):
        if a not in at or b not in at:
            continue
        is_marked = (a, b) in marked
        ends = (
            f'x1="{at[a][0]:.1f}" y1="{at[a][1]:.1f}" '
            f'x2="{at[b][0]:.1f}" y2="{at[b][1]:.1f}"'
        )
        kind = "edge highlighted" if is_marked else "edge"
        if is_marked:
            lines.append(f'<line {ends} stroke="{_HIGHLIGHT}" stroke-width="11"/>\n')
        lines.append(
            f'<line class="{kind}" data-ends="{a} {b}" {ends} stroke="{_LINE}" '
            f'stroke-width="{2.5 if is_marked else 1.2}"/>\n'
        )
        x, y = _middle(at[a], at[b], half[a], half[b])
        labels.append(
            f'<text class="edge-label" x="{x:.1f}" y="{y + 3.5:.1f}" font-size="10" '
            f'paint-order="stroke" stroke="#fff" stroke-width="4">'
            f"{_told(label, _short(label))}</text>\n"
        )
    return lines + labels


def _middle(a: Places, b: Places, half_a: float, half_b: float) -> Places:
    """Return the middle of what is seen of an edge between two boxes."""
    way = np.maximum(np.abs(b - a), 1e-9)
    hidden_a, hidden_b = (
        min(1.0, half / way[0], _BOX / 2 / way[1]) for half in (half_a, half_b)
    )
    middle: Places = a + (b - a) * (1 + hidden_a - hidden_b) / 2
    return middle


def _vertex(
    v: int, label: str, text: str, at: Places, half: float, is_marked: bool
) -> str:
    kind = "vertex highlighted" if is_marked else "vertex"
    fill = _HIGHLIGHT if is_marked else "#fff"
    weight = ' font-weight="bold"' if is_marked else ""
    return (
        f'<g class="{kind}" data-vertex="{v}"><rect x="{at[0] - half:.1f}" '
        f'y="{at[1] - _BOX / 2:.1f}" width="{2 * half:.1f}" height="{_BOX}" rx="9" '
        f'fill="{fill}" stroke="{"#000" if is_marked else _LINE}" '
        f'stroke-width="{2.5 if is_marked else 1.2}"/>'
        f'<text class="vertex-label" x="{at[0]:.1f}" y="{at[1] + 4:.1f}"{weight}>'
        f"{_told(label, text)}</text></g>\n"
    )


def _told(label: str, text: str) -> str:
    """Return a label as text, with all of it in a title where it is cut short."""
    whole = f"<title>{xml_text(label)}</title>" if text != label else ""
    return whole + xml_text(text)


def _short(label: str) -> str:
    return label if len(label) <= _LONGEST else label[: _LONGEST - 1] + "…"


def _width(text: str) -> float:
    wide = sum(unicodedata.east_asian_width(x) in "WF" for x in text)
    return _LETTER * (len(text) + wide)


def _nearest(g: Graph, chosen: NDArray[np.int32]) -> list[int]:
    """Return the vertices that are drawn, in ascending order."""
    count = len(g.vertex_labels)
    if count <= MOST:
        return list(range(count))
    neighbours: list[list[int]] = [[] for _ in range(count)]
    for a, b in g.edges.tolist():
        neighbours[a].append(b)
        neighbours[b].append(a)
    found = dict.fromkeys(chosen.tolist() or [0])
    queue = list(found)
    for v in queue:  # which grows
        for w in neighbours[v]:
            if w not in found and len(found) < MOST:
                found[w] = None
                queue.append(w)
    return sorted(found)


def _edge_length(g: Graph, near: list[int]) -> float:
    """Return how many pixels an edge gets, so that its label fits between boxes."""
    boxes = {v: _width(_short(g.vertex_labels[v])) for v in near}
    needed = [
        (boxes[a] + boxes[b]) / 2 + _width(_short(label)) + 24
        for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True)
        if a in boxes and b in boxes
    ]
    return max([64.0, *needed])


def _layout(g: Graph, near: list[int]) -> Places:
    """Return places of these vertices; edges have a length of about 1."""
    import networkx as nx

    part = nx.Graph()
    part.add_nodes_from(near)
    part.add_edges_from((a, b) for a, b in g.edges.tolist() if a in part and b in part)
    components = sorted((sorted(c) for c in nx.connected_components(part)), key=min)
    placed = []
    for component in components:
        number = {v: i for i, v in enumerate(component)}
        ends = [(number[a], number[b]) for a, b in part.subgraph(component).edges]
        edges = tuple(sorted((min(e), max(e)) for e in ends))
        placed.append(connected_layout(len(component), edges))
    where = dict(zip(chain(*components), np.vstack(_packed(placed)), strict=True))
    return np.array([where[v] for v in near])


# One graph is drawn with many patterns, a shape with many labels.
@lru_cache(maxsize=4096)
def connected_layout(vertices: int, edges: tuple[tuple[int, int], ...]) -> Places:
    """Return places of a connected graph, wider than high, edges of a length of 1."""
    if vertices == 1:
        return np.zeros((1, 2))
    ends = np.array(edges)
    places: Places = _least_crossed(vertices, ends)
    places = places - places.mean(axis=0)
    spread, axes = np.linalg.eigh(places.T @ places)
    if spread[1] > 1.2 * spread[0]:  # else rounding would choose the axis
        axes = axes[:, ::-1]
        places = places @ (axes * np.where(axes[0] < 0, -1, 1))
    length = np.linalg.norm(places[ends[:, 0]] - places[ends[:, 1]], axis=1).mean()
    apart = np.linalg.norm(places[:, None] - places[None], axis=2)
    closest = apart[np.triu_indices(vertices, 1)].min()
    grown = max(1.0, min(2.5, 0.5 * length / max(closest, 1e-9)))
    places *= grown / length
    places.flags.writeable = False
    return places


def _least_crossed(vertices: int, ends: Ends) -> Places:
    """Return a layout of a connected graph with few edges that cross.

    The layout goes to a minimum near its start, which may be a hexagon twisted
    into an eight.  So it starts from a circle in the order of a walk, and from a
    drawing without crossings where there is one; the first of the best is taken.
    The second start is left out where the first could not be bettered.
    """
    import networkx as nx

    g = nx.Graph()
    g.add_nodes_from(range(vertices))
    g.add_edges_from(ends.tolist())

    def laid_out(start: Start) -> tuple[Places, int]:
        at = nx.kamada_kawai_layout(g, pos=start)
        places = np.array([at[v] for v in range(vertices)])
        return places, _crossings(places, ends)

    first, crossings = laid_out(nx.circular_layout(list(nx.dfs_preorder_nodes(g, 0))))
    if crossings and nx.is_planar(g):
        second, fewer = laid_out(nx.planar_layout(g))
        if fewer < crossings:
            return second
    return first


def _crossings(places: Places, ends: Ends) -> int:
    """Return how many pairs of edges cross each other within."""
    a, b = places[ends[:, 0]], places[ends[:, 1]]

    def side(p: Places, q: Places, r: Places) -> Places:
        """Return on which side of the lines from p to q the points r lie."""
        way = (q - p)[:, None]
        to = r[None] - p[:, None]
        area: Places = way[..., 0] * to[..., 1] - way[..., 1] * to[..., 0]
        return np.where(np.abs(area) < 1e-9, 0, np.sign(area))

    apart = side(a, b, a) * side(a, b, b) < 0
    return int((apart & apart.T).sum()) // 2


def _packed(placed: list[Places]) -> list[Places]:
    """Return the components beside each other, in rows."""
    sizes = [np.ptp(p, axis=0) + 1 for p in placed]
    across = max(
        *(float(s[0]) for s in sizes),
        1.4 * float(np.sqrt(sum(s[0] * s[1] for s in sizes))),
    )
    x = y = row = 0.0
    moved = []
    for p, s in zip(placed, sizes, strict=True):
        if x and x + s[0] > across:
            x, y, row = 0.0, y + row, 0.0
        moved.append(p - p.min(axis=0) + (x, y))
        x, row = x + s[0], max(row, s[1])
    return moved
