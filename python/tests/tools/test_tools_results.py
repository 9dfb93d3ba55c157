"""Sub-commands that take results: match and diff."""

import csv
import io
import re

import kestro
import pytest
from kestro.tools.__main__ import main
from kestro.tools._isomorphism import classes


def rows(text):
    return list(csv.reader(io.StringIO(text)))


@pytest.fixture
def found(examples, tmp_path):
    db = kestro.from_smiles(examples / "molecules.smi", on_error="skip", charge=True)
    result = kestro.mine(db, min_support="20%")
    result.write(tmp_path, "m")
    result.to_jsonl(tmp_path / "m.jsonl")
    return result


def test_match(found, examples, tmp_path, capsys):
    data = str(examples / "molecules.smi")
    file = str(tmp_path / "m.jsonl")
    assert main(["match", file, data, "-j", "2"]) == 0
    head, *counts = rows(capsys.readouterr().out)
    assert head == ["graph", "record", "patterns"]
    per_graph = found.incidence().sum(axis=1)
    assert [int(row[2]) for row in counts] == per_graph.tolist()
    assert [int(row[1]) for row in counts] == found.db.source.tolist()
    assert main(["match", file, data, "--ids"]) == 0
    ids = [row[3].split() for row in rows(capsys.readouterr().out)[1:]]
    assert ids == [[p.id for p in found if tid in p.tids] for tid in range(len(ids))]
    out = tmp_path / "x.csv"
    assert main(["match", file, data, "--matrix", "-o", str(out)]) == 0
    head, *matrix = rows(out.read_text())
    assert head[2:] == [p.id for p in found]
    assert [
        list(map(int, x[2:])) for x in matrix
    ] == found.incidence().todense().tolist()


def test_match_of_graphs_without_common_labels(found, three_text, tmp_path, capsys):
    other = tmp_path / "n.txt"
    other.write_text(three_text.replace(" C", " 6").replace(" O", " 8"))
    assert main(["match", str(tmp_path / "m.fp"), str(other)]) == 1
    out, err = capsys.readouterr()
    assert "no label of a vertex" in err
    assert rows(out)[1:] == [["0", "0", "0"], ["1", "1", "0"], ["2", "2", "0"]]


@pytest.mark.parametrize(
    ("argv", "code"),
    [
        (["match", "{f}/none.fp", "{f}/m.fp"], 3),
        (["match", "{f}/m.fp", "{f}/none.smi"], 3),
        (["match", "{f}/m.fp", "-"], 2),
        (["match", "{f}/m.fp", "{f}/m.fp", "-o", "{f}/no/x"], 4),
        (["diff", "{f}/m.fp"], 2),
        (["diff", "{f}/m.fp", "{f}/m.tid"], 3),
        (["diff", "{f}/m.fp", "{f}/m.jsonl"], 1),
    ],
)
def test_exit_codes(argv, code, found, tmp_path, capsys):
    assert main([x.format(f=tmp_path) for x in argv]) == code


def test_diff_of_supports(found, tmp_path, capsys):
    found[found.support >= 20].to_jsonl(tmp_path / "some.jsonl")
    first, second = str(tmp_path / "m.fp"), str(tmp_path / "some.jsonl")
    assert main(["diff", first, second, "--show", "2"]) == 0
    kept = int((found.support >= 20).sum())
    out = capsys.readouterr().out
    assert f"in both: {kept}\nin both with another support: 0\n" in out
    assert f"only in {first}: {len(found) - kept}\n" in out
    assert f"… and {len(found) - kept - 2} more" in out
    assert f"only in {second}: 0\n" in out
    assert main(["diff", first, second, "--csv"]) == 0
    table = rows(capsys.readouterr().out)
    assert len(table) == len(found) + 1
    assert sum(row[1] != "" for row in table[1:]) == kept


def test_diff_of_databases(three, tmp_path, capsys):
    kestro.mine(three, min_support=1).to_jsonl(tmp_path / "a.jsonl")
    # The same labels and edges, but in another order, and one graph less.
    other = kestro.from_edges(
        [["O", "C", "C"], ["O", "C"]], [[(2, 1, "s"), (0, 1, "d")], [(0, 1, "d")]]
    )
    kestro.mine(other, min_support=1).to_jsonl(tmp_path / "b.jsonl")
    files = [str(tmp_path / "a.jsonl"), str(tmp_path / "b.jsonl")]
    assert main(["diff", *files]) == 0
    out = capsys.readouterr().out
    assert "in both: 3\nin both with another support: 0\n" in out
    only = out.partition(f"only in {files[0]}: ")[2]
    assert only.startswith("1\n  1-") and "C; v 1 O; u 0 1 s" in only


