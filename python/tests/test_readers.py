"""Readers of files that hold no transactions, and ways back."""

import gzip
import io
import os
import pickle
import random
import sys
import threading

import kestro
import numpy as np
import pandas as pd
import pyarrow as pa
import pytest
from hypothesis import given
from hypothesis import strategies as st


def test_arrow(three):
    table = three.to_arrow()
    assert table.schema.field("vertex_labels").type == pa.list_(pa.string())
    assert table.schema.field("edges").type == pa.list_(pa.list_(pa.int32(), 2))
    assert table.column("edges").to_pylist()[1] == [[0, 1], [1, 2]]
    again = kestro.from_arrow(table)
    assert again.to_transactions() == three.to_transactions()
    assert (again.table, again.classes, again.kind) == (None, None, "graphs")
    stream = kestro.from_arrow(
        pa.RecordBatchReader.from_batches(table.schema, table.to_batches())
    )
    assert stream.to_transactions() == three.to_transactions()


def test_arrow_keeps_what_stands_beside(three):
    db = three
    db.classes = np.array([1, -1, 1])
    db.table = pd.DataFrame({"mass": [1.5, 2.5, 3.5]})
    again = kestro.from_arrow(db.to_arrow())
    assert again.classes.tolist() == [1, -1, 1]
    assert again.table.equals(db.table)
    db.table = pd.DataFrame({"edges": [1, 2, 3]})
    with pytest.raises(ValueError, match="edges"):
        db.to_arrow()


def test_labels_that_are_no_utf8_in_arrow():
    db = kestro.read_transactions(io.BytesIO(b"t # 0\nv 0 \xe9\n"))
    assert kestro.from_arrow(db.to_arrow())[0].vertex_labels == ("\udce9",)


def test_what_is_no_graph_of_arrow():
    good = {"vertex_labels": [["C"]] * 3, "edges": [[]] * 3, "edge_labels": [[]] * 3}
    wrong = [
        {"vertex_labels": [["C"], None, ["C"]]},
        {"vertex_labels": [["C"], [None], ["C"]]},
        {"edges": [[], [[0, 0]], []], "edge_labels": [[], ["s"], []]},
        {"edges": [[], [[0]], []], "edge_labels": [[], ["s"], []]},
        {"edges": [[], [[0, 1]], []], "edge_labels": [[], ["s"], []]},
        {"edges": [[], [[0, 0]], []]},
    ]
    for changed in wrong:
        table = pa.table({**good, **changed})
        with pytest.raises(kestro.KestroError, match="record 1"):
            kestro.from_arrow(table)
        db = kestro.from_arrow(table, on_error="skip")
        assert db.source.tolist() == [0, 2] and [s.record for s in db.skipped] == [1]
    with pytest.raises(kestro.KestroError, match="'edges'"):
        kestro.from_arrow(pa.table({"vertex_labels": [["C"]]}))
    with pytest.raises(TypeError, match="table"):
        kestro.from_arrow([1])


def test_long_labels_and_control_characters_are_copied():
    for label in (b"x" * 1000, b"a\x01b", b"\x7f"):
        db = kestro.read_transactions(io.BytesIO(b"t # 0\nv 0 " + label + b"\n"))
        for again in (pickle.loads(pickle.dumps(db)), db[:], db[[0]]):
            assert again[0].vertex_labels == (label.decode(),)


@pytest.mark.parametrize("reader", ["smiles", "csv", "graphml", "sdf"])
def test_pipes_and_compressed_files(reader, tmp_path):
    from rdkit import Chem

    mol = Chem.MolToMolBlock(Chem.MolFromSmiles("CO")) + "$$$$\n"
    text = {
        "smiles": "CO x\n",
        "csv": "smiles\nCO\n",
        "graphml": "<graphml><graph/></graphml>",
        "sdf": mol,
    }[reader]
    read = getattr(kestro, f"from_{reader}")
    plain = tmp_path / "plain"
    plain.write_text(text)
    expected = read(plain).to_transactions()
    packed = tmp_path / "packed"
    packed.write_bytes(gzip.compress(text.encode()))
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    writer = threading.Thread(target=pipe.write_bytes, args=(packed.read_bytes(),))
    writer.start()
    assert read(pipe).to_transactions() == expected
    writer.join()
    assert read(packed).to_transactions() == expected
    assert read(io.StringIO(text)).to_transactions() == expected
    with open(plain, "rb") as f:
        assert read(f).to_transactions() == expected
    with pytest.raises(kestro.KestroError, match="unpacked"):
        read(io.BytesIO(packed.read_bytes()[:-9]))
    with pytest.raises(FileNotFoundError):
        read(tmp_path / "none")


