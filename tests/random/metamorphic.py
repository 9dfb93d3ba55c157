"""The same database in another guise, and whether the same is found in it.

Each change tells how to read what is found back: which transaction of the first
database each of the second was, and what its labels were called.
"""

import dataclasses
import random
import tempfile
from collections import Counter
from collections.abc import Callable
from pathlib import Path

from checker.certificates import Certificate, certificate
from checker.graphs import Graph, Labels
from checker.limits import form_may_vary
from checker.run_check import Outcome
from databases import Case, Transaction, random_count, random_transactions, renumbered
from trial import Problem, RunFailed, Verdict, checked_run

Found = dict[Certificate, list[tuple[int, ...]]]  # the TID lists of each class


@dataclasses.dataclass
class Change:
    """A changed case and the way back."""

    case: Case
    tids: list[int | None]  # per transaction: what it was; None for a new one
    vertex_labels: dict[str, str]  # per label that has changed: what it was
    edge_labels: dict[str, str]


def percentage(count: int, transactions: int) -> str:
    return f"{100 * count / transactions:.12f}"


def least(case: Case) -> int:
    """The minimum count, which percentage() was made from."""
    return round(float(case.support) * len(case.transactions) / 100)


def unchanged(case: Case) -> Change:
    return Change(case.copy(), list(range(len(case.transactions))), {}, {})


def shuffled(case: Case, dice: random.Random) -> Change:
    change = unchanged(case)
    dice.shuffle(change.tids)
    change.case.transactions = [case.transactions[tid].copy() for tid in change.tids]
    return change


def vertices_moved(case: Case, dice: random.Random) -> Change:
    change = unchanged(case)
    moved = [renumbered(t, dice) for t in case.transactions]
    for t in moved:
        t.ids = dice.sample(range(-500, 500), len(t.vertices))
    change.case.transactions = moved
    return change


def edges_moved(case: Case, dice: random.Random) -> Change:
    change = unchanged(case)
    for t in change.case.transactions:
        t.edges = [
            (w, u, label) if dice.random() < 0.5 else (u, w, label) for u, w, label in t.edges
        ]
        dice.shuffle(t.edges)
    return change


def relabelled(case: Case, dice: random.Random) -> Change:
    change = unchanged(case)
    vertex = other_names({x for t in case.transactions for x in t.vertices}, dice)
    edge = other_names({x for t in case.transactions for _, _, x in t.edges}, dice)
    for t in change.case.transactions:
        t.vertices = [vertex[label] for label in t.vertices]
        t.edges = [(u, w, edge[label]) for u, w, label in t.edges]
    change.vertex_labels = {new: old for old, new in vertex.items()}
    change.edge_labels = {new: old for old, new in edge.items()}
    return change


def other_names(labels: set[str], dice: random.Random) -> dict[str, str]:
    names = [f"{dice.choice('+5Mz~')}{i}" for i in range(len(labels))]
    dice.shuffle(names)
    return dict(zip(sorted(labels), names))


def doubled(case: Case, _: random.Random) -> Change:
    change = unchanged(case)
    change.case.transactions += [t.copy() for t in case.transactions]
    change.tids *= 2
    return change


def with_empty(case: Case, dice: random.Random) -> Change:
    change = unchanged(case)
    at = dice.randint(0, len(case.transactions))
    change.case.transactions.insert(at, Transaction([], []))
    change.tids.insert(at, None)
    change.case.support = percentage(least(case), len(case.transactions) + 1)
    return change


KINDS: dict[str, Callable[[Case, random.Random], Change]] = {
    "shuffled": shuffled,
    "vertices-moved": vertices_moved,
    "edges-moved": edges_moved,
    "relabelled": relabelled,
    "doubled": doubled,
    "with-empty": with_empty,
}


def plain_case(seed: int) -> Case:
    """A database and options under which every change has its equal."""
    dice = random.Random(f"metamorphic {seed}")
    transactions = random_transactions(dice)
    n = len(transactions)
    count = random_count(dice, n)
    options = ["-t", "-p"]
    if dice.random() < 0.25:
        options.append("-x")
    if dice.random() < 0.15:
        options.append(f"-m{dice.randint(2, 3)}")
    if dice.random() < 0.2:
        options.append(f"-M{dice.randint(2, 7)}")
    if dice.random() < 0.3:
        options.append(f"--stabilizer-threshold={dice.randint(-1, 9)}")
    return Case(transactions, percentage(count, n), options)


