"""Molecules in tables."""

import csv
import io

import kestro
import pytest
from hypothesis import given
from hypothesis import strategies as st


def test_tables(tmp_path):
    text = (
        'name,smiles,mass\r\n"a, b",CCO,46\r\nx,C(C,1\r\ny,C\r\n\r\nz,,3\r\nw,O,18\r\n'
    )
    file = tmp_path / "a.csv"
    file.write_bytes(b"\xef\xbb\xbf" + text.encode())
    db = kestro.from_csv(file, on_error="skip")
    assert db.source.tolist() == [0, 5]
    assert [s.record for s in db.skipped] == [1, 2, 3, 4]
    assert [s.reason.split()[0] for s in db.skipped] == ["no", "a", "an", "no"]
    assert db.table.to_dict("list") == {"name": ["a, b", "w"], "mass": [46.0, 18.0]}
    assert db[[1]].table["name"].tolist() == ["w"]
    with pytest.raises(kestro.KestroError, match="record 1: no SMILES"):
        kestro.from_csv(file)
    with pytest.raises(kestro.KestroError, match="'SMILES'"):
        kestro.from_csv(file, smiles_column="SMILES")
    with pytest.raises(kestro.KestroError, match="the file is empty"):
        kestro.from_csv(io.StringIO(""))
    latin = kestro.from_csv(io.BytesIO(b"smiles;n\nC;\xe9\n"), delimiter=";")
    assert latin.table["n"].tolist() == ["\\xe9"]


@given(st.text(alphabet='smiles,C"\n\r1 ', max_size=40))
def test_any_table_of_molecules_is_read_or_refused(text):
    try:
        db = kestro.from_csv(io.StringIO("smiles,x\n" + text), on_error="skip")
    except kestro.KestroError:
        return
    assert len(db.table) == len(db)


@pytest.mark.parametrize(
    ("row", "reason"),
    [
        ('1,"CO', "wrong quotes"),
        ('"1,CO', "wrong quotes"),
        ('1,"CO"x', "wrong quotes"),
        ('1,"CO\nCC"', "white space"),
        ("1,CO methanol", "white space"),
    ],
)
def test_no_molecule_is_lost_by_quotes_and_names(row, reason):
    for record in range(3):
        rows = ["0,C", "2,N"]
        rows.insert(record, row)
        text = "id,smiles\n" + "\n".join(rows) + "\n"
        wrong = f"record {record}: .*{reason}"
        with pytest.raises(kestro.KestroError, match=wrong) as caught:
            kestro.from_csv(io.StringIO(text))
        assert caught.value.line == record + 2
        db = kestro.from_csv(io.StringIO(text), on_error="skip")
        assert [s.record for s in db.skipped] == [record]
        assert [g.vertex_labels for g in db] == [("C",), ("N",)]
        assert db.table["id"].tolist() == [0, 2]


def test_quotes_that_are_right():
    text = 'smiles,note\n"CCO","a ""b""\nc"\nCC |^1:0|,d\n'
    db = kestro.from_csv(io.StringIO(text))
    assert db.table["note"].tolist() == ['a "b"\nc', "d"]


def test_cells_of_any_length():
    usual = csv.field_size_limit()
    text = f"smiles,note\nCCO,{'x' * 200_000}\n{'C' * 200_000}(,y\nCN,z\n"
    db = kestro.from_csv(io.StringIO(text), on_error="skip")
    assert db.source.tolist() == [0, 2]
    assert db.table["note"].str.len().tolist() == [200_000, 1]
    assert csv.field_size_limit() == usual


def test_blank_lines_at_the_end():
    db = kestro.from_csv(io.StringIO("smiles\nC\n\n \r\n"))
    assert len(db) == 1
    with pytest.raises(kestro.KestroError, match="record 0: an empty row"):
        kestro.from_csv(io.StringIO("smiles\n\nC\n"))


def test_what_is_skipped_does_not_change_types():
    text = "smiles,y,flag\nCCO,1,True\nC(C,x,maybe\nCC\nCN,2,False\n"
    table = kestro.from_csv(io.StringIO(text), on_error="skip").table
    assert [str(t) for t in table.dtypes] == ["int64", "bool"]
    assert table["y"].tolist() == [1, 2] and table["flag"].tolist() == [True, False]
    table = kestro.from_csv(io.StringIO("smiles,y\n(,1\n"), on_error="skip").table
    assert list(table.columns) == ["y"] and len(table) == 0


def test_names_that_look_like_missing_numbers():
    text = "smiles,name,y,flag\nC,NA,NA,True\nN,None,1.5,\nO,,2,NA\nO,Na,3,True\n"
    table = kestro.from_csv(io.StringIO(text)).table
    assert table["name"].tolist()[:2] == ["NA", "None"]
    alone = kestro.from_csv(io.StringIO("smiles,name\nC,NA\nN,\n")).table
    assert alone["name"].isna().all()
    assert table["name"].isna().tolist() == [False, False, True, False]
    assert table["y"].isna().tolist() == [True, False, False, False]
    assert table["flag"].isna().tolist() == [False, True, True, False]


def test_an_error_tells_file_and_line(tmp_path):
    file = tmp_path / "a.csv"
    file.write_text('smiles,n\nC,"a\nb"\nx,c\n')
    with pytest.raises(kestro.KestroError, match="record 1: no SMILES") as caught:
        kestro.from_csv(file)
    assert (caught.value.path, caught.value.line) == (str(file), 4)
