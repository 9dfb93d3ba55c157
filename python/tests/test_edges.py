"""Graphs from lists, arrays and NetworkX."""

import kestro
import networkx as nx
import numpy as np
import pandas as pd
import pytest


def test_arrays():
    db = kestro.from_edges(
        [np.array([6, 8, 6])],
        [np.array([[1, 0], [1, 2]])],
        [np.array(["s", "d"])],
    )
    assert db[0].vertex_labels == ("6", "8", "6")
    assert db[0].edges.tolist() == [[0, 1], [1, 2]]
    assert db[0].edge_labels == ("s", "d")
    triples = kestro.from_edges([[6, 8]], [np.array([[0, 1, 2]])])
    assert triples[0].edge_labels == ("2",)


@pytest.mark.parametrize(
    ("vertices", "edges", "reason"),
    [
        (["C"], [(0, 0, "s")], "itself|loop"),
        (["C", "C"], [(0, 1, "s"), (1, 0, "s")], "edge"),
        (["C", "C"], [(0, 2, "s")], "edge 0: there is no vertex 2, only 2"),
        (["C", "C"], [(0, -1, "s")], "edge 0: there is no vertex -1"),
        (["C", "C"], [(0, 1, "s"), (2**40, 1, "s")], f"edge 1: .* vertex {2**40}"),
        (["C", "C"], [(0, 2**70, "s")], "an end beyond all vertices"),
        (["C", "C"], [3], "an edge has two ends and a label, not 3"),
        (["C", "C"], None, "no sequence of edges: None"),
        (None, [], "no sequence of vertex labels: None"),
        (["C", pd.NA], [], "a label is missing"),
        (["C", pd.NaT], [], "a label is missing"),
        (["C", np.array([1, 2])], [], "a label is a str or an int, not array"),
        (["C", "C"], [(0, 1)], "label"),
        (["C", "C"], [(0, 1.0, "s")], "number of a vertex"),
        (["C", "C"], [(False, True, "s")], "number of a vertex"),
        (["C", None], [], "missing"),
        (["C", float("nan")], [], "missing"),
        (["C", 1.5], [], "str or an int"),
        (["C", True], [], "str or an int"),
        (["C", b"C"], [], "str or an int"),
        (["C", ""], [], "label"),
        (["C", "a b"], [], "label"),
        (["C", "a\0b"], [], "label"),
        (["C", "x" * 999], [], "label"),
        (["C", "\ud800"], [], "text"),
        (["C", "C"], [(0, 1, None)], "missing"),
    ],
)
def test_what_is_no_graph(vertices, edges, reason):
    arguments = [["A"], vertices, ["B"]], [[], edges, []]
    with pytest.raises(kestro.KestroError, match=rf"record 1: .*({reason})"):
        kestro.from_edges(*arguments)
    db = kestro.from_edges(*arguments, on_error="skip")
    assert [g.vertex_labels for g in db] == [("A",), ("B",)]
    assert db.source.tolist() == [0, 2]
    assert [s.record for s in db.skipped] == [1]


def test_columns_that_do_not_match():
    with pytest.raises(kestro.KestroError, match="1 edges, 2 edge labels"):
        kestro.from_edges([["C", "C"]], [[(0, 1)]], [["s", "d"]])
    ends = "vertex_labels ends before graph 1, which edges has"
    with pytest.raises(ValueError, match=ends):
        kestro.from_edges([["C"]], [[], []])
    ends = "edges and edge_labels ends before graph 1, which vertex_labels has"
    with pytest.raises(ValueError, match=ends):
        kestro.from_edges([["C"], ["C"]], iter([[]]), [[]])


def test_networkx():
    g = nx.Graph()
    g.add_node("x", label="C", mass=12)
    g.add_node("y", label="O", mass=16)
    g.add_edge("y", "x", label="d", order=2)
    db = kestro.from_networkx([g])
    assert db[0].lines() == "v 0 C\nv 1 O\nu 0 1 d\n"
    other = kestro.from_networkx([g], vertex_label="mass", edge_label="order")
    assert other[0].lines() == "v 0 12\nv 1 16\nu 0 1 2\n"
    [back] = db.to_networkx()
    assert nx.utils.graphs_equal(
        back,
        nx.relabel_nodes(db[0].to_networkx(), {0: 0, 1: 1}),
    )
    assert back.nodes[1] == {"label": "O"} and back.edges[0, 1] == {"label": "d"}


def test_what_networkx_has_that_is_no_graph():
    fine = nx.Graph()
    fine.add_node(0, label="A")
    directed = nx.DiGraph()
    parallel = nx.MultiGraph()
    parallel.add_nodes_from([0, 1], label="A")
    parallel.add_edges_from([(0, 1), (0, 1)], label="s")
    loop = nx.Graph()
    loop.add_node(0, label="A")
    loop.add_edge(0, 0, label="s")
    unlabelled = nx.path_graph(2)
    half = nx.Graph()
    half.add_nodes_from([0, 1], label="A")
    half.add_edge(0, 1)
    wrong = [directed, parallel, loop, unlabelled, half, None]
    for g in wrong:
        with pytest.raises(kestro.KestroError, match="record 0"):
            kestro.from_networkx([g])
    db = kestro.from_networkx([*wrong, fine], on_error="skip")
    assert len(db) == 1 and db.source.tolist() == [6]
    assert [s.record for s in db.skipped] == [0, 1, 2, 3, 4, 5]
    reasons = " ".join(s.reason for s in db.skipped)
    assert "directed" in reasons and "no attribute 'label'" in reasons
    assert db.skipped[5].reason == "no graph of NetworkX's: None"


def test_one_graph_of_networkx_instead_of_several():
    for wrong in (nx.path_graph(2), nx.DiGraph(), 5, None):
        with pytest.raises(TypeError, match="an iterable of graphs"):
            kestro.from_networkx(wrong, on_error="skip")
