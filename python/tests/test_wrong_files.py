"""Files of results that are refused: broken, changed, of another database."""

import io
import json

import kestro
import pytest
from ways import WAYS


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


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
        (
            (*g[:2], ["C", "N"]),
            [[(0, 1, "d")], longer, [(0, 1, "s")]],
            "vertex labels are 3",
        ),
        (g, [[(0, 1, "x")], longer, [(0, 1, "s")]], "edge labels are 3"),
        (g, [[(0, 1, "d")], [*longer, (0, 2, "s")], [(0, 1, "s")]], "edges are"),
        (g, [[(0, 1, "s")], longer, [(0, 1, "s")]], "not as frequent"),
    ):
        db = kestro.from_edges(vertices, edges)
        with pytest.raises(kestro.KestroError, match=reason):
            kestro.read_result(tmp_path / "p.fp", db)


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
        (b"99999999999", "none of the 60 graphs"),
        (b"9" * 19, "no TID: '9999"),
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


@pytest.mark.parametrize("graphs", ["2147483648", "-60", "9" * 30])
def test_numbers_of_graphs_that_cannot_be(result, tmp_path, graphs):
    """A TID above 32 bits would become another one."""
    result.write(tmp_path, "p")
    text = (tmp_path / "p.fp").read_text()
    head = "Number of Input Transactions:                "
    assert head + "60\n" in text
    (tmp_path / "p.fp").write_text(text.replace(head + "60\n", f"{head}{graphs}\n"))
    with pytest.raises(kestro.KestroError, match=r"cannot have been|no 'Number of"):
        kestro.read_result(tmp_path / "p.fp")


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
        (1, {"graphs": 2**31}, "cannot have been 2147483648 graphs"),
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


@pytest.mark.parametrize(
    ("line", "wrong", "told"),
    [
        ("v 1 O", "v 1", "the vertex has no label: 'v 1'"),
        ("u 0 1 s", "u 0 0 s", "a loop: the edge joins vertex 0 with itself"),
    ],
)
def test_what_is_wrong_with_a_pattern_is_told_in_words(line, wrong, told, tmp_path):
    db = kestro.from_edges([["C", "O"]], [[(0, 1, "s")]])
    kestro.mine(db, min_support=1).write(tmp_path, "p")
    text = (tmp_path / "p.fp").read_text()
    (tmp_path / "p.fp").write_text(text.replace(f"\n{line}\n", f"\n{wrong}\n"))
    with pytest.raises(kestro.KestroError) as caught:
        kestro.read_result(tmp_path / "p.fp")
    number = text.split("\n").index(line) + 1
    assert (caught.value.text, caught.value.line) == (told, number)
