"""Sub-command mine."""

import io
import signal
import sys

import kestro
import pandas as pd
import pyarrow.parquet
import pytest
from kestro.tools import mine
from kestro.tools.__main__ import main
from kestro.tools._terminal import Terminal


@pytest.fixture
def smi(examples):
    return str(examples / "molecules.smi")


@pytest.fixture
def expected(smi):
    db = kestro.from_smiles(smi, on_error="skip")
    return kestro.mine(db, min_support="20%", closed=True)


class Screen(io.StringIO):
    def isatty(self):
        return True


@pytest.mark.parametrize("support", ["20%", "0.2", "12"])
def test_csv_on_standard_output(smi, expected, support, capsys):
    argv = ["mine", smi, "--support", support, "--closed"]
    assert main(argv) == 0
    table = pd.read_csv(io.StringIO(capsys.readouterr().out))
    assert table["smarts"].tolist() == [p.to_smarts() for p in expected]
    assert table["support"].tolist() == [p.support for p in expected]


def test_files(smi, expected, tmp_path):
    folder = tmp_path / "new" / "out"
    argv = ["mine", smi, "-s", "20%", "--closed", "-j", "2", "-o", str(folder)]
    assert main([*argv, "-f", "files,csv,parquet,jsonl"]) == 0
    names = {f"molecules.{x}" for x in ("fp", "tid", "pc", "csv", "parquet", "jsonl")}
    assert {file.name for file in folder.iterdir()} == names
    for name in ("molecules.fp", "molecules.jsonl"):
        read = kestro.read_result(folder / name)
        assert [p.id for p in read] == [p.id for p in expected]
        assert [p.tids.tolist() for p in read] == [p.tids.tolist() for p in expected]
    table = pyarrow.parquet.read_table(folder / "molecules.parquet")
    assert table.equals(expected.to_arrow())


def test_jsonl_on_standard_output(smi, expected, capsys):
    assert main(["mine", smi, "-s", "12", "--closed", "-f", "jsonl"]) == 0
    read = kestro.read_result(io.StringIO(capsys.readouterr().out))
    assert [p.graph.lines() for p in read] == [p.graph.lines() for p in expected]


@pytest.mark.parametrize(
    ("argv", "code"),
    [
        (["-s", "5,5%"], 2),
        (["-s", "0"], 2),
        (["-s", "1.5"], 2),
        (["-s", "0%"], 2),
        (["-s", "0.0%"], 2),
        (["-s", "101%"], 2),
        (["-s", "5%", "-f", "files"], 2),
        (["-s", "5%", "-f", "tables"], 2),
        (["-s", "5%", "-j", "0"], 2),
        (["-s", "5%", "--min-size", "3", "--max-size", "2"], 2),
        (["-s", "5%", "--time-limit", "-1"], 2),
        (["-s", "61"], 1),
        (["-s", "20%", "--max-patterns", "9"], 5),
        (["-s", "20%", "-o", "/dev/null/x"], 4),
        (["-s", "20%", "--maximal", "--form", "command-line"], 0),
    ],
)
def test_exit_codes(smi, argv, code, capsys):
    assert main(["mine", smi, *argv]) == code
    _, err = capsys.readouterr()
    assert ("error" in err) == (code in (2, 4))
    assert ("stopped by max_patterns" in err) == (code == 5)


def test_a_line_per_size(smi, monkeypatch, capsys):
    monkeypatch.setenv("NO_COLOR", "1")
    monkeypatch.setenv("TERM", "xterm")
    screen = Screen()
    monkeypatch.setattr(sys, "stderr", screen)
    assert main(["mine", smi, "-s", "20%"]) == 0
    lines = screen.getvalue()
    assert "\x1b[3" not in lines  # no colour; the passing line is taken away
    assert "size 1: 9 patterns, " in lines
    assert "size 3: 54 candidates, 21 patterns, " in lines
    assert "size 9: 1 candidate" in lines
    quiet = Screen()
    monkeypatch.setattr(sys, "stderr", quiet)
    assert main(["mine", smi, "-s", "20%", "-q"]) == 0
    assert "size" not in quiet.getvalue()


def test_the_rate_of_a_size(monkeypatch):
    monkeypatch.setenv("TERM", "xterm")
    screen = Screen()
    monkeypatch.setattr(sys, "stderr", screen)
    times = iter([0.0, 2.0, 2.0, 4.0, 4.0, 4.1, 4.1])
    show = mine.Levels(Terminal(), lambda: next(times))
    show(kestro.Progress(1, "complete", 8, 8, 0))
    show(kestro.Progress(3, "complete", 1, 1, 50))
    show(kestro.Progress(4, "complete", 1, 1, 50))
    assert screen.getvalue().splitlines() == [
        "size 1: 8 patterns, 2.0 s, 4/s",
        "size 3: 50 candidates, 1 pattern, 4.0 s, 25/s",
        "size 4: 50 candidates, 1 pattern, 4.1 s",
    ]


