"""The page of a report, as a browser shows it."""

import csv
import json
import re
import shutil
from importlib.resources import files
from pathlib import Path

import kestro
import numpy as np
import pytest
from playwright.sync_api import sync_playwright
from rdkit import Chem

HOSTILE = "</script><img/src=x/onerror=document.body.innerHTML=1>"
COMMENT = "<!--<script>"


@pytest.fixture(scope="module")
def browser():
    chromium = shutil.which("chromium")
    assert chromium, "Debian's package chromium is missing"
    with sync_playwright() as playwright:
        browser = playwright.chromium.launch(
            executable_path=chromium, args=["--no-sandbox"]
        )
        yield browser
        browser.close()


@pytest.fixture(scope="module")
def result(examples):
    db = kestro.from_smiles(examples / "molecules.smi", on_error="skip")
    db.classes = np.array(["acid"] * 20 + ["other"] * 40)
    return kestro.mine(db, min_support="10%", max_size=6)


@pytest.fixture(scope="module")
def molecules_page(result, tmp_path_factory):
    path = tmp_path_factory.mktemp("report") / "molecules.html"
    result.report(path, title="Medicines & <b>more</b>", stored_drawings=60)
    return path


@pytest.fixture(scope="module")
def graphs_page(tmp_path_factory):
    edges = [(0, 1, COMMENT), (1, 2, "&amp;")]
    db = kestro.from_edges([[HOSTILE, "a<b", '"']] * 3, [edges] * 3)
    path = tmp_path_factory.mktemp("report") / "graphs.html"
    kestro.mine(db, min_support=2).report(path, title=HOSTILE, stored_drawings=2)
    return path


@pytest.fixture
def open_page(browser):
    """Open pages; in the end, none has said or asked for anything."""
    told, opened = [], []

    def open_one(path, address="", **context):
        opened.append(browser.new_context(**context))
        page = opened[-1].new_page()
        page.on("console", lambda message: told.append(message.text))
        page.on("pageerror", lambda error: told.append(str(error)))
        page.on("request", lambda request: told.append(request.url))
        page.goto(f"{path.as_uri()}{address}")
        page.wait_for_selector("html[data-ready]", state="attached")
        assert told.pop(0) == f"{path.as_uri()}"
        return page

    yield open_one
    for context in opened:
        context.close()
    assert told == []


def data_of(path):
    text = path.read_text("utf-8")
    return json.loads(re.search(r'id="data">(.*?)</script>', text, re.DOTALL)[1])


def column(page, number):
    cells = page.locator(f"#patterns tbody td:nth-child({number})")
    return cells.all_inner_texts()


def counted(page, start):
    """Wait until the count of the selection begins like this."""
    page.wait_for_function(
        "start => document.querySelector('#count').innerText.startsWith(start)",
        arg=start,
    )


def looked_at(page, before):
    """Wait until another pattern than the one before is shown; return its id."""
    page.wait_for_function(
        "before => !document.querySelector('#details-title').innerText.endsWith("
        "' ' + before)",
        arg=before,
    )
    return page.locator("#details-title").inner_text().removeprefix("Pattern ")


def selected(page):
    """Return the ids of the selection, of all pages of the table."""
    ids = column(page, 2)
    while page.locator("#next").is_enabled():
        page.click("#next")
        ids += column(page, 2)
    return ids


def test_sorting_and_the_whole_table(open_page, molecules_page, result):
    page = open_page(molecules_page)
    page.click("th button[data-key=id]")
    assert page.locator("th[aria-sort=ascending]").inner_text().startswith("Id")
    assert selected(page) == [p.id for p in result]
    page.click("th button[data-key=support]")
    supports = [int(text.split()[0]) for text in column(page, 4)]
    assert supports == sorted(result.support.tolist(), reverse=True)[: len(supports)]
    page.click("th button[data-key=support]")
    assert page.locator("th[aria-sort=ascending]").inner_text().startswith("Support")
    assert int(column(page, 4)[0].split()[0]) == result.support.min()


