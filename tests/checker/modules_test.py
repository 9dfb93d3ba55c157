#!/usr/bin/python3
"""The checker's parts, against slow and obvious ones."""

import itertools
import random
import sys
import unittest
from fractions import Fraction
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parents[1] / "tools"), str(HERE.parent / "random")]

import databases  # noqa: E402
from checker import growth, limits, occurrences, report  # noqa: E402
from checker.certificates import certificate  # noqa: E402
from checker.graphs import BadFile, Graph, Labels, read_transactions  # noqa: E402


def graph(vertices: list[int], edges: list[tuple[int, int, int]]) -> Graph:
    g = Graph(vertices, [{} for _ in vertices])
    for u, w, label in edges:
        g.add_edge(u, w, label)
    return g


def ring(n: int) -> Graph:
    return graph([0] * n, [(u, (u + 1) % n, 0) for u in range(n)])


def embeddings(pattern: Graph, target: Graph) -> bool:
    """Whether any injective map keeps labels and edges."""
    for image in itertools.permutations(range(len(target.vlabel)), len(pattern.vlabel)):
        if all(pattern.vlabel[u] == target.vlabel[x] for u, x in enumerate(image)) and all(
            target.adj[image[u]].get(image[w]) == label for u, w, label in pattern.edges()
        ):
            return True
    return False


def small_graph(dice: random.Random, most: int) -> Graph:
    n = dice.randint(1, most)
    g = graph([dice.randrange(2) for _ in range(n)], [])
    for u, w in itertools.combinations(range(n), 2):
        if dice.random() < 0.5:
            g.add_edge(u, w, dice.randrange(2))
    return g


def moved(g: Graph, dice: random.Random) -> Graph:
    place = list(range(len(g.vlabel)))
    dice.shuffle(place)
    other = graph([0] * len(place), [(place[u], place[w], x) for u, w, x in g.edges()])
    for u, label in enumerate(g.vlabel):
        other.vlabel[place[u]] = label
    return other


class Certificates(unittest.TestCase):
    def test_equal_exactly_for_isomorphic_graphs(self) -> None:
        dice = random.Random(1)
        graphs = [small_graph(dice, 4) for _ in range(150)]
        shapes = [certificate(g) for g in graphs]
        for (g, a), (h, b) in itertools.combinations(zip(graphs, shapes), 2):
            same = len(g.vlabel) == len(h.vlabel) and g.size() == h.size() and embeddings(g, h)
            self.assertEqual(a == b, same, (g, h))

    def test_do_not_depend_on_the_order(self) -> None:
        dice = random.Random(2)
        for _ in range(300):
            g = small_graph(dice, 8)
            self.assertEqual(certificate(g), certificate(moved(g, dice)))


class Occurrences(unittest.TestCase):
    def test_as_by_trying_all_maps(self) -> None:
        dice = random.Random(3)
        targets = [small_graph(dice, 6) for _ in range(40)]
        db = occurrences.Database(targets)
        for _ in range(60):
            pattern = small_graph(dice, 5)
            if not pattern.is_connected() or pattern.size() == 0:
                continue
            wanted = [tid for tid, g in enumerate(targets) if embeddings(pattern, g)]
            found = db.containing(pattern, db.all)
            self.assertEqual(list(occurrences.members(found)), wanted)
            self.assertEqual(db.is_frequent(pattern, db.all, 5), len(wanted) >= 5)

    def test_subgraphs_need_not_be_induced(self) -> None:
        db = occurrences.Database([graph([0] * 3, [(0, 1, 0), (1, 2, 0), (0, 2, 0)])])
        self.assertEqual(db.containing(graph([0] * 3, [(0, 1, 0), (1, 2, 0)]), 1), 1)

    def test_twins_beyond_need_are_left_out(self) -> None:
        """A star of forty leaves has one of nine, but no ten with another."""
        star = graph([0] * 41, [(0, w, 0) for w in range(1, 41)])
        db = occurrences.Database([star])
        nine = graph([0] * 10, [(0, w, 0) for w in range(1, 10)])
        self.assertEqual(db.containing(nine, 1), 1)
        nine.add_edge(9, nine.add_vertex(0), 0)
        self.assertEqual(db.containing(nine, 1), 0)


