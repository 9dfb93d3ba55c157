"""Classes of graphs, and what stands in their place without being classes."""

import kestro
import pyarrow.parquet
import pytest
from kestro.tools.__main__ import main


@pytest.fixture
def measured(tmp_path):
    """A TU data set whose graphs were measured, and a result on it."""
    folder = tmp_path / "ESOL"
    folder.mkdir()
    files = {
        "A": "1, 2\n2, 1\n3, 4\n4, 3\n",
        "graph_indicator": "1\n1\n2\n2\n",
        "graph_labels": "-0.77\n2\n",
    }
    for kind, text in files.items():
        (folder / f"ESOL_{kind}.txt").write_text(text)
    kestro.mine(kestro.from_tu(folder), min_support=2).write(tmp_path, "r")
    return folder


def test_measurements_are_left_out_with_a_warning(measured, tmp_path, capsys):
    page = tmp_path / "page.html"
    for argv in (
        ["mine", str(measured), "-s", "2", "-f", "html,csv", "-o", str(tmp_path)],
        ["report", f"{tmp_path}/r.fp", str(measured), "-o", str(page)],
    ):
        assert main(argv) == 0
        assert capsys.readouterr().err == (
            "warning: the graphs are taken without classes: these are measurements, "
            "such as -0.77\n"
        )
    db = kestro.from_tu(measured)
    db.classes = None
    kestro.read_result(tmp_path / "r.fp", db).report(tmp_path / "expected.html")
    assert page.read_text() == (tmp_path / "expected.html").read_text()


def test_nothing_is_said_where_classes_are_not_compared(measured, tmp_path, capsys):
    assert main(["mine", str(measured), "-s", "2"]) == 0
    assert main(["convert", str(measured), "-o", f"{tmp_path}/copy/"]) == 0
    assert capsys.readouterr().err == ""
    assert kestro.from_tu(tmp_path / "copy").classes.tolist() == [-0.77, 2]


def test_measurements_that_were_asked_for_end_it(tmp_path, capsys):
    file = tmp_path / "a.csv"
    file.write_text("smiles,logp\nCCO,0.5\nCCN,0.25\n")
    of = [str(file), "--class-column", "logp"]
    assert main(["mine", *of, "-s", "1", "-f", "html,jsonl", "-o", str(tmp_path)]) == 3
    err = capsys.readouterr().err
    assert "column 'logp' holds no classes: these are measurements" in err
    assert not (tmp_path / "a.html").exists()
    assert main(["mine", *of, "-s", "1", "-f", "files", "-o", str(tmp_path)]) == 0
    assert main(["report", f"{tmp_path}/a.fp", *of, "-o", f"{tmp_path}/p.html"]) == 3
    err = capsys.readouterr().err
    assert "column 'logp' holds no classes" in err and " y " not in err


@pytest.mark.parametrize(
    ("to", "told"),
    [
        ("tu", ""),
        ("parquet", ""),
        ("csv", ""),
        ("smi", "warning: smi has no place for classes\n"),
        ("graphml", "warning: graphml has no place for classes\n"),
    ],
)
def test_what_becomes_of_a_class_column(to, told, tmp_path, capsys):
    file, target = tmp_path / "a.csv", str(tmp_path / "out")
    file.write_text("smiles,class\nCCO,1\nCCN,0\n")
    argv = ["convert", str(file), "--class-column", "class", "--to", to]
    assert main([*argv, "-o", target]) == 0
    assert capsys.readouterr().err == told
    if to == "tu":
        assert kestro.from_tu(target).classes.tolist() == [1, 0]
    if to == "parquet":
        back = f"{tmp_path}/back/"
        assert main(["convert", target, "--from", "parquet", "-o", back]) == 0
        assert kestro.from_tu(back).classes.tolist() == [1, 0]
    if to == "csv":
        assert (tmp_path / "out").read_text() == file.read_text()


def test_a_column_whose_name_parquet_needs(tmp_path, capsys):
    file = tmp_path / "a.csv"
    file.write_text("smiles,edges\nCCO,1\n")
    assert main(["convert", str(file), "-o", str(tmp_path / "a.parquet")]) == 3
    assert "columns with names in use: ['edges']" in capsys.readouterr().err


def test_columns_stand_beside_graphs_or_molecules(molecules, tmp_path, capsys):
    graphs, table = tmp_path / "a.parquet", tmp_path / "a.csv"
    pyarrow.parquet.write_table(molecules.to_arrow(), graphs)
    table.write_text("smiles,logp\nCCO,0.5\n")
    for source, told in (
        (graphs, "beside the graphs; there are: none"),
        (table, "beside the molecules; there are: 'logp'"),
    ):
        assert main(["mine", str(source), "--class-column", "foo", "-s", "1"]) == 3
        assert f"there is no column 'foo' {told}\n" in capsys.readouterr().err
