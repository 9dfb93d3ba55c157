"""What the page holds as JSON: the patterns by column, graphs and drawings."""

from __future__ import annotations

import math
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro._classes import classes as classes_of
from kestro._molecule_drawing import COLOURS
from kestro._patterns import NO, YES
from kestro._result import Result
from kestro.report._drawings import pattern_svg
from kestro.report._examples import Examples, atoms_by_smarts

_BINS = 20  # of the histogram, at most


def page_data(
    result: Result,
    classes: ArrayLike | None,
    *,
    max_patterns: int,
    stored_drawings: int,
    examples: int,
) -> dict[str, Any]:
    """Return what the page's script reads, ready for JSON; see `Result.report`."""
    by = "support" if classes is None else "fisher"
    best = result.top(max_patterns, by=by, y=classes)
    shown = result[np.flatnonzero(np.isin(result.positions, best.positions))]
    patterns = shown._patterns
    molecules = patterns.summary.atom_labels is not None
    has_examples = patterns.has_tids and shown._db is not None and examples > 0
    shown_in = Examples(shown, examples) if has_examples else None
    drawn = set(best.positions[:stored_drawings].tolist())
    columns: dict[str, list[Any]] = {
        name: []
        for name in (
            *("id", "support", "vertices", "edges", "closed", "maximal"),
            *("parents", "outside", "examples", "drawing"),
        )
    }
    if molecules:
        columns["smarts"] = []
    vertex_ids = {x: i for i, x in enumerate(patterns.vertex_table)}
    edge_ids = {x: i for i, x in enumerate(patterns.edge_table)}
    place = {p: i for i, p in enumerate(shown.positions.tolist())}
    for position, pattern in zip(shown.positions.tolist(), shown, strict=True):
        g = pattern.graph
        columns["id"].append(pattern.id)
        columns["support"].append(pattern.support)
        columns["vertices"].append([vertex_ids[x] for x in g.vertex_labels])
        columns["edges"].append(
            [
                x
                for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True)
                for x in (a, b, edge_ids[label])
            ]
        )
        columns["closed"].append(_flag(int(patterns.closed[position])))
        columns["maximal"].append(_flag(int(patterns.maximal[position])))
        known, outside = _relatives(shown, position, pattern.size, place)
        columns["parents"].append(known)
        columns["outside"].append(outside)
        columns["examples"].append(shown_in.of(pattern) if shown_in else [])
        columns["drawing"].append(pattern_svg(pattern) if position in drawn else None)
        if molecules:
            columns["smarts"].append(pattern.to_smarts())
    tables = (list(vertex_ids), list(edge_ids)) if shown_in is None else shown_in.tables
    data: dict[str, Any] = {
        "graphs": shown.graphs,
        "min_support": shown.min_support,
        "found": len(result),
        "has_parents": patterns.has_parents,
        "vertex_labels": tables[0],
        "edge_labels": tables[1],
        "patterns": columns,
        "examples": [] if shown_in is None else shown_in.graphs,
        "sizes": _sizes(result),
        "histogram": _histogram(result.support),
        "scores": None if classes is None else _scores(shown, classes),
        "class_of": _class_of(shown, classes, shown_in),
        "atoms": None,
        "colours": COLOURS,  # of elements
    }
    if patterns.summary.atom_labels is not None:
        data["atoms"] = atoms_by_smarts(tables[0], patterns.summary.atom_labels)
    return data


def _flag(answer: int) -> bool | None:
    return {NO: False, YES: True}.get(answer)


def _relatives(
    shown: Result, position: int, size: int, place: dict[int, int]
) -> tuple[list[int], list[int]]:
    """Return the parents in the page; how many parents and children are not."""
    patterns = shown._patterns
    if not patterns.has_parents:
        return [], [0, 0]
    first, end = patterns.parent_offsets[position : position + 2].tolist()
    names = [f"{size - 1}-{n}" for n in patterns.parents[first:end].tolist()]
    # The single vertex, the parent of edges, is no pattern.
    if size == 1:
        names = []
    found = [patterns.find(name) for name in names]
    known = [place[i] for i in found if i is not None and i in place]
    offsets, children = patterns.children
    own = children[offsets[position] : offsets[position + 1]].tolist()
    missing = sum(child not in place for child in own)
    return known, [len(names) - len(known), missing]


def _sizes(result: Result) -> list[list[int | None]]:
    """Return size, candidates, frequent patterns, and those in the result."""
    summary = result._patterns.summary
    own = np.bincount(result.size, minlength=1).tolist()
    last = max(len(own), len(summary.frequent))
    rows: list[list[int | None]] = []
    for size in range(1, last):
        frequent, candidates = (
            counts[size] if size < len(counts) else 0
            for counts in (summary.frequent, summary.candidates)
        )
        chosen = own[size] if size < len(own) else 0
        if candidates or frequent or chosen:
            # Those of one and two edges are counted without candidates.
            rows.append([size, candidates if size > 2 else None, frequent, chosen])
    return rows


def _histogram(support: NDArray[np.int32]) -> dict[str, Any]:
    """Return counts of patterns in ranges of support of one width."""
    if not len(support):
        return {"start": 0, "width": 1, "counts": []}
    low, high = int(support.min()), int(support.max())
    width = math.ceil((high - low + 1) / _BINS)
    counts = np.bincount((support - low) // width)
    return {"start": low, "width": width, "counts": counts.tolist()}


def _scores(shown: Result, classes: ArrayLike) -> list[dict[str, Any]]:
    """Return per class its name, its graphs, and per pattern counts and -log10 p."""
    names, codes = classes_of(classes, shown.graphs)
    table = shown.score(classes, method="fisher")
    told = []
    for i, code in enumerate(range(len(names)) if len(names) > 2 else [1]):
        rows = table.iloc[i * len(shown) : (i + 1) * len(shown)]
        told.append(
            {
                "name": str(names[code]),
                "other": str(names[0]) if len(names) == 2 else None,
                "members": int((codes == code).sum()),
                "inside": rows["inside"].tolist(),
                "score": [round(x, 4) for x in rows["score"].tolist()],
            }
        )
    return told


def _class_of(
    shown: Result, classes: ArrayLike | None, shown_in: Examples | None
) -> list[str] | None:
    """Return the class of each graph that is shown."""
    if classes is None or shown_in is None:
        return None
    names, codes = classes_of(classes, shown.graphs)
    return [str(names[codes[g["tid"]]]) for g in shown_in.graphs]
