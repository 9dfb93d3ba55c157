"""Graphs from NetworkX."""

from __future__ import annotations

from collections.abc import Iterable
from typing import TYPE_CHECKING

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._packing import Packer

if TYPE_CHECKING:
    import networkx as nx


def from_networkx(
    graphs: Iterable[nx.Graph],
    *,
    vertex_label: str = "label",
    edge_label: str = "label",
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of NetworkX's graphs.

    Parameters
    ----------
    graphs : iterable of networkx.Graph
        Undirected; their nodes become vertices in their order.
    vertex_label, edge_label : str
        The attributes with the labels: str without white space, or int.
    on_error : {"raise", "skip"}
        With "skip", what is no graph is left out and listed in ``skipped``.

    Returns
    -------
    GraphDatabase
        ``source`` counts the graphs from 0.

    Raises
    ------
    KestroError
        For what is no graph of NetworkX's, a directed graph, a loop, parallel
        edges, a missing label, and the labels that `from_edges` refuses.
    TypeError
        For one graph instead of several.

    Examples
    --------
    >>> import kestro, networkx as nx
    >>> g = nx.Graph()
    >>> g.add_node("a", label="C"), g.add_node("b", label="O")
    (None, None)
    >>> g.add_edge("a", "b", label="=")
    >>> kestro.from_networkx([g])
    <GraphDatabase: 1 graph>
    """
    import networkx as nx

    packer = Packer(on_error)
    if isinstance(graphs, nx.Graph) or not isinstance(graphs, Iterable):
        raise TypeError(f"graphs must be an iterable of graphs, not {graphs!r}")
    for record, g in enumerate(graphs):
        if not isinstance(g, nx.Graph):
            packer.refuse(record, f"no graph of NetworkX's: {g!r}")
            continue
        if g.is_directed():
            packer.refuse(record, "the graph is directed")
            continue
        try:
            vertices = _labels(g.nodes(data=True), "node", vertex_label)
            edges = [(a, b) for a, b, _ in g.edges(data=True)]
            labels = _labels(
                (((a, b), data) for a, b, data in g.edges(data=True)),
                "edge",
                edge_label,
            )
        except KestroError as e:
            packer.refuse(record, e.text)
            continue
        number = {node: i for i, node in enumerate(g.nodes)}
        packer.add(record, vertices, [(number[a], number[b]) for a, b in edges], labels)
    return packer.build()


def _labels(
    items: Iterable[tuple[object, dict[str, object]]], what: str, attribute: str
) -> list[object]:
    labels = []
    for item, data in items:
        if attribute not in data:
            raise KestroError(f"{what} {item!r} has no attribute {attribute!r}")
        labels.append(data[attribute])
    return labels
