"""Scores and corrections against plain computations, SciPy and scikit-learn."""

import itertools
import math
import time
from fractions import Fraction

import kestro
import numpy as np
import pandas as pd
import pytest
from scipy import stats
from sklearn.metrics import class_likelihood_ratios, mutual_info_score

METHODS = ["chi2", "fisher", "information_gain", "odds_ratio", "growth_rate"]


def database_of(matrix):
    """Graphs that have an edge for each 1 of a row: the patterns of one edge are
    the columns."""
    vertices = [list("AB") * len(row) for row in matrix]
    edges = [
        [(2 * i, 2 * i + 1, f"e{i:02}") for i, has in enumerate(row) if has]
        for row in matrix
    ]
    return kestro.from_edges(vertices, edges)


def random_runs():
    for seed in range(12):
        chance = np.random.default_rng(seed)
        graphs = int(chance.integers(4, 40))
        matrix = chance.random((graphs, 12)) < chance.random(12)
        matrix[0] = True  # no column is empty
        matrix[:, 5] = matrix[:, 3]  # one list of graphs twice
        matrix[:, 7] = True
        y = chance.integers(0, 2, graphs)
        y[:2] = 0, 1
        matrix[1:, 1] = (y == 1)[1:]
        yield matrix, y


@pytest.fixture(scope="module")
def runs():
    found = []
    for matrix, y in random_runs():
        result = kestro.mine(database_of(matrix), min_support=1, max_size=1)
        order = [int(p.graph.edge_labels[0][1:]) for p in result]
        assert sorted(order) == list(range(12))
        found.append((result, matrix[:, order], y))
    return found


def cells(column, y):
    """Graphs with and without the pattern, of the class first."""
    return (
        int((column & (y == 1)).sum()),
        int((column & (y == 0)).sum()),
        int((~column & (y == 1)).sum()),
        int((~column & (y == 0)).sum()),
    )


def exact_fisher(a, b, c, d):
    def ways(inside):
        return math.comb(a + c, inside) * math.comb(b + d, a + b - inside)

    possible = range(max(0, a + b - (b + d)), min(a + b, a + c) + 1)
    extreme = sum(ways(i) for i in possible if ways(i) <= ways(a))
    return Fraction(extreme, math.comb(a + b + c + d, a + b))


def chi2_p(a, b, c, d):
    if min(a + b, c + d, a + c, b + d) == 0:
        return 0.0, 1.0
    found = stats.chi2_contingency([[a, b], [c, d]], correction=False)
    return found.statistic, found.pvalue


def test_counts(runs):
    for result, matrix, y in runs:
        scores = result.score(y)
        assert scores["id"].tolist() == [p.id for p in result]
        assert set(scores["class"]) == {1}
        for column, row in zip(matrix.T, scores.itertuples(), strict=True):
            a, b, c, d = cells(column, y)
            assert (row.inside, row.outside) == (a, b)
            assert (row.rate_inside, row.rate_outside) == (a / (a + c), b / (b + d))


def test_chi2(runs):
    for result, matrix, y in runs:
        scores = result.score(y, method="chi2")
        expected = [chi2_p(*cells(column, y)) for column in matrix.T]
        np.testing.assert_allclose(scores[["score", "p"]], expected, rtol=1e-9)


def test_fisher(runs):
    for result, matrix, y in runs:
        p = result.score(y, method="fisher")["p"]
        for column, own in zip(matrix.T, p, strict=True):
            a, b, c, d = cells(column, y)
            assert own == pytest.approx(float(exact_fisher(a, b, c, d)), rel=1e-9)
            assert own == pytest.approx(
                stats.fisher_exact([[a, b], [c, d]]).pvalue, rel=1e-9
            )


def test_information_gain(runs):
    for result, matrix, y in runs:
        gain = result.score(y, method="information_gain")["score"]
        expected = [mutual_info_score(column, y) / math.log(2) for column in matrix.T]
        np.testing.assert_allclose(gain, expected, atol=1e-12)


def test_odds_ratio(runs):
    for result, matrix, y in runs:
        ratios = result.score(y, method="odds_ratio")["score"]
        for column, own in zip(matrix.T, ratios, strict=True):
            a, b, c, d = cells(column, y)
            if b * c == 0:
                assert math.isnan(own) if a * d == 0 else own == math.inf
            else:
                found = stats.contingency.odds_ratio([[a, b], [c, d]], kind="sample")
                assert own == pytest.approx(found.statistic)


