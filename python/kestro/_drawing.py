"""Which way a pattern is drawn: molecules by RDKit, other graphs by a layout."""

from __future__ import annotations

from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro import _graph_drawing, _matching, _molecule_drawing
from kestro._arguments import Index, position, whole_number
from kestro._atoms import import_rdkit
from kestro._database import AtomLabels, Graph, GraphDatabase, number_of
from kestro._errors import KestroError
from kestro._pattern import Pattern
from kestro._pattern_sequence import PatternSequence
from kestro._picture import Picture, Size, checked_size, grid

if TYPE_CHECKING:
    from kestro._result import Result

_PATTERN = (250, 200)  # pixels
_MOLECULE = (350, 260)


def draw(pattern: Pattern, size: Size | None) -> Picture:
    """Return the picture of a pattern; see `Pattern.draw`."""
    summary = pattern._all.summary
    title = f"Pattern {pattern.id}, in {pattern.support} of {summary.graphs} graphs"
    if summary.atom_labels is None:
        own_size = None if size is None else checked_size(size, _PATTERN)
        return _graph_drawing.drawing(title, pattern.graph, own_size)
    molecule = _molecule_drawing.molecule_of(pattern.graph, summary.atom_labels)
    return _molecule_drawing.drawing(
        f"{title}: {pattern.to_smarts()}", molecule, checked_size(size, _PATTERN)
    )


def draw_grid(result: Result, chosen: Any, columns: int, size: Size | None) -> Picture:
    """Return the pictures of patterns; see `Result.draw_grid`."""
    across = whole_number("columns", columns, 1)
    drawn = _chosen(result, chosen)
    cell = checked_size(size, (200, 150))
    return grid(
        number_of(len(drawn), "pattern"),
        [draw(p, cell) for p in drawn],
        [f"{p.id}: {p.support} of {result.graphs}" for p in drawn],
        across,
    )


def _chosen(result: Result, chosen: Any) -> list[Pattern]:
    """Return the patterns that a grid is asked for."""
    if isinstance(chosen, (int, np.integer)):
        return list(result[: whole_number("patterns", chosen, 0)])
    if isinstance(chosen, (str, Pattern)):
        chosen = [chosen]
    elif isinstance(chosen, Iterator):
        chosen = list(chosen)
    elif isinstance(chosen, PatternSequence):
        chosen = list(chosen) or slice(0)  # a result may be empty
    if isinstance(chosen, (list, tuple)) and not chosen:
        raise ValueError("there is no pattern to draw")
    if not isinstance(chosen, (list, tuple)) or not any(
        isinstance(x, Pattern) for x in chosen
    ):
        return list(result[chosen])
    return [_pattern(result, x) for x in chosen]


def _pattern(result: Result, chosen: Any) -> Pattern:
    """Return a pattern of a list that holds patterns, ids and positions."""
    if not isinstance(chosen, Pattern):
        if isinstance(chosen, (bool, np.bool_)) or not isinstance(
            chosen, (str, int, np.integer)
        ):
            raise TypeError(f"neither a pattern nor an id or a position: {chosen!r}")
        return result[chosen]
    if chosen._all is not result._patterns:
        raise KestroError("the pattern is of another run")
    return chosen


def highlight(
    pattern: Pattern,
    graph: Any,
    db: GraphDatabase | None,
    embedding: Index,
    size: Size | None,
) -> Picture:
    """Return a graph with the pattern in it; see `Pattern.highlight`."""
    labels = pattern._all.summary.atom_labels
    molecule = None
    name = "a graph" if labels is None else "a molecule"
    if isinstance(graph, (int, np.integer)) and not isinstance(graph, bool):
        if db is None:
            raise TypeError(
                f"graph must be {_given(labels)}: the result has no database "
                f"to take graph {graph} from"
            )
        tid = position(graph, len(db), "graph")
        name, g = f"{db.kind[:-1]} {tid}", db[tid]
    elif isinstance(graph, Graph):
        g = graph
    elif labels is not None:
        molecule, g, name = _read_molecule(pattern, graph, name)
    else:
        g = _read_graph(graph)
    found, where = _embedding(pattern, g, embedding)
    edges = [(int(found[a]), int(found[b])) for a, b in pattern.graph.edges.tolist()]
    title = f"Pattern {pattern.id} in {name}{where}"
    if labels is None:
        own_size = None if size is None else checked_size(size, _MOLECULE)
        return _graph_drawing.drawing(title, g, own_size, found, edges)
    if molecule is None:
        molecule = _molecule_drawing.molecule_of(g, labels)
    else:
        molecule = _molecule_drawing.with_wedges(molecule)
    return _molecule_drawing.drawing(
        title, molecule, checked_size(size, _MOLECULE), (found, edges)
    )


def _given(labels: AtomLabels | None) -> str:
    """Return what a graph can be given as where there is no database."""
    if labels is None:
        return "a Graph or one of NetworkX's"
    return "a molecule, as SMILES or RDKit's, or a Graph"


def _embedding(
    pattern: Pattern, g: Graph, number: Index
) -> tuple[NDArray[np.int32], str]:
    """Return one embedding, and which one it is, in words."""
    wanted = whole_number("embedding", number, 0)
    found = _matching.embeddings(pattern._all, pattern._i, g, None, wanted + 1)
    if not len(found):
        raise KestroError(f"the graph does not contain pattern {pattern.id}")
    if len(found) <= wanted:
        raise IndexError(
            f"embedding {wanted} is out of range: the graph has "
            f"{number_of(len(found), 'embedding')} of pattern {pattern.id}"
        )
    return found[wanted], f", embedding {wanted}" if wanted else ""


def _read_molecule(
    pattern: Pattern, molecule: Any, name: str
) -> tuple[Any, Graph, str]:
    """Return a molecule of RDKit's with its atoms as vertices, and its name."""
    from kestro._molecules import from_rdkit, from_smiles

    Chem = import_rdkit()
    labels = pattern._all.summary.atom_labels
    assert labels is not None
    if isinstance(molecule, str):
        from_smiles([molecule], **labels._asdict())  # tells what is wrong
        name, molecule = molecule, Chem.MolFromSmiles(molecule)
    db = from_rdkit([molecule], **labels._asdict())
    if labels.hydrogens:
        molecule = Chem.AddHs(molecule)
    return molecule, db[0], name


def _read_graph(graph: Any) -> Graph:
    import networkx as nx

    from kestro._networkx import from_networkx

    if not isinstance(graph, nx.Graph):
        raise TypeError(
            f"graph must be a Graph, one of NetworkX's or a position, not {graph!r}; "
            f"the pattern is none of molecules"
        )
    return from_networkx([graph])[0]
