"""What a run found."""

from __future__ import annotations

import os
from collections.abc import Iterator
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING, Any, overload

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import Index, Selection, position, positions
from kestro._atoms import graph_smarts
from kestro._database import Graph, GraphDatabase

if TYPE_CHECKING:
    import pandas as pd
    import scipy.sparse

_NO, _YES, _UNKNOWN = 0, 1, 2  # answers in packed arrays
_STOPPED = ("max_patterns", "time_limit", "interrupt", "progress")


class Patterns:
    """All patterns of a run, packed; results of the run share them.

    Patterns come by size, then id.  Of pattern i, vertices lie from
    ``vertex_offsets[i]`` to ``vertex_offsets[i + 1]``, and so do TIDs and
    parents; a parent is its id in the level below.  Edges need no offsets: a
    pattern of size k has k.  Labels are ids of the two tables.
    """

    def __init__(
        self,
        packed: dict[str, NDArray[Any]],
        summary: dict[str, Any],
        vertex_table: list[str],
        edge_table: list[str],
        form: str,
    ) -> None:
        for array in packed.values():
            array.flags.writeable = False
        self._packed = packed
        self.level_sizes: NDArray[np.int32] = packed["level_sizes"]
        self.level_ends: NDArray[np.int64] = packed["level_ends"]
        self.vertex_offsets: NDArray[np.int64] = packed["vertex_offsets"]
        self.vertex_labels: NDArray[np.int32] = packed["vertex_labels"]
        self.edges: NDArray[np.int32] = packed["edges"]
        self.edge_labels: NDArray[np.int32] = packed["edge_labels"]
        self.tid_offsets: NDArray[np.int64] = packed["tid_offsets"]
        self.tids: NDArray[np.int32] = packed["tids"]
        self.parent_offsets: NDArray[np.int64] = packed["parent_offsets"]
        self.parents: NDArray[np.int32] = packed["parents"]
        self.order_dependent: NDArray[np.uint8] = packed["order_dependent"]
        self.summary = summary
        self.vertex_table = vertex_table
        self.edge_table = edge_table
        self.form = form

    def __len__(self) -> int:
        return len(self.tid_offsets) - 1

    def __reduce__(self) -> tuple[Any, ...]:
        return Patterns, (
            self._packed,
            self.summary,
            self.vertex_table,
            self.edge_table,
            self.form,
        )

    @cached_property
    def level_starts(self) -> NDArray[np.int64]:
        """The first pattern of each level."""
        return np.concatenate([np.zeros(1, np.int64), self.level_ends[:-1]])

    @cached_property
    def edge_starts(self) -> NDArray[np.int64]:
        """The first edge of each level."""
        counts = self.level_ends - self.level_starts[: len(self.level_ends)]
        edges = np.cumsum(counts * self.level_sizes)
        return np.concatenate([np.zeros(1, np.int64), edges[:-1]])

    def level_of(self, i: int) -> int:
        """Return the level of a pattern."""
        return int(np.searchsorted(self.level_ends, i, side="right"))

    def find(self, size: int, number: int) -> int | None:
        """Return the position of pattern size-number, None if there is none."""
        level = int(np.searchsorted(self.level_sizes, size))
        if level == len(self.level_sizes) or self.level_sizes[level] != size:
            return None
        i = int(self.level_starts[level]) + number
        return i if 0 <= number and i < self.level_ends[level] else None

    @cached_property
    def support(self) -> NDArray[np.int32]:
        """Graphs that contain each pattern."""
        return np.diff(self.tid_offsets).astype(np.int32)

    def sizes(self, chosen: NDArray[np.int64]) -> NDArray[np.int32]:
        """Return the edges of each of these patterns."""
        return self.level_sizes[np.searchsorted(self.level_ends, chosen, "right")]

    def numbers(self, chosen: NDArray[np.int64]) -> NDArray[np.int64]:
        """Return the ids of these patterns in their levels."""
        levels = np.searchsorted(self.level_ends, chosen, "right")
        return chosen - self.level_starts[levels]

    @cached_property
    def _family(self) -> tuple[NDArray[np.int32], NDArray[np.int32]]:
        """Positions of parents and of their children, pair by pair.

        The parents of the first level are not in the run.
        """
        if len(self.level_ends) < 2:
            return np.zeros(0, np.int32), np.zeros(0, np.int32)
        first = int(self.level_ends[0])
        counts = np.diff(self.parent_offsets[first:])
        children = np.repeat(np.arange(first, len(self), dtype=np.int32), counts)
        levels = np.searchsorted(self.level_ends, children, "right")
        parents = self.parents[self.parent_offsets[first] :]
        found = parents + self.level_starts[levels - 1]
        return found.astype(np.int32), children

    @cached_property
    def children(self) -> tuple[NDArray[np.int64], NDArray[np.int32]]:
        """Offsets into the positions of all patterns' children, and these."""
        parents, children = self._family
        counts = np.bincount(parents, minlength=len(self))
        offsets = np.concatenate([np.zeros(1, np.int64), np.cumsum(counts)])
        return offsets, children[np.argsort(parents, kind="stable")]

    def _answers(self, refuted: NDArray[np.int32]) -> NDArray[np.uint8]:
        """Return no for the patterns named, and for the others what is known."""
        answers = np.full(len(self), _YES, np.uint8)
        # The program takes the patterns of the last size for maximal.
        bounded = self.summary["ending"] != "complete"
        if bounded and self.form == "exact" and len(self.level_ends):
            answers[int(self.level_starts[-1]) :] = _UNKNOWN
        answers[refuted] = _NO
        return answers

    @cached_property
    def maximal(self) -> NDArray[np.uint8]:
        """Whether no pattern contains each: 0 no, 1 yes, 2 unknown."""
        return self._answers(self._family[0])

    @cached_property
    def closed(self) -> NDArray[np.uint8]:
        """Whether none of the same support does: 0 no, 1 yes, 2 unknown."""
        parents, children = self._family
        equal = self.support[parents] == self.support[children]
        return self._answers(parents[equal])


