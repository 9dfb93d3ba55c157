"""Labelled graphs and the reader of transaction files.

Labels are small integers, given out by a Labels in the order of first meeting;
an input and the patterns found in it share one.  Labels are bytes in the files,
of any encoding, and only ASCII white space parts fields.
"""

import dataclasses
from collections import Counter
from collections.abc import Iterator
from pathlib import Path

Edge = tuple[int, int, int]  # two vertices, the smaller first, and the label
Star = tuple[tuple[tuple[int, int], int], ...]  # see Graph.star


class BadFile(Exception):
    """A file that is not what it has to be; the text says why."""


class Labels:
    """The numbers of vertex and edge labels."""

    def __init__(self) -> None:
        self.vertex: dict[bytes, int] = {}
        self.edge: dict[bytes, int] = {}

    def vertex_number(self, label: bytes) -> int:
        return self.vertex.setdefault(label, len(self.vertex))

    def edge_number(self, label: bytes) -> int:
        return self.edge.setdefault(label, len(self.edge))


@dataclasses.dataclass(slots=True)
class Graph:
    vlabel: list[int]  # per vertex
    adj: list[dict[int, int]]  # per vertex: neighbour -> edge label

    def copy(self) -> "Graph":
        return Graph(self.vlabel.copy(), [near.copy() for near in self.adj])

    def add_vertex(self, label: int) -> int:
        self.vlabel.append(label)
        self.adj.append({})
        return len(self.vlabel) - 1

    def add_edge(self, u: int, w: int, label: int) -> None:
        self.adj[u][w] = label
        self.adj[w][u] = label

    def edges(self) -> Iterator[Edge]:
        for u, near in enumerate(self.adj):
            for w, label in near.items():
                if u < w:
                    yield u, w, label

    def size(self) -> int:
        """The number of edges."""
        return sum(map(len, self.adj)) // 2

    def edge_type(self, u: int, w: int) -> tuple[int, int, int]:
        """The smaller vertex label, the edge label, the larger vertex label."""
        a, b = sorted((self.vlabel[u], self.vlabel[w]))
        return a, self.adj[u][w], b

    def star(self, u: int) -> Star:
        """The edges at u: how often each pair of edge and neighbour label."""
        pairs = Counter((label, self.vlabel[w]) for w, label in self.adj[u].items())
        return tuple(sorted(pairs.items()))

    def is_connected(self) -> bool:
        if not self.vlabel:
            return False
        met = {0}
        waiting = [0]
        while waiting:
            for w in self.adj[waiting.pop()]:
                if w not in met:
                    met.add(w)
                    waiting.append(w)
        return len(met) == len(self.vlabel)

    def removable_edges(self) -> list[Edge]:
        """The edges without which a connected graph stays so, once a vertex
        left alone is dropped: pendant edges and those on a cycle."""
        bridges = self._bridges()
        return [
            (u, w, label)
            for u, w, label in self.edges()
            if len(self.adj[u]) == 1 or len(self.adj[w]) == 1 or (u, w) not in bridges
        ]

    def _bridges(self) -> set[tuple[int, int]]:
        """Tarjan's, without recursion: edges that no cycle holds."""
        found: set[tuple[int, int]] = set()
        order = [-1] * len(self.adj)
        low = [0] * len(self.adj)
        clock = 0
        path = [(0, -1, iter(self.adj[0]))]
        order[0] = 0
        while path:
            u, before, rest = path[-1]
            for w in rest:
                if w == before:
                    continue
                if order[w] >= 0:
                    low[u] = min(low[u], order[w])
                    continue
                clock += 1
                order[w] = low[w] = clock
                path.append((w, u, iter(self.adj[w])))
                break
            else:
                path.pop()
                if before >= 0:
                    low[before] = min(low[before], low[u])
                    if low[u] > order[before]:
                        found.add((min(u, before), max(u, before)))
        return found

    def without_edge(self, u: int, w: int) -> "Graph":
        """A copy without that edge, and without a vertex that this leaves alone."""
        rest = self.copy()
        del rest.adj[u][w], rest.adj[w][u]
        for gone in sorted((u, w), reverse=True):
            if not rest.adj[gone]:
                rest.drop_vertex(gone)
        return rest

    def drop_vertex(self, gone: int) -> None:
        """Take out a vertex that has no edge."""
        del self.vlabel[gone], self.adj[gone]
        for u, near in enumerate(self.adj):
            if any(w > gone for w in near):
                self.adj[u] = {w - (w > gone): label for w, label in near.items()}


@dataclasses.dataclass
class TransactionFile:
    graphs: list[Graph]
    vertex_labels: int  # distinct ones, those before the first transaction too
    edge_labels: int


def read_transactions(data: bytes, labels: Labels) -> TransactionFile:
    """The graphs of an input that the program accepts."""
    graphs: list[Graph] = []
    vertex_labels: set[bytes] = set()
    edge_labels: set[bytes] = set()
    block: list[tuple[int, int, bytes]] = []  # edge lines of the transaction
    index: dict[int, int] = {}  # its vertices by id

    def finish() -> None:
        for a, b, label in block:
            graphs[-1].add_edge(index[a], index[b], labels.edge_number(label))
        block.clear()
        index.clear()

    for number, line in enumerate(data.splitlines(), 1):
        fields = line.split()
        kind = fields[0][:1].lower() if fields else b""
        if kind in (b"#", b"%"):
            continue
        if kind == b"t":
            if graphs:
                finish()
            graphs.append(Graph([], []))
            continue
        try:
            # The letter may stand against the first number.
            fields = line.lstrip()[1:].split()
            if kind == b"v":
                vertex_labels.add(fields[1])
                if graphs:
                    v = graphs[-1].add_vertex(labels.vertex_number(fields[1]))
                    index.setdefault(int(fields[0]), v)
            elif kind in (b"u", b"d", b"e"):
                edge_labels.add(fields[2])
                if graphs:
                    block.append((int(fields[0]), int(fields[1]), fields[2]))
            else:
                raise ValueError
        except (IndexError, ValueError):
            raise BadFile(f"line {number} of the input is not valid") from None
    try:
        if graphs:
            finish()
    except KeyError as missing:
        raise BadFile(f"the input names no vertex {missing}") from None
    return TransactionFile(graphs, len(vertex_labels), len(edge_labels))


def read_label_file(path: Path) -> tuple[int, int]:
    """The numbers of distinct vertex and edge labels in a label file."""
    lines = [line.split() for line in path.read_bytes().splitlines()]
    kinds = {kind: set() for kind in (b"V", b"E")}
    for fields in lines:
        if len(fields) > 1 and fields[0] in kinds:
            kinds[fields[0]].add(fields[1])
    return len(kinds[b"V"]), len(kinds[b"E"])
