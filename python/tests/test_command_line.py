"""What the package finds in the command line's form is what the program writes.

The recorded runs of tests/golden hold files of the program; beside these, the
program itself is run, the one that was built last.
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
# it drops TID lines that are longer than its reader takes at once.  A NUL byte
# ends a label there, where the package refuses it.
DIFFERENT = {"folder-as-file", "maximal-long-tid-lines", "nul-byte-after-label"}


def recorded_runs():
    for file in sorted(ROOT.glob("tests/golden/*/out/*.fp")):
        case = file.parents[1]
        if case.name in DIFFERENT:
            continue
        args = (case / "args").read_text()
        if (case / "status").read_text().strip() == "0" and not OTHER.search(args):
            yield pytest.param(case, file, asked_for(file), id=case.name)


def asked_for(file):
    head = file.read_bytes()
    return {name: int(row.search(head)[1]) for name, row in HEAD.items()}


# The time, what is above all numbers but one, and the support as it was asked for:
# the recorded runs are asked for by the number of graphs.
MASKED = re.compile(
    rb"(?<=CPU Time:                       )[0-9.T]+(?=\[)"
    rb"|(?<=Support Threshold:                       )[0-9.a-z-]+(?=%)"
    rb"|\(INT_MAX\)"
    rb"|(?<=Min Output Pattern Size:                     )(?:0|-[0-9]+)$",
    re.MULTILINE,
)


def masked(file):
    return MASKED.sub(b"", file.read_bytes())


def write_and_compare(result, written, folder, name, source):
    parents, tids = ((folder / f"{name}.{suffix}").exists() for suffix in ("pc", "tid"))
    result.write(written, name, source=source, parents=parents, tids=tids)
    expected = sorted(folder.glob(f"{name}.*"))
    assert folder / f"{name}.fp" in expected
    for file in expected:
        if file.suffix in (".fp", ".tid", ".pc"):
            assert masked(written / file.name) == masked(file)


@pytest.mark.parametrize(("case", "file", "asked"), list(recorded_runs()))
def test_recorded_runs(case, file, asked, tmp_path):
    head = file.read_bytes()
    name = re.search(rb"Transaction File Name: +(.*)", head)[1].decode()
    asked = asked | {"min_size": max(0, asked["min_size"])}
    maximal = b"Generate Only Maximal Patterns:              Yes" in head
    db = kestro.read_transactions(case / "in" / name)
    asked["min_support"] = max(1, asked["min_support"])
    if asked["max_size"] < max(1, asked["min_size"]):
        with pytest.raises(ValueError, match="max_size"):
            kestro.mine(db, **asked)
        return
    result = kestro.mine(db, **asked, maximal=maximal, form="command-line")
    write_and_compare(result, tmp_path, file.parent, file.stem, name)


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
    assert kestro_program, "no program is built; KESTRO_PROGRAM may name one"
    folder = tmp_path / "program"
    folder.mkdir()
    copy = folder / "molecules.txt"
    copy.write_bytes((examples / "molecules.txt").read_bytes())
    subprocess.run(
        [kestro_program, "-s", per_cent, "-t", "-p", *options, copy.name],
        cwd=folder,
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
    write_and_compare(result, tmp_path, folder, "molecules", copy.name)
    if result.order_dependent == 0 and not asked:
        exact = kestro.mine(molecules, min_support=f"{per_cent}%", form="exact")
        write_and_compare(exact, tmp_path, folder, "molecules", copy.name)
