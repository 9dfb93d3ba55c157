"""Features for scikit-learn, and scores to select them by."""

import os
import pickle
import signal
import subprocess
import sys
import threading
import warnings

import kestro
import networkx as nx
import numpy as np
import pandas as pd
import pytest
import scipy.sparse
from kestro.sklearn import (
    SubgraphVectorizer,
    score_chi2,
    score_fisher,
    score_growth_rate,
    score_information_gain,
    score_odds_ratio,
)
from rdkit import Chem
from sklearn.base import clone
from sklearn.compose import ColumnTransformer
from sklearn.exceptions import NotFittedError
from sklearn.feature_selection import SelectFdr, SelectKBest, chi2
from sklearn.linear_model import LogisticRegression
from sklearn.metrics import mutual_info_score
from sklearn.model_selection import (
    GridSearchCV,
    StratifiedKFold,
    cross_val_score,
    train_test_split,
)
from sklearn.pipeline import make_pipeline
from sklearn.utils.estimator_checks import check_estimator
from sklearn.utils.validation import validate_data

UNREADABLE = ["no smiles", None, float("nan"), "", 7]
SCORES = {
    "chi2": score_chi2,
    "fisher": score_fisher,
    "information_gain": score_information_gain,
    "odds_ratio": score_odds_ratio,
    "growth_rate": score_growth_rate,
}


@pytest.fixture(scope="module")
def smiles(examples):
    lines = (examples / "molecules.smi").read_text().splitlines()
    found = [line.split("\t")[0] for line in lines[3:]]
    assert len(found) == 60
    return found


@pytest.fixture(scope="module")
def y():
    """Amino acids, and the others."""
    return np.array([1] * 20 + [0] * 40)


def dense(found):
    assert isinstance(found, scipy.sparse.csr_array)
    assert found.dtype == np.float64
    return found.toarray()


# What scikit-learn checks


class OfNumbers(SubgraphVectorizer):
    """The vectorizer behind a table of numbers, which is all that the checks have.

    A row becomes a star with a leaf for each number that is positive.
    """

    def _graphs(self, X, reset):
        X = validate_data(self, X, reset=reset, dtype=np.float64)
        leaves = [np.flatnonzero(row > 0).tolist() for row in X]
        return kestro.from_edges(
            [["row", *own] for own in leaves],
            [[(0, i + 1, "-") for i in range(len(own))] for own in leaves],
        )

    def fit(self, X, y=None):
        return super().fit(self._graphs(X, True), y)

    def fit_transform(self, X, y=None, **params):
        return super().fit_transform(self._graphs(X, True), y, **params)

    def transform(self, X):
        super().get_feature_names_out()  # not fitted: before anything else
        return super().transform(self._graphs(X, False))

    def __sklearn_tags__(self):
        tags = super().__sklearn_tags__()
        tags.input_tags.one_d_array = False
        tags.input_tags.two_d_array = True
        return tags


class Claiming(SubgraphVectorizer):
    """The vectorizer, which claims to take any table, so that it is not spared."""

    def __sklearn_tags__(self):
        tags = super().__sklearn_tags__()
        tags.input_tags.two_d_array = True
        return tags


def outcomes(estimator):
    """Return by outcome the names of scikit-learn's checks."""
    with warnings.catch_warnings():
        warnings.filterwarnings("ignore", "no pattern is in", UserWarning)
        done = check_estimator(estimator, on_fail=None, on_skip=None)
    return {
        status: {row["check_name"] for row in done if row["status"] == status}
        for status in ("passed", "failed", "skipped")
    }


# It runs only where SciPy is told by the environment to take other arrays than
# numpy's, and the vectorizer takes graphs, not arrays.
SKIPPED = {"check_array_api_input"}


@pytest.mark.parametrize("sparse_output", [True, False])
def test_scikit_learns_checks_behind_numbers(sparse_output):
    found = outcomes(OfNumbers(sparse_output=sparse_output))
    assert found["failed"] == set()
    assert found["skipped"] == SKIPPED
    assert len(found["passed"]) > 35