@pytest.mark.filterwarnings("ignore:.*ill-defined")
def test_growth_rate(runs):
    finite = 0
    for result, matrix, y in runs:
        rates = result.score(y, method="growth_rate")["score"]
        for column, own in zip(matrix.T, rates, strict=True):
            a, b, c, _ = cells(column, y)
            if b == 0:
                assert own == math.inf
                continue
            expected = class_likelihood_ratios(
                y, column.astype(int), replace_undefined_by=1.0
            )[0]
            assert own == pytest.approx(expected)
            assert own == pytest.approx((a / (a + c)) / (b / (y == 0).sum()))
            finite += 1
    assert finite > 50


def distinct_columns(matrix):
    found = {}
    for i, column in enumerate(matrix.T):
        found.setdefault(column.tobytes(), []).append(i)
    return list(found.values())


def p_of(method, *table):
    return chi2_p(*table)[1] if method == "chi2" else float(exact_fisher(*table))


def least_p(method, support, members, graphs):
    """The smallest p of all tables with these margins, by trying each."""
    tables = [
        (a, support - a, members - a, graphs - members - support + a)
        for a in range(support + 1)
    ]
    return min(p_of(method, *t) for t in tables if min(t) >= 0)


@pytest.mark.parametrize("alpha", [0.05, 0.3])
@pytest.mark.parametrize("method", ["chi2", "fisher"])
@pytest.mark.parametrize("correction", ["bonferroni", "bh", "tarone"])
def test_corrections(runs, method, correction, alpha):
    rejected = 0
    for result, matrix, y in runs:
        scores = result.score(y, method=method, correction=correction, alpha=alpha)
        family = distinct_columns(matrix)
        p = [p_of(method, *cells(matrix[:, group[0]], y)) for group in family]
        assert scores.attrs["family"] == {1: len(family)} and len(family) < 12
        if correction == "tarone":
            least = [
                least_p(method, int(matrix[:, group[0]].sum()), int(y.sum()), len(y))
                for group in family
            ]
            k = next(
                k
                for k in itertools.count(1)
                if sum(x <= alpha / k * (1 + 1e-9) for x in least) <= k
            )
            assert scores.attrs["factor"] == {1: k}
            expected = [(min(1, x * k), x <= alpha / k) for x in p]
        elif correction == "bonferroni":
            m = len(family)
            expected = [(min(1, x * m), x <= alpha / m) for x in p]
        else:
            order = sorted(range(len(p)), key=p.__getitem__)
            raised = [p[i] * len(p) / rank for rank, i in enumerate(order, 1)]
            expected = [None] * len(p)
            for rank, i in enumerate(order):
                value = min(1, *raised[rank:], 1)
                expected[i] = (value, value <= alpha)
        for group, (value, significant) in zip(family, expected, strict=True):
            for i in group:
                assert scores["p_corrected"][i] == pytest.approx(value)
                assert scores["significant"][i] == significant
                rejected += significant
    assert rejected > 0


@pytest.mark.parametrize("correction", ["bonferroni", "bh", "tarone"])
def test_corrected_p_and_significance_agree(runs, correction):
    """Also where p is alpha by the divisor, but for the rounding."""
    result, _, y = runs[2]
    p = result.score(y, method="fisher")["p"].unique()
    alphas = [x * k for x in p for k in range(1, 13) if x * k < 0.999]
    for alpha in [
        a for x in alphas for a in (x, np.nextafter(x, 0), np.nextafter(x, 1))
    ]:
        scores = result.score(y, method="fisher", correction=correction, alpha=alpha)
        assert ((scores["p_corrected"] <= alpha) == scores["significant"]).all()
        if correction != "bh":
            [k] = scores.attrs[
                "factor" if correction == "tarone" else "family"
            ].values()
            assert (scores["significant"] == (scores["p"] <= alpha / k)).all()


def test_p_too_small_for_a_float():
    """The score still tells which one is smaller, as logarithms of SciPy's do."""
    n = 3000
    y = np.repeat([1, 0], n)
    matrix = np.zeros((2 * n, 3), bool)
    matrix[:n, 0] = True
    matrix[: n - 1, 1] = True
    matrix[: n - 300, 2] = True
    result = kestro.mine(database_of(matrix), min_support=1)
    result = result[result.size == 1]
    scores = result.score(y, method="fisher")
    assert scores["p"].tolist() == [0.0] * 3 and np.isfinite(scores["score"]).all()
    supports = result.top(3, by="fisher", y=y).support.tolist()
    assert supports == [n, n - 1, n - 300]
    for support, own in zip(result.support, scores["score"], strict=True):
        log_p = stats.hypergeom.logsf(support - 1, 2 * n, n, support)
        # Classes are as large, so as many tables lie at the other end.
        expected = -(log_p + math.log(2)) / math.log(10)
        assert own == pytest.approx(expected, rel=1e-9)
    tarone = result.score(y, method="fisher", correction="tarone")
    assert tarone["significant"].all()


