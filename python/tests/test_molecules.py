"""Molecules, and SMARTS of their patterns."""

import gzip
import io
import os
import pickle

import kestro
import pytest
from hypothesis import given
from hypothesis import strategies as st
from rdkit import Chem


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
        ("CCO\nCC", "white space"),
        ("CCO ethanol", "white space"),
        ("CC |^1:0|\nC |^1:0|", "white space"),
        ("CC\0O", "parsed"),
        ("C\udce9", "no UTF-8"),
    ],
)
def test_what_is_no_molecule(smiles, reason, capfd):
    with pytest.raises(kestro.KestroError, match=f"(?i)record 1: .*{reason}"):
        kestro.from_smiles(["C", smiles, "CC"])
    db = kestro.from_smiles(["C", smiles, "CC"], on_error="skip")
    assert db.source.tolist() == [0, 2] and db.skipped[0].record == 1
    assert capfd.readouterr().err == ""


def test_white_space_around_a_smiles_and_before_an_extension():
    db = kestro.from_smiles([" CCO\n", "\tCC |$a b;$|"])
    assert [len(g.vertex_labels) for g in db] == [3, 2]


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
    with pytest.raises(FileNotFoundError, match=r"in a list, as \['CCO'\]") as caught:
        kestro.from_smiles("CCO")
    assert caught.value.filename == "CCO"
    for name in ("none.smi", "none/none"):
        with pytest.raises(FileNotFoundError) as caught:
            kestro.from_smiles(name)
        assert "list" not in str(caught.value)
    with pytest.raises(kestro.KestroError, match="record 1: no SMILES") as failed:
        kestro.from_smiles(file)
    assert (failed.value.path, failed.value.line) == (str(file), 2)
    with os.fdopen(os.open(file, os.O_RDONLY), "rb") as opened:
        with pytest.raises(kestro.KestroError, match=r"record 1: .* \(line 2\)$"):
            kestro.from_smiles(opened)


def test_blank_lines_at_the_end_of_a_file():
    assert len(kestro.from_smiles(io.StringIO("CCO\nC\n\n \r\n"))) == 2
    assert len(kestro.from_smiles(io.StringIO("\n\n"))) == 0
    latin = io.BytesIO(b"C\xe9\nC \xe9\n")
    [skipped] = kestro.from_smiles(latin, on_error="skip").skipped
    assert skipped.record == 0 and "no UTF-8" in skipped.reason


@pytest.fixture(scope="module")
def smiles(examples):
    lines = (examples / "molecules.smi").read_text().splitlines()
    return [line.split("\t")[0] for line in lines if not line.startswith("#")]


def test_benzene_is_mined(smiles):
    result = kestro.mine(kestro.from_smiles(smiles), min_support="20%", closed=True)
    ring = Chem.MolFromSmarts("c1ccccc1")
    expected = [
        i for i, s in enumerate(smiles) if Chem.MolFromSmiles(s).HasSubstructMatch(ring)
    ]
    found = [
        p.tids.tolist()
        for p in result
        if p.graph.vertex_labels == ("c",) * 6 and p.size == 6
    ]
    assert found == [expected] and len(expected) > 20


def molecules_with(bond_type, repeats=1):
    molecule = Chem.RWMol(Chem.MolFromSmiles(".".join(["CC"] * repeats)))
    molecule.GetBondWithIdx(0).SetBondType(bond_type)
    return molecule.GetMol()


@pytest.mark.parametrize("name", sorted(Chem.BondType.names))
def test_every_type_of_bond(name):
    small = molecules_with(Chem.BondType.names[name])
    large = molecules_with(Chem.BondType.names[name], 300)  # bond by bond
    label = {"SINGLE": "-", "DOUBLE": "=", "TRIPLE": "#", "AROMATIC": ":"}.get(name)
    for molecule in (small, large):
        if label is None:
            reason = "dative" if name.startswith("DATIVE") else name.lower()
            with pytest.raises(kestro.KestroError, match=reason):
                kestro.from_rdkit([molecule])
        else:
            assert kestro.from_rdkit([molecule])[0].edge_labels[0] == label


def test_bonds_by_matrix_and_one_by_one(smiles, monkeypatch):
    expected = kestro.from_smiles(smiles).to_transactions()
    monkeypatch.setattr("kestro._conversion._MATRIX_ATOMS", -1)
    assert kestro.from_smiles(smiles).to_transactions() == expected


def test_a_matrix_that_rdkit_has_kept():
    molecule = Chem.RWMol(Chem.MolFromSmiles("CC"))
    kestro.from_rdkit([molecule])
    molecule.GetBondWithIdx(0).SetBondType(Chem.BondType.DOUBLE)
    assert kestro.from_rdkit([molecule])[0].edge_labels == ("=",)


