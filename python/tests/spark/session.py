"""One session with a master: everything that a cluster must do as one machine does.

usage: session.py MASTER EXAMPLES FOLDER
"""

import pathlib
import sys
import warnings

import kestro
import kestro.spark
import numpy as np

ARRAYS = (
    "level_sizes",
    "level_ends",
    "vertex_offsets",
    "vertex_labels",
    "edges",
    "edge_labels",
    "parent_offsets",
    "parents",
    "order_dependent",
)
TIDS = ("tid_offsets", "tids")


def session_of(master):
    from pyspark.sql import SparkSession

    if master == "connect":
        return SparkSession.builder.remote("local[2]").getOrCreate()
    return (
        SparkSession.builder.master(master)
        .config("spark.ui.enabled", "false")
        .config("spark.ui.showConsoleProgress", "false")
        .getOrCreate()
    )


def same(found, expected, *, tids=True):
    ours, theirs = found._patterns, expected._patterns
    for name in ARRAYS + (TIDS if tids else ()):
        assert np.array_equal(ours._packed[name], theirs._packed[name]), name
    assert np.array_equal(ours.support, theirs.support)
    assert (ours.vertex_table, ours.edge_table) == (
        theirs.vertex_table,
        theirs.edge_table,
    )
    for name in ("candidates", "frequent", "order_dependent", "ending", "last_size"):
        assert getattr(ours.summary, name) == getattr(theirs.summary, name), name


def refusal(call):
    try:
        call()
    except kestro.KestroError as e:
        return str(e)
    raise AssertionError("nothing was raised")


def files(spark, examples, folder):
    """Several files, one of them packed, against one."""
    db = kestro.read_transactions(examples / "molecules.txt")
    expected = kestro.mine(db, min_support="20%")
    parts = folder / "parts"
    parts.mkdir()
    for i, part in enumerate((slice(0, 25), slice(25, 26), slice(26, 60))):
        db[part].to_transactions(parts / f"{i}.txt")
    wanted = {"min_support": "20%", "shards": 3, "min_local_support": 1}
    same(kestro.spark.mine(str(parts), spark, tids=True, **wanted), expected)
    path = str(examples / "molecules.txt")
    found = kestro.spark.mine(path, spark, tids=True, **wanted)
    assert written(found, folder / "ours") == written(expected, folder / "theirs")
    same(kestro.spark.mine(path, spark, **wanted), expected, tids=False)


def written(result, folder):
    """Return the lines of the files, but for those of times."""
    folder.mkdir()
    result.write(folder, "found", tids=True, parents=True)
    return [
        line
        for suffix in ("fp", "tid", "pc")
        for line in (folder / f"found.{suffix}").read_text().splitlines()
        if "Elapsed" not in line and "CPU" not in line
    ]


def rows(spark, examples, folder):
    """Rows of packed graphs by ids in another order, and of SMILES by names."""
    import pyarrow as pa

    db = kestro.read_transactions(examples / "molecules.txt")
    expected = kestro.mine(db, min_support="20%", closed=True)
    order = list(range(len(db)))[::-1]
    table = db[order].to_arrow().append_column("id", pa.array(order))
    found = kestro.spark.mine(
        spark.createDataFrame(table),
        spark,
        id_col="id",
        min_support="20%",
        closed=True,
        tids=True,
        shards=2,
        min_local_support=1,
    )
    same(found, expected)
    assert [p.id for p in found] == [p.id for p in expected]

    smiles = ["CCO", "CCN", "c1ccccc1O", "CC(=O)O", "C[NH3+]"]
    names = ["b", "a", "d", "c", "é"]
    expected = kestro.mine(
        kestro.from_smiles([s for _, s in sorted(zip(names, smiles, strict=True))]),
        min_support=2,
    )
    frame = spark.createDataFrame(
        list(zip(names, smiles, strict=True)), "n string, s string"
    )
    wanted = {"min_support": 2, "min_local_support": 1, "tids": True, "smiles": "s"}
    found = kestro.spark.mine(frame, spark, id_col="n", **wanted)
    same(found, expected)
    assert found.to_pandas().smarts.tolist() == expected.to_pandas().smarts.tolist()

    twice = spark.createDataFrame([("a", "CC"), ("a", "CO")], "n string, s string")
    assert "'a' more than once" in refusal(
        lambda: kestro.spark.mine(twice, spark, id_col="n", **wanted)
    )
    bad = spark.createDataFrame(
        [("a", "CC"), ("b", "C("), ("c", "CCO")], "n string, s string"
    )
    assert "id 'b'" in refusal(
        lambda: kestro.spark.mine(bad, spark, id_col="n", **wanted)
    )
    found = kestro.spark.mine(bad, spark, id_col="n", on_error="skip", **wanted)
    same(found, kestro.mine(kestro.from_smiles(["CC", "CCO"]), min_support=2))
    pairs = kestro.spark.occurrences(
        found, bad, spark, smiles="s", id_col="n", on_error="skip"
    )
    assert [row.asDict() for row in pairs.sort("n").collect()] == [
        {"pattern": "1-0", "n": "a"},
        {"pattern": "1-0", "n": "c"},
    ]


