"""The engine on Spark: DataFrames alone, so that Spark Connect serves, too.

What a task returns are rows; nothing is kept in a worker.  Blocks lie in as many
partitions as there are shards, one shard in each: a shard's number in the frames
is one that Spark's own hash brings there.
"""

from __future__ import annotations

import pickle
from collections.abc import Callable, Iterable, Iterator, Sequence
from functools import partial
from typing import TYPE_CHECKING, Any

import numpy as np
import pyarrow as pa
from numpy.typing import NDArray

from kestro._errors import KestroError
from kestro.spark._blocks import Block, Tables
from kestro.spark._reading import Described, Fault, Passed, Read, Tally
from kestro.spark._scheme import (
    CAPPED,
    CountedShard,
    MinedShard,
    Shard,
    Union,
    refuse_lost,
)
from kestro.spark._tasks import Caps, Found, count_patterns, find_patterns, mine_shard
from kestro.spark._watching import Advanced, watching

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession

# A reader takes batches of its source's rows and a number of buckets, and returns
# blocks by bucket.
Reader = Callable[[Iterable[pa.RecordBatch], int], Iterator[tuple[int, Block] | Passed]]

_BLOCKS = "bucket int, data binary, told binary, fault string"
_MINED = "shard int, key binary, support bigint, gain bigint, told binary"
_COUNTED = "key binary, support bigint, told binary"
_FOUND = "found binary"

_IN_ALL_GRAPHS = 1 << 40


