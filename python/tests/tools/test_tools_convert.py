"""The frame of the command, and convert."""

import gzip
import io
import os
import subprocess
import sys

import kestro
import pytest
from kestro.tools.__main__ import main
from rdkit import Chem

COMMAND = (sys.executable, "-m", "kestro.tools")
SMILES = "CCO ethanol\nC1CC\nC[N+](C)(C)C\tcholine part\n[nH]1cccc1\n"


@pytest.fixture
def smi(tmp_path):
    file = tmp_path / "a.smi"
    file.write_text(SMILES)
    return file


def text(path):
    return kestro.read_transactions(path).to_transactions()


def test_help_and_version(capsys):
    assert main(["--help"]) == 0
    assert "kestro-tools convert" in capsys.readouterr().out
    assert main(["--version"]) == 0
    assert capsys.readouterr().out.startswith("kestro-tools ")


@pytest.mark.parametrize(
    ("argv", "code", "told"),
    [
        ([], 2, "COMMAND"),
        (["dig"], 2, "dig"),
        (["convert", "-"], 2, "--from"),
        (["convert", "nowhere.smi"], 3, "nowhere.smi"),
        (["convert", "{txt}", "--to", "smi"], 2, "no molecules"),
        (["convert", "{smi}", "--strict"], 3, "line 2"),
        (["convert", "{smi}", "--to", "parquet"], 2, "--output"),
        (["convert", "{smi}", "-o", "{smi}/x"], 4, "cannot write"),
        (["convert", "{smi}", "-o", "x.txt.gz"], 2, "compressed"),
        (["convert", "{txt}", "--charge"], 2, "--charge"),
        (["convert", "{csv}", "--class-column", "y"], 3, "column 'y'"),
    ],
)
def test_exit_codes(argv, code, told, smi, tmp_path, three_text, capsys):
    txt = tmp_path / "three.txt"
    txt.write_text(three_text)
    csv = tmp_path / "a.csv"
    csv.write_text("smiles\nCCO\n")
    assert main([x.format(smi=smi, txt=txt, csv=csv) for x in argv]) == code
    assert told in capsys.readouterr().err


def test_what_is_skipped_is_told(smi, capsys):
    assert main(["convert", str(smi)]) == 0
    out, err = capsys.readouterr()
    assert "3 molecules read, 1 record skipped" in err
    assert "1x no SMILES that can be parsed: 'C1CC' (record 1)" in err
    assert "\x1b" not in err
    assert len(kestro.read_transactions(io.StringIO(out))) == 3


def test_nothing_and_nothing_readable(tmp_path, capsys):
    empty, broken = tmp_path / "e.smi", tmp_path / "b.smi"
    empty.write_text("")
    broken.write_text("?\n")
    assert main(["convert", str(empty)]) == 1
    assert main(["convert", str(broken)]) == 3


@pytest.mark.parametrize("name", ["a.graphml", "a.parquet", "a.tu/", "a.txt"])
def test_forms_of_graphs(name, three, three_text, tmp_path):
    first, other, back = tmp_path / "in.txt", tmp_path / name, tmp_path / "back.txt"
    first.write_text(three_text)
    to = f"{other}/" if name.endswith("/") else str(other)
    assert main(["convert", str(first), "-o", to]) == 0
    assert main(["convert", to, "-o", str(back)]) == 0
    if not name.endswith("/"):
        assert back.read_text() == three_text
        return
    readme = (other / "README.txt").read_text()
    assert "0 C" in readme and "1 O" in readme
    numbers = three_text.replace(" C", " 0").replace(" O", " 1")
    assert back.read_text() == numbers.replace(" d", " 0").replace(" s", " 1")


@pytest.mark.parametrize("name", ["b.smi", "b.csv", "b.sdf"])
def test_forms_of_molecules(name, smi, tmp_path):
    other, first, back = (tmp_path / x for x in (name, "1.txt", "2.txt"))
    assert main(["convert", str(smi), "-o", str(other)]) == 0
    assert "choline part" in other.read_text()
    for source, target in ((smi, first), (other, back)):
        done = main(["convert", str(source), "--charge", "-o", str(target)])
        assert done == 0
    assert text(back) == text(first)
    assert "N+1" in text(back)


