"""What is said of files that have another format, or another extension."""

import gzip

import kestro
import pytest
from kestro.tools import _formats
from kestro.tools.__main__ import main
from kestro.tools._transaction_check import problems

TRANSACTIONS = "t # 0\nv 0 C\nv 1 O\nu 0 1 s\nt # 1\nv 0 C\n"
CSV = "name,smiles\nethanol,CCO\nmethanol,CO\n"


@pytest.fixture
def folder(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    return tmp_path


@pytest.mark.parametrize(
    ("name", "form"),
    [
        ("a.SMI", "smi"),
        ("a.SMI.GZ", "smi"),
        ("a.csv.Gz", "csv"),
        ("a.Sdf", "sdf"),
        ("a.GRAPHML.gz", "graphml"),
        ("a.Parquet", "parquet"),
        ("a.TXT.GZ", "transactions"),
        ("a.gz", "transactions"),
    ],
)
def test_extensions_may_be_capitals(name, form):
    assert _formats.format_of(name, None) == form


def test_files_whose_extensions_are_capitals(folder, capsys):
    (folder / "A.TSV.GZ").write_bytes(gzip.compress(CSV.replace(",", "\t").encode()))
    assert main(["convert", "A.TSV.GZ", "-o", "B.CSV"]) == 0
    assert (folder / "B.CSV").read_text() == "smiles,name\nCCO,ethanol\nCO,methanol\n"
    assert main(["convert", "A.TSV.GZ", "-o", "B.CSV.GZ"]) == 2
    assert main(["mine", "A.TSV.GZ", "-s", "2", "-o", "."]) == 0
    (folder / "A.FP.GZ").write_bytes(gzip.compress((folder / "A.fp").read_bytes()))
    assert kestro.read_result("A.FP.GZ")[0].tids.tolist() == [0, 1]
    assert capsys.readouterr().err == (
        "error: outputs are not compressed; pipe them through gzip; see --help\n"
    )


@pytest.mark.parametrize("command", [["mine", "-s", "1"], ["convert"], ["suggest"]])
@pytest.mark.parametrize("strict", [[], ["--strict"]])
@pytest.mark.parametrize(
    ("name", "of"),
    [
        ("a.mol2", "the extension .mol2 tells"),
        ("a.txt", "the extension .txt tells"),
        ("a", "no extension tells"),
    ],
)
def test_what_is_read_as_transactions_and_is_none(
    command, strict, name, of, folder, capsys
):
    (folder / name).write_text(CSV)
    assert main([*command, *strict, name]) == 3
    out, err = capsys.readouterr()
    assert (out, err) == (
        "",
        "error: no transaction file: no line begins a graph, as 't # 0' does; "
        f"{of} no other format, --from does: smi, sdf, csv, tu, graphml, parquet "
        f"({name})\n",
    )


def test_what_is_told_to_be_transactions_and_is_none(folder, capsys):
    (folder / "a.csv").write_text(CSV)
    assert main(["convert", "--from", "transactions", "a.csv"]) == 3
    assert capsys.readouterr().err == (
        "error: no transaction file: no line begins a graph, as 't # 0' does (a.csv)\n"
    )


def test_transactions_with_a_fault_are_transactions(folder, capsys):
    (folder / "a.lg").write_text(f"{TRANSACTIONS}v 1\n")
    assert main(["convert", "a.lg"]) == 0
    assert capsys.readouterr().err == (
        "warning: a.lg: 1 graph read, 1 record skipped (record 0 is the first)\n"
        "  1x the vertex has no label: 'v 1' (line 3 of it) (record 1)\n"
    )
    assert main(["convert", "--strict", "a.lg"]) == 3
    assert "the vertex has no label: 'v 1' (a.lg, line 7)" in capsys.readouterr().err


@pytest.mark.parametrize(
    ("name", "told"),
    [
        ("a.csv", "convert --from csv a.csv"),
        ("my a.SMI", "convert --from smi 'my a.SMI'"),
        ("a.txt", "convert --from FORMAT a.txt"),
    ],
)
def test_check_of_another_format_is_one_message(name, told, folder, capsys):
    (folder / name).write_text(CSV * 60)
    assert main(["check", name]) == 3
    out, err = capsys.readouterr()
    assert out == "" and len(err.splitlines()) == 1
    assert "no transaction file" in err
    assert f"kestro-tools {told} -o graphs.txt" in err


@pytest.mark.parametrize(
    ("text", "options", "told"),
    [
        (
            "id,SMILES\n1,CCO\n",
            [],
            "no column is named 'smiles'; there are 'id', 'SMILES'; "
            "--smiles-column names the one with the SMILES (a.csv, line 1)\n",
        ),
        (
            "id;smiles\n1;CCO\n",
            [],
            "there are 'id;smiles'; --smiles-column names the one with the SMILES, "
            "--delimiter ';' what is between (a.csv, line 1)\n",
        ),
        ("a,b\n1,CCO\n", ["--smiles-column", "c"], "no column is named 'c'"),
        ("smiles,smiles\nCO,C\n", [], "2 columns are named 'smiles'"),
    ],
)
def test_a_table_without_the_column(text, options, told, folder, capsys):
    (folder / "a.csv").write_text(text)
    assert main(["convert", "a.csv", *options]) == 3
    assert told in capsys.readouterr().err


def test_what_is_in_front_of_all_graphs_is_no_record(folder, capsys):
    (folder / "a.txt").write_text(f"v 0 C\n{TRANSACTIONS}t # 2\nv 0\n")
    assert main(["convert", "a.txt"]) == 0
    err = capsys.readouterr().err
    assert "(in front of the first graph)\n" in err and "-1" not in err
    assert "(record 2)\n" in err


def test_reasons_that_differ_are_examples(folder, capsys):
    lines = ["CC(C)(C)(C)C", "CCC(C)(C)(C)C", "CO", "?", "?"]
    (folder / "a.smi").write_text("\n".join(lines))
    assert main(["convert", "a.smi"]) == 0
    err = capsys.readouterr().err.splitlines()
    assert err[0].endswith("4 records skipped (record 0 is the first)")
    assert err[1] == (
        "  2x e.g. no molecule: Explicit valence for atom # 1 C, 5, is greater than "
        "permitted (record 0, 1)"
    )
    assert err[2] == "  2x no SMILES that can be parsed: '?' (record 3, 4)"


@pytest.mark.parametrize("blank", [b"\r", b" "])
def test_many_blanks(blank):
    # Quadratic work would be 10^12 steps.
    many = blank * 10**6
    data = b"t" + many + b"\nv 0 C" + many + b"\nt # 1\nv 0 C\rx" + many + b"\n"
    lone, merged = (p for p in problems(data) if p.kind == "warning")
    assert (lone.line, lone.column) == (4, 6)
    assert lone.text == "a carriage return that ends no line"
    assert merged.text.startswith("2 vertex labels are read as one, 'C'")


@pytest.mark.parametrize(
    ("name", "options", "told"),
    [
        ("a.smi", ["--vertex-label", "x"], "--vertex-label is for graphml, tu, not"),
        ("a.smi", ["--edge-label", "x"], "--edge-label is for graphml, tu, not for"),
        ("a.smi", ["--smiles-column", "smiles"], "--smiles-column is for csv, not"),
        ("a.smi", ["--delimiter", ","], "--delimiter is for csv, not for smi"),
        ("a.smi", ["--class-column", "y"], "is for csv, sdf, parquet, not for smi"),
        ("a.txt", ["--charge"], "--charge is for smi, sdf, csv, not for transactions"),
        ("a.txt", ["--hydrogens"], "--hydrogens is for smi, sdf, csv, not for"),
        ("a.csv", ["--vertex-label", ""], "--vertex-label is for graphml, tu, not"),
        ("tu", ["--class-column", "y"], "--class-column is for csv, sdf, parquet"),
        ("a.graphml", ["--delimiter", ";"], "--delimiter is for csv, not for graphml"),
    ],
)
@pytest.mark.parametrize("command", [["mine", "-s", "1"], ["convert"], ["suggest"]])
def test_options_that_do_not_fit_the_format(
    command, name, options, told, folder, capsys
):
    (folder / "tu").mkdir()
    assert main([*command, name, *options]) == 2
    assert told in capsys.readouterr().err


def test_options_that_fit_the_format(folder):
    (folder / "a.csv").write_text("s;y\nCCO;1\n")
    of_csv = ["--smiles-column", "s", "--delimiter", ";", "--class-column", "y"]
    assert main(["convert", "a.csv", *of_csv, "--charge", "-o", "tu/"]) == 0
    of_labels = ["--vertex-label", "x", "--edge-label", "y"]
    assert main(["convert", "tu", *of_labels, "-o", "a.parquet"]) == 0
    assert main(["convert", "a.parquet", "--class-column", "y", "-o", "a.txt"]) == 3
