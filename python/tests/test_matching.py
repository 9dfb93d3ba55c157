"""Patterns in other graphs: transform and embeddings."""

import io
import itertools
import math
import os
import pickle
import re
import signal
import threading

import kestro
import networkx as nx
import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from networkx.algorithms.isomorphism import GraphMatcher, categorical_node_match

SAME = categorical_node_match("label", None)


def monomorphisms(pattern, graph):
    """Per vertex of the pattern the graph's, by NetworkX."""
    own = pattern.to_networkx()
    matcher = GraphMatcher(
        graph.to_networkx(), own, node_match=SAME, edge_match=SAME
    ).subgraph_monomorphisms_iter()
    for mapping in matcher:
        back = {v: k for k, v in mapping.items()}
        yield tuple(back[i] for i in range(len(own)))


def expected_matrix(result, db):
    return [
        [int(any(True for _ in monomorphisms(p.graph, g))) for p in result] for g in db
    ]


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


@pytest.mark.parametrize("n_jobs", [None, 1, 2, -1])
def test_on_the_graphs_mined(result, molecules, n_jobs):
    matrix = result.transform(molecules, n_jobs=n_jobs)
    expected = result.incidence()
    assert matrix.format == "csr" and matrix.dtype == expected.dtype == np.uint8
    assert matrix.shape == expected.shape == (60, 114)
    assert (matrix != expected).nnz == 0
    assert matrix.indices.dtype == matrix.indptr.dtype == np.int32


def test_held_out_graphs(molecules):
    result = kestro.mine(molecules[::2], min_support="20%", max_size=4)
    other = molecules[1::2][:8]
    assert result.transform(other).toarray().tolist() == expected_matrix(result, other)


def test_selections(result, molecules):
    dense = result.transform(molecules).toarray()
    for key in (
        slice(None, None, -1),
        result.size >= 7,
        [5, 3, 5, 110],
        [],
    ):
        chosen = result[key]
        found = chosen.transform(molecules, n_jobs=2)
        assert found.shape == (60, len(chosen))
        assert found.toarray().tolist() == dense[:, key].tolist()
        again = pickle.loads(pickle.dumps(chosen)).transform(molecules)
        assert (again != found).nnz == 0


@pytest.mark.parametrize("maximal", [False, True])
def test_filtered_results(molecules, maximal):
    result = kestro.mine(molecules, min_support="20%", closed=True, maximal=maximal)
    assert (result.transform(molecules) != result.incidence()).nnz == 0
    large = kestro.mine(molecules, min_support="20%", min_size=6)
    assert (large.transform(molecules) != large.incidence()).nnz == 0


def test_labels_never_seen(three):
    result = kestro.mine(three, min_support=1)
    other = kestro.from_edges(
        [["Zz", "O", "A"], ["C", "O", "Zz"], ["C", "O"], [], ["O"]],
        [
            [(0, 1, "d"), (1, 2, "s")],
            [(0, 1, "d"), (1, 2, "zz")],
            [(0, 1, "zz")],
            [],
            [],
        ],
    )
    found = result.transform(other).toarray()
    double = [p.graph.edge_labels for p in result].index(("d",))
    assert found.sum() == 1 and found[1, double] == 1
    assert result.transform(other[:0]).shape == (0, 4)
    nothing = kestro.mine(other[[3]], min_support=1)
    assert nothing.transform(three).shape == (3, 0)


@pytest.mark.parametrize(
    ("labels", "edge", "words"),
    [
        ("68", "d", r"a vertex in the patterns (C, O) is in the graphs (6, 8):"),
        ("CO", "2", "an edge in the patterns (d, s) is in the graphs (2):"),
    ],
)
def test_labels_that_never_meet(three, labels, edge, words):
    result = kestro.mine(three, min_support=1)
    other = kestro.from_edges([labels], [[(0, 1, edge)]])
    with pytest.warns(UserWarning, match=re.escape(words)) as told:
        assert not result.transform(other).toarray().any()
    assert [w.filename for w in told] == [__file__]
    # Many labels are not all listed, and no label breaks the stream that shows it.
    named = ["\udce9", *(f"a{i}" for i in range(9))]
    many = kestro.from_edges([named], [[(i, i + 1, "d") for i in range(9)]])
    with pytest.warns(UserWarning, match=r"\(a0, a1, a2, a3, a4, \.\.\.\)"):
        result.transform(many)
    with pytest.warns(UserWarning, match=r"\(\\xe9\)"):
        result.transform(kestro.from_edges([["\udce9"]], [[]]))


