"""How the package fails."""

from __future__ import annotations


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
        """Return the text and the place."""
        if self.path is None and self.line is None:
            return self.text
        place = [] if self.path is None else [self.path]
        if self.line is not None:
            place.append(f"line {self.line}")
        return f"{self.text} ({', '.join(place)})"


class StopMining(Exception):
    """Raised by a progress callback, ends the run; the result is returned."""