def test_filters(open_page, molecules_page, result):
    page = open_page(molecules_page)
    page.click("th button[data-key=id]")
    page.fill("#size-from", "2")
    page.fill("#size-to", "3")
    page.fill("#support-to", "20")
    page.fill("#by-label", "N, =")
    wanted = [
        p.id
        for p in result
        if p.size in (2, 3)
        and p.support <= 20
        and "N" in p.graph.vertex_labels
        and "=" in p.graph.edge_labels
    ]
    assert wanted
    assert selected(page) == wanted
    told = page.locator("#count").inner_text()
    assert told == f"{len(wanted)} of {len(result)} patterns selected"
    page.click("text=Show all")
    counted(page, f"{len(result)} of")
    page.fill("#by-id", "3-2")
    assert selected(page) == ["3-2"]
    page.fill("#by-id", "")
    page.fill("#score-from", "3")
    page.select_option("#direction", "less")
    scores = result.score(result.db.classes, method="fisher")
    keep = (scores.score >= 3) & (scores.rate_inside < scores.rate_outside)
    assert keep.any()
    assert selected(page) == scores.id[keep].tolist()


def test_kinds_are_told_where_they_are_known(open_page, molecules_page, result):
    page = open_page(molecules_page)
    page.click("th button[data-key=id]")
    kinds = {p.id: p for p in result}
    told = dict(zip(column(page, 2), column(page, 7), strict=True))
    page.click("th button[data-key=id]")
    told |= dict(zip(column(page, 2), column(page, 7), strict=True))
    for name, kind in told.items():
        p = kinds[name]
        wanted = "maximal" if p.maximal else "closed" if p.closed else "not closed"
        assert kind == ("" if p.closed is None else wanted)
    assert {"", "closed", "not closed"} <= set(told.values())
    assert "same support" in page.locator("#kinds").inner_text()


def test_axes_of_counts_have_whole_numbers(open_page, tmp_path, result):
    small = kestro.mine(result.db, min_support="45%", max_size=2)
    small.report(tmp_path / "small.html", with_structures=False)
    page = open_page(tmp_path / "small.html")
    ticks = page.locator("#sizes .tick text, #supports .tick text").all_text_contents()
    assert len(ticks) > 6
    assert [x for x in ticks if not re.fullmatch(r"\d{1,3}(,\d{3})?", x)] == []


def test_patterns_that_contain_a_smarts(open_page, molecules_page, result):
    page = open_page(molecules_page)
    page.click("th button[data-key=id]")
    page.fill("#by-smarts", "[c]~[N,O]")
    count = page.locator("#count")
    page.wait_for_function(
        "before => document.querySelector('#count').innerText !== before",
        arg=count.inner_text(),
    )
    graphs = [p.graph for p in result]
    wanted = [
        p.id
        for p, g in zip(result, graphs, strict=True)
        if any(
            {g.vertex_labels[a], g.vertex_labels[b]} in ({"c", "N"}, {"c", "O"})
            for a, b in g.edges.tolist()
        )
    ]
    assert wanted
    assert selected(page) == wanted
    page.fill("#by-smarts", "[c")
    page.wait_for_selector("text=This is no SMARTS")
    assert count.inner_text().startswith(f"{len(wanted)} of")
    page.fill("#by-smarts", "")
    counted(page, f"{len(result)} of")


@pytest.fixture(scope="module")
def charged(examples):
    """A result whose labels tell charges."""
    db = kestro.from_smiles(examples / "molecules.smi", on_error="skip", charge=True)
    return kestro.mine(db, min_support=1, max_size=2)


@pytest.mark.parametrize("tells_charges", [False, True])
def test_it_says_that_smarts_speak_of_the_fragment(
    open_page, molecules_page, charged, tmp_path, tells_charges
):
    path = tmp_path / "charged.html" if tells_charges else molecules_page
    if tells_charges:
        charged.report(path, max_patterns=20)
    page = open_page(path)
    hint = page.locator("#smarts-hint")
    assert "not of the molecules" in hint.inner_text()
    assert "isotopes" in hint.inner_text()
    assert ("charges" in hint.inner_text()) == (not tells_charges)
    assert "smarts-hint" in page.locator("#by-smarts").get_attribute("aria-describedby")

    def is_emphasised(smarts):
        page.fill("#by-smarts", smarts)
        # The search starts once typing has paused.
        page.wait_for_function("text => searched === text", arg=smarts)
        return hint.evaluate("e => e.classList.contains('note')")

    page.evaluate(
        "() => { window.searched = null;"
        "const own = document.querySelector('#by-smarts');"
        "new MutationObserver(() => { searched = own.value; }).observe("
        "document.querySelector('#smarts-told'), { childList: true }); }"
    )
    asks = ["[NX3;H2]", "[D3]", "[v4]", "[#6;r6]", "C@C"]
    asks += ["[2H]", "[13C]", "[C;!13c]", "[$(C-[15N])]"]
    says_nothing = ["[#6]-O", "[Rh][Hg][H][Br][Cr][Xe]CCl", "[$(C-N)]", "[#7,#8]"]
    charges = ["[N+](=O)[O-]", "[Hg+2]", "[Fe++]", "[H+]", "[#7&-1]", "[$(C-[N+])]"]
    (says_nothing if tells_charges else asks).extend(charges)
    assert [x for x in asks if not is_emphasised(x)] == []
    assert [x for x in says_nothing if is_emphasised(x)] == []
    assert is_emphasised("[R]")
    page.click("text=Show all")
    page.wait_for_selector("#smarts-hint:not(.note)")


