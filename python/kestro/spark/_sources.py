"""What is mined: files, or the rows of a DataFrame."""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING

import pyarrow as pa

from kestro._files import unpacked
from kestro.spark._blocks import Block
from kestro.spark._reading import read_file

if TYPE_CHECKING:
    from pyspark.sql import DataFrame, SparkSession


def files(spark: SparkSession, path: str) -> DataFrame:
    """Return the files of a path or a glob, a row each."""
    return spark.read.format("binaryFile").load(path).select("path", "content")


def read_files(
    batches: Iterable[pa.RecordBatch], buckets: int
) -> Iterator[tuple[int, Block]]:
    """Return the graphs of transaction files."""
    for batch in batches:
        for path, content in zip(
            batch.column("path").to_pylist(),
            batch.column("content").to_pylist(),
            strict=True,
        ):
            yield from read_file(path, unpacked(content, path), buckets)
