"""What a command is given to read, by its name.

Standard input and other pipes give their bytes once, so these are kept: several
commands read what they are given in more than one way.
"""

from __future__ import annotations

import argparse
import io
import stat
import sys
from collections.abc import Callable
from pathlib import Path

from kestro._errors import KestroError
from kestro._files import Source
from kestro.tools._status import UsageError

STDIN = "-"
Again = Callable[[], Source]


class Kept(io.BytesIO):
    """Bytes that were read, with the name that messages tell."""

    def __init__(self, data: bytes, name: str) -> None:
        super().__init__(data)
        self.name = name


def file_name(text: str) -> str:
    """Return the name of a file; an empty one, as of an unset variable, is none.

    Raises
    ------
    argparse.ArgumentTypeError
        For an empty one, which Python would take for the current folder.
    """
    if not text:
        raise argparse.ArgumentTypeError("the name of the file is empty")
    return text


def check_names(*names: str) -> None:
    """Raise where standard input is named for more than one argument.

    Raises
    ------
    UsageError
        As it can be read once.
    """
    if names.count(STDIN) > 1:
        raise UsageError("only one argument can be -, standard input")


def called(name: str) -> str:
    """Return what messages call it."""
    return "standard input" if name == STDIN else name


def kept(name: str) -> Again:
    """Return what gives the source as often as it is called.

    Files and folders are told by their names, as readers look beside them, and
    so is what is not there; of all else the bytes are read now.

    Raises
    ------
    KestroError, OSError
        For what cannot be read.
    """
    if name == STDIN:
        if sys.stdin is None:
            raise KestroError("standard input is closed")
        data = sys.stdin.buffer.read()
    else:
        path = Path(name)
        try:
            kind = path.stat().st_mode
        except OSError:
            return lambda: name
        if stat.S_ISREG(kind) or stat.S_ISDIR(kind):
            return lambda: name
        data = path.read_bytes()
    return lambda: Kept(data, called(name))
