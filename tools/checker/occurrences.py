"""Which transactions contain a pattern.

A set of transactions is an integer, bit t for transaction t.  A transaction is
refuted without a search where it lacks what every occurrence needs: as many
edges of each type (labels of the edge and of its ends), and as many vertices
whose edges include those of a vertex of the pattern, label by label.  These are
proofs as well.  What they leave is searched by igraph's VF2, which finds
subgraphs that need not be induced, with colours for labels.

Two things keep VF2 from trying the like again and again.  It takes the pattern's
vertices in the order of their numbers, as far as they hang together, so the
pattern is handed over renumbered, its rarest vertex first, its leaves last.  And
of vertices of a transaction that are joined alike no more are handed over than
the pattern has vertices, since each can stand for the others.
"""

import functools
from collections import Counter
from collections.abc import Iterator

import igraph

from checker.graphs import Graph, Star

Needs = tuple[int, Star]  # the label of a vertex and its star


def bits_of(tids: list[int]) -> int:
    """The set of these transactions."""
    return sum(1 << tid for tid in set(tids))


def members(bits: int) -> Iterator[int]:
    """The transactions of a set, ascending."""
    while bits:
        low = bits & -bits
        yield low.bit_length() - 1
        bits ^= low


@functools.lru_cache(maxsize=1 << 18)
def covers(larger: Star, smaller: Star) -> bool:
    """Whether a vertex with one star can stand for one with the other."""
    have = dict(larger)
    return all(have.get(pair, 0) >= count for pair, count in smaller)


class _Counts:
    """How many of something each transaction has, as a set per number."""

    def __init__(self) -> None:
        self._at_least: list[int] = []  # [i]: those with more than i

    def add(self, tid: int, count: int) -> None:
        while len(self._at_least) < count:
            self._at_least.append(0)
        for i in range(count):
            self._at_least[i] |= 1 << tid

    def at_least(self, count: int) -> int:
        return self._at_least[count - 1] if count <= len(self._at_least) else 0


