"""Files that appear under their names when they are whole."""

from __future__ import annotations

import os
from collections.abc import Iterable
from pathlib import Path


def write_aside(path: Path, lines: Iterable[str]) -> None:
    """Write a file that appears when it is whole."""
    write_all_aside({path: lines})


def write_all_aside(contents: dict[Path, Iterable[str]]) -> None:
    """Write files that appear together, when all are whole."""
    written: dict[Path, Path] = {}
    try:
        for path, lines in contents.items():
            aside = path.with_name(f".{path.name}.{os.getpid()}")
            written[aside] = path
            with open(aside, "w", encoding="utf-8", errors="surrogateescape") as f:
                f.writelines(lines)
        for aside, path in written.items():
            os.replace(aside, path)
    except BaseException:
        for aside in written:
            aside.unlink(missing_ok=True)
        raise
