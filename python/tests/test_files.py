"""Results in files, read again: the program's, lines of JSON, Arrow's tables."""

import gzip
import io
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

import kestro
import numpy as np
import pandas as pd
import pyarrow as pa
import pyarrow.parquet
import pytest


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


def rows(result):
    return [
        (
            p.id,
            p.support,
            p.graph.lines(),
            p.tids.tolist(),
            p.parents,
            p.children,
            p.closed,
            p.maximal,
        )
        for p in result
    ]


def contents(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir()}


def through_files(result, folder, db=None):
    result.write(folder, "p")
    return kestro.read_result(folder / "p.fp", db)


def through_json(result, folder, db=None):
    result.to_jsonl(folder / "p.jsonl")
    return kestro.read_result(folder / "p.jsonl", db)


WAYS = pytest.mark.parametrize("way", [through_files, through_json])


@WAYS
def test_what_is_written_is_read(result, molecules, tmp_path, way):
    again = way(result, tmp_path, molecules)
    assert rows(again) == rows(result)
    assert again.to_pandas().equals(result.to_pandas())
    assert repr(again) == repr(result) and again.complete
    assert (again.incidence() != result.incidence()).nnz == 0
    assert (again.transform(molecules) != result.incidence()).nnz == 0
    y = np.arange(60) % 2
    assert again.score(y, correction="bh").equals(result.score(y, correction="bh"))
    assert again.db is molecules


@WAYS
def test_what_is_read_is_written(result, tmp_path, way):
    again = way(result, tmp_path)
    first, second = tmp_path / "first", tmp_path / "second"
    for folder, own in ((first, result), (second, again)):
        folder.mkdir()
        own.write(folder, "q", source="molecules.txt")
        own.to_jsonl(folder / "q.jsonl")
    texts = [contents(folder) for folder in (first, second)]
    assert sorted(texts[0]) == ["q.fp", "q.jsonl", "q.pc", "q.tid"]
    for name in ("q.fp", "q.pc", "q.tid"):
        assert texts[0][name] == texts[1][name]
    patterns = [text["q.jsonl"].split(b"\n", 1)[1] for text in texts]
    assert patterns[0] == patterns[1]


@WAYS
def test_without_the_database(result, tmp_path, way):
    again = way(result, tmp_path)
    assert again.graphs == 60 and again.to_pandas().equals(result.to_pandas())
    with pytest.raises(kestro.KestroError, match="read_result takes it"):
        _ = again.db
    with pytest.raises(TypeError, match="no database"):
        again.embeddings(0, 0)
    assert again.embeddings(0, result.db[0]).shape[1] == 2


@WAYS
def test_maximal_patterns(molecules, tmp_path, way):
    maximal = kestro.mine(molecules, min_support="20%", maximal=True)
    again = way(maximal, tmp_path)
    assert [(p.id, p.parents) for p in again] == [(p.id, p.parents) for p in maximal]
    assert all(p.maximal and p.closed for p in again)
    assert again["9-0"].tids.tolist() == maximal["9-0"].tids.tolist()
    with pytest.raises(KeyError):
        again["1-0"]


@WAYS
def test_of_a_selection_files_do_not_tell_what_is_closed(result, tmp_path, way):
    some = result[[100, 3, 50, 3]]
    again = way(some, tmp_path)
    assert [p.id for p in again] == [result[i].id for i in (3, 50, 100)]
    if way is through_json:  # which tells it
        assert [(p.closed, p.maximal) for p in again] == [
            (result[i].closed, result[i].maximal) for i in (3, 50, 100)
        ]
    else:
        assert {p.closed for p in again} == {p.maximal for p in again} == {None}


@WAYS
def test_bounded_runs(molecules, tmp_path, way):
    bounded = kestro.mine(molecules, min_support="20%", max_size=3)
    again = way(bounded, tmp_path)
    assert rows(again) == rows(bounded)
    assert {p.maximal for p in again if p.size == 3} == {None}
    stopped = kestro.mine(molecules, min_support="20%", max_patterns=30)
    assert stopped.stopped_by == "max_patterns"
    again = way(stopped, tmp_path)
    assert again.stopped_by == "max_patterns" and not again.complete
    assert rows(again) == rows(stopped)


