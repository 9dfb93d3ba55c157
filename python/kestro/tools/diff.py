"""Sub-command ``diff``: what two results share, and what only one of them has."""

from __future__ import annotations

import argparse
from collections.abc import Iterator

from kestro._database import number_of
from kestro._pattern import Pattern
from kestro.tools import _isomorphism, _results, _source, _writing
from kestro.tools._status import Status
from kestro.tools._terminal import Terminal, shown

HELP = "tell what two results share and what not, up to isomorphism"
DESCRIPTION = """\
Tell what two results share, and what only one of them has.

Patterns are compared as graphs, whatever their ids and the order of their
vertices.  Patterns that one result lists more than once are named; where the other
lists them as often, with the same supports, this is no difference.
"""
EPILOG = """\
examples:
  kestro-tools diff old/molecules.fp new/molecules.fp
  kestro-tools diff a.jsonl b.jsonl --csv > difference.csv

exit codes: 0 there is a difference, 1 there is none
"""
_SHOWN = 20  # patterns listed of each kind


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _results.add_argument(parser, "first")
    _results.add_argument(parser, "second")
    parser.add_argument(
        "--csv",
        action="store_true",
        help="a row per pattern up to isomorphism instead of a summary",
    )
    parser.add_argument(
        "--show",
        type=int,
        default=_SHOWN,
        metavar="N",
        help=f"patterns listed of each kind of difference ({_SHOWN})",
    )


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Compare."""
    terminal.passing("reading")
    names = (args.first, args.second)
    _source.check_names(*names)
    results = [_results.read(_source.kept(name)) for name in names]
    terminal.passing("comparing")
    found = _isomorphism.classes(*results)
    terminal.clear()
    changed = [c for c in found if _differs(c)]
    if args.csv:
        rows = [
            [
                *(" ".join(p.id for p in own) for own in c.members),
                *(" ".join(str(p.support) for p in own) for own in c.members),
                c.any.size,
                _results.line_of(c.any.graph),
            ]
            for c in found
        ]
        head = ["first", "second", "first_support", "second_support", "size", "graph"]
        _writing.write_lines(_writing.STDOUT, _writing.csv_lines([head, *rows]))
    else:
        lines = _summary(found, names, max(0, args.show))
        _writing.write_lines(_writing.STDOUT, (f"{line}\n" for line in lines))
    return Status.FOUND if changed else Status.NOTHING


def _differs(c: _isomorphism.PatternClass) -> bool:
    """Whether one result lists it otherwise than the other, whatever the ids."""
    first, second = (sorted(p.support for p in own) for own in c.members)
    return first != second


def _summary(
    found: list[_isomorphism.PatternClass], names: tuple[str, str], most: int
) -> Iterator[str]:
    for place, name in enumerate(names):
        listed = sum(len(c.members[place]) for c in found)
        distinct = sum(bool(c.members[place]) for c in found)
        yield (
            f"{shown(_source.called(name))}: {number_of(listed, 'pattern')}, "
            f"{distinct} up to isomorphism"
        )
    shared = [c for c in found if all(c.members)]
    yield f"in both: {len(shared)}"
    moved = [c for c in shared if {p.support for p in c.members[0]} != _supports(c, 1)]
    yield from _listed(
        "in both with another support",
        [f"{_told(c.members[0])} and {_told(c.members[1])}" for c in moved],
        most,
    )
    for place, name in enumerate(names):
        own = [c.members[place] for c in found if not c.members[1 - place]]
        yield from _listed(
            f"only in {shown(_source.called(name))}", list(map(_told, own)), most
        )
    for place, name in enumerate(names):
        twice = _isomorphism.doubled(found, place)
        yield from _listed(
            f"more than once in {shown(_source.called(name))}",
            list(map(_told, twice)),
            most,
        )


def _supports(c: _isomorphism.PatternClass, place: int) -> set[int]:
    return {p.support for p in c.members[place]}


def _told(patterns: list[Pattern]) -> str:
    ids = ", ".join(f"{p.id} (support {p.support})" for p in patterns)
    return f"{ids}: {shown(_results.line_of(patterns[0].graph))}"


def _listed(what: str, texts: list[str], most: int) -> Iterator[str]:
    yield f"{what}: {len(texts)}"
    yield from (f"  {text}" for text in texts[:most])
    if len(texts) > most:
        yield f"  … and {len(texts) - most} more"
