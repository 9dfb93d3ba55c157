"""Arguments and streams that cannot be used end the commands in order."""

import os
import re
import subprocess
import sys
from pathlib import Path

import kestro
import pytest
from kestro.tools.__main__ import main
from kestro.tools._status import Status

HUGE = str(10**30)


@pytest.mark.parametrize(
    "argv",
    [
        ["match", "a.fp", "a.smi", "-j", HUGE],
        ["match", "a.fp", "a.smi", "-j", "1025"],
        ["mine", "a.smi", "-s", "1", "-j", HUGE],
        ["mine", "a.smi", "-s", HUGE],
        ["mine", "a.smi", "-s", "1", "--max-size", HUGE],
        ["mine", "a.smi", "-s", "1", "--min-size", HUGE],
        ["mine", "a.smi", "-s", "1", "--max-patterns", HUGE],
        ["mine", "a.smi", "-s", "1", "--max-patterns", "many"],
        ["mine", "a.smi", "-s", "1", "--time-limit", "nan"],
        ["suggest", "a.smi", "--max-size", HUGE],
        ["suggest", "a.smi", "-n", HUGE],
        ["suggest", "a.smi", "-t", "nan"],
        ["suggest", "a.smi", "--seed", "-1"],
        ["report", "a.fp", "a.smi", "-o", "a.html", "--max-patterns", f"{2**40}"],
        # Inputs are missing: what was told wrongly is seen before they are read.
        ["mine", "no.smi", "-s", "1", "--time-limit", "nan"],
        ["mine", "no.smi", "-s", "1", "--time-limit", "inf"],
        ["mine", "no.smi", "-s", "1", "--time-limit", "-0.1"],
        ["mine", "no.smi", "-s", "1", "--time-limit", "soon"],
        ["suggest", "no.smi", "-t", "0"],
        ["suggest", "no.smi", "-t", "-1"],
        ["check", "no.txt", "--max-problems", "-1"],
        ["check", "no.txt", "--labels", "-1"],
        ["diff", "no.fp", "no.fp", "--show", "-1"],
    ],
)
def test_numbers_out_of_range_are_usage_errors(argv, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "a.smi").write_text("CCO\nCCO\n")
    assert main(argv) == 2
    assert "error: " in capsys.readouterr().err


@pytest.mark.parametrize(
    ("line", "code", "told"),
    [
        ("mine - --from smi -s 1 <&-", 3, "error: standard input is closed\n"),
        ("mine a.smi -s 1 >&-", 4, "cannot write: standard output is closed\n"),
        ("--help >&-", 4, "error: cannot write: standard output is closed\n"),
        ("--version >&-", 4, "error: cannot write: standard output is closed\n"),
        ("completion bash >&-", 4, "standard output is closed\n"),
        ("convert a.smi -o a.txt >&- <&- 2>&-", 0, ""),
        ("mine nowhere.smi -s 1 2>&-", 3, ""),
        ("mine 2>&-", 2, ""),
        ("--help >/dev/full", 4, "error: cannot write: no space left on device\n"),
        ("mine --help >/dev/full", 4, "error: cannot write: no space left"),
        ("--version >/dev/full", 4, "error: cannot write: no space left"),
    ],
)
def test_streams(line, code, told, tmp_path):
    (tmp_path / "a.smi").write_text("CCO\nCCO\n")
    package = os.path.dirname(kestro.__path__[0])
    done = subprocess.run(
        ["bash", "-c", f"{sys.executable} -m kestro.tools {line}"],
        cwd=tmp_path,
        env={**os.environ, "PYTHONPATH": package, "PYTHONUNBUFFERED": "1"},
        capture_output=True,
        text=True,
    )
    assert (done.returncode, done.stdout) == (code, "")
    assert told in done.stderr and "Traceback" not in done.stderr
    if "-o" in line:
        assert (tmp_path / "a.txt").read_text().startswith("t # 0\nv 0 C\n")


LONG = "x" * 300


@pytest.mark.parametrize(
    ("argv", "told"),
    [
        (["convert", "a.smi", "-o", f"{LONG}.parquet"], "file name too long"),
        (["convert", "a.smi", "-o", LONG, "--to", "tu"], "file name too long"),
        (["convert", "a.smi", "-o", LONG, "--to", "parquet"], "file name too long"),
        (["convert", "a.smi", "-o", LONG], "file name too long"),
        (["convert", "a.smi", "-o", "a.d", "--to", "csv"], "a.d: it is a folder"),
        (["convert", "no.smi", "-o", "no/a.txt"], "no/a.txt: no such file or folder"),
        (["convert", "no.smi", "-o", "a.smi/a.txt"], "a.smi/a.txt: a part of its"),
        (
            ["match", "no.fp", "no.smi", "-o", "no/a.csv"],
            "no/a.csv: no such file or folder",
        ),
        (["report", "no.fp", "no.smi", "-o", "no/a.html"], "no/a.html: no such"),
        (["report", "no.fp", "no.smi", "-o", "a.d"], "a.d: it is a folder"),
        (["report", "no.fp", "no.smi", "-o", LONG], "file name too long"),
    ],
)
def test_outputs_that_cannot_be(argv, told, tmp_path, monkeypatch, capsys):
    # Where inputs are missing, too, the output was looked at before the work.
    monkeypatch.chdir(tmp_path)
    (tmp_path / "a.smi").write_text("CCO\nCCO\n")
    (tmp_path / "a.d").mkdir()
    assert main(argv) == 4
    err = capsys.readouterr().err
    assert err.startswith("error: cannot write ") and told in err
    assert sorted(x.name for x in tmp_path.iterdir()) == ["a.d", "a.smi"]


@pytest.mark.parametrize(
    "argv",
    [
        ["convert", "a.smi", "-o", "b.txt.gz"],
        ["convert", "a.smi", "--to", "transactions", "-o", "b.txt.GZ"],
        ["convert", "a.smi", "--to", "parquet", "-o", "b.gz"],
        ["match", "no.fp", "a.smi", "-o", "b.csv.gz"],
        ["report", "no.fp", "a.smi", "-o", "b.html.gz"],
    ],
)
def test_names_of_compressed_files_are_refused(argv, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "a.smi").write_text("CCO\n")
    assert main(argv) == 2
    assert "outputs are not compressed" in capsys.readouterr().err
    assert [x.name for x in tmp_path.iterdir()] == ["a.smi"]


def test_a_folder_may_be_called_so(tmp_path):
    (tmp_path / "a.smi").write_text("CCO\n")
    argv = ["convert", str(tmp_path / "a.smi"), "-o", str(tmp_path / "b.gz")]
    assert main([*argv, "--to", "tu"]) == main(argv) == 0
    assert len(kestro.from_tu(tmp_path / "b.gz")) == 1


def test_a_fault_of_the_command_itself(monkeypatch, capsys):
    def broken(*_):
        raise ZeroDivisionError

    monkeypatch.setattr("kestro.tools._source.check_names", broken)
    assert main(["diff", "a.fp", "b.fp"]) == 70
    assert "ZeroDivisionError" in capsys.readouterr().err


def test_all_exit_codes_are_told(capsys):
    page = Path(__file__).parents[2] / "docs" / "tools.rst"
    rows = re.findall(r"^(\d+)  ", page.read_text(), re.MULTILINE)
    assert main(["--help"]) == 0
    told = capsys.readouterr().out.partition("exit codes:\n")[2]
    codes = [str(int(x)) for x in Status]
    assert rows == re.findall(r"\d+", told) == codes
