"""How the command ends: its exit codes, and the errors that lead to them."""

from __future__ import annotations

import errno
import os
from enum import IntEnum

_REASONS = {
    errno.ENOENT: "no such file or folder",
    errno.EISDIR: "it is a folder",
    errno.ENOTDIR: "a part of its path is no folder",
    errno.EACCES: "it is not allowed",
}


class Status(IntEnum):
    """The exit codes."""

    FOUND = 0
    NOTHING = 1
    USAGE = 2
    INPUT = 3
    OUTPUT = 4
    LIMIT = 5
    INTERRUPTED = 130  # as a shell tells of what Ctrl-C has ended


class UsageError(Exception):
    """Arguments that make no sense together."""


class OutputError(Exception):
    """What was to be written could not be."""


def told(what: str, e: OSError) -> str:
    """Return what an error of the system says, without its number.

    Examples
    --------
    >>> from kestro.tools._status import told
    >>> told("cannot read", FileNotFoundError(2, "No such file", "a.smi"))
    'cannot read a.smi: no such file or folder'
    """
    name = f" {os.fsdecode(e.filename)}" if e.filename else ""
    reason = _REASONS.get(e.errno or 0) or e.strerror or str(e)
    return f"{what}{name}: {reason[:1].lower()}{reason[1:]}"
