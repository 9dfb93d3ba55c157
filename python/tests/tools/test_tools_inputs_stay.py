"""What a command reads is never replaced by what it writes."""

import os
import subprocess
import sys

import kestro
import pytest
from kestro.tools.__main__ import main


@pytest.fixture
def folder(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "a.csv").write_text("smiles\nCCO\nCCN\n")
    (tmp_path / "a.smi").write_text("CCO\nCCN\n")
    (tmp_path / "linked.csv").symlink_to("a.csv")
    result = kestro.mine(kestro.from_smiles(tmp_path / "a.smi"), min_support=2)
    result.write(tmp_path, "n")
    result.to_jsonl(tmp_path / "n.jsonl")
    db = kestro.from_edges([["C", "O"]], [[(0, 1, "s")]])
    (tmp_path / "t.txt").write_text(f"t # 0\n{db[0].lines()}")
    assert main(["convert", "t.txt", "--to", "tu", "-o", "TU"]) == 0
    return tmp_path


@pytest.mark.parametrize(
    ("line", "named"),
    [
        ("mine a.csv -s 1 -o . -f csv", "a.csv"),
        ("mine a.csv -s 1 -o . -f files,jsonl,csv", "a.csv"),
        ("mine linked.csv -s 1 -o . -f csv", "a.csv"),
        ("mine n.fp -s 1 -o .", "n.fp"),
        ("match n.jsonl a.smi -o a.smi", "a.smi"),
        ("match n.jsonl a.smi -o n.jsonl", "n.jsonl"),
        ("match n.fp a.smi -o n.tid", "n.tid"),
        ("report n.fp a.smi -o n.pc", "n.pc"),
        ("report n.jsonl a.smi -o a.smi", "a.smi"),
        ("report n.jsonl a.smi -o n.jsonl", "n.jsonl"),
        ("convert a.csv -o linked.csv", "linked.csv"),
        ("convert linked.csv -o a.csv", "a.csv"),
        ("convert TU -o TU/TU_A.txt", "TU/TU_A.txt"),
    ],
)
def test_an_input_is_not_replaced(line, named, folder, capsys):
    files = [x for x in folder.rglob("*") if x.is_file()]
    before = {file: file.read_bytes() for file in files}
    assert main(line.split()) == 2
    text = f"error: {named} is the input, which would be replaced; name another -o\n"
    assert capsys.readouterr().err == text
    assert {x: x.read_bytes() for x in folder.rglob("*") if x.is_file()} == before


def test_standard_input_is_not_replaced(folder):
    done = subprocess.run(
        [
            "bash",
            "-c",
            f"{sys.executable} -m kestro.tools convert - --from csv -o a.csv",
        ],
        stdin=(folder / "a.csv").open(),
        env={**os.environ, "PYTHONPATH": os.path.dirname(kestro.__path__[0])},
        capture_output=True,
        text=True,
    )
    assert done.returncode == 2
    assert "a.csv is the input" in done.stderr


@pytest.mark.parametrize(
    "line",
    [
        "mine a.csv -s 1 -o out -f csv",
        "convert a.csv -o /dev/null --to smi",
        "match n.jsonl a.smi -o matched.csv",
        "report n.jsonl a.smi -o page.html",
    ],
)
def test_other_files_are_written_twice(line, folder):
    assert main(line.split()) == 0
    assert main(line.split()) == 0
