"""Lists of different lengths that lie one behind another in an array."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray


def offsets_of(counts: NDArray[Any]) -> NDArray[np.int64]:
    """Return where each list begins, and where the last one ends."""
    offsets = np.zeros(len(counts) + 1, np.int64)
    np.cumsum(counts, out=offsets[1:])
    return offsets


def small(offsets: NDArray[np.int64]) -> NDArray[Any]:
    """Return the offsets in 32 bits where these do, as SciPy keeps them."""
    return offsets.astype(np.int32) if offsets[-1] < 2**31 else offsets


def places(
    offsets: NDArray[np.int64], chosen: NDArray[np.int64]
) -> tuple[NDArray[np.int64], NDArray[np.int64]]:
    """Return the places of all items of these lists, and the lists' new offsets."""
    counts = offsets[chosen + 1] - offsets[chosen]
    new = offsets_of(counts)
    return np.arange(new[-1]) + np.repeat(offsets[chosen] - new[:-1], counts), new
