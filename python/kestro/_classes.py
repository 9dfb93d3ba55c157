"""The classes of graphs, as people hand them over."""

from __future__ import annotations

import numbers
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro._errors import KestroError


def classes(y: ArrayLike, graphs: int) -> tuple[list[Any], NDArray[np.int64]]:
    """Return the classes in sorted order, and of each graph the number of its own.

    Raises
    ------
    KestroError
        When y does not give each graph a class, or all the same, or when its
        entries are of several kinds.
    """
    labels = _array_of(y, graphs)
    if np.issubdtype(labels.dtype, np.inexact) and (labels % 1 != 0).any():
        raise KestroError("y must hold classes, not measurements")
    try:
        names, codes = np.unique(labels, return_inverse=True)
    except TypeError as e:
        raise KestroError(f"the classes in y cannot be put into order: {e}") from e
    if len(names) < 2:
        raise KestroError("y must hold at least two classes")
    return names.tolist(), codes


def _array_of(y: Any, graphs: int) -> NDArray[Any]:
    """Return the entries as an array; none is missing, all are of one kind."""
    import pandas as pd

    if y is None:
        raise KestroError("y is missing: the class of each graph")
    if isinstance(y, (list, tuple)):
        for entry in y:
            if isinstance(entry, (list, tuple, np.ndarray)):
                raise KestroError("y must have one dimension, not lists in a list")
        # NumPy would make text of numbers beside text, and of NaN, too.
        labels = np.empty(len(y), object)
        labels[:] = y
    else:
        labels = np.asarray(y)
    if labels.ndim != 1:
        raise KestroError(f"y must have one dimension, not {labels.ndim}")
    if len(labels) != graphs:
        hint = "; values[db.source] leaves out what was skipped"
        raise KestroError(
            f"y has {len(labels)} entries for {graphs} graphs"
            + (hint if len(labels) > graphs else "")
        )
    missing = np.flatnonzero(pd.isna(labels) | np.ma.getmask(y))
    if len(missing):
        raise KestroError(f"the class of graph {missing[0]} is missing in y")
    if labels.dtype != object:
        return labels
    kinds = {_kind(label) for label in labels}
    if len(kinds) > 1:
        told = " and ".join(sorted(kinds))
        raise KestroError(f"the classes in y are {told}, which have no order")
    return np.array(labels.tolist()) if kinds == {"numbers"} else labels


def _kind(label: object) -> str:
    """Return the kind of a class; those of different kinds may print alike."""
    if isinstance(label, (bool, np.bool_)):
        return "truth values"
    if isinstance(label, numbers.Number):
        return "numbers"
    return "text" if isinstance(label, str) else f"{type(label).__name__} objects"
