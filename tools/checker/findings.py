"""What a check has found, a line each: its kind, and what is wrong."""

import dataclasses
from collections import Counter

Name = tuple[int, int]  # a pattern's size and id


def name_text(name: Name) -> str:
    return f"{name[0]}-{name[1]}"


@dataclasses.dataclass
class Findings:
    lines: list[tuple[str, str]] = dataclasses.field(default_factory=list)
    limits: list[tuple[str, str]] = dataclasses.field(default_factory=list)
    notes: list[str] = dataclasses.field(default_factory=list)

    def add(self, kind: str, text: str, *, limit: bool = False) -> None:
        """One more; of the known limit where that may explain it."""
        (self.limits if limit else self.lines).append((kind, text))

    def note(self, text: str) -> None:
        self.notes.append(text)

    def kinds(self) -> Counter[str]:
        return Counter(kind for kind, _ in self.lines)