def test_what_rdkit_has_that_is_no_molecule():
    wrong = [None, "CCO", Chem.MolFromSmarts("[C,N]"), Chem.MolFromSmarts("C~C")]
    for molecule in wrong:
        with pytest.raises(kestro.KestroError, match="record 0"):
            kestro.from_rdkit([molecule])
    db = kestro.from_rdkit([*wrong, Chem.MolFromSmiles("C")], on_error="skip")
    assert db.source.tolist() == [4] and len(db.skipped) == 4
    assert "query" in db.skipped[2].reason and "query" in db.skipped[3].reason


@pytest.mark.parametrize(
    "way",
    [{}, {"charge": True}, {"hydrogens": True}, {"charge": True, "hydrogens": True}],
    ids=["plain", "charge", "hydrogens", "both"],
)
def test_smarts_match_where_the_pattern_is(smiles, way):
    db = kestro.from_smiles([*smiles, "*c1cc*cc1", "*C", "[2H]C", "[O-]C"], **way)
    result = kestro.mine(db, min_support=2, max_size=4)
    mined = [Chem.MolFromSmiles(smiles_of) for smiles_of in [*smiles, "*c1cc*cc1"]]
    mined += [Chem.MolFromSmiles(x) for x in ("*C", "[2H]C", "[O-]C")]
    if "hydrogens" in way:
        mined = [Chem.AddHs(m) for m in mined]
    for p in result[:: max(1, len(result) // 400)]:
        query = Chem.MolFromSmarts(p.to_smarts())
        found = [i for i, m in enumerate(mined) if m.HasSubstructMatch(query)]
        assert found == p.tids.tolist(), p.to_smarts()
        places = result.embeddings(p, found[0])[:, p.smarts_order()]
        matches = mined[found[0]].GetSubstructMatches(query, uniquify=False)
        assert sorted(places.tolist()) == sorted(map(list, matches)), p.to_smarts()


def test_smarts_text():
    db = kestro.from_smiles(["c1cc[nH]c1", "C[N+](C)=O"], charge=True)
    found = kestro.mine(db, min_support=1).to_pandas()["smarts"]
    assert "[#6&a&+0]:[#7&a&+0]" in set(found) | {
        "".join(x.split(":")[::-1]) for x in found
    }
    assert any("[#7&A&+1]" in x for x in found)
    ring = max(found[found.str.contains("&a")], key=len)
    assert Chem.MolFromSmarts(ring).GetNumBonds() == 5
    again = kestro.mine(
        kestro.from_edges([["C"] * 2] * 2, [[(0, 1, "-")]] * 2), min_support=1
    )
    assert "smarts" not in again.to_pandas()
    with pytest.raises(ValueError, match="mined is none of molecules"):
        again[0].to_smarts()
    with pytest.raises(ValueError, match="mined is none of molecules"):
        again[0].smarts_order()


def test_several_processes(smiles):
    source = [*smiles * 20, "C(C", *smiles]  # more than two chunks
    one = kestro.from_smiles(source, on_error="skip")
    two = kestro.from_smiles(source, on_error="skip", n_jobs=2)
    assert two.to_transactions() == one.to_transactions()
    assert two.source.tolist() == one.source.tolist()
    assert two.skipped == one.skipped and two.skipped[0].record == 20 * len(smiles)
    with pytest.raises(kestro.KestroError, match=f"record {20 * len(smiles)}: "):
        kestro.from_smiles(source, n_jobs=2)


def test_ways_back(smiles):
    for way in ({}, {"charge": True}, {"hydrogens": True}):
        db = kestro.from_smiles([*smiles, "*c1cc*cc1", "[Fe+2]"], **way)
        text = db.to_transactions()
        for again in (kestro.from_arrow(db.to_arrow()), pickle.loads(pickle.dumps(db))):
            assert again.to_transactions() == text
            assert again.atom_labels == db.atom_labels
        assert kestro.from_rdkit(db.to_rdkit(), charge=True).to_transactions() == text
    with pytest.raises(ValueError, match="atoms"):
        kestro.from_edges([["C"]], [[]]).to_rdkit()


@given(st.lists(st.text(alphabet="CNOcn()[]+-=#1*>$~ ", max_size=12), max_size=5))
def test_any_smiles_are_read_or_refused(strings):
    db = kestro.from_smiles(strings, on_error="skip")
    read = [Chem.MolFromSmiles(x) for x in strings]
    for record, g in zip(db.source, db, strict=True):
        assert len(g.vertex_labels) == read[record].GetNumAtoms()
        assert len(g.edges) == read[record].GetNumBonds()
    assert len(db) + len(db.skipped) == len(strings)
