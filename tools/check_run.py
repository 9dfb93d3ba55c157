#!/usr/bin/python3
"""Prove a finished run of kestro, from its input and its files alone.

    check_run.py [OPTION ...] FILE

FILE is the input; read are the .fp beside it, the .tid and .pc that it names, and
with --candidates the .c.g, which it does not name.  No code of the program is used:
occurrences are found by igraph's VF2, isomorphic patterns told by its BLISS.
Proved are

- the form of every file, the ids, the numbering of vertices;
- that every pattern is connected, of its size, and listed once;
- every TID, and that every other transaction lacks the pattern: it is not among
  those of a part of it, proved before, or lacks labels that an occurrence needs,
  or has been searched;
- support counts, the minimum count, every parent, the candidates;
- that no frequent pattern is missing: every extension by one edge is a pattern
  that is listed, or infrequent (tools/checker/growth.py);
- that maximal patterns are maximal, and all there;
- head, table and totals of the report.

Prints a finding per line behind its kind, for instance

    wrong-tid 3-7: transaction 12 does not contain it

and ends with "check_run: 844 patterns, 0 findings, 0 known limits".  Where the
known limit of the canonical form (docs/design.md) may explain a finding, it is
counted apart; tools/checker/limits.py tells where that is.  Of each kind the
first 20 are printed, then how many more there are, unless --all is given; the
last line counts all.  The exit status is 1 when there are findings, 2 when the
run cannot be read.

On a terminal, standard error first says what there is to prove and about how
long that takes, as measured on a few of the patterns, then how far it is.

It needs Debian's python3-igraph, so it runs under Debian's Python.
"""

import argparse
import sys
from collections import Counter
from pathlib import Path

from checker.graphs import BadFile
from checker.progress import on_terminal
from checker.run_check import Outcome, Request, check_run

SHOWN = 20  # findings of a kind


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        description="Prove a finished run of kestro, from its input and its files alone."
    )
    parser.add_argument(
        "file", type=Path, metavar="FILE", help="the input of the run, none of its outputs"
    )
    parser.add_argument("--report", type=Path, metavar="REPORT", help="what the run printed")
    parser.add_argument(
        "--labels", type=Path, metavar="LABELS", help="the label file that it loaded"
    )
    parser.add_argument("--support", type=float, help="its -s, of which the report shows one digit")
    parser.add_argument(
        "--stabilizer-threshold", type=int, default=5, help="its own; 5 when not given"
    )
    parser.add_argument(
        "--budget",
        type=int,
        default=Request.budget,
        metavar="N",
        help="look at N extensions at most (%(default)s)",
    )
    parser.add_argument("--complete", action="store_true", help="look at all extensions")
    parser.add_argument(
        "--candidates", action="store_true", help="the .c.g is of the same run: prove it too"
    )
    parser.add_argument(
        "--all", action="store_true", help=f"print all findings, not only {SHOWN} of a kind"
    )
    return parser.parse_args()


def tell_lines(lines: list[tuple[str, str]], before: str, most: int | None) -> None:
    """So many of each kind at most, then how many more there are."""
    count: Counter[str] = Counter()
    for kind, text in lines:
        count[kind] += 1
        if most is None or count[kind] <= most:
            print(f"{before}{kind} {text}")
    for kind, found in count.items():
        if most is not None and found > most:
            print(f"{before}{kind}: {found - most} more (--all shows them)")


def tell(outcome: Outcome, most: int | None) -> None:
    tell_lines(outcome.findings.lines, "", most)
    tell_lines(outcome.findings.limits, "known-limit ", most)
    for text in outcome.findings.notes:
        print("check_run:", text)
    print(
        f"check_run: {outcome.patterns} patterns, "
        f"{len(outcome.findings.lines)} findings, "
        f"{len(outcome.findings.limits)} known limits"
    )


def main() -> int:
    args = arguments()
    try:
        request = Request(
            args.file,
            args.report.read_bytes() if args.report else None,
            args.labels,
            args.support,
            args.stabilizer_threshold,
            None if args.complete else args.budget,
            args.candidates,
        )
        with on_terminal(sys.stderr) as progress:
            outcome = check_run(request, progress)
    except (BadFile, OSError) as error:
        print(f"check_run: {error}", file=sys.stderr)
        return 2
    tell(outcome, None if args.all else SHOWN)
    return 1 if outcome.findings.lines else 0


if __name__ == "__main__":
    sys.exit(main())