def test_charges_are_found_where_labels_tell_them(open_page, charged, tmp_path):
    charged.report(tmp_path / "charged.html")
    page = open_page(tmp_path / "charged.html")
    page.click("th button[data-key=id]")
    page.fill("#by-smarts", "[N+](=O)[O-]")
    wanted = [
        p.id
        for p in charged
        if p.size == 2
        and set(p.graph.vertex_labels) == {"N+1", "O", "O-1"}
        and p.graph.vertex_labels[np.bincount(p.graph.edges.ravel()).argmax()] == "N+1"
    ]
    assert len(wanted) == 1
    counted(page, "1 of")
    assert selected(page) == wanted


def test_every_example_is_an_embedding(molecules_page, result):
    data = data_of(molecules_page)
    columns = data["patterns"]
    assert columns["id"] == [p.id for p in result]
    checked = 0
    for pattern, shown in zip(result, columns["examples"], strict=True):
        assert len(shown) == min(3, pattern.support)
        g = pattern.graph
        for place, vertices in shown:
            graph = data["examples"][place]
            assert graph["tid"] in pattern.tids
            whole = result.db[graph["tid"]]
            own = [graph["order"][v] for v in vertices]  # vertices in the database
            assert len(set(own)) == len(g.vertex_labels)
            assert [whole.vertex_labels[v] for v in own] == list(g.vertex_labels)
            edges = {
                frozenset(ends): label
                for ends, label in zip(
                    whole.edges.tolist(), whole.edge_labels, strict=True
                )
            }
            for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True):
                assert edges[frozenset((own[a], own[b]))] == label
            checked += 1
    assert checked > 300


def test_examples_are_numbered_as_rdkit_does(molecules_page, result):
    data = data_of(molecules_page)
    for graph in data["examples"]:
        smiles = re.sub(r"\[[^]]*\]", lambda x: data["atoms"][x[0]], graph["smarts"])
        molecule = Chem.MolFromSmiles(smiles, sanitize=False)
        bonds = [
            sorted((b.GetBeginAtomIdx(), b.GetEndAtomIdx()))
            for b in molecule.GetBonds()
        ]
        ends = np.array(graph["edges"]).reshape(-1, 3)[:, :2].tolist()
        assert ends == bonds
        labels = [data["vertex_labels"][x] for x in graph["vertices"]]
        atoms = [
            a.GetSymbol().lower() if a.GetIsAromatic() else a.GetSymbol()
            for a in molecule.GetAtoms()
        ]
        assert labels == atoms


def test_marked_atoms_are_those_of_the_embedding(open_page, molecules_page, result):
    pattern = result["4-1"]
    page = open_page(molecules_page, "#4-1")
    page.wait_for_selector("#examples svg ellipse, #examples svg path")
    assert page.locator("#examples figure").count() == 3
    for span in page.locator("#examples span[data-vertices]").all():
        wanted = {f"atom-{v}" for v in span.get_attribute("data-vertices").split()}
        marks = span.evaluate(
            "e => [...e.querySelectorAll('ellipse')].map(x => x.getAttribute('class'))"
        )
        assert set(marks) == wanted
        assert len(wanted) == len(pattern.graph.vertex_labels)


@pytest.mark.parametrize("address", ["#%", "#%E0", "#99-9"])
def test_an_address_that_names_no_pattern(open_page, graphs_page, address):
    page = open_page(graphs_page, address)
    with page.expect_download() as download:
        page.click("button:has-text('CSV')")
    assert download.value.path().read_text().startswith("id,")