NUMBERS = "it fits numbers, each of which is no graph"
ROWS = "it takes the data for two dimensions, of which a list of graphs has one"
MESSAGE = "it wants words about numbers in the message by which such data are refused"
# By check: why it must fail where nothing makes graphs of the numbers.
EXPECTED = {
    "check_complex_data": MESSAGE,
    "check_dict_unchanged": ROWS,
    "check_dont_overwrite_parameters": ROWS,
    "check_dtype_object": NUMBERS,
    "check_estimator_sparse_array": MESSAGE,
    "check_estimator_sparse_matrix": MESSAGE,
    "check_estimator_sparse_tag": "it takes the refusal of sparse data for a fault",
    "check_estimators_dtypes": NUMBERS,
    "check_estimators_empty_data_messages": MESSAGE,
    "check_estimators_fit_returns_self": NUMBERS,
    "check_estimators_nan_inf": MESSAGE,
    "check_estimators_overwrite_params": NUMBERS,
    "check_estimators_pickle": NUMBERS,
    "check_f_contiguous_array_estimator": ROWS,
    "check_fit1d": NUMBERS,
    "check_fit2d_1feature": ROWS,
    "check_fit2d_1sample": ROWS,
    "check_fit2d_predict1d": ROWS,
    "check_fit_check_is_fitted": NUMBERS,
    "check_fit_idempotent": NUMBERS,
    "check_fit_score_takes_y": NUMBERS,
    "check_methods_sample_order_invariance": ROWS,
    "check_methods_subset_invariance": ROWS,
    "check_n_features_in": NUMBERS,
    "check_n_features_in_after_fitting": NUMBERS,
    "check_pipeline_consistency": NUMBERS,
    "check_positive_only_tag_during_fit": NUMBERS,
    "check_readonly_memmap_input": NUMBERS,
    "check_transformer_data_not_an_array": ROWS,
    "check_transformer_general": ROWS,
}


def test_scikit_learns_checks_that_want_numbers():
    found = outcomes(Claiming())
    assert found["failed"] == set(EXPECTED)
    assert found["skipped"] == SKIPPED
    # Of them, those that are not about data.
    assert {
        "check_no_attributes_set_in_init",
        "check_do_not_raise_errors_in_init_or_set_params",
        "check_parameters_default_constructible",
        "check_get_params_invariance",
        "check_set_params",
        "check_transformers_unfitted",
        "check_mixin_order",
    } <= found["passed"]


def test_scikit_learns_checks():
    """Most want rows of numbers, which the tags say that it does not take."""
    with pytest.warns(UserWarning, match="Can't test estimator SubgraphVectorizer"):
        done = check_estimator(SubgraphVectorizer())
    assert len(done) > 0
    assert {row["status"] for row in done} == {"passed"}


# What goes in


def kinds(smiles):
    """The same molecules in every form that is taken."""
    molecules = [Chem.MolFromSmiles(s) for s in smiles]
    db = kestro.from_smiles(smiles)
    column = np.empty(len(molecules), object)
    column[:] = molecules
    return {
        "database": db,
        "list of SMILES": smiles,
        "tuple of SMILES": tuple(smiles),
        "array of SMILES": np.array(smiles),
        "array of objects": np.array(smiles, object),
        "Series of SMILES": pd.Series(smiles, index=range(7, 7 + len(smiles))),
        "generator": (s for s in smiles),
        "list of molecules": molecules,
        "array of molecules": column,
        "Series of molecules": pd.Series(molecules),
        "list of graphs": list(db),
        "NetworkX": db.to_networkx(),
    }


READ = [
    *("database", "list of SMILES", "tuple of SMILES", "array of SMILES"),
    *("array of objects", "Series of SMILES", "generator", "list of molecules"),
    *("array of molecules", "Series of molecules", "list of graphs", "NetworkX"),
]


@pytest.fixture(scope="module")
def expected(smiles):
    """Features of all molecules by patterns of the first forty."""
    db = kestro.from_smiles(smiles)
    mined = kestro.mine(db[:40], min_support=0.1, max_size=5, closed=True)
    return mined.incidence().toarray(), mined.transform(db).toarray()


@pytest.mark.parametrize("kind", READ)
def test_every_kind_gives_the_features_of_mine(smiles, expected, kind):
    ours = SubgraphVectorizer(min_support=0.1, max_size=5)
    assert (dense(ours.fit_transform(kinds(smiles[:40])[kind])) == expected[0]).all()
    assert (dense(ours.transform(kinds(smiles)[kind])) == expected[1]).all()
    fitted = SubgraphVectorizer(min_support=0.1, max_size=5)
    assert fitted.fit(kinds(smiles[:40])[kind]) is fitted
    assert (dense(fitted.transform(smiles)) == expected[1]).all()
    assert (dense(fitted.transform(smiles[:40])) == expected[0]).all()


def test_every_kind_is_listed(smiles):
    assert list(kinds(smiles)) == READ


