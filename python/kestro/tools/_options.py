"""Values of options, checked where they are read."""

from __future__ import annotations

import argparse
from collections.abc import Callable

INT_MAX = 2**31 - 1
COUNT_MAX = 2**63 - 1
# Far more than any machine has cores: what is meant is less, and threads cost.
_THREADS = 1024


def whole(least: int, most: int = COUNT_MAX) -> Callable[[str], int]:
    """Return what reads a whole number within bounds.

    Examples
    --------
    >>> from kestro.tools._options import whole
    >>> whole(1)("17")
    17
    """

    def number(text: str) -> int:
        value = _int(text)
        if not least <= value <= most:
            raise argparse.ArgumentTypeError(
                f"it must be {least} or more, not {text}"
                if value < least
                else f"it must be {most} at most, not {text}"
            )
        return value

    return number


def jobs(text: str) -> int:
    """Return a number of threads, -1 for all cores.

    Raises
    ------
    argparse.ArgumentTypeError
        For what is none.
    """
    number = _int(text)
    if number != -1 and not 1 <= number <= _THREADS:
        raise argparse.ArgumentTypeError(
            f"threads are 1 to {_THREADS}, or -1 for all cores, not {text}"
        )
    return number


def add_jobs(parser: argparse.ArgumentParser) -> None:
    """Add the option with the number of threads."""
    parser.add_argument(
        "-j", "--jobs", type=jobs, default=1, metavar="N", help="threads; -1 is all"
    )


def _int(text: str) -> int:
    try:
        return int(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"{text[:40]!r} is no number") from None