def test_patterns_that_are_listed_twice_are_named(tmp_path, capsys):
    # Written by hand: a path, once from each end.
    text = "t # 0\nv 0 C\nv 1 O\nu 0 1 s\nt # 1\nv 0 C\nv 1 O\nu 0 1 s\n"
    db = kestro.read_transactions(io.StringIO(text))
    kestro.mine(db, min_support=2).write(tmp_path, "once")
    file = (tmp_path / "once.fp").read_text()
    pattern = "t # 1-0, 2\nv 0 C\nv 1 O\nu 0 1 s\n"
    assert pattern in file
    again = "t # 1-1, 2\nv 0 O\nv 1 C\nu 0 1 s\n"
    doubled = file.replace(pattern, pattern + again)
    doubled = doubled.replace("#   1               1 ", "#   1               2 ")
    doubled = doubled.replace("Found:     1", "Found:     2")
    (tmp_path / "twice.fp").write_text(doubled)
    files = [str(tmp_path / "once.fp"), str(tmp_path / "twice.fp")]
    assert main(["diff", *files]) == 0
    out = capsys.readouterr().out
    assert f"{files[1]}: 2 patterns, 1 up to isomorphism" in out
    assert f"more than once in {files[0]}: 0\n" in out
    assert (
        f"more than once in {files[1]}: 1\n"
        "  1-0 (support 2), 1-1 (support 2): v 0 C; v 1 O; u 0 1 s\n" in out
    )
    # Of a result with itself there is no difference, but doubles are still told.
    assert main(["diff", files[1], files[1]]) == 1
    out = capsys.readouterr().out
    assert f"more than once in {files[1]}: 1\n  1-0 (support 2), 1-1" in out


def test_classes_tell_apart_what_refinement_does_not():
    # A ring of six and two rings of three joined to be connected look alike for
    # few rounds; here a prism and the complete bipartite graph of three and three.
    prism = [(0, 1), (1, 2), (0, 2), (3, 4), (4, 5), (3, 5), (0, 3), (1, 4), (2, 5)]
    bipartite = [(a, b) for a in range(3) for b in range(3, 6)]
    results = []
    for edges in (prism, bipartite):
        db = kestro.from_edges([["A"] * 6], [[(a, b, "-") for a, b in edges]])
        whole = kestro.mine(db, min_support=1, min_size=9)
        assert len(whole) == 1
        results.append(whole)
    assert len(classes(*results)) == 2
    assert len(classes(results[0], results[0], results[1])) == 2


def test_a_report(found, examples, tmp_path, capsys):
    page = tmp_path / "page.html"
    argv = ["report", str(tmp_path / "m.jsonl"), str(examples / "molecules.smi")]
    argv += ["--title", "Sixty", "--max-patterns", "7", "--without-structures"]
    assert main([*argv, "-o", str(page)]) == 0
    expected = io.StringIO()
    read = kestro.read_result(tmp_path / "m.jsonl", found.db)
    read.report(expected, title="Sixty", max_patterns=7, with_structures=False)
    assert page.read_text() == expected.getvalue()
    assert main([*argv, "-o", str(tmp_path / "no" / "page.html")]) == 4
    assert main([*argv, "--max-patterns", "0", "-o", str(page)]) == 2
    # Graphs that were not mined.
    argv[2] = str(examples / "molecules.txt")
    assert main([*argv, "-o", str(page)]) == 3
    assert main(["report", argv[1], argv[2]]) == 2


def test_a_report_of_other_graphs(examples, tmp_path, capsys):
    """Reading looks for ten patterns, which two graphs in other places may pass."""
    lines = (examples / "molecules.smi").read_text().splitlines(keepends=True)
    first = next(i for i, line in enumerate(lines) if not line.startswith("#"))
    lines[first : first + 2] = reversed(lines[first : first + 2])
    other = tmp_path / "other.smi"
    other.write_text("".join(lines))
    db = kestro.from_smiles(examples / "molecules.smi", on_error="skip")
    kestro.mine(db, min_support="10%", max_size=6).write(tmp_path, name="m")
    swapped = kestro.from_smiles(other, on_error="skip")
    read = kestro.read_result(tmp_path / "m.fp", swapped)
    page = tmp_path / "page.html"
    words = r"are not those that were mined: 2-3 is not in graph \d+"
    with pytest.raises(kestro.KestroError, match=words):
        read.report(page, with_structures=False)
    assert main(["report", f"{tmp_path}/m.fp", str(other), "-o", str(page)]) == 3
    assert re.search(words, capsys.readouterr().err)
    assert not page.exists()


def test_a_report_with_classes(tmp_path, capsys):
    file = tmp_path / "a.csv"
    file.write_text("smiles,y\nCCO,1\nCCN,0\nCO,1\nCN,0\n")
    argv = ["mine", str(file), "-s", "2", "--class-column", "y", "-f", "html"]
    assert main([*argv, "-o", str(tmp_path)]) == 0
    db = kestro.from_csv(file)
    db.classes = db.table["y"]
    expected = io.StringIO()
    kestro.mine(db, min_support=2).report(expected, title="a")
    assert (tmp_path / "a.html").read_text() == expected.getvalue()


@pytest.mark.parametrize(
    ("mined", "options", "told"),
    [
        ([], ["--charge"], ["--charge"]),
        ([], ["--charge", "--hydrogens"], ["--charge", "--hydrogens"]),
        (["--charge"], ["--charge"], []),
        (["--charge"], [], []),
    ],
)
def test_labels_other_than_those_of_the_result_are_told(
    mined, options, told, tmp_path, capsys
):
    file, to = tmp_path / "a.smi", str(tmp_path)
    file.write_text("CCO\nCCO\n")
    argv = ["mine", str(file), "-s", "2", *mined, "-o", to, "-f", "jsonl"]
    assert main(argv) == 0
    capsys.readouterr()
    assert main(["match", f"{to}/a.jsonl", str(file), *options]) == 0
    assert capsys.readouterr().err == "".join(
        f"warning: {x} changes nothing: the result is without\n" for x in told
    )