def compare(program: Path, case: Case, kinds: list[str], seed: int) -> dict[str, Verdict]:
    """Run the case and its change of each kind, and compare what they find."""
    verdicts = {}
    with tempfile.TemporaryDirectory(prefix="kestro-random-") as name:
        try:
            first = proved(program, case, Path(name, "first"))
        except RunFailed as failed:
            return {kind: Verdict(failed.problem) for kind in kinds}
        for kind in kinds:
            change = KINDS[kind](case, random.Random(f"{kind} {seed}"))
            try:
                then = proved(program, change.case, Path(name, kind))
                verdicts[kind] = differences(case, change, [first, then], kind)
            except RunFailed as failed:
                verdicts[kind] = Verdict(failed.problem)
    return verdicts


def proved(program: Path, case: Case, folder: Path) -> Outcome:
    """A run in a new folder; raises where anything is wrong with it."""
    folder.mkdir()
    outcome, _ = checked_run(program, case, folder)
    if outcome.findings.lines:
        raise RunFailed(Problem(*outcome.findings.lines[0]))
    return outcome


def differences(case: Case, change: Change, outcomes: list[Outcome], kind: str) -> Verdict:
    """What two runs find, each proved by itself, in comparison."""
    verdict = Verdict(None, outcomes[0].patterns)
    graphs: dict[Certificate, Graph] = {}
    first = found(outcomes[0], unchanged(case), outcomes[0].labels, graphs)
    second = found(outcomes[1], change, outcomes[0].labels, graphs)
    for shape in first.keys() | second.keys():
        one, two = first.get(shape, []), second.get(shape, [])
        if sorted(one) == sorted(two):
            continue
        other_tids = bool(one and two) and set(one) != set(two)
        if not other_tids and limit_may_explain(graphs[shape], case.threshold()):
            verdict.limits += 1
        elif verdict.problem is None:
            text = f"{graphs[shape]}\n  first {one}\n  then  {two}"
            verdict.problem = Problem(f"differs-{kind}", text)
    return verdict


def found(
    outcome: Outcome, change: Change, labels: Labels, graphs: dict[Certificate, Graph]
) -> Found:
    """What a run lists, in the numbers and labels of the first database."""
    assert outcome.files is not None  # else there is a finding
    vertex = translation(outcome.labels.vertex, labels.vertex, change.vertex_labels)
    edge = translation(outcome.labels.edge, labels.edge, change.edge_labels)
    listed: Found = {}
    for pattern in outcome.files.patterns:
        g = Graph(
            [vertex[label] for label in pattern.graph.vlabel],
            [{w: edge[label] for w, label in near.items()} for near in pattern.graph.adj],
        )
        shape = certificate(g)
        graphs[shape] = g
        tids = (outcome.files.tids or {}).get(pattern.name, [])
        was = Counter(change.tids[tid] for tid in tids)
        # An empty graph holds nothing, and of a doubled one both copies do.
        copies = Counter(tid for tid in change.tids if tid in was)
        right = None not in was and was == copies
        listed.setdefault(shape, []).append(tuple(sorted(was)) if right else (-1,))
    return listed


def translation(
    numbers: dict[bytes, int], wanted: dict[bytes, int], was: dict[str, str]
) -> dict[int, int]:
    """From the numbers of one run's labels to those of the first run."""
    return {
        number: wanted[was.get(label.decode(), label.decode()).encode()]
        for label, number in numbers.items()
    }


def limit_may_explain(g: Graph, threshold: int) -> bool:
    """Whether g or a part of it may have several forms."""
    waiting = [g]
    met = {certificate(g)}
    while waiting:
        g = waiting.pop()
        if form_may_vary(g, threshold):
            return True
        if g.size() < 2:
            continue
        for u, w, _ in g.removable_edges():
            part = g.without_edge(u, w)
            shape = certificate(part)
            if shape not in met:
                met.add(shape)
                waiting.append(part)
    return False
