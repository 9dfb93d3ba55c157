"""Reading data sets of the TU collection."""

import gzip
import pickle

import kestro
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

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


@pytest.mark.parametrize(
    ("end", "packed"), [("\n", False), ("\r\n", False), ("\n", True)]
)
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


LINES = st.lists(
    st.sampled_from(["1", "2", "3", "1,2", "2,1", "2,3", "", "x"]), max_size=5
)


@given(LINES, LINES, LINES)
def test_any_tu_set_is_read_or_refused(tmp_path_factory, edges, indicator, labels):
    folder = tmp_path_factory.mktemp("tu")
    for kind, lines in (
        ("A", edges),
        ("graph_indicator", indicator),
        ("node_labels", labels),
    ):
        (folder / f"S_{kind}.txt").write_text("".join(line + "\n" for line in lines))
    try:
        db = kestro.from_tu(folder, on_error="skip")
    except kestro.KestroError:
        return
    assert len(db) + len(db.skipped) == max(
        (int(line) for line in indicator if line), default=0
    )


def test_blank_lines_at_the_end(tmp_path):
    files = {kind: text + "\n \n" for kind, text in TU.items()}
    db = kestro.from_tu(tu(tmp_path, **files))
    assert len(db) == 3 and db.classes.tolist() == [1, -1, 1]


def test_a_label_that_is_missing_at_the_end(tmp_path):
    db = kestro.from_tu(tu(tmp_path, node_labels="6\n8\n6\n7\n\n\n"), on_error="skip")
    assert db.skipped == ((2, "a label is missing"),)


@pytest.mark.parametrize("missing", ["", " ", "nan", "NaN"])
def test_a_class_that_is_missing(tmp_path, missing):
    for lines, record in ((["1", missing, "2"], 1), (["1", "2", missing], 2)):
        folder = tu(tmp_path, graph_labels="".join(line + "\n" for line in lines))
        reason = f"record {record}: its class is missing"
        with pytest.raises(kestro.KestroError, match=reason) as caught:
            kestro.from_tu(folder)
        assert caught.value.path == str(folder)
        db = kestro.from_tu(folder, on_error="skip")
        assert [s.record for s in db.skipped] == [record]
        assert db.classes.tolist() == [1, 2] and db.classes.dtype == np.int64


def test_numbers_beyond_all_vertices_and_classes(tmp_path):
    with pytest.raises(kestro.KestroError, match="no number"):
        kestro.from_tu(tu(tmp_path, graph_indicator=f"1\n1\n2\n2\n{2**70}\n"))
    db = kestro.from_tu(tu(tmp_path, graph_labels=f"1\n2\n{2**70}\n"))
    assert db.classes.tolist() == [1.0, 2.0, float(2**70)]
