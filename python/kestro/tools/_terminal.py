"""What people see while a command runs: everything here goes to standard error.

Problems are told always; what only passes the time, on a terminal alone.  Colour
goes with the terminal, unless ``NO_COLOR`` is set (https://no-color.org).
"""

from __future__ import annotations

import io
import os
import shutil
import sys
import unicodedata
from collections.abc import Iterable
from typing import TextIO

from kestro._errors import printable

_STYLES = {"error": "31", "warning": "33", "note": "36", "bold": "1"}


def shown(text: str) -> str:
    r"""Return the text without what a terminal would obey, as in ``\x1b``."""
    return "".join(
        c
        if c.isprintable() or unicodedata.category(c) == "Zs"
        else c.encode("unicode_escape").decode("ascii")
        for c in printable(text)
    )


def styles(stream: TextIO) -> bool:
    """Whether colours may be written to a stream."""
    return _is_terminal(stream) and not os.environ.get("NO_COLOR")


def styled(text: str, style: str, stream: TextIO) -> str:
    """Return the text in a colour, if the stream takes one."""
    return f"\x1b[{_STYLES[style]}m{text}\x1b[0m" if styles(stream) else text


def table(rows: Iterable[Iterable[object]]) -> list[str]:
    """Return lines with columns in line, numbers to the right."""
    cells = [[shown(str(cell)) for cell in row] for row in rows]
    widths = [max(map(len, column)) for column in zip(*cells, strict=True)]
    return [
        "  ".join(
            cell.rjust(width) if _is_number(cell) else cell.ljust(width)
            for cell, width in zip(row, widths, strict=True)
        ).rstrip()
        for row in cells
    ]


class Terminal:
    """Standard error, as a command writes to it.

    Parameters
    ----------
    quiet : bool
        Whether to tell problems alone, on a terminal, too.
    """

    def __init__(self, quiet: bool = False) -> None:
        # Where standard error is closed nobody reads.
        self._stream = io.StringIO() if sys.stderr is None else sys.stderr
        self.is_live = _is_terminal(self._stream) and not quiet
        self._has_passing = False

    def warn(self, text: str, style: str = "warning") -> None:
        """Tell a problem."""
        self._line(f"{styled(style, style, self._stream)}: {shown(text)}")

    def list(self, texts: Iterable[str]) -> None:
        """Tell what belongs to a problem, a line each."""
        for text in texts:
            self._line(f"  {shown(text)}")

    def say(self, text: str) -> None:
        """Tell what is good to know, on a terminal only."""
        if self.is_live:
            self._line(shown(text))

    def passing(self, text: str) -> None:
        """Show a line that the next one replaces, on a terminal only."""
        if self.is_live:
            width = shutil.get_terminal_size().columns - 1
            self._stream.write(f"\r\x1b[K{shown(text)[:width]}")
            self._stream.flush()
            self._has_passing = True

    def clear(self) -> None:
        """Take the passing line away."""
        if self._has_passing:
            self._stream.write("\r\x1b[K")
            self._stream.flush()
            self._has_passing = False

    def _line(self, text: str) -> None:
        self.clear()
        print(text, file=self._stream, flush=True)


def _is_terminal(stream: TextIO) -> bool:
    return stream.isatty() and os.environ.get("TERM") != "dumb"


def _is_number(text: str) -> bool:
    return text.removesuffix("%").replace(".", "", 1).isdecimal()
