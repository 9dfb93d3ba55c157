"""What a run has written: reading it, and what can be said of it by itself.

Whatever does not have the form of its file becomes a finding; what is left can
be worked with: every pattern read has vertices, edges between them, a size that
is its number of edges, and a name of its own.
"""

import dataclasses
import os
import re
from pathlib import Path

from checker.findings import Findings, Name, name_text
from checker.graphs import Graph, Labels
from checker.report import SETTING, derived_name

HEADER = re.compile(rb"t # (\d+)-(\d+), (\d+)")
NAME = re.compile(rb"(\d+)-(\d+)")
OUTPUTS = {  # by the end of their names
    ".fp": "pattern file",
    ".tid": "TID list",
    ".pc": "PC list",
    ".c.g": "candidate file",
}


@dataclasses.dataclass
class Pattern:
    name: Name
    count: int
    graph: Graph


@dataclasses.dataclass
class RunFiles:
    comments: list[str]  # of the pattern file, in its order, without "# "
    names: list[Name]  # of all patterns, those that cannot be read, too
    patterns: list[Pattern]
    tids: dict[Name, list[int]] | None  # None: there is no such file
    parents: dict[Name, list[Name]] | None
    candidates: list[Pattern] | None


@dataclasses.dataclass
class _Block:
    """The lines of one pattern."""

    header: bytes
    lines: list[bytes]


def named_input(pattern_file: Path) -> str | None:
    """The input that the head of a pattern file names; None if there is none."""
    if not pattern_file.is_file():
        return None
    with pattern_file.open("rb") as lines:
        for line in lines:
            if not line.startswith(b"#"):
                break
            found = SETTING.fullmatch(os.fsdecode(line[2:].rstrip(b"\n")))
            if found and found[1] == "Transaction File Name":
                return found[2]
    return None


def mistaken_output(path: Path) -> str | None:
    """What to say when path is an output of a run, not its input."""
    suffix = next((end for end in OUTPUTS if path.name.endswith(end)), None)
    if suffix is None or not path.is_file():
        return None
    # An input may be called like the output of another run; then its own says so.
    own = Path(derived_name(str(path), ".fp"))
    if own != path and Path(named_input(own) or "").name == path.name:
        return None
    said = (
        f"{path} looks like the {OUTPUTS[suffix]} of a run, but FILE is the input of "
        "the run, of lines such as 't # 0', 'v 0 C', 'u 0 1 s'"
    )
    name = named_input(path.with_name(path.name.removesuffix(suffix) + ".fp"))
    if name is None:
        return said
    neighbour = path.with_name(Path(name).name)
    if neighbour.is_file():
        return f"{said}: check_run.py {neighbour}"
    return f"{said}; it was called {name}, and is not here"


def read_blocks(data: bytes, what: str, findings: Findings) -> tuple[list[str], list[_Block]]:
    if data and not data.endswith(b"\n"):
        findings.add("bad-line", f"{what}: the last line has no end")
    comments: list[str] = []
    blocks: list[_Block] = []
    for line in data.split(b"\n")[:-1]:
        if line.startswith(b"#"):
            if not line.startswith(b"# "):
                findings.add("bad-line", f"{what}: {line!r}")
            comments.append(os.fsdecode(line[2:]))
        elif line.startswith(b"t"):
            blocks.append(_Block(line, []))
        elif blocks:
            blocks[-1].lines.append(line)
        else:
            findings.add("bad-line", f"{what}: {line!r}")
    return comments, blocks