def test_tarone_ignores_patterns_that_cannot_be_significant():
    """Columns with one graph each can never reach a small p."""
    matrix = np.zeros((20, 12), dtype=bool)
    matrix[:10, 0] = True
    for i in range(1, 12):
        matrix[i, i] = True
    y = np.repeat([1, 0], 10)
    result = kestro.mine(database_of(matrix), min_support=1, max_size=1)
    scores = result.score(y, method="fisher", correction="tarone")
    assert scores.attrs == {"family": {1: 12}, "factor": {1: 1}}
    assert scores["significant"].sum() == 1
    assert scores["p_corrected"].min() == scores["p"].min()


def test_a_selection_has_the_family_of_the_run(runs):
    for result, _, y in runs:
        all_scores = result.score(y, correction="bonferroni")
        some = result[[4, 1]].score(y, correction="bonferroni")
        expected = all_scores.iloc[[4, 1]].reset_index(drop=True)
        pd.testing.assert_frame_equal(some, expected)
        assert some.attrs == all_scores.attrs


def test_more_classes_are_compared_one_by_one(runs):
    result, _, _ = runs[0]
    graphs = result.graphs
    y = np.array(["red", "green", "blue"])[np.arange(graphs) % 3]
    scores = result.score(y, method="fisher", correction="bh")
    assert len(scores) == 3 * len(result)
    for name in ("red", "green", "blue"):
        own = scores[scores["class"] == name].reset_index(drop=True)
        alone = result.score(y == name, method="fisher", correction="bh")
        pd.testing.assert_frame_equal(
            own.drop(columns="class"), alone.drop(columns="class")
        )
    assert set(scores.attrs["family"]) == {"red", "green", "blue"}


@pytest.mark.parametrize("method", METHODS)
def test_of_two_classes_the_last_is_compared(runs, method):
    result, _, y = runs[1]
    names = np.where(y == 1, "mutagen", "harmless")
    expected = result.score(y, method=method)
    for labels in (names.tolist(), pd.Series(names), names.astype(object)):
        found = result.score(labels, method=method)
        assert set(found["class"]) == {"mutagen"}
        assert found["score"].equals(expected["score"])
    whole = np.ma.array(y, mask=np.zeros(len(y), bool))
    mixed = [float(x) if x else int(x) for x in y]
    for same in (y.astype(bool), y.astype(float), y * 2 - 1, y.tolist(), whole, mixed):
        assert result.score(same, method=method)["score"].equals(expected["score"])


