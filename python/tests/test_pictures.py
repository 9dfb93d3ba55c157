"""Pictures show what there is: every atom, every label, an embedding."""

import re
import subprocess
import sys
from xml.etree import ElementTree

import kestro
import matplotlib
import networkx as nx
import numpy as np
import pytest
from kestro._graph_drawing import connected_layout
from rdkit import Chem

matplotlib.use("Agg")
from matplotlib import pyplot as plt

SVG = "{http://www.w3.org/2000/svg}"
HIGHLIGHT = "#ffcc66"
CALLS = [["<b>", "def & 'x'", "if"], ["def & 'x'", "<b>"]]


@pytest.fixture(scope="module")
def db(examples):
    return kestro.from_smiles(examples / "molecules.smi", on_error="skip")


@pytest.fixture(scope="module")
def result(db):
    return kestro.mine(db, min_support="20%")


@pytest.fixture(scope="module")
def smiles(examples, db):
    lines = (examples / "molecules.smi").read_text().splitlines()
    return [lines[record].split()[0] for record in db.source]


@pytest.fixture
def calls():
    vertices = [[label.replace(" ", "_") for label in labels] for labels in CALLS]
    edges = [[(0, 1, "<i>"), (1, 2, "has")], [(0, 1, "<i>")]]
    return kestro.mine(kestro.from_edges(vertices, edges), min_support=1)


@pytest.fixture
def ax():
    figure, axes = plt.subplots()
    yield axes
    plt.close(figure)


def parsed(picture):
    """Return the root of a picture; one that is not well-formed raises."""
    root = ElementTree.fromstring(picture.svg)
    assert root.tag == SVG + "svg" and root[0].tag == SVG + "title"
    assert root[0].text == picture.title
    assert root.attrib["width"] == str(picture.width)
    return root


def numbers(picture, what, colour=None):
    """Return the atoms or bonds that are drawn, or drawn in a colour."""
    found = set()
    for element in parsed(picture).iter():
        style = element.get("style", "").lower()
        if colour is None or re.search(f"(fill|stroke):{colour}", style):
            found |= set(re.findall(rf"{what}-(\d+)", element.get("class", "")))
    return {int(x) for x in found}


def bonds(picture, colour=None):
    """Return the atoms of the bonds that are drawn, or drawn in a colour."""
    found = set()
    for element in parsed(picture).iter():
        if colour is None or f"fill:{colour}" in element.get("style", "").lower():
            ends = re.fullmatch(
                r"bond-\d+ atom-(\d+) atom-(\d+)", element.get("class", "")
            )
            found |= {tuple(sorted(map(int, ends.groups())))} if ends else set()
    return found


def marked(picture):
    """Return highlighted vertices and edges of what is no molecule."""
    vertices, edges = set(), set()
    for element in parsed(picture).iter():
        if element.get("class") == "vertex highlighted":
            vertices.add(int(element.get("data-vertex")))
        if element.get("class") == "edge highlighted":
            edges.add(tuple(map(int, element.get("data-ends").split())))
    return vertices, edges


def texts(picture, kind):
    found = [x for x in parsed(picture).iter() if x.get("class") == kind]
    return sorted(x[0].text if len(x) else x.text for x in found)


def test_every_atom_and_bond_of_every_pattern_is_drawn(result):
    for pattern in result:
        picture = pattern.draw()
        assert numbers(picture, "bond") == set(range(pattern.size))
        atoms = numbers(picture, "atom")
        assert atoms == set(range(len(pattern.graph.vertex_labels)))
        assert picture.title == (
            f"Pattern {pattern.id}, in {pattern.support} of 60 graphs: "
            f"{pattern.to_smarts()}"
        )


def test_aromatic_bonds_are_dashed_and_no_hydrogen_is_drawn(result):
    dashed = result["6-0"].draw().svg.count("stroke-dasharray")
    assert set(result["6-0"].graph.edge_labels) == {":"}
    assert dashed == 6
    plain = result[[p.id for p in result if p.to_smarts() == "[#6&A]-[#7&A]"]][0]
    assert "dasharray" not in plain.draw().svg
    # The letter alone; NH2 would be three more glyphs of another atom's.
    assert plain.draw().svg.count("class='atom-1'") == 1


