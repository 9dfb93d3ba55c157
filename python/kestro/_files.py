"""Reading files as a whole, whatever they come as."""

from __future__ import annotations

import gzip
import os
import zlib
from collections.abc import Iterable
from typing import IO, Any, TypeGuard

from kestro._errors import KestroError

Path = str | os.PathLike[str]
Source = Path | IO[bytes] | IO[str]

GZIP = b"\x1f\x8b"  # how a compressed file begins


def is_source(source: Source | Iterable[Any]) -> TypeGuard[Source]:
    """Whether it is a path or a file object."""
    return isinstance(source, (str, os.PathLike)) or hasattr(source, "read")


def read_bytes(source: Source) -> tuple[bytes, str]:
    """Return what a file, a pipe or a file object holds, and its name.

    What is compressed by gzip is unpacked, whatever its name.  The name is for
    messages, empty where there is none.

    Raises
    ------
    KestroError
        When a compressed file is broken.
    OSError
        When the file cannot be read.
    TypeError
        For anything else.
    """
    if isinstance(source, (str, os.PathLike)):
        name = os.fsdecode(source)
        with open(source, "rb") as f:
            data: bytes | str = f.read()
    elif hasattr(source, "read"):
        name = str(getattr(source, "name", ""))
        data = source.read()
    else:
        raise TypeError(f"source must be a path or a file object, not {source!r}")
    if isinstance(data, str):
        data = data.encode("utf-8", "surrogateescape")
    if data.startswith(GZIP):
        try:
            data = gzip.decompress(data)
        except (EOFError, OSError, zlib.error) as e:
            raise KestroError(f"the file cannot be unpacked: {e}", name or None) from e
    return data, name


def read_text(source: Source) -> tuple[str, str]:
    """Return the text and the name; a byte order mark is left out.

    Bytes that are no UTF-8 become lone surrogates, which stand for them in
    labels, too.
    """
    data, name = read_bytes(source)
    return data.removeprefix(b"\xef\xbb\xbf").decode("utf-8", "surrogateescape"), name


def lines_of(text: str) -> list[str]:
    """Return the lines, ended by LF or CRLF; none behind the last end."""
    lines = text.split("\n")
    if not lines[-1]:
        lines.pop()
    return [line.removesuffix("\r") for line in lines]
