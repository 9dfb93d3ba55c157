"""Isomorphism of labelled graphs, by igraph's canonical labelling (BLISS).

BLISS knows colours of vertices only.  So an edge becomes a vertex of its own,
coloured by its label, between the two it joins; only edges of label 0 stay
plain edges.  The graph can be read back from this, so two labelled graphs are
isomorphic exactly when what becomes of them is.  Relabelled canonically it is a
certificate: equal for isomorphic graphs, and for no others.
"""

import igraph

from checker.graphs import Graph

Certificate = tuple[tuple[int, ...], tuple[int, ...]]


def encode(g: Graph) -> tuple[igraph.Graph, list[int]]:
    """An uncoloured graph and the colours of its vertices; those of g first."""
    colours = [2 * label for label in g.vlabel]
    joined = []
    for u, w, label in g.edges():
        if label == 0:
            joined.append((u, w))
        else:
            middle = len(colours)
            colours.append(2 * label + 1)
            joined += [(u, middle), (w, middle)]
    return igraph.Graph(len(colours), joined), colours


def certificate(g: Graph) -> Certificate:
    """Equal for two graphs exactly when they are isomorphic."""
    coded, colours = encode(g)
    place = coded.canonical_permutation(color=colours)
    n = len(colours)
    arranged = [0] * n
    for vertex, position in enumerate(place):
        arranged[position] = colours[vertex]
    cells = []
    for u, w in coded.get_edgelist():
        a, b = place[u], place[w]
        cells.append(a * n + b if a < b else b * n + a)
    cells.sort()
    return tuple(arranged), tuple(cells)