def test_walk_along_the_lattice(open_page, molecules_page, result):
    page = open_page(molecules_page, "#3-4")
    pattern = result["3-4"]

    def relatives(kind):
        while page.locator(f"#lattice button:has-text('{kind}')").count():
            page.click(f"#lattice button:has-text('{kind}')")
        cards = page.locator(f"#lattice .{kind} a")
        return {card.get_attribute("data-id") for card in cards.all()}

    assert relatives("parents") == set(pattern.parents)
    assert relatives("children") == set(pattern.children) != set()
    page.locator("#lattice .children a").first.click()
    child = looked_at(page, "3-4")
    assert child in pattern.children
    page.focus("#details")
    page.keyboard.press("ArrowUp")
    page.keyboard.press("Enter")
    parent = looked_at(page, child)
    assert parent in result[child].parents
    page.go_back()
    assert looked_at(page, parent) == child


def test_the_selection_as_files(open_page, molecules_page, result):
    page = open_page(molecules_page)
    page.click("th button[data-key=id]")
    page.fill("#size-from", "5")
    wanted = [p for p in result if p.size >= 5]
    with page.expect_download() as download:
        page.click("#export-csv")
    with open(download.value.path(), newline="") as file:
        rows = list(csv.DictReader(file))
    assert [row["id"] for row in rows] == [p.id for p in wanted]
    assert [int(row["support"]) for row in rows] == [p.support for p in wanted]
    odds = result.score(result.db.classes, method="odds_ratio").set_index("id")
    for row in rows:
        value = row["odds_ratio other"].replace("Infinity", "inf")
        assert np.isclose(float(value), odds.score[row["id"]])
        assert int(row["inside other"]) == odds.inside[row["id"]]
    with page.expect_download() as download:
        page.click("#export-smarts")
    lines = Path(download.value.path()).read_text().splitlines()
    assert lines == [f"{p.to_smarts()}\t{p.id}" for p in wanted]


def test_with_the_keyboard_alone(open_page, molecules_page):
    page = open_page(molecules_page)
    seen = []
    for _ in range(70):
        page.keyboard.press("Tab")
        seen.append(
            page.evaluate(
                "(e => e.id || e.dataset.key || e.dataset.id || e.innerText)"
                "(document.activeElement)"
            )
        )
        if seen[-1] == "next":
            break
    assert seen[-1] == "next"
    fields = ["by-id", "size-from", "by-label", "by-smarts", "export-csv"]
    assert [x for x in seen if x in fields] == fields
    assert {"id", "size", "support", "score"} <= set(seen)
    point = page.locator("#volcano [tabindex='0']")
    first = point.get_attribute("data-id")
    assert first in seen
    point.focus()
    page.keyboard.press("ArrowDown")
    second = page.evaluate("document.activeElement.dataset.id")
    assert second != first
    page.keyboard.press("Enter")
    page.wait_for_selector(f"#details-title:has-text('Pattern {second}')")
    assert page.evaluate("document.activeElement.id") == "details"
    page.focus("th button[data-key=size]")
    page.keyboard.press("Space")
    assert page.evaluate("document.activeElement.dataset.key") == "size"
    assert page.locator("th[aria-sort]").inner_text().startswith("Edges")


def test_points_lie_where_their_scores_are(open_page, molecules_page, result):
    page = open_page(molecules_page)
    points = page.locator("#volcano [data-id]")
    assert points.count() == len(result)
    told = dict(
        points.evaluate_all(
            "all => all.map(e => [e.dataset.id, e.getAttribute('aria-label')])"
        )
    )
    scores = result.score(result.db.classes, method="fisher")
    for row in scores.itertuples():
        assert f"\u2212log10 p {row.score:.2f}," in told[row.id]
        assert f"in {row.inside} graphs of the class, {row.outside}" in told[row.id]


def test_each_of_three_classes(open_page, result, tmp_path):
    y = np.repeat(["a", "b", "<c>"], 20)
    path = tmp_path / "classes.html"
    result.report(path, classes=y, with_structures=False, stored_drawings=0)
    page = open_page(path)
    names = page.locator("#volcano-class option").all_inner_texts()
    assert names == ["<c>", "a", "b"]
    scores = result.score(y, method="fisher")
    for name in names:
        page.select_option("#volcano-class", label=name)
        own = scores[scores["class"] == name].nlargest(1, "score")
        assert page.locator("#volcano [tabindex='0']").get_attribute("data-id") in set(
            scores.id[(scores["class"] == name) & (scores.score == own.score.item())]
        )
        assert column(page, 5)[0] == f"{own.score.item():.2f}"


