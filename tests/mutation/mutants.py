"""Mutants of a source file: one line changed, by the rules of universalmutator.

The tool writes every mutant as a file; here one is the number of the changed
line and its new text, on a single line so that all line numbers, which
assertions print, stay what they are.
"""

import dataclasses
import random
import re
import subprocess
import tempfile
from collections import Counter
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]

# Lines that are left alone: comments, what is no statement, and checks, which
# only matter when they fail in a right program.
SKIPPED = re.compile(
    r"\s*(//|#|assert\(|static_assert\(|KESTRO_STRUCTURE\(|namespace\b"
    r"|} // namespace|public:|private:)"
)
# Brackets of templates, which the tool takes for operators; without them hardly
# anything compiles.
TEMPLATE = re.compile(r"(?:_cast|vector|_ptr|pair|template ?|numeric_limits)<[^()]*?>")
# A loop that counts up to a bound by ones: `!=` ends it where `<` does.
COUNTING_LOOP = re.compile(r"for \([^;]*;[^;]* < [^;]*; \w+\+\+\)")
TRAILING_COMMENT = re.compile(r"\s*//.*$")


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str  # below src
    line: int
    before: str
    after: str

    def fits(self) -> bool:
        """Whether the file still has that line there."""
        lines = source_lines(self.file)
        return self.line <= len(lines) and lines[self.line - 1].strip() == self.before

    def may_compile(self) -> bool:
        """False for some of those that cannot."""
        brackets = [len(TEMPLATE.findall(t)) for t in (self.before, self.after)]
        return brackets[0] <= brackets[1] or self.after.startswith("/*")

    def may_differ(self) -> bool:
        """False for counting loops whose `<` has become `!=`."""
        with_other_end = self.before.replace(" < ", " != ", 1)
        return self.after != with_other_end or not COUNTING_LOOP.match(self.before)

    def write(self, path: Path) -> None:
        """Writes the whole mutated source."""
        lines = source_lines(self.file)
        lines[self.line - 1] = self.after
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("\n".join(lines) + "\n")


def source_lines(file: str) -> list[str]:
    return (TREE / "src" / file).read_text().splitlines()


def mutant_of(file: str, old: list[str], new: list[str]) -> Mutant:
    """The mutant whose text is new: old with one line changed or one added."""
    at = next(i for i, line in enumerate(new) if old[i : i + 1] != [line])
    after = new[at].strip()
    if len(new) > len(old):  # a statement behind the line before
        at -= 1
        after = TRAILING_COMMENT.sub("", old[at]).strip() + " " + after
    return Mutant(file, at + 1, old[at].strip(), after)


def generate(mutate: Path, file: str) -> list[Mutant]:
    """All mutants of a file by the program mutate, in the tool's order."""
    old = source_lines(file)
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            [mutate, TREE / "src" / file, "cpp", "--noCheck", "--mutantDir", folder],
            cwd=folder,
            check=True,
            stdout=subprocess.DEVNULL,
        )
        paths = Path(folder).glob("*.mutant.*")
        in_order = sorted(paths, key=lambda path: int(path.name.split(".")[-2]))
        texts = [path.read_text().splitlines() for path in in_order]
    found = {mutant_of(file, old, new): None for new in texts if new != old}
    return [m for m in found if m.before != m.after and not SKIPPED.match(m.before)]


def in_drawn_order(mutants: list[Mutant], seed: str) -> list[Mutant]:
    """All of them, drawn at random, one of every line before a second of any."""
    drawn = list(mutants)
    random.Random(seed).shuffle(drawn)
    seen: Counter[int] = Counter()
    turns = []
    for mutant in drawn:
        turns.append(seen[mutant.line])
        seen[mutant.line] += 1
    order = sorted(range(len(drawn)), key=turns.__getitem__)
    return [drawn[i] for i in order]
