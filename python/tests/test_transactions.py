"""Reading the transaction format."""

import gzip
import io
import os
import pickle
import re
import threading

import kestro
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

BROKEN = "t # 0\nv 0 C\nt # 1\nv 0 C\nx\nt # 2\nv 0 N\nv 1 O\nu 0 1 s\n"


def read(text, **arguments):
    data = text.encode() if isinstance(text, str) else text
    return kestro.read_transactions(io.BytesIO(data), **arguments)


def labels(db):
    return [g.vertex_labels for g in db]


def test_what_is_read(three_text):
    db = read(three_text)
    assert labels(db) == [("C", "O"), ("C", "C", "O"), ("C", "O")]
    assert db[1].edges.tolist() == [[0, 1], [1, 2]]
    assert db[1].edge_labels == ("s", "d")
    assert (db.source.tolist(), db.skipped) == ([0, 1, 2], ())


def test_ways_to_hand_a_file_over(three_text, tmp_path):
    plain = tmp_path / "a.txt"
    plain.write_text(three_text)
    packed = tmp_path / "a.txt.gz"
    packed.write_bytes(gzip.compress(three_text.encode()))
    with open(plain) as text, open(packed, "rb") as binary:
        sources = [plain, str(plain), os.fsencode(plain).decode(), packed, text, binary]
        for source in sources:
            assert kestro.read_transactions(source).to_transactions() == three_text