def test_labels_that_are_html_stay_text(open_page, graphs_page):
    page = open_page(graphs_page, "#2-0")
    assert page.title() == HOSTILE
    assert page.locator("h1").inner_text() == HOSTILE
    assert page.locator("img").count() == 0
    assert HOSTILE in page.locator("#details-told code").inner_text()
    assert COMMENT in page.locator("#details-told code").inner_text()
    drawn = page.locator("#details text").all_text_contents()
    assert HOSTILE[:13] + "…" in drawn
    assert "&amp;" in drawn
    page.fill("#by-label", COMMENT)
    assert page.locator("#patterns tbody tr").count() == 2
    assert page.locator("#examples rect.marked").count() == 9


@pytest.mark.parametrize("width", [1400, 390])
def test_axe_finds_nothing_serious(open_page, molecules_page, width):
    page = open_page(molecules_page, "#3-4", viewport={"width": width, "height": 900})
    page.wait_for_selector("#examples ellipse")
    page.click("summary >> nth=0")
    page.evaluate((files("axe_playwright_python") / "axe.min.js").read_text("utf-8"))
    found = page.evaluate("axe.run()")
    assert len(found["passes"]) > 20
    assert [
        (rule["id"], [node["html"][:200] for node in rule["nodes"]])
        for rule in found["violations"]
        if rule["impact"] in ("serious", "critical")
    ] == []
    wide = page.evaluate("document.documentElement.scrollWidth")
    assert wide <= width


@pytest.mark.parametrize("width", [360, 320])
def test_nothing_is_wider_than_a_small_phone(open_page, molecules_page, width):
    page = open_page(molecules_page, "#3-4", viewport={"width": width, "height": 800})
    page.wait_for_selector("#examples ellipse")
    # Supports of four digits, as in larger databases.
    page.evaluate(
        "document.querySelectorAll('#patterns td.number').forEach("
        "e => { e.innerText = e.innerText.replace(/^/, '3,356 (67.3 %) ') })"
    )
    assert page.evaluate("document.documentElement.scrollWidth") <= width


def test_paper(open_page, molecules_page):
    page = open_page(molecules_page, "#3-4")
    page.emulate_media(media="print")
    assert not page.locator("#filters").is_visible()
    assert not page.locator("#export-csv").is_visible()
    assert page.locator("#lattice .centre").is_visible()
    printed = page.pdf(format="A4")
    assert printed.startswith(b"%PDF")
    assert len(re.findall(rb"/Type\s*/Page\b", printed)) > 1


def test_after_printing_the_same_page_is_open(open_page, molecules_page):
    page = open_page(molecules_page)
    page.click("#next")
    page.click("#next")
    page.evaluate(
        "() => { window.printed = null; addEventListener('beforeprint', () => {"
        "printed = document.querySelectorAll('#patterns tbody tr').length; }); }"
    )
    before, ids = page.locator("#page-told").inner_text(), column(page, 2)
    assert before.startswith("Page 3 of")
    page.pdf(format="A4")
    page.wait_for_function("() => printed !== null")
    assert page.evaluate("printed") == 100
    told = page.locator("#page-told")
    page.wait_for_function(
        "before => document.querySelector('#page-told').innerText === before",
        arg=before,
    )
    assert told.inner_text() == before
    assert column(page, 2) == ids
    # As a browser may tell it twice.
    page.evaluate(
        "() => ['beforeprint', 'beforeprint', 'afterprint', 'afterprint']"
        ".forEach(name => dispatchEvent(new Event(name)))"
    )
    assert told.inner_text() == before


def test_without_structures(open_page, result, tmp_path):
    path = tmp_path / "small.html"
    result.report(path, with_structures=False, max_patterns=50, stored_drawings=5)
    assert path.stat().st_size < 1_000_000
    page = open_page(path)
    assert page.locator("#by-smarts").count() == 0
    assert "50 of" in page.locator(".note").inner_text()
    best = result.top(50, by="fisher", y=result.db.classes)
    assert set(selected(page)) == {p.id for p in best}
    drawn = page.locator("#patterns .picture svg").count()
    assert drawn == page.locator("#patterns tbody tr").count()


