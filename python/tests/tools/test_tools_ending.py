"""Arguments and streams that cannot be used end the commands in order."""

import os
import subprocess
import sys

import kestro
import pytest
from kestro.tools.__main__ import main

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