class Database:
    """The transactions, with what the filters count."""

    def __init__(self, graphs: list[Graph]) -> None:
        self.graphs = graphs
        self.all = (1 << len(graphs)) - 1
        self.searches = 0  # by VF2
        self._targets: dict[tuple[int, int], tuple[igraph.Graph, dict]] = {}
        self._types: dict[tuple[int, int, int], _Counts] = {}
        self._stars: dict[int, dict[Star, Counter[int]]] = {}  # by vertex label
        self._covering: dict[Needs, _Counts] = {}
        self._vertex_count: Counter[int] = Counter()
        edge_labels = set()
        for tid, g in enumerate(graphs):
            for kind, count in Counter(g.edge_type(u, w) for u, w, _ in g.edges()).items():
                self._types.setdefault(kind, _Counts()).add(tid, count)
                edge_labels.add(kind[1])
            for u, label in enumerate(g.vlabel):
                stars = self._stars.setdefault(label, {})
                stars.setdefault(g.star(u), Counter())[tid] += 1
                self._vertex_count[label] += 1
        self._one_vertex_label = len(self._vertex_count) < 2
        self._one_edge_label = len(edge_labels) < 2

    def edge_types(self) -> dict[tuple[int, int, int], int]:
        """Each edge type and the transactions that have it: size 1, whole."""
        return {kind: counts.at_least(1) for kind, counts in self._types.items()}

    def with_vertex(self, label: int, star: Star, count: int = 1) -> int:
        """Transactions with count vertices of that label that cover the star."""
        known = self._covering.get((label, star))
        if known is None:
            totals: Counter[int] = Counter()
            for larger, tids in self._stars.get(label, {}).items():
                if covers(larger, star):
                    totals.update(tids)
            known = self._covering[label, star] = _Counts()
            for tid, total in totals.items():
                known.add(tid, min(total, 32))
        return known.at_least(min(count, 32))

    def bound(self, pattern: Graph, bits: int) -> int:
        """Those of bits that no filter refutes."""
        types = Counter(pattern.edge_type(u, w) for u, w, _ in pattern.edges())
        for kind, count in types.items():
            known = self._types.get(kind)
            bits &= known.at_least(count) if known else 0
        stars = Counter((label, pattern.star(u)) for u, label in enumerate(pattern.vlabel))
        for label, star in stars:
            needed = sum(
                count
                for (other, larger), count in stars.items()
                if other == label and covers(larger, star)
            )
            bits &= self.with_vertex(label, star, needed)
        return bits

    def containing(self, pattern: Graph, bits: int, least: int = 0) -> int:
        """Those of bits that contain the pattern; nothing when they are fewer
        than least, which is told before all are searched."""
        bits = self.bound(pattern, bits)
        left = bits.bit_count()
        query = self._query(pattern)
        for tid in members(bits):
            if left < least:
                return 0
            if not self._holds(tid, query):
                bits ^= 1 << tid
                left -= 1
        return bits if left >= least else 0

    def is_frequent(self, pattern: Graph, bits: int, least: int) -> bool:
        """Whether at least that many, 1 or more, of bits contain the pattern."""
        return self.containing(pattern, bits, least) != 0

    def _query(self, pattern: Graph) -> tuple[igraph.Graph, dict]:
        """The pattern as VF2 takes it."""
        order = self._search_order(pattern)
        place = {u: position for position, u in enumerate(order)}
        edges = list(pattern.edges())
        colours = {}
        if not self._one_vertex_label:
            colours["color2"] = [pattern.vlabel[u] for u in order]
        if not self._one_edge_label:
            colours["edge_color2"] = [label for _, _, label in edges]
        joined = [(place[u], place[w]) for u, w, _ in edges]
        return igraph.Graph(len(order), joined), colours

    def _search_order(self, pattern: Graph) -> list[int]:
        """Breadth first from the rarest vertex, then the leaves."""

        def rarity(u: int) -> tuple[int, int]:
            return self._vertex_count[pattern.vlabel[u]], -len(pattern.adj[u])

        inner = {u for u, near in enumerate(pattern.adj) if len(near) > 1}
        order = [min(inner or range(len(pattern.adj)), key=rarity)]
        met = set(order)
        for u in order:
            for w in sorted(pattern.adj[u], key=rarity):
                if w in inner and w not in met:
                    met.add(w)
                    order.append(w)
        leaves = [u for u in range(len(pattern.adj)) if u not in met]
        return order + sorted(leaves, key=rarity)

    def _target(self, tid: int, most: int) -> tuple[igraph.Graph, dict]:
        """The transaction as VF2 takes it, for a pattern of at most so many
        vertices."""
        known = self._targets.get((tid, most))
        if known is None:
            g = self._with_few_twins(tid, most)
            edges = list(g.edges())
            colours = {}
            if not self._one_vertex_label:
                colours["color1"] = g.vlabel
            if not self._one_edge_label:
                colours["edge_color1"] = [label for _, _, label in edges]
            graph = igraph.Graph(len(g.vlabel), [(u, w) for u, w, _ in edges])
            known = self._targets[tid, most] = graph, colours
        return known

    def _with_few_twins(self, tid: int, most: int) -> Graph:
        g = self.graphs[tid]
        alike: Counter[tuple] = Counter()
        place: dict[int, int] = {}
        for u, near in enumerate(g.adj):
            kind = g.vlabel[u], tuple(sorted(near.items()))
            alike[kind] += 1
            if alike[kind] <= most:
                place[u] = len(place)
        if len(place) == len(g.adj):
            return g
        return Graph(
            [g.vlabel[u] for u in place],
            [{place[w]: label for w, label in g.adj[u].items() if w in place} for u in place],
        )

    def _holds(self, tid: int, query: tuple[igraph.Graph, dict]) -> bool:
        self.searches += 1
        pattern, colours2 = query
        # Rounded up, so that few kinds of one transaction are kept.
        target, colours1 = self._target(tid, -(-pattern.vcount() // 8) * 8)
        return target.subisomorphic_vf2(pattern, **colours1, **colours2)
