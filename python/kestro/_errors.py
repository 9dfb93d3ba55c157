"""How the package fails."""

from __future__ import annotations

import re

_SURROGATE = re.compile("[\ud800-\udfff]")


def printable(text: str) -> str:
    r"""Return the text as every stream takes it.

    Lone surrogates stand for bytes that are no UTF-8, and are written out as
    in ``\xe9``; those that stand for nothing as in ``\ud800``.
    """
    return _SURROGATE.sub(_escaped, text)


def _escaped(found: re.Match[str]) -> str:
    code = ord(found[0])
    byte = code - 0xDC00
    return f"\\x{byte:x}" if 0x80 <= byte <= 0xFF else f"\\u{code:x}"


class KestroError(ValueError):
    """Input that cannot be read, or an argument that makes no sense.

    Parameters
    ----------
    text : str
        What is wrong.
    path : str, optional
        The file it was found in.
    line : int, optional
        The line in that file, from 1 on.

    Attributes
    ----------
    text, path, line
        The parameters.
    """

    def __init__(
        self, text: str, path: str | None = None, line: int | None = None
    ) -> None:
        super().__init__(text, path, line)
        self.text = text.rstrip("\n")
        self.path = path
        self.line = line

    def __str__(self) -> str:
        """Return the text and the place, without what no stream takes."""
        if self.path is None and self.line is None:
            return printable(self.text)
        place = [] if self.path is None else [self.path]
        if self.line is not None:
            place.append(f"line {self.line}")
        return printable(f"{self.text} ({', '.join(place)})")


class StopMining(Exception):
    """Raised by a progress callback, ends the run; the result is returned."""
