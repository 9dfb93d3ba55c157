"""Graphs that the benchmarks draw up themselves, and how they are written.

All labels are equal in those whose vertices are to look alike.  Beside some
stands the number of their patterns, which follows from how they are made.
"""

import dataclasses
import itertools
import math
from collections.abc import Callable, Iterator
from pathlib import Path

Edge = tuple[int, int, str]
Ends = list[tuple[int, int]]


@dataclasses.dataclass(frozen=True)
class Transaction:
    labels: list[str]
    edges: list[Edge]
    ids: list[int] | None = None  # the vertices' positions when None

    def lines(self) -> Iterator[str]:
        ids = self.ids or range(len(self.labels))
        yield "t #\n"
        for number, label in zip(ids, self.labels):
            yield f"v {number} {label}\n"
        for u, w, label in self.edges:
            yield f"u {ids[u]} {ids[w]} {label}\n"


Database = Callable[[], Iterator[Transaction]]


def write_database(database: Database, path: Path) -> None:
    with open(path, "w", encoding="ascii") as out:
        for transaction in database():
            out.writelines(transaction.lines())


def alike(vertices: int, edges: Ends) -> Transaction:
    return Transaction(["C"] * vertices, [(u, w, "s") for u, w in edges])


# Trees with like parts


def star(leaves: int) -> Database:
    def make() -> Iterator[Transaction]:
        yield alike(leaves + 1, [(0, i) for i in range(1, leaves + 1)])
    return make


def spider(legs: int) -> Database:
    """Its legs have two edges."""
    def make() -> Iterator[Transaction]:
        yield alike(2 * legs + 1, [(0, i) for i in range(1, legs + 1)] +
                    [(i, legs + i) for i in range(1, legs + 1)])
    return make


def count_of_spider(legs: int) -> int:
    """So many legs of one and of two edges: all pairs but no legs, and two
    legs of one edge are one of two."""
    return math.comb(legs + 2, 2) - 2


def row_of_hubs(hubs: int, leaves: int) -> Database:
    """A path of hubs, each with as many leaves."""
    def make() -> Iterator[Transaction]:
        yield alike(hubs * (leaves + 1), [(i, i + 1) for i in range(hubs - 1)]
                    + [(i, hubs + i * leaves + j)
                       for i in range(hubs) for j in range(leaves)])
    return make


def count_of_hubs(hubs: int, leaves: int) -> int:
    def spine(parts: list[int]) -> tuple[int, ...]:
        """The leaves of each vertex that is none itself, from the end that
        comes first; a hub without leaves at an end is one."""
        for _ in range(2):
            while len(parts) > 1 and parts[0] == 0:
                parts = [parts[1] + 1, *parts[2:]]
            parts.reverse()
        return min(tuple(parts), tuple(reversed(parts)))

    return len({spine(list(part)) for length in range(1, hubs + 1)
                for part in itertools.product(range(leaves + 1),
                                              repeat=length)} - {(0,)})


# Paths, rings, and what holds long paths


def path(vertices: int, closed: bool) -> Database:
    """A path, or the ring that an edge between its ends makes of it."""
    def make() -> Iterator[Transaction]:
        edges = [(i, i + 1) for i in range(vertices - 1)]
        if closed:
            edges.append((0, vertices - 1))
        yield alike(vertices, edges)
    return make


def path_and(vertices: int, other: int, edges: Ends) -> Database:
    """A path, and a graph of other vertices."""
    def make() -> Iterator[Transaction]:
        yield alike(vertices, [(i - 1, i) for i in range(1, vertices)])
        yield alike(other, edges)
    return make


def path_and_bipartite(m: int) -> Database:
    """The longest path in K(m,m+2) has 2m edges."""
    sides = [(u, m + w) for u in range(m) for w in range(m + 2)]
    return path_and(2 * m + 3, 2 * m + 2, sides)


def path_and_clique(n: int) -> Database:
    """The longest path in K(n) has n-1 edges; n triangles are beside it."""
    edges = [(u, w) for w in range(n) for u in range(w)]
    edges += [(n + 3 * i + u, n + 3 * i + w) for i in range(n)
              for u, w in ((0, 1), (1, 2), (0, 2))]
    return path_and(2 * n, 4 * n, edges)


def path_and_grid(n: int) -> Database:
    """The grid has a path of all its vertices; an edge is beside it."""
    edges = [(u, u + 1) for u in range(n * n) if (u + 1) % n]
    edges += [(u, u + n) for u in range(n * n - n)]
    return path_and(n * n + 1, n * n + 2, [*edges, (n * n, n * n + 1)])
