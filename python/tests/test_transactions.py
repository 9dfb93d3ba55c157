"""Reading the transaction format."""

import gzip
import io
import os
import pickle
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
    with pytest.raises(kestro.KestroError, match="invalid input line") as caught:
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
        assert "invalid input line" in skipped.reason and "line 3" in skipped.reason
        assert "1 record skipped" in repr(db)


def test_an_unreadable_line_in_front():
    db = read("x\nt # 0\nv 0 C\n", on_error="skip")
    assert labels(db) == [("C",)]
    assert [s.record for s in db.skipped] == [-1]


@pytest.mark.parametrize(
    "record",
    [
        "v 0 C\nv 1 C\nu 0 1 s\nu 1 0 s\n",
        "v 0 C\nu 0 0 s\n",
        "v 0 C\nu 0 1 s\n",
        "v 0\n",
        "v 0 C\nv 1 C\nu 0 1\n",
        "v zero C\n",
    ],
    ids=["parallel", "loop", "no vertex", "no label", "no edge label", "no number"],
)
def test_records_that_are_no_graph(record):
    text = f"t # 0\nv 0 A\nt # 1\n{record}t # 2\nv 0 B\n"
    with pytest.raises(kestro.KestroError):
        read(text)
    db = read(text, on_error="skip")
    assert labels(db) == [("A",), ("B",)]
    assert [s.record for s in db.skipped] == [1]


@pytest.mark.parametrize("text", ["t # 0\nv 0 C\n\n", "t # 0\n\nv 0 C\n", "\nt # 0\n"])
def test_blank_lines_are_refused(text):
    with pytest.raises(kestro.KestroError, match="an empty line") as caught:
        read(text)
    assert caught.value.line == text.split("\n").index("") + 1


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


def test_a_byte_of_nought_ends_a_label():
    assert labels(read(b"t # 0\nv 0 C\0D\n")) == [("C",)]


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
            (list(g.vertex_labels), [tuple(e) for e in g.edges.tolist()], list(g.edge_labels))
            for g in again
        ] == found


# What begins as gzip does and is not whole has no records to be skipped.
@given(st.binary(max_size=60).filter(lambda data: data[:2] != b"\x1f\x8b"))
def test_any_bytes_are_read_or_refused(data):
    try:
        db = read(data)
    except kestro.KestroError:
        skipping = read(data, on_error="skip")
        assert skipping.skipped
    else:
        assert len(db) >= 0
