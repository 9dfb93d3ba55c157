"""Scores of patterns, and corrections for many of them.

A pattern and a class make a table of four counts: graphs that contain the
pattern or not, of the class or not.  With the numbers of graphs and of those of
the class given, it has two free numbers, the support and how many of the class
contain the pattern; the tests are done once for each pair that occurs.
"""

from __future__ import annotations

from collections.abc import Callable
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, get_args

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro._arguments import check_choice
from kestro._classes import classes
from kestro._errors import KestroError
from kestro._patterns import Patterns
from kestro._ragged import offsets_of

if TYPE_CHECKING:
    import pandas as pd

Method = Literal["chi2", "fisher", "information_gain", "odds_ratio", "growth_rate"]
Correction = Literal["bh", "bonferroni", "tarone"]
_TESTS = ("chi2", "fisher")
# Two tables are equally likely where rounding alone tells their logarithms apart.
_TIE = 1e-7


class Tables(NamedTuple):
    """Counts of several patterns for one class."""

    inside: NDArray[np.int64]  # graphs of the class that contain the pattern
    support: NDArray[np.int64]  # graphs that contain it
    members: int  # graphs of the class
    graphs: int


def table(
    patterns: Patterns,
    chosen: NDArray[np.int64],
    y: ArrayLike,
    *,
    method: str,
    correction: str | None,
    alpha: float,
) -> pd.DataFrame:
    """Return the scores of these patterns; see ``Result.score``."""
    import pandas as pd

    check_choice("method", method, get_args(Method))
    if correction is not None:
        check_choice("correction", correction, get_args(Correction))
        if method not in _TESTS:
            raise ValueError(
                f"a correction is for 'chi2' and 'fisher', which give p, not {method!r}"
            )
        if patterns.summary.holds != "all":
            raise KestroError(
                "a correction counts all patterns of the run, and the file that was "
                "read holds some of them only"
            )
    level = _level(alpha)
    names, codes = classes(y, patterns.summary.graphs)
    rows = []
    family: dict[Any, int] = {}
    factor: dict[Any, int] = {}
    for code in range(len(names)) if len(names) > 2 else [1]:
        tables = _tables(patterns, codes == code)
        inside = tables.inside[chosen]
        outside = (tables.support - tables.inside)[chosen]
        columns = {
            "id": pd.Series(patterns.names(chosen), dtype=str),
            # Of the class's type also where there is no pattern.
            "class": pd.Series([names[code]]).repeat(len(chosen)).array,
            "inside": inside,
            "outside": outside,
            "rate_inside": inside / tables.members,
            "rate_outside": outside / (tables.graphs - tables.members),
        }
        scores, p = score_tables(tables, method)
        columns["score"] = scores[chosen]
        if p is not None:
            columns["p"] = p[chosen]
        if correction is not None:
            assert p is not None
            first, group = patterns.tid_groups
            family[names[code]] = len(first)
            distinct = tables._replace(
                inside=tables.inside[first], support=tables.support[first]
            )
            corrected, significant, divisor = _corrected(
                p[first], distinct, method, correction, level
            )
            if correction == "tarone":
                factor[names[code]] = divisor
            columns["p_corrected"] = corrected[group[chosen]]
            columns["significant"] = significant[group[chosen]]
        rows.append(pd.DataFrame(columns))
    found = pd.concat(rows, ignore_index=True)
    if correction is not None:
        found.attrs["family"] = family
    if factor:
        found.attrs["factor"] = factor
    return found


def _level(alpha: object) -> float:
    if isinstance(alpha, bool) or not isinstance(alpha, (float, int, np.floating)):
        raise TypeError(f"alpha must be a float, not {alpha!r}")
    if not 0 < alpha < 1:
        raise ValueError(f"alpha must be between 0 and 1, not {alpha!r}")
    return float(alpha)


def _tables(patterns: Patterns, members: NDArray[np.bool_]) -> Tables:
    """Return the counts of all patterns of the run."""
    upto = offsets_of(members[patterns.tids])
    inside = np.diff(upto[patterns.tid_offsets])
    support = patterns.support.astype(np.int64)
    return Tables(inside, support, int(members.sum()), len(members))


def score_tables(
    tables: Tables, method: str
) -> tuple[NDArray[np.float64], NDArray[np.float64] | None]:
    """Return the scores, and p of a test."""
    pairs = np.stack([tables.inside, tables.support])
    distinct, which = np.unique(pairs, axis=1, return_inverse=True)
    few = tables._replace(inside=distinct[0], support=distinct[1])
    which = which.reshape(-1)
    if method in _TESTS:
        score, p = _test(few, method)
        return score[which], p[which]
    others: dict[str, Callable[[Tables], NDArray[np.float64]]] = {
        "information_gain": _information_gain,
        "odds_ratio": _odds_ratio,
        "growth_rate": _growth_rate,
    }
    return others[method](few)[which], None