def read_pattern(block: _Block, what: str, labels: Labels, findings: Findings) -> Pattern | None:
    """The pattern of a block; None, and a finding, when it is none."""
    header = HEADER.fullmatch(block.header)
    if header is None:
        findings.add("bad-line", f"{what}: {block.header!r}")
        return None
    size, number, count = map(int, header.groups())
    text = name_text((size, number))
    graph = Graph([], [])
    before = (-1, -1)
    for line in block.lines:
        fields = line.split(b" ")
        try:
            if fields[0] == b"v" and len(fields) == 3 and before == (-1, -1):
                if int(fields[1]) != len(graph.vlabel):
                    raise ValueError
                graph.add_vertex(labels.vertex[fields[2]])
            elif fields[0] == b"u" and len(fields) == 4:
                u, w = int(fields[1]), int(fields[2])
                if not before < (u, w) or not 0 <= u < w < len(graph.vlabel):
                    raise ValueError
                before = u, w
                graph.add_edge(u, w, labels.edge[fields[3]])
            else:
                raise ValueError
        except ValueError:
            findings.add("bad-numbering", f"{what} {text}: {line!r}")
            return None
        except KeyError:
            findings.add("unknown-label", f"{what} {text}: {line!r}")
            return None
    if graph.size() != size:
        findings.add("wrong-size", f"{what} {text}: has {graph.size()} edges")
        return None
    if not graph.is_connected():
        findings.add("disconnected", f"{what} {text}")
        return None
    return Pattern((size, number), count, graph)


def read_patterns(
    blocks: list[_Block], what: str, labels: Labels, gaps: bool, findings: Findings
) -> tuple[list[Name], list[Pattern]]:
    """All patterns, with names in order: 0, 1, ... of each size, or with gaps.
    There are more names than patterns where some cannot be read."""
    names = []
    patterns = []
    before: Name = (0, -1)
    for block in blocks:
        pattern = read_pattern(block, what, labels, findings)
        header = HEADER.fullmatch(block.header)
        if header is None:
            continue
        name = int(header[1]), int(header[2])
        next_id = before[1] + 1 if name[0] == before[0] else 0
        in_order = name > before if gaps else name[0] >= before[0] and name[1] == next_id
        if not in_order:
            findings.add("wrong-id", f"{what}: {name_text(name)} after {name_text(before)}")
        before = name
        names.append(name)
        if pattern is not None:
            patterns.append(pattern)
    return names, patterns


def read_lines(path: Path, findings: Findings) -> dict[Name, list[bytes]] | None:
    """A file of lines that begin with a name: the fields behind each name."""
    if not path.is_file():
        return None
    data = path.read_bytes()
    if data and not data.endswith(b"\n"):
        findings.add("bad-line", f"{path.name}: the last line has no end")
    lines: dict[Name, list[bytes]] = {}
    before: Name = (0, -1)
    for line in data.split(b"\n")[:-1]:
        fields = line.split(b" ")
        named = NAME.fullmatch(fields[0])
        if named is None:
            findings.add("bad-line", f"{path.name}: {line!r}")
            continue
        name = int(named[1]), int(named[2])
        if not before < name:
            findings.add("wrong-id", f"{path.name}: {name_text(name)} after {name_text(before)}")
        before = name
        lines[name] = fields[1:]
    return lines


def read_tids(path: Path, findings: Findings) -> dict[Name, list[int]] | None:
    lines = read_lines(path, findings)
    if lines is None:
        return None
    tids = {}
    for name, fields in lines.items():
        if not all(field.isdigit() for field in fields):
            findings.add("bad-line", f"{path.name}: {name_text(name)}")
            fields = [field for field in fields if field.isdigit()]
        tids[name] = list(map(int, fields))
        if sorted(set(tids[name])) != tids[name]:
            findings.add("wrong-tid", f"{name_text(name)}: the list is not ascending")
    return tids


def read_parents(path: Path, findings: Findings) -> dict[Name, list[Name]] | None:
    lines = read_lines(path, findings)
    if lines is None:
        return None
    parents = {}
    for name, fields in lines.items():
        named = [NAME.fullmatch(field) for field in fields]
        if not all(named):
            findings.add("bad-line", f"{path.name}: {name_text(name)}")
        listed = [(int(match[1]), int(match[2])) for match in named if match]
        if sorted(set(listed)) != listed:
            findings.add("wrong-parents", f"{name_text(name)}: the list is not ascending")
        parents[name] = listed
    return parents


def match_names(names: list[Name], lines: dict | None, what: str, findings: Findings) -> None:
    """Every pattern has its line, and no other has one."""
    if lines is None:
        return
    for name in sorted(set(names) - lines.keys()):
        findings.add("missing-line", f"{what}: {name_text(name)}")
    for name in sorted(lines.keys() - set(names)):
        findings.add("extra-line", f"{what}: {name_text(name)}")