def test_an_aromatic_atom_without_such_a_bond_is_a_small_letter():
    result = kestro.mine(kestro.from_smiles(["c1ccccc1O", "CO"]), min_support=1)
    letters = {
        frozenset(p.graph.vertex_labels): len(
            set(re.findall(r"class='(atom-\d)' d=", p.draw().svg))
        )
        for p in result
        if p.size == 1
    }
    assert letters == {
        frozenset({"C", "O"}): 1,
        frozenset({"c", "O"}): 2,
        frozenset({"c"}): 0,
    }


def test_what_is_highlighted_is_an_embedding(result, smiles):
    """In every molecule that has the pattern, by its position."""
    molecules = [Chem.MolFromSmiles(x) for x in smiles]
    checked = 0
    for pattern in result:
        query = Chem.MolFromSmarts(pattern.to_smarts())
        for tid in pattern.tids.tolist():
            picture = pattern.highlight(tid)
            check_highlight(picture, molecules[tid], query)
            checked += 1
    assert checked == int(result.support.sum())


def check_highlight(picture, molecule, query):
    atoms = numbers(picture, "atom", HIGHLIGHT)
    matches = molecule.GetSubstructMatches(query, uniquify=False, maxMatches=10**6)
    ways = [
        {tuple(sorted((match[a], match[b]))) for a, b in bonds_of(query)}
        for match in matches
        if set(match) == atoms
    ]
    assert bonds(picture, HIGHLIGHT) in ways
    assert bonds(picture) == {tuple(sorted(x)) for x in bonds_of(molecule)}


def bonds_of(molecule):
    return [(b.GetBeginAtomIdx(), b.GetEndAtomIdx()) for b in molecule.GetBonds()]


def test_molecules_come_as_smiles_and_as_rdkits(result, smiles):
    for pattern in result[::10]:
        tid = int(pattern.tids[-1])
        molecule = Chem.MolFromSmiles(smiles[tid])
        query = Chem.MolFromSmarts(pattern.to_smarts())
        by_text, by_molecule = (pattern.highlight(x) for x in (smiles[tid], molecule))
        check_highlight(by_text, molecule, query)
        assert by_text.body == by_molecule.body
        assert by_text.title == f"Pattern {pattern.id} in {smiles[tid]}"
        assert molecule.GetNumConformers() == 0  # the caller's stays as it was


def test_embeddings_are_those_of_the_result(result, smiles):
    phenol = result["7-0"]
    tid = max(phenol.tids.tolist(), key=lambda t: len(result.embeddings(phenol, t)))
    rows = result.embeddings(phenol, tid)
    for number, row in enumerate(rows):
        picture = phenol.highlight(tid, embedding=number)
        assert numbers(picture, "atom", HIGHLIGHT) == set(row.tolist())
    with pytest.raises(IndexError, match=f"has {len(rows)} embeddings"):
        phenol.highlight(tid, embedding=len(rows))


def test_hydrogens_are_atoms_where_they_are_vertices():
    db = kestro.from_smiles(["CO", "CCO"], hydrogens=True)
    hydroxyl = next(
        p
        for p in kestro.mine(db, min_support=2)
        if sorted(p.graph.vertex_labels) == ["H", "O"]
    )
    for molecule in (0, "CO", Chem.MolFromSmiles("CO")):
        picture = hydroxyl.highlight(molecule)
        assert numbers(picture, "atom") == set(range(6))
        assert numbers(picture, "atom", HIGHLIGHT) == {1, 5}


def test_charges_are_drawn_where_labels_tell_them():
    ions = ["CC(=O)[O-]", "CC[O-]"]
    plain, charged = (
        kestro.mine(kestro.from_smiles(ions, charge=told), min_support=2)[-1]
        for told in (False, True)
    )
    assert charged.draw().svg.count("class='atom") > plain.draw().svg.count(
        "class='atom"
    )


def test_what_cannot_be_highlighted(result, db):
    pattern = result["6-0"]
    with pytest.raises(kestro.KestroError, match="does not contain pattern 6-0"):
        pattern.highlight("CCO")
    with pytest.raises(kestro.KestroError, match="C\\(C"):
        pattern.highlight("C(C")
    with pytest.raises(kestro.KestroError, match="no molecule"):
        pattern.highlight(None)
    with pytest.raises(IndexError):
        pattern.highlight(60)
    with pytest.raises(ValueError):
        pattern.highlight(int(pattern.tids[0]), embedding=-1)
    for wrong in (3, (3.5, 2), (1, 2, 3)):
        with pytest.raises(TypeError, match="size"):
            pattern.draw(size=wrong)
    with pytest.raises(ValueError, match="20 pixels"):
        pattern.draw(size=(300, 2))


