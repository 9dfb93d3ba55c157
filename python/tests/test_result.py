"""Results: tables, matrices, selections, pickles."""

import io
import pickle

import kestro
import numpy as np
import pandas as pd
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


def test_undecided_ones_of_a_selection(molecules):
    """They are counted among what is chosen, wherever the filter was applied."""
    for flag in ("closed", "maximal"):
        asked = {flag: True, "max_size": 4}
        some = kestro.mine(molecules, min_support="20%", **asked)
        assert some.undecided == sum(getattr(p, flag) is None for p in some) > 20
        for chosen in (some[:], some[::-1], some.top(1000), some[some.size == 4]):
            assert chosen.undecided == some.undecided
            assert f"{some.undecided} of them undecided" in repr(chosen)
        assert some[some.size < 4].undecided == 0
        assert pickle.loads(pickle.dumps(some[::2])).undecided == some[::2].undecided
    chosen = kestro.mine(molecules, min_support="20%", max_size=4).representative(10**6)
    assert chosen[::-1].undecided == chosen.undecided == 23


def test_filters_are_applied_when_patterns_are_asked_for(molecules, monkeypatch):
    """So Ctrl-C behind the run does not lose it."""
    from kestro._patterns import Patterns

    before = Patterns.closed
    interrupted = property(lambda self: (_ for _ in ()).throw(KeyboardInterrupt))
    monkeypatch.setattr(Patterns, "closed", interrupted)
    closed = kestro.mine(molecules, min_support="20%", closed=True)
    with pytest.raises(KeyboardInterrupt):
        len(closed)
    monkeypatch.setattr(Patterns, "closed", before)
    assert len(closed) == sum(
        p.closed for p in kestro.mine(molecules, min_support="20%")
    )


def test_selections_by_id(result):
    scores = result.score(np.arange(60) % 2)
    names = ["9-0", "1-0", "2-1", "1-0"]
    assert [p.id for p in result[names]] == names
    for kind in (np.array(names), pd.Series(names), pd.Index(names), tuple(names)):
        assert [p.id for p in result[kind]] == names
    best = scores.nlargest(3, "score")["id"]
    assert [p.id for p in result[best]] == best.tolist()
    large = result[result.size >= 8]
    with pytest.raises(KeyError, match="1-0"):
        large[["9-0", "1-0"]]
    with pytest.raises(KeyError, match="x"):
        result[["x"]]
    assert "1-0" in result and result["1-0"] in result
    for other in ("1-0", result["1-0"], "x", "99-0", 3, None):
        assert other not in large


def test_masks_that_do_not_know(molecules):
    bounded = kestro.mine(molecules, min_support="20%", max_size=3)
    flags = bounded.to_pandas()["closed"]
    for mask in (flags, flags.array, flags.astype(object), flags.tolist()):
        with pytest.raises(IndexError, match=r"NA\): fillna\(False\)"):
            bounded[mask]
    sure = bounded[flags.fillna(False)]
    assert len(sure) > 0 and all(p.closed for p in sure)
    assert len(bounded[flags.fillna(False).astype(object)]) == len(sure)


def test_a_truth_value_is_no_position(result, molecules):
    for ask in (
        lambda: result[True],
        lambda: molecules[False],
        lambda: result.embeddings(True, 0),
    ):
        with pytest.raises(TypeError, match=r"not (True|False)"):
            ask()


def test_types_of_tables_are_those_of_any_result(result):
    y = np.arange(60) % 2
    none = kestro.mine(result.db, min_support=60, min_size=9)
    assert len(none) == 0
    for empty in (none, result[:0]):
        assert empty.to_pandas().dtypes.equals(result.to_pandas().dtypes)
        assert empty.to_arrow().schema == result.to_arrow().schema
        for asked in ({}, {"method": "fisher", "correction": "tarone"}):
            types = result.score(y, **asked).dtypes
            assert empty.score(y, **asked).dtypes.equals(types)
    names = np.where(y == 1, "a", "b")
    assert none.score(names).dtypes.equals(result.score(names).dtypes)
    assert none.to_pandas()["id"].tolist() == []


def test_labels_that_are_no_text_are_binary_in_tables_of_arrow():
    text = b"t # 0\nv 0 \xff\nv 1 B\nu 0 1 s\n"
    db = kestro.read_transactions(io.BytesIO(text))
    table = kestro.mine(db, min_support=1).to_arrow()
    assert sorted(table["vertex_labels"].to_pylist()[0]) == [b"B", b"\xff"]
    assert table["edge_labels"].to_pylist() == [["s"]]
    assert db.to_arrow()["vertex_labels"].to_pylist() == [[b"\xff", b"B"]]
