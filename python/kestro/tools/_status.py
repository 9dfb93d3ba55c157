"""How the command ends: its exit codes, and the errors that lead to them."""

from __future__ import annotations

from enum import IntEnum


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