def test_a_result_that_was_read_without_its_database(result, tmp_path, smiles):
    result.to_jsonl(tmp_path / "r.jsonl")
    pattern = kestro.read_result(tmp_path / "r.jsonl")["6-0"]
    assert pattern.draw() == result["6-0"].draw()
    with pytest.raises(TypeError, match=r"a molecule, as SMILES .* no database"):
        pattern.highlight(3)
    tid = int(pattern.tids[0])
    assert "6-0" in pattern.highlight(smiles[tid]).title


def test_labels_stay_text(calls):
    pattern = calls[-1]
    picture = pattern.draw()
    assert texts(picture, "vertex-label") == sorted(pattern.graph.vertex_labels)
    assert texts(picture, "edge-label") == sorted(pattern.graph.edge_labels)
    assert "<b>" not in picture.svg and "<i>" not in picture.svg
    cells = calls.draw_grid()
    assert texts(cells, "vertex-label").count("<b>") == sum(
        p.graph.vertex_labels.count("<b>") for p in calls
    )


def test_labels_that_xml_cannot_say():
    db = kestro.from_edges([["a\uffff", "b\udce9"]], [[(0, 1, "x" * 40)]])
    picture = kestro.mine(db, min_support=1)[0].draw()
    assert texts(picture, "vertex-label") == ["a\\xffff", "b\\xe9"]
    # Cut short, with the whole in a title.
    assert texts(picture, "edge-label") == ["x" * 40]
    assert "x" * 17 + "…" in picture.svg
    picture.svg.encode()


def test_highlights_of_graphs_are_embeddings(molecules):
    result = kestro.mine(molecules, min_support="40%", max_size=3)
    for pattern in result:
        tid = int(pattern.tids[0])
        row = result.embeddings(pattern, tid)[0]
        vertices, edges = marked(pattern.highlight(tid))
        assert vertices == set(row.tolist())
        ends = row[pattern.graph.edges].tolist()
        assert edges == {(min(e), max(e)) for e in ends}
        assert edges <= set(map(tuple, molecules[tid].edges.tolist()))


def test_graphs_that_were_read_without_their_database(calls, tmp_path):
    calls.to_jsonl(tmp_path / "r.jsonl")
    pattern = kestro.read_result(tmp_path / "r.jsonl")[-1]
    with pytest.raises(
        TypeError, match=r"a Graph or one of NetworkX's: .* no database"
    ):
        pattern.highlight(3)
    assert pattern.draw() == calls[-1].draw()


def test_graphs_come_as_ours_and_as_networkxs(molecules):
    result = kestro.mine(molecules, min_support="50%", max_size=3)
    pattern = result[-1]
    g = molecules[int(pattern.tids[0])]
    assert pattern.highlight(g) == pattern.highlight(g.to_networkx())
    with pytest.raises(TypeError, match="none of molecules"):
        pattern.highlight("CCO")
    with pytest.raises(kestro.KestroError, match="label"):
        pattern.highlight(nx.path_graph(3))


def test_of_a_large_graph_what_lies_near_is_drawn():
    g = nx.path_graph(200)
    nx.set_node_attributes(g, {v: "end" if v == 150 else "v" for v in g}, "label")
    nx.set_edge_attributes(g, "-", "label")
    pattern = next(
        p
        for p in kestro.mine(kestro.from_networkx([g]), min_support=1, max_size=1)
        if "end" in p.graph.vertex_labels
    )
    picture = pattern.highlight(0)
    assert picture.title.endswith("60 of 200 vertices, those nearest")
    drawn = [
        int(x.get("data-vertex"))
        for x in parsed(picture).iter()
        if x.get("data-vertex")
    ]
    # The embedding and what is at most 29 edges away.
    assert len(drawn) == 60 and drawn == list(range(drawn[0], drawn[0] + 60))
    assert {150} < marked(picture)[0] <= set(drawn)


