"""What is told of the records that were left out."""

from __future__ import annotations

from collections import Counter

from kestro._database import GraphDatabase, Skipped, number_of
from kestro.tools._terminal import Terminal

_REASONS = 5  # kinds of reasons that are listed
_RECORDS = 5  # records named for each
_KIND = 40  # signs by which reasons are told apart


def tell(db: GraphDatabase, name: str, terminal: Terminal) -> None:
    """Tell how many records were left out, and why, like reasons together."""
    what = number_of(len(db), db.kind.removesuffix("s"))
    if not db.skipped:
        terminal.say(f"{name}: {what}")
        return
    records = number_of(len(db.skipped), "record")
    counted = " (record 0 is the first)" if db.skipped[-1].record >= 0 else ""
    terminal.warn(f"{name}: {what} read, {records} skipped{counted}")
    kinds = Counter(_kind(s.reason) for s in db.skipped)
    for kind, count in kinds.most_common(_REASONS):
        own = [s for s in db.skipped if _kind(s.reason) == kind]
        such = "" if len({s.reason for s in own}) == 1 else "e.g. "
        terminal.list([f"{count}x {such}{own[0].reason} ({_places(own)})"])
    if len(kinds) > _REASONS:
        rest = sum(count for _, count in kinds.most_common()[_REASONS:])
        terminal.list([f"{rest}x for other reasons"])


def _places(skipped: list[Skipped]) -> str:
    """Return where they stand; -1 is no record but what is in front of all."""
    numbers = [str(s.record) for s in skipped[: _RECORDS + 1] if s.record >= 0]
    told = ["in front of the first graph"] if skipped[0].record < 0 else []
    if numbers:
        more = ", …" if len(skipped) > _RECORDS else ""
        told.append(f"record {', '.join(numbers[:_RECORDS])}{more}")
    return ", ".join(told)


def _kind(reason: str) -> str:
    """Return what is alike in reasons that name other atoms or texts."""
    without = "".join("0" if c.isdecimal() else c for c in reason.partition("'")[0])
    return " ".join(without.split())[:_KIND]
