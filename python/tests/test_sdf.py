"""Molecules in SD files."""

import io

import kestro
import pytest
from hypothesis import given
from hypothesis import strategies as st
from rdkit import Chem


def sd_record(smiles, items=""):
    return Chem.MolToMolBlock(Chem.MolFromSmiles(smiles)) + items + "$$$$\n"


def test_sd_files():
    items = ">  <mass>  (1)\n46\n\n> <note>\ntwo\nlines\n\n"
    text = sd_record("CCO", items) + "broken\n$$$$\n" + sd_record("C") + "\n"
    nitrogen = sd_record("NC").replace(" N ", " Xx")
    for end in ("\n", "\r\n"):
        source = io.StringIO((text + nitrogen).replace("\n", end))
        db = kestro.from_sdf(source, on_error="skip")
        assert [g.vertex_labels for g in db] == [("C", "C", "O"), ("C",)]
        assert db.source.tolist() == [0, 2]
        assert [s.record for s in db.skipped] == [1, 3]
        assert db.table["mass"].tolist()[0] == "46"
        assert db.table["note"].tolist()[0] == "two\nlines"
        assert db.table["mass"].isna().tolist() == [False, True]
    with pytest.raises(kestro.KestroError, match="record 1"):
        kestro.from_sdf(io.StringIO(text))


ITEM = "> <A>\n1\n\n"


@pytest.mark.parametrize(
    ("between", "reason"),
    [
        (ITEM, "2 molfiles in a record"),
        ("> <A>\n1\n", "2 molfiles in a record"),
        ("", "2 molfiles in a record"),
        ("> <A>\n1\n\nmore\n\n$$$$\n", "no data item: 'more'"),
    ],
)
def test_no_molecule_and_no_value_is_lost(between, reason):
    text = sd_record("CCO") + sd_record("CC").replace("$$$$\n", between)
    text += sd_record("CN") + sd_record("C")
    with pytest.raises(kestro.KestroError, match=f"record 1: .*{reason}"):
        kestro.from_sdf(io.StringIO(text))
    db = kestro.from_sdf(io.StringIO(text), on_error="skip")
    assert [s.record for s in db.skipped] == [1]
    assert db[0].vertex_labels == ("C", "C", "O")
    assert db[len(db) - 1].vertex_labels == ("C",)


def test_items_that_are_repeated_or_lack_their_end():
    items = "> <A>\n1\n\n> <A>\n2\n\n> <B>\n>sp|P1|X\nMK\n> <C>\nx\n> 12\ny\n"
    db = kestro.from_sdf(io.StringIO(sd_record("C", items)))
    assert db.table.iloc[0].to_dict() == {
        "title": "",
        "A": "1\n2",
        "B": ">sp|P1|X\nMK",
        "C": "x\n> 12\ny",
    }


def test_an_error_tells_file_and_line(tmp_path):
    file = tmp_path / "a.sdf"
    file.write_text(sd_record("C") + "broken\n$$$$\n")
    with pytest.raises(kestro.KestroError, match="record 1: ") as caught:
        kestro.from_sdf(file)
    line = sd_record("C").count("\n") + 1
    assert (caught.value.path, caught.value.line) == (str(file), line)


def test_bytes_that_are_no_utf8():
    data = ("\xe9" + sd_record("C", "> <\xe9>\n\xe9\n\n")).encode("latin-1")
    table = kestro.from_sdf(io.BytesIO(data)).table
    assert table.to_dict("list") == {"title": ["\\xe9"], "\\xe9": ["\\xe9"]}


NAMES = st.text(st.characters(min_codepoint=33, max_codepoint=126), min_size=1).filter(
    lambda name: not set("<>") & set(name) and name != "title"
)
VALUES = st.lists(
    st.text("ab1 .<", min_size=1).filter(str.strip), min_size=1, max_size=3
).map("\n".join)
RECORDS = st.lists(
    st.tuples(
        st.sampled_from(["C", "CCO", "c1ccccc1", "[NH4+]", None]),
        st.dictionaries(NAMES, VALUES, max_size=3),
    ),
    max_size=5,
)


@given(RECORDS, st.sampled_from(["\n", "\r\n"]), st.booleans())
def test_records_with_items_are_read_whole(records, end, blank):
    text = ""
    for smiles, items in records:
        data = "".join(f">  <{name}>\n{value}\n\n" for name, value in items.items())
        text += sd_record(smiles, data) if smiles else f"broken\n{data}$$$$\n"
    text += "\n" * blank
    db = kestro.from_sdf(io.StringIO(text.replace("\n", end)), on_error="skip")
    fine = [i for i, (smiles, _) in enumerate(records) if smiles]
    assert db.source.tolist() == fine
    assert len(db) + len(db.skipped) == len(records)
    expected = kestro.from_smiles([records[i][0] for i in fine])
    for g, h in zip(db, expected, strict=True):
        assert sorted(g.vertex_labels) == sorted(h.vertex_labels)
        assert sorted(g.edge_labels) == sorted(h.edge_labels)
    for i, row in zip(fine, db.table.to_dict("records"), strict=True):
        found = {k: v for k, v in row.items() if isinstance(v, str) and k != "title"}
        assert found == records[i][1]


@given(st.text(alphabet="$M END\n1C", max_size=40))
def test_any_sd_file_is_read_or_refused(text):
    db = kestro.from_sdf(io.StringIO(text), on_error="skip")
    ends = sum(line.startswith("$$$$") for line in text.split("\n"))
    assert ends <= len(db) + len(db.skipped) <= ends + 1