@pytest.mark.filterwarnings("error")
def test_labels_that_meet_or_mean_the_same(three):
    result = kestro.mine(three, min_support=1)
    result.transform(kestro.from_edges([["C"], [], ["6"]], [[], [], []]))
    result.transform(kestro.from_edges([[]], [[]]))
    # Rare elements and bonds are no mistake.
    result = kestro.mine(kestro.from_smiles(["CCO"]), min_support=1)
    assert not result.transform(kestro.from_smiles(["II", "C#C"])).toarray().any()
    # One label is enough, though only another pattern has it.
    chosen = result[[p.id for p in result if p.graph.vertex_labels == ("C", "C")]]
    graphs = kestro.from_edges([["O", "O"], ["C"]], [[(0, 1, "-")], []])
    assert len(chosen) == 1 and not chosen.transform(graphs).toarray().any()
    with pytest.warns(UserWarning, match=r"patterns \(C\) is in the graphs \(O\)"):
        chosen.transform(graphs[:1])


def test_arguments_that_make_no_sense(result, three):
    with pytest.raises(TypeError, match="GraphDatabase"):
        result.transform([three])
    with pytest.raises(ValueError, match="n_jobs"):
        result.transform(three, n_jobs=0)


@st.composite
def databases(draw, most):
    """Graphs of up to five vertices with two labels of each kind."""
    graphs = []
    for _ in range(draw(st.integers(1, most))):
        vertices = draw(st.lists(st.sampled_from("AB"), min_size=1, max_size=5))
        pairs = list(itertools.combinations(range(len(vertices)), 2))
        chosen = (
            draw(st.lists(st.sampled_from(pairs), unique=True, max_size=6))
            if pairs
            else []
        )
        graphs.append(
            (vertices, [(a, b, draw(st.sampled_from("xy"))) for a, b in chosen])
        )
    return kestro.from_edges([g[0] for g in graphs], [g[1] for g in graphs])


@given(databases(3), databases(2))
@settings(max_examples=60)
@pytest.mark.filterwarnings("ignore:no label of")
def test_random_graphs(mined, other):
    result = kestro.mine(mined, min_support=1, max_size=4)
    assert (result.transform(mined) != result.incidence()).nnz == 0
    some = result[::3]
    assert some.transform(other).toarray().tolist() == expected_matrix(some, other)
    for p in some[:3]:
        found = result.embeddings(p, other[0])
        assert found.shape == (len(found), len(p.graph.vertex_labels))
        expected = sorted(monomorphisms(p.graph, other[0]))
        assert sorted(map(tuple, found.tolist())) == expected


def test_embeddings(result, molecules):
    p = result["9-0"]
    tid = int(p.tids[0])
    found = result.embeddings(p, tid)
    assert found.dtype == np.int32 and found.shape[1] == 9 and len(found) > 0
    for other in (result.embeddings("9-0", tid), result.embeddings(-1, molecules[tid])):
        assert other.tolist() == found.tolist()
    g = molecules[tid].to_networkx()
    for row in found.tolist():
        assert len(set(row)) == len(row)
        for (a, b), label in zip(
            p.graph.edges.tolist(), p.graph.edge_labels, strict=True
        ):
            assert g.edges[row[a], row[b]]["label"] == label
    outside = next(i for i in range(60) if i not in p.tids)
    assert result.embeddings(p, outside).shape == (0, 9)


