"""Results as lines of JSON: what is known of the run, then a pattern a line."""

from __future__ import annotations

import json
from collections.abc import Iterator
from itertools import chain, repeat
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro import _checks
from kestro._errors import KestroError
from kestro._native import Arrays, RefusedError, database_of
from kestro._patterns import NO, UNKNOWN, YES, Patterns
from kestro._ragged import offsets_of
from kestro._summary import RunSummary

_KIND = "kestro patterns 1"
_ANSWERS = {NO: False, YES: True, UNKNOWN: None}


def lines(p: Patterns, chosen: NDArray[np.int64], summary: RunSummary) -> Iterator[str]:
    """Return the lines of chosen patterns, each with its newline.

    Positions ascend, each once; the summary tells what they are.
    """
    head: dict[str, Any] = {"kind": _KIND, "patterns": len(chosen)}
    yield json.dumps(head | summary.to_json()) + "\n"
    nothing: Iterator[Any] = repeat([])
    for name, support, graph, closed, maximal, tids, parents in zip(
        p.names(chosen),
        p.support[chosen].tolist(),
        p.graphs(chosen),
        p.closed[chosen].tolist(),
        p.maximal[chosen].tolist(),
        p.tid_lists(chosen) if p.has_tids else nothing,
        p.parent_names(chosen) if p.has_parents else nothing,
        strict=False,
    ):
        vertices, ends, labels = graph
        pattern: dict[str, Any] = {"id": name, "support": support}
        pattern["vertices"] = vertices
        pattern["edges"] = [
            [a, b, label] for (a, b), label in zip(ends, labels, strict=True)
        ]
        pattern["closed"] = _ANSWERS[closed]
        pattern["maximal"] = _ANSWERS[maximal]
        if p.has_tids:
            pattern["tids"] = tids
        if p.has_parents:
            pattern["parents"] = parents
        yield json.dumps(pattern) + "\n"


def read(text: bytes, name: str | None) -> Patterns:
    """Read what `lines` wrote; the name is for errors."""
    rows = []
    for number, line in enumerate(text.splitlines(), 1):
        try:
            rows.append(json.loads(line))
        except (ValueError, RecursionError) as e:
            raise KestroError(f"no line of JSON: {e}", name, number) from None
    head = rows.pop(0)
    if not isinstance(head, dict) or head.get("kind") != _KIND:
        raise KestroError(f"the first line does not tell {_KIND!r}", name, 1)
    try:
        summary = RunSummary.from_json(head)
    except KestroError as e:
        raise KestroError(e.text, name, 1) from None
    if head.get("patterns") != len(rows):
        raise KestroError(
            f"{len(rows)} patterns of {head.get('patterns')}: the file is not whole",
            name,
        )
    order = list(range(len(rows)))
    try:
        for i, row in enumerate(rows):
            _check_row(i, row)
        keys = [_checks.key_of(row["id"]) for row in rows]
        order.sort(key=keys.__getitem__)
        packed, tables = _packed([rows[i] for i in order], summary)
    except (_checks.WrongPatternError, RefusedError) as e:
        raise KestroError(e.text, name, order[e.i] + 2) from None
    return Patterns(packed, summary, *tables)


def _check_row(i: int, row: Any) -> None:
    """Raise unless a line has all that a pattern needs, each of its type."""
    if not isinstance(row, dict):
        raise _checks.WrongPatternError(i, "the line is no pattern")
    for key, fits in _COLUMNS.items():
        if key not in row:
            raise _checks.WrongPatternError(i, f"the pattern has no {key!r}")
        if not fits(row[key]):
            raise _checks.WrongPatternError(i, f"the pattern has wrong {key!r}")
    for key, kind in (("tids", int), ("parents", str)):
        if key in row and not _is_list_of(kind, row[key]):
            raise _checks.WrongPatternError(i, f"the pattern has wrong {key!r}")
    try:
        _checks.key_of(row["id"])
    except ValueError as e:
        raise _checks.WrongPatternError(i, str(e)) from None


def _is_list_of(kind: type, value: Any) -> bool:
    """Whether it is a list of these; a bool is no int, and ints fit into 64 bits."""
    if not isinstance(value, list) or not set(map(type, value)) <= {kind}:
        return False
    if kind is not int or not value:
        return True
    return bool(-(2**63) <= min(value) and max(value) < 2**63)


def _is_edges(value: Any) -> bool:
    if not _is_list_of(list, value) or not set(map(len, value)) <= {3}:
        return False
    first, second, labels = zip(*value, strict=True) if value else ((), (), ())
    return _is_list_of(int, [*first, *second]) and _is_list_of(str, list(labels))


def _is_answer(value: Any) -> bool:
    return value is None or isinstance(value, bool)


_COLUMNS = {
    "id": lambda value: isinstance(value, str),
    "support": lambda value: _is_list_of(int, [value]),
    "vertices": lambda value: _is_list_of(str, value),
    "edges": _is_edges,
    "closed": _is_answer,
    "maximal": _is_answer,
}


def _packed(
    rows: list[dict[str, Any]], summary: RunSummary
) -> tuple[dict[str, NDArray[Any]], tuple[list[str], list[str]]]:
    keys = np.array([_checks.key_of(row["id"]) for row in rows], np.int64)
    supports = np.array([row["support"] for row in rows], np.int64)
    keys = keys.reshape(-1, 2)
    heads = _checks.Heads(keys[:, 0], keys[:, 1], supports)
    edges = list(chain.from_iterable(row["edges"] for row in rows))
    edge_counts = _counts(rows, "edges")
    vertex_counts = _counts(rows, "vertices")
    vertex_labels = list(chain.from_iterable(row["vertices"] for row in rows))
    vertex_table, vertex_ids = _ids(vertex_labels)
    edge_table, edge_ids = _ids([label for _, _, label in edges])
    ends = np.array([edge[:2] for edge in edges], np.int64).reshape(-1, 2)
    tables = vertex_table, edge_table
    # Only to have them checked.
    database_of(Arrays(vertex_counts, edge_counts, vertex_ids, ends, edge_ids, *tables))
    packed: dict[str, NDArray[Any]] = {
        "vertex_offsets": offsets_of(vertex_counts),
        "vertex_labels": vertex_ids,
        "edges": ends.astype(np.int32),
        "edge_labels": edge_ids,
        "closed": _answers(rows, "closed"),
        "maximal": _answers(rows, "maximal"),
    }
    packed |= _checks.levels(heads, edge_counts, summary)
    if all("tids" in row for row in rows):
        lists = [np.array(row["tids"], np.int64) for row in rows]
        packed |= _checks.tid_arrays(heads, lists, summary)
    if all("parents" in row for row in rows):
        names = [row["parents"] for row in rows]
        packed |= _checks.parent_arrays(heads, names, summary)
    return packed, tables


def _counts(rows: list[dict[str, Any]], column: str) -> NDArray[np.int64]:
    return np.array([len(row[column]) for row in rows], np.int64)


def _ids(labels: list[str]) -> tuple[list[str], NDArray[np.int32]]:
    """Return the labels, each once, and of each the place among them."""
    table = sorted(set(labels))
    place = {label: i for i, label in enumerate(table)}
    return table, np.array([place[label] for label in labels], np.int32)


def _answers(rows: list[dict[str, Any]], column: str) -> NDArray[np.uint8]:
    numbers = {answer: number for number, answer in _ANSWERS.items()}
    return np.array([numbers[row[column]] for row in rows], np.uint8)
