"""Checks of arguments that several functions take."""

from __future__ import annotations

import operator
import os
import re
from collections.abc import Sequence
from typing import Any, Literal, SupportsIndex

import numpy as np
from numpy.typing import NDArray

OnError = Literal["raise", "skip"]
MinSupport = int | float | str
Index = int | np.integer[Any]
# A mask or positions; a str is neither.
Selection = Sequence[bool] | Sequence[int] | NDArray[Any]
Ids = list[str] | tuple[str, ...]  # of patterns

# A number as the command line takes it, without the forms that only C reads.
_PERCENTAGE = re.compile(r"\s*([0-9]+(?:\.[0-9]*)?|\.[0-9]+)\s*%\s*")


def whole_number(name: str, value: object, least: int, most: int = 2**31 - 1) -> int:
    """Return value as an int; raise unless it is one in that range."""
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, SupportsIndex):
        raise TypeError(f"{name} must be an int, not {value!r}")
    number = operator.index(value)
    if number < least:
        raise ValueError(f"{name} must be at least {least}, not {number}")
    if number > most:
        raise ValueError(f"{name} must be at most {most}, not {number}")
    return number


def truth(name: str, value: object) -> bool:
    """Return value as a bool; raise unless it is one."""
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name} must be a bool, not {value!r}")
    return bool(value)


def optional_number(name: str, value: object, least: int, most: int) -> int | None:
    """Return None for None, else what `whole_number` returns."""
    return None if value is None else whole_number(name, value, least, most)


def min_support_parts(value: object) -> tuple[str, float]:
    """Return the unit, "count", "fraction" or "percentage", and the amount."""
    if isinstance(value, (bool, np.bool_)):
        raise TypeError(
            f"min_support must be a number of graphs, a fraction or a percentage, "
            f"not {bool(value)}"
        )
    if isinstance(value, (int, np.integer)):
        return "count", float(whole_number("min_support", value, 1))
    if isinstance(value, (float, np.floating)):
        if not 0 < value <= 1:
            raise ValueError(
                f"a min_support of type float is a fraction in (0, 1], not {value}; "
                f"write an int for a number of graphs or '5%' for a percentage"
            )
        return "fraction", float(value)
    if isinstance(value, str):
        found = _PERCENTAGE.fullmatch(value)
        if not found:
            hint = "; write a point, not a comma" if "," in value else ""
            raise ValueError(
                f"a min_support of type str is a percentage like '5%', not {value!r}"
                f"{hint}"
            )
        amount = float(found[1])
        if amount > 100:
            raise ValueError(f"min_support must be at most 100%, not {value!r}")
        return "percentage", amount
    raise TypeError(
        f"min_support must be an int, a float or a str like '5%', not {value!r}"
    )


def job_count(n_jobs: object) -> int:
    """Return the number of threads that n_jobs means."""
    if n_jobs is None:
        return 1
    if isinstance(n_jobs, SupportsIndex) and operator.index(n_jobs) == -1:
        return len(os.sched_getaffinity(0))
    if isinstance(n_jobs, SupportsIndex) and operator.index(n_jobs) < 1:
        raise ValueError(f"n_jobs must be None, -1 or at least 1, not {n_jobs!r}")
    return whole_number("n_jobs", n_jobs, 1)


def check_choice(name: str, value: object, choices: tuple[str, ...]) -> None:
    """Raise unless value is one of the choices."""
    if value not in choices:
        wanted = " or ".join(repr(choice) for choice in choices)
        raise ValueError(f"{name} must be {wanted}, not {value!r}")


def ids_in(key: object) -> list[str] | None:
    """Return the ids that a selection lists, None where it lists none."""
    if isinstance(key, slice):
        return None
    entries = np.asarray(key)
    if entries.ndim != 1 or not len(entries):
        return None
    ids = entries.tolist()
    return ids if all(isinstance(x, str) for x in ids) else None


def positions(key: object, size: int) -> NDArray[np.int64]:
    """Return the positions that a slice, a mask or an array of ints selects."""
    if isinstance(key, slice):
        return np.arange(*key.indices(size), dtype=np.int64)
    chosen = np.asarray(key)
    if chosen.ndim != 1:
        raise IndexError("a selection is a slice, a mask or a sequence of positions")
    if chosen.dtype == np.object_:
        chosen = _certain(chosen)
    if chosen.dtype == np.bool_:
        if len(chosen) != size:
            raise IndexError(f"a mask of {len(chosen)} selects from {size}")
        return np.flatnonzero(chosen).astype(np.int64)
    if len(chosen) == 0:
        return np.zeros(0, dtype=np.int64)
    if not np.issubdtype(chosen.dtype, np.integer):
        raise IndexError("a selection is a slice, a mask or a sequence of positions")
    chosen = chosen.astype(np.int64)
    if chosen.min() < -size or chosen.max() >= size:
        raise IndexError(f"a position is out of range for {size}")
    return np.where(chosen < 0, chosen + size, chosen)


def _certain(chosen: NDArray[Any]) -> NDArray[Any]:
    """Return the array with the type that all its objects have.

    pandas makes objects of masks that may have missing values.
    """
    import pandas as pd

    if pd.isna(chosen).any():
        raise IndexError(
            "a mask or a position is missing (NA): fillna(False) leaves such rows out"
        )
    return np.array(chosen.tolist())


def position(key: Index, size: int, what: str) -> int:
    """Return one position, counted from the end where it is negative."""
    if isinstance(key, (bool, np.bool_)):
        raise TypeError(f"the position of a {what} must be an int, not {key}")
    number = operator.index(key)
    if not -size <= number < size:
        raise IndexError(f"{what} {number} is out of range for {size}")
    return number + size if number < 0 else number
