"""How far a pass is, told while Spark works."""

from __future__ import annotations

import threading
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from pyspark.sql import SparkSession

# Is handed how many shards are done, and of how many.
Advanced = Callable[[int, int], object]

_SECONDS = 0.2  # between two looks


@contextmanager
def watching(
    spark: SparkSession, advanced: Advanced | None, shards: int
) -> Iterator[None]:
    """Call advanced while the body runs, and at its end.

    A classic session is asked for the tasks that have ended; one of Spark Connect
    tells of them.  What the call raises comes out at the end of the body, since a
    pass is not ended half-way.
    """
    if advanced is None:
        yield
        return
    teller = _Teller(advanced, shards)
    if type(spark).__module__.startswith("pyspark.sql.connect"):
        handler: Any = teller.from_connect
        spark.registerProgressHandler(handler)
        try:
            yield
        finally:
            spark.removeProgressHandler(handler)
    else:
        ended = threading.Event()
        tracker = spark.sparkContext.statusTracker()
        thread = threading.Thread(
            target=_ask, args=(tracker, teller, ended), name="kestro-progress"
        )
        thread.start()
        try:
            yield
        finally:
            ended.set()
            thread.join()
    teller.tell(shards)
    if teller.raised is not None:
        raise teller.raised


class _Teller:
    """Tells how many shards are done, each number once, and keeps what is raised."""

    def __init__(self, advanced: Advanced, shards: int) -> None:
        self._advanced = advanced
        self._shards = shards
        self._told = -1
        self.raised: BaseException | None = None

    def tell(self, done: int) -> None:
        done = min(done, self._shards)
        if self.raised is not None or done <= self._told:
            return
        self._told = done
        try:
            self._advanced(done, self._shards)
        except BaseException as e:
            self.raised = e

    def stages(self, stages: list[tuple[int, int]]) -> None:
        """Take down the tasks, done and in all, of stages that are at work."""
        # Only a stage of a task for each shard is the pass's own.
        self.tell(
            max((done for done, known in stages if known == self._shards), default=0)
        )

    def from_connect(self, stages: Any, **_more: Any) -> None:
        told = list(stages or [])
        self.stages([(s.num_completed_tasks, s.num_tasks) for s in told])


def _ask(tracker: Any, teller: _Teller, ended: threading.Event) -> None:
    while not ended.wait(_SECONDS):
        infos = [tracker.getStageInfo(i) for i in tracker.getActiveStageIds()]
        teller.stages(
            [(info.numCompletedTasks, info.numTasks) for info in infos if info]
        )