@pytest.mark.parametrize(
    ("change", "reason"),
    [
        (lambda y: y[:-1], "entries for [0-9]+ graphs$"),
        (lambda y: np.append(y, 1), r"entries for .* values\[db.source\] leaves out"),
        (lambda y: np.zeros(len(y)), "two classes"),
        (lambda y: np.where(np.arange(len(y)) == 3, np.nan, y), "graph 3 is missing"),
        (lambda y: [None, *y[1:].tolist()], "graph 0 is missing"),
        (lambda y: pd.array([pd.NA, *y[1:]], dtype="Int64"), "graph 0 is missing"),
        (lambda y: y + 0.5, "measurements"),
        (lambda y: y.reshape(1, -1), "dimension"),
        (lambda y: 1, "dimension"),
        (lambda y: ["a", *y[1:].tolist()], "numbers and text, which have no order"),
        (lambda y: np.array(["a", *y[1:].tolist()], object), "numbers and text"),
        (lambda y: [1, "1"] * (len(y) // 2) + ["1"] * (len(y) % 2), "numbers and text"),
        (lambda y: [True, *y[1:].tolist()], "numbers and truth values"),
        (lambda y: ["a", *"b" * (len(y) - 2), math.nan], r"graph \d+ is missing"),
        (lambda y: np.ma.array(y, mask=np.arange(len(y)) == 4), "graph 4 is missing"),
        (lambda y: [[x] for x in y], "dimension"),
        (lambda y: [[x, x] for x in y], "dimension"),
        (lambda y: [x + 0.5 for x in y], "measurements"),
        (lambda y: [0, *[{}] * (len(y) - 1)], "dict objects and numbers"),
        (lambda y: [{}] * len(y), "order"),
    ],
)
def test_classes_that_make_no_sense(runs, change, reason):
    result, _, y = runs[0]
    with pytest.raises(kestro.KestroError, match=reason):
        result.score(change(y))


@pytest.mark.parametrize(
    ("arguments", "error", "reason"),
    [
        ({"method": "other"}, ValueError, "method"),
        ({"correction": "other"}, ValueError, "correction"),
        ({"method": "odds_ratio", "correction": "bh"}, ValueError, "correction is"),
        (
            {"method": "growth_rate", "correction": "tarone"},
            ValueError,
            "correction is",
        ),
        ({"alpha": 0}, ValueError, "alpha"),
        ({"alpha": 1.0}, ValueError, "alpha"),
        ({"alpha": float("nan")}, ValueError, "alpha"),
        ({"alpha": True}, TypeError, "alpha"),
        ({"alpha": "0.05"}, TypeError, "alpha"),
    ],
)
def test_arguments_that_make_no_sense(runs, arguments, error, reason):
    result, _, y = runs[0]
    with pytest.raises(error, match=reason):
        result.score(y, **arguments)


def test_no_pattern():
    db = kestro.from_edges([["A"], ["B"]], [[], []])
    empty = kestro.mine(db, min_support=1)
    for correction in ("bh", "bonferroni", "tarone"):
        scores = empty.score([0, 1], correction=correction)
        assert len(scores) == 0 and scores.attrs["family"] == {1: 0}
    assert len(empty.representative(3)) == len(empty.top(3)) == 0


def test_top(runs):
    for result, _, y in runs:
        top = result.top(4)
        assert top.support.tolist() == sorted(result.support.tolist())[::-1][:4]
        scores = result.score(y, method="odds_ratio")["score"]
        best = result.top(12, by="odds_ratio", y=y)
        expected = sorted(
            range(12),
            key=lambda i: (math.isnan(scores[i]), -np.nan_to_num(scores[i]), i),
        )
        assert best.positions.tolist() == expected
        assert result.top(12, by=scores).positions.tolist() == expected
        assert len(result.top(0)) == 0 and len(result.top(99)) == 12
        y3 = np.arange(len(y)) % 3
        by_class = result.score(y3)["score"].to_numpy().reshape(3, 12).max(axis=0)
        assert (
            result.top(5, by="chi2", y=y3).positions.tolist()
            == np.argsort(-by_class, kind="stable")[:5].tolist()
        )


def test_top_of_nothing(runs):
    result, _, y = runs[0]
    for by in ("support", "chi2", []):
        assert len(result[:0].top(3, by=by, y=y)) == 0


def test_tops_that_make_no_sense(runs):
    result, _, _ = runs[0]
    for k in (-1, True, 1.5, None):
        with pytest.raises((TypeError, ValueError), match="k must"):
            result.top(k)
    with pytest.raises(ValueError, match="needs y"):
        result.top(3, by="chi2")
    with pytest.raises(ValueError, match="by must"):
        result.top(3, by="name")
    with pytest.raises(ValueError, match="by must"):
        result.top(3, by=[1.0, 2.0])


def plain_representatives(result, k):
    """Greedy coverage, looking at every closed pattern each time."""
    left = [
        (i, p.size, set(p.tids.tolist()))
        for i, p in enumerate(result)
        if p.closed is not False
    ]
    covered, taken = set(), []
    while left and len(taken) < k:
        best = max(left, key=lambda row: (len(row[2] - covered), row[1], -row[0]))
        if not best[2] - covered:
            best = max(left, key=lambda row: (len(row[2]), -row[0]))
        covered |= best[2]
        taken.append(best[0])
        left.remove(best)
    return taken


@pytest.mark.parametrize("k", [0, 1, 7, 500])
def test_representative(runs, molecules, k):
    mined = kestro.mine(molecules, min_support="15%")
    for result in (mined, *(run[0] for run in runs[:3])):
        bounded = result.representative(k)
        assert bounded.positions.tolist() == plain_representatives(result, k)
        if result is mined:
            assert bounded.undecided == 0
            assert all(p.closed for p in bounded)
            assert len(bounded) == min(k, sum(p.closed for p in mined))
        else:  # of the last level it is unknown
            assert bounded.undecided == len(bounded) == min(k, 12)
    selection = mined[::-1][:50]
    chosen = selection.representative(k).positions.tolist()
    assert set(chosen) <= set(selection.positions.tolist())


def test_many_representatives_of_one_graph(molecules):
    """Once every graph is covered there is no more to weigh."""
    large = max(range(len(molecules)), key=lambda i: len(molecules[i].edges))
    result = kestro.mine(molecules[[large]], min_support=1, max_size=12)
    assert len(result) > 2000 and result.undecided == 0
    start = time.process_time()
    chosen = result.representative(len(result))
    assert time.process_time() - start < 2
    unsure = [p.closed for p in result].count(None)
    assert len(chosen) == unsure == chosen.undecided
    assert chosen.positions.tolist() == sorted(chosen.positions.tolist())
