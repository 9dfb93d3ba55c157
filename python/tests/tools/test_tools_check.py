"""Sub-command check."""

import io

import kestro
import pytest
from hypothesis import example, given
from hypothesis import strategies as st
from kestro.tools.__main__ import main
from kestro.tools._transaction_check import problems

GOOD = b"t # 0\nv 0 C\nv 1 O\nu 0 1 s\n"


def told(data, kind=None):
    return [
        (p.line, p.column, p.text) for p in problems(data) if kind in (None, p.kind)
    ]


@pytest.mark.parametrize(
    ("line", "column", "text"),
    [
        (b"u 1 1 s", 5, "a loop: the edge joins vertex 1 with itself"),
        (b"u 0 7 s", 5, "an edge to vertex 7, which is not there"),
        (b" u 7 0 s", 4, "an edge to vertex 7, which is not there"),
        (b"u 1 0 d", 1, "vertices 1 and 0 have an edge already"),
        (b"v 2 ", 4, "the vertex has no label: 'v 2'"),
        (b"v", 1, "the vertex has no number: 'v'"),
        (b"u 0 1", 6, "the edge has no label: 'u 0 1'"),
        (b"", 1, "an empty line"),
        (b"  x", 3, "no line of a graph: 'x'"),
        (b"v 2 C\0H", 6, "a NUL byte, which ends labels: 'v 2 C\\x00H'"),
    ],
)
def test_errors(line, column, text):
    data = GOOD + line + b"\n" + b"t # 1\nv 0 N\n"
    assert told(data, "error") == [(5, column, text)]
    assert all(p.hint for p in problems(data))


def test_all_errors_at_once():
    data = b"t # 0\nv 0 C\nu 0 0 s\nu 0 1 s\nx\nt # 1\nv 0\n"
    assert [(p.line, p.record) for p in problems(data)] == [
        (3, 0),
        (4, 0),
        (5, 0),
        (7, 1),
    ]


@pytest.mark.parametrize(
    ("data", "expected"),
    [
        (GOOD, (1, 1, "one single graph")),
        (
            b"t # 0\nv 0 C\nv 4294967296 O\nt # 1\nv 0 N\n",
            (3, 3, "vertex 4294967296 is read as 0"),
        ),
        (
            b"t # 0\nv 0 C\nv 4294967296 O\nt # 1\nv 0 N\n",
            (3, 3, "vertex 0 is there already"),
        ),
        (
            b"t # 0\nv 0 C\nv 1 O\nu 0 4294967297 s\nt # 1\nv 0 N\n",
            (4, 5, "vertex 4294967297 is read as 1"),
        ),
        (
            b"t # 0\nv 0 C\rv 1 O\r\nt # 1\nv 0 N\n",
            (2, 6, "a carriage return that ends no line"),
        ),
        (
            b"t # -1\nt # 1\nv 0 N\n",
            (1, 1, "'t # -1' inside the file begins an empty graph, which counts"),
        ),
        (b"t # 0\nv 0 C\nt # 0\nv 0 N\n", (3, 1, "graph 0 was there in line 1")),
        (
            b"t # 0\nv 0 C\nt # 1\nv  0 C\n",
            (3, 1, "the same graph as transaction 0 in line 1"),
        ),
        (
            b"t # 0\nv 0 C +\nv 1 C -\nt # 1\nv 0 N\n",
            (2, 7, "2 vertex labels are read as one, 'C': 'C +', 'C -'"),
        ),
    ],
)
def test_warnings(data, expected):
    assert expected in told(data, "warning")
    assert told(data, "error") == []
    assert all(p.hint for p in problems(data))


def test_the_end_mark_and_what_stands_in_front():
    assert told(b"v 0 C\n" + GOOD + b"t # -1\n", "error") == [
        (1, 1, "vertices or edges in front of all transactions"),
        (6, 1, "the end mark 't # -1' is no graph"),
    ]


