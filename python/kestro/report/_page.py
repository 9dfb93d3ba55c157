"""The page around the data: template, styles and scripts in one file."""

from __future__ import annotations

import base64
import hashlib
import importlib.metadata
import json
import re
from functools import cache
from importlib.resources import files
from typing import TYPE_CHECKING, Any

from numpy.typing import ArrayLike

from kestro._arguments import whole_number
from kestro._summary import Ending
from kestro.report._data import page_data

if TYPE_CHECKING:
    from kestro._result import Result

# In the order in which they build upon each other.
_SCRIPTS = (
    *("data", "elements", "structures", "graphs", "drawings", "selection"),
    *("table", "charts", "volcano", "lattice", "details", "export", "main"),
)
_ENDINGS: dict[Ending, str] = {
    "complete": "all patterns were found",
    "max_size": "all patterns of these sizes were found",
    "time_limit": "early, at the time limit: patterns are missing",
    "max_patterns": "early, at the most patterns allowed: others are missing",
    "interrupt": "early, by Ctrl-C: patterns are missing",
    "progress": "early, by the caller: patterns are missing",
}
# What no attribute or text of a page may hold.
_SURROGATE = re.compile("[\ud800-\udfff]")


def page(
    result: Result,
    *,
    classes: ArrayLike | None,
    title: str | None,
    max_patterns: int,
    stored_drawings: int,
    examples: int,
    with_structures: bool,
) -> str:
    """Return the page that `Result.report` writes."""
    try:
        import jinja2
        from markupsafe import Markup
    except ImportError as e:
        raise ImportError(
            "reports are made with Jinja2, which pip install kestro[report] brings"
        ) from e
    if title is not None and not isinstance(title, str):
        raise TypeError(f"title must be a str, not {title!r}")
    if classes is None:
        classes = _own_classes(result)
    data = page_data(
        result,
        classes,
        max_patterns=whole_number("max_patterns", max_patterns, 1),
        stored_drawings=whole_number("stored_drawings", stored_drawings, 0),
        examples=whole_number("examples", examples, 0),
    )
    molecules = data["atoms"] is not None
    scripts = [_asset("d3.min.js")]
    if molecules and with_structures:
        scripts.append(_asset("RDKit_minimal.js"))
    scripts.append(_own_script())
    environment = jinja2.Environment(
        autoescape=True, undefined=jinja2.StrictUndefined, trim_blocks=True
    )
    text = environment.from_string(_asset("page.html")).render(
        title=title or "Frequent subgraphs",
        headline=result._headline(),
        run=_run(result, data),
        data=Markup(_json(data)),
        scores=data["scores"],
        molecules=molecules,
        structures=molecules and with_structures,
        has_examples=bool(data["examples"]),
        shown=len(data["patterns"]["id"]),
        found=len(result),
        by="support" if data["scores"] is None else "Fisher's exact test",
        style=Markup(_asset("page.css")),
        scripts=[Markup(script) for script in scripts],
        policy=_policy(scripts, molecules and with_structures),
        wasm=Markup(_wasm()) if molecules and with_structures else "",
        licences=_licences(molecules and with_structures),
    )
    return _SURROGATE.sub("\ufffd", text)


def _own_classes(result: Result) -> ArrayLike | None:
    """Return the classes of the database, None where there is nothing to compare."""
    if result._db is None or result._db.classes is None:
        return None
    own = result._db.classes
    has_several = len(set(own.tolist())) > 1
    return own if has_several and result._patterns.has_tids else None


def _run(result: Result, data: dict[str, Any]) -> list[tuple[str, str]]:
    """Return what is told of the run, line by line."""
    s = result._patterns.summary
    db = result._db
    graphs = f"{s.graphs:,}"
    if db is not None and db.skipped:
        graphs += f"; {_counted(len(db.skipped), 'record')} skipped"
    share = f" ({100 * s.min_support / s.graphs:.3g} %)" if s.graphs else ""
    sizes = f"{_counted(s.min_size, 'edge')} and more"
    if s.max_size == s.min_size:
        sizes = _counted(s.min_size, "edge")
    elif s.max_size is not None:
        sizes = f"{s.min_size} to {s.max_size} edges"
    rows = [
        ("Graphs mined", graphs),
        ("Minimum support", f"{_counted(s.min_support, 'graph')}{share}"),
        ("Sizes looked for", sizes),
        ("Patterns", f"{len(result):,}"),
    ]
    if result._filters:
        rows.append(("Kept of all", f"the {' and '.join(result._filters)} ones"))
    if data["scores"]:
        members = [_class_told(x["name"], x["members"]) for x in data["scores"]]
        if len(members) == 1:
            [x] = data["scores"]
            members.append(_class_told(x["other"], s.graphs - x["members"]))
        rows.append(("Classes", ", ".join(members)))
    rows.append(("How it ended", _ENDINGS[s.ending]))
    seconds = f"{s.seconds:.1f} s" if s.seconds >= 0.05 else "less than 0.1 s"
    rows.append(("Processor time", seconds))
    rows.append(("Made by", f"kestro {importlib.metadata.version('kestro')}"))
    return rows


def _counted(count: int, what: str) -> str:
    return f"{count:,} {what}{'' if count == 1 else 's'}"


def _class_told(name: str, members: int) -> str:
    return f"{name} ({_counted(members, 'graph')})"


def _json(data: dict[str, Any]) -> str:
    """Return JSON that no HTML ends early."""
    text = json.dumps(data, separators=(",", ":"), allow_nan=False)
    return text.replace("<", "\\u003c")


def _policy(scripts: list[str], structures: bool) -> str:
    """Return the content security policy: these scripts, and no request at all.

    RDKit's glue between JavaScript and WebAssembly makes functions from text.
    """
    hashes = []
    for script in scripts:
        digest = hashlib.sha256(script.encode()).digest()
        hashes.append(f"'sha256-{base64.b64encode(digest).decode()}'")
    more = " 'wasm-unsafe-eval' 'unsafe-eval'" if structures else ""
    return (
        f"default-src 'none'; script-src {' '.join(hashes)}{more}; "
        f"style-src 'unsafe-inline'; img-src data:; base-uri 'none'; "
        f"form-action 'none'"
    )


@cache
def _asset(name: str) -> str:
    path = files("kestro.report").joinpath("assets", *name.split("/"))
    return path.read_text(encoding="utf-8").strip("\ufeff")


def _own_script() -> str:
    parts = [_asset(f"script/{name}.js") for name in _SCRIPTS]
    return '(() => {\n"use strict";\n' + "\n".join(parts) + "})();\n"


@cache
def _wasm() -> str:
    path = files("kestro.report").joinpath("assets", "RDKit_minimal.wasm.gz")
    return base64.b64encode(path.read_bytes()).decode()


def _licences(structures: bool) -> list[tuple[str, str]]:
    told = [("D3 7.9.2", _asset("LICENSE.d3"))]
    if structures:
        told.append(("RDKit 2026.9.1", _asset("LICENSE.rdkit")))
    return told