class SparkEngine:
    """Runs the tasks on a cluster.

    Parameters
    ----------
    spark : SparkSession
        Of a cluster, local, or Connect's.
    source : DataFrame
        What is read.
    reader : callable
        How it is read.
    """

    def __init__(self, spark: SparkSession, source: DataFrame, reader: Reader) -> None:
        self._spark = spark
        self._source = source
        self._reader = reader
        self._kept: list[DataFrame] = []
        self._shards: Sequence[Shard] = ()
        self._keys: list[int] = []  # by shard: its number in the frames
        self._tables = Tables((), ())

    def _keep(self, frame: DataFrame) -> DataFrame:
        kept = frame.persist()
        self._kept.append(kept)
        return kept

    def read(self, buckets: int) -> Read:
        """Read the graphs; raise KestroError for what cannot be read."""
        self._blocks = self._keep(
            self._source.mapInArrow(partial(_read, self._reader, buckets), _BLOCKS)
        )
        rows = self._blocks.select("told", "fault").toArrow()
        faults = [Fault.from_json(f) for f in rows["fault"].drop_null().to_pylist()]
        if faults:
            raise min(
                faults, key=lambda fault: (fault.path or "", fault.line or 0)
            ).error()
        told = [pickle.loads(told) for told in rows["told"].drop_null().to_pylist()]
        described = [one for one in told if isinstance(one, Described)]
        passed = [one for one in told if isinstance(one, Passed)]
        return Read(Described.of(described, buckets), passed)

    def mine(
        self,
        shards: Sequence[Shard],
        tables: Tables,
        max_size: int | None,
        caps: Caps,
        advanced: Advanced | None = None,
    ) -> list[MinedShard]:
        """Mine these shards."""
        from pyspark.sql import functions as f

        self._shards, self._tables = shards, tables
        self._keys = _partition_keys(self._spark, len(shards))
        of_bucket = [
            (bucket, self._keys[shard.number])
            for shard in shards
            for bucket in shard.buckets
        ]
        places = self._spark.createDataFrame(
            pa.Table.from_batches(
                [_batch(of_bucket, bucket=pa.int32(), shard=pa.int32())]
            )
        )
        held = self._blocks.join(f.broadcast(places), "bucket").select("shard", "data")
        self._held = self._keep(held.repartition(len(shards), "shard"))
        by_key = {self._keys[shard.number]: shard for shard in shards}
        mine = partial(_mine, by_key, tables, max_size, caps)
        self._mined = self._keep(
            # Spark asks for the hints of what it is handed; a lambda has none.
            self._held.groupBy("shard").applyInArrow(
                lambda key, table: mine(key, table), _MINED
            )
        )
        with watching(self._spark, advanced, len(shards)):
            reports = self._reports(self._mined)
        self._blocks.unpersist()  # held by shard now
        return reports

    def _reports(self, frame: DataFrame) -> list[Any]:
        rows = frame.where("told is not null").select("told").toArrow()
        reports = [pickle.loads(told) for told in rows["told"].to_pylist()]
        return sorted(reports, key=lambda report: report.shard)

    def bound(self, min_support: int) -> Union:
        """Drop what cannot reach the minimum support."""
        from pyspark.sql import Observation
        from pyspark.sql import functions as f

        most_missed = sum(shard.min_support - 1 for shard in self._shards)
        union = Observation()
        # A shard reports a pattern once, so nothing can be added up before rows
        # are sent; told how many, Spark does not make 200 partitions of them.
        reported = (
            self._mined.where("key is not null")
            .repartition(len(self._keys), "key")
            .groupBy("key")
            .agg(
                f.sum("support").alias("support"),
                f.sum("gain").alias("gain"),
                f.collect_set("shard").alias("shards"),
            )
            .observe(union, f.count(f.lit(1)).alias("reported"))
        )
        self._reported = self._keep(
            reported.where(f.col("gain") + f.lit(most_missed) >= min_support)
        )
        kept = self._reported.count()
        return Union(int(union.get["reported"]), kept)

    def count(self, advanced: Advanced | None = None) -> list[CountedShard]:
        """Count what is left in the shards that did not report it."""
        from pyspark.sql import functions as f

        others = f.array_except(f.lit(self._keys), "shards")
        silent = self._reported.where(f.length("key") > 0).select(
            f.explode(others).alias("shard"), "key"
        )
        number_of = {key: number for number, key in enumerate(self._keys)}
        count = partial(_count, number_of, self._tables)
        self._counted = self._keep(
            self._held.groupBy("shard")
            .cogroup(silent.repartition(len(self._keys), "shard").groupBy("shard"))
            .applyInArrow(lambda key, held, wanted: count(key, held, wanted), _COUNTED)
        )
        with watching(self._spark, advanced, len(self._keys)):
            return self._reports(self._counted)

    def supports(self, min_support: int) -> tuple[list[bytes], NDArray[np.int64]]:
        """Return the keys that reach the minimum support, and their supports."""
        from pyspark.sql import functions as f

        counted = self._counted.where("key is not null").select("key", "support")
        rows = (
            self._reported.select("key", "support")
            .unionByName(counted)
            .repartition(len(self._keys), "key")
            .groupBy("key")
            .agg(f.sum("support").alias("support"))
            .where(f.col("support") >= min_support)
            .toArrow()
        )
        keys = rows["key"].to_pylist()
        refuse_lost(keys)
        return keys, rows["support"].to_numpy()

    def find(
        self, wanted: Sequence[bytes], advanced: Advanced | None = None
    ) -> Iterable[Found]:
        """Find the patterns of these keys in every shard."""
        find = partial(_find, self._tables, wanted)
        found = self._held.groupBy("shard").applyInArrow(
            lambda key, held: find(key, held), _FOUND
        )
        with watching(self._spark, advanced, len(self._keys)):
            rows = found.toArrow()
        return map(pickle.loads, rows["found"].to_pylist())

    def close(self) -> None:
        """Free all that is kept."""
        for frame in self._kept:
            frame.unpersist()
        self._kept.clear()


def _partition_keys(spark: SparkSession, count: int) -> list[int]:
    """Return a number for each of so many partitions that lies in it."""
    tried = 32 * count + 64
    while True:
        rows = spark.range(tried).selectExpr(
            "cast(id as int) as key", f"pmod(hash(cast(id as int)), {count}) as place"
        )
        first = rows.groupBy("place").agg({"key": "min"}).toArrow().to_pylist()
        if len(first) == count:
            return [row["min(key)"] for row in sorted(first, key=lambda r: r["place"])]
        tried *= 2


