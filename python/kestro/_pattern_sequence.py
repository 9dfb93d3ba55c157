"""Chosen patterns of a run, as a sequence."""

from __future__ import annotations

from collections.abc import Iterator
from typing import Any, Self, overload

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import Ids, Index, Selection, ids_in, position, positions
from kestro._database import GraphDatabase
from kestro._errors import KestroError
from kestro._pattern import Pattern
from kestro._patterns import NO, UNKNOWN, Patterns
from kestro._summary import Filter


class PatternSequence:
    """Which patterns of a run there are, and what is known of the run.

    Parameters
    ----------
    patterns : Patterns
        All of the run.
    db : GraphDatabase or None
        What was mined.
    chosen : ndarray of int64, optional
        Positions in the run; None is all that the filters let pass.
    filters : tuple of str
        By which the patterns were chosen.
    """

    __slots__ = ("_chosen", "_db", "_filters", "_patterns")

    def __init__(
        self,
        patterns: Patterns,
        db: GraphDatabase | None,
        chosen: NDArray[np.int64] | None = None,
        filters: tuple[Filter, ...] = (),
    ) -> None:
        self._patterns = patterns
        self._chosen = chosen  # positions; None for all that the filters let pass
        self._db = db
        self._filters = filters

    @property
    def undecided(self) -> int:
        """Patterns that a filter kept because the answer is unknown."""
        unknown = np.zeros(len(self), np.bool_)
        for name in self._filters:
            unknown |= self._patterns.answers(name)[self.positions] == UNKNOWN
        return int(unknown.sum())

    @property
    def db(self) -> GraphDatabase:
        """What was mined.

        Raises
        ------
        KestroError
            When the result was read from files without it.
        """
        if self._db is None:
            raise KestroError(
                "the result was read without its database; read_result takes it as db"
            )
        return self._db

    @property
    def graphs(self) -> int:
        """The number of graphs that were mined."""
        return self._patterns.summary.graphs

    @property
    def complete(self) -> bool:
        """Whether the run found everything that was asked for."""
        return self.stopped_by is None

    @property
    def stopped_by(self) -> str | None:
        """What ended the run early, None if nothing did."""
        return self._patterns.summary.stopped_by

    @property
    def min_support(self) -> int:
        """The number of graphs in which a pattern had to occur."""
        return self._patterns.summary.min_support

    @property
    def order_dependent(self) -> int | None:
        """Candidates whose form may depend on the order of vertices.

        Where it is 0, both values of ``form`` give the same patterns in the
        same order.  None for a result that was read from the program's files.
        """
        return self._patterns.summary.order_dependent

    @property
    def positions(self) -> NDArray[np.int64]:
        """Where the patterns lie in the run."""
        if self._chosen is not None:
            return self._chosen
        if self._is_whole:
            return np.arange(len(self._patterns), dtype=np.int64)
        # Chosen when they are asked for: the flags of many patterns take seconds,
        # and nothing that ends the making of a result may lose what was found.
        keep = np.ones(len(self._patterns), np.bool_)
        for name in self._filters:
            keep &= self._patterns.answers(name) != NO
        self._chosen = np.flatnonzero(keep)
        return self._chosen

    @property
    def _is_whole(self) -> bool:
        """Whether it holds the patterns of the run as they are, without a choice."""
        return self._chosen is None and not self._filters

    @property
    def support(self) -> NDArray[np.int32]:
        """Graphs that contain each pattern, shape (patterns,)."""
        return self._patterns.support[self.positions]

    @property
    def size(self) -> NDArray[np.int32]:
        """Edges of each pattern, shape (patterns,)."""
        return self._patterns.sizes(self.positions)

    def __len__(self) -> int:
        """Return the number of patterns."""
        return len(self._patterns if self._is_whole else self.positions)

    def __iter__(self) -> Iterator[Pattern]:
        """Return the patterns one by one."""
        return (Pattern(self._patterns, int(i), self._db) for i in self.positions)

    @overload
    def __getitem__(self, key: Index | str) -> Pattern: ...
    @overload
    def __getitem__(self, key: slice | Selection | Ids) -> Self: ...
    def __getitem__(self, key: Index | str | slice | Selection | Ids) -> Pattern | Self:
        """Return a pattern, or a result with those selected."""
        if isinstance(key, str):
            return Pattern(self._patterns, int(self._named([key])[0]), self._db)
        if isinstance(key, (int, np.integer, np.bool_)):
            return Pattern(self._patterns, self._at(key), self._db)
        names = ids_in(key)
        if names is not None:
            return self._of(self._named(names))
        return self._of(self.positions[positions(key, len(self))])

    def __contains__(self, key: object) -> bool:
        """Return whether it has a pattern, or one of that id."""
        if isinstance(key, Pattern):
            return key._all is self._patterns and key._i in self.positions
        try:
            return isinstance(key, str) and len(self._named([key])) == 1
        except KeyError:
            return False

    def _of(self, chosen: NDArray[np.int64], *filters: Filter) -> Self:
        every = (*self._filters, *(x for x in filters if x not in self._filters))
        return type(self)(self._patterns, self._db, chosen, every)

    def _at(self, key: Index) -> int:
        """Return where the pattern at a position lies in the run."""
        i = position(key, len(self), "pattern")
        return i if self._is_whole else int(self.positions[i])

    def _named(self, names: list[str]) -> NDArray[np.int64]:
        """Return where the patterns of these ids lie in the run."""
        found = [self._patterns.find(name) for name in names]
        there = np.array([-1 if i is None else i for i in found], np.int64)
        missing = there < 0
        if not self._is_whole:
            missing |= ~np.isin(there, self.positions)
        if missing.any():
            raise KeyError(names[int(np.argmax(missing))])
        return there

    def __reduce__(self) -> tuple[Any, ...]:
        """Pickle the arrays of the run, the choice and the database."""
        return type(self), (self._patterns, self._db, self._chosen, self._filters)
