"""Sessions of Spark's, classic and Connect's."""

from __future__ import annotations

import sys
from collections.abc import Iterator
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any

from kestro._errors import KestroError

if TYPE_CHECKING:
    from pyspark.sql import SparkSession


def session_of(spark: Any) -> SparkSession:
    """Return the session, or the one that is active."""
    try:
        from pyspark.sql import SparkSession
    except ImportError as e:
        raise ImportError("this needs PySpark: pip install 'kestro[spark]'") from e
    if spark is None:
        spark = SparkSession.getActiveSession()
        if spark is None:
            raise ValueError("spark must be given: no session is active")
    if not hasattr(spark, "range") or not hasattr(spark, "read"):
        raise TypeError(f"spark must be a SparkSession, not {type(spark).__name__}")
    session: SparkSession = spark
    return session


@contextmanager
def sparks_errors() -> Iterator[None]:
    """Raise in the words of this package what Spark tells in its own.

    An interrupt that meets Spark at work comes out of it as one of its errors.
    """
    before = sys.exc_info()[1]  # what the caller is handling, if anything
    try:
        yield
    except Exception as e:
        if _is_interrupt(e, before):
            raise KeyboardInterrupt from e
        if "No module named 'kestro" in str(e):
            raise KestroError(
                "the Python of Spark's workers lacks kestro; PYSPARK_PYTHON names the "
                "interpreter that has it"
            ) from e
        if "needs RDKit" in str(e):
            raise KestroError(
                "the Python of Spark's workers lacks RDKit: pip install "
                "'kestro[rdkit]' there"
            ) from e
        raise


def _is_interrupt(e: BaseException | None, before: BaseException | None) -> bool:
    while e is not None and e is not before:
        if isinstance(e, KeyboardInterrupt):
            return True
        e = e.__context__
    return False


def tasks_at_once(spark: SparkSession) -> int:
    """Return how many parts Spark makes of something by itself."""
    from pyspark.sql import functions as f

    # Spark Connect does not tell, but does it.
    parts = spark.range(1 << 16).select(f.spark_partition_id().alias("part"))
    return parts.distinct().count()