@pytest.mark.parametrize(
    "X, error, words",
    [
        ("CCO", TypeError, "list of graphs, not a single one"),
        (nx.Graph(), TypeError, "list of graphs, not a single one"),
        (np.str_("CCO"), TypeError, "list of graphs, not a single one"),
        (kestro.Graph((), np.zeros((0, 2), np.int32), ()), TypeError, "a single one"),
        (Chem.MolFromSmiles("C"), TypeError, "list of graphs, not a single one"),
        (b"CCO", TypeError, "list of graphs, not a single one"),
        (np.array("CCO"), ValueError, "one dimension"),
        ([b"CCO"], TypeError, "as record 0"),
        ((x for x in ()), ValueError, "at least 1"),
        (np.array([], object), ValueError, "at least 1"),
        (kestro.from_edges([], []), ValueError, "at least 1"),
        ([None, None], kestro.KestroError, "record 0: it is missing"),
        (3, TypeError, "a GraphDatabase or a list of SMILES"),
        ({"CCO", "CC"}, TypeError, "not set"),
        ({"CCO": 1}, TypeError, "not dict"),
        ([1.5, 2.5], TypeError, "as record 0"),
        ([None, {}], TypeError, "as record 1"),
        ([["CCO"]], TypeError, "as record 0"),
        (np.array([["CCO"]]), ValueError, r"X\[:, 0\]"),
        (pd.DataFrame({"smiles": ["CCO"]}), ValueError, r"X\['smiles'\]"),
        ([], ValueError, "at least 1"),
        (["CCO", Chem.MolFromSmiles("C")], kestro.KestroError, "record 1"),
        ([Chem.MolFromSmiles("C"), "CCO"], kestro.KestroError, "record 1"),
        ([nx.Graph(), "CCO"], kestro.KestroError, "record 1"),
    ],
)
@pytest.mark.parametrize("method", ["fit", "fit_transform"])
def test_what_is_no_list_of_graphs(X, error, words, method):
    with pytest.raises(error, match=words):
        getattr(SubgraphVectorizer(), method)(X)


def test_labels_of_molecules_are_those_of_fit():
    db = kestro.from_smiles(["C[NH3+]", "CC[NH3+]"], charge=True, hydrogens=True)
    vectorizer = SubgraphVectorizer(min_support=2).fit(db)
    assert any("#7&A&+1" in x for x in vectorizer.get_feature_names_out())
    assert any("#1&" in x for x in vectorizer.get_feature_names_out())
    again = vectorizer.transform(["C[NH3+]", "CC[NH3+]"])
    assert (dense(again) == dense(vectorizer.transform(db))).all()
    assert (dense(again) == 1).all()
    assert not dense(vectorizer.transform(["CN"]))[0].all()
    with pytest.raises(kestro.KestroError, match="read with charge=True"):
        vectorizer.transform(kestro.from_smiles(["CN"]))


def test_labels_that_never_meet_are_told(smiles, three):
    graphs = [g.to_networkx() for g in kestro.from_edges([["6", "8"]], [[(0, 1, "-")]])]
    ours = SubgraphVectorizer(max_size=2).fit(smiles)
    words = r"a vertex in the patterns \(.*C.*\) is in the graphs \(6, 8\)"
    with pytest.warns(UserWarning, match=words) as told:
        assert not dense(ours.transform(graphs)).any()
    assert [w.filename for w in told] == [__file__]
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert not dense(ours.transform(["II"])).any()


# Records that cannot be read


@pytest.mark.parametrize("record", UNREADABLE, ids=repr)
def test_an_unreadable_record_raises(smiles, record):
    with pytest.raises(kestro.KestroError, match="record 2: "):
        SubgraphVectorizer().fit([*smiles[:2], record, *smiles[2:]])
    vectorizer = SubgraphVectorizer().fit(smiles)
    with pytest.raises(kestro.KestroError, match="record 1: "):
        vectorizer.transform(["CCO", record])


def test_unreadable_records_are_rows_of_zeros(smiles, expected):
    mixed = list(smiles[:40])
    for i, record in enumerate(UNREADABLE):
        mixed.insert(9 * i, record)
    bad = [9 * i for i in range(len(UNREADABLE))]
    good = np.setdiff1d(np.arange(len(mixed)), bad)
    ours = SubgraphVectorizer(min_support=0.1, max_size=5, on_error="zeros")
    found = dense(ours.fit_transform(mixed))
    assert found.shape[0] == len(mixed) == 45
    assert (found[good] == expected[0]).all()
    assert (found[bad] == 0).all()
    assert [skipped.record for skipped in ours.unreadable_] == bad
    assert all(skipped.reason for skipped in ours.unreadable_)
    assert (dense(ours.transform(mixed)) == found).all()
    assert (ours.set_params(sparse_output=False).transform(mixed) == found).all()


