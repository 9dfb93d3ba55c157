"""Random databases, the options to mine them with, and their text.

All choices come from one generator, in a fixed order: the same seed gives the
same case everywhere.  Independent random graphs share hardly more than single
edges, so half of the transactions are earlier ones, changed a little.
"""

import dataclasses
import random

Edge = tuple[int, int, str]  # two positions among the vertices, and the label


@dataclasses.dataclass
class Transaction:
    vertices: list[str]  # labels
    edges: list[Edge]
    ids: list[int] | None = None  # of the vertices; None: their positions

    def copy(self) -> "Transaction":
        ids = None if self.ids is None else self.ids.copy()
        return Transaction(self.vertices.copy(), self.edges.copy(), ids)


@dataclasses.dataclass
class Case:
    """A database and the options of a run on it."""

    transactions: list[Transaction]
    support: str  # per cent, as given to -s
    options: list[str]  # all others, a word each
    labels: bool = False  # from a label file that has more than are used
    comments: bool = False

    def copy(self) -> "Case":
        return dataclasses.replace(
            self, transactions=[t.copy() for t in self.transactions], options=self.options.copy()
        )

    def args(self) -> list[str]:
        load = ["--load-labels=db.ls"] if self.labels else []
        return ["-s", self.support, *self.options, *load, "db.txt"]

    def threshold(self) -> int:
        """The stabilizer threshold of the run."""
        for option in self.options:
            if option.startswith("--stabilizer-threshold="):
                return int(option.partition("=")[2])
        return 5

    def text(self) -> str:
        lines = ["# a comment", "% another"] if self.comments else []
        for number, t in enumerate(self.transactions):
            ids = t.ids or list(range(len(t.vertices)))
            lines.append(f"t # {number}")
            lines += [f"v {ids[u]} {label}" for u, label in enumerate(t.vertices)]
            if self.comments:
                lines.append("# edges")
            lines += [f"u {ids[u]} {ids[w]} {label}" for u, w, label in t.edges]
        return "".join(line + "\n" for line in lines)

    def label_text(self) -> str:
        vertex = {label for t in self.transactions for label in t.vertices} | {"0", "more"}
        edge = {label for t in self.transactions for _, _, label in t.edges} | {"~", "More"}
        head = f"# {len(edge)} edge labels, {len(vertex)} vertex labels\n"
        return (
            head
            + "".join(f"E {label}\n" for label in sorted(edge))
            + "".join(f"V {label}\n" for label in sorted(vertex))
        )


