"""What the commands make stays whole, whatever stands in the input."""

import csv

import kestro
from kestro.tools.__main__ import main
from rdkit import Chem


def test_cells_are_kept_as_they_stand(tmp_path):
    source, target = tmp_path / "a.csv", tmp_path / "b.tsv"
    source.write_text('smiles,n,name,name\nCCO,007,NA,x\nCCN,1e5,"a\tb",\n')
    assert main(["convert", str(source), "-q", "-o", str(target)]) == 0
    rows = list(csv.reader(source.open()))
    assert list(csv.reader(target.open(), delimiter="\t")) == rows
    assert main(["convert", str(target), "-q", "-o", str(source)]) == 0
    assert list(csv.reader(source.open())) == rows


def test_values_do_not_end_a_record(tmp_path):
    source, target = tmp_path / "a.csv", tmp_path / "b.sdf"
    source.write_text('smiles,note\nCCO,"a\n$$$$\n> <evil>\nb"\nCCN,c\n')
    assert main(["convert", str(source), "-q", "-o", str(target)]) == 0
    db = kestro.from_sdf(target)
    assert len(db) == 2 and not db.skipped
    assert list(db.table.columns) == ["title", "note"]
    assert db.table["note"].tolist()[0].split() == ["a", "$$$$", ">", "<evil>", "b"]


def test_hydrogens_of_a_record_stay(tmp_path):
    source, target = tmp_path / "a.sdf", tmp_path / "b.sdf"
    methanol = Chem.AddHs(Chem.MolFromSmiles("CO"))
    source.write_text(Chem.MolToMolBlock(methanol) + "$$$$\n")
    assert main(["convert", str(source), "-q", "-o", str(target)]) == 0
    again = Chem.MolFromMolBlock(target.read_text().split("$$$$")[0], removeHs=False)
    assert again.GetNumAtoms() == 6


def test_of_another_data_set_nothing_is_left(tmp_path):
    with_classes, without = tmp_path / "a.csv", tmp_path / "b.csv"
    with_classes.write_text("smiles,y\nCCO,1\nCCN,2\nCCC,1\n")
    without.write_text("smiles\nCCO\nCCN\n")
    folder = str(tmp_path / "tu")
    convert = ["convert", "-q", "--to", "tu", "-o", folder]
    assert main([*convert, str(with_classes), "--class-column", "y"]) == 0
    assert kestro.from_tu(folder).classes.tolist() == [1, 2, 1]
    assert main([*convert, str(without)]) == 0
    db = kestro.from_tu(folder)
    assert len(db) == 2 and db.classes is None


def test_a_link_stays_one(tmp_path):
    source, target = tmp_path / "a.smi", tmp_path / "b.csv"
    source.write_text("CCO\n")
    target.write_text("before")
    (tmp_path / "link.csv").symlink_to(target)
    link = str(tmp_path / "link.csv")
    assert main(["convert", str(source), "-q", "-o", link]) == 0
    assert (tmp_path / "link.csv").is_symlink()
    assert target.read_text() == "smiles,name\nCCO,\n"


def test_labels_that_are_not_utf_8(tmp_path, capfdbinary):
    source = tmp_path / "a.txt"
    source.write_bytes(b"t # 0\nv 0 \xff\nv 1 1\nu 0 1 2\n")
    assert main(["mine", str(source), "-s", "1", "-q"]) == 0
    assert b"v 1 \xff" in capfdbinary.readouterr().out
    forms = ["files", "csv", "parquet", "jsonl"]
    out = tmp_path / "out"
    of = ["mine", str(source), "-s", "1", "-q", "-o", str(out), "-f", ",".join(forms)]
    assert main(of) == 0
    assert b"v 1 \xff" in (out / "a.csv").read_bytes()
    assert b"v 1 \xff" in (out / "a.fp").read_bytes()


def test_one_format_that_fails_takes_no_other_along(tmp_path, monkeypatch, capsys):
    source, out = tmp_path / "a.smi", tmp_path / "out"
    source.write_text("CCO\nCCN\n")

    def fail(*args, **settings):
        raise kestro.KestroError("no page of these")

    monkeypatch.setattr(kestro.Result, "report", fail)
    of = ["mine", str(source), "-s", "1", "-q", "-o", str(out), "-f", "html,csv"]
    assert main(of) == 4
    assert "html: no page of these" in capsys.readouterr().err
    assert (out / "a.csv").read_text().startswith("size,id,support")


def test_what_was_not_foreseen_is_not_nothing_found(monkeypatch, tmp_path, capsys):
    def fail(*args, **settings):
        raise ZeroDivisionError

    monkeypatch.setattr(kestro, "mine", fail)
    (tmp_path / "a.smi").write_text("CCO\n")
    assert main(["mine", str(tmp_path / "a.smi"), "-s", "1"]) == 70
    assert "ZeroDivisionError" in capsys.readouterr().err


def test_that_patterns_are_undecided_is_told(examples, tmp_path, capsys):
    source = str(examples / "molecules.txt")
    of = ["mine", source, "-s", "20%", "--maximal", "--max-size", "4"]
    assert main([*of, "-o", str(tmp_path), "-f", "csv"]) == 0
    assert "undecided" in capsys.readouterr().err
    assert main([*of[:-2], "-o", str(tmp_path), "-f", "csv"]) == 0
    assert "undecided" not in capsys.readouterr().err