def test_what_a_reader_skipped_is_no_row():
    db = kestro.from_smiles(["no smiles", "CCO", "CO"], on_error="skip")
    ours = SubgraphVectorizer(min_support=1, on_error="zeros").fit(db)
    assert len(db.skipped) == 1 and ours.unreadable_ == ()
    assert dense(ours.transform(db)).shape[0] == 2


@pytest.mark.parametrize("kind", ["list of molecules", "list of graphs", "NetworkX"])
def test_missing_records_of_every_kind(smiles, kind):
    records = [None, *kinds(smiles)[kind], None]
    ours = SubgraphVectorizer(on_error="zeros")
    found = dense(ours.fit_transform(records))
    assert found.shape[0] == 62
    assert (found[[0, -1]] == 0).all() and (found[1:-1].sum(axis=1) > 0).all()
    with pytest.raises(kestro.KestroError, match="record 0"):
        SubgraphVectorizer().fit(records)


def test_only_unreadable_records(smiles):
    ours = SubgraphVectorizer(on_error="zeros").fit(smiles)
    with pytest.warns(UserWarning, match="all 2 records were skipped"):
        found = dense(ours.transform([None, None]))
    assert found.shape == (2, len(ours.result_)) and not found.any()
    with pytest.warns(UserWarning) as told:
        found = dense(ours.fit_transform(["x", None]))
    assert any("no pattern is in" in str(w.message) for w in told)
    assert found.shape == (2, 0)


# What comes out


def test_names_of_molecules_are_smarts(smiles):
    ours = SubgraphVectorizer(sparse_output=False, max_size=4)
    found = ours.fit_transform(smiles)
    names = ours.get_feature_names_out()
    assert names.dtype == object and len(set(names)) == len(names) == found.shape[1]
    for name, column in zip(names, found.T, strict=True):
        query = Chem.MolFromSmarts(name)
        has = [Chem.MolFromSmiles(s).HasSubstructMatch(query) for s in smiles]
        assert (column == has).all()


def test_names_of_graphs_are_ids(three):
    ours = SubgraphVectorizer(min_support=1).fit(three)
    names = ours.get_feature_names_out().tolist()
    # 1-0 is the single bond of carbons, all of which lie in 2-0.
    assert names == ["1-1", "1-2", "2-0"]
    assert [ours.result_[name].id for name in names] == names
    every = SubgraphVectorizer(min_support=1, closed=False).fit(three)
    assert every.get_feature_names_out().tolist() == ["1-0", *names]


def test_closed_leaves_out_what_a_larger_one_doubles(smiles):
    every = SubgraphVectorizer(max_size=None, min_support=9, closed=False).fit(smiles)
    closed = SubgraphVectorizer(max_size=None, min_support=9).fit(smiles)
    assert len(closed.result_) < len(every.result_)
    assert len(closed.result_) == sum(p.closed for p in every.result_)
    bounded = SubgraphVectorizer(max_size=3, min_support=9).fit(smiles)
    assert bounded.result_.size.max() == 3 and bounded.result_.undecided > 0


@pytest.mark.parametrize("most", [1, 7, 30, 10_000])
def test_max_features_keeps_the_most_frequent(smiles, most):
    every = SubgraphVectorizer(sparse_output=False)
    full = every.fit_transform(smiles)
    names = every.get_feature_names_out()
    # By support, then size and id, which is the order of columns.
    ranked = sorted(range(full.shape[1]), key=lambda i: (-full[:, i].sum(), i))
    kept = sorted(ranked[:most])
    ours = SubgraphVectorizer(max_features=most, sparse_output=False)
    assert (ours.fit_transform(smiles) == full[:, kept]).all()
    assert ours.get_feature_names_out().tolist() == names[kept].tolist()
    assert (ours.transform(smiles[::-1]) == full[::-1, kept]).all()
    assert ours._n_features_out == len(kept)


def test_set_output(smiles):
    ours = SubgraphVectorizer(sparse_output=False, max_size=3)
    plain = ours.fit_transform(smiles)
    table = clone(ours).set_output(transform="pandas").fit_transform(smiles)
    assert isinstance(table, pd.DataFrame)
    assert table.columns.tolist() == ours.get_feature_names_out().tolist()
    assert (table.to_numpy() == plain).all()
    sparse = SubgraphVectorizer().set_output(transform="pandas")
    with pytest.raises(ValueError, match="outputs a scipy sparse"):
        sparse.fit_transform(smiles)