def test_components_do_not_lie_on_each_other():
    parts = [nx.cycle_graph(5), nx.star_graph(6), nx.empty_graph(1), nx.path_graph(4)]
    g = nx.disjoint_union_all(parts)
    nx.set_node_attributes(g, "v", "label")
    nx.set_edge_attributes(g, "-", "label")
    pattern = kestro.mine(kestro.from_networkx([g]), min_support=1, max_size=2)[0]
    boxes = [
        tuple(float(x[0].get(k)) for k in ("x", "y", "width", "height"))
        for x in parsed(pattern.highlight(0)).iter()
        if x.get("data-vertex")
    ]
    assert len(boxes) == len(g)
    for i, (x, y, w, h) in enumerate(boxes):
        for x2, y2, w2, h2 in boxes[:i]:
            assert x + w < x2 or x2 + w2 < x or y + h < y2 or y2 + h2 < y


def test_grids(result):
    picture = result.draw_grid(5, columns=2, size=(120, 90))
    cells = parsed(picture).findall(SVG + "svg")
    places = [(x.get("x"), x.get("y")) for x in cells]
    assert len(set(places)) == 5
    assert [len({x for x, _ in places}), len({y for _, y in places})] == [2, 3]
    captions = [x.text for x in parsed(picture).findall(SVG + "text")]
    assert captions == [f"{p.id}: {p.support} of 60" for p in result[:5]]
    chosen = result.draw_grid(["6-0", "7-0"])
    assert chosen == result[["6-0", "7-0"]].draw_grid()
    two = [result["7-0"], result["6-0"]]
    for patterns in (two, tuple(two), iter(two), ["7-0", "6-0"]):
        assert result.draw_grid(patterns) == result[["7-0", "6-0"]].draw_grid()
    assert result.draw_grid(result[:3]) == result.draw_grid(3)
    alone = result.draw_grid(["6-0"])
    assert result.draw_grid("6-0") == result.draw_grid(result["6-0"]) == alone
    other = kestro.mine(kestro.from_smiles(["CO"]), min_support=1)
    with pytest.raises(kestro.KestroError, match="of another run"):
        result.draw_grid(list(other))
    place = [p.id for p in result].index("6-0")
    for mixed in ([result["7-0"], "6-0"], ["7-0", two[1]], (two[0], place)):
        assert result.draw_grid(mixed) == result.draw_grid(two)
    with pytest.raises(TypeError, match="neither a pattern nor an id"):
        result.draw_grid([result["7-0"], None])
    for nothing in ([], (), iter([])):
        with pytest.raises(ValueError, match="there is no pattern to draw"):
            result.draw_grid(nothing)
    assert parsed(result.draw_grid(0)) is not None
    assert parsed(result[:0].draw_grid()) is not None
    with pytest.raises(ValueError):
        result.draw_grid(columns=0)


def test_saved_and_shown(result, tmp_path):
    picture = result["6-0"].draw(size=(300, 200))
    picture.save(tmp_path / "p.svg")
    assert (tmp_path / "p.svg").read_text() == picture.svg == picture._repr_svg_()
    assert repr(picture).endswith(", 300 x 200>")
    assert " id=" not in picture.svg  # several stand in one page
    with pytest.raises(ValueError, match=r"\.svg"):
        picture.save(tmp_path / "p.png")
    with pytest.raises(OSError):
        picture.save(tmp_path / "nowhere" / "p.svg")


PRINT = """
import kestro
db = kestro.from_smiles("examples/molecules.smi", on_error="skip")
r = kestro.mine(db, min_support="30%")
print(r.draw_grid(40).svg, r["6-0"].highlight(int(r["6-0"].tids[0])).svg)
g = kestro.mine(kestro.read_transactions("examples/molecules.txt"), min_support="50%")
print(g.draw_grid(12).svg, g["6-0"].highlight(int(g["6-0"].tids[0])).svg)
"""


def test_the_same_text_in_every_process(examples):
    first, second = (
        subprocess.run(
            [sys.executable, "-c", PRINT],
            cwd=examples.parent,
            check=True,
            capture_output=True,
            env={"PYTHONHASHSEED": seed, "PYTHONPATH": ":".join(sys.path)},
        ).stdout
        for seed in ("1", "2")
    )
    assert first == second and first.count(b"</svg>") > 50


