"""Sessions of Spark's, classic and Connect's."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

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


def tasks_at_once(spark: SparkSession) -> int:
    """Return how many parts Spark makes of something by itself."""
    from pyspark.sql import functions as f

    # Spark Connect does not tell, but does it.
    parts = spark.range(1 << 16).select(f.spark_partition_id().alias("part"))
    return parts.distinct().count()