def test_a_column_of_a_table(smiles, y):
    table = pd.DataFrame({"smiles": smiles, "length": [len(s) for s in smiles]})
    columns = ColumnTransformer(
        [
            ("sub", SubgraphVectorizer(sparse_output=False), "smiles"),
            ("rest", "passthrough", ["length"]),
        ]
    ).set_output(transform="pandas")
    found = columns.fit_transform(table)
    assert found.columns[0].startswith("sub__[#") and len(found) == 60
    assert found["rest__length"].tolist() == table["length"].tolist()


def test_nothing_frequent_gives_no_columns(three):
    ours = SubgraphVectorizer(min_support=4)
    with pytest.warns(UserWarning, match="no pattern is in 4 of 3 graphs"):
        found = dense(ours.fit_transform(three))
    assert found.shape == (3, 0)
    assert dense(ours.transform(three[:2])).shape == (2, 0)
    assert ours.get_feature_names_out().tolist() == []
    model = make_pipeline(SubgraphVectorizer(min_support=4), LogisticRegression())
    with (
        pytest.warns(UserWarning, match="no pattern"),
        pytest.raises(ValueError, match=r"0 feature\(s\)"),
    ):
        model.fit(three, [0, 1, 1])


def test_graphs_that_come_twice(smiles):
    twice = SubgraphVectorizer(sparse_output=False).fit_transform(smiles + smiles)
    once = SubgraphVectorizer(sparse_output=False).fit_transform(smiles)
    assert (twice[:60] == once).all() and (twice[60:] == once).all()


def test_a_single_record_and_those_without_an_edge(smiles):
    ours = SubgraphVectorizer().fit(smiles)
    everything = dense(ours.transform(smiles))
    assert (dense(ours.transform(smiles[5:6])) == everything[5:6]).all()
    assert not dense(ours.transform(["C", "[Na+].[Cl-]"])).any()
    assert dense(ours.transform([])).shape == (0, len(ours.result_))


# What scikit-learn does with it


def test_parameters_stay_and_are_checked_in_fit(three):
    wrong = {
        "min_support": [0, "5", 1.5, None],
        "max_size": [0, 1.5],
        "closed": [1, None],
        "max_features": [0, 2.5, "all"],
        "n_jobs": [0, -3],
        "sparse_output": [1, None],
        "on_error": ["skip", None],
    }
    assert set(wrong) == set(SubgraphVectorizer().get_params())
    for name, values in wrong.items():
        for value in values:
            ours = SubgraphVectorizer(**{name: value})
            assert ours.get_params()[name] is value
            for method in (ours.fit, ours.fit_transform):
                with pytest.raises((TypeError, ValueError), match=name):
                    method(three)


def test_defaults():
    assert SubgraphVectorizer().get_params() == {
        "min_support": 0.05,
        "max_size": 8,
        "closed": True,
        "max_features": None,
        "n_jobs": None,
        "sparse_output": True,
        "on_error": "raise",
    }


def test_not_fitted(smiles):
    ours = SubgraphVectorizer()
    for method in (ours.transform, ours.get_feature_names_out):
        with pytest.raises(NotFittedError):
            method(smiles)


def test_clone_and_refit(smiles, three):
    ours = SubgraphVectorizer(min_support=2, max_size=3).fit(smiles)
    before = ours.get_feature_names_out().tolist()
    copy = clone(ours)
    assert copy.get_params() == ours.get_params()
    with pytest.raises(NotFittedError):
        copy.transform(smiles)
    assert ours.fit(three).get_feature_names_out().tolist() == ["1-0"]
    assert ours.fit(smiles).get_feature_names_out().tolist() == before


@pytest.mark.parametrize(
    "X", [[], (), np.array([], object), pd.Series([], dtype=object), iter([])], ids=repr
)
def test_no_graphs_to_look_in(smiles, X):
    ours = SubgraphVectorizer(max_size=2).fit(smiles)
    found = dense(ours.transform(X))
    assert found.shape == (0, len(ours.result_)) and found.shape[1] > 0


def test_one_graph(smiles):
    ours = SubgraphVectorizer(sparse_output=False).fit(["CCO"])
    assert ours.get_feature_names_out().tolist() == ["[#6&A](-[#6&A])-[#8&A]"]
    assert ours.transform(["CCCO", "CC"]).tolist() == [[1], [0]]
    with pytest.warns(UserWarning, match="no pattern is in 1 of 1 graphs"):
        assert SubgraphVectorizer().fit_transform(["C"]).shape == (1, 0)


