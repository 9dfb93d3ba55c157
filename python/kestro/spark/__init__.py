"""Mining on a Spark cluster, in two passes."""

from kestro.spark._mine import mine, plan
from kestro.spark._occurrences import occurrences
from kestro.spark._plan import Plan

__all__ = ["Plan", "mine", "occurrences", "plan"]
