"""Subgraphs as features for scikit-learn, and scores to select them by.

`SubgraphVectorizer` makes a column per pattern of the graphs that it is fitted on,
so in a pipeline the patterns of each fold come of its training graphs alone.  The
functions ``score_...`` are score functions for
``SelectKBest`` and its relatives, by which the selection
happens there, too.
"""

from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any, Self, TypeAlias

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro import _scoring
from kestro._arguments import (
    MinSupport,
    OnError,
    check_choice,
    optional_number,
    truth,
)
from kestro._choices import largest
from kestro._classes import classes
from kestro._database import Skipped
from kestro._mine import mine
from kestro._ragged import offsets_of, small
from kestro._records import Records, read_records
from kestro._result import Result

try:
    from sklearn.base import BaseEstimator, TransformerMixin
    from sklearn.utils import Tags, check_array
    from sklearn.utils.validation import check_is_fitted
except ImportError as e:
    raise ImportError("this needs scikit-learn: pip install 'kestro[sklearn]'") from e

if TYPE_CHECKING:
    import scipy.sparse

__all__ = [
    "SubgraphVectorizer",
    "score_chi2",
    "score_fisher",
    "score_growth_rate",
    "score_information_gain",
    "score_odds_ratio",
]

Features: TypeAlias = "scipy.sparse.csr_array | NDArray[np.float64]"
Scores = NDArray[np.float64]