def test_colours(monkeypatch):
    monkeypatch.setenv("TERM", "xterm")
    monkeypatch.delenv("NO_COLOR", raising=False)
    screen = Screen()
    monkeypatch.setattr(sys, "stderr", screen)
    assert main(["mine", "nowhere", "-s", "1"]) == 3
    assert (
        "\x1b[31merror\x1b[0m: cannot read nowhere: no such file" in screen.getvalue()
    )


def test_interrupted(examples, monkeypatch, capsys):
    def stopped(db, **arguments):
        raise KeyboardInterrupt

    monkeypatch.setattr(kestro, "mine", stopped)
    assert main(["mine", str(examples / "molecules.txt"), "-s", "9"]) == 130
    assert "interrupted" in capsys.readouterr().err


@pytest.mark.parametrize("first", [True, False])
def test_interrupted_while_writing(first, smi, tmp_path, monkeypatch, capsys):
    of_writing = mine._write

    def written(result, form, *where):
        if form == "csv":
            signal.raise_signal(signal.SIGINT)
        of_writing(result, form, *where)

    if first:  # as after a Ctrl-C during the run
        monkeypatch.setattr(kestro.Result, "stopped_by", "interrupt")
    monkeypatch.setattr(mine, "_write", written)
    before = signal.getsignal(signal.SIGINT)
    argv = ["mine", smi, "-s", "50%", "-o", str(tmp_path), "-f", "jsonl,csv,parquet"]
    assert main(argv) == 130
    assert signal.getsignal(signal.SIGINT) is before
    names = {file.suffix for file in tmp_path.iterdir()}
    err = capsys.readouterr().err
    if first:
        assert names == {".jsonl", ".csv", ".parquet"}
        assert "stopped by interrupt" in err and "not written" not in err
    else:
        assert names == {".jsonl"}
        assert "warning: not written: csv, parquet\nerror: interrupted\n" in err


@pytest.mark.parametrize("extension", ["smi", "sdf", "txt"])
def test_an_empty_input_is_told(extension, tmp_path, capsys):
    file = tmp_path / f"a.{extension}"
    file.write_text("")
    assert main(["mine", str(file), "-s", "1"]) == 1
    assert capsys.readouterr().err == "warning: there are no graphs\n"


@pytest.mark.parametrize(
    ("text", "told"),
    [
        ("", "the file is empty ({})"),
        ("\n\n", "the file is empty ({})"),
        ("\nCCO\n", "the row with the names of columns is empty ({}, line 1)"),
    ],
)
def test_a_table_without_columns_is_told(text, told, tmp_path, capsys):
    file = tmp_path / "a.csv"
    file.write_text(text)
    assert main(["mine", str(file), "-s", "1"]) == 3
    assert capsys.readouterr().err == f"error: {told.format(file)}\n"


@pytest.mark.parametrize(("wrong", "is_asked"), [(2, False), (3, True), (9, True)])
def test_another_format_is_asked_for(wrong, is_asked, tmp_path, capsys):
    file = tmp_path / "a.smi"
    file.write_text("CCO\nCCN\n" + "nothing\n" * wrong)
    assert main(["mine", str(file), "-s", "1"]) == 0
    told = "  is this really smi? --from names another format\n"
    assert (told in capsys.readouterr().err) == is_asked


@pytest.mark.parametrize(
    ("argv", "told"),
    [
        (["-s", "1.5"], "-s/--support: '1.5' is no minimum support; write a percent"),
        (
            ["-s", "1", "--min-size", "3", "--max-size", "2"],
            "error: --max-size 2 is less than --min-size 3\n",
        ),
    ],
)
def test_what_is_wrong_with_numbers(argv, told, smi, capsys):
    assert main(["mine", smi, *argv]) == 2
    assert told in capsys.readouterr().err


def test_quiet_keeps_the_output(smi, capsys):
    assert main(["mine", smi, "-s", "50%", "-q"]) == 0
    assert capsys.readouterr().out.startswith("size,id,")
    assert main(["mine", "--help"]) == 0
    told = " ".join(capsys.readouterr().out.split())
    assert "problems alone: neither progress nor what goes well; the output" in told