def odd(spark, examples, folder):
    """No graphs, no file, names and ids that are odd, and cells of another type."""
    path = folder / "none.txt"
    path.write_text("")
    found = kestro.spark.mine(str(path), spark, min_support=1, tids=True)
    assert (len(found), found.graphs) == (0, 0)
    told = refusal(
        lambda: kestro.spark.mine(str(folder / "nowhere"), spark, min_support=1)
    )
    assert told.startswith("there is no such file"), told
    frame = spark.createDataFrame(
        [("", "CC"), ("b", "CCO")], "count string, `a.b` string"
    )
    wanted = {"smiles": "a.b", "id_col": "count"}
    expected = kestro.mine(kestro.from_smiles(["CC", "CCO"]), min_support=2)
    large = "spark.sql.execution.arrow.useLargeVarTypes"
    for value in ("true", "false"):
        spark.conf.set(large, value)
        found = kestro.spark.mine(
            frame, spark, min_support=2, min_local_support=1, tids=True, **wanted
        )
        same(found, expected)
        pairs = kestro.spark.occurrences(found, frame, spark, **wanted)
        assert sorted(row["count"] for row in pairs.collect()) == ["", "b"]


def told(spark, examples, folder):
    """How far it is, what it would come to, and a table of what was found."""
    seen = []
    path = str(examples / "molecules.txt")
    wanted = {"min_support": "20%", "shards": 3, "min_local_support": 1}
    found = kestro.spark.mine(path, spark, progress=seen.append, **wanted)
    passes = [(now.step, now.done) for now in seen if now.size == 0]
    assert ("mining shards", 3) in passes
    assert ("counting in shards", 3) in passes
    assert [now.size for now in seen if now.step == "complete"] == list(range(1, 10))
    frame = found.to_spark(spark)
    assert frame.count() == len(found)
    assert frame.columns[:3] == ["size", "id", "support"]
    pairs = kestro.spark.occurrences(found[found.size > 4], path, spark).toArrow()
    assert pairs.column_names == ["pattern", "path", "record"]
    expected = kestro.mine(kestro.read_transactions(path), min_support="20%")
    assert sorted(
        zip(pairs["pattern"].to_pylist(), pairs["record"].to_pylist(), strict=True)
    ) == sorted((p.id, tid) for p in expected if p.size > 4 for tid in p.tids.tolist())
    plan = kestro.spark.plan(path, spark, **wanted)
    assert (plan.graphs, plan.shards, plan.sampled) == (60, 3, 3)
    assert plan.union >= len(found)


def bad_input(spark, examples, folder):
    """Told once, with path and line, and what a shard may come to."""
    path = folder / "bad.txt"
    path.write_text("t # 0\nv 0 C\nv 1 C\nu 0 2 s\n")
    told = refusal(lambda: kestro.spark.mine(str(path), spark, min_support=1))
    assert told.endswith("bad.txt, line 4)"), told
    told = refusal(
        lambda: kestro.spark.mine(
            str(examples / "molecules.txt"),
            spark,
            min_support="20%",
            shards=2,
            min_local_support=1,
            max_local_patterns=5,
        )
    )
    assert "fewer shards" in told, told
    assert "form must be 'exact'" in refusal(
        lambda: kestro.spark.mine("x", spark, min_support=1, form="command-line")
    )


def main():
    master, examples, folder = sys.argv[1], *map(pathlib.Path, sys.argv[2:])
    warnings.simplefilter("ignore")  # of PySpark's on versions of pandas
    spark = session_of(master)
    for check in (files, rows, odd, told, bad_input):
        check(spark, examples, folder)
        print(f"{check.__name__}: as on one machine", flush=True)
    spark.stop()


if __name__ == "__main__":
    main()
