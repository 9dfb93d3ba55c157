"""What the commands read from: files, pipes, standard input."""

import os
import subprocess
import sys

import kestro
import pytest
from kestro.tools.__main__ import main

ENVIRONMENT = {**os.environ, "KT": f"{sys.executable} -m kestro.tools"}


def bash(line, folder, **how):
    return subprocess.run(
        ["bash", "-c", line],
        cwd=folder,
        env=ENVIRONMENT | {"PYTHONPATH": os.path.dirname(kestro.__path__[0])},
        capture_output=True,
        text=True,
        **how,
    )


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "a.smi").write_text("CCO one\nCCN two\nCC=O three\n")
    db = kestro.from_smiles(tmp_path / "a.smi")
    result = kestro.mine(db, min_support=2)
    result.write(tmp_path, "a")
    result.to_jsonl(tmp_path / "a.jsonl")
    return tmp_path


@pytest.mark.parametrize("smi", ["<(cat a.smi)", "- < a.smi", "a.smi"])
def test_molecules_are_read_in_two_ways(smi, folder):
    done = bash(f"$KT convert --from smi --to csv {smi}", folder)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout == "smiles,name\nCCO,one\nCCN,two\nCC=O,three\n"


@pytest.mark.parametrize(
    "words",
    [
        "<(cat a.jsonl) <(cat a.smi)",
        "<(cat a.fp) a.smi",
        "- a.smi < a.jsonl",
        "a.jsonl - < a.smi",
    ],
)
def test_results_and_graphs_are_read_from_pipes(words, folder):
    made = bash(f"$KT report {words} --from smi -o page.html", folder)
    assert (made.returncode, made.stderr) == (0, "")
    assert "<title>" in (folder / "page.html").read_text()
    matched = bash(f"$KT match {words} --from smi", folder)
    assert matched.stdout.startswith("graph,record,patterns\n0,0,1\n")


def test_files_made_of_a_pipe_have_a_name(folder):
    done = bash("$KT mine <(cat a.smi) --from smi -s 2 -o out", folder)
    assert (done.returncode, done.stderr) == (0, "")
    names = {file.name for file in (folder / "out").iterdir()}
    assert names == {"patterns.fp", "patterns.tid", "patterns.pc"}


def test_diff_with_standard_input(folder):
    done = bash("$KT diff - a.fp < a.jsonl", folder)
    assert done.returncode == 1
    assert done.stdout.startswith("standard input: 1 pattern, 1 up to isomorphism\n")


@pytest.mark.parametrize("argv", [["diff"], ["match"], ["report", "-o", "page.html"]])
def test_standard_input_is_one_argument(argv, folder, capsys):
    assert main([*argv, "-", "-"]) == 2
    assert "only one argument can be -" in capsys.readouterr().err


@pytest.mark.parametrize(
    "argv",
    [
        ["mine", "", "-s", "1"],
        ["convert", "a.smi", "-o", ""],
        ["diff", "", "a.fp"],
        ["match", "a.fp", ""],
        ["check", ""],
        ["suggest", ""],
    ],
)
def test_an_empty_name_is_no_folder(argv, capsys):
    assert main(argv) == 2
    assert "the name of the file is empty" in capsys.readouterr().err


@pytest.mark.parametrize(
    ("argv", "code", "told"),
    [
        (["mine", "{f}/no.smi", "-s", "1"], 3, "no.smi: no such file or folder\n"),
        (["check", "{f}"], 3, "it is a folder\n"),
        (["convert", "{f}/a.smi", "-o", "{f}/no/x.txt"], 4, "x.txt: no such file"),
        (["convert", "{f}/a.smi", "-o", "{f}/a.smi/x"], 4, "is no folder\n"),
    ],
)
def test_what_the_system_says_is_told_in_words(argv, code, told, folder, capsys):
    assert main([x.format(f=folder) for x in argv]) == code
    err = capsys.readouterr().err
    assert told in err and "Errno" not in err


@pytest.mark.parametrize("name", ["a.csv", "a.tid", "."])
def test_what_is_no_result(name, folder, capsys):
    (folder / "a.csv").write_text("size,id,support\n1,1-0,3\n")
    for argv in (["match", "a.smi"], ["diff", "a.fp"]):
        command, other = argv
        assert main([command, f"{folder}/{name}", f"{folder}/{other}"]) == 3
        err = capsys.readouterr().err
        assert "no result" in err
        assert "the .fp and the .jsonl one can be read" in err


def test_a_result_that_is_not_whole_is_one(folder, capsys):
    whole = (folder / "a.fp").read_text()
    (folder / "half.fp").write_text(whole[: len(whole) // 2])
    assert main(["diff", f"{folder}/half.fp", f"{folder}/a.fp"]) == 3
    assert "no pattern file of a run that ended" in capsys.readouterr().err