def test_a_pipe(three_text, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    writer = threading.Thread(target=pipe.write_text, args=(three_text,))
    writer.start()
    assert kestro.read_transactions(pipe).to_transactions() == three_text
    writer.join()


def test_files_that_cannot_be_read(tmp_path):
    with pytest.raises(FileNotFoundError):
        kestro.read_transactions(tmp_path / "none")
    with pytest.raises(IsADirectoryError):
        kestro.read_transactions(tmp_path)
    with pytest.raises(TypeError, match="source"):
        kestro.read_transactions(3)
    with pytest.raises(ValueError, match="on_error"):
        read("", on_error="ignore")
    cut = gzip.compress(b"t # 0\nv 0 C\n" * 9)[:-10]
    with pytest.raises(kestro.KestroError, match="unpacked"):
        read(cut)


def test_an_error_tells_file_and_line(tmp_path):
    file = tmp_path / "broken.txt"
    file.write_text(BROKEN)
    with pytest.raises(kestro.KestroError, match="no line of a graph") as caught:
        kestro.read_transactions(file)
    assert (caught.value.path, caught.value.line) == (str(file), 5)
    with open(file, "rb") as f, pytest.raises(kestro.KestroError) as caught:
        kestro.read_transactions(f)
    assert (caught.value.path, caught.value.line) == (str(file), 5)


def test_an_unreadable_record_in_the_middle(tmp_path):
    file = tmp_path / "broken.txt"
    file.write_text(BROKEN)
    for db in (
        read(BROKEN, on_error="skip"),
        kestro.read_transactions(file, on_error="skip"),
    ):
        assert labels(db) == [("C",), ("N", "O")]
        assert db.source.tolist() == [0, 2]
        [skipped] = db.skipped
        assert skipped.record == 1
        assert "no line of a graph" in skipped.reason and "line 3" in skipped.reason
        assert "1 record skipped" in repr(db)


def test_an_unreadable_line_in_front():
    db = read("x\nt # 0\nv 0 C\n", on_error="skip")
    assert labels(db) == [("C",)]
    assert [s.record for s in db.skipped] == [-1]


@pytest.mark.parametrize(
    ("record", "line", "reason"),
    [
        (
            "v 0 C\nv 1 C\nu 0 1 s\nu 1 0 s\n",
            4,
            "vertices 1 and 0 have an edge already",
        ),
        ("v 0 C\nu 0 0 s\n", 2, "a loop: the edge joins vertex 0 with itself"),
        ("u 4 7 s\nv 4 C\n", 1, "an edge to vertex 7, which is not there"),
        ("v 0\n", 1, "the vertex has no label: 'v 0'"),
        ("v 0 C\nv 1 C\nu 0 1\n", 3, "the edge has no label: 'u 0 1'"),
        ("v zero C\n", 1, "the vertex has no number: 'v zero C'"),
        ("v 0 C\ne 0 C\n", 2, "the edge has no two numbers: 'e 0 C'"),
        ("v 0 C\nx 0\n", 2, "no line of a graph: 'x 0'"),
        ("v 0 C\n\nv 1 C\n", 2, "an empty line"),
        ("v 0 C\0D\n", 1, "a NUL byte"),
        (f"x{'y' * 99}\n", 1, f"no line of a graph: 'x{'y' * 59}'…"),
    ],
)
def test_records_that_are_no_graph(record, line, reason, tmp_path):
    text = f"t # 0\nv 0 A\nt # 1\n{record}t # 2\nv 0 B\n"
    file = tmp_path / "a.txt"
    file.write_text(text)
    for source, path in ((file, str(file)), (io.StringIO(text), None)):
        with pytest.raises(kestro.KestroError) as caught:
            kestro.read_transactions(source)
        assert caught.value.text.startswith(reason)
        assert (caught.value.path, caught.value.line) == (path, line + 3)
    db = kestro.read_transactions(file, on_error="skip")
    assert labels(db) == [("A",), ("B",)] and db.source.tolist() == [0, 2]
    [skipped] = db.skipped
    assert skipped.record == 1 and skipped.reason.startswith(reason)
    assert skipped.reason.endswith(f"(line {line + 1} of it)")


@pytest.mark.parametrize(
    ("line", "reason"),
    [
        ("u 0 0 s", "a loop: the edge joins vertex 0 with itself"),
        ("v 1", "the vertex has no label: 'v 1'"),
    ],
)
def test_the_reason_stands_alone(line, reason):
    with pytest.raises(kestro.KestroError) as caught:
        read(f"t # 0\nv 0 C\n{line}\n")
    assert caught.value.text == reason


def test_numbers_that_wrap_as_they_do_in_the_library():
    assert len(read(f"t # 0\nv 0 C\nv 1 C\nu {2**32} 1 s\n")[0].edges) == 1
    with pytest.raises(kestro.KestroError, match="a loop: the edge joins vertex 0"):
        read(f"t # 0\nv 0 C\nu 0 {2**32} s\n")
    with pytest.raises(kestro.KestroError, match="an edge to vertex -1"):
        read(f"t # 0\nv 0 C\nu 0 {10**99} s\n")


@pytest.mark.parametrize("text", ["t # 0\n\nv 0 C\n", "\nt # 0\n"])
def test_blank_lines_are_refused(text):
    with pytest.raises(kestro.KestroError, match="an empty line") as caught:
        read(text)
    assert caught.value.line == text.split("\n").index("") + 1


@pytest.mark.parametrize("end", ["\n", "\r\n\r\n", "  ", "\n" * 600, " \n\t\n "])
def test_blank_lines_at_the_end_are_ignored(end, tmp_path):
    text = "t # 0\nv 0 C\nv 1 N\nu 0 1 s\n"
    file = tmp_path / "a.txt"
    file.write_bytes((text + end).encode())
    for db in (read(text + end), kestro.read_transactions(file)):
        assert db.to_transactions() == text and db.skipped == ()
    file.write_text(end)
    assert len(kestro.read_transactions(file)) == len(read(end)) == 0


def test_vertices_in_front_of_all_transactions(tmp_path):
    file = tmp_path / "a.txt"
    for front in ("v 0 X\n", "% of X\n  u 0 1 s\n"):
        for behind in ("", "t # 1\nv 0\n"):
            file.write_text(front + "t # 0\nv 0 C\n" + behind)
            db = kestro.read_transactions(file, on_error="skip" if behind else "raise")
            assert labels(db) == [("C",)] and db.source.tolist() == [0]
            assert [s.record for s in db.skipped] == ([-1, 1] if behind else [-1])
            line = front.count("\n")
            assert db.skipped[0].reason.endswith(
                f"in front of all transactions, from line {line} on"
            )
    file.write_text("v 0 C\nv 1 C\n")
    db = kestro.read_transactions(file)
    assert repr(db) == "<GraphDatabase: 0 graphs, 1 record skipped>"
    file.write_text("# a comment\nt # 0\nv 0 C\n")
    assert kestro.read_transactions(file).skipped == ()
    db = read("v 0 X\nt # 0\nv 0 C\nt # -1\n")
    assert [s.record for s in db.skipped] == [-1, 1]


def test_a_byte_order_mark(tmp_path):
    file = tmp_path / "a.txt"
    file.write_bytes(b"\xef\xbb\xbf" + BROKEN.replace("x\n", "").encode())
    assert kestro.read_transactions(file).source.tolist() == [0, 1, 2]
    file.write_bytes(b"\xef\xbb\xbf" + BROKEN.encode())
    db = kestro.read_transactions(file, on_error="skip")
    assert db.source.tolist() == [0, 2] and [s.record for s in db.skipped] == [1]


@pytest.mark.parametrize("end", ["t # -1", "t # -1\n", "t # -1\r\n", "t #-1\n\n"])
def test_an_end_mark_is_no_graph(end, tmp_path):
    text = "t # 0\nv 0 C\nt # 1\nv 0 N\n" + end
    file = tmp_path / "marked.txt"
    file.write_bytes(text.encode())
    for db in (read(text), kestro.read_transactions(file)):
        assert labels(db) == [("C",), ("N",)]
        assert db.skipped[0].record == 2 and "t # -1" in db.skipped[0].reason


def test_what_looks_like_an_end_mark():
    assert len(read("t # -1\nv 0 C\nt # -1\nv 0 C\n")) == 2
    assert len(read("t # -1")) == 0
    assert len(read("t # 0\nt # 1\n")) == 2  # empty graphs count


def test_carriage_returns(three_text):
    db = read(three_text.replace("\n", "\r\n"))
    assert db.to_transactions() == three_text
    assert len(read(BROKEN.replace("\n", "\r\n"), on_error="skip")) == 2


def test_labels_that_are_no_utf8(tmp_path):
    data = b"t # 0\nv 0 \xe9\nv 1 \xc3\xa9\nu 0 1 \xff\n"
    db = read(data)
    assert db[0].vertex_labels == ("\udce9", "é")
    again = tmp_path / "again.txt"
    db.to_transactions(again)
    assert again.read_bytes() == data
    [pattern] = kestro.mine(db, min_support=1)
    assert pattern.graph.edge_labels == ("\udcff",)


def test_nul_bytes_in_a_file(tmp_path):
    file = tmp_path / "a.txt"
    comments = b"# of a hundred bytes".ljust(99) + b"\n"
    graphs = b"t # 0\nv 0 C\0D\nt # 1\nv 0 N\n"
    file.write_bytes(comments * 11_000 + graphs)
    with pytest.raises(kestro.KestroError, match="a NUL byte") as caught:
        kestro.read_transactions(file)
    assert caught.value.line == 11_002
    assert labels(kestro.read_transactions(file, on_error="skip")) == [("N",)]
    for harmless in (b"t\0 # 0\nv 0 C\n", b"# \0\nt # 0\nv 0 C\n"):
        assert labels(read(harmless)) == [("C",)]
    assert read("t # 0\nv 0 C\n".encode("utf-16"), on_error="skip").skipped


def test_errors_can_be_printed(tmp_path):
    data = b"t # 0\nv\xe9\n"
    with pytest.raises(kestro.KestroError) as caught:
        read(data)
    assert str(caught.value).encode() and "\\xe9" in str(caught.value)
    [skipped] = read(data, on_error="skip").skipped
    assert skipped.reason.encode()
    with pytest.raises(kestro.KestroError) as caught:
        kestro.from_edges([["\ud800"]], [[]])
    assert str(caught.value).encode()


def test_selections(molecules):
    evens = molecules[::2]
    assert len(evens) == 30
    assert evens.source.tolist() == list(range(0, 60, 2))
    assert evens[3].lines() == molecules[6].lines()
    sizes = np.array([len(g.edges) for g in molecules])
    large = molecules[sizes > 10]
    assert [len(g.edges) for g in large] == sizes[sizes > 10].tolist()
    last = molecules[[-1, 0]]
    assert last.source.tolist() == [59, 0]
    assert molecules[-1].lines() == molecules[59].lines()
    assert len(molecules[[]]) == 0
    for wrong in (60, -61, [60], [True], np.zeros((2, 2), int), [0.5]):
        with pytest.raises(IndexError):
            molecules[wrong]


def test_pickles(three_text):
    db = read(BROKEN, on_error="skip")
    again = pickle.loads(pickle.dumps(db))
    assert again.to_transactions() == db.to_transactions()
    assert again.skipped == db.skipped
    assert again.source.tolist() == [0, 2]


WORD = st.text(
    st.characters(min_codepoint=33, exclude_categories=("Cs", "Cc", "Z")), min_size=1
).filter(lambda word: len(word.encode()) <= 200)


@st.composite
def graphs(draw):
    vertices = draw(st.lists(WORD, max_size=6))
    pairs = [(a, b) for b in range(len(vertices)) for a in range(b)]
    chosen = draw(st.lists(st.sampled_from(pairs), unique=True)) if pairs else []
    return vertices, sorted(chosen), [draw(WORD) for _ in chosen]


@given(st.lists(graphs(), max_size=5))
def test_round_trips(found):
    db = kestro.from_edges(
        [g[0] for g in found], [g[1] for g in found], [g[2] for g in found]
    )
    text = db.to_transactions()
    for again in (
        read(text),
        pickle.loads(pickle.dumps(db)),
        kestro.from_networkx(db.to_networkx()),
        db[:],
    ):
        assert [
            (
                list(g.vertex_labels),
                [tuple(e) for e in g.edges.tolist()],
                list(g.edge_labels),
            )
            for g in again
        ] == found


LINES = [b"t # 0", b"t", b"v 0 C", b"v 1 \xe9", b"v 1 C\0D", b"u 0 1 s", b"e 1 1 x"]
LINES += [b"v", b"t\0", b"# c", b"", b" ", b"x", b"t # -1", b"\xef\xbb\xbf"]


@given(st.lists(st.sampled_from(LINES), max_size=9), st.sampled_from([b"\n", b"\r\n"]))
def test_any_lines_are_read_or_refused(lines, end):
    data = end.join(lines)
    db = read(data, on_error="skip")
    body = data.removeprefix(b"\xef\xbb\xbf").split(end)
    records = sum(line.startswith(b"t") for line in body)
    refused = [s.record for s in db.skipped]
    assert sorted([*db.source, *refused]) == list(range(-(-1 in refused), records))
    again = io.StringIO(db.to_transactions(), newline="")
    assert kestro.read_transactions(again).to_transactions() == db.to_transactions()
    told = [
        s for s in db.skipped if re.match("the end mark|vertices or edges", s.reason)
    ]
    if len(told) < len(db.skipped):
        with pytest.raises(kestro.KestroError) as caught:
            read(data)
        assert str(caught.value).encode()
    else:
        assert read(data).to_transactions() == db.to_transactions()
        assert read(data).skipped == db.skipped


# What begins as gzip does and is not whole has no records to be skipped.
@given(st.binary(max_size=60).filter(lambda data: data[:2] != b"\x1f\x8b"))
def test_any_bytes_are_read_or_refused(data):
    skipping = read(data, on_error="skip")
    text = skipping.to_transactions()
    assert read(text.encode("utf-8", "surrogateescape")).to_transactions() == text
    try:
        db = read(data)
    except kestro.KestroError as e:
        assert skipping.skipped and str(e).encode()
    else:
        assert db.to_transactions() == text
        assert db.skipped == skipping.skipped
