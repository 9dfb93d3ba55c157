"""What a run found."""

from __future__ import annotations

import os
import warnings
from collections.abc import Callable, Iterable
from dataclasses import replace
from pathlib import Path
from typing import IO, TYPE_CHECKING

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro import (
    _choices,
    _html,
    _jsonl,
    _matching,
    _pattern_table,
    _program_files,
    _scoring,
)
from kestro._arguments import Ids, Index, Selection, job_count
from kestro._aside import write_aside
from kestro._database import Graph, GraphDatabase
from kestro._errors import KestroError
from kestro._pattern import Pattern
from kestro._pattern_sequence import PatternSequence
from kestro._patterns import Patterns
from kestro._picture import Picture, Size
from kestro._ragged import places, small
from kestro._summary import Filter, RunSummary, describe

if TYPE_CHECKING:
    import pandas as pd
    import pyarrow as pa
    import scipy.sparse
    from matplotlib.axes import Axes
    from pyspark.sql import DataFrame, SparkSession


class Result(PatternSequence):
    """Patterns of a run: a sequence of `Pattern`, by size, then id.

    An int gives a pattern, as does an id such as "3-7"; a slice, a boolean
    mask, or a sequence of positions or of ids gives a result with these
    patterns.  All results of a run share its arrays.  Results can be pickled.

    Attributes
    ----------
    db : GraphDatabase
        What was mined.
    complete : bool
        Whether the run found everything that was asked for.  Patterns beyond
        ``max_size`` were not.
    stopped_by : str or None
        What ended it early: "time_limit", "max_patterns", "interrupt" for
        Ctrl-C, "progress" for the callback.
    undecided : int
        Patterns that a filter for closed or maximal ones kept because the
        answer is unknown.
    """

    __slots__ = ("_lattice",)

    def __init__(
        self,
        patterns: Patterns,
        db: GraphDatabase | None,
        chosen: NDArray[np.int64] | None = None,
        filters: tuple[Filter, ...] = (),
    ) -> None:
        super().__init__(patterns, db, chosen, filters)
        self._lattice: _matching.Lattice | None = None  # made when it is needed

    def _headline(self) -> str:
        sizes = self.size
        what = f"{len(self)} pattern" + ("" if len(self) == 1 else "s")
        if len(sizes):
            least, most = sizes.min(), sizes.max()
            what += f" of {least} to {most}" if least < most else f" of {most}"
            what += " edge" + ("" if most == 1 else "s")
        what += f" in at least {self.min_support} of {self.graphs} graphs"
        if self.undecided:
            what += f", {self.undecided} of them undecided"
        if self.stopped_by:
            what += f"; stopped by {self.stopped_by}"
        return what

    def __repr__(self) -> str:
        """Return how many patterns of which sizes there are."""
        return f"<Result: {self._headline()}>"

    def _repr_html_(self) -> str:
        """Return the same and a table of the first patterns, for notebooks."""
        return _html.page(self._headline(), self[: _html.ROWS], len(self))

    def to_pandas(self) -> pd.DataFrame:
        """Return a table with a row per pattern.

        Returns
        -------
        DataFrame
            Columns ``size`` (edges), ``id``, ``support`` (graphs),
            ``fraction`` (of the graphs), ``vertices``, ``edges``, for
            molecules ``smarts``, then ``closed`` and ``maximal``, which are NA
            where that is unknown.
        """
        return _pattern_table.frame(self._patterns, self.positions)

    def to_arrow(self) -> pa.Table:
        """Return a table of Arrow's with a row per pattern.

        Other libraries take it, or the result itself, through the Arrow C
        stream interface, as in ``polars.DataFrame(result)``; ``pyarrow.parquet``
        writes it.

        Returns
        -------
        pyarrow.Table
            The columns of `to_pandas`; then lists: ``vertex_labels``, ``ends``
            (pairs of vertices) and ``edge_labels``, and, where they are known,
            ``tids`` and ``parents`` (ids).  Types are the same for any result,
            but labels are binary where one of them is no UTF-8.

        Raises
        ------
        ImportError
            Without pyarrow, which ``pip install kestro[arrow]`` brings.
        """
        return _pattern_table.table(self._patterns, self.positions)

    def to_spark(self, spark: SparkSession | None = None) -> DataFrame:
        """Return a DataFrame of Spark's with a row per pattern.

        Parameters
        ----------
        spark : SparkSession, optional
            The session; None is the one that is active.

        Returns
        -------
        pyspark.sql.DataFrame
            The columns of `to_arrow`.

        Raises
        ------
        ImportError
            Without PySpark, which ``pip install kestro[spark]`` brings.
        """
        from kestro.spark._session import session_of

        return session_of(spark).createDataFrame(self.to_arrow())

    def __arrow_c_stream__(self, requested_schema: object | None = None) -> object:
        """Return the stream of `to_arrow`, for libraries that read Arrow."""
        return self.to_arrow().__arrow_c_stream__(requested_schema)

    def incidence(self) -> scipy.sparse.csr_array:
        """Return which graph contains which pattern.

        Returns
        -------
        csr_array of uint8, shape (graphs, patterns)
            1 where the graph contains the pattern.

        Raises
        ------
        KestroError
            When the TIDs are unknown.
        """
        import scipy.sparse

        p = self._patterns
        found, offsets = places(p.tid_offsets, self.positions)
        by_pattern = scipy.sparse.csc_array(
            (np.ones(len(found), np.uint8), p.tids[found], small(offsets)),
            shape=(self.graphs, len(self)),
        )
        return by_pattern.tocsr()

    def transform(
        self, other: GraphDatabase, *, n_jobs: int | None = None
    ) -> scipy.sparse.csr_array:
        """Return which graph of another database contains which pattern.

        A pattern occurs in a graph where its vertices can be laid on different
        vertices of the same label so that its edges come to lie on edges of
        the same label [1]_.  Labels that the patterns do not have match
        nothing.  A pattern is not looked for where one of its parents is
        missing.

        Parameters
        ----------
        other : GraphDatabase
            The graphs; on those mined this gives what `incidence` gives.
        n_jobs : int, optional
            Threads: None is 1, -1 all cores that the process may use.

        Returns
        -------
        csr_array of uint8, shape (graphs of other, patterns)
            1 where the graph contains the pattern.  Where no label of a vertex, or
            of an edge, is known on both sides a `UserWarning` says so, unless both
            are of molecules, whose labels mean the same.

        Raises
        ------
        KestroError
            When both databases are of molecules, of which one was read with
            charges or hydrogens and the other one without.
        TypeError
            When ``other`` is no database.

        References
        ----------
        .. [1] J. R. Ullmann, An algorithm for subgraph isomorphism,
           J. ACM 23, 1976.

        Examples
        --------
        >>> import kestro
        >>> db = kestro.from_edges([["C", "O"]] * 2, [[(0, 1, "=")]] * 2)
        >>> other = kestro.from_edges([["O", "C"], ["N"]], [[(0, 1, "=")], []])
        >>> kestro.mine(db, min_support=2).transform(other).toarray().tolist()
        [[1], [0]]
        """

        def tell(text: str) -> None:
            warnings.warn(text, UserWarning, stacklevel=5)

        return self._found_in(other, n_jobs, tell)

    def _found_in(
        self, other: GraphDatabase, n_jobs: int | None, tell: Callable[[str], object]
    ) -> scipy.sparse.csr_array:
        """Return what `transform` does; labels that never meet are told."""
        _matching.check_database(self._patterns, other)
        jobs = job_count(n_jobs)
        _matching.tell_strange_labels(self._patterns, self.positions, other, tell)
        if self._lattice is None:
            self._lattice = _matching.Lattice(self._patterns, self.positions)
        return self._lattice.match(other._native, jobs)

    def embeddings(
        self,
        pattern: Pattern | Index | str,
        graph: Graph | Index,
        limit: int | None = None,
    ) -> NDArray[np.int32]:
        """Return where a pattern lies in a graph.

        Parameters
        ----------
        pattern : Pattern, int or str
            One of this run, or a position in this result, or an id.
        graph : Graph or int
            Any graph, or a position in the database that was mined.
        limit : int, optional
            The most embeddings to return.  A pattern of many like vertices
            has factorials of them.

        Returns
        -------
        ndarray of int32, shape (embeddings, vertices of the pattern)
            Per embedding and vertex of the pattern the vertex of the graph.
            Columns follow the vertices of ``pattern.graph``, not the atoms of
            its SMARTS, which `Pattern.smarts_order` puts them into.
            Images of a symmetric pattern come once for each symmetry.

        Raises
        ------
        IndexError, KeyError
            When there is no pattern or graph at that position, or none of
            that id.
        KestroError
            When the pattern is of another run, or the graph is none.
        TypeError
            For a graph or a pattern of another type, and for a position where
            the result was read without its database.
        ValueError
            When ``limit`` is less than 0.
        """
        if isinstance(pattern, Pattern):
            if pattern._all is not self._patterns:
                raise KestroError("the pattern is of another run")
            i = pattern._i
        elif isinstance(pattern, str):
            i = int(self._named([pattern])[0])
        else:
            i = self._at(pattern)
        return _matching.embeddings(self._patterns, i, graph, self._db, limit)

    def score(
        self,
        y: ArrayLike | None = None,
        *,
        method: _scoring.Method = "chi2",
        correction: _scoring.Correction | None = None,
        alpha: float = 0.05,
    ) -> pd.DataFrame:
        """Score how well each pattern tells classes of graphs apart.

        Of two classes, the last in sorted order is compared with the
        other; of more, each one with all others.

        Parameters
        ----------
        y : array-like, shape (graphs,), optional
            The class of each graph of ``db``, which is what is left after
            skipping: ``values[db.source]`` aligns what was not skipped.  The
            index of a Series is not looked at; y is taken by position.
            None is ``db.classes``.
        method : str
            - "chi2": Pearson's chi-square without continuity correction.
            - "fisher": Fisher's exact test, two-sided: the probability of all
              tables with the same margins that are no likelier [1]_.
            - "information_gain": by how many bits the pattern lowers the
              entropy of the class.
            - "odds_ratio": of the table; infinite where the denominator alone
              is 0, NaN where both are.
            - "growth_rate": the fraction of the class that has the pattern,
              by that of the other graphs [2]_; infinite where no other has.
        correction : {"bh", "bonferroni", "tarone"}, optional
            For "chi2" and "fisher" only.  Benjamini's and Hochberg's [3]_
            keeps the rate of false discoveries at ``alpha``; Bonferroni's and
            Tarone's [4]_ the probability of any.  The family are all patterns
            of the run, selected or not; those with the same TIDs are one.  Each
            class has a family of its own.
        alpha : float
            The level of significance, in (0, 1).

        Returns
        -------
        DataFrame
            A row per pattern, in order, and per class where there are more
            than two: ``id``, ``class``, ``inside`` and ``outside`` (graphs of
            the class, and others, that contain the pattern), ``rate_inside``
            and ``rate_outside`` (the same as fractions of the class and of the
            others), ``score``; with "chi2" and "fisher" ``p``, with "fisher"
            the score is -log10 of it; with a correction ``p_corrected`` and
            ``significant``.  ``attrs`` has "family", by class the number of
            distinct TID lists, and for "tarone" "factor", by class the number
            that alpha is divided by.

            "chi2", "fisher" and "information_gain" are as large for what the
            class lacks as for what it has: the rates tell which it is.

        Raises
        ------
        KestroError
            When y has not one entry for each graph, an entry is missing,
            entries are of several kinds, or there is one class only; when the
            TIDs are unknown; for a correction of patterns that were read from
            a file that does not hold all of the run.
        ValueError
            For a correction of another method, and an alpha out of range;
            without y where the database has no classes.

        References
        ----------
        .. [1] R. A. Fisher, Statistical Methods for Research Workers, 1925.
        .. [2] G. Dong, J. Li, Efficient mining of emerging patterns, KDD 1999.
        .. [3] Y. Benjamini, Y. Hochberg, Controlling the false discovery rate,
           J. R. Stat. Soc. B 57, 1995.
        .. [4] R. E. Tarone, A modified Bonferroni method for discrete data,
           Biometrics 46, 1990.
        """
        y = self._classes_or(y)
        if y is None:
            raise ValueError(
                "score needs y, the classes of the graphs: the database has none"
            )
        return _scoring.table(
            self._patterns,
            self.positions,
            y,
            method=method,
            correction=correction,
            alpha=alpha,
        )

    def top(
        self,
        k: int,
        *,
        by: str | ArrayLike = "support",
        y: ArrayLike | None = None,
    ) -> Result:
        """Return the patterns with the largest values, the largest first.

        Parameters
        ----------
        k : int
            How many at most.
        by : str or array-like, shape (patterns,)
            "support", "size", or a method of `score`, which needs classes;
            of several the largest score counts.  Or a number for each pattern.
        y : array-like, optional
            The classes, as for `score`; None is ``db.classes``.

        Returns
        -------
        Result
            Equal ones are in the order of this result; NaN is less than all.

        Raises
        ------
        KestroError
            As `score` does, for one of its methods.
        TypeError, ValueError
            When k is no int or less than 0, and for another ``by``, or a
            method without classes.
        """
        own = self._classes_or(y)
        values = _choices.values(self._patterns, self.positions, by, own)
        chosen = _choices.largest(values, k)
        return self._of(self.positions[chosen])

    def representative(self, k: int) -> Result:
        """Return closed patterns that together cover the graphs.

        One after another, the pattern is taken that occurs in most graphs that
        none of those taken before occurs in [1]_; of equal ones the one with
        most edges, then the one with the smaller id.  Once every graph that
        can be is covered, patterns follow by support, then id.

        Parameters
        ----------
        k : int
            How many at most.

        Returns
        -------
        Result
            In the order of choice, with k patterns if there are as many closed
            ones.  Patterns of which it is unknown whether they are closed may
            be taken; ``undecided`` counts these.

        Raises
        ------
        KestroError
            When the TIDs are unknown.
        TypeError, ValueError
            When k is no int, or less than 0.

        References
        ----------
        .. [1] G. L. Nemhauser, L. A. Wolsey, M. L. Fisher, An analysis of
           approximations for maximizing submodular set functions I,
           Mathematical Programming 14, 1978.
        """
        chosen = _choices.covering(self._patterns, self.positions, k)
        return self._of(chosen, "closed")

    def draw_grid(
        self,
        patterns: (
            int | slice | Selection | Ids | str | Pattern | Iterable[Pattern]
        ) = 12,
        *,
        columns: int = 4,
        size: Size | None = None,
    ) -> Picture:
        """Return a picture of several patterns, each with its id and support.

        Parameters
        ----------
        patterns : int, slice, mask, or sequence of positions, ids or patterns
            How many, from the first on, or which ones, drawn in this order:
            ``result.draw_grid(p for p in result if "N" in p.graph.vertex_labels)``
            draws those that have nitrogen.  Patterns may stand beside ids and
            positions.  A pattern or an id alone is drawn alone.
        columns : int
            Pictures in a row.
        size : tuple of int, optional
            Width and height of each in pixels; None is 200 x 150.

        Raises
        ------
        ImportError, TypeError, ValueError
            As `Pattern.draw` does, and when a number is none or is too small, or
            a list is empty.
        IndexError, KeyError
            As for a selection of patterns.
        KestroError
            When a pattern is of another run.

        Examples
        --------
        >>> import kestro
        >>> result = kestro.mine(kestro.from_smiles(["CCO", "CCN"]), min_support=1)
        >>> result.draw_grid(columns=2, size=(100, 80))
        <Picture: 5 patterns, 224 x 326>
        >>> result.draw_grid([result["2-1"], result["1-0"]])
        <Picture: 2 patterns, 424 x 184>
        """
        from kestro import _drawing

        return _drawing.draw_grid(self, patterns, columns, size)

    def plot_sizes(self, ax: Axes | None = None) -> Axes:
        """Plot the number of patterns per size.

        Candidates, which the run counts from size 3 on, and frequent patterns of
        the whole run; where this result holds others, these too.  The axis has
        powers of ten where counts differ by more than a hundredfold.

        Parameters
        ----------
        ax : matplotlib.axes.Axes, optional
            Where to; None makes a figure.

        Returns
        -------
        matplotlib.axes.Axes

        Raises
        ------
        ImportError
            Without matplotlib, which ``pip install kestro[pictures]`` brings.
        """
        from kestro import _plots

        return _plots.sizes(self, ax)

    def plot_scores(
        self,
        y: ArrayLike | None = None,
        ax: Axes | None = None,
        *,
        of: object = None,
        correction: _scoring.Correction | None = "bh",
        alpha: float = 0.05,
        labels: int = 5,
    ) -> Axes:
        """Plot how well patterns tell classes apart: a volcano plot.

        Across lies the logarithm to base 2 of the odds ratio, upwards -log10 of
        p of Fisher's exact test.  Infinite ratios are marked by triangles at the
        side; a ratio that is none, of a pattern in all graphs, lies at 0.

        Parameters
        ----------
        y, correction, alpha
            As for `score`, y also where it is None; what is significant is filled.
        ax : matplotlib.axes.Axes, optional
            Where to; None makes a figure.
        of : class, optional
            Of more than two classes the one that is compared with the others.
        labels : int
            Beside how many marks, the highest, the id is written; of several
            patterns in one place that of the first.

        Returns
        -------
        matplotlib.axes.Axes

        Raises
        ------
        ImportError
            As `plot_sizes` does.
        KestroError
            As `score` does, and when ``of`` is no class that is compared.
        TypeError, ValueError
            As `score` does, and when labels is no int or less than 0.
        """
        from kestro import _plots

        return _plots.scores(self, y, ax, of, correction, alpha, labels)

    def to_jsonl(
        self, path: str | os.PathLike[str] | IO[str] | None = None
    ) -> str | None:
        """Write the patterns as lines of JSON; `read_result` reads them.

        Patterns come by size, then id, each once.
        The first line tells of the run.  Each further one is a pattern:
        ``id``, ``support``, ``vertices`` (labels), ``edges`` (two ends and a
        label each), ``closed`` and ``maximal`` (null where that is unknown),
        ``tids`` and ``parents`` (ids), the last two where known.

        Parameters
        ----------
        path : path or text file, optional
            Where to; a file appears when it is whole.  None returns the text.

        Returns
        -------
        str or None
            The text, None where it was written.

        Raises
        ------
        OSError
            When the file cannot be written.
        """
        lines = _jsonl.lines(self._patterns, *self._what_is_written())
        if path is None:
            return "".join(lines)
        if isinstance(path, (str, os.PathLike)):
            write_aside(Path(path), lines)
        else:
            path.writelines(lines)
        return None

    def write(
        self,
        folder: str | os.PathLike[str],
        name: str = "patterns",
        *,
        source: str | None = None,
        tids: bool = True,
        parents: bool = True,
    ) -> None:
        """Write the patterns as the command line's files hold them.

        Makes ``name.fp``, ``name.tid`` and ``name.pc``, in which patterns come
        by size, then id, each once.  With
        ``form="command-line"`` they are what the program writes, but for the
        time.  The files appear under their names when all are whole, one after
        another, ``name.fp`` last.

        Parameters
        ----------
        folder : path
            Where to; it must exist.
        name : str
            The files' name without its extension.
        source : str, optional
            The name of the input, which the head of the pattern file tells;
            None is ``name``.
        tids, parents : bool
            Whether to write ``name.tid`` and ``name.pc``.  If not, one that is
            there is removed, as it belongs to other patterns.

        Raises
        ------
        KestroError
            When the TIDs or the parents are unknown, a name holds a newline,
            or ``name`` is none of a file.
        OSError
            When a file cannot be written.
        """
        _program_files.write(
            self._patterns,
            *self._what_is_written(),
            Path(folder),
            name,
            source,
            tids=tids,
            parents=parents,
        )

    def report(
        self,
        path: str | os.PathLike[str] | IO[str],
        *,
        classes: ArrayLike | None = None,
        title: str | None = None,
        max_patterns: int = 5000,
        stored_drawings: int = 500,
        examples: int = 3,
        with_structures: bool = True,
    ) -> None:
        """Write a page of HTML on the patterns, which needs nothing else.

        It shows the run, a table that sorts and filters, drawings, where
        patterns lie in graphs, their parents and children, and what tells
        classes apart.  Browsers of 2023 and later show it, without a network.

        Parameters
        ----------
        path : path or text file
            Where to; a file appears when it is whole.  Text files take UTF-8.
        classes : array-like, shape (graphs,), optional
            The class of each graph, as for `score`; None is ``db.classes``,
            where these are several and the TIDs are known.
        title : str, optional
            What stands on top.
        max_patterns : int
            The most patterns in the page: of more, those of the largest
            scores by Fisher's exact test where there are classes, else of the
            largest supports.
        stored_drawings : int
            How many of them, the best again, are drawn beforehand; the page
            draws the others when they are looked at.
        examples : int
            In how many graphs, the smallest ones, a pattern is marked.
        with_structures : bool
            Of molecules, whether RDKit's build for browsers is part of the
            page, 3.3 MB.  Without it there is no search by SMARTS, and
            what is not stored is drawn as graphs are.

        Raises
        ------
        ImportError
            Without Jinja2, which ``pip install kestro[report]`` brings, and,
            for molecules, without RDKit.
        KestroError
            As `score` does, for the classes, and when a pattern is not in a graph
            that is shown, as of a database in another order than what was mined.
        OSError
            When the file cannot be written.
        TypeError, ValueError
            When a number or the title is none, or too small.

        Examples
        --------
        >>> import io, kestro
        >>> db = kestro.from_edges([["C", "O"]] * 2, [[(0, 1, "=")]] * 2)
        >>> page = io.StringIO()
        >>> kestro.mine(db, min_support=2).report(page, title="Two graphs")
        >>> "<title>Two graphs</title>" in page.getvalue()
        True
        """
        from kestro.report import page

        text = page(
            self,
            classes=classes,
            title=title,
            max_patterns=max_patterns,
            stored_drawings=stored_drawings,
            examples=examples,
            with_structures=with_structures,
        )
        if isinstance(path, (str, os.PathLike)):
            write_aside(Path(path), [text])
        else:
            path.write(text)

    def _classes_or(self, y: ArrayLike | None) -> ArrayLike | None:
        """Return the classes handed over, or those of the database."""
        return self._db.classes if y is None and self._db is not None else y

    def _what_is_written(self) -> tuple[NDArray[np.int64], RunSummary]:
        """Return the positions in the order of files, and what they are."""
        chosen = np.unique(self.positions)
        summary = self._patterns.summary
        return chosen, replace(
            summary,
            described=summary.described or describe(self.db),
            holds=self._patterns.holds(chosen, self._filters),
            filters=self._filters,
        )
