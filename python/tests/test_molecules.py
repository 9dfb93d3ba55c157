"""Molecules from SMILES."""

import gzip

import kestro
import pytest

pytest.importorskip("rdkit")

from rdkit import Chem  # noqa: E402


def test_labels():
    db = kestro.from_smiles(["CC(=O)O", "c1cc[se]c1", "C#N", "[Na+].[Cl-]"])
    assert db.kind == "molecules"
    assert db[0].lines() == "v 0 C\nv 1 C\nv 2 O\nv 3 O\nu 0 1 -\nu 1 2 =\nu 1 3 -\n"
    assert db[1].vertex_labels == ("c", "c", "c", "se", "c")
    assert set(db[1].edge_labels) == {":"}
    assert db[2].edge_labels == ("#",)
    assert db[3].vertex_labels == ("Na", "Cl") and len(db[3].edges) == 0
    assert repr(db) == "<GraphDatabase: 4 molecules>"


def test_charges_and_hydrogens():
    ion = "[NH3+]CC(=O)[O-]"
    charged = kestro.from_smiles([ion, "[Ca+2]"], charge=True)
    assert charged[0].vertex_labels == ("N+1", "C", "C", "O", "O-1")
    assert charged[1].vertex_labels == ("Ca+2",)
    full = kestro.from_smiles([ion, "C"], hydrogens=True)
    assert full[0].vertex_labels.count("H") == 5
    assert full[1].vertex_labels == ("C", "H", "H", "H", "H")
    assert kestro.from_smiles(["[2H]C"])[0].vertex_labels == ("H", "C")


@pytest.mark.parametrize(
    ("smiles", "reason"),
    [
        ("", "no SMILES"),
        ("  ", "no SMILES"),
        ("C(C", "parsed"),
        ("C(C)(C)(C)(C)C", "valence"),
        ("c1cccc1", "kekulize"),
        ("N->[Cu]", "dative"),
        ("[Re]$[Re]", "quadruple"),
        (None, "a SMILES is a str"),
    ],
)
def test_what_is_no_molecule(smiles, reason, capfd):
    with pytest.raises(kestro.KestroError, match=f"(?i)record 1: .*{reason}"):
        kestro.from_smiles(["C", smiles, "CC"])
    db = kestro.from_smiles(["C", smiles, "CC"], on_error="skip")
    assert db.source.tolist() == [0, 2] and db.skipped[0].record == 1
    assert capfd.readouterr().err == ""


def test_chirality_is_refused():
    with pytest.raises(ValueError, match="chirality"):
        kestro.from_smiles(["C"], chirality=True)


def test_files(tmp_path):
    text = "CCO ethanol\r\n\nC\tmethane gas\nx\n"
    file = tmp_path / "a.smi"
    file.write_bytes(text.encode())
    packed = tmp_path / "a.smi.gz"
    packed.write_bytes(gzip.compress(text.encode()))
    for source in (file, str(file), packed):
        db = kestro.from_smiles(source, on_error="skip")
        assert [len(g.vertex_labels) for g in db] == [3, 1]
        assert db.source.tolist() == [0, 2]
        assert [s.record for s in db.skipped] == [1, 3]
    with pytest.raises(FileNotFoundError):
        kestro.from_smiles("CCO")


@pytest.fixture(scope="module")
def smiles(examples):
    lines = (examples / "molecules.smi").read_text().splitlines()
    return [line.split("\t")[0] for line in lines if not line.startswith("#")]


def test_benzene_is_mined(smiles):
    result = kestro.mine(kestro.from_smiles(smiles), min_support="20%", closed=True)
    ring = Chem.MolFromSmarts("c1ccccc1")
    expected = [
        i
        for i, s in enumerate(smiles)
        if Chem.MolFromSmiles(s).HasSubstructMatch(ring)
    ]
    found = [
        p.tids.tolist()
        for p in result
        if p.graph.vertex_labels == ("c",) * 6 and p.size == 6
    ]
    assert found == [expected] and len(expected) > 20
