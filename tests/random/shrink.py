"""Making a failing case small: whatever can go without the failure going, goes."""

import dataclasses
from collections.abc import Callable, Iterator

from databases import Case, Transaction

MOST_TRIES = 3000


def shrink(case: Case, fails: Callable[[Case], bool]) -> Case:
    """A case no larger, on which fails() is true, as it is on this one."""
    tries = 0
    steps = [fewer_transactions, simpler_options, merged_labels, smaller_transactions]
    at = 0  # steps that have led nowhere since one has led on
    while at < len(steps):
        for attempt in steps[0](case):
            tries += 1
            if tries > MOST_TRIES:
                return case
            if fails(attempt):
                case = attempt
                at = 0
                break
        else:
            steps.append(steps.pop(0))
            at += 1
    return case


def fewer_transactions(case: Case) -> Iterator[Case]:
    """Without some of them, many first."""
    n = len(case.transactions)
    length = n // 2
    while length:
        for first in range(0, n, length):
            yield with_transactions(
                case, case.transactions[:first] + case.transactions[first + length :]
            )
        length //= 2


def with_transactions(case: Case, transactions: list[Transaction]) -> Case:
    return dataclasses.replace(case, transactions=transactions)


def simpler_options(case: Case) -> Iterator[Case]:
    for i in range(len(case.options)):
        yield dataclasses.replace(case, options=case.options[:i] + case.options[i + 1 :])
    if case.labels:
        yield dataclasses.replace(case, labels=False)
    if case.comments:
        yield dataclasses.replace(case, comments=False)
    for support in ("100", "50"):
        if len(support) < len(case.support):
            yield dataclasses.replace(case, support=support)


def merged_labels(case: Case) -> Iterator[Case]:
    """One label of each kind the fewer, each time."""
    vertex = sorted({label for t in case.transactions for label in t.vertices})
    edge = sorted({label for t in case.transactions for _, _, label in t.edges})
    for kept, gone in zip(vertex, vertex[1:]):
        yield with_transactions(
            case,
            [
                Transaction([kept if x == gone else x for x in t.vertices], t.edges, t.ids)
                for t in case.transactions
            ],
        )
    for kept, gone in zip(edge, edge[1:]):
        yield with_transactions(
            case,
            [
                Transaction(
                    t.vertices, [(u, w, kept if x == gone else x) for u, w, x in t.edges], t.ids
                )
                for t in case.transactions
            ],
        )


def smaller_transactions(case: Case) -> Iterator[Case]:
    """One of them without half of its edges, a vertex, or an edge."""
    for i, t in enumerate(case.transactions):
        for smaller in parts(t):
            yield with_transactions(
                case, [*case.transactions[:i], smaller, *case.transactions[i + 1 :]]
            )


def parts(t: Transaction) -> Iterator[Transaction]:
    half = len(t.edges) // 2
    if half > 1:
        yield Transaction(t.vertices, t.edges[:half], t.ids)
        yield Transaction(t.vertices, t.edges[half:], t.ids)
    for gone in range(len(t.vertices)):
        edges = [
            (u - (u > gone), w - (w > gone), label) for u, w, label in t.edges if gone not in (u, w)
        ]
        ids = None if t.ids is None else t.ids[:gone] + t.ids[gone + 1 :]
        yield Transaction(t.vertices[:gone] + t.vertices[gone + 1 :], edges, ids)
    for i in range(len(t.edges)):
        yield Transaction(t.vertices, t.edges[:i] + t.edges[i + 1 :], t.ids)