@WAYS
def test_no_pattern(tmp_path, way):
    db = kestro.from_edges([["A"]], [[]])
    again = way(kestro.mine(db, min_support=1), tmp_path, db)
    assert len(again) == 0 and again.complete and again.incidence().shape == (1, 0)


@WAYS
def test_labels_of_all_kinds(tmp_path, way):
    text = "t # 0\nv 0 \xe9\nv 1 #\nu 0 1 \u2192\n".encode()
    db = kestro.read_transactions(io.BytesIO(text + b"t # 1\nv 0 \xff\nv 1 0\nu 0 1 \xfe\n"))
    result = kestro.mine(db, min_support=1)
    assert rows(way(result, tmp_path)) == rows(result)


def test_files_that_are_missing(result, molecules, tmp_path):
    result.write(tmp_path, "p", tids=False, parents=False)
    assert sorted(contents(tmp_path)) == ["p.fp"]
    bare = kestro.read_result(tmp_path / "p.fp")
    assert bare.support.tolist() == result.support.tolist()
    assert {p.closed for p in bare if p.size < 9} == {None}
    assert bare["9-0"].maximal is True  # the run found none of ten edges
    for ask in (
        lambda: bare[0].tids,
        bare.incidence,
        lambda: bare.score(np.arange(60) % 2),
        lambda: bare.representative(1),
        lambda: bare[0].parents,
        lambda: bare.write(tmp_path, "q"),
    ):
        with pytest.raises(kestro.KestroError, match="are unknown"):
            ask()
    assert sorted(contents(tmp_path)) == ["p.fp"]
    found = kestro.read_result(tmp_path / "p.fp", molecules, n_jobs=2)
    assert (found.incidence() != result.incidence()).nnz == 0
    again = through_json(bare, tmp_path)
    assert again.support.tolist() == result.support.tolist()
    assert "tids" not in bare.to_arrow().column_names


def test_files_packed_by_gzip(result, tmp_path):
    result.to_jsonl(tmp_path / "p.jsonl")
    packed = tmp_path / "p.jsonl.gz"
    packed.write_bytes(gzip.compress((tmp_path / "p.jsonl").read_bytes()))
    assert rows(kestro.read_result(packed)) == rows(result)
    result.write(tmp_path, "p")
    for suffix in (".fp", ".pc", ".tid"):  # the other ones are beside it as they were
        file = tmp_path / f"p{suffix}"
        packed = tmp_path / f"p{suffix}.gz"
        packed.write_bytes(gzip.compress(file.read_bytes()))
        file.unlink()
        assert rows(kestro.read_result(tmp_path / "p.fp.gz")) == rows(result)


def test_file_objects(result, tmp_path):
    result.write(tmp_path, "p")
    result.to_jsonl(tmp_path / "p.jsonl")
    for name in ("p.jsonl", "p.fp"):
        data = (tmp_path / name).read_bytes()
        for packed in (data, gzip.compress(data)):
            again = kestro.read_result(io.BytesIO(packed), result.db)
            assert (again.incidence() != result.incidence()).nnz == 0
        with open(tmp_path / name, encoding="utf-8", errors="surrogateescape") as f:
            assert len(kestro.read_result(f)) == 114
    with open(tmp_path / "p.fp", "rb") as f, pytest.raises(
        kestro.KestroError, match="TIDs are unknown"
    ):
        kestro.read_result(f).incidence()
    for odd in (None, 3, b"p.fp"):
        with pytest.raises(TypeError, match="path or a file object"):
            kestro.read_result(odd)


