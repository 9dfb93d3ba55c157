"""What the package finds in the command line's form is what the program writes.

The recorded runs of tests/golden hold files of the program;
python/checks/program compares with the program itself.
"""

import re
from pathlib import Path

import kestro
import pytest

ROOT = Path(__file__).parents[2]
HEAD = {
    "min_size": re.compile(rb"Min Output Pattern Size: +(-?\d+)"),
    "max_size": re.compile(rb"Max Output Pattern Size: +(-?\d+)"),
    "min_support": re.compile(rb"Min Support Threshold: .*\((-?\d+) transaction"),
}
# Options that the package does not have.
OTHER = re.compile(r"stabilizer|load-labels|save-labels|-h\b|help")
# The program reads a folder as an empty file, and of the files of a run with -x
# it drops TID lines that are longer than its reader takes at once.
DIFFERENT = {"folder-as-file", "maximal-long-tid-lines"}


def recorded_runs():
    for file in sorted(ROOT.glob("tests/golden/*/out/*.fp")):
        case = file.parents[1]
        if case.name in DIFFERENT:
            continue
        args = (case / "args").read_text()
        if (case / "status").read_text().strip() == "0" and not OTHER.search(args):
            yield pytest.param(case, file, id=case.name)


def without_report(file):
    lines = file.read_bytes().splitlines(keepends=True)
    return b"".join(line for line in lines if not line.startswith(b"#"))


def compare(written, folder, name):
    assert (written / "p.fp").read_bytes() == without_report(folder / f"{name}.fp")
    for suffix in ("tid", "pc"):
        expected = folder / f"{name}.{suffix}"
        if expected.exists():
            assert (written / f"p.{suffix}").read_bytes() == expected.read_bytes()


@pytest.mark.parametrize(("case", "file"), list(recorded_runs()))
def test_recorded_runs(case, file, tmp_path):
    head = file.read_bytes()
    asked = {name: int(row.search(head)[1]) for name, row in HEAD.items()}
    name = re.search(rb"Transaction File Name: +(.*)", head)[1].decode()
    asked["min_size"] = max(0, asked["min_size"])
    maximal = b"Generate Only Maximal Patterns:              Yes" in head
    db = kestro.read_transactions(case / "in" / name)
    asked["min_support"] = max(1, asked["min_support"])
    if asked["max_size"] < max(1, asked["min_size"]):
        with pytest.raises(ValueError, match="max_size"):
            kestro.mine(db, **asked)
        return
    result = kestro.mine(db, **asked, maximal=maximal, form="command-line")
    result.write(tmp_path, "p")
    compare(tmp_path, file.parent, file.stem)
