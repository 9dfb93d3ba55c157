"""The plain engine: processes of this machine, or none but this one."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Iterator, Sequence
from typing import Any

import numpy as np
from numpy.typing import NDArray

from kestro._files import read_bytes
from kestro._workers import in_order
from kestro.spark._blocks import Tables
from kestro.spark._reading import Described, Read, Tally, read_file
from kestro.spark._scheme import (
    CountedShard,
    MinedShard,
    Reported,
    Shard,
    Union,
    may_be_frequent,
)
from kestro.spark._tasks import Caps, Found, count_patterns, find_patterns, mine_shard
from kestro.spark._watching import Advanced


class PoolEngine:
    """Reads transaction files and runs the tasks in so many processes.

    Parameters
    ----------
    paths : sequence of str
        The files.
    n_jobs : int
        Processes; 1 is this one.
    """

    def __init__(self, paths: Sequence[str], n_jobs: int = 1) -> None:
        self._paths = sorted(paths)
        self._jobs = n_jobs
        self._blocks: dict[int, list[bytes]] = {}
        self._shards: Sequence[Shard] = ()
        self._tables = Tables((), ())
        self._reported: dict[bytes, Reported] = {}
        self._counted: dict[bytes, int] = {}

    def _run(
        self, task: Callable[..., Any], arguments: Iterable[tuple[Any, ...]]
    ) -> Iterable[Any]:
        return in_order(task, arguments, self._jobs)

    def read(self, buckets: int) -> Read:
        told = []
        files = [(path, buckets) for path in self._paths]
        for described, blocks in self._run(_read, files):
            told.append(described)
            for bucket, data in blocks:
                self._blocks.setdefault(bucket, []).append(data)
        return Read(Described.of(told, buckets), [])

    def _held(self, shard: Shard) -> list[bytes]:
        return [data for bucket in shard.buckets for data in self._blocks[bucket]]

    def mine(
        self,
        shards: Sequence[Shard],
        tables: Tables,
        max_size: int | None,
        caps: Caps,
        advanced: Advanced | None = None,
    ) -> list[MinedShard]:
        self._shards, self._tables = shards, tables
        tasks = [
            (self._held(shard), tables, shard.min_support, max_size, caps)
            for shard in shards
        ]
        told = []
        done = _told(self._run(mine_shard, tasks), len(shards), advanced)
        for shard, mined in zip(shards, done, strict=True):
            for key, support in zip(mined.keys, mined.supports, strict=True):
                before = self._reported.get(key, Reported(0, frozenset()))
                self._reported[key] = Reported(
                    before.support + support, before.shards | {shard.number}
                )
            told.append(
                MinedShard(
                    shard.number,
                    len(mined.keys),
                    mined.capped,
                    mined.last_size,
                    mined.seconds,
                    mined.memory,
                    sum(map(len, mined.keys)),
                )
            )
        return told

    def bound(self, min_support: int) -> Union:
        everything = len(self._reported)
        self._reported = {
            key: reported
            for key, reported in self._reported.items()
            if may_be_frequent(reported, self._shards, min_support)
        }
        return Union(everything, len(self._reported))

    def count(self, advanced: Advanced | None = None) -> list[CountedShard]:
        wanted = [
            [
                key
                for key, reported in self._reported.items()
                if shard.number not in reported.shards
            ]
            for shard in self._shards
        ]
        tasks = [
            (self._held(shard), self._tables, own)
            for shard, own in zip(self._shards, wanted, strict=True)
        ]
        self._counted = {key: one.support for key, one in self._reported.items()}
        told = []
        done = _told(self._run(count_patterns, tasks), len(tasks), advanced)
        for shard, own, counted in zip(self._shards, wanted, done, strict=True):
            for key, support in zip(own, counted.supports.tolist(), strict=True):
                self._counted[key] += support
            sent = sum(map(len, own))
            told.append(CountedShard(shard.number, len(own), counted.seconds, sent))
        return told

    def supports(self, min_support: int) -> tuple[list[bytes], NDArray[np.int64]]:
        frequent = {k: n for k, n in self._counted.items() if n >= min_support}
        return list(frequent), np.array(list(frequent.values()), np.int64)

    def find(
        self, wanted: Sequence[bytes], advanced: Advanced | None = None
    ) -> Iterable[Found]:
        tasks = [(self._held(shard), self._tables, wanted) for shard in self._shards]
        return _told(self._run(find_patterns, tasks), len(tasks), advanced)

    def close(self) -> None:
        self._blocks.clear()
        self._reported.clear()
        self._counted.clear()


def _told(
    answers: Iterable[Any], shards: int, advanced: Advanced | None
) -> Iterator[Any]:
    """Return the answers, and tell how many there were."""
    for done, answer in enumerate(answers, 1):
        yield answer
        if advanced is not None:
            advanced(done, shards)


def _read(path: str, buckets: int) -> tuple[Described, list[tuple[int, bytes]]]:
    data, _ = read_bytes(path)
    tally = Tally(buckets)
    blocks = []
    for bucket, block in read_file(path, data, buckets):
        tally.add(bucket, block)
        blocks.append((bucket, block.to_bytes()))
    return tally.described(), blocks
