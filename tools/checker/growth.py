"""All frequent patterns of one size, from all of the size below.

Every connected pattern of several edges has an edge without which it stays
connected; what is left is frequent when the pattern is.  So the extensions, by
one edge, of all frequent patterns of size k hold all those of size k + 1, and an
extension with a connected part that is not among those of size k is infrequent.
Nothing is enumerated in the transactions: what is left is counted.

Each extension has many parts to grow from; one is enough.  So an edge is only
added where it ranks lowest among the edges that can be taken out of the result,
by a rank that isomorphisms keep: pendant edges before those on cycles, rare
types before common ones.
"""

import dataclasses
from collections.abc import Iterator

from checker.certificates import Certificate, certificate
from checker.graphs import Graph
from checker.occurrences import Database
from checker.progress import Progress

EdgeType = tuple[int, int, int]


class BudgetSpent(Exception):
    """More extensions than were to be looked at."""


@dataclasses.dataclass(slots=True)
class PatternClass:
    """All isomorphic patterns of a size."""

    graph: Graph
    bits: int  # the transactions that contain it
    parents: list[Certificate]  # distinct
    ids: list[int]  # of the records that the run lists
    children: list[Certificate]  # frequent, where all of them are known
    excused: bool | None = None  # see Levels.is_excused; None: not looked at yet


Level = dict[Certificate, PatternClass]


def parts(g: Graph) -> Iterator[Certificate]:
    """What is left of g without each of the edges that can be taken out."""
    for u, w, _ in g.removable_edges():
        yield certificate(g.without_edge(u, w))


def distinct_parents(g: Graph) -> list[Certificate]:
    return list(dict.fromkeys(parts(g))) if g.size() > 1 else []


def single_edges(db: Database, least: int) -> Level:
    """The frequent patterns of size 1."""
    level = {}
    for (a, label, b), bits in db.edge_types().items():
        if bits.bit_count() >= least:
            g = Graph([a, b], [{1: label}, {0: label}])
            level[certificate(g)] = PatternClass(g, bits, [], [], [])
    return level