def test_labels_that_are_ints_are_their_digits():
    def path(*labels):
        g = nx.path_graph(len(labels))
        nx.set_node_attributes(g, dict(enumerate(labels)), "label")
        nx.set_edge_attributes(g, 1, "label")
        return g

    ours = SubgraphVectorizer(min_support=1, closed=False)
    found = ours.fit_transform([path(0, 1, 0), path(np.int64(1), 0)])
    assert dense(found).tolist() == [[1, 1], [1, 0]]
    assert dense(ours.transform([path("0", "1"), path(2, 2)])).tolist() == [
        [1, 0],
        [0, 0],
    ]
    with pytest.raises(kestro.KestroError, match=r"record 1: a label .* not 1\.0"):
        ours.fit([path(0, 1), path(0, 1.0)])
    found = ours.set_params(on_error="zeros").transform([path(0, 1), path(0, 1.0)])
    assert dense(found).tolist() == [[1, 0], [0, 0]]


def test_a_mixture_is_of_the_kind_of_the_first(smiles):
    molecule = Chem.MolFromSmiles("CCO")
    [graph] = kestro.from_smiles(["CCO"])
    several = ["CCO", molecule, graph, graph.to_networkx()]
    for i, first in enumerate(several):
        X = [None, first, *several[:i], *several[i + 1 :]]
        ours = SubgraphVectorizer(min_support=1, on_error="zeros")
        assert dense(ours.fit_transform(X))[:, 0].tolist() == [0, 1, 0, 0, 0]
        assert [skipped.record for skipped in ours.unreadable_] == [0, 2, 3, 4]


def test_parameters_are_looked_at_in_transform(smiles):
    ours = SubgraphVectorizer(max_size=2).fit(smiles)
    for name in ("sparse_output", "on_error", "n_jobs"):
        with pytest.raises((TypeError, ValueError), match=name):
            clone_fitted(ours).set_params(**{name: "x"}).transform(smiles)


def clone_fitted(model):
    return pickle.loads(pickle.dumps(model))


def test_any_number_of_threads(smiles):
    one = SubgraphVectorizer().fit(smiles)
    two = SubgraphVectorizer(n_jobs=2).fit(smiles)
    assert (dense(one.transform(smiles)) == dense(two.transform(smiles))).all()


def test_a_stored_model_is_the_same_in_another_process(smiles, tmp_path):
    ours = SubgraphVectorizer(max_features=50, min_support=0.1).fit(smiles[:40])
    (tmp_path / "model.pickle").write_bytes(pickle.dumps(ours))
    (tmp_path / "smiles.pickle").write_bytes(pickle.dumps(smiles))
    code = (
        "import pickle, sys; from pathlib import Path\n"
        "folder = Path(sys.argv[1])\n"
        "model = pickle.loads((folder / 'model.pickle').read_bytes())\n"
        "smiles = pickle.loads((folder / 'smiles.pickle').read_bytes())\n"
        "found = model.transform(smiles), model.get_feature_names_out()\n"
        "(folder / 'found.pickle').write_bytes(pickle.dumps(found))\n"
    )
    subprocess.run([sys.executable, "-c", code, str(tmp_path)], check=True)
    found, names = pickle.loads((tmp_path / "found.pickle").read_bytes())
    assert (dense(found) == dense(ours.transform(smiles))).all()
    assert names.tolist() == ours.get_feature_names_out().tolist()


def test_a_stored_model_does_not_hold_the_graphs(smiles):
    ours = SubgraphVectorizer(max_size=2).fit(["FC(I)CBr", *smiles])
    with pytest.raises(kestro.KestroError, match="without its database"):
        _ = ours.result_.db
    assert len(ours.result_.score([1] * 21 + [0] * 40)) == len(ours.result_)


def test_ctrl_c_fits_nothing(explosive):
    """The patterns found until then would be another model."""
    ours = SubgraphVectorizer(min_support=2, max_size=None)  # minutes
    threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
    with (
        pytest.warns(RuntimeWarning, match="interrupted"),
        pytest.raises(KeyboardInterrupt),
    ):
        ours.fit(explosive)
    with pytest.raises(NotFittedError):
        ours.transform(explosive)


def without(module, code):
    """Run code where a library is not installed; return what it printed."""
    hidden = f"import sys; sys.modules[{module!r}] = None\n"
    done = subprocess.run(
        [sys.executable, "-c", hidden + code],
        capture_output=True,
        text=True,
        check=True,
    )
    return done.stdout


