"""Files that appear under their names when they are whole."""

from __future__ import annotations

import os
import uuid
from collections.abc import Iterable
from pathlib import Path


def write_aside(path: Path, lines: Iterable[str]) -> None:
    """Write a file that appears when it is whole.

    A device or a pipe is written to: a file in its place would take its name away.
    A link stays, and the file that it names is written.
    """
    if path.is_symlink() and path.is_file():
        path = path.resolve()
    if path.exists() and not path.is_file():
        with open(path, "w", encoding="utf-8", errors="surrogateescape") as f:
            f.writelines(lines)
    else:
        write_all_aside({path: lines})


def write_all_aside(
    contents: dict[Path, Iterable[str]], stale: Iterable[Path] = ()
) -> None:
    """Write files that appear when all are whole, one after another.

    What is stale disappears before.

    Raises
    ------
    OSError
        When one cannot be written, with its own name; none has appeared then
        but where it is the renaming that fails.
    """
    written: dict[Path, Path] = {}
    try:
        for path, lines in contents.items():
            # Of two that write the same file at once, in threads or processes,
            # each has its own.
            aside = path.with_name(f".{path.name}.{uuid.uuid4().hex}")
            try:
                with open(aside, "x", encoding="utf-8", errors="surrogateescape") as f:
                    written[aside] = path
                    f.writelines(lines)
            except OSError as e:
                if e.filename == str(aside):
                    e.filename = str(path)
                raise
        for path in stale:
            path.unlink(missing_ok=True)
        for aside, path in written.items():
            os.replace(aside, path)
    except BaseException:
        for aside in written:
            aside.unlink(missing_ok=True)
        raise
