"""Pictures, which are text of SVG.

A picture names no font that has to be there, no colour that has to be seen and
nothing that lies outside of it.  It has no ids, so that several stand in one page.
"""

from __future__ import annotations

import os
import re
from collections.abc import Sequence
from dataclasses import dataclass
from html import escape
from pathlib import Path

import numpy as np

from kestro._aside import write_aside
from kestro._errors import printable

# What XML 1.0 has no way to say.
_FORBIDDEN = re.compile("[\x00-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]")
_CAPTION = 18  # pixels below each picture of a grid
_GAP = 8  # pixels between them

Size = tuple[int, int]


@dataclass(frozen=True, repr=False)
class Picture:
    """A picture, which notebooks show.

    The same pattern gives the same text with the same versions of RDKit and
    NetworkX.

    Attributes
    ----------
    title : str
        What it shows, in words, as screen readers say it.
    width, height : int
        In pixels.
    body : str
        What stands inside the ``svg`` element, behind its title.
    """

    title: str
    width: int
    height: int
    body: str

    @property
    def svg(self) -> str:
        """The text of the picture."""
        return self.placed("") + "\n"

    def placed(self, attributes: str) -> str:
        """Return the ``svg`` element with more attributes, for use within another."""
        return (
            f'<svg xmlns="http://www.w3.org/2000/svg"{attributes} '
            f'width="{self.width}" height="{self.height}" '
            f'viewBox="0 0 {self.width} {self.height}" role="img">\n'
            f"<title>{xml_text(self.title)}</title>\n{self.body}</svg>"
        )

    def save(self, path: str | os.PathLike[str]) -> None:
        """Write the text to a file, which appears when it is whole.

        Parameters
        ----------
        path : path
            It ends with ``.svg``.

        Raises
        ------
        OSError
            When the file cannot be written.
        ValueError
            For another ending, since programs go by it.
        """
        file = Path(path)
        if file.suffix.lower() != ".svg":
            raise ValueError(f"a picture is SVG: its name ends with .svg, not {path!r}")
        write_aside(file, [self.svg])

    def _repr_svg_(self) -> str:
        """Return what notebooks show."""
        return self.svg

    def __repr__(self) -> str:
        """Return what it shows, and its size."""
        return f"<Picture: {printable(self.title)}, {self.width} x {self.height}>"


def xml_text(text: str) -> str:
    """Return the text as it stands in XML, also in quotes."""
    readable = printable(text)
    return escape(_FORBIDDEN.sub(lambda x: f"\\x{ord(x[0]):x}", readable))


def checked_size(size: Size | None, default: Size) -> Size:
    """Return width and height in pixels.

    Raises
    ------
    TypeError, ValueError
        When size is no pair of int, or one is less than 20.
    """
    if size is None:
        return default
    if (
        not isinstance(size, Sequence)
        or len(size) != 2
        or not all(isinstance(x, (int, np.integer)) for x in size)
    ):
        raise TypeError(f"size must be width and height in pixels, not {size!r}")
    if min(size) < 20:
        raise ValueError(f"size must be at least 20 pixels each way, not {size!r}")
    return int(size[0]), int(size[1])


def grid(
    title: str, pictures: Sequence[Picture], captions: Sequence[str], columns: int
) -> Picture:
    """Return pictures of one size in rows, each with its caption below."""
    columns = max(1, min(columns, len(pictures)))
    rows = -(-len(pictures) // columns)
    across = max((p.width for p in pictures), default=0) + _GAP
    down = max((p.height for p in pictures), default=0) + _CAPTION + _GAP
    width, height = columns * across + _GAP, rows * down + _GAP
    body = [f'<rect width="{width}" height="{height}" fill="#fff"/>\n']
    for i, (picture, caption) in enumerate(zip(pictures, captions, strict=True)):
        x, y = _GAP + i % columns * across, _GAP + i // columns * down
        body.append(picture.placed(f' x="{x}" y="{y}"'))
        body.append(
            f'\n<text x="{x + picture.width / 2:g}" '
            f'y="{y + picture.height + _CAPTION - 5}" text-anchor="middle" '
            f'font-family="sans-serif" font-size="12">{xml_text(caption)}</text>\n'
        )
    return Picture(title, width, height, "".join(body))