class Generator:
    """Random transactions with labels of a given number of kinds."""

    def __init__(self, dice: random.Random, vertex_kinds: int, edge_kinds: int) -> None:
        self._dice = dice
        self._vertex = [f"{chr(65 + i % 26)}{i // 26 or ''}" for i in range(vertex_kinds)]
        self._edge = [f"{chr(122 - i % 26)}{i // 26 or ''}" for i in range(edge_kinds)]

    def _vertices(self, n: int) -> Transaction:
        return Transaction([self._dice.choice(self._vertex) for _ in range(n)], [])

    def join(self, t: Transaction, u: int, w: int) -> None:
        """An edge between two vertices, unless they are one or joined."""
        if u != w and not any({u, w} == {a, b} for a, b, _ in t.edges):
            t.edges.append((u, w, self._dice.choice(self._edge)))

    def join_any(self, t: Transaction) -> None:
        n = len(t.vertices)
        if n > 1:
            self.join(t, *self._dice.sample(range(n), 2))

    def empty(self, _: int) -> Transaction:
        return self._vertices(self._dice.choice([0, 0, 1, 2]))

    def sparse(self, edges: int) -> Transaction:
        t = self._vertices(self._dice.randint(2, edges + 2))
        for _ in range(edges):
            self.join_any(t)
        return t

    def tree(self, edges: int) -> Transaction:
        t = self._vertices(edges + 1)
        for w in range(1, edges + 1):
            self.join(t, self._dice.randrange(w), w)
        return t

    def star(self, edges: int) -> Transaction:
        t = self._vertices(edges + 1)
        for w in range(1, edges + 1):
            self.join(t, 0 if self._dice.random() < 0.8 else self._dice.randrange(w), w)
        return t

    def ring(self, edges: int) -> Transaction:
        n = max(3, edges - self._dice.randrange(3))
        t = self._vertices(n)
        for u in range(n):
            self.join(t, u, (u + 1) % n)
        while len(t.edges) < edges and self._dice.random() < 0.8:
            self.join_any(t)
        return t

    def regular(self, edges: int) -> Transaction:
        """All vertices and edges alike: circulants, complete and two-sided."""
        n = self._dice.randint(4, 8)
        t = Transaction([self._vertex[0]] * n, [])
        steps = self._dice.sample(range(1, n // 2 + 1), min(2, n // 2))
        two_sided = self._dice.random() < 0.3
        pairs = [(u, (u + step) % n) for step in steps for u in range(n)]
        if two_sided:
            pairs = [(u, w) for u in range(n) for w in range(u) if (u + w) % 2]
        for u, w in pairs[: max(edges + 2, 6)]:
            if not any({u, w} == {a, b} for a, b, _ in t.edges):
                t.edges.append((u, w, self._edge[0]))
        return t

    def matched(self, edges: int) -> Transaction:
        """Four vertices all joined, or three with three others, a perfect
        matching with another label, and leaves: here forms can vary."""
        n = self._dice.choice([4, 4, 6])
        t = Transaction([self._vertex[0]] * n, [])
        for u in range(n):
            for w in range(u):
                if n == 4 or (u + w) % 2:
                    alike = u // 2 == w // 2
                    t.edges.append((u, w, self._edge[-1 if alike else 0]))
        for _ in range(max(0, edges - len(t.edges))):
            t.vertices.append(self._dice.choice(self._vertex))
            self.join(t, self._dice.randrange(n), len(t.vertices) - 1)
        return t

    def molecule(self, edges: int) -> Transaction:
        """A ring of six or five with pendant vertices and chains."""
        n = self._dice.choice([5, 6, 6])
        t = Transaction([self._vertex[0]] * n, [])
        t.edges = [(u, (u + 1) % n, self._edge[-1]) for u in range(n)]
        while len(t.edges) < max(edges, n):
            t.vertices.append(self._dice.choice(self._vertex))
            self.join(t, self._dice.randrange(len(t.vertices) - 1), len(t.vertices) - 1)
        return t

    def disconnected(self, edges: int) -> Transaction:
        t = self.tree(max(1, edges // 2))
        other = self.ring(max(3, edges // 2))
        shift = len(t.vertices)
        t.vertices += other.vertices + [self._vertex[0]]
        t.edges += [(u + shift, w + shift, label) for u, w, label in other.edges]
        return t

    def changed(self, t: Transaction) -> Transaction:
        """The same in another order, with an edge or two more, less or other."""
        t = renumbered(t, self._dice)
        for _ in range(self._dice.randint(0, 2)):
            what = self._dice.randrange(3)
            if what == 0:
                self.join_any(t)
            elif t.edges:
                u, w, _ = t.edges.pop(self._dice.randrange(len(t.edges)))
                if what == 1:
                    self.join(t, u, w)
        return t


def renumbered(t: Transaction, dice: random.Random) -> Transaction:
    """The same with its vertices in another order."""
    order = list(range(len(t.vertices)))
    dice.shuffle(order)
    place = {u: i for i, u in enumerate(order)}
    edges = [(place[u], place[w], label) for u, w, label in t.edges]
    return Transaction([t.vertices[u] for u in order], edges)


# What a database may be made of: shapes, and the most labels of both kinds.
FAMILIES = [
    (("sparse", "tree", "ring"), 3, 2),
    (("tree", "star"), 2, 2),
    (("ring", "regular"), 1, 1),
    (("regular",), 1, 1),
    (("ring", "regular", "star"), 2, 2),
    (("matched",), 2, 2),
    (("molecule",), 4, 3),
    (("molecule", "tree", "ring"), 2, 1),
    (("sparse", "disconnected"), 12, 6),
    (("sparse", "tree"), 40, 30),
    (("disconnected", "empty", "tree"), 3, 2),
    (("sparse", "tree", "ring", "regular", "molecule", "disconnected", "empty"), 3, 2),
]


def random_transactions(dice: random.Random) -> list[Transaction]:
    shapes, vertex_kinds, edge_kinds = dice.choice(FAMILIES)
    make = Generator(dice, dice.randint(1, vertex_kinds), dice.randint(1, edge_kinds))
    count = dice.choice([dice.randint(1, 3), dice.randint(4, 8), dice.randint(6, 14)])
    alike = vertex_kinds + edge_kinds < 4
    most = dice.choice([6, 8] if alike else [8, 10, 12])  # edges, about
    least = dice.choice([1, most // 2])
    made: list[Transaction] = []
    for _ in range(count):
        if made and dice.random() < 0.75:
            made.append(make.changed(dice.choice(made)))
        else:
            made.append(getattr(make, dice.choice(shapes))(dice.randint(least, most)))
        if dice.random() < 0.05:
            made.append(Transaction([], []))
    return made


def random_count(dice: random.Random, n: int) -> int:
    """A minimum count, small ones rather: they leave more to find."""
    return min(dice.randint(1 if n < 4 else 2, n) for _ in range(2))


def random_case(seed: int) -> Case:
    """A database and all kinds of options."""
    dice = random.Random(seed)
    transactions = random_transactions(dice)
    n = len(transactions)
    count = random_count(dice, n)
    support = dice.choice(
        [f"{100 * count / n:.9f}", f"{100 * count / n:.1f}", str(100 // n * count)]
    )
    options = []
    if dice.random() < 0.7:
        options.append("-t")
    if dice.random() < 0.6:
        options.append("-p")
    if dice.random() < 0.3:
        options.append("-x")
    if dice.random() < 0.2:
        options.append(f"-m{dice.randint(1, 4)}")
    if dice.random() < 0.2:
        options.append(f"-M{dice.randint(1, 7)}")
    if dice.random() < 0.4:
        options.append("--candidates")
    if dice.random() < 0.4:
        options.append(f"--stabilizer-threshold={dice.randint(-1, 9)}")
    return Case(transactions, support, options, dice.random() < 0.15, dice.random() < 0.2)
