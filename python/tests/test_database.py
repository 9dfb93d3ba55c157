"""Databases, whatever they were read from."""

import pickle
import re
from pathlib import Path

import kestro
import numpy as np
import pandas as pd
import pytest

ROOT = Path(__file__).parents[2]


def test_a_bool_is_no_number_of_a_graph(three):
    for wrong in (True, False, np.True_):
        with pytest.raises(TypeError, match="must be an int, not"):
            three[wrong]


def test_masks_of_pandas(three):
    for dtype in (bool, "boolean", object):
        chosen = three[pd.Series([True, False, True], dtype=dtype)]
        assert chosen.source.tolist() == [0, 2]
    assert three[pd.array([2, 0], dtype="Int64")].source.tolist() == [2, 0]
    assert len(three[:0][pd.Series([], dtype="boolean")]) == 0
    for missing in (pd.NA, None, float("nan")):
        with pytest.raises(IndexError, match=r"missing \(NA\)"):
            three[pd.Series([True, missing, True], dtype=object)]
    with pytest.raises(IndexError, match=r"missing \(NA\)"):
        three[pd.Series([True, None, True], dtype="boolean")]


def test_what_stands_beside_has_a_row_per_graph(three):
    three.classes = ["a", "b", "a"]
    three.table = pd.DataFrame({"x": [1, 2, 3]})
    assert three[[1]].classes.tolist() == ["b"]
    assert three[[1]].table["x"].tolist() == [2]
    for again in (three[:], pickle.loads(pickle.dumps(three))):
        assert again.classes.tolist() == ["a", "b", "a"]
    with pytest.raises(ValueError, match=r"classes must have 3 rows.* not 2"):
        three.classes = [1, 2]
    with pytest.raises(ValueError, match="one dimension"):
        three.classes = [[1], [2], [3]]
    with pytest.raises(ValueError, match=r"table must have 3 rows.* not 1"):
        three.table = pd.DataFrame({"x": [1]})
    with pytest.raises(TypeError, match="table must be a DataFrame"):
        three.table = [1, 2, 3]
    assert three.classes.tolist() == ["a", "b", "a"] and len(three.table) == 3
    three.classes = three.table = None
    assert three[:].classes is None and three[:].table is None


def test_numbers_in_words(three):
    assert repr(three[:1]) == "<GraphDatabase: 1 graph>"
    assert repr(three[:0]) == "<GraphDatabase: 0 graphs>"
    one = kestro.from_smiles(["C", "x"], on_error="skip")
    assert repr(one) == "<GraphDatabase: 1 molecule, 1 record skipped>"
    two = kestro.from_smiles(["C", "x", "C", "x"], on_error="skip")
    assert repr(two) == "<GraphDatabase: 2 molecules, 2 records skipped>"


def test_html(molecules):
    html = molecules._repr_html_()
    assert "60 graphs" in html and "50 more" in html
    assert html.count("<tr>") == 11 and "class" not in html
    some = molecules[[7, 3]]
    some.classes = ["<b>", "&"]
    html = some._repr_html_()
    assert html.count("<tr>") == 3 and "more" not in html
    assert "<td>0</td><td>7</td>" in html and "<td>&lt;b&gt;</td>" in html
    odd = kestro.from_edges([["<b>", "&"]], [[(0, 1, "<i>")]])
    assert "&lt;b&gt;0 &lt;i&gt; &amp;1" in odd._repr_html_()
    assert "0 graphs" in molecules[:0]._repr_html_()


def test_the_version_is_that_of_the_program():
    cmake = (ROOT / "CMakeLists.txt").read_text()
    assert (
        kestro.__version__ == re.search(r"project\(kestro VERSION ([0-9.]+)", cmake)[1]
    )
    with pytest.raises(AttributeError, match="no_such_name"):
        _ = kestro.no_such_name
