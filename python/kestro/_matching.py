"""Looking for the patterns of a result in graphs."""

from __future__ import annotations

from collections.abc import Callable, Iterable
from concurrent.futures import ThreadPoolExecutor
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro import _core
from kestro._arguments import optional_number, position
from kestro._database import Graph, GraphDatabase
from kestro._errors import printable
from kestro._native import Arrays, database_of
from kestro._packing import Packer
from kestro._ragged import offsets_of, places, small
from kestro._summary import check_atom_labels

if TYPE_CHECKING:
    import scipy.sparse

    from kestro._patterns import Patterns

# Graphs that are matched between two looks at signals.
_CHUNK = 8


def pattern_arrays(patterns: Patterns, chosen: NDArray[np.int64]) -> Arrays:
    """Return these patterns as graphs, with all labels of the run."""
    p = patterns
    vertices, vertex_offsets = places(p.vertex_offsets, chosen)
    edges, edge_offsets = places(p.edge_offsets, chosen)
    return Arrays(
        vertex_counts=np.diff(vertex_offsets),
        edge_counts=np.diff(edge_offsets),
        vertex_labels=p.vertex_labels[vertices],
        edges=p.edges[edges].astype(np.int64),
        edge_labels=p.edge_labels[edges],
        vertex_table=p.vertex_table,
        edge_table=p.edge_table,
    )


def pattern_database(patterns: Patterns, chosen: NDArray[np.int64]) -> _core.Database:
    """Return these patterns as graphs of a database."""
    return database_of(pattern_arrays(patterns, chosen))


class Lattice:
    """Chosen patterns of a run, prepared for being looked for together.

    Parameters
    ----------
    patterns : Patterns
        The run's.
    chosen : ndarray of int64
        Positions in the run, in the order of the columns; any may come twice.
    """

    def __init__(self, patterns: Patterns, chosen: NDArray[np.int64]) -> None:
        distinct, columns = np.unique(chosen, return_inverse=True)
        first, parents = parents_among(patterns, distinct)
        self._matcher = _core.LatticeMatcher(
            pattern_database(patterns, distinct), first, parents
        )
        self._distinct = len(distinct)
        in_order = np.array_equal(columns, np.arange(len(distinct)))
        self._columns = None if in_order else columns

    def match(self, db: _core.Database, jobs: int) -> scipy.sparse.csr_array:
        """Return which graph contains which of the patterns."""
        import scipy.sparse

        ranges = [(i, min(i + _CHUNK, len(db))) for i in range(0, len(db), _CHUNK)]
        found = self._match_ranges(db, ranges, min(jobs, len(ranges)))
        nothing = (np.zeros(0, np.int64), np.zeros(0, np.int32))
        counts, columns = zip(nothing, *found, strict=True)
        indices = np.concatenate(columns)
        matrix = scipy.sparse.csr_array(
            (
                np.ones(len(indices), np.uint8),
                indices,
                small(offsets_of(np.concatenate(counts))),
            ),
            shape=(len(db), self._distinct),
        )
        return matrix if self._columns is None else matrix[:, self._columns]

    def _match_ranges(
        self, db: _core.Database, ranges: list[tuple[int, int]], jobs: int
    ) -> Iterable[tuple[NDArray[np.int64], NDArray[np.int32]]]:
        def match(graphs: tuple[int, int]) -> Any:
            return self._matcher.contained(db, *graphs)

        if jobs <= 1:
            return map(match, ranges)
        pool = ThreadPoolExecutor(jobs, "kestro-transform")
        try:
            return list(pool.map(match, ranges))
        finally:
            pool.shutdown(cancel_futures=True)


def check_database(patterns: Patterns, other: object) -> None:
    """Raise unless it is a database whose labels mean what the patterns' do."""
    if not isinstance(other, GraphDatabase):
        raise TypeError(
            f"other must be a GraphDatabase, not {type(other).__name__}; "
            f"from_smiles and the other readers make one"
        )
    check_atom_labels(patterns.summary.atom_labels, other.atom_labels)


def tell_strange_labels(
    patterns: Patterns,
    chosen: NDArray[np.int64],
    other: GraphDatabase,
    tell: Callable[[str], object],
) -> None:
    """Tell where no pattern can occur, as no label is known on both sides.

    Of molecules on both sides nothing is told: their labels mean the same, so a
    molecule of other elements is no mistake.
    """
    if patterns.summary.atom_labels is not None and other.atom_labels is not None:
        return
    p = patterns
    vertices, _ = places(p.vertex_offsets, chosen)
    edges, _ = places(p.edge_offsets, chosen)
    in_patterns = (
        [p.vertex_table[i] for i in np.unique(p.vertex_labels[vertices])],
        [p.edge_table[i] for i in np.unique(p.edge_labels[edges])],
    )
    in_graphs = other._native.labels()
    for what, own, theirs in zip(
        ("a vertex", "an edge"), in_patterns, in_graphs, strict=True
    ):
        if own and theirs and set(own).isdisjoint(theirs):
            tell(
                f"no label of {what} in the patterns ({_some(own)}) is in the "
                f"graphs ({_some(theirs)}): no pattern can occur"
            )
            return


def _some(labels: list[str]) -> str:
    """Return the first labels, to be read."""
    first = ", ".join(printable(label) for label in sorted(labels)[:5])
    return f"{first}, ..." if len(labels) > 5 else first


def embeddings(
    patterns: Patterns,
    i: int,
    graph: Graph | int | np.integer[Any],
    db: GraphDatabase | None,
    limit: int | None,
) -> NDArray[np.int32]:
    """Return where pattern i lies in a graph, or in one of a database."""
    most = optional_number("limit", limit, 0, 2**63 - 1)
    if isinstance(graph, Graph):
        packer = Packer("raise")
        packer.add(0, graph.vertex_labels, graph.edges.tolist(), graph.edge_labels)
        native, tid = database_of(packer.packed().graphs), 0
    elif isinstance(graph, (int, np.integer)) and not isinstance(graph, bool):
        if db is None:
            raise TypeError("graph must be a Graph: the result has no database")
        native, tid = db._native, position(graph, len(db), "graph")
    else:
        raise TypeError(f"graph must be a Graph or a position, not {graph!r}")
    pattern = pattern_database(patterns, np.array([i], np.int64))
    return _core.embeddings(pattern, native, tid, -1 if most is None else most)


def parents_among(
    patterns: Patterns, chosen: NDArray[np.int64]
) -> tuple[NDArray[np.int64], NDArray[np.int32]]:
    """Return offsets and places of the parents that are chosen, too."""
    place = np.full(len(patterns), -1, np.int32)
    place[chosen] = np.arange(len(chosen), dtype=np.int32)
    parents, children = patterns.parent_pairs
    parents, children = place[parents], place[children]
    both = (parents >= 0) & (children >= 0)
    # Pairs come by child, in the order of the run, as what is chosen does.
    counts = np.bincount(children[both], minlength=len(chosen))
    return offsets_of(counts), parents[both]
