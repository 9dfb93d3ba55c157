"""Reading files as a whole, whatever they come as."""

from __future__ import annotations

import gzip
import os
import zlib
from collections.abc import Iterable
from typing import IO, Any, TypeGuard

from kestro._errors import KestroError

Source = str | os.PathLike[str] | IO[bytes] | IO[str]

GZIP = b"\x1f\x8b"  # how a compressed file begins
BYTE_ORDER_MARK = b"\xef\xbb\xbf"


def plain_name(name: str) -> str:
    """Return the name without the extension of what gzip has compressed."""
    return name[:-3] if name.lower().endswith(".gz") else name


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
    data, name = _contents(source)
    if isinstance(data, str):
        data = data.encode("utf-8", "surrogateescape")
    return unpacked(data, name), name


def read_document(source: Source) -> tuple[bytes, str, str | None]:
    """Return what `read_bytes` does, and the encoding that it surely has.

    That is None for bytes: they may tell their encoding themselves.
    """
    data, name = _contents(source)
    if isinstance(data, str):
        return data.encode("utf-8", "surrogateescape"), name, "utf-8"
    return unpacked(data, name), name, None


def _contents(source: Source) -> tuple[bytes | str, str]:
    if isinstance(source, (str, os.PathLike)):
        with open(source, "rb") as f:
            return f.read(), os.fsdecode(source)
    if hasattr(source, "read"):
        # What was opened by its descriptor has that number for a name.
        name = getattr(source, "name", "")
        is_path = isinstance(name, (str, bytes, os.PathLike))
        return source.read(), os.fsdecode(name) if is_path else ""
    raise TypeError(f"source must be a path or a file object, not {source!r}")


def unpacked(data: bytes, name: str) -> bytes:
    if not data.startswith(GZIP):
        return data
    try:
        return gzip.decompress(data)
    except (EOFError, OSError, zlib.error) as e:
        raise KestroError(f"the file cannot be unpacked: {e}", name or None) from e


def read_text(source: Source) -> tuple[str, str]:
    """Return the text and the name; a byte order mark is left out.

    Bytes that are no UTF-8 become lone surrogates, which stand for them in
    labels, too.
    """
    data, name = read_bytes(source)
    return data.removeprefix(BYTE_ORDER_MARK).decode("utf-8", "surrogateescape"), name


def lines_of(text: str) -> list[str]:
    """Return the lines, ended by LF or CRLF; none behind the last end."""
    lines = text.split("\n")
    if not lines[-1]:
        lines.pop()
    return [line.removesuffix("\r") for line in lines]


def drop_blank_end(lines: list[str], least: int = 0) -> None:
    """Take blank lines off the end, as far as more than the least are left."""
    while len(lines) > least and not lines[-1].strip():
        lines.pop()