def _truth(answer: int) -> bool | None:
    return None if answer == _UNKNOWN else answer == _YES


class Pattern:
    """One pattern of a result, looked at where it lies.

    Patterns of one run are equal when they are the same one.
    """

    __slots__ = ("_all", "_i")

    def __init__(self, patterns: Patterns, i: int) -> None:
        self._all = patterns
        self._i = i

    @property
    def size(self) -> int:
        """Number of edges."""
        return int(self._all.level_sizes[self._all.level_of(self._i)])

    @property
    def id(self) -> str:
        """The program's name of it, such as "3-7": size, number of that size."""
        level = self._all.level_of(self._i)
        number = self._i - int(self._all.level_starts[level])
        return f"{self._all.level_sizes[level]}-{number}"

    @property
    def support(self) -> int:
        """Number of graphs that contain it."""
        return len(self.tids)

    @property
    def tids(self) -> NDArray[np.int32]:
        """Positions of these graphs in the database, ascending; a view."""
        offsets = self._all.tid_offsets
        return self._all.tids[offsets[self._i] : offsets[self._i + 1]]

    @property
    def graph(self) -> Graph:
        """Its vertices in canonical order, and its edges."""
        p = self._all
        level = p.level_of(self._i)
        size = int(p.level_sizes[level])
        first = int(p.edge_starts[level])
        first += (self._i - int(p.level_starts[level])) * size
        vertices = p.vertex_labels[
            p.vertex_offsets[self._i] : p.vertex_offsets[self._i + 1]
        ]
        return Graph(
            tuple(p.vertex_table[x] for x in vertices.tolist()),
            p.edges[first : first + size],
            tuple(
                p.edge_table[x] for x in p.edge_labels[first : first + size].tolist()
            ),
        )

    def to_smarts(self) -> str:
        """Return the SMARTS of a pattern of molecules.

        It says all that the labels say, no more: element and aromaticity of
        atoms, their charge where the database has it, the kind of each bond.
        So RDKit finds it in the molecules whose numbers are ``tids``; where
        hydrogens are vertices, once ``Chem.AddHs`` has made them atoms.

        Raises
        ------
        ValueError
            When the database is none of molecules.
        """
        labels = self._all.summary["atom_labels"]
        if labels is None:
            raise ValueError("the labels of this pattern are not those of atoms")
        return graph_smarts(self.graph, labels)

    @property
    def parents(self) -> tuple[str, ...]:
        """The ids of the patterns one edge smaller that it contains.

        Also where those are smaller than ``min_size`` and not in the result.
        """
        p = self._all
        numbers = p.parents[p.parent_offsets[self._i] : p.parent_offsets[self._i + 1]]
        below = self.size - 1
        return tuple(f"{below}-{number}" for number in numbers.tolist())

    @property
    def children(self) -> tuple[str, ...]:
        """The ids of the patterns of the run one edge larger that contain it."""
        offsets, children = self._all.children
        found = children[offsets[self._i] : offsets[self._i + 1]]
        return tuple(Pattern(self._all, i).id for i in found.tolist())

    @property
    def closed(self) -> bool | None:
        """Whether no larger pattern of the same support contains it.

        None where larger patterns may exist that the run did not reach.
        """
        return _truth(int(self._all.closed[self._i]))

    @property
    def maximal(self) -> bool | None:
        """Whether no larger pattern contains it; None likewise."""
        return _truth(int(self._all.maximal[self._i]))

    def __eq__(self, other: object) -> bool:
        """Whether it is the same pattern of the same run."""
        if not isinstance(other, Pattern):
            return NotImplemented
        return self._all is other._all and self._i == other._i

    def __hash__(self) -> int:
        """Return a hash of the run and the position."""
        return hash((id(self._all), self._i))

    def __repr__(self) -> str:
        """Return id, support, vertices and edges."""
        g = self.graph
        edges = ", ".join(
            f"{a}-{b} {label}"
            for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True)
        )
        return (
            f"<Pattern {self.id}: support {self.support}, "
            f"{' '.join(g.vertex_labels)}, {edges}>"
        )