def test_columns_and_classes(tmp_path, capsys):
    file = tmp_path / "a.csv"
    file.write_text("smiles,y,note\nCCO,1,a\nCO,,b\nCN,0,c\n")
    arguments = ["--class-column", "y", "-o"]
    assert main(["convert", str(file), *arguments, str(tmp_path / "tu/")]) == 0
    assert "its class is missing" in capsys.readouterr().err
    assert main(["convert", str(file), *arguments, str(tmp_path / "t") + "/"]) == 0
    assert "no place for columns" in capsys.readouterr().err
    db = kestro.from_tu(tmp_path / "t")
    assert [float(x) for x in db.classes] == [1, 0]


def test_standard_input(three_text):
    done = subprocess.run(
        [*COMMAND, "convert", "-", "--from", "transactions"],
        input=gzip.compress(three_text.encode()),
        capture_output=True,
        check=True,
    )
    assert (done.stdout.decode(), done.stderr) == (three_text, b"")


def test_output_that_fails(smi):
    command = [*COMMAND, "convert", str(smi), "-q"]
    with open("/dev/full", "w") as full:
        done = subprocess.run(command, stdout=full, stderr=subprocess.PIPE, text=True)
    assert done.returncode == 4
    assert "cannot write" in done.stderr
    assert "Traceback" not in done.stderr