class SubgraphVectorizer(TransformerMixin, BaseEstimator):  # type: ignore[misc]
    """Turn graphs into which frequent connected subgraphs they contain.

    `fit` mines the graphs; `transform` gives a row per graph and a column per
    pattern, 1 where the graph contains the pattern and 0 elsewhere.

    Graphs are a `~kestro.GraphDatabase`, which is taken as it is, or a list, an array
    of one dimension or a Series of SMILES, of RDKit's molecules, of NetworkX's
    graphs with labels in the attribute "label", or of `~kestro.Graph`; all are of
    the kind of the first one, as labels of different kinds need not mean the same.
    Columns of a data frame reach it through a ``ColumnTransformer`` that names one
    column and not a list.  A database that scikit-learn divides, as in
    cross-validation, becomes lists of `~kestro.Graph`: the same features, by other
    names.

    Parameters
    ----------
    min_support : int, float or str
        As for `~kestro.mine`: an int is a number of graphs, a float a fraction of
        those that could be read, a str like "5%" a percentage.
    max_size : int, optional
        The most edges of a pattern; None is no bound.
    closed : bool
        Leave out patterns that a larger one with the same support contains:
        columns that it would double.  Of patterns of ``max_size`` edges this
        is unknown, and they are kept.
    max_features : int, optional
        Keep this many patterns at most, those of the highest support; of equal
        ones those that come first, by size and then id.  The order of columns
        stays.  Frequent patterns are small: to keep those that tell classes
        apart, let a selection follow, such as ``SelectKBest(score_chi2)``.
    n_jobs : int, optional
        Threads for mining and looking for patterns: None is 1, -1 all cores
        that the process may use.  The features are the same for any number.
    sparse_output : bool
        Whether `transform` returns a sparse array.  As for scikit-learn's own
        transformers, ``set_output`` with "pandas" or "polars" wants False here.
    on_error : {"raise", "zeros"}
        What to do with a record that cannot be read, or is missing.  With
        "zeros" it is left out of the mining, and its row is all zeros.  Rows
        are never left out.

    Attributes
    ----------
    result_ : Result
        The patterns, in the order of columns, by size and then id.  It does
        not hold the graphs, so that a model that is stored does not either.
    unreadable_ : tuple of Skipped
        Records of `fit` that could not be read, by their rows, counted from 0,
        and why.  Of a database, whose graphs have been read, there are none.

    See Also
    --------
    kestro.mine : What finds the patterns.
    kestro.Result.transform : What looks for them.

    Notes
    -----
    Entries are of float64, as scikit-learn's models take them: sums and
    products of small integers would overflow.

    Examples
    --------
    >>> from kestro.sklearn import SubgraphVectorizer
    >>> vectorizer = SubgraphVectorizer(min_support=2, sparse_output=False)
    >>> vectorizer.fit_transform(["CCO", "CCN", "OC=O"])
    array([[1., 1.],
           [0., 1.],
           [1., 0.]])
    >>> vectorizer.get_feature_names_out()
    array(['[#6&A]-[#8&A]', '[#6&A]-[#6&A]'], dtype=object)
    >>> vectorizer.transform(["OCCCN"])
    array([[1., 1.]])
    """

    result_: Result
    unreadable_: tuple[Skipped, ...]

    def __init__(
        self,
        min_support: MinSupport = 0.05,
        max_size: int | None = 8,
        closed: bool = True,
        max_features: int | None = None,
        n_jobs: int | None = None,
        sparse_output: bool = True,
        on_error: str = "raise",
    ) -> None:
        self.min_support = min_support
        self.max_size = max_size
        self.closed = closed
        self.max_features = max_features
        self.n_jobs = n_jobs
        self.sparse_output = sparse_output
        self.on_error = on_error

    def fit(self, X: object, y: object = None) -> Self:
        """Find the patterns of graphs.

        Parameters
        ----------
        X : GraphDatabase or list of records, shape (graphs,)
            The graphs.
        y : ignored
            For pipelines.

        Returns
        -------
        SubgraphVectorizer
            This one.  Where no pattern is frequent a `UserWarning` says so, and
            `transform` returns no columns.

        Raises
        ------
        KestroError
            For a record that cannot be read.
        TypeError, ValueError
            For parameters that make no sense, for records of which none is of
            a kind that is read, and where there is none at all.
        """
        self._fit(X)
        return self

    def fit_transform(self, X: object, y: object = None, **params: object) -> Features:
        """Find the patterns of graphs, and return which of these contain them.

        That is `fit` and `transform`, but the graphs are read once, and mining
        has told already which of them contain a pattern.

        Parameters
        ----------
        X : GraphDatabase or list of records, shape (graphs,)
            The graphs.
        y : ignored
            For pipelines.
        **params : ignored
            For pipelines.

        Returns
        -------
        csr_array or ndarray of float64, shape (graphs, patterns)
            As `transform` does.

        Raises
        ------
        KestroError, TypeError, ValueError
            As `fit` does.
        """
        records = self._fit(X)
        return self._features(records, self.result_.incidence())

    def transform(self, X: object) -> Features:
        """Return which graphs contain which patterns.

        Parameters
        ----------
        X : GraphDatabase or list of records, shape (graphs,)
            The graphs.  Molecules are read with charges and hydrogens where
            those of `fit` were.

        Returns
        -------
        csr_array or ndarray of float64, shape (graphs, patterns)
            1 where the graph contains the pattern, else 0; with ``set_output`` a
            table.  Where no label of a vertex, or of an edge, is known on both
            sides a `UserWarning` says so, as `~kestro.Result.transform` does.

        Raises
        ------
        KestroError
            For a record that cannot be read, and for a database of molecules
            with other labels than those of `fit`.
        sklearn.exceptions.NotFittedError
            Before `fit`.
        TypeError, ValueError
            For records of which none is of a kind that is read.
        """
        check_is_fitted(self)
        truth("sparse_output", self.sparse_output)
        labels = self.result_._patterns.summary.atom_labels
        records = read_records(X, self._on_unread(), labels)

        def tell(text: str) -> None:
            # scikit-learn wraps this method, for set_output.
            warnings.warn(text, UserWarning, stacklevel=6)

        found = self.result_._found_in(records.db, self.n_jobs, tell)
        return self._features(records, found)

    def get_feature_names_out(self, input_features: object = None) -> NDArray[Any]:
        """Return the names of the columns.

        Parameters
        ----------
        input_features : ignored
            For pipelines.

        Returns
        -------
        ndarray of object, shape (patterns,)
            Of molecules the SMARTS, which is another one for each pattern and
            means the same in each fit.  Of other graphs the ids, such as "3-7",
            which number the patterns of one fit: ``result_["3-7"]`` is the
            pattern.

        Raises
        ------
        sklearn.exceptions.NotFittedError
            Before `fit`.
        """
        check_is_fitted(self)
        if self.result_._patterns.summary.atom_labels is None:
            names = self.result_._patterns.names(self.result_.positions)
        else:
            names = [pattern.to_smarts() for pattern in self.result_]
        return np.array(names, dtype=object)

    @property
    def _n_features_out(self) -> int:
        """The number of columns, where scikit-learn looks for it."""
        return len(self.result_)

    def _fit(self, X: object) -> Records:
        most = optional_number("max_features", self.max_features, 1, 2**63 - 1)
        truth("sparse_output", self.sparse_output)
        records = read_records(X, self._on_unread())
        if not records.total:
            raise ValueError("X has no records, and at least 1 is required")
        mined = mine(
            records.db,
            min_support=self.min_support,
            max_size=self.max_size,
            closed=self.closed,
            n_jobs=self.n_jobs,
        )
        if not mined.complete:
            raise KeyboardInterrupt  # a model of some of the patterns is another one
        if most is not None:
            mined = mined[np.sort(largest(mined.support.astype(np.float64), most))]
        if not len(mined):
            warnings.warn(
                f"no pattern is in {mined.min_support} of {mined.graphs} graphs: there "
                f"are no features",
                UserWarning,
                stacklevel=3,
            )
        self.result_ = Result(mined._patterns, None, mined.positions, mined._filters)
        self.unreadable_ = records.skipped
        return records

    def _on_unread(self) -> OnError:
        check_choice("on_error", self.on_error, ("raise", "zeros"))
        return "raise" if self.on_error == "raise" else "skip"

    def _features(self, records: Records, found: scipy.sparse.csr_array) -> Features:
        """Return what was found in the graphs, a row per record."""
        import scipy.sparse

        counts = np.zeros(records.total, np.int64)
        counts[records.rows] = np.diff(found.indptr)
        features = scipy.sparse.csr_array(
            (found.data.astype(np.float64), found.indices, small(offsets_of(counts))),
            shape=(records.total, found.shape[1]),
        )
        if self.sparse_output:
            return features
        array: NDArray[np.float64] = features.toarray()
        return array

    def __sklearn_tags__(self) -> Tags:
        """Return what scikit-learn asks of an estimator."""
        tags = super().__sklearn_tags__()
        tags.input_tags.one_d_array = True
        tags.input_tags.two_d_array = False
        tags.input_tags.string = True
        tags.transformer_tags.preserves_dtype = []
        return tags


