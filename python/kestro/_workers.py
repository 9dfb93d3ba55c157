"""Work that is shared out to processes of its own.

A worker is a fresh interpreter that is handed pickles through a pipe.  Unlike
those of multiprocessing it neither is a fork, which may find locks held by
threads that it does not have, nor runs the caller's script again.
"""

from __future__ import annotations

import os
import pickle
import subprocess
import sys
from collections.abc import Callable, Generator, Iterable
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress
from queue import SimpleQueue
from typing import IO, Any, TypeVar

_T = TypeVar("_T")

_SERVE = "from kestro._workers import serve; serve()"


def in_order(
    function: Callable[..., _T], tasks: Iterable[tuple[Any, ...]], n_jobs: int
) -> Generator[_T, None, None]:
    """Return what a function of this package makes of each task, in order.

    Parameters
    ----------
    function : callable
        With a name in its module, so that a pickle can name it.
    tasks : iterable of tuples
        The arguments of each call.
    n_jobs : int
        Processes; 1 is this one.

    Raises
    ------
    Exception
        What the function raises, at its place among the results.
    """
    if n_jobs == 1:
        for task in tasks:
            yield function(*task)
        return
    workers: list[_Worker] = []
    idle: SimpleQueue[_Worker] = SimpleQueue()

    def call(task: tuple[Any, ...]) -> _T:
        worker = idle.get()
        try:
            answer: _T = worker.call(function, task)
            return answer
        finally:
            idle.put(worker)

    threads = ThreadPoolExecutor(n_jobs)
    try:
        for _ in range(n_jobs):
            workers.append(_Worker())
            idle.put(workers[-1])
        yield from threads.map(call, tasks)
    finally:
        # A thread that waits for an answer gets none once its worker has ended.
        for worker in workers:
            worker.end()
        threads.shutdown(cancel_futures=True)
        for worker in workers:
            worker.close()


class _Worker:
    """A process that answers one call at a time."""

    def __init__(self) -> None:
        # Of its own group, so that Ctrl-C in a terminal reaches the caller only.
        self._process = subprocess.Popen(
            [sys.executable, "-c", _SERVE],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            env={**os.environ, "PYTHONPATH": os.pathsep.join(sys.path)},
            process_group=0,
        )

    def call(self, function: Callable[..., Any], task: tuple[Any, ...]) -> Any:
        assert self._process.stdin and self._process.stdout
        try:
            pickle.dump((function, task), self._process.stdin)
            self._process.stdin.flush()
            worked, answer = pickle.load(self._process.stdout)
        except (EOFError, OSError, pickle.UnpicklingError) as e:
            raise RuntimeError("a worker process has ended unexpectedly") from e
        if not worked:
            raise answer
        return answer

    def end(self) -> None:
        self._process.kill()

    def close(self) -> None:
        # Closes the pipes, where part of a task may be left, and waits.
        with suppress(BrokenPipeError), self._process:
            pass


def serve() -> None:
    """Answer calls until there are no more."""
    answers: IO[bytes] = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)  # so that nothing printed gets among the answers
    while True:
        try:
            function, task = pickle.load(sys.stdin.buffer)
        except EOFError:
            return
        try:
            answer = True, function(*task)
        except Exception as e:
            answer = False, e
        pickle.dump(answer, answers)
        answers.flush()
