#!/usr/bin/env python3
"""Write classes.csv, invented molecules with the result of an invented assay.

A molecule is a ring with a small group on one side and a link with an end on the
other.  It is active

- where a sulfonamide is bound to an aromatic ring by its sulfur, or
- where an aromatic ring has a free amine or hydroxyl, and an amide or urea,

and in one of ten molecules of each kind the result is the wrong one, as in assays.
So nothing that looks at the molecules alone can tell more than nine of ten, and a
good method finds these two reasons.  The same file is written every time.

Usage: python3 make_classes.py
"""

import csv
import itertools
import random
from pathlib import Path

HERE = Path(__file__).resolve().parent

EACH = 200  # molecules, active and inactive
WRONG = 10  # one of so many has the wrong result

# SMILES with a place for the group, and one for the link with its end.
AROMATIC_RINGS = [
    "{}c1ccc({})cc1", "{}c1cccc({})c1", "{}c1ccc({})nc1", "{}c1ccc({})s1",
    "{}c1ccc2[nH]c({})cc2c1",
]  # fmt: skip
OTHER_RINGS = ["{}C1CCC({})CC1", "{}C1CCC({})C1"]
GROUPS = ["N", "O", "C", "F", "Cl", "CO", "N#C", "FC(F)(F)", "CC(=O)", "OC(=O)"]
LINKS = ["S(=O)(=O)N", "C(=O)N", "NC(=O)N", "C(=O)O", "CC", "OC", "CN", "SC"]
ENDS = [
    "C", "CC", "C(C)C", "CCO", "CC(C)C", "c3ccccc3", "Cc3ccccc3", "C3CCCC3",
    "CCN3CCOCC3", "c3ccncc3", "Cc3ccco3",
]  # fmt: skip


def is_active(ring: str, group: str, link: str) -> bool:
    if ring not in AROMATIC_RINGS:
        return False
    has_amide = link in ("C(=O)N", "NC(=O)N")
    return link == "S(=O)(=O)N" or (group in ("N", "O") and has_amide)


def main() -> None:
    chance = random.Random(14)
    rings = AROMATIC_RINGS + OTHER_RINGS
    parts = list(itertools.product(rings, GROUPS, LINKS, ENDS))
    chance.shuffle(parts)
    rows = []
    for active in (True, False):
        own = [p for p in parts if is_active(*p[:3]) == active][:EACH]
        for number, (ring, group, link, end) in enumerate(own):
            wrong = number % WRONG == 0
            rows.append((ring.format(group, link + end), int(active != wrong)))
    chance.shuffle(rows)
    with open(HERE / "classes.csv", "w", newline="") as f:
        writer = csv.writer(f, lineterminator="\n")
        writer.writerow(("smiles", "active"))
        writer.writerows(rows)
    print(f"classes.csv: {len(rows)} molecules")


if __name__ == "__main__":
    main()