class Result:
    """Patterns of a run: a sequence of `Pattern`, by size, then id.

    An int gives a pattern, as does an id such as "3-7"; a slice, a boolean
    mask or an array of positions gives a result with these patterns.  All
    results of a run share its arrays.  Results can be pickled.

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

    __slots__ = ("_chosen", "_patterns", "db", "undecided")

    def __init__(
        self,
        patterns: Patterns,
        db: GraphDatabase,
        chosen: NDArray[np.int64] | None = None,
        undecided: int = 0,
    ) -> None:
        self._patterns = patterns
        self._chosen = chosen  # positions, None for all
        self.db = db
        self.undecided = undecided

    @classmethod
    def of_run(
        cls, patterns: Patterns, db: GraphDatabase, *, maximal: bool, closed: bool
    ) -> Result:
        """Return the patterns of a run that pass the filters."""
        if not (maximal or closed):
            return cls(patterns, db)
        keep = np.ones(len(patterns), np.bool_)
        unknown = np.zeros(len(patterns), np.bool_)
        wanted = [patterns.maximal] if maximal else []
        wanted += [patterns.closed] if closed else []
        for answers in wanted:
            keep &= answers != _NO
            unknown |= answers == _UNKNOWN
        return cls(patterns, db, np.flatnonzero(keep), int((keep & unknown).sum()))

    @property
    def complete(self) -> bool:
        """Whether the run found everything that was asked for."""
        return self.stopped_by is None

    @property
    def stopped_by(self) -> str | None:
        """What ended the run early, None if nothing did."""
        ending: str = self._patterns.summary["ending"]
        return ending if ending in _STOPPED else None

    @property
    def min_support(self) -> int:
        """The number of graphs in which a pattern had to occur."""
        return int(self._patterns.summary["min_support"])

    @property
    def order_dependent(self) -> int:
        """Candidates whose form may depend on the order of vertices.

        Where it is 0, both values of ``form`` give the same patterns in the
        same order.
        """
        return int(self._patterns.summary["order_dependent"])

    @property
    def positions(self) -> NDArray[np.int64]:
        """Where the patterns lie in the run."""
        if self._chosen is None:
            return np.arange(len(self._patterns), dtype=np.int64)
        return self._chosen

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
        return len(self._patterns) if self._chosen is None else len(self._chosen)

    def __iter__(self) -> Iterator[Pattern]:
        """Return the patterns one by one."""
        return (Pattern(self._patterns, int(i)) for i in self.positions)

    @overload
    def __getitem__(self, key: Index | str) -> Pattern: ...
    @overload
    def __getitem__(self, key: slice | Selection) -> Result: ...
    def __getitem__(self, key: Index | str | slice | Selection) -> Pattern | Result:
        """Return a pattern, or a result with those selected."""
        if isinstance(key, str):
            return self._named(key)
        if isinstance(key, (int, np.integer)):
            i = position(key, len(self), "pattern")
            return Pattern(
                self._patterns, i if self._chosen is None else int(self._chosen[i])
            )
        chosen = self.positions[positions(key, len(self))]
        return Result(self._patterns, self.db, chosen)

    def _named(self, name: str) -> Pattern:
        size, dash, number = name.partition("-")
        if dash and size.isdecimal() and number.isdecimal():
            i = self._patterns.find(int(size), int(number))
            if i is not None and (self._chosen is None or i in self._chosen):
                return Pattern(self._patterns, i)
        raise KeyError(name)

    def __reduce__(self) -> tuple[Any, ...]:
        """Pickle the arrays of the run, the choice and the database."""
        return Result, (self._patterns, self.db, self._chosen, self.undecided)

    def __repr__(self) -> str:
        """Return how many patterns of which sizes there are."""
        sizes = self.size
        what = f"{len(self)} patterns"
        if len(sizes):
            what += f" of {sizes.min()} to {sizes.max()} edges"
        what += f" in at least {self.min_support} of {len(self.db)} graphs"
        if self.undecided:
            what += f", {self.undecided} of them undecided"
        if self.stopped_by:
            what += f"; stopped by {self.stopped_by}"
        return f"<Result: {what}>"

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
        import pandas as pd

        p = self._patterns
        chosen = self.positions
        sizes = p.sizes(chosen)
        support = p.support[chosen]
        numbers = p.numbers(chosen)
        smarts = {}
        if self.db.atom_labels is not None:
            smarts["smarts"] = [pattern.to_smarts() for pattern in self]
        return pd.DataFrame(
            {
                "size": sizes,
                "id": [
                    f"{size}-{number}"
                    for size, number in zip(
                        sizes.tolist(), numbers.tolist(), strict=True
                    )
                ],
                "support": support,
                "fraction": support / max(1, len(self.db)),
                "vertices": np.diff(p.vertex_offsets)[chosen],
                "edges": sizes,
                **smarts,
                "closed": _nullable(p.closed[chosen]),
                "maximal": _nullable(p.maximal[chosen]),
            }
        )

    def incidence(self) -> scipy.sparse.csr_array:
        """Return which graph contains which pattern.

        Returns
        -------
        csr_array of int8, shape (graphs, patterns)
            1 where the graph contains the pattern.
        """
        import scipy.sparse

        p = self._patterns
        chosen = self.positions
        counts = p.support[chosen].astype(np.int64)
        offsets = np.concatenate([np.zeros(1, np.int64), np.cumsum(counts)])
        # Of each TID wanted, its place among all.
        places = np.arange(offsets[-1]) + np.repeat(
            p.tid_offsets[chosen] - offsets[:-1], counts
        )
        by_pattern = scipy.sparse.csc_array(
            (np.ones(len(places), np.int8), p.tids[places], offsets),
            shape=(len(self.db), len(self)),
        )
        return by_pattern.tocsr()

    def write(self, folder: str | os.PathLike[str], name: str = "patterns") -> None:
        """Write the patterns as the command line's files hold them.

        Makes ``name.fp``, ``name.tid`` and ``name.pc``, without the report
        that the program puts into the first as comments.  A file appears under
        its name when it is whole.

        Parameters
        ----------
        folder : path
            Where to; it must exist.
        name : str
            The files' name without its extension.
        """
        where = Path(folder)
        contents = {
            "fp": (f"t # {p.id}, {p.support}\n{p.graph.lines()}" for p in self),
            "tid": (" ".join([p.id, *map(str, p.tids.tolist())]) + "\n" for p in self),
            "pc": (" ".join([p.id, *p.parents]) + "\n" for p in self),
        }
        for suffix, lines in contents.items():
            whole = where / f"{name}.{suffix}"
            aside = where / f".{name}.{suffix}.{os.getpid()}"
            try:
                with open(aside, "w", encoding="utf-8", errors="surrogateescape") as f:
                    f.writelines(lines)
                os.replace(aside, whole)
            except BaseException:
                aside.unlink(missing_ok=True)
                raise


def _nullable(answers: NDArray[np.uint8]) -> Any:
    import pandas as pd

    return pd.array(
        pd.arrays.BooleanArray(answers == _YES, answers == _UNKNOWN), dtype="boolean"
    )
