"""Sub-command ``suggest``: a support for so many patterns in so much time."""

from __future__ import annotations

import argparse
import math
from collections.abc import Iterator

from kestro._database import number_of
from kestro.tools import _estimate, _reading, _writing
from kestro.tools._options import INT_MAX, add_jobs, whole
from kestro.tools._status import Status, UsageError
from kestro.tools._terminal import Terminal

HELP = "tell which support gives about N patterns in T seconds"
DESCRIPTION = """\
Tell which support gives about N patterns in T seconds.

Samples of the graphs are mined at lower and lower supports, then all graphs near
what the samples told.  Each run is bounded in patterns, time and memory, so that a
support that is too low ends it and not the machine.  All of it takes about three
times T at most.
"""
EPILOG = """\
examples:
  kestro-tools suggest molecules.smi
  kestro-tools suggest table.csv --patterns 500 --seconds 10 --max-size 8

exit codes: 0 there is such a support, 1 there are no patterns at all, 5 a limit
was reached first: the lowest support is told that can be had within it
"""


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _reading.add_input(parser)
    parser.add_argument(
        "-n",
        "--patterns",
        type=whole(1),
        default=1000,
        metavar="N",
        help="how many patterns there should be (1000)",
    )
    parser.add_argument(
        "-t",
        "--seconds",
        type=float,
        default=30.0,
        metavar="T",
        help="how long mining them may take (30)",
    )
    parser.add_argument(
        "--max-size", type=whole(1, INT_MAX), metavar="N", help="edges at most"
    )
    parser.add_argument(
        "--seed", type=whole(0), default=0, metavar="N", help="of the samples (0)"
    )
    add_jobs(parser)
    _reading.add_arguments(parser)


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Suggest."""
    if not 0 < args.seconds < math.inf:
        raise UsageError("--seconds is above 0")
    db = _reading.read(args.input, args, terminal).db
    if not len(db):
        terminal.warn("there are no graphs")
        return Status.NOTHING

    def told(what: str, run: _estimate.Run) -> None:
        ended = f", ended by {run.stopped_by}" if run.stopped_by else ""
        terminal.say(
            f"{what}: support {_share(run.support, run.graphs)}: "
            f"{number_of(run.patterns, 'pattern')}, {run.seconds:.1f} s{ended}"
        )

    found = _estimate.estimate(
        db,
        args.patterns,
        args.seconds,
        args.max_size,
        seed=args.seed,
        n_jobs=args.jobs,
        told=told,
    )
    status, lines = answer(found, args.patterns, len(db))
    _writing.write_lines(_writing.STDOUT, (f"{line}\n" for line in lines))
    return status


def answer(
    found: _estimate.Estimate, patterns: int, graphs: int
) -> tuple[Status, list[str]]:
    """Return how the command ends, and what it says."""
    whole = found.whole
    nth = whole.nth(patterns)
    lines = list(_sample_lines(found, patterns))
    if nth is not None:
        told = [nth]
        above = whole.supports[whole.supports > nth]
        if len(above) and whole.count(nth) > patterns:
            told.append(int(above[-1]))
        lines += [_known(whole, support, graphs) for support in told]
        return Status.FOUND, [*lines, _time(whole, *told)]
    ended = [run for run in whole.runs if run.stopped_by]
    if whole.lowest is None:
        reasons = ", ".join(sorted({str(run.stopped_by) for run in ended})) or "time"
        lines.append(f"no run on all graphs came to its end (limit: {reasons})")
        lines.append("a bound such as --max-size 5 makes runs shorter")
        return Status.LIMIT, lines
    lowest = whole.lowest
    if not ended and lowest.support == 1:
        lines.append(
            f"there are {number_of(lowest.patterns, 'pattern')} at any support: with "
            f"support 1 all are found"
        )
        status = Status.FOUND if lowest.patterns else Status.NOTHING
        return status, [*lines, _time(whole, 1)]
    lines.append(_known(whole, lowest.support, graphs))
    if ended:
        last = max(ended, key=lambda run: run.support)
        lines.append(
            f"below, at {_share(last.support, graphs)}, the limit of "
            f"{last.stopped_by} was reached"
        )
    else:
        lines.append("below, the limit of time was reached")
    return Status.LIMIT, [*lines, _time(whole, lowest.support)]


def _sample_lines(found: _estimate.Estimate, patterns: int) -> Iterator[str]:
    if found.fractions:
        shares = sorted(found.fractions)
        yield (
            f"samples: {number_of(patterns, 'pattern')} at {100 * shares[0]:.3g}% to "
            f"{100 * shares[-1]:.3g}%, in {len(shares)} of "
            f"{number_of(len(found.samples), 'sample')} of {_estimate.SAMPLE} graphs"
        )
    elif found.samples:
        yield (
            f"samples: none of {len(found.samples)} came to "
            f"{number_of(patterns, 'pattern')}"
        )


def _known(whole: _estimate.Curve, support: int, graphs: int) -> str:
    return (
        f"--support {support} ({_share(support, graphs)}): exactly "
        f"{number_of(whole.count(support), 'pattern')}"
    )


def _share(support: int, graphs: int) -> str:
    return f"{100 * support / graphs:.4g}% of {graphs}"


def _time(whole: _estimate.Curve, *told: int) -> str:
    """Return how long mining takes at the supports that are told."""
    assert whole.lowest is not None
    what = "this support" if len(told) == 1 else "these supports"
    where = ""
    if whole.lowest.support not in told:
        where = f" (measured at {whole.lowest.support})"
    seconds = math.ceil(10 * whole.lowest.seconds) / 10
    return f"time: mining at {what} takes {seconds:.1f} s at most here{where}"