def score_chi2(X: ArrayLike, y: ArrayLike) -> tuple[Scores, Scores]:
    """Score features by Pearson's chi-square of presence and class.

    It asks of both, the graphs with the subgraph and those without, unlike
    ``chi2`` of ``sklearn.feature_selection``, which takes features for counts and
    leaves out the zeros.

    Parameters
    ----------
    X : array or sparse array of 0 and 1, shape (graphs, patterns)
        Which graph contains which pattern.
    y : array-like, shape (graphs,)
        The classes.  Of two, one is compared with the other; of more, each one
        with all others, and the best counts.

    Returns
    -------
    scores : ndarray of float64, shape (patterns,)
        The larger, the better; the same as `~kestro.Result.score` gives, of more
        than two classes the largest.
    pvalues : ndarray of float64, shape (patterns,)
        Of more than two classes the smallest by their number, at most 1.

    Raises
    ------
    KestroError
        When y has not one class for each row, or one class only.
    ValueError
        When X has other entries than 0 and 1.

    Examples
    --------
    >>> from kestro.sklearn import score_chi2
    >>> score_chi2([[1, 0], [1, 1], [0, 1], [0, 0]], [1, 1, 0, 0])[0]
    array([4., 0.])
    """
    return _tested(X, y, "chi2")


def score_fisher(X: ArrayLike, y: ArrayLike) -> tuple[Scores, Scores]:
    """Score features by Fisher's exact test of presence and class, two-sided.

    Parameters
    ----------
    X : array or sparse array of 0 and 1, shape (graphs, patterns)
        As for `score_chi2`.
    y : array-like, shape (graphs,)
        As for `score_chi2`.

    Returns
    -------
    scores : ndarray of float64, shape (patterns,)
        -log10 of the probability, of more than two classes the largest.
    pvalues : ndarray of float64, shape (patterns,)
        Of more than two classes the smallest by their number, at most 1.

    Raises
    ------
    KestroError, ValueError
        As `score_chi2` does.
    """
    return _tested(X, y, "fisher")


