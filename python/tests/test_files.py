"""Results in files, read again: the program's, lines of JSON, Arrow's tables."""

import gzip
import io
import json
import re
import subprocess
import sys

import kestro
import numpy as np
import pandas as pd
import pyarrow as pa
import pyarrow.parquet
import pytest
from ways import WAYS, contents, rows, through_files, through_json


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


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
    db = kestro.read_transactions(
        io.BytesIO(text + b"t # 1\nv 0 \xff\nv 1 0\nu 0 1 \xfe\n")
    )
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
    with (
        open(tmp_path / "p.fp", "rb") as f,
        pytest.raises(kestro.KestroError, match="TIDs are unknown"),
    ):
        kestro.read_result(f).incidence()
    for odd in (None, 3, b"p.fp"):
        with pytest.raises(TypeError, match="path or a file object"):
            kestro.read_result(odd)


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
        "for name in ('pyarrow', 'rdkit', 'sklearn', 'polars'):\n"
        "    sys.modules[name] = None\n"
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
        with pytest.raises(ValueError, match="molecules to read_result"):
            kestro.read_result(tmp_path / "p.fp")[0].to_smarts()
        assert "smarts" not in kestro.read_result(tmp_path / "p.fp").to_pandas().columns
    else:  # which tells what the labels are
        alone = kestro.read_result(tmp_path / "p.jsonl")
        assert alone[0].to_smarts() == result[0].to_smarts()


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


def test_labels_of_a_file_that_no_graph_has(tmp_path):
    text = "v 0 A\nt # 0\nv 0 B\nv 1 C\nu 0 1 s\n"
    db = kestro.read_transactions(io.StringIO(text))
    kestro.mine(db, min_support=1).write(tmp_path, "p")
    for own in (db, db[:]):
        assert len(kestro.read_result(tmp_path / "p.fp", own)) == 1


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