@pytest.mark.parametrize(
    ("missing", "code", "extra"),
    [
        ("rdkit", "r[0].draw()", "rdkit"),
        ("rdkit", "r[0].highlight('CO')", "rdkit"),
        ("rdkit", "r.draw_grid()", "rdkit"),
        ("matplotlib", "r.plot_sizes()", "pictures"),
        ("matplotlib", "r.plot_scores([0, 1])", "pictures"),
    ],
)
def test_without_an_extra(missing, code, extra, monkeypatch):
    r = kestro.mine(kestro.from_smiles(["CO", "CCO"]), min_support=1)
    monkeypatch.setitem(sys.modules, missing, None)
    with pytest.raises(ImportError, match=rf"pip install 'kestro\[{extra}\]'"):
        eval(code, {"r": r})


def test_graphs_are_drawn_without_rdkit(calls, monkeypatch):
    monkeypatch.setitem(sys.modules, "rdkit", None)
    assert "<svg" in calls[0].draw().svg


def lines(ax):
    return {
        x.get_label(): dict(
            zip(x.get_xdata().tolist(), x.get_ydata().tolist(), strict=True)
        )
        for x in ax.get_lines()
        if not x.get_label().startswith("_")
    }


def test_plot_of_sizes(result, ax):
    assert result.plot_sizes(ax) is ax
    sizes, counts = np.unique(result.size, return_counts=True)
    frequent = dict(zip(sizes.tolist(), counts.tolist(), strict=True))
    summary = result._patterns.summary
    candidates = {i: n for i, n in enumerate(summary.candidates) if n}
    assert lines(ax) == {"candidates": candidates, "frequent": frequent}
    assert all(candidates[size] >= frequent.get(size, 0) for size in candidates)


def test_plot_of_sizes_of_a_selection(result, ax):
    few = result[result.size <= 2]
    few.plot_sizes(ax)
    shown = lines(ax)
    assert shown["in this result"] == {1: 9, 2: 15}
    assert sum(shown["frequent"].values()) == len(result)


def test_plot_of_sizes_of_nothing(ax):
    kestro.mine(kestro.from_smiles(["C"]), min_support=1).plot_sizes(ax)
    assert lines(ax)["frequent"] == {}


def marks(ax):
    """Return the marks by kind: filled or not, and their form."""
    return {x.get_gid(): np.asarray(x.get_offsets()) for x in ax.collections}


def test_volcano_shows_the_scores(result, ax):
    y = np.array([1] * 20 + [0] * 40)
    assert result.plot_scores(y, ax) is ax
    fisher = result.score(y, method="fisher", correction="bh")
    with np.errstate(divide="ignore"):
        ratio = np.log2(result.score(y, method="odds_ratio")["score"].to_numpy())
    shown = marks(ax)
    assert sum(map(len, shown.values())) == len(result)
    end = 1.2 * np.abs(ratio[np.isfinite(ratio)]).max()
    forms = {"o": np.isfinite(ratio), ">": ratio == np.inf, "<": ratio == -np.inf}
    for prefix, which in (("", True), ("not ", False)):
        chosen = (fisher["significant"] == which).to_numpy()
        for form, here in forms.items():
            rows = chosen & here
            wanted = np.stack(
                [np.clip(ratio[rows], -end, end), fisher["score"][rows]], axis=1
            )
            found = shown.get(f"{prefix}significant {form}", np.zeros((0, 2)))
            np.testing.assert_allclose(found, wanted)
    assert len(shown["significant >"])  # infinite ones are there
    assert -ax.get_xlim()[0] == ax.get_xlim()[1] > end
    best = fisher.loc[fisher["score"].idxmax(), "id"]
    names = [x.get_text() for x in ax.texts]
    assert names[0] == best and len(names) == 5


def test_volcano_of_a_pattern_in_all_graphs(ax):
    result = kestro.mine(kestro.from_smiles(["CO", "CO", "CO"]), min_support=1)
    result.plot_scores([0, 0, 1], ax, correction=None)
    ((where, (x, y)),) = [(k, v[0]) for k, v in marks(ax).items() if len(v)]
    assert (where, x, y) == ("not significant o", 0.0, 0.0)


