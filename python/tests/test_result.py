"""Results: tables, matrices, selections, pickles."""

import pickle

import kestro
import numpy as np
import pytest


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


def test_table(result):
    table = result.to_pandas()
    assert list(table.columns) == [
        "size",
        "id",
        "support",
        "fraction",
        "vertices",
        "edges",
        "closed",
        "maximal",
    ]
    assert len(table) == len(result) == 114
    row = table[table["id"] == "9-0"].iloc[0]
    assert (row["size"], row["support"], row["vertices"]) == (9, 12, 9)
    assert row["fraction"] == 0.2
    for p, (_, row) in zip(result, table.iterrows(), strict=True):
        assert (p.id, p.size, p.support) == (row["id"], row["size"], row["support"])
        assert (p.closed, p.maximal) == (row["closed"], row["maximal"])
        assert len(p.graph.vertex_labels) == row["vertices"]


def test_incidence(result, molecules):
    matrix = result.incidence()
    assert matrix.shape == (60, 114) and matrix.format == "csr"
    assert matrix.sum(axis=0).tolist() == result.support.tolist()
    dense = matrix.toarray()
    for i, p in enumerate(result):
        assert np.flatnonzero(dense[:, i]).tolist() == p.tids.tolist()
    chosen = result[[5, 3]]
    assert chosen.incidence().toarray().tolist() == dense[:, [5, 3]].tolist()


def test_tids_are_a_view_that_cannot_be_changed(result):
    tids = result[0].tids
    assert tids.base is not None
    with pytest.raises(ValueError, match="read-only"):
        tids[0] = 1


def test_parents_and_children_agree(result):
    for p in result:
        for name in p.children:
            assert p.id in result[name].parents
            assert set(result[name].tids) <= set(p.tids)
        if p.size > 1:
            assert p.parents
            for name in p.parents:
                assert p.id in result[name].children


def test_flags_against_their_definition(result):
    for p in result:
        larger = [result[name] for name in p.children]
        assert p.maximal == (not larger)
        assert p.closed == all(q.support < p.support for q in larger)


def test_selections(result):
    large = result[result.size >= 8]
    assert [p.id for p in large] == ["8-0", "8-1", "8-2", "8-3", "9-0"]
    assert large["9-0"] == result["9-0"] == result[-1]
    assert large[1:3][0].id == "8-1"
    assert large[-1].id == "9-0"
    assert list(large.to_pandas()["id"]) == [p.id for p in large]
    for missing in ("1-0", "9-1", "10-0", "x", "9", "-1-0", "9-0-0"):
        with pytest.raises(KeyError):
            large[missing]
    with pytest.raises(IndexError):
        result[114]
    assert len(result[:0]) == 0 and result[:0].incidence().shape == (60, 0)


def test_pickles(result):
    large = result[result.size >= 5]
    again = pickle.loads(pickle.dumps(large))
    assert again.to_pandas().equals(large.to_pandas())
    assert repr(again) == repr(large)
    assert [repr(p) for p in again] == [repr(p) for p in large]
    assert again.db.to_transactions() == result.db.to_transactions()


def test_labels_outside_of_all_graphs_do_not_shift_the_others():
    import io

    text = "v 0 A\nt # 0\nv 0 B\nv 1 C\nu 0 1 s\n"
    found = kestro.mine(kestro.read_transactions(io.StringIO(text)), min_support=1)
    again = pickle.loads(pickle.dumps(found))
    assert again[0].graph.vertex_labels == ("B", "C")
    assert len(kestro.mine(again.db, min_support=1)) == 1


def test_representations(result):
    assert repr(result) == (
        "<Result: 114 patterns of 1 to 9 edges in at least 12 of 60 graphs>"
    )
    assert repr(result["1-5"]) == "<Pattern 1-5: support 45, C O, 0-1 d>"


def test_patterns_occur_in_exactly_their_graphs(result):
    """Against NetworkX's monomorphisms, which know nothing of mining."""
    from networkx.algorithms.isomorphism import GraphMatcher, categorical_node_match

    same = categorical_node_match("label", None)
    graphs = result.db.to_networkx()
    for p in result[::7]:
        pattern = p.graph.to_networkx()
        found = [
            tid
            for tid, g in enumerate(graphs)
            if GraphMatcher(
                g, pattern, node_match=same, edge_match=same
            ).subgraph_is_monomorphic()
        ]
        assert found == p.tids.tolist()


def test_memory_does_not_grow(molecules):
    import resource

    def peak():
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    def use():
        r = kestro.mine(molecules, min_support=3)
        r.to_pandas()
        pickle.loads(pickle.dumps(r))

    for _ in range(5):
        use()
    before = peak()
    for _ in range(30):
        use()
    assert peak() - before < 8 * 1024  # KiB; a leak of one result is 1,000 a time
