"""Results and databases in notebooks."""

from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from kestro._database import Graph, GraphDatabase
    from kestro._result import Result

ROWS = 10  # patterns or graphs shown
_EDGES = 12  # edges shown of a pattern


def page(headline: str, first: Result, patterns: int) -> str:
    """Return the headline and a table of the first patterns.

    Those of molecules are shown as SMARTS.
    """
    of_molecules = first._patterns.summary.atom_labels is not None
    shown = "SMARTS" if of_molecules else "edges"
    rows = "".join(
        f"<tr><td>{p.id}</td><td>{p.support}</td>"
        f"<td>{p.support / max(1, first.graphs):.1%}</td>"
        f"<td>{_answer(p.closed)}</td><td>{_answer(p.maximal)}</td>"
        f"<td style='text-align:left;word-break:break-all'>"
        f"{escape(p.to_smarts() if of_molecules else _edges(p.graph))}</td></tr>"
        for p in first
    )
    more = f"<p>… and {patterns - ROWS} more</p>" if patterns > ROWS else ""
    return (
        f"<div><p><b>{escape(headline)}</b></p><table><thead><tr><th>id</th>"
        f"<th>support</th><th>share</th><th>closed</th><th>maximal</th>"
        f"<th>{shown}</th></tr></thead><tbody>{rows}</tbody></table>{more}</div>"
    )


def database_page(headline: str, db: GraphDatabase) -> str:
    """Return the headline and a table of the first graphs."""
    has_classes = db.classes is not None
    rows = ""
    for i in range(min(ROWS, len(db))):
        g = db[i]
        own = "" if db.classes is None else f"<td>{escape(str(db.classes[i]))}</td>"
        rows += (
            f"<tr><td>{i}</td><td>{db.source[i]}</td><td>{len(g.vertex_labels)}</td>"
            f"<td>{len(g.edges)}</td>{own}"
            f"<td style='text-align:left'>{escape(_edges(g))}</td></tr>"
        )
    more = f"<p>… and {len(db) - ROWS} more</p>" if len(db) > ROWS else ""
    return (
        f"<div><p><b>{escape(headline)}</b></p><table><thead><tr><th></th>"
        f"<th>record</th><th>vertices</th><th>size</th>"
        f"{'<th>class</th>' if has_classes else ''}<th>edges</th></tr></thead>"
        f"<tbody>{rows}</tbody></table>{more}</div>"
    )


def _answer(flag: bool | None) -> str:
    return "?" if flag is None else "yes" if flag else "no"


def _edges(g: Graph) -> str:
    labels = g.vertex_labels
    edges = [
        f"{labels[a]}{a} {label} {labels[b]}{b}"
        for (a, b), label in zip(
            g.edges[:_EDGES].tolist(), g.edge_labels[:_EDGES], strict=True
        )
    ]
    return ", ".join(edges) + (", …" if len(g.edges) > _EDGES else "")
