"""Readers of files that hold no transactions, and ways back."""

import gzip
import io
import os
import pickle
import random
import sys
import threading

import kestro
import networkx as nx
import numpy as np
import pandas as pd
import pyarrow as pa
import pytest
from hypothesis import given
from hypothesis import strategies as st

GRAPHML = """<?xml version="1.0"?>
<graphml xmlns="http://graphml.graphdrawing.org/xmlns">
<key id="v" for="node" attr.name="label" attr.type="string"/>
<key id="e" for="edge" attr.name="label" attr.type="string">
<default>s</default></key>
<graph edgedefault="undirected"><node id="a"><data key="v">C</data></node>
<node id="b"><data key="v"> O </data></node>
<edge source="b" target="a"><data key="e">d</data></edge></graph>
<graph edgedefault="undirected">{}</graph>
<graph edgedefault="undirected"><node id="a"><data key="v">N</data></node></graph>
</graphml>
"""
NODE = '<node id="{}"><data key="v">C</data></node>'
TWO = NODE.format("x") + NODE.format("y")


def graphml(middle, **arguments):
    return kestro.from_graphml(io.StringIO(GRAPHML.format(middle)), **arguments)


def test_graphml():
    db = graphml(TWO + '<edge source="x" target="y"/>')
    assert [g.lines() for g in db] == [
        "v 0 C\nv 1 O\nu 0 1 d\n",
        "v 0 C\nv 1 C\nu 0 1 s\n",
        "v 0 N\n",
    ]


@pytest.mark.parametrize(
    ("middle", "reason"),
    [
        (TWO + '<edge source="x" target="x"/>', "itself"),
        (TWO + '<edge source="x" target="y"/>' * 2, "edge already"),
        (TWO + '<edge source="x" target="z"/>', "no node 'z'"),
        (TWO + '<edge source="x" target="y" directed="true"/>', "directed"),
        (TWO + "<hyperedge/>", "hyperedge"),
        (NODE.format("x") * 2, "two nodes"),
        ('<node id="x"/>', "no attribute 'label'"),
        ('<node id="x"><data key="v"/></node>', "empty"),
        ('<node id="x"><data key="v">a b</data></node>', "blank"),
        ('<node id="x"><graph/></node>', "holds a graph"),
    ],
)
def test_what_is_no_graph_of_graphml(middle, reason):
    with pytest.raises(kestro.KestroError, match=f"record 1: .*{reason}"):
        graphml(middle)
    db = graphml(middle, on_error="skip")
    assert db.source.tolist() == [0, 2] and db.skipped[0].record == 1


def test_no_graphml():
    for text, reason in (("<graphml>", "no XML"), ("<a/>", "no GraphML"), ("", "XML")):
        with pytest.raises(kestro.KestroError, match=reason):
            kestro.from_graphml(io.StringIO(text), on_error="skip")


def test_graphml_of_networkx(tmp_path, molecules):
    for i in range(5):
        file = tmp_path / f"{i}.graphml"
        nx.write_graphml(molecules[i].to_networkx(), file)
        assert kestro.from_graphml(file)[0].lines() == molecules[i].lines()


# Graph 1 has an edge in both directions, graph 2 an edge in one.
TU = {
    "A": "1, 2\n2, 1\n3,4\n",
    "graph_indicator": "1\n1\n2\n2\n3\n",
    "node_labels": "6\n8\n6\n7\n1\n",
    "edge_labels": "2\n2\n1\n",
    "graph_labels": "1\n-1\n1\n",
}


def tu(folder, end="\n", packed=False, **changed):
    for kind, text in {**TU, **changed}.items():
        if text is None:
            continue
        data = text.replace("\n", end).encode()
        name = f"SET_{kind}.txt"
        if packed:
            (folder / f"{name}.gz").write_bytes(gzip.compress(data))
        else:
            (folder / name).write_bytes(data)
    return folder


@pytest.mark.parametrize(("end", "packed"), [("\n", False), ("\r\n", False), ("\n", True)])
def test_tu(tmp_path, end, packed):
    db = kestro.from_tu(tu(tmp_path, end, packed))
    assert [g.lines() for g in db] == [
        "v 0 6\nv 1 8\nu 0 1 2\n",
        "v 0 6\nv 1 7\nu 0 1 1\n",
        "v 0 1\n",
    ]
    assert db.classes.tolist() == [1, -1, 1] and db.classes.dtype == np.int64
    assert db[[1]].classes.tolist() == [-1]
    assert pickle.loads(pickle.dumps(db)).classes.tolist() == [1, -1, 1]


def test_tu_without_labels(tmp_path):
    db = kestro.from_tu(
        tu(tmp_path, node_labels=None, edge_labels=None, graph_labels=None),
        vertex_label="x",
    )
    assert db[0].lines() == "v 0 x\nv 1 x\nu 0 1 0\n"
    assert db.classes is None and len(db) == 3