def score_information_gain(X: ArrayLike, y: ArrayLike) -> Scores:
    """Score features by how many bits they lower the entropy of the class.

    Of two classes that is their mutual information.

    Parameters
    ----------
    X : array or sparse array of 0 and 1, shape (graphs, patterns)
        As for `score_chi2`.
    y : array-like, shape (graphs,)
        As for `score_chi2`.

    Returns
    -------
    ndarray of float64, shape (patterns,)
        The larger, the better.

    Raises
    ------
    KestroError, ValueError
        As `score_chi2` does.
    """
    return _scored(X, y, "information_gain")[0]


def score_odds_ratio(X: ArrayLike, y: ArrayLike) -> Scores:
    """Score features by the odds ratio of presence and class.

    Unlike `score_chi2` it is large only for what the class has more often; of two
    classes that is the last in sorted order, of more any one.

    Parameters
    ----------
    X : array or sparse array of 0 and 1, shape (graphs, patterns)
        As for `score_chi2`.
    y : array-like, shape (graphs,)
        As for `score_chi2`.

    Returns
    -------
    ndarray of float64, shape (patterns,)
        Infinite where the denominator alone is 0, NaN where both are, which
        ``SelectKBest`` takes for the worst.

    Raises
    ------
    KestroError, ValueError
        As `score_chi2` does.
    """
    return _scored(X, y, "odds_ratio")[0]


def score_growth_rate(X: ArrayLike, y: ArrayLike) -> Scores:
    """Score features by how many times as frequent they are in the class.

    Of two classes that is the last in sorted order, of more any one.

    Parameters
    ----------
    X : array or sparse array of 0 and 1, shape (graphs, patterns)
        As for `score_chi2`.
    y : array-like, shape (graphs,)
        As for `score_chi2`.

    Returns
    -------
    ndarray of float64, shape (patterns,)
        The fraction of the class that has the pattern, by that of the others;
        infinite where no other has it, NaN where none has.

    Raises
    ------
    KestroError, ValueError
        As `score_chi2` does.
    """
    return _scored(X, y, "growth_rate")[0]


def _tested(X: ArrayLike, y: ArrayLike, method: str) -> tuple[Scores, Scores]:
    scores, p = _scored(X, y, method)
    assert p is not None
    return scores, p


def _scored(X: ArrayLike, y: ArrayLike, method: str) -> tuple[Scores, Scores | None]:
    """Return the score of the best class, and p where the method is a test."""
    has = _presence(X)
    names, codes = classes(y, has.shape[0])
    support = _column_sums(has)
    found = []
    for code in range(len(names)) if len(names) > 2 else [1]:
        members = codes == code
        inside = _column_sums(has[np.flatnonzero(members)])
        tables = _scoring.Tables(inside, support, int(members.sum()), len(members))
        found.append(_scoring.score_tables(tables, method))
    scores: Scores = np.fmax.reduce([score for score, _ in found])
    tests = [p for _, p in found if p is not None]
    if not tests:
        return scores, None
    # One of several tests is the best by chance more often than one alone.
    return scores, np.minimum(len(tests) * np.minimum.reduce(tests), 1.0)


def _presence(X: ArrayLike) -> scipy.sparse.csr_array:
    """Return where the entries are 1, as numbers that can be summed."""
    import scipy.sparse

    checked = check_array(X, accept_sparse=("csr", "csc"))
    has = scipy.sparse.csr_array(checked, copy=True)
    has.sum_duplicates()
    if not np.isin(has.data, (0, 1)).all():
        raise ValueError("X must hold 0 and 1: whether a graph contains a pattern")
    return has.astype(np.int64)


def _column_sums(has: scipy.sparse.csr_array) -> NDArray[np.int64]:
    sums: NDArray[np.int64] = np.asarray(has.sum(axis=0), np.int64).reshape(-1)
    return sums
