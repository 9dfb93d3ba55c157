#!/usr/bin/env python3
"""Check that a shared library shows what the public headers declare, and no more.

    shown_symbols.py LIBRARY INCLUDE_FOLDER

Every name that `nm -DC` tells as defined must belong to a class or function that
a header marks with KESTRO_API, or be an instantiation of the standard library or
type information; and each of those classes and functions must be there.
"""

import re
import subprocess
import sys
from pathlib import Path

MARKED = re.compile(r"^class KESTRO_API ([\w:]+)|^KESTRO_API [\w:]+ (\w+)\(", re.M)
TYPE_INFORMATION = re.compile(
    r"^(typeinfo( name)?|vtable|VTT|guard variable) for |^(non-)?virtual thunk to ")

STANDARD = re.compile(r"([^(]*[ *&])?std::")  # behind the type of what it returns


def declared(include: Path) -> set[str]:
    """Names of the classes and functions that are shown."""
    found = set()
    for header in include.rglob("*.h"):
        for match in MARKED.finditer(header.read_text()):
            found.add("kestro::" + (match[1] or match[2]))
    return found


def defined(library: str) -> list[str]:
    """The demangled names that the library defines."""
    lines = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return [line.split(maxsplit=2)[2] for line in lines]


def owner(name: str, names: set[str]) -> str | None:
    """The declared name that this one belongs to."""
    fitting = [n for n in names if re.match(re.escape(n) + r"(::|\(|\[|$)", name)]
    return max(fitting, key=len, default=None)


def main() -> int:
    library, include = sys.argv[1], Path(sys.argv[2])
    names = declared(include)
    strangers, seen = [], set()
    for name in defined(library):
        about_type = TYPE_INFORMATION.match(name)
        belongs = owner(name[about_type.end():] if about_type else name, names)
        if belongs:
            seen.add(belongs)
        elif not about_type and not STANDARD.match(name):
            strangers.append(name)
    for name in strangers:
        print(f"shown but not declared: {name}")
    for name in sorted(names - seen):
        print(f"declared but not shown: {name}")
    print(f"{len(seen)} of {len(names)} names shown, {len(strangers)} strangers")
    return 1 if strangers or seen != names else 0


if __name__ == "__main__":
    sys.exit(main())