def test_volcano_of_several_classes(result, ax):
    y = np.arange(60) % 3
    with pytest.raises(kestro.KestroError, match=r"of is one of \[0, 1, 2\]"):
        result.plot_scores(y, ax)
    with pytest.raises(kestro.KestroError, match="not 7"):
        result.plot_scores(y, ax, of=7)
    result.plot_scores(y, ax, of=1)
    fisher = result.score(y, method="fisher")
    wanted = fisher[fisher["class"] == 1]["score"].to_numpy()
    found = np.concatenate([m[:, 1] for m in marks(ax).values()])
    np.testing.assert_allclose(np.sort(found), np.sort(wanted))
    assert "class 1 to others" in ax.get_xlabel()


def test_a_plot_makes_its_own_figure(result):
    ax = result.plot_sizes()
    assert ax.get_xlabel() == "size (edges)"
    plt.close(ax.figure)


def test_nothing_of_a_plot_is_cut_off(result):
    for ax in (result.plot_sizes(), result.plot_scores([1] * 20 + [0] * 40)):
        ax.figure.canvas.draw()
        own, room = ax.get_tightbbox(), ax.figure.bbox
        assert room.x0 <= own.x0 < own.x1 <= room.x1
        assert room.y0 <= own.y0 < own.y1 <= room.y1
        plt.close(ax.figure)


def test_classes_of_the_database(ax):
    db = kestro.from_smiles(["CCO", "CCO", "CCN", "CN"])
    result = kestro.mine(db, min_support=1)
    for call in (result.score, result.plot_scores):
        with pytest.raises(ValueError, match="the database has none"):
            call()
    db.classes = ["a", "a", "b", "b"]
    y = np.array([0, 0, 1, 1])
    assert result.score().score.tolist() == result.score(y).score.tolist()
    best = result.top(2, by="fisher")
    assert [p.id for p in best] == [p.id for p in result.top(2, by="fisher", y=y)]
    result.plot_scores(ax=ax)
    assert "class b to others" in ax.get_xlabel()


def test_planar_patterns_are_drawn_without_crossings(molecules):
    """Started from any circle, a ring of six may end as an eight."""
    result = kestro.mine(molecules, min_support="20%", min_size=6)
    for pattern in result:
        lines = re.findall(
            r'data-ends="(\d+) (\d+)" x1="(.*?)" y1="(.*?)" x2="(.*?)" y2="(.*?)"',
            pattern.draw().svg,
        )
        assert len(lines) == pattern.size
        for i, (a, b, *first) in enumerate(lines):
            for c, d, *second in lines[:i]:
                if {a, b}.isdisjoint({c, d}):
                    assert not cross(*map(float, first), *map(float, second))


def test_a_second_start_only_where_the_first_one_crosses(monkeypatch):
    """Started from the circle, a cube's edges cross, and those of a ring do not."""
    found = []

    def layout(g, pos):
        found.append(layout_of(g, pos=pos))
        return found[-1]

    layout_of = nx.kamada_kawai_layout
    monkeypatch.setattr(nx, "kamada_kawai_layout", layout)
    for g, starts in ((nx.cycle_graph(6), 1), (nx.cubical_graph(), 2)):
        found.clear()
        ends = np.array(g.edges)
        edges = tuple(map(tuple, ends.tolist()))
        places = connected_layout.__wrapped__(len(g), edges)  # none that is kept
        assert len(found) == starts
        layouts = [np.array([at[v] for v in range(len(g))]) for at in found]
        counts = [crossings(x, ends) for x in layouts]
        assert (counts[0] == 0) == (starts == 1)
        assert crossings(places, ends) == min(counts)


def crossings(places, ends):
    return sum(
        {a, b}.isdisjoint({c, d})
        and cross(*places[a], *places[b], *places[c], *places[d])
        for i, (a, b) in enumerate(ends.tolist())
        for c, d in ends[:i].tolist()
    )


def cross(x1, y1, x2, y2, x3, y3, x4, y4):
    def side(ax, ay, bx, by, cx, cy):
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax) > 0

    return side(x1, y1, x2, y2, x3, y3) != side(x1, y1, x2, y2, x4, y4) and (
        side(x3, y3, x4, y4, x1, y1) != side(x3, y3, x4, y4, x2, y2)
    )
