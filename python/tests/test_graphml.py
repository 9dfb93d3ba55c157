"""GraphML, read and written."""

import io
from xml.etree import ElementTree

import kestro
import networkx as nx
import pytest
from hypothesis import given
from hypothesis import strategies as st
from kestro._graphml import graphml_lines

GRAPHML = """<?xml version="1.0"?>
<graphml xmlns="http://graphml.graphdrawing.org/xmlns">
<key id="v" for="node" attr.name="label" attr.type="string"/>
<key id="e" for="edge" attr.name="label" attr.type="string">
<default>s</default></key>
<graph edgedefault="undirected"><node id="a"><data key="v">C</data></node>
<node id="b"><data key="v"> O </data></node>
<edge source="b" target="a"><data key="e">d</data></edge></graph>
<graph edgedefault="undirected">{}</graph>
<graph edgedefault="undirected"><node id="a"><data key="v">N</data></node></graph>
</graphml>
"""
NODE = '<node id="{}"><data key="v">C</data></node>'
TWO = NODE.format("x") + NODE.format("y")


def graphml(middle, **arguments):
    return kestro.from_graphml(io.StringIO(GRAPHML.format(middle)), **arguments)


def test_graphml():
    db = graphml(TWO + '<edge source="x" target="y"/>')
    assert [g.lines() for g in db] == [
        "v 0 C\nv 1 O\nu 0 1 d\n",
        "v 0 C\nv 1 C\nu 0 1 s\n",
        "v 0 N\n",
    ]


@pytest.mark.parametrize(
    ("middle", "reason"),
    [
        (TWO + '<edge source="x" target="x"/>', "itself"),
        (TWO + '<edge source="x" target="y"/>' * 2, "edge already"),
        (TWO + '<edge source="x" target="z"/>', "no node 'z'"),
        (TWO + '<edge source="x" target="y" directed="true"/>', "directed"),
        (TWO + "<hyperedge/>", "hyperedge"),
        (NODE.format("x") * 2, "two nodes"),
        ('<node id="x"/>', "no attribute 'label'"),
        ('<node id="x"><data key="v"/></node>', "empty"),
        ('<node id="x"><data key="v">a b</data></node>', "blank"),
        ('<node id="x"><graph/></node>', "holds a graph"),
    ],
)
def test_what_is_no_graph_of_graphml(middle, reason):
    with pytest.raises(kestro.KestroError, match=f"record 1: .*{reason}"):
        graphml(middle)
    db = graphml(middle, on_error="skip")
    assert db.source.tolist() == [0, 2] and db.skipped[0].record == 1


def test_no_graphml():
    for text, reason in (("<graphml>", "no XML"), ("<a/>", "no GraphML"), ("", "XML")):
        with pytest.raises(kestro.KestroError, match=reason):
            kestro.from_graphml(io.StringIO(text), on_error="skip")


def test_graphml_of_networkx(tmp_path, molecules):
    for i in range(5):
        file = tmp_path / f"{i}.graphml"
        nx.write_graphml(molecules[i].to_networkx(), file)
        assert kestro.from_graphml(file)[0].lines() == molecules[i].lines()


@given(st.text(alphabet='<>/"=graphmlnodeedgekeyid sourcetarget', max_size=80))
def test_any_xml_is_read_or_refused(inner):
    text = f"<graphml><graph>{inner}</graph></graphml>"
    try:
        db = kestro.from_graphml(io.StringIO(text), on_error="skip")
    except kestro.KestroError:
        return
    assert len(db) + len(db.skipped) == 1


def test_the_encoding_of_text_and_of_bytes():
    text = '<?xml version="1.0" encoding="latin-1"?>\n' + GRAPHML[22:].format("")
    text = text.replace(">C<", ">é<")
    for source in (io.StringIO(text), io.BytesIO(text.encode("latin-1"))):
        assert kestro.from_graphml(source)[0].vertex_labels == ("é", "O")
    unknown = io.BytesIO(text.encode("latin-1").replace(b"latin-1", b"none-such"))
    with pytest.raises(kestro.KestroError, match=r"no XML: .*line 1"):
        kestro.from_graphml(unknown)


# Characters of XML 1.0 that labels may hold.
CHARACTERS = st.one_of(
    st.characters(
        codec="utf-8", exclude_characters="\x7f\ufffe\uffff", min_codepoint=33
    ),
    st.sampled_from(
        "<>&'\"]\x80\x85\xa0\xad\u200b\u2028\u202e\u3000\ufdd0\ufffd\U0010ffff"
    ),
)
LABELS = st.text(CHARACTERS, min_size=1, max_size=6)


def written(db, name=None):
    return "".join(graphml_lines(db, name)).encode()


@given(st.lists(LABELS, min_size=2, max_size=4), LABELS)
def test_every_character_of_xml_is_written_and_read(vertices, edge):
    db = kestro.from_edges([vertices, []], [[(0, 1, edge)], []])
    back = kestro.from_graphml(io.BytesIO(written(db)))
    assert [g.lines() for g in back] == [g.lines() for g in db]
    theirs = ElementTree.fromstring(written(db)).itertext()
    assert [x for x in theirs if x.strip(" \n")] == [*vertices, edge]


def test_every_character_of_labels_is_written_or_refused():
    """All of Unicode: what labels may hold besides is what XML has no character for."""
    refused = ["\ufffe", "\uffff", *map(chr, range(0xDC80, 0xDD00))]
    # Neither blanks and control characters, nor halves of a character.
    blocks = [(33, 0x7F), (0x80, 0xD800), (0xE000, 0xFFFE), (0x10000, 0x110000)]
    kept = "".join(chr(c) for block in blocks for c in range(*block))
    labels = [kept[i : i + 64] for i in range(0, len(kept), 64)]
    db = kestro.from_edges([labels], [[]])
    assert kestro.from_graphml(io.BytesIO(written(db)))[0].lines() == db[0].lines()
    for label in refused:
        one = kestro.from_edges([["A" + label]], [[]])
        with pytest.raises(kestro.KestroError, match=r"XML cannot hold .* \(a\.txt\)"):
            graphml_lines(one, "a.txt")


def test_white_space_of_xml_around_labels():
    text = GRAPHML.format("").replace(">C<", ">\r\n\t\xa0C&#13;<")
    assert kestro.from_graphml(io.StringIO(text))[0].vertex_labels == ("\xa0C", "O")


def test_an_error_tells_the_file(tmp_path):
    file = tmp_path / "a.graphml"
    file.write_text(GRAPHML.format('<node id="x"/>'))
    with pytest.raises(kestro.KestroError, match="record 1: ") as caught:
        kestro.from_graphml(file)
    assert caught.value.path == str(file)