class Growth(unittest.TestCase):
    def test_all_frequent_subgraphs_are_reached(self) -> None:
        """Against all connected sets of edges of all transactions."""
        dice = random.Random(4)
        for _ in range(12):
            graphs = [small_graph(dice, 5) for _ in range(3)]
            self.assertEqual(self.by_growth(graphs, 2), self.by_sets(graphs, 2))

    def by_growth(self, graphs: list[Graph], least: int) -> dict:
        db = occurrences.Database(graphs)
        steps = growth.Growth(db, least, None)
        level = growth.single_edges(db, least)
        found = {}
        while level:
            found.update({shape: known.bits for shape, known in level.items()})
            level = steps.next_level(level, {})
        return found

    def by_sets(self, graphs: list[Graph], least: int) -> dict:
        found: dict = {}
        for tid, g in enumerate(graphs):
            edges = list(g.edges())
            for size in range(1, len(edges) + 1):
                for chosen in itertools.combinations(edges, size):
                    part = self.part(g, chosen)
                    if part.is_connected():
                        shape = certificate(part)
                        found[shape] = found.get(shape, 0) | 1 << tid
        return {shape: bits for shape, bits in found.items() if bits.bit_count() >= least}

    @staticmethod
    def part(g: Graph, chosen: tuple) -> Graph:
        place: dict[int, int] = {}
        for u, w, _ in chosen:
            place.setdefault(u, len(place))
            place.setdefault(w, len(place))
        return graph([g.vlabel[u] for u in place], [(place[u], place[w], x) for u, w, x in chosen])

    def test_removable_edges_leave_a_connected_graph(self) -> None:
        dice = random.Random(5)
        for _ in range(200):
            g = small_graph(dice, 6)
            if not g.is_connected() or g.size() < 2:
                continue
            removable = {(u, w) for u, w, _ in g.removable_edges()}
            for u, w, _ in g.edges():
                rest = g.without_edge(u, w)
                self.assertEqual(rest.is_connected(), (u, w) in removable)
                self.assertEqual(rest.size(), g.size() - 1)


class Limits(unittest.TestCase):
    def test_where_the_form_may_vary(self) -> None:
        prism = graph(
            [0] * 6,
            [
                (0, 1, 0),
                (1, 2, 0),
                (0, 2, 0),
                (3, 4, 0),
                (4, 5, 0),
                (3, 5, 0),
                (0, 3, 0),
                (1, 4, 0),
                (2, 5, 0),
            ],
        )
        self.assertTrue(limits.form_may_vary(prism, 5))
        self.assertFalse(limits.form_may_vary(prism, 7))

    def test_never_of_trees_rings_and_complete_graphs(self) -> None:
        complete = graph([0] * 6, [(u, w, 0) for u, w in itertools.combinations(range(6), 2)])
        star = graph([0] * 7, [(0, w, 0) for w in range(1, 7)])
        for g in (complete, star, ring(8)):
            self.assertFalse(limits.form_may_vary(g, -1))
        complete.add_edge(0, 1, 1)
        self.assertTrue(limits.form_may_vary(complete, 2))


class Report(unittest.TestCase):
    def test_support_is_rounded_to_the_nearest_count(self) -> None:
        for support, n, count in (
            (2.5, 1000, 25),
            (5.0, 188, 9),
            (0.0, 50, 1),
            (-3.0, 50, 1),
            (250.0, 50, 50),
            (50.0, 3, 2),
            (16.6, 3, 1),
            (100.0, 0, 1),
            (float("inf"), 7, 7),
            (float("-inf"), 7, 1),
            (float("nan"), 7, 1),
        ):
            self.assertEqual(report.support_count(support, n), count, (support, n))

    def test_numbers_are_rounded_to_64_bits(self) -> None:
        exact = Fraction(2**64 + 2)
        self.assertEqual(report.extended(exact), exact)
        self.assertEqual(report.extended(Fraction(2**64 + 1)), 2**64)
        self.assertEqual(report.extended(Fraction(2**64 + 3)), 2**64 + 4)
        third = report.extended(Fraction(1, 3))
        self.assertEqual(third, Fraction(0xAAAAAAAAAAAAAAAB, 2**65))

    def test_names_of_outputs(self) -> None:
        for name, derived in (
            ("a.txt", "a.fp"),
            ("run.d/graphs", "run.fp"),
            (".hidden", ".hidden.fp"),
            ("graphs", "graphs.fp"),
        ):
            self.assertEqual(report.derived_name(name, ".fp"), derived)


class Transactions(unittest.TestCase):
    def test_reader_takes_what_the_program_takes(self) -> None:
        text = b"v 9 lone\n# c\n T\nU 7 -2 s\n v 7 C more\nV -2 O\nv 7 twice\n% c\nt\n"
        labels = Labels()
        read = read_transactions(text, labels)
        self.assertEqual([len(g.vlabel) for g in read.graphs], [3, 0])
        self.assertEqual(list(read.graphs[0].edges()), [(0, 1, 0)])
        self.assertEqual((read.vertex_labels, read.edge_labels), (4, 1))

    def test_reader_refuses_what_is_no_input(self) -> None:
        for text in (b"t\n\n", b"x\n", b"t\nv 0\n", b"t\nv a A\n", b"t\nu 0 1 s\n"):
            with self.assertRaises(BadFile):
                read_transactions(text, Labels())

    def test_random_cases_stay_what_they_are(self) -> None:
        """The same seed, the same text."""
        for seed in (1, 7, 30):
            first, again = databases.random_case(seed), databases.random_case(seed)
            self.assertEqual((first.text(), first.args()), (again.text(), again.args()))


if __name__ == "__main__":
    unittest.main()
