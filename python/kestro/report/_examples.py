"""Graphs in which the page shows where a pattern lies."""

from __future__ import annotations

import re
from typing import Any

import numpy as np

from kestro._atoms import atom_of, atom_smarts, graph_smarts, import_rdkit
from kestro._database import AtomLabels, Graph
from kestro._errors import KestroError
from kestro._pattern import Pattern
from kestro._result import Result

_ATOM = re.compile(r"\[[^]]*\]")


class Examples:
    """The graphs shown, each once, and where patterns lie in them.

    Vertices of molecules come in the order of the atoms that RDKit reads from
    the text in the page, and their edges in that of its bonds; those of other
    graphs as the database has them.

    Parameters
    ----------
    result : Result
        With its database.
    most : int
        Graphs per pattern.
    """

    def __init__(self, result: Result, most: int) -> None:
        self._result = result
        self._most = most
        sizes = result.db._native.to_arrays()["edge_counts"].astype(np.int64)
        self._sizes = sizes
        self._places: dict[int, int] = {}  # of a TID among the graphs
        self._vertex: list[list[int]] = []  # of each graph's vertices, where it went
        self.graphs: list[dict[str, Any]] = []
        labels = result._patterns
        self._vertex_ids = {x: i for i, x in enumerate(labels.vertex_table)}
        self._edge_ids = {x: i for i, x in enumerate(labels.edge_table)}

    @property
    def tables(self) -> tuple[list[str], list[str]]:
        """The labels of vertices and of edges, by number."""
        return list(self._vertex_ids), list(self._edge_ids)

    def of(self, pattern: Pattern) -> list[list[Any]]:
        """Return the smallest graphs with the pattern, each with an embedding.

        Each is its place in ``graphs``, and for each vertex of the pattern the
        vertex of that graph.

        Raises
        ------
        KestroError
            When a graph does not contain the pattern, as where the database is in
            another order than what was mined.
        """
        tids = pattern.tids
        order = np.argsort(self._sizes[tids], kind="stable")[: self._most]
        found = []
        for tid in tids[order].tolist():
            at = self._place(tid)
            embeddings = self._result.embeddings(pattern, tid, limit=1).tolist()
            if not embeddings:
                raise KestroError(
                    f"the graphs of db are not those that were mined: {pattern.id} is "
                    f"not in graph {tid}"
                )
            found.append([at, [self._vertex[at][v] for v in embeddings[0]]])
        return found

    def _place(self, tid: int) -> int:
        if tid not in self._places:
            self._places[tid] = len(self.graphs)
            db = self._result.db
            g = db[tid]
            told: dict[str, Any] = {"tid": tid, "record": int(db.source[tid])}
            order = list(range(len(g.vertex_labels)))
            edges = list(zip(g.edges.tolist(), g.edge_labels, strict=True))
            if db.atom_labels is not None:
                told["smarts"], order = _smarts_of_parts(g, db.atom_labels)
            vertex = [0] * len(order)
            for i, v in enumerate(order):
                vertex[v] = i
            if db.atom_labels is not None:
                edges = _by_bond(told["smarts"], g, vertex, db.atom_labels)
            else:
                edges = [([vertex[a], vertex[b]], label) for (a, b), label in edges]
            told["order"] = order
            told["vertices"] = [
                self._vertex_ids.setdefault(g.vertex_labels[v], len(self._vertex_ids))
                for v in order
            ]
            told["edges"] = [
                x
                for (a, b), label in edges
                for x in (a, b, self._edge_ids.setdefault(label, len(self._edge_ids)))
            ]
            self._vertex.append(vertex)
            self.graphs.append(told)
        return self._places[tid]


def atoms_by_smarts(labels: list[str], told: AtomLabels) -> dict[str, str]:
    """Return by the SMARTS of each label of an atom its SMILES."""
    return {atom_smarts(label, told): _atom_smiles(label) for label in labels}


def _atom_smiles(label: str) -> str:
    charge = atom_of(label)[2]
    symbol = "*" if label.startswith("*") else re.sub(r"[+-].*", "", label)
    return f"[{symbol}{f'{charge:+d}' if charge else ''}]"


def _smarts_of_parts(g: Graph, told: AtomLabels) -> tuple[str, list[int]]:
    """Return the SMARTS of a graph that may be in parts, and its vertices' order."""
    import networkx as nx

    texts, order = [], []
    for part in nx.connected_components(g.to_networkx()):
        vertices = sorted(part)
        number = {v: i for i, v in enumerate(vertices)}
        own = [i for i, (a, _) in enumerate(g.edges.tolist()) if a in number]
        edges = [[number[a], number[b]] for a, b in g.edges[own].tolist()]
        text, places = graph_smarts(
            Graph(
                tuple(g.vertex_labels[v] for v in vertices),
                np.array(edges, np.int32).reshape(-1, 2),
                tuple(g.edge_labels[i] for i in own),
            ),
            told,
        )
        texts.append(text)
        order += [vertices[i] for i in places]
    return ".".join(texts), order


def _by_bond(
    smarts: str, g: Graph, vertex: list[int], told: AtomLabels
) -> list[tuple[list[int], str]]:
    """Return the edges of a molecule in the order of RDKit's bonds.

    Where RDKit does not read its SMILES, as with an aromatic atom of an element
    that has no such form there, in the order of the graph.
    """
    label_of = {
        (min(vertex[a], vertex[b]), max(vertex[a], vertex[b])): label
        for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True)
    }
    Chem = import_rdkit()
    atoms = atoms_by_smarts(list(g.vertex_labels), told)
    parameters = Chem.SmilesParserParams()
    parameters.sanitize = False
    parameters.removeHs = False
    from rdkit import rdBase

    with rdBase.BlockLogs():
        molecule = Chem.MolFromSmiles(
            _ATOM.sub(lambda found: atoms[found[0]], smarts), parameters
        )
    if molecule is None:
        return [([a, b], label) for (a, b), label in label_of.items()]
    pairs = [
        tuple(sorted((b.GetBeginAtomIdx(), b.GetEndAtomIdx())))
        for b in molecule.GetBonds()
    ]
    return [([a, b], label_of[a, b]) for a, b in pairs]