def shapes(page):
    return page.evaluate(
        "() => [...document.querySelectorAll('.picture svg, #examples svg')]"
        ".map(svg => {"
        "const box = e => { const r = e.getBoundingClientRect();"
        "  return [r.left, r.top, r.right, r.bottom]; };"
        "return [[...svg.querySelectorAll('rect')].map(box),"
        "  [...svg.querySelectorAll('text')]"
        "    .map(e => e.getBoundingClientRect().height),"
        "  box(svg)]; })"
    )


@pytest.mark.parametrize("width", [1400, 390])
@pytest.mark.parametrize("stored", [0, 100])
def test_letters_of_graphs_can_be_read(open_page, tmp_path, width, stored):
    words = ["method", "class", "isinstance", "func", "ValueError"]
    path = [(i, i + 1, "member" if i % 2 else "call") for i in range(4)]
    star = [(0, i, "member") for i in range(1, 5)]
    db = kestro.from_edges([words] * 4, [path, path, star, star])
    page_path = tmp_path / "words.html"
    kestro.mine(db, min_support=2).report(page_path, stored_drawings=stored)
    page = open_page(page_path, "#4-0", viewport={"width": width, "height": 900})
    drawn = shapes(page)
    assert len(drawn) > 12
    for boxes, letters, (left, top, right, bottom) in drawn:
        assert min(letters) >= 9  # pixels of a line of text
        for i, (x, y, x2, y2) in enumerate(boxes):
            assert left - 1 <= x
            assert x2 <= right + 1
            assert top - 1 <= y
            assert y2 <= bottom + 1
            for a, b, a2, b2 in boxes[:i]:
                assert x >= a2 or a >= x2 or y >= b2 or b >= y2


@pytest.mark.parametrize("stored", [0, 10])
def test_large_graphs_are_dots(open_page, tmp_path, stored):
    path = [(i, i + 1, "call") for i in range(29)]
    db = kestro.from_edges([[f"function{i}" for i in range(30)]] * 2, [path] * 2)
    run = kestro.mine(db, min_support=2)
    run[run.size == 29].report(tmp_path / "path.html", stored_drawings=stored)
    page = open_page(tmp_path / "path.html")
    drawing = page.locator("#patterns .picture svg")
    assert drawing.locator("rect").count() == 30
    assert drawing.locator("line").count() == 29
    assert drawing.locator("text").count() == 0


def test_results_of_which_less_is_known(open_page, three, tmp_path):
    three.classes = [0, 1, 1]
    run = kestro.mine(three, min_support=1)
    run.write(tmp_path, tids=False, parents=False)
    for db in (None, three):
        read = kestro.read_result(tmp_path / "patterns.fp", db=db)
        assert not read._patterns.has_parents
        read.report(tmp_path / "read.html")
        page = open_page(tmp_path / "read.html", "#1-0")
        assert page.locator("#patterns tbody tr").count() == len(run)
        assert page.locator("#details-title").inner_text() == "Pattern 1-0"
        has_tids = read._patterns.has_tids  # the database tells them
        assert has_tids == (db is not None)
        assert page.locator("#volcano, #examples").count() == 2 * has_tids
        assert not page.locator("#lattice").is_visible()


@pytest.mark.parametrize("classes", [None, [0, 1, 1], [1, 1, 1]])
def test_nothing_found(open_page, three, tmp_path, classes):
    three.classes = classes
    path = tmp_path / "nothing.html"
    kestro.mine(three, min_support=1)[:0].report(path)
    page = open_page(path)
    assert page.locator("#count").inner_text() == "0 of 0 patterns selected"
    assert page.locator("#volcano svg").count() == (classes == [0, 1, 1])
    page.fill("#by-label", "C")
    with page.expect_download() as download:
        page.click("#export-csv")
    text = Path(download.value.path()).read_text()
    assert text.startswith("id,size,support")
    assert text.count("\n") == 1


def test_wrong_arguments(three, tmp_path):
    result = kestro.mine(three, min_support=1)
    path = tmp_path / "page.html"
    with pytest.raises(TypeError, match="title must be a str"):
        result.report(path, title=3)
    with pytest.raises(ValueError, match="max_patterns"):
        result.report(path, max_patterns=0)
    with pytest.raises(ValueError, match="examples"):
        result.report(path, examples=-1)
    with pytest.raises(kestro.KestroError, match="y has 2 entries for 3 graphs"):
        result.report(path, classes=[0, 1])
    assert not path.exists()