class Growth:
    """Extensions of patterns by one edge, and which of them are frequent."""

    def __init__(
        self, db: Database, least: int, budget: int | None, progress: Progress | None = None
    ) -> None:
        self._db = db
        self._progress = progress or Progress()
        self._least = least
        self._left = budget  # extensions that may still be looked at
        self.looked_at = 0
        self._rank: dict[EdgeType, int] = {}
        self._kinds: dict[int, list[tuple[int, int, int]]] = {}  # by vertex label
        self._between: dict[tuple[int, int], list[int]] = {}
        found = sorted(db.edge_types().items(), key=lambda item: item[1].bit_count())
        for kind, bits in found:
            if bits.bit_count() < least:
                continue
            a, label, b = kind
            self._rank[kind] = len(self._rank)
            self._kinds.setdefault(a, []).append((label, b, bits))
            if a != b:
                self._kinds.setdefault(b, []).append((label, a, bits))
            self._between.setdefault((a, b), []).append(label)

    def next_level(self, level: Level, known: Level) -> Level:
        """The frequent classes one edge larger than level, which holds all of
        its size; without those known already, whose sets need not be ready."""
        found: Level = {}
        seen: set[Certificate] = set()
        for pattern in level.values():
            for grown, bits in self.extensions(pattern.graph, pattern.bits, True):
                self._progress.look(self.looked_at)
                shape = certificate(grown)
                if shape in seen or shape in known:
                    continue
                seen.add(shape)
                child = self._counted(grown, bits, level)
                if child is not None:
                    found[shape] = child
            self._progress.advance()
        return found

    def _counted(self, g: Graph, bits: int, level: Level) -> PatternClass | None:
        """The class of g when it is frequent."""
        shapes = []
        for shape in parts(g):
            part = level.get(shape)
            if part is None:
                return None
            shapes.append(shape)
            bits &= part.bits
            if bits.bit_count() < self._least:
                return None
        bits = self._db.containing(g, bits, self._least)
        return PatternClass(g, bits, list(dict.fromkeys(shapes)), [], []) if bits else None

    def frequent_extension(self, g: Graph, bits: int, refuted: set[Certificate]) -> Graph | None:
        """A frequent pattern one edge larger than g, where there is one; adds
        to what has been refuted."""
        for grown, bound in self.extensions(g, bits, False):
            shape = certificate(grown)
            if shape in refuted:
                continue
            if self._db.is_frequent(grown, bound, self._least):
                return grown
            refuted.add(shape)
        return None

    def extensions(self, g: Graph, bits: int, lowest: bool) -> Iterator[tuple[Graph, int]]:
        """The extensions of g that may be frequent, up to exchanges of twins,
        each with transactions that hold all that contain it; only those where
        the new edge ranks lowest, if so wished."""
        moves = twin_exchanges(g)
        vertices = orbits(len(g.vlabel), moves)
        yield from self._pendant(g, bits, lowest, vertices)
        # A new edge on a cycle ranks above every pendant one that stays.
        if not lowest or sum(len(near) == 1 for near in g.adj) <= 2:
            yield from self._closing(g, bits, lowest, moves)

    def _spend(self) -> None:
        self.looked_at += 1
        if self._left is not None:
            self._left -= 1
            if self._left < 0:
                raise BudgetSpent

    def _pendant(
        self, g: Graph, bits: int, lowest: bool, vertices: list[int]
    ) -> Iterator[tuple[Graph, int]]:
        """A new vertex at one of g."""
        for u in vertices:
            for label, other, having in self._kinds.get(g.vlabel[u], []):
                bound = bits & having
                if bound.bit_count() < self._least:
                    continue
                grown = g.copy()
                new = grown.add_vertex(other)
                grown.add_edge(u, new, label)
                bound &= self._db.with_vertex(g.vlabel[u], grown.star(u))
                if bound.bit_count() < self._least:
                    continue
                if lowest and not self._is_lowest_pendant(grown, new):
                    continue
                self._spend()
                yield grown, bound

    def _closing(
        self, g: Graph, bits: int, lowest: bool, moves: list[list[int]]
    ) -> Iterator[tuple[Graph, int]]:
        """A new edge between two vertices of g."""
        leaves = {u for u, near in enumerate(g.adj) if len(near) == 1}
        met: set[tuple[int, int]] = set()
        for u in range(len(g.vlabel)):
            for w in range(u + 1, len(g.vlabel)):
                if w in g.adj[u] or (u, w) in met or (lowest and not leaves <= {u, w}):
                    continue
                met |= pair_orbit((u, w), moves)
                a, b = sorted((g.vlabel[u], g.vlabel[w]))
                for label in self._between.get((a, b), []):
                    grown = g.copy()
                    grown.add_edge(u, w, label)
                    bound = bits & self._db.with_vertex(g.vlabel[u], grown.star(u))
                    bound &= self._db.with_vertex(g.vlabel[w], grown.star(w))
                    if bound.bit_count() < self._least:
                        continue
                    if lowest and not self._is_lowest_on_cycle(grown, u, w):
                        continue
                    self._spend()
                    yield grown, bound

    def _pendant_rank(self, g: Graph, leaf: int) -> tuple:
        (u,) = g.adj[leaf]
        kind = g.edge_type(leaf, u)
        return self._rank.get(kind, -1), g.vlabel[leaf], len(g.adj[u]), g.star(u)

    def _is_lowest_pendant(self, g: Graph, new: int) -> bool:
        rank = self._pendant_rank(g, new)
        return all(
            rank <= self._pendant_rank(g, leaf) for leaf, near in enumerate(g.adj) if len(near) == 1
        )

    def _cycle_rank(self, g: Graph, u: int, w: int) -> tuple:
        ends = sorted((len(g.adj[x]), g.vlabel[x], g.star(x)) for x in (u, w))
        return self._rank.get(g.edge_type(u, w), -1), ends

    def _is_lowest_on_cycle(self, g: Graph, u: int, w: int) -> bool:
        """No vertex of g is pendant, so all removable edges are on cycles."""
        rank = self._cycle_rank(g, u, w)
        return all(rank <= self._cycle_rank(g, a, b) for a, b, _ in g.removable_edges())


def twin_exchanges(g: Graph) -> list[list[int]]:
    """Automorphisms that exchange two vertices which are joined alike."""
    moves = []
    last: dict[tuple, int] = {}
    for u, near in enumerate(g.adj):
        kind = g.vlabel[u], tuple(sorted(near.items()))
        if kind in last:
            move = list(range(len(g.adj)))
            move[u], move[last[kind]] = last[kind], u
            moves.append(move)
        last[kind] = u
    return moves


def orbits(n: int, moves: list[list[int]]) -> list[int]:
    """One vertex of each orbit of the group that these generate."""
    first = []
    met: set[int] = set()
    for u in range(n):
        if u in met:
            continue
        first.append(u)
        met.add(u)
        waiting = [u]
        while waiting:
            x = waiting.pop()
            for move in moves:
                if move[x] not in met:
                    met.add(move[x])
                    waiting.append(move[x])
    return first


def pair_orbit(pair: tuple[int, int], moves: list[list[int]]) -> set[tuple[int, int]]:
    """All that a pair of vertices, the smaller first, can become."""
    met = {pair}
    waiting = [pair]
    while waiting:
        u, w = waiting.pop()
        for move in moves:
            a, b = move[u], move[w]
            image = (a, b) if a < b else (b, a)
            if image not in met:
                met.add(image)
                waiting.append(image)
    return met