def random_graphs(count):
    draw = random.Random(13)
    for _ in range(count):
        n = draw.randrange(12)
        pairs = [(a, b) for b in range(n) for a in range(b) if draw.random() < 0.3]
        yield (
            [draw.choice(["C", "N", "é", "x" * 500]) for _ in range(n)],
            pairs,
            [draw.choice("sd:") for _ in pairs],
        )


def test_round_trips_of_1000_random_graphs():
    vertices, edges, labels = zip(*random_graphs(1000), strict=True)
    db = kestro.from_edges(vertices, edges, labels)
    text = db.to_transactions()
    assert [list(g.vertex_labels) for g in db] == list(vertices)
    for again in (
        kestro.read_transactions(io.StringIO(text)),
        kestro.from_networkx(db.to_networkx()),
        kestro.from_arrow(db.to_arrow()),
        pickle.loads(pickle.dumps(db)),
    ):
        assert again.to_transactions() == text


CELLS = st.lists(
    st.lists(st.none() | st.sampled_from(["C", "N", "a b"]), max_size=3) | st.none(),
    max_size=4,
)


@given(CELLS)
def test_any_table_is_read_or_refused(cells):
    table = pa.table(
        {
            "vertex_labels": pa.array(cells, pa.list_(pa.string())),
            "edges": pa.array([[]] * len(cells), pa.list_(pa.list_(pa.int32()))),
            "edge_labels": pa.array([[]] * len(cells), pa.list_(pa.string())),
        }
    )
    db = kestro.from_arrow(table, on_error="skip")
    fine = [c for c in cells if c is not None and not {None, "a b"} & set(c)]
    assert [list(g.vertex_labels) for g in db] == fine
    assert len(db) + len(db.skipped) == len(cells)


@pytest.mark.parametrize(
    ("module", "call"),
    [
        ("rdkit", lambda db: kestro.from_smiles(["C"])),
        ("rdkit", lambda db: kestro.from_rdkit([])),
        ("rdkit", lambda db: kestro.from_csv(io.StringIO("smiles\n"))),
        ("rdkit", lambda db: kestro.from_sdf(io.StringIO(""))),
        ("pyarrow", lambda db: kestro.from_arrow(None)),
        ("pyarrow", lambda db: db.to_arrow()),
    ],
)
def test_missing_extras_are_named(module, call, three, monkeypatch):
    monkeypatch.setitem(sys.modules, module, None)
    extra = {"rdkit": "rdkit", "pyarrow": "arrow"}[module]
    with pytest.raises(ImportError, match=rf"kestro\[{extra}\]"):
        call(three)


@given(
    st.one_of(st.floats(), st.integers(), st.booleans(), st.text(max_size=6), st.none())
)
def test_any_minimum_support_is_taken_or_refused(min_support):
    db = kestro.from_edges([["A"]] * 3, [[]] * 3)
    try:
        least = kestro.mine(db, min_support=min_support).min_support
    except (TypeError, ValueError) as e:
        assert "min_support" in str(e)
    else:
        assert not isinstance(min_support, bool) and least >= 1


@pytest.mark.parametrize(
    ("reader", "source", "text"),
    [
        (kestro.from_smiles, ["C(", "x"], "all 2 .* first, record 0: no SMILES"),
        (kestro.from_smiles, ["x"], "the only record, 0, was skipped: no SMILES"),
        (kestro.from_csv, "smiles,x\nethanol,CCO\nethane,CC\n", "all 2 records"),
        (kestro.from_sdf, "no\n$$$$\nSD file\n$$$$\n", "all 2 .* 'M  END'"),
        (kestro.from_rdkit, [None, None], "all 2 .* record 0: no molecule"),
        (kestro.from_networkx, [1, 2], "all 2 records"),
        (kestro.read_transactions, "t # 0\nv 0\nt # 1\nx\n", "all 2 .* no label"),
        (kestro.read_transactions, "v 0 C\n", "-1, .* in front of all"),
    ],
)
def test_a_warning_where_nothing_is_left(reader, source, text):
    given = io.StringIO(source) if isinstance(source, str) else source
    with pytest.warns(UserWarning, match=text) as caught:
        db = reader(given, on_error="skip")
    assert len(db) == 0 and db.skipped
    assert caught[0].filename == __file__


def test_no_warning_without_records_or_for_a_selection(recwarn):
    assert len(kestro.from_smiles([], on_error="skip")) == 0
    some = kestro.from_smiles(["x", "C"], on_error="skip")
    assert len(some[:0]) == 0
    assert not recwarn
