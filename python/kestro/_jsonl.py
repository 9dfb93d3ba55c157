"""Results as lines of JSON: what is known of the run, then a pattern a line."""

from __future__ import annotations

import json
from collections.abc import Iterator
from itertools import repeat
from pathlib import Path
from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro import _program_files
from kestro._database import AtomLabels
from kestro._errors import KestroError
from kestro._patterns import Patterns
from kestro._ragged import offsets_of

if TYPE_CHECKING:
    from kestro._result import Result

_KIND = "kestro patterns 1"


def lines(
    p: Patterns, chosen: NDArray[np.int64] | None, result: Result
) -> Iterator[str]:
    """Return the lines of a result, each with its newline."""
    wanted = np.unique(result.positions)
    head: dict[str, Any] = {"kind": _KIND, "form": p.form, "patterns": len(wanted)}
    for name, value in p.summary.items():
        head[name] = value.tolist() if isinstance(value, np.ndarray) else value
    head["described"] = _program_files.described(result, p)
    head["selection"] = bool(p.summary.get("selection")) or chosen is not None
    if _program_files.is_maximal_choice(result, p):
        head |= {"maximal": True, "selection": False}
    yield json.dumps(head) + "\n"
    nothing: Iterator[Any] = repeat([])
    tids = (
        _program_files.lists(p.tid_offsets, p.tids, wanted) if p.has_tids else nothing
    )
    parents = _program_files.parent_names(p, wanted) if p.has_parents else nothing
    for name, support, graph, own, of in zip(
        p.names(wanted),
        p.support[wanted].tolist(),
        _program_files.graphs(p, wanted),
        tids,
        parents,
        strict=False,
    ):
        vertices, ends, labels = graph
        pattern: dict[str, Any] = {"id": name, "support": support}
        pattern["vertices"] = vertices
        pattern["edges"] = [
            [a, b, label] for (a, b), label in zip(ends, labels, strict=True)
        ]
        if p.has_tids:
            pattern["tids"] = own
        if p.has_parents:
            pattern["parents"] = of
        yield json.dumps(pattern) + "\n"


def read(path: Path, text: bytes) -> Patterns:
    """Read what `lines` wrote."""
    rows = []
    for number, line in enumerate(text.splitlines(), 1):
        try:
            rows.append(json.loads(line))
        except ValueError as e:
            raise KestroError(f"no line of JSON: {e}", str(path), number) from None
    head, patterns = rows[0], rows[1:]
    if not isinstance(head, dict) or head.get("kind") != _KIND:
        raise KestroError(f"the first line does not tell {_KIND!r}", str(path), 1)
    if head["patterns"] != len(patterns):
        raise KestroError(
            f"{len(patterns)} patterns of {head['patterns']}: the file is not whole",
            str(path),
        )
    try:
        packed, tables = _packed(patterns, path)
    except (KeyError, TypeError, ValueError, AttributeError) as e:
        raise KestroError(f"a line is no pattern: {e}", str(path)) from e
    form = head["form"]
    summary = {k: v for k, v in head.items() if k not in ("kind", "form", "patterns")}
    if summary.get("atom_labels") is not None:
        summary["atom_labels"] = AtomLabels(*summary["atom_labels"])
    return Patterns(packed, summary, *tables, form)


def _packed(
    patterns: list[dict[str, Any]], path: Path
) -> tuple[dict[str, NDArray[Any]], tuple[list[str], list[str]]]:
    patterns = sorted(patterns, key=lambda row: _key(row["id"]))
    vertex_labels = [label for row in patterns for label in row["vertices"]]
    edges = [edge for row in patterns for edge in row["edges"]]
    edge_labels = [label for _, _, label in edges]
    vertex_table = sorted(set(vertex_labels))
    edge_table = sorted(set(edge_labels))
    supports = [row["support"] for row in patterns]
    names = np.array(
        [
            (*_key(row["id"]), support)
            for row, support in zip(patterns, supports, strict=True)
        ],
        dtype=np.int64,
    ).reshape(-1, 3)
    packed: dict[str, NDArray[Any]] = {
        "vertex_offsets": offsets_of(_counts(patterns, "vertices")),
        "vertex_labels": _ids(vertex_labels, vertex_table),
        "edges": np.array([(a, b) for a, b, _ in edges], np.int32).reshape(-1, 2),
        "edge_labels": _ids(edge_labels, edge_table),
        "support": np.array(supports, np.int32),
    }
    packed |= _program_files.levels(names, _counts(patterns, "edges"), path)
    if all("tids" in row for row in patterns):
        tids = [tid for row in patterns for tid in row["tids"]]
        packed["tids"] = np.array(tids, np.int32)
        packed["tid_offsets"] = offsets_of(_counts(patterns, "tids"))
    if all("parents" in row for row in patterns):
        parents = [_key(name)[1] for row in patterns for name in row["parents"]]
        packed["parents"] = np.array(parents, np.int32)
        packed["parent_offsets"] = offsets_of(_counts(patterns, "parents"))
    return packed, (vertex_table, edge_table)


def _key(name: str) -> tuple[int, int]:
    size, _, number = name.partition("-")
    return int(size), int(number)


def _counts(patterns: list[dict[str, Any]], column: str) -> NDArray[np.int64]:
    return np.array([len(row[column]) for row in patterns], np.int64)


def _ids(labels: list[str], table: list[str]) -> NDArray[np.int32]:
    place = {label: i for i, label in enumerate(table)}
    return np.array([place[label] for label in labels], np.int32)