def _batch(rows: Sequence[tuple[Any, ...]], **types: pa.DataType) -> pa.RecordBatch:
    columns = list(zip(*rows, strict=True)) or [()] * len(types)
    return pa.RecordBatch.from_arrays(
        [pa.array(c, t) for c, t in zip(columns, types.values(), strict=True)],
        names=list(types),
    )


def _read(
    reader: Reader, buckets: int, batches: Iterable[pa.RecordBatch]
) -> Iterator[pa.RecordBatch]:
    types = {
        "bucket": pa.int32(),
        "data": pa.binary(),
        "told": pa.binary(),
        "fault": pa.string(),
    }
    tally = Tally(buckets)
    try:
        for read in reader(batches, buckets):
            if isinstance(read, Passed):
                yield _batch([(None, None, pickle.dumps(read), None)], **types)
                continue
            bucket, block = read
            tally.add(bucket, block)
            yield _batch([(bucket, block.to_bytes(), None, None)], **types)
        yield _batch([(None, None, pickle.dumps(tally.described()), None)], **types)
    except KestroError as e:
        # Told, not raised: Spark would only try it again.
        yield _batch([(None, None, None, Fault.of(e).to_json())], **types)
    for _ in batches:
        pass  # a task that leaves input unread loses its process


def _mine(
    shards: dict[int, Shard],
    tables: Tables,
    max_size: int | None,
    caps: Caps,
    key: tuple[pa.Scalar, ...],
    table: pa.Table,
) -> pa.Table:
    own = key[0].as_py()
    shard = shards[own]
    # In an order that does not depend on which block came first.
    blocks = sorted(table.column("data").to_pylist())
    mined = mine_shard(blocks, tables, shard.min_support, max_size, caps)
    keys, supports = mined.keys, mined.supports
    if mined.capped:
        keys, supports = [CAPPED], [_IN_ALL_GRAPHS]
    binary = table.schema.field("data").type  # of two types, as the session says
    told = MinedShard(
        shard.number,
        len(mined.keys),
        mined.capped,
        mined.last_size,
        mined.seconds,
        mined.memory,
        sum(map(len, mined.keys)),
    )
    gain = [support - (shard.min_support - 1) for support in supports]
    return pa.table(
        {
            "shard": pa.array([own] * (len(keys) + 1), pa.int32()),
            "key": pa.array([*keys, None], binary),
            "support": pa.array([*supports, None], pa.int64()),
            "gain": pa.array([*gain, None], pa.int64()),
            "told": pa.array([None] * len(keys) + [pickle.dumps(told)], binary),
        }
    )


def _count(
    number_of: dict[int, int],
    tables: Tables,
    key: tuple[pa.Scalar, ...],
    held: pa.Table,
    silent: pa.Table,
) -> pa.Table:
    # In an order that does not depend on which row came first.
    wanted = sorted(silent.column("key").to_pylist())
    counted = count_patterns(held.column("data").to_pylist(), tables, wanted)
    told = CountedShard(
        number_of[key[0].as_py()],
        len(wanted),
        counted.seconds,
        sum(map(len, wanted)),
    )
    n = len(wanted)
    binary = held.schema.field("data").type
    return pa.table(
        {
            "key": pa.array([*wanted, None], binary),
            "support": pa.array([*counted.supports.tolist(), None], pa.int64()),
            "told": pa.array([None] * n + [pickle.dumps(told)], binary),
        }
    )


def _find(
    tables: Tables,
    wanted: Sequence[bytes],
    _key: tuple[pa.Scalar, ...],
    held: pa.Table,
) -> pa.Table:
    found = find_patterns(held.column("data").to_pylist(), tables, wanted)
    binary = held.schema.field("data").type
    return pa.table({"found": pa.array([pickle.dumps(found)], binary)})
