"""What the package finds in the command line's form is what the program writes.

The recorded runs of tests/golden hold files of the program; beside these, the
program itself is run where one is built.
"""

import os
import re
import subprocess
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
    if asked["max_size"] < max(1, asked["min_size"]):
        pytest.skip("no size is left, which the package refuses")
    maximal = b"Generate Only Maximal Patterns:              Yes" in head
    db = kestro.read_transactions(case / "in" / name)
    asked["min_support"] = max(1, asked["min_support"])
    result = kestro.mine(db, **asked, maximal=maximal, form="command-line")
    result.write(tmp_path, "p")
    compare(tmp_path, file.parent, file.stem)


def program():
    named = os.environ.get("KESTRO_PROGRAM")
    built = sorted(ROOT.glob("build/*/src/kestro"), key=lambda p: p.stat().st_mtime)
    return named or (built[-1] if built else None)


@pytest.mark.parametrize("n_jobs", [1, 2])
@pytest.mark.parametrize(
    ("options", "asked"),
    [
        ([], {}),
        (["-x"], {"maximal": True}),
        (["-m", "3", "-M", "6"], {"min_size": 3, "max_size": 6}),
        (["-x", "-M", "4"], {"max_size": 4, "maximal": True}),
    ],
    ids=["all", "maximal", "sizes", "maximal-bounded"],
)
@pytest.mark.parametrize("per_cent", ["20", "5", "2.5"])
def test_the_examples(options, asked, per_cent, n_jobs, examples, molecules, tmp_path):
    kestro_program = program()
    if kestro_program is None:
        pytest.skip("no program is built; KESTRO_PROGRAM may name one")
    copy = tmp_path / "molecules.txt"
    copy.write_bytes((examples / "molecules.txt").read_bytes())
    subprocess.run(
        [kestro_program, "-s", per_cent, "-t", "-p", *options, copy.name],
        cwd=tmp_path,
        check=True,
        stdout=subprocess.DEVNULL,
    )
    result = kestro.mine(
        molecules,
        min_support=f"{per_cent}%",
        n_jobs=n_jobs,
        form="command-line",
        **asked,
    )
    result.write(tmp_path, "p")
    compare(tmp_path, tmp_path, "molecules")
    if result.order_dependent == 0 and not asked:
        exact = kestro.mine(molecules, min_support=f"{per_cent}%", form="exact")
        exact.write(tmp_path, "p")
        compare(tmp_path, tmp_path, "molecules")
