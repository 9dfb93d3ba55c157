"""Sub-command suggest."""

import re

import kestro
import numpy as np
import pytest
from kestro.tools import _estimate, suggest
from kestro.tools.__main__ import main


def test_what_is_said_is_what_mining_gives(examples, capsys):
    file = str(examples / "molecules.txt")
    assert main(["suggest", file, "-n", "100", "-t", "1000000"]) == 0
    out = capsys.readouterr().out
    said = re.findall(r"--support (\d+) .*exactly (\d+) patterns", out)
    assert said
    db = kestro.read_transactions(file)
    for support, patterns in said:
        assert len(kestro.mine(db, min_support=int(support))) == int(patterns)
    assert int(said[0][1]) >= 100
    assert all(int(patterns) < 100 for _, patterns in said[1:])


def test_samples(examples, capsys):
    # Fifteen copies of each molecule: samples differ, fractions stay.
    db = kestro.read_transactions(examples / "molecules.txt")
    many = db[np.tile(np.arange(len(db)), 15)]
    found = _estimate.estimate(many, 100, 10**6, None)
    assert len(found.samples) == len(found.fractions) == 3
    assert all(len(c.supports) >= 100 for c in found.samples)
    status, lines = suggest.answer(found, 100, len(many))
    assert status == 0
    assert lines[0].startswith("samples: 100 patterns at ")
    nth = found.whole.nth(100)
    assert lines[-1].startswith("time: mining at th")
    assert (" (measured at " in lines[-1]) == (found.whole.lowest.support != nth)
    assert len(kestro.mine(many, min_support=nth)) == found.whole.count(nth) >= 100
    assert len(kestro.mine(many, min_support=nth + 1)) < 100


def test_runs_end_before_they_explode(explosive):
    run, found = _estimate.bounded_run(explosive, 1, 20, 1000, None)
    assert run.stopped_by == "patterns"
    assert run.patterns == len(found) < 10000
    memory = iter([0, 2 << 30])
    run, _ = _estimate.bounded_run(
        explosive, 2, 10**6, 1000, None, memory=lambda: next(memory)
    )
    assert run.stopped_by == "memory"
    run, _ = _estimate.bounded_run(explosive, 2, 10**6, 0, None)
    assert run.stopped_by == "time"


def test_a_limit_that_is_reached(explosive, tmp_path, capsys):
    # Two equal graphs have all their patterns at once, and these are too many.
    file = tmp_path / "explosive.txt"
    explosive.to_transactions(file)
    assert main(["suggest", str(file), "-n", "1000", "-t", "1000000"]) == 5
    assert "no run on all graphs came to its end (limit: patterns)" in (
        capsys.readouterr().out
    )
    # With a bound on the size there are few.
    assert (
        main(["suggest", str(file), "-n", "1000", "-t", "1000000", "--max-size", "1"])
        == 0
    )
    assert "there are 55 patterns at any support" in capsys.readouterr().out


@pytest.mark.parametrize(
    ("argv", "code"),
    [
        (["-n", "0"], 2),
        (["-t", "0"], 2),
        (["-t", "inf"], 2),
        (["--max-size", "0"], 2),
        ([], 1),
    ],
)
def test_exit_codes(argv, code, tmp_path):
    file = tmp_path / "a.txt"
    file.write_text("t # 0\nv 0 C\n")
    assert main(["suggest", str(file), *argv]) == code


def test_the_curve_is_that_of_the_lowest_complete_run(examples):
    db = kestro.read_transactions(examples / "molecules.txt")
    curve = _estimate.descend(db, 10**6, 1000, 2, start=60)
    assert curve.lowest.support == 1
    assert len(curve.supports) == len(kestro.mine(db, min_support=1, max_size=2))
    assert np.all(np.diff(curve.supports) <= 0)
    assert curve.nth(10**6) is None
