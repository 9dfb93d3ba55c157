"""Patterns of several results, put into classes of isomorphic ones.

Each pattern gets a key by refining the colours of its vertices; patterns of one
key are isomorphic when one, of as many vertices and edges, lies in the other,
which the package's own matching decides.  So the answer does not depend on how
patterns were brought into a canonical form.
"""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Iterable
from typing import NamedTuple

from kestro._database import Graph
from kestro._pattern import Pattern
from kestro._result import Result

_ROUNDS = 3  # more would tell few patterns apart that are not yet


class PatternClass(NamedTuple):
    """Patterns that are isomorphic, by result."""

    members: tuple[list[Pattern], ...]

    @property
    def any(self) -> Pattern:
        """One of them, of the first result that has one."""
        return next(own[0] for own in self.members if own)


def classes(*results: Result) -> list[PatternClass]:
    """Return the classes in the order in which they first appear.

    Examples
    --------
    >>> import kestro
    >>> from kestro.tools._isomorphism import classes
    >>> db = kestro.from_edges([["C", "O"]] * 2, [[(0, 1, "=")]] * 2)
    >>> result = kestro.mine(db, min_support=2)
    >>> [[len(own) for own in c.members] for c in classes(result, result)]
    [[1, 1]]
    """
    found: list[PatternClass] = []
    by_text: dict[str, PatternClass] = {}
    by_key: dict[object, list[tuple[PatternClass, Result]]] = defaultdict(list)
    for place, result in enumerate(results):
        for pattern in result:
            graph = pattern.graph
            text = graph.lines()
            own = by_text.get(text)
            if own is None:
                alike = by_key[_key(graph)]
                own = next((c for c, of in alike if _lies_in(of, c.any, graph)), None)
                if own is None:
                    own = PatternClass(tuple([] for _ in results))
                    alike.append((own, result))
                    found.append(own)
                by_text[text] = own
            own.members[place].append(pattern)
    return found


def _lies_in(result: Result, pattern: Pattern, graph: Graph) -> bool:
    return len(result.embeddings(pattern, graph, limit=1)) > 0


def _key(graph: Graph) -> object:
    """Return what isomorphic graphs have in common.

    B. Weisfeiler, A. Leman, The reduction of a graph to canonical form and the
    algebra which appears therein, 1968.
    """
    edges = list(zip(graph.edges.tolist(), graph.edge_labels, strict=True))
    colours: list[object] = list(graph.vertex_labels)
    for _ in range(_ROUNDS):
        around: list[list[tuple[str, int]]] = [[] for _ in colours]
        hashes = [hash(colour) for colour in colours]
        for (a, b), label in edges:
            around[a].append((label, hashes[b]))
            around[b].append((label, hashes[a]))
        colours = [
            hash((own, tuple(sorted(near))))
            for own, near in zip(hashes, around, strict=True)
        ]
    return len(edges), tuple(sorted(map(hash, colours)))


def doubled(found: Iterable[PatternClass], place: int) -> list[list[Pattern]]:
    """Return the classes that one result lists more than once."""
    return [c.members[place] for c in found if len(c.members[place]) > 1]