def test_a_device_is_written_to_and_stays(smi, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    reader = subprocess.Popen(["cat", pipe], stdout=subprocess.PIPE)
    assert main(["convert", str(smi), "-q", "-o", str(pipe)]) == 0
    if not pipe.is_fifo():
        reader.kill()  # who waits for a writer that will not come
    assert reader.communicate()[0].startswith(b"t # 0")


def held(folder):
    return {path.name: path.read_text() for path in folder.iterdir()}


@pytest.mark.parametrize(
    ("files", "named"),
    [
        ({"data_notes.txt": "mine", "README.txt": "precious"}, "README.txt"),
        ({"data_A.txt": "1, 2"}, "data_A.txt"),
        ({"data_node_attributes.txt": "0.5"}, "data_node_attributes.txt"),
        ({"data_graph_labels.txt.gz": "1"}, "data_graph_labels.txt.gz"),
        ({"other_A.txt": "1, 2"}, "other_A.txt"),
    ],
)
def test_a_folder_with_files_of_others_stays(files, named, smi, tmp_path, capsys):
    folder = tmp_path / "data"
    folder.mkdir()
    for name, text in files.items():
        (folder / name).write_text(text)
    assert main(["convert", str(smi), "-o", str(folder)]) == 4
    assert f"cannot write {folder}: {named} would" in capsys.readouterr().err
    assert held(folder) == files


def test_a_folder_is_written_once_more(smi, tmp_path, capsys):
    folder, table = tmp_path / "[data]", tmp_path / "a.csv"
    table.write_text("smiles,y\nCCO,1\nCO,0\n")
    folder.mkdir()
    (folder / "[data]_notes.txt").write_text("mine")
    assert main(["convert", str(smi), "-o", str(folder)]) == 0
    first = held(folder)
    assert len(first) == 6 and first["[data]_notes.txt"] == "mine"
    of_table = ["convert", str(table), "-o", str(folder), "--class-column", "y"]
    assert main(of_table) == 0
    second = held(folder)
    assert second["[data]_graph_labels.txt"] == "1\n0\n"
    assert second["[data]_notes.txt"] == "mine"
    # Without classes it would be read with those of before.
    assert main(["convert", str(smi), "-o", str(folder)]) == 4
    assert "[data]_graph_labels.txt" in capsys.readouterr().err
    assert held(folder) == second


def record(title, items):
    molecule = Chem.MolFromSmiles("CCO")
    molecule.SetProp("_Name", title)
    data = "".join(f"> <{name}>\n{value}\n\n" for name, value in items.items())
    return f"{Chem.MolToMolBlock(molecule)}{data}$$$$\n"


def test_a_data_item_called_title_is_no_name(tmp_path):
    file, other, names = (tmp_path / x for x in ("a.sdf", "b.sdf", "b.smi"))
    file.write_text(record("ethanol", {"title": "a paper"}) + record("spirit", {}))
    assert main(["convert", str(file), "-o", str(other)]) == 0
    molfiles = [x.split("\n") for x in other.read_text().split("$$$$\n")]
    assert [x[0] for x in molfiles[:-1]] == ["ethanol", "spirit"]
    assert other.read_text().count("> <title>\na paper\n\n") == 1
    assert other.read_text().count("title") == 1
    assert main(["convert", str(file), "-o", str(names)]) == 0
    assert names.read_text() == "CCO\tethanol\nCCO\tspirit\n"
    assert kestro.from_sdf(file).table["title"].tolist() == ["a paper", "spirit"]


def convert(source, text, *argv):
    source.write_text(text)
    return main(["convert", str(source), *map(str, argv)])


@pytest.mark.parametrize(
    ("table", "smiles", "warning"),
    [
        ("smiles,title\nCCO,pure  ethanol\nCO,\n", "CCO\tpure ethanol\nCO\n", ""),
        ("name,smiles\nethanol,CCO\n", "CCO\tethanol\n", ""),
        ("smiles,title,name\nCCO,b,a\n", "CCO\ta\n", "columns 'title'"),
        ("smiles,id\nCCO,7\n", "CCO\n", "columns 'id'"),
    ],
)
def test_names_in_a_table(table, smiles, warning, tmp_path, capsys):
    to = tmp_path / "a.smi"
    assert convert(tmp_path / "a.csv", table, "-o", to) == 0
    told = f"warning: smi has no place for {warning}\n" if warning else ""
    assert (to.read_text(), capsys.readouterr().err) == (smiles, told)
    to = tmp_path / "a.sdf"
    assert convert(tmp_path / "a.csv", table, "-o", to) == 0
    name = smiles.split("\n")[0].partition("\t")[2]
    assert to.read_text().startswith(f"{name}\n")


@pytest.mark.parametrize("name", ["a.txt", "a.graphml", "a.parquet", "tu/"])
def test_names_that_are_lost_are_told(name, tmp_path, capsys):
    to = f"{tmp_path}/{name}"
    assert convert(tmp_path / "a.smi", "CCO ethanol\nCO\n", "-o", to) == 0
    assert "has no place for names\n" in capsys.readouterr().err
    assert convert(tmp_path / "b.smi", "CCO\nCO \n? x\n", "-o", to) == 0
    assert "no place" not in capsys.readouterr().err


@pytest.mark.parametrize("name", ["b.csv", "b.sdf"])
def test_names_that_are_kept_are_not_told(name, tmp_path, capsys):
    to = tmp_path / name
    assert convert(tmp_path / "a.smi", "CCO ethanol\nCO\n", "-o", to) == 0
    assert "ethanol" in to.read_text()
    assert capsys.readouterr().err == ""


def test_titles_and_items_that_are_lost_are_told(tmp_path, capsys):
    text = record("ethanol", {"title": "a paper"})
    for name, told in (
        ("b.smi", "columns 'title'"),
        ("b.csv", "names"),
        ("b.txt", "names and columns 'title'"),
    ):
        assert convert(tmp_path / "a.sdf", text, "-o", tmp_path / name) == 0
        assert f"no place for {told}\n" in capsys.readouterr().err


@pytest.mark.parametrize(
    ("name", "text", "argv"),
    [
        ("a.csv", "s,smiles\nCCO,CO\n", ["--smiles-column", "s"]),
        ("a.sdf", record("ethanol", {"smiles": "OCC"}), []),
    ],
)
def test_a_column_with_a_name_in_use(name, text, argv, tmp_path, capsys):
    to = tmp_path / "b.csv"
    assert convert(tmp_path / name, text, *argv, "-o", to) == 3
    assert "a column has a name in use: 'smiles'" in capsys.readouterr().err
    assert not to.exists()