def test_without_scikit_learn():
    code = "try: import kestro.sklearn\nexcept ImportError as e: print(e)"
    assert "pip install 'kestro[sklearn]'" in without("sklearn", code)


def test_graphs_without_rdkit():
    code = (
        "import kestro; from kestro.sklearn import SubgraphVectorizer\n"
        "db = kestro.from_edges([['A', 'B']] * 2, [[(0, 1, 'c')]] * 2)\n"
        "print(SubgraphVectorizer().fit_transform(list(db)).toarray().tolist())"
    )
    assert without("rdkit", code) == "[[1.0], [1.0]]\n"


def folds():
    return StratifiedKFold(4, shuffle=True, random_state=1)


@pytest.mark.parametrize("kind", ["database", "list of SMILES", "array of molecules"])
def test_cross_validation_mines_training_graphs_alone(smiles, y, kind):
    model = make_pipeline(
        SubgraphVectorizer(min_support=0.1, max_size=4),
        SelectKBest(score_fisher, k=20),
        LogisticRegression(),
    )
    found = cross_val_score(model, kinds(smiles)[kind], y, cv=folds())
    plain = []
    for train, test in folds().split(smiles, y):
        db, other = (
            kestro.from_smiles([smiles[i] for i in part]) for part in (train, test)
        )
        mined = kestro.mine(db, min_support=0.1, max_size=4, closed=True)
        best = SelectKBest(score_fisher, k=20).fit(mined.incidence(), y[train])
        chosen = mined[best.get_support()]
        fitted = LogisticRegression().fit(chosen.incidence(), y[train])
        plain.append(fitted.score(chosen.transform(other), y[test]))
    assert found.tolist() == plain
    assert len(found) == 4 and found.min() > 0.8


def test_grid_search_in_two_processes(smiles, y):
    model = make_pipeline(
        SubgraphVectorizer(), SelectKBest(score_chi2, k=10), LogisticRegression()
    )
    grid = {
        "subgraphvectorizer__min_support": [0.1, "20%"],
        "subgraphvectorizer__max_size": [2, 4],
    }
    two = GridSearchCV(model, grid, cv=folds(), n_jobs=2).fit(smiles, y)
    one = GridSearchCV(model, grid, cv=folds()).fit(smiles, y)
    assert len(two.cv_results_["params"]) == 4
    scores = [search.cv_results_["mean_test_score"] for search in (one, two)]
    assert np.isfinite(scores[0]).all() and (scores[0] == scores[1]).all()
    assert two.best_score_ > 0.8
    names = two.best_estimator_[:-1].get_feature_names_out()
    assert len(names) == 10 and all(name.startswith("[#") for name in names)
    assert (two.predict(smiles) == one.predict(smiles)).all()


def test_held_out_graphs_are_looked_through_as_by_the_result(smiles, y):
    train, test, _, _ = train_test_split(smiles, y, random_state=3, stratify=y)
    ours = SubgraphVectorizer(min_support="10%", max_size=6).fit(train)
    mined = kestro.mine(
        kestro.from_smiles(train), min_support="10%", max_size=6, closed=True
    )
    expected = mined.transform(kestro.from_smiles(test)).toarray()
    assert 0 < expected.sum() < expected.size
    assert (dense(ours.transform(test)) == expected).all()


def test_it_does_not_ask_for_classes(smiles):
    with_one = SubgraphVectorizer().fit(smiles, np.zeros(60))
    assert (
        dense(with_one.transform(smiles))
        == dense(SubgraphVectorizer().fit_transform(smiles))
    ).all()


# Scores


@pytest.fixture(scope="module")
def mined(smiles):
    return kestro.mine(kestro.from_smiles(smiles), min_support=0.1, max_size=5)


def as_pair(found):
    return found if isinstance(found, tuple) else (found, None)


@pytest.mark.parametrize("method", SCORES)
@pytest.mark.parametrize("form", ["csr", "csc", "dense", "bool", "frame"])
def test_scores_are_those_of_the_result(mined, y, method, form):
    has = mined.incidence()
    X = {
        "csr": has,
        "csc": has.tocsc().astype(np.float64),
        "dense": has.toarray(),
        "bool": has.toarray().astype(bool),
        "frame": pd.DataFrame(has.toarray().astype(np.float64)),
    }[form]
    scores, p = as_pair(SCORES[method](X, y))
    expected = mined.score(y, method=method)
    np.testing.assert_array_equal(scores, expected["score"])
    if method in ("chi2", "fisher"):
        np.testing.assert_array_equal(p, expected["p"])
    else:
        assert p is None


