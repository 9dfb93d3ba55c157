"""The patterns of a run, packed."""

from __future__ import annotations

from collections.abc import Iterator
from functools import cached_property
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._checks import key_of
from kestro._errors import KestroError
from kestro._ragged import offsets_of
from kestro._summary import Filter, Holds, RunSummary

NO, YES, UNKNOWN = 0, 1, 2  # answers in arrays


class Patterns:
    """All patterns of a run, packed; results of the run share them.

    Patterns come by size, then id.  Of pattern i, vertices lie from
    ``vertex_offsets[i]`` to ``vertex_offsets[i + 1]``, and so do TIDs and
    parents; a parent is its id in the level below.  Edges need no offsets: a
    pattern of size k has k.  Labels are ids of the two tables.

    Parameters
    ----------
    packed : dict of arrays
        These arrays by name.  Runs that were read from files may lack
        "tids" and "parents" with their offsets; they have "support", where
        patterns are missing between others, "numbers", the ids, and some of
        them "closed" and "maximal".
    summary : RunSummary
        What is known of the run.  The form "command-line" takes the patterns of
        the last size of a bounded run for maximal as the program does.
    vertex_table, edge_table : list of str
        The labels by id.
    """

    def __init__(
        self,
        packed: dict[str, NDArray[Any]],
        summary: RunSummary,
        vertex_table: list[str],
        edge_table: list[str],
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
        self._numbers: NDArray[np.int32] | None = packed.get("numbers")
        self.summary = summary
        self.vertex_table = vertex_table
        self.edge_table = edge_table

    def __len__(self) -> int:
        return len(self.vertex_offsets) - 1

    def __reduce__(self) -> tuple[Any, ...]:
        return Patterns, (
            self._packed,
            self.summary,
            self.vertex_table,
            self.edge_table,
        )

    def with_arrays(self, **arrays: NDArray[Any]) -> Patterns:
        """Return the same patterns with further arrays."""
        packed = self._packed | arrays
        return Patterns(packed, self.summary, self.vertex_table, self.edge_table)

    def with_summary(self, summary: RunSummary) -> Patterns:
        """Return the same patterns of a run of which this is known."""
        return Patterns(self._packed, summary, self.vertex_table, self.edge_table)

    def _wanted(self, name: str, what: str) -> NDArray[Any]:
        if name not in self._packed:
            raise KestroError(f"the {what} are unknown: this result is without them")
        return self._packed[name]

    @property
    def tid_offsets(self) -> NDArray[np.int64]:
        """Where the TIDs of each pattern begin."""
        return self._wanted("tid_offsets", "TIDs")

    @property
    def tids(self) -> NDArray[np.int32]:
        """TIDs of all patterns."""
        return self._wanted("tids", "TIDs")

    @property
    def parent_offsets(self) -> NDArray[np.int64]:
        """Where the parents of each pattern begin."""
        return self._wanted("parent_offsets", "parents")

    @property
    def parents(self) -> NDArray[np.int32]:
        """The ids of the parents of all patterns, each in the level below."""
        return self._wanted("parents", "parents")

    @property
    def has_tids(self) -> bool:
        """Whether it is known which graphs contain the patterns."""
        return "tids" in self._packed

    @property
    def has_parents(self) -> bool:
        """Whether the parents are known."""
        return "parents" in self._packed

    @cached_property
    def level_starts(self) -> NDArray[np.int64]:
        """The first pattern of each level."""
        return np.concatenate([np.zeros(1, np.int64), self.level_ends[:-1]])

    @cached_property
    def edge_starts(self) -> NDArray[np.int64]:
        """The first edge of each level."""
        counts = self.level_ends - self.level_starts[: len(self.level_ends)]
        return offsets_of(counts * self.level_sizes)

    @cached_property
    def edge_offsets(self) -> NDArray[np.int64]:
        """Where the edges of each pattern begin."""
        return offsets_of(self.sizes(np.arange(len(self))))

    def level_of(self, i: int) -> int:
        """Return the level of a pattern."""
        return int(np.searchsorted(self.level_ends, i, side="right"))

    def find(self, name: str) -> int | None:
        """Return the position of the pattern of an id, None if there is none."""
        try:
            size, number = key_of(name)
        except ValueError:
            return None
        level = int(np.searchsorted(self.level_sizes, size))
        if level == len(self.level_sizes) or self.level_sizes[level] != size:
            return None
        [i] = self._positions(np.array([level]), np.array([number]))
        return None if i < 0 else int(i)

    def _positions(
        self, levels: NDArray[np.int64], numbers: NDArray[np.int64]
    ) -> NDArray[np.int64]:
        """Return where these numbers of these levels are, -1 where they are not."""
        starts, ends = self.level_starts[levels], self.level_ends[levels]
        if self._numbers is None:
            found = starts + numbers
            return np.where((numbers >= 0) & (found < ends), found, -1)
        # Level and number in one word; numbers ascend within a level.
        wanted = (levels.astype(np.int64) << 32) + numbers
        found = np.searchsorted(self._keys, wanted)
        found = np.minimum(found, len(self) - 1)
        return np.where(self._keys[found] == wanted, found, -1)

    @cached_property
    def _keys(self) -> NDArray[np.int64]:
        everything = np.arange(len(self))
        levels = np.searchsorted(self.level_ends, everything, "right")
        return (levels.astype(np.int64) << 32) + self.numbers(everything)

    @cached_property
    def support(self) -> NDArray[np.int32]:
        """Graphs that contain each pattern."""
        if "support" in self._packed:
            return self._packed["support"]
        return np.diff(self.tid_offsets).astype(np.int32)

    def sizes(self, chosen: NDArray[np.int64]) -> NDArray[np.int32]:
        """Return the edges of each of these patterns."""
        return self.level_sizes[np.searchsorted(self.level_ends, chosen, "right")]

    def numbers(self, chosen: NDArray[np.int64]) -> NDArray[np.int64]:
        """Return the ids of these patterns in their levels."""
        if self._numbers is not None:
            return self._numbers[chosen].astype(np.int64)
        levels = np.searchsorted(self.level_ends, chosen, "right")
        return chosen - self.level_starts[levels]

    def names(self, chosen: NDArray[np.int64]) -> list[str]:
        """Return the ids of these patterns as the program writes them."""
        sizes = self.sizes(chosen).tolist()
        numbers = self.numbers(chosen).tolist()
        return [f"{a}-{b}" for a, b in zip(sizes, numbers, strict=True)]

    def graphs(
        self, chosen: NDArray[np.int64]
    ) -> Iterator[tuple[list[str], list[list[int]], list[str]]]:
        """Return labels of vertices, ends of edges, labels of edges of each."""
        edge_offsets = self.edge_offsets
        for vertex, vertex_end, edge, edge_end in zip(
            self.vertex_offsets[chosen].tolist(),
            self.vertex_offsets[chosen + 1].tolist(),
            edge_offsets[chosen].tolist(),
            edge_offsets[chosen + 1].tolist(),
            strict=True,
        ):
            vertices = self.vertex_labels[vertex:vertex_end].tolist()
            labels = self.edge_labels[edge:edge_end].tolist()
            yield (
                [self.vertex_table[x] for x in vertices],
                self.edges[edge:edge_end].tolist(),
                [self.edge_table[x] for x in labels],
            )

    def tid_lists(self, chosen: NDArray[np.int64]) -> Iterator[list[int]]:
        """Return the TIDs of each of these patterns."""
        return _lists(self.tid_offsets, self.tids, chosen)

    def parent_names(self, chosen: NDArray[np.int64]) -> Iterator[list[str]]:
        """Return the ids of the parents of each of these patterns."""
        below = _lists(self.parent_offsets, self.parents, chosen)
        for size, numbers in zip(self.sizes(chosen).tolist(), below, strict=True):
            yield [f"{size - 1}-{number}" for number in numbers]

    @cached_property
    def parent_pairs(self) -> tuple[NDArray[np.int32], NDArray[np.int32]]:
        """Positions of parents and of their children, pair by pair, by child.

        Parents that are not in the run, as those of the first level, are left
        out.
        """
        nothing = np.zeros(0, np.int32)
        if len(self.level_ends) < 2 or not self.has_parents:
            return nothing, nothing
        first = int(self.level_ends[0])
        counts = np.diff(self.parent_offsets[first:])
        children = np.repeat(np.arange(first, len(self), dtype=np.int32), counts)
        levels = np.searchsorted(self.level_ends, children, "right")
        numbers = self.parents[self.parent_offsets[first] :]
        # Where a size is missing, the level before is not the parents'.
        below = self.level_sizes[levels - 1] == self.level_sizes[levels] - 1
        found = self._positions(levels - 1, numbers.astype(np.int64))
        there = below & (found >= 0)
        return found[there].astype(np.int32), children[there]

    @cached_property
    def children(self) -> tuple[NDArray[np.int64], NDArray[np.int32]]:
        """Offsets into the positions of all patterns' children, and these."""
        parents, children = self.parent_pairs
        counts = np.bincount(parents, minlength=len(self))
        return offsets_of(counts), children[np.argsort(parents, kind="stable")]

    def _answers(self, refuted: NDArray[np.int32]) -> NDArray[np.uint8]:
        """Return no for the patterns named, and for the others what is known."""
        answers = np.full(len(self), YES, np.uint8)
        if self.summary.holds == "some":
            answers[:] = UNKNOWN  # larger ones may be missing
        if not len(self.level_ends):
            return answers
        last = int(self.level_starts[-1])
        if not (self.has_parents or self.summary.holds == "maximal"):
            answers[:last] = UNKNOWN
        # The program takes the patterns of the last size for maximal.
        if self.summary.ending != "complete" and self.summary.form == "exact":
            answers[last:] = UNKNOWN
        answers[refuted] = NO
        return answers

    @cached_property
    def maximal(self) -> NDArray[np.uint8]:
        """Whether no pattern contains each: 0 no, 1 yes, 2 unknown."""
        if "maximal" in self._packed:
            return self._packed["maximal"]
        return self._answers(self.parent_pairs[0])

    @cached_property
    def closed(self) -> NDArray[np.uint8]:
        """Whether none of the same support does: 0 no, 1 yes, 2 unknown."""
        if "closed" in self._packed:
            return self._packed["closed"]
        parents, children = self.parent_pairs
        equal = self.support[parents] == self.support[children]
        return self._answers(parents[equal])

    def answers(self, name: Filter) -> NDArray[np.uint8]:
        """Return what the filter of that name asks of each pattern."""
        return self.maximal if name == "maximal" else self.closed

    def holds(self, chosen: NDArray[np.int64], filters: tuple[Filter, ...]) -> Holds:
        """Return what of the run a choice is; positions ascend, each once."""
        everything = len(chosen) == len(self)
        own = self.summary.holds
        if own != "all" or (everything and "maximal" not in filters):
            return own if everything else "some"
        is_maximal = np.array_equal(chosen, np.flatnonzero(self.maximal != NO))
        return "maximal" if is_maximal else "all" if everything else "some"

    @cached_property
    def tid_groups(self) -> tuple[NDArray[np.int64], NDArray[np.int64]]:
        """Distinct TID lists: the first pattern of each, and each pattern's list."""
        tids, offsets = self.tids, self.tid_offsets.tolist()
        numbers: dict[bytes, int] = {}
        group = np.empty(len(self), np.int64)
        first: list[int] = []
        for i in range(len(self)):
            key = tids[offsets[i] : offsets[i + 1]].tobytes()
            number = numbers.setdefault(key, len(numbers))
            if number == len(first):
                first.append(i)
            group[i] = number
        return np.array(first, np.int64), group


def _lists(
    offsets: NDArray[np.int64], items: NDArray[np.int32], chosen: NDArray[np.int64]
) -> Iterator[list[int]]:
    for first, end in zip(
        offsets[chosen].tolist(), offsets[chosen + 1].tolist(), strict=True
    ):
        yield items[first:end].tolist()