@pytest.mark.parametrize("missing", [1, 2, 20, 56])
def test_the_last_bytes_are_missing(result, tmp_path, missing):
    result.write(tmp_path, "p")
    text = (tmp_path / "p.fp").read_bytes()
    (tmp_path / "p.fp").write_bytes(text[:-missing])
    if missing == 1:  # no end of the last line, as some editors leave it
        assert len(kestro.read_result(tmp_path / "p.fp")) == 114
    else:
        with pytest.raises(kestro.KestroError, match="of a run that ended"):
            kestro.read_result(tmp_path / "p.fp")


def test_lines_of_json(result, tmp_path):
    text = result.to_jsonl()
    into = io.StringIO()
    assert result.to_jsonl(into) is None and into.getvalue() == text
    head, *patterns = map(json.loads, text.splitlines())
    assert head["patterns"] == len(patterns) == 114 and head["graphs"] == 60
    assert list(patterns[0]) == (
        "id support vertices edges closed maximal tids parents".split()
    )
    p = result["1-5"]
    own = next(row for row in patterns if row["id"] == "1-5")
    assert (own["vertices"], own["edges"]) == (["C", "O"], [[0, 1, "d"]])
    assert own["tids"] == p.tids.tolist()


@pytest.mark.parametrize(
    ("name", "change", "reason"),
    [
        ("p.fp", lambda t: t[: len(t) // 2], "of a run that ended"),
        ("p.fp", lambda t: b"t # 0\nv 0 C\n", "of a run that ended"),
        ("p.fp", lambda t: t.replace(b"t # 3-7, ", b"t # 3-70000, "), "by size and id"),
        ("p.fp", lambda t: t.replace(b"t # 3-7, ", b"t # x "), "no head"),
        ("p.fp", lambda t: t.replace(b"v 1 C", b"v 1"), "line"),
        ("p.tid", lambda t: t.replace(b"3-7 ", b"3-8 "), "not those of"),
        ("p.tid", lambda t: t.replace(b"\n1-1 ", b"\n1-1 0 "), "as many as"),
        ("p.pc", lambda t: t[:-200], "not those of"),
        ("p.jsonl", lambda t: t[:-20], "no line of JSON"),
        ("p.jsonl", lambda t: t.rsplit(b"\n", 2)[0], "not whole"),
        ("p.jsonl", lambda t: t.replace(b"kestro patterns 1", b"other"), "first line"),
        ("p.jsonl", lambda t: t.replace(b'"support"', b'"upport"'), "no 'support'"),
    ],
)
def test_files_that_cannot_be_read(result, tmp_path, name, change, reason):
    result.write(tmp_path, "p")
    result.to_jsonl(tmp_path / "p.jsonl")
    file = tmp_path / name
    before = file.read_bytes()
    file.write_bytes(change(before))
    assert file.read_bytes() != before
    path = tmp_path / ("p.jsonl" if name == "p.jsonl" else "p.fp")
    with pytest.raises(kestro.KestroError, match=reason):
        kestro.read_result(path)


def test_databases_that_do_not_belong(result, three, molecules, tmp_path):
    result.write(tmp_path, "p", tids=False)
    with pytest.raises(kestro.KestroError, match="60 graphs were mined, db has 3"):
        kestro.read_result(tmp_path / "p.fp", three)
    with pytest.raises(kestro.KestroError, match="average edges are 4, in"):
        kestro.read_result(tmp_path / "p.fp", molecules[[0] * 60])
    with pytest.raises(FileNotFoundError):
        kestro.read_result(tmp_path / "none.fp")


class FullError(Exception):
    pass


def test_a_file_that_is_not_whole_is_not_there(result, tmp_path, monkeypatch):
    result.write(tmp_path, "p")
    before = contents(tmp_path)
    real = os.replace

    def parents(*_):
        yield ["1-0"]
        raise FullError

    monkeypatch.setattr("kestro._patterns.Patterns.parent_names", parents)
    with pytest.raises(FullError):
        result[5:].write(tmp_path, "p")
    with pytest.raises(FullError):
        result[5:].to_jsonl(tmp_path / "q.jsonl")
    assert contents(tmp_path) == before and os.replace is real
    with pytest.raises(FileNotFoundError):
        result.write(tmp_path / "none", "p")
    for name, source in (("a\nb", None), ("a", "b\nc")):
        with pytest.raises(kestro.KestroError, match="newline"):
            result.write(tmp_path, name, source=source)
    assert contents(tmp_path) == before


def test_arrow(result, tmp_path):
    table = result.to_arrow()
    assert table.num_rows == 114
    frame = result.to_pandas()
    for name in frame.columns:
        assert table[name].to_pylist() == frame[name].astype(object).tolist()
    for row, p in zip(table.to_pylist(), result, strict=True):
        assert row["tids"] == p.tids.tolist() and row["parents"] == list(p.parents)
        assert tuple(row["vertex_labels"]) == p.graph.vertex_labels
        assert tuple(row["edge_labels"]) == p.graph.edge_labels
        assert row["ends"] == p.graph.edges.tolist()
    assert pa.table(result).equals(table)  # by the C stream interface
    pyarrow.parquet.write_table(table, tmp_path / "p.parquet")
    assert pyarrow.parquet.read_table(tmp_path / "p.parquet").num_rows == 114
    some = result[[7, 3]].to_arrow()
    assert some["id"].to_pylist() == frame["id"][[7, 3]].tolist()
    assert some["tids"].to_pylist() == [result[i].tids.tolist() for i in (7, 3)]
    unknown = kestro.mine(result.db, min_support="20%", max_size=1).to_arrow()
    assert unknown["closed"].to_pylist() == [None] * len(unknown)
    assert result[:0].to_arrow().num_rows == 0


def test_the_package_does_without_its_extras():
    code = (
        "import sys\n"
        "for name in ('pyarrow', 'rdkit', 'sklearn', 'polars'): sys.modules[name] = None\n"
        "import kestro\n"
        "db = kestro.from_edges([['A', 'B']], [[(0, 1, 'x')]])\n"
        "result = kestro.mine(db, min_support=1)\n"
        "result.to_pandas(), result.incidence(), result.transform(db), repr(result)\n"
        "try: result.to_arrow()\n"
        "except ImportError as e: print(e)\n"
    )
    done = subprocess.run(
        [sys.executable, "-c", code], check=True, capture_output=True, text=True
    )
    assert "kestro[arrow]" in done.stdout


def test_html(result, molecules):
    html = result._repr_html_()
    assert "114 patterns of 1 to 9 edges in at least 12 of 60 graphs" in html
    assert html.count("<tr>") == 11 and "104 more" in html
    assert "75.0%" in html
    one = result[:1]
    assert repr(one).startswith("<Result: 1 pattern of 1 edge in at least")
    few = kestro.mine(molecules, min_support="20%", max_size=1)[:2]._repr_html_()
    assert few.count("<tr>") == 3 and "more" not in few and "?" in few
    odd = kestro.from_edges([["<b>", "&"]], [[(0, 1, "<i>")]])
    page = kestro.mine(odd, min_support=1)._repr_html_()
    assert "&amp;0 &lt;i&gt; &lt;b&gt;1" in page and not re.search("<b>1<|<i>", page)
    large = kestro.mine(molecules, min_support=2, min_size=14)._repr_html_()
    assert "…" in large
    atoms = kestro.from_smiles(["CC(=O)O", "CC(=O)N"])
    page = kestro.mine(atoms, min_support=2)._repr_html_()
    assert "[#6&amp;A](-[#6&amp;A])=[#8&amp;A]" in page and "<th>SMARTS</th>" in page


def test_tables_of_filters_tell_what_is_unknown(molecules):
    bounded = kestro.mine(molecules, min_support="20%", max_size=3, closed=True)
    table = bounded.to_pandas()
    assert table["closed"].isna().sum() == bounded.undecided > 0
    assert f"{bounded.undecided} of them undecided" in bounded._repr_html_()
    assert isinstance(table["closed"].dtype, pd.BooleanDtype)


@WAYS
def test_molecules(tmp_path, way):
    db = kestro.from_smiles(["CC(=O)O", "c1ccccc1O", "CCO"])
    result = kestro.mine(db, min_support=1)
    again = way(result, tmp_path, db)
    assert again.to_pandas().equals(result.to_pandas())
    assert "smarts" in again.to_pandas().columns
    assert again.to_arrow()["smarts"].to_pylist() == [p.to_smarts() for p in result]
    if way is through_files:
        with pytest.raises(ValueError, match="give db to read_result"):
            kestro.read_result(tmp_path / "p.fp")[0].to_smarts()
        assert "smarts" not in kestro.read_result(tmp_path / "p.fp").to_pandas().columns
    else:  # which tells what the labels are
        alone = kestro.read_result(tmp_path / "p.jsonl")
        assert alone[0].to_smarts() == result[0].to_smarts()


def test_files_of_other_tids(result, tmp_path):
    """Numbers that are no graphs would be places outside of all arrays."""
    result.write(tmp_path, "p")
    whole = (tmp_path / "p.tid").read_bytes()
    first, _, rest = whole.partition(b"\n")
    name, own, *others = first.split()
    for wrong, reason in (
        (b"100000000", "none of the 60 graphs"),
        (b"60", "none of the 60 graphs"),
        (b"-5", "no TID: '-5'"),
        (others[0], "do not ascend"),
        (b"99999999999", "no TID"),
        (b"x", "no TID: 'x'"),
    ):
        line = b" ".join([name, wrong, *others])
        (tmp_path / "p.tid").write_bytes(line + b"\n" + rest)
        with pytest.raises(kestro.KestroError, match=reason) as caught:
            kestro.read_result(tmp_path / "p.fp")
        assert (caught.value.path, caught.value.line) == (str(tmp_path / "p.tid"), 1)
    for count, reason in ((1 + len(others), "do not ascend"), (1, "as many as")):
        line = b" ".join([name, *[own] * count])
        (tmp_path / "p.tid").write_bytes(line + b"\n" + rest)
        with pytest.raises(kestro.KestroError, match=reason):
            kestro.read_result(tmp_path / "p.fp")


@pytest.mark.parametrize(
    ("parent", "reason"),
    [
        (b"3-99999", "no pattern"),
        (b"x-y-7", "no id of a pattern: 'x-y-7'"),
        (b"2-0", "not of the size before"),
        (b"3-9999999999", "not of the size before"),
        (b"7", "no id of a pattern: '7'"),
    ],
)
def test_files_of_other_parents(result, tmp_path, parent, reason):
    result.write(tmp_path, "p")
    lines = (tmp_path / "p.pc").read_bytes().splitlines()
    at = next(i for i, line in enumerate(lines) if line.startswith(b"4-0 "))
    lines[at] = b"4-0 " + parent
    (tmp_path / "p.pc").write_bytes(b"\n".join(lines) + b"\n")
    with pytest.raises(kestro.KestroError, match=reason) as caught:
        kestro.read_result(tmp_path / "p.fp")
    assert caught.value.line == at + 1


def test_supports_that_cannot_be(result, tmp_path):
    result.write(tmp_path, "p", tids=False, parents=False)
    text = (tmp_path / "p.fp").read_bytes()
    head = next(x for x in text.splitlines() if x.startswith(b"t # 1-0, "))
    for support in (b"61", b"0", b"99999999999999999999"):
        (tmp_path / "p.fp").write_bytes(text.replace(head, b"t # 1-0, " + support))
        with pytest.raises(kestro.KestroError, match="support"):
            kestro.read_result(tmp_path / "p.fp")


def changed(result, line, **values):
    """Lines of JSON in which one has other values; None takes one away."""
    rows = [json.loads(x) for x in result.to_jsonl().splitlines()]
    rows[line - 1] |= values
    rows[line - 1] = {k: v for k, v in rows[line - 1].items() if v != "gone"}
    return io.StringIO("".join(json.dumps(row) + "\n" for row in rows))


@pytest.mark.parametrize(
    ("line", "values", "reason"),
    [
        (2, {"tids": [1]}, "as many as"),
        (2, {"support": 1, "tids": [10**6]}, "none of the 60 graphs"),
        (2, {"support": 1, "tids": [2**70]}, "wrong 'tids'"),
        (2, {"support": 1, "tids": [1.5]}, "wrong 'tids'"),
        (2, {"support": 1, "tids": [True]}, "wrong 'tids'"),
        (2, {"support": 2, "tids": [3, 3]}, "do not ascend"),
        (2, {"support": 61}, "support"),
        (2, {"support": "58"}, "wrong 'support'"),
        (2, {"edges": [[0, 77, "s"]]}, "vertex"),
        (2, {"edges": [[0, 0, "s"]]}, "itself|loop"),
        (2, {"edges": [[0, 1]]}, "wrong 'edges'"),
        (2, {"edges": [[0, 1, "s"], [0, 1, "s"]]}, "edge"),
        (2, {"edges": []}, "another size"),
        (2, {"vertices": ["C", 1]}, "wrong 'vertices'"),
        (2, {"vertices": "gone"}, "no 'vertices'"),
        (2, {"closed": "yes"}, "wrong 'closed'"),
        (2, {"id": "1-0x"}, "no id"),
        (2, {"id": "1-1"}, "by size and id"),
        (2, {"parents": ["0-0"]}, "not of the size before"),
        (60, {"parents": ["3-99999"]}, "not of the size before|no pattern"),
        (1, {"patterns": "gone"}, "not whole"),
        (1, {"graphs": "gone"}, "lacks 'graphs'"),
        (1, {"ending": "gone"}, "lacks 'ending'"),
        (1, {"ending": "bored"}, "wrong 'ending'"),
        (1, {"form": "zzz"}, "wrong 'form'"),
        (1, {"graphs": -1}, "wrong 'graphs'"),
        (1, {"candidates": [0]}, "counts"),
        (1, {"frequent": [0, 1.5]}, "wrong 'frequent'"),
        (1, {"atom_labels": [True, False]}, "wrong 'atom_labels'"),
        (1, {"described": {}}, "wrong 'described'"),
        (1, {"filters": ["odd"]}, "wrong 'filters'"),
    ],
)
def test_lines_of_json_that_are_wrong(result, line, values, reason):
    with pytest.raises(kestro.KestroError, match=reason) as caught:
        kestro.read_result(changed(result, line, **values))
    if "patterns" not in values and values.get("id") != "1-1":
        assert caught.value.line == line


@WAYS
def test_corrections_need_all_patterns_of_the_run(result, molecules, tmp_path, way):
    """The family of a correction must not depend on what was kept of it."""
    y = np.arange(60) % 2
    family = result.score(y, correction="bh").attrs["family"]
    maximal = kestro.mine(molecules, min_support="20%", maximal=True)
    for own in (result.top(5), maximal, result[result.size >= 5]):
        assert own.score(y, correction="bh").attrs["family"] == family
        again = way(own, tmp_path)
        by_id = own[np.argsort(own.positions)]
        assert again.score(y).equals(by_id.score(y))
        for correction in ("bh", "bonferroni", "tarone"):
            with pytest.raises(kestro.KestroError, match="all patterns of the run"):
                again.score(y, correction=correction)
    again = way(result[::-1], tmp_path)
    assert again.score(y, correction="bh").attrs["family"] == family


@WAYS
def test_databases_in_another_order(result, molecules, tmp_path, way):
    """All counts of it are the same; the TIDs are others."""
    with pytest.raises(kestro.KestroError, match="is not in all of its TIDs"):
        way(result, tmp_path, molecules[::-1])
    with pytest.raises(kestro.KestroError, match="is not in all of its TIDs"):
        way(result[[113]], tmp_path, molecules[::-1])


def test_databases_of_other_graphs(three, tmp_path):
    kestro.mine(three, min_support=1).write(tmp_path, "p", tids=False)
    g = ["C", "O"], ["C", "C", "O"], ["C", "O"]
    longer = [(0, 1, "s"), (1, 2, "d")]
    for vertices, edges, reason in (
        ((*g[:2], ["C", "N"]), [[(0, 1, "d")], longer, [(0, 1, "s")]], "vertex labels are 3"),
        (g, [[(0, 1, "x")], longer, [(0, 1, "s")]], "edge labels are 3"),
        (g, [[(0, 1, "d")], [*longer, (0, 2, "s")], [(0, 1, "s")]], "edges are"),
        (g, [[(0, 1, "s")], longer, [(0, 1, "s")]], "not as frequent"),
    ):
        db = kestro.from_edges(vertices, edges)
        with pytest.raises(kestro.KestroError, match=reason):
            kestro.read_result(tmp_path / "p.fp", db)


def test_labels_of_a_file_that_no_graph_has(tmp_path):
    text = "v 0 A\nt # 0\nv 0 B\nv 1 C\nu 0 1 s\n"
    db = kestro.read_transactions(io.StringIO(text))
    kestro.mine(db, min_support=1).write(tmp_path, "p")
    for own in (db, db[:]):
        assert len(kestro.read_result(tmp_path / "p.fp", own)) == 1


def test_files_of_an_earlier_run_are_not_taken_for_this_one(molecules, tmp_path):
    for db in (molecules, molecules[::-1]):
        result = kestro.mine(db, min_support="20%")
        result.write(tmp_path, "p", tids=db is molecules, parents=db is molecules)
    assert sorted(contents(tmp_path)) == ["p.fp"]
    again = kestro.read_result(tmp_path / "p.fp", molecules[::-1])
    assert (again.incidence() != result.incidence()).nnz == 0
    with pytest.raises(kestro.KestroError, match="parents are unknown"):
        again[0].parents


@pytest.mark.parametrize("name", ["a/b", "../up", "", ".", "..", "/p", "a\0b"])
def test_names_that_leave_the_folder(result, tmp_path, name):
    (tmp_path / "a").mkdir()
    folder = tmp_path / "own"
    folder.mkdir()
    before = sorted(tmp_path.rglob("*"))
    with pytest.raises(kestro.KestroError, match="name must be that of a file"):
        result.write(folder, name)
    assert sorted(tmp_path.rglob("*")) == before


def test_errors_of_writing_name_the_file(result, tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        result.write(tmp_path / "none", "p", tids=False, parents=False)
    assert caught.value.filename == str(tmp_path / "none" / "p.fp")
    with pytest.raises(FileNotFoundError) as caught:
        result.to_jsonl(tmp_path / "none" / "p.jsonl")
    assert caught.value.filename == str(tmp_path / "none" / "p.jsonl")


def test_threads_write_one_file_at_once(result, tmp_path):
    with ThreadPoolExecutor(8) as pool:
        for done in [pool.submit(result.to_jsonl, tmp_path / "p") for _ in range(64)]:
            done.result()
    assert contents(tmp_path) == {"p": result.to_jsonl().encode()}


def test_lines_of_json_tell_what_is_closed(result, molecules, tmp_path):
    closed = kestro.mine(molecules, min_support="20%", closed=True)
    for own in (closed, result[:], result[[100, 3]], closed[::-1]):
        again = through_json(own, tmp_path, molecules)
        by_id = own[np.argsort(own.positions)]
        assert again.to_pandas().equals(by_id.to_pandas())
        assert not again.to_pandas()["closed"].isna().any()
        assert again.representative(3).undecided == 0
    files = through_files(result[:], tmp_path)
    assert files.to_pandas().equals(result.to_pandas())


def test_undecided_ones_are_counted_where_they_are_read(molecules, tmp_path):
    asked = {"min_support": "20%", "max_size": 4}
    closed = kestro.mine(molecules, **asked, closed=True)
    maximal = kestro.mine(molecules, **asked, maximal=True)
    assert through_json(closed, tmp_path).undecided == closed.undecided > 0
    for way in (through_files, through_json):
        assert repr(way(maximal, tmp_path)) == repr(maximal)
        assert maximal.undecided > 0
