"""Mining on a Spark cluster, in two passes."""

from kestro.spark._mine import mine

__all__ = ["mine"]
