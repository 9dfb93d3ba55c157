"""Graphs from GraphML, and as GraphML."""

from __future__ import annotations

import re
from collections.abc import Iterator
from typing import NamedTuple
from xml.etree import ElementTree
from xml.etree.ElementTree import Element
from xml.sax.saxutils import escape

from kestro._arguments import OnError
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._files import Source, read_document
from kestro._packing import Packer

# What XML 1.0 calls white space; other blanks may belong to a label.
_WHITE_SPACE = " \t\r\n"
# What is no character of XML 1.0, section 2.2.
_NO_CHARACTER = re.compile("[^\t\n\r\u0020-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]")


def from_graphml(
    source: Source,
    *,
    vertex_label: str = "label",
    edge_label: str = "label",
    on_error: OnError = "raise",
) -> GraphDatabase:
    """Make a database of the graphs in a GraphML file.

    Parameters
    ----------
    source : path or file object
        The file, with any number of graphs; it may be a pipe or compressed by
        gzip.  What is read as text is no longer in the encoding that it
        declares, which is then ignored.
    vertex_label, edge_label : str
        The names of the attributes with the labels, whose text is taken as it
        stands, without XML's white space around it; defaults of the file count.
    on_error : {"raise", "skip"}
        With "skip", what is no graph is left out and listed in ``skipped``.

    Returns
    -------
    GraphDatabase
        ``source`` counts the graphs of the file from 0.

    Raises
    ------
    KestroError
        For a file that is no XML or no GraphML, whatever ``on_error`` says.
        For directed edges, hyperedges, nested graphs, loops, parallel edges,
        missing labels, and the labels that `from_edges` refuses.
    OSError
        When the file cannot be read.
    """
    data, name, encoding = read_document(source)
    packer = Packer(on_error, name)
    try:
        parser = ElementTree.XMLParser(encoding=encoding)
        root = ElementTree.fromstring(data, parser)
    except ElementTree.ParseError as e:
        raise KestroError(f"no XML: {e}", name or None, e.position[0]) from e
    except (LookupError, ValueError) as e:
        raise KestroError(f"no XML: {e}", name or None, 1) from e
    if _tag(root) != "graphml":
        raise KestroError(f"no GraphML: the root is {_tag(root)!r}", name or None)
    keys = {
        "node": _Key.find(root, "node", vertex_label),
        "edge": _Key.find(root, "edge", edge_label),
    }
    for record, graph in enumerate(_children(root, "graph")):
        try:
            vertices, ends, labels = _read(graph, keys)
        except KestroError as e:
            packer.refuse(record, e.text)
            continue
        packer.add(record, vertices, ends, labels)
    return packer.build()


class _Key(NamedTuple):
    """An attribute that holds labels."""

    name: str
    ids: frozenset[str]  # of <key> elements with this name
    default: str | None

    @classmethod
    def find(cls, root: Element, what: str, name: str) -> _Key:
        found = [
            key
            for key in _children(root, "key")
            if key.get("for", "all") in (what, "all")
            and key.get("attr.name", key.get("id")) == name
        ]
        ids = frozenset(key.get("id", "") for key in found)
        defaults = [_text(x) for key in found for x in _children(key, "default")]
        return cls(name, ids, defaults[0] if defaults else None)

    def label_of(self, item: Element, what: str) -> str:
        values = [_text(x) for x in _children(item, "data") if x.get("key") in self.ids]
        if len(values) > 1:
            raise KestroError(f"{what} has {len(values)} attributes {self.name!r}")
        label = values[0] if values else self.default
        if label is None:
            raise KestroError(f"{what} has no attribute {self.name!r}")
        return label


def _read(
    graph: Element, keys: dict[str, _Key]
) -> tuple[list[str], list[tuple[int, int]], list[str]]:
    """Return labels of vertices, ends of edges and their labels."""
    directed = graph.get("edgedefault") == "directed"
    numbers: dict[str, int] = {}
    vertices = []
    for node in _children(graph, "node"):
        name = node.get("id", "")
        if name in numbers:
            raise KestroError(f"there are two nodes {name!r}")
        if next(_children(node, "graph"), None) is not None:
            raise KestroError(f"node {name!r} holds a graph")
        numbers[name] = len(numbers)
        vertices.append(keys["node"].label_of(node, f"node {name!r}"))
    if next(_children(graph, "hyperedge"), None) is not None:
        raise KestroError("there is a hyperedge")
    ends = []
    labels = []
    for edge in _children(graph, "edge"):
        pair = edge.get("source", ""), edge.get("target", "")
        what = f"edge {pair[0]!r} to {pair[1]!r}"
        if edge.get("directed", str(directed)).lower() == "true":
            raise KestroError(f"{what} is directed")
        for name in pair:
            if name not in numbers:
                raise KestroError(f"{what}: there is no node {name!r}")
        ends.append((numbers[pair[0]], numbers[pair[1]]))
        labels.append(keys["edge"].label_of(edge, what))
    return vertices, ends, labels


def _tag(element: Element) -> str:
    """Return the name of an element without its name space."""
    return element.tag.rpartition("}")[2]


def _children(element: Element, tag: str) -> Iterator[Element]:
    # Comments have no name.
    return (x for x in element if isinstance(x.tag, str) and _tag(x) == tag)


def _text(element: Element) -> str:
    return "".join(element.itertext()).strip(_WHITE_SPACE)


def graphml_lines(db: GraphDatabase, name: str | None = None) -> Iterator[str]:
    """Return the lines of a GraphML file, which `from_graphml` reads.

    Raises at once, with the name of the input, for a label that XML cannot hold.
    """
    for label in (label for table in db._native.labels() for label in table):
        if _NO_CHARACTER.search(label):
            raise KestroError(f"XML cannot hold the label {label!r}", name)
    return _lines(db)


def _lines(db: GraphDatabase) -> Iterator[str]:
    yield '<?xml version="1.0" encoding="utf-8"?>\n'
    yield '<graphml xmlns="http://graphml.graphdrawing.org/xmlns">\n'
    for key, what in (("v", "node"), ("e", "edge")):
        yield (
            f'  <key id="{key}" for="{what}" attr.name="label" attr.type="string"/>\n'
        )
    for tid, g in enumerate(db):
        yield f'  <graph id="g{tid}" edgedefault="undirected">\n'
        for i, label in enumerate(g.vertex_labels):
            yield f'    <node id="n{i}"><data key="v">{escape(label)}</data></node>\n'
        for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True):
            yield (
                f'    <edge source="n{a}" target="n{b}">'
                f'<data key="e">{escape(label)}</data></edge>\n'
            )
        yield "  </graph>\n"
    yield "</graphml>\n"