def test_a_file_without_problems(examples, capsys):
    assert main(["check", str(examples / "molecules.txt")]) == 0
    out, err = capsys.readouterr()
    assert err == ""
    lines = out.splitlines()
    assert lines[:3] == [
        "0 errors, 0 warnings",
        "60 graphs, 776 vertices, 778 edges",
        "vertex label  times  graphs",
    ]
    assert lines[-1].startswith("highest support at which anything is found: 5")


def test_the_highest_support(three_text, tmp_path, capsys):
    file = tmp_path / "a.txt"
    file.write_text(three_text)
    assert main(["check", str(file), "--labels", "1"]) == 0
    out = capsys.readouterr().out
    assert "highest support at which anything is found: 2 of 3 graphs (66.67%)" in out
    assert "C                 4       3\n… and 1 label more\n" in out
    db = kestro.read_transactions(file)
    assert len(kestro.mine(db, min_support=2)) > 0
    assert len(kestro.mine(db, min_support=3)) == 0


def test_exit_codes(tmp_path, capsys):
    file = tmp_path / "a.txt"
    file.write_bytes(b"t # 0\nv 0 \x1b[2J\nx\n" * 3)
    assert main(["check", str(file), "--max-problems", "2"]) == 3
    out, _ = capsys.readouterr()
    assert "3 errors, 0 warnings" in out
    assert "\x1b" not in out
    file.write_bytes(b"t # 0\nv 0 C\nt # 1\nv 0 N\n")
    assert main(["check", str(file)]) == 1
    assert main(["check", str(tmp_path)]) == 3


PIECES = st.sampled_from(
    [
        *(b"t # 0\n", b"t # 1\n", b"t # -1\n", b"T\n", b"v 0 C\n", b"v 1 O x\n"),
        *(b"v 1 C\n", b"v 4294967296 N\n", b"v 0\n", b"u 0 1 s\n", b"u 1 0 d\n"),
        *(b"u 0 0 s\n", b"u 0 2 s\n", b"e 0 1\n", b"\n", b"x\n", b"# a\n", b"% b\n"),
        *(b"v 2 C\r\n", b"v 2 C\rv 3 C\n", b"v 0 C\0\n", b" \n", b"\r\n", b"v 9 N"),
        *(b"V -1 C\n", b"u 0 1s\n", b"v1 C\n", b"\xef\xbb\xbf", b"\xff\n", b"# \0\n"),
        *(b"t # 1 v 0 C\n", b"v 0 " + b"C" * 999 + b"\n", b"\t\n", b"\x0c\n"),
    ]
)


@given(st.lists(PIECES, max_size=14).map(b"".join))
@example(b"")
@example(b"\xef\xbb\xbft # 0\n")
def test_errors_are_what_the_reader_refuses_or_skips(data):
    errors = {p.record for p in problems(data) if p.kind == "error"}
    db = kestro.read_transactions(io.BytesIO(data), on_error="skip")
    skipped = {s.record for s in db.skipped}
    has_mark = any("end mark" in s.reason for s in db.skipped)
    assert len(errors) == len(skipped)
    if not has_mark:
        assert errors == skipped
    refused = {
        p.record
        for p in problems(data)
        if p.kind == "error" and "in front" not in p.text and "end mark" not in p.text
    }
    if refused:
        with pytest.raises(kestro.KestroError) as caught:
            kestro.read_transactions(io.BytesIO(data))
        lines = [p.line for p in problems(data) if p.kind == "error"]
        assert caught.value.line in lines
    else:
        kestro.read_transactions(io.BytesIO(data))


def test_the_highest_support_is_mined_once(three_text, tmp_path, monkeypatch, capsys):
    file = tmp_path / "three.txt"
    file.write_text(three_text)
    runs = []
    mine = kestro.mine
    monkeypatch.setattr(kestro, "mine", lambda *a, **b: runs.append(b) or mine(*a, **b))
    assert main(["check", str(file)]) == 0
    assert len(runs) == 1