def test_a_limit_of_embeddings():
    star = kestro.from_edges([["A"] + ["B"] * 6], [[(0, i, "x") for i in range(1, 7)]])
    result = kestro.mine(star, min_support=1)
    assert len(result.embeddings("3-0", 0)) == 6 * 5 * 4
    assert len(result.embeddings("6-0", 0)) == math.factorial(6)
    for limit in (0, 1, 5, 720, 721):
        found = result.embeddings("6-0", 0, limit=limit)
        assert found.shape == (min(limit, 720), 7)


@pytest.mark.usefixtures("uncollected")
def test_ctrl_c_ends_a_list_of_embeddings():
    """Eleven leaves in themselves: 40 million rows, were it not for the signal."""
    star = kestro.from_edges(
        [["A"] + ["B"] * 11], [[(0, i, "x") for i in range(1, 12)]]
    )
    result = kestro.mine(star, min_support=1)
    timer = threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        result.embeddings("11-0", 0)
    timer.join()
    assert len(result.embeddings("11-0", 0, limit=7)) == 7


def test_embeddings_that_make_no_sense(result, three):
    for graph in (60, -61):
        with pytest.raises(IndexError, match="graph"):
            result.embeddings(0, graph)
    for graph in (None, "x", nx.Graph(), True):
        with pytest.raises(TypeError, match="graph"):
            result.embeddings(0, graph)
    with pytest.raises(kestro.KestroError, match="another run"):
        result.embeddings(kestro.mine(three, min_support=1)[0], 0)
    with pytest.raises(KeyError):
        result.embeddings("99-0", 0)
    with pytest.raises(IndexError, match="pattern"):
        result.embeddings(114, 0)
    with pytest.raises(ValueError, match="limit"):
        result.embeddings(0, 0, limit=-1)


@pytest.mark.parametrize("label", [b"\x01", b"x" * 1010, b"a\x7f", b"\xff"])
def test_labels_that_files_alone_can_hold(label):
    text = b"t # 0\nv 0 " + label + b"\nv 1 B\nu 0 1 s\n"
    db = kestro.read_transactions(io.BytesIO(text + text.replace(b"# 0", b"# 1")))
    result = kestro.mine(db, min_support=2)
    assert result.transform(db).toarray().tolist() == [[1], [1]]
    for graph in (0, db[0], db[1]):
        assert result.embeddings(0, graph).tolist() in ([[0, 1]], [[1, 0]])


def test_graphs_that_are_none(result):
    graph = kestro.Graph(("C", "C"), np.array([[0, 5]], np.int32), ("s",))
    with pytest.raises(kestro.KestroError, match=r"vertex|vertices"):
        result.embeddings(0, graph)


SMILES = ["C[NH3+]", "CC[NH3+]", "CN"]


def test_labels_that_mean_something_else(tmp_path):
    """With charges N is another label, which silently matches less."""
    charged = kestro.from_smiles(SMILES, charge=True)
    plain = kestro.from_smiles(SMILES)
    result = kestro.mine(charged, min_support=2)
    with pytest.raises(kestro.KestroError, match="read with charge=True, not False"):
        result.transform(plain)
    result.to_jsonl(tmp_path / "p.jsonl")
    for db in (plain, kestro.from_smiles(SMILES, charge=True, hydrogens=True)):
        with pytest.raises(kestro.KestroError, match="read with"):
            kestro.read_result(tmp_path / "p.jsonl", db)
    assert kestro.read_result(tmp_path / "p.jsonl", charged)[0].to_smarts()
    # A file of graphs does not tell what its labels are.
    charged.to_transactions(tmp_path / "t")
    graphs = kestro.read_transactions(tmp_path / "t")
    assert (result.transform(graphs) != result.incidence()).nnz == 0
    again = kestro.mine(graphs, min_support=2)
    assert (again.transform(charged) != again.incidence()).nnz == 0
    assert kestro.read_result(tmp_path / "p.jsonl", graphs)[0].to_smarts()


def test_what_is_no_database_to_look_in(result):
    with pytest.raises(TypeError, match="not list; from_smiles and the other readers"):
        result.transform(["CCO"])
