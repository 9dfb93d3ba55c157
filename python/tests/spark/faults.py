"""Workers that are killed: the same result, and how much work is done again.

usage: faults.py MASTER EXAMPLES FOLDER
"""

import os
import pathlib
import signal
import sys
import warnings

import kestro
import kestro.spark
from kestro.spark import _cluster
from session import same, session_of

SHARDS = 3
# What runs in a worker, of each pass.
PASSES = {
    "reading": "_read",
    "mining": "_mine",
    "counting": "_count",
    "finding": "_find",
}


def first_to(marker):
    """Whether this is the first process of all to ask."""
    try:
        os.close(os.open(marker, os.O_CREAT | os.O_EXCL))
    except FileExistsError:
        return False
    return True


def note(log):
    with open(log, "a") as f:
        f.write("x\n")


def executor():
    """Return the process that has started the one that starts workers."""
    daemon = os.getppid()
    with open(f"/proc/{daemon}/stat") as f:
        return int(f.read().rsplit(")", 1)[1].split()[1])


def killing(task, victim, marker, log, after):
    """Return a task whose first call kills a process, before or after its work."""

    def run(*arguments):
        note(log)
        if after:
            answer = task(*arguments)
            answer = answer if hasattr(answer, "num_rows") else list(answer)
            if first_to(marker):
                os.kill(victim(), signal.SIGKILL)
            return answer if hasattr(answer, "num_rows") else iter(answer)
        if first_to(marker):
            os.kill(victim(), signal.SIGKILL)
        return task(*arguments)

    return run


def mined(spark, path, folder, name, victim=None, after=False):
    """Mine, with a killer in that pass; return the result and the calls of it."""
    attribute = PASSES[name]
    task = getattr(_cluster, attribute)
    log = folder / f"{name}-{after}-{victim is not None and victim.__name__}.log"
    marker = log.with_suffix(".marker")
    if victim is None:
        marker.touch()
    setattr(_cluster, attribute, killing(task, victim, str(marker), str(log), after))
    try:
        result = kestro.spark.mine(
            path,
            spark,
            min_support="20%",
            shards=SHARDS,
            min_local_support=1,
            tids=True,
        )
    finally:
        setattr(_cluster, attribute, task)
    return result, len(log.read_text().split())


def workers(spark, path, folder, expected):
    """Kill a worker in each pass, before and after it has done its work."""
    for name in PASSES:
        result, calls = mined(spark, path, folder, name)
        same(result, expected)
        for after in (False, True):
            result, again = mined(spark, path, folder, name, os.getpid, after)
            same(result, expected)
            assert again == calls + 1, (name, after, calls, again)
        print(f"{name}: one task more, the same result", flush=True)


def short_of_memory(task, lost):
    """Return a task that finds no memory once rows are lost, but for shard 0."""

    def run(shards, tables, max_size, caps, key, table):
        if lost.exists() and shards[key[0].as_py()].number != 0:
            caps = caps._replace(memory=1)
        return task(shards, tables, max_size, caps, key, table)

    return run


def rows_lost(spark, path, folder, expected):
    """Lose what is kept after the first pass, with and without memory left."""
    task, bound = _cluster._mine, _cluster.SparkEngine.bound
    lost = folder / "lost"

    def losing(engine, min_support):
        kept = spark.sparkContext._jsc.getPersistentRDDs()
        assert len(kept) > 1
        for number in kept:
            kept[number].unpersist()
        lost.touch()
        return bound(engine, min_support)

    wanted = {"min_support": "20%", "shards": SHARDS, "min_local_support": 1}
    _cluster.SparkEngine.bound = losing
    try:
        same(kestro.spark.mine(path, spark, tids=True, **wanted), expected)
        lost.unlink()
        _cluster._mine = short_of_memory(task, lost)
        try:
            kestro.spark.mine(path, spark, **wanted)
        except kestro.KestroError as e:
            assert "rows of a shard were lost" in str(e), e
        else:
            raise AssertionError("nothing was raised")
    finally:
        _cluster._mine, _cluster.SparkEngine.bound = task, bound
    print("lost rows: mined again, or refused", flush=True)


def executors(spark, path, folder, expected):
    """Kill an executor, with all that it keeps."""
    for name in ("mining", "counting"):
        result, again = mined(spark, path, folder, name, executor)
        same(result, expected)
        assert SHARDS < again <= 2 * SHARDS, (name, again)
        print(f"{name}: the same result", flush=True)


def main():
    master, examples, folder = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
    warnings.simplefilter("ignore")
    spark = session_of(master)
    path = str(examples / "molecules.txt")
    expected = kestro.mine(kestro.read_transactions(path), min_support="20%")
    kill = executors if master.startswith("local-cluster") else workers
    kill(spark, path, folder, expected)
    if kill is workers:
        rows_lost(spark, path, folder, expected)
    spark.stop()


if __name__ == "__main__":
    main()