@pytest.mark.parametrize(
    ("changed", "reason"),
    [
        ({"A": "1,2\n2,1\n3,3\n"}, "itself"),
        ({"A": "1,2\n3,4\n3,4\n", "edge_labels": "1\n1\n1\n"}, "one direction"),
        ({"A": "1,2\n3,4\n4,3\n"}, "two labels"),
        ({"node_labels": "6\n8\n6\n\n1\n"}, "missing"),
        ({"edge_labels": "2\n2\n\n"}, "missing"),
        ({"node_labels": "6\n8\n6\na b\n1\n"}, "blank"),
    ],
)
def test_what_is_no_graph_of_a_tu_set(tmp_path, changed, reason):
    folder = tu(tmp_path, **changed)
    with pytest.raises(kestro.KestroError, match=f"record 1: .*{reason}"):
        kestro.from_tu(folder)
    db = kestro.from_tu(folder, on_error="skip")
    assert db.source.tolist() == [0, 2] and db.classes.tolist() == [1, 1]
    assert [s.record for s in db.skipped] == [1]


@pytest.mark.parametrize(
    ("changed", "reason"),
    [
        ({"A": "1;2\n"}, "no edge.*line 1"),
        ({"A": "1,2\n2,x\n"}, "no number.*line 2"),
        ({"A": "1,9\n"}, "no vertex 9"),
        ({"A": "0,1\n"}, "no vertex 0"),
        ({"graph_indicator": "1\n1\n2\n2\n4\n"}, "numbered from 1 to 4"),
        ({"graph_indicator": "1\n1\n2\nx\n3\n"}, "no number.*line 4"),
        ({"node_labels": "6\n"}, "1 labels, where 5"),
        ({"edge_labels": "6\n"}, "1 labels, where 3"),
        ({"A": None}, "one file"),
    ],
)
def test_tu_sets_that_are_broken(tmp_path, changed, reason):
    with pytest.raises(kestro.KestroError, match=f"(?s){reason}"):
        kestro.from_tu(tu(tmp_path, **changed), on_error="skip")


def test_an_edge_between_two_graphs(tmp_path):
    folder = tu(tmp_path, A="1,2\n2,1\n3,5\n")
    db = kestro.from_tu(folder, on_error="skip")
    assert db.source.tolist() == [0]
    assert [s.record for s in db.skipped] == [1, 2]


def test_classes_of_other_kinds(tmp_path):
    (tmp_path / "a").mkdir()
    (tmp_path / "b").mkdir()
    floats = kestro.from_tu(tu(tmp_path / "a", graph_labels="1.5\n2\n3\n"))
    assert floats.classes.tolist() == [1.5, 2.0, 3.0]
    texts = kestro.from_tu(tu(tmp_path / "b", graph_labels="yes\nno\nyes\n"))
    assert texts.classes.tolist() == ["yes", "no", "yes"]


def test_arrow(three):
    table = three.to_arrow()
    assert table.schema.field("vertex_labels").type == pa.list_(pa.string())
    assert table.schema.field("edges").type == pa.list_(pa.list_(pa.int32(), 2))
    assert table.column("edges").to_pylist()[1] == [[0, 1], [1, 2]]
    again = kestro.from_arrow(table)
    assert again.to_transactions() == three.to_transactions()
    assert (again.table, again.classes, again.kind) == (None, None, "graphs")
    stream = kestro.from_arrow(pa.RecordBatchReader.from_batches(table.schema, table.to_batches()))
    assert stream.to_transactions() == three.to_transactions()


def test_arrow_keeps_what_stands_beside(tmp_path):
    db = kestro.from_tu(tu(tmp_path))
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
        "graphml": GRAPHML.format(TWO),
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


@given(st.text(alphabet='<>/"=graphmlnodeedgekeyid sourcetarget', max_size=80))
def test_any_xml_is_read_or_refused(inner):
    text = f"<graphml><graph>{inner}</graph></graphml>"
    try:
        db = kestro.from_graphml(io.StringIO(text), on_error="skip")
    except kestro.KestroError:
        return
    assert len(db) + len(db.skipped) == 1


LINES = st.lists(st.sampled_from(["1", "2", "3", "1,2", "2,1", "2,3", "", "x"]), max_size=5)


@given(LINES, LINES, LINES)
def test_any_tu_set_is_read_or_refused(tmp_path_factory, edges, indicator, labels):
    folder = tmp_path_factory.mktemp("tu")
    for kind, lines in (("A", edges), ("graph_indicator", indicator), ("node_labels", labels)):
        (folder / f"S_{kind}.txt").write_text("".join(line + "\n" for line in lines))
    try:
        db = kestro.from_tu(folder, on_error="skip")
    except kestro.KestroError:
        return
    assert len(db) + len(db.skipped) == max(map(int, indicator), default=0)


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