def _test(
    tables: Tables, method: str
) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    if method == "chi2":
        return _chi2(tables)
    # Where p is too small for a float, its logarithm still ranks.
    logs = _log_fisher(tables)
    return np.abs(logs) / np.log(10), np.exp(logs)


def _cells(t: Tables) -> tuple[NDArray[np.float64], ...]:
    """Return counts: inside with, outside with, inside without, outside without."""
    a = t.inside.astype(np.float64)
    b = t.support - a
    return a, b, t.members - a, t.graphs - t.members - b


def _chi2(t: Tables) -> tuple[NDArray[np.float64], NDArray[np.float64]]:
    from scipy import stats

    a, b, c, d = _cells(t)
    margins = (a + b) * (c + d) * (a + c) * (b + d)
    # A pattern in no graph or in all of them tells nothing.
    squares = t.graphs * (a * d - b * c) ** 2
    chi2 = np.divide(squares, margins, out=np.zeros(len(a)), where=margins > 0)
    p: NDArray[np.float64] = stats.chi2.sf(chi2, 1)
    return chi2, p


def _log_fisher(t: Tables) -> NDArray[np.float64]:
    """Return the natural logarithms of Fisher's p."""
    from scipy.special import gammaln

    logs = gammaln(np.arange(t.graphs + 1) + 1.0)  # of factorials

    def choose(n: int, k: NDArray[np.int64]) -> NDArray[np.float64]:
        ways: NDArray[np.float64] = logs[n] - logs[k] - logs[n - k]
        return ways

    others = t.graphs - t.members
    log_p = np.zeros(len(t.support))
    for support in np.unique(t.support):
        least = max(0, support - others)
        possible = np.arange(least, min(support, t.members) + 1)
        ways = choose(t.members, possible) + choose(others, support - possible)
        chances = ways - choose(t.graphs, support)
        ascending = np.sort(chances)
        sums = np.logaddexp.accumulate(ascending)
        mine = t.support == support
        own = chances[t.inside[mine] - least]
        log_p[mine] = sums[np.searchsorted(ascending, own + _TIE, "right") - 1]
    return log_p.clip(max=0.0)


def _information_gain(t: Tables) -> NDArray[np.float64]:
    from scipy.special import xlogy

    a, b, c, d = _cells(t)
    cells = [(a, a + b, a + c), (b, a + b, b + d), (c, c + d, a + c), (d, c + d, b + d)]
    gain = np.zeros(len(a))
    for count, row, column in cells:
        expected = np.where(count > 0, row * column, 1.0)
        gain += xlogy(count, count * t.graphs / expected)
    bits: NDArray[np.float64] = gain / (t.graphs * np.log(2))
    return bits.clip(min=0.0)


def _ratio(
    above: NDArray[np.float64], below: NDArray[np.float64]
) -> NDArray[np.float64]:
    ratio: NDArray[np.float64]
    with np.errstate(divide="ignore", invalid="ignore"):
        ratio = above / below
    return ratio


def _odds_ratio(t: Tables) -> NDArray[np.float64]:
    a, b, c, d = _cells(t)
    return _ratio(a * d, b * c)


def _growth_rate(t: Tables) -> NDArray[np.float64]:
    a, b, _, _ = _cells(t)
    return _ratio(a / t.members, b / (t.graphs - t.members))


def _corrected(
    p: NDArray[np.float64], t: Tables, method: str, correction: str, alpha: float
) -> tuple[NDArray[np.float64], NDArray[np.bool_], int]:
    """Return corrected p, what is significant, and what divided alpha."""
    from scipy import stats

    if correction == "bh":
        corrected = stats.false_discovery_control(p) if len(p) else p
        return corrected, corrected <= alpha, 1
    divisor = max(1, len(p))
    if correction == "tarone":
        divisor = _tarone_factor(_least_p(t, method), alpha)
    significant = p <= alpha / divisor
    # A product and a quotient may be rounded to different sides of alpha.
    corrected = np.where(
        significant,
        np.minimum(p * divisor, alpha),
        np.maximum(p * divisor, np.nextafter(alpha, 1)),
    )
    return np.minimum(corrected, 1.0), significant, divisor


def _least_p(t: Tables, method: str) -> NDArray[np.float64]:
    """Return the smallest p that a pattern of this support could have.

    Both tests are most significant where the class has as many or as few of
    the pattern's graphs as it can have.
    """
    supports, which = np.unique(t.support, return_inverse=True)
    fewest = np.maximum(0, supports - (t.graphs - t.members))
    most = np.minimum(supports, t.members)
    ends = [
        _test(t._replace(inside=end, support=supports), method)[1]
        for end in (fewest, most)
    ]
    return np.minimum(*ends)[which]


def _tarone_factor(least: NDArray[np.float64], alpha: float) -> int:
    """Return the smallest k with at most k patterns that could reach alpha / k."""
    if len(least) == 0:
        return 1
    k = np.arange(1, len(least) + 1)
    reaching = np.searchsorted(np.sort(least), alpha / k, "right")
    return int(k[np.argmax(reaching <= k)])