@pytest.mark.parametrize("method", SCORES)
def test_scores_of_several_classes(mined, method):
    y = np.array(["amino"] * 20 + ["b"] * 25 + ["c"] * 15)
    scores, p = as_pair(SCORES[method](mined.incidence(), y))
    table = mined.score(y, method=method)
    by_class = table["score"].to_numpy().reshape(3, -1)
    np.testing.assert_array_equal(scores, np.fmax.reduce(by_class))
    if p is not None:
        least = table["p"].to_numpy().reshape(3, -1).min(axis=0)
        np.testing.assert_array_equal(p, np.minimum(3 * least, 1))


def test_chi2_of_presence_and_absence_is_that_of_both(mined, y):
    """scikit-learn's leaves out the zeros; both together are the whole table."""
    has = mined.incidence().toarray().astype(np.int64)
    ours, p = score_chi2(has, y)
    theirs = chi2(has, y)[0] + chi2(1 - has, y)[0]
    told = (0 < has.sum(axis=0)) & (has.sum(axis=0) < 60)
    assert told.sum() > 50
    np.testing.assert_allclose(ours[told], theirs[told])
    assert (ours[~told] == 0).all() and (p[~told] == 1).all()


def test_information_gain_is_mutual_information(mined, y):
    has = mined.incidence().toarray()
    theirs = [mutual_info_score(y, column) / np.log(2) for column in has.T]
    np.testing.assert_allclose(score_information_gain(has, y), theirs, atol=1e-12)


def test_explicit_zeros_are_zeros(mined, y):
    has = mined.incidence().astype(np.float64)
    padded = has.copy()
    padded.data[::3] = 0
    np.testing.assert_array_equal(
        score_chi2(padded, y)[0], score_chi2(padded.toarray(), y)[0]
    )


def chosen_names(X, y):
    steps = make_pipeline(
        SubgraphVectorizer(max_size=3), SelectKBest(score_chi2, k=5)
    ).fit(X, y)
    return steps.get_feature_names_out().tolist()


def test_classes_of_every_type(smiles, y):
    """The same selection, whatever the two classes are called."""
    text = np.where(y == 1, "amino", "acid-free")
    expected = chosen_names(smiles, y)
    assert len(expected) == 5
    for other in (
        y.tolist(),
        text,
        text.tolist(),
        y == 1,
        y.astype(float),
        pd.Series(text, index=range(60, 0, -1)),
        pd.Series(text, dtype="category"),
        pd.Series(y, dtype="Int64"),
    ):
        assert chosen_names(smiles, other) == expected


@pytest.mark.parametrize(
    "y, words",
    [
        (None, "y is missing"),
        ([1] * 60, "at least two classes"),
        ([*[0.5] * 30, *[0.25] * 30], "measurements"),
        ([*range(59), float("nan")], "NaN"),
        ([*"ab" * 29, "a", None], "missing"),
        ([*"ab" * 29], "inconsistent numbers of samples"),
    ],
)
def test_classes_that_are_none(smiles, y, words):
    with pytest.raises(ValueError, match=words):
        chosen_names(smiles, y)


@pytest.mark.parametrize("score", SCORES.values())
def test_scores_refuse_what_they_cannot_score(score):
    with pytest.raises(ValueError, match="0 and 1"):
        score([[2, 0], [1, 1]], [0, 1])
    with pytest.raises(kestro.KestroError, match="at least two classes"):
        score([[1, 0], [1, 1]], [1, 1])
    with pytest.raises(kestro.KestroError, match="3 entries for 2 graphs"):
        score([[1, 0], [1, 1]], [1, 1, 0])


def test_selection_by_false_discovery_rate(mined, y):
    chosen = SelectFdr(score_fisher, alpha=0.01).fit(mined.incidence(), y)
    p = mined.score(y, method="fisher")["p"].to_numpy()
    ranked = np.sort(p)
    limit = ranked[ranked <= 0.01 * np.arange(1, len(p) + 1) / len(p)].max()
    assert (chosen.get_support() == (p <= limit)).all()
    assert 0 < chosen.get_support().sum() < len(p)


def test_scores_of_entries_that_come_in_pieces():
    X = scipy.sparse.csr_array((np.ones(3), [0, 0, 1], [0, 2, 3, 3]), shape=(3, 2))
    with pytest.raises(ValueError, match="0 and 1"):
        score_chi2(X, [1, 0, 0])
