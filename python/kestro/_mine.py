"""Mining a database."""

from __future__ import annotations

import math
import os
import warnings
from collections.abc import Callable
from typing import Any, NamedTuple

import numpy as np

from kestro import _core
from kestro._arguments import (
    MinSupport,
    check_choice,
    job_count,
    min_support_parts,
    optional_number,
    truth,
    whole_number,
)
from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import StopMining
from kestro._patterns import Patterns
from kestro._progress import Progress, ProgressBar, ProgressCallback
from kestro._result import Result
from kestro._summary import Described, Filter, Form, RunSummary

_LARGEST = 2**31 - 1


def mine(
    db: GraphDatabase,
    *,
    min_support: MinSupport,
    min_size: int = 1,
    max_size: int | None = None,
    maximal: bool = False,
    closed: bool = False,
    n_jobs: int | None = None,
    progress: bool | ProgressCallback | None = None,
    time_limit: float | None = None,
    max_patterns: int | None = None,
    form: Form = "exact",
) -> Result:
    """Find every connected subgraph that occurs in enough graphs.

    It goes size by size, as all parts of a frequent pattern are frequent [1]_ [2]_.

    Parameters
    ----------
    db : GraphDatabase
        The graphs.
    min_support : int, float or str
        In how many graphs a pattern must occur: an int is a number of graphs,
        1 or more; a float in (0, 1] is a fraction of them; a str like "5%" is
        a percentage as on the command line.  Fractions and percentages are
        rounded to the nearest number of graphs, halves up, and at least 1.
        An int above the number of graphs is taken, and nothing is found.
    min_size, max_size : int
        The sizes of the patterns, in edges; None is no bound.  A ``min_size``
        of 0 is the same as 1, as on the command line: a single vertex is no
        pattern.
    maximal, closed : bool
        Keep only patterns that no larger one contains, or none of the same
        support [3]_.  Where that is unknown the pattern is kept, and
        ``Result.undecided`` counts it.
    n_jobs : int, optional
        Threads: None is 1, -1 all cores that the process may use.  The result
        is the same for any number.
    progress : bool or callable, optional
        True shows a bar on standard error, in terminals and notebooks.  A
        callable is called with a `Progress`, about 20 times a second and at
        the end of each size.  It may raise `StopMining` to end the run; at
        the end of the last size nothing is left to end, and the run is
        complete.
    time_limit : float, optional
        Seconds after which the run ends with the sizes that are complete; None
        is no limit.
    max_patterns : int, optional
        The run ends with the size after which there are more patterns, which
        is kept whole.
    form : {"exact", "command-line"}
        How patterns are brought into a canonical form: "exact" gives each
        pattern once; "command-line" gives what the program writes, where a
        few very symmetric patterns may come twice or be missing.

    Returns
    -------
    Result
        After a limit, `StopMining` or Ctrl-C, the complete sizes, with
        ``complete`` false and the reason in ``stopped_by``.  Ctrl-C comes
        with a `RuntimeWarning`.

    Raises
    ------
    TypeError, ValueError
        For arguments that make no sense.
    Exception
        What the callback or a signal handler raises ends the run and comes
        out of it, with the complete sizes in its attribute ``result``.

    References
    ----------
    .. [1] R. Agrawal, R. Srikant, Fast algorithms for mining association rules,
       VLDB 1994.
    .. [2] A. Inokuchi, T. Washio, H. Motoda, An apriori-based algorithm for
       mining frequent substructures from graph data, PKDD 2000.
    .. [3] X. Yan, J. Han, CloseGraph: mining closed frequent graph patterns,
       KDD 2003.

    Examples
    --------
    >>> import kestro
    >>> db = kestro.from_edges([["C", "O"]] * 2, [[(0, 1, "=")]] * 2)
    >>> kestro.mine(db, min_support=2)[0]
    <Pattern 1-0: support 2, C O, 0-1 =>
    """
    if not isinstance(db, GraphDatabase):
        raise TypeError(f"db must be a GraphDatabase, not {type(db).__name__}")
    check_choice("form", form, ("exact", "command-line"))
    wanted = request(
        min_support=min_support,
        min_size=min_size,
        max_size=max_size,
        maximal=maximal,
        closed=closed,
        n_jobs=n_jobs,
        time_limit=time_limit,
        max_patterns=max_patterns,
    )
    bar = ProgressBar() if progress is True else None
    before = os.times().user
    try:
        packed, told, raised = _core.mine(
            db._native,
            wanted.unit,
            wanted.amount,
            min_size=wanted.min_size,
            max_size=wanted.max_size,
            jobs=wanted.jobs,
            exact=form == "exact",
            time_limit=wanted.seconds,
            pattern_limit=wanted.max_patterns,
            callback=receiver(bar if bar else progress),
        )
    finally:
        if bar:
            bar.close()
    summary = summary_of(
        wanted,
        told,
        raised,
        form=form,
        graphs=len(db),
        seconds=os.times().user - before,
        atom_labels=db.atom_labels,
    )
    patterns = Patterns(packed, summary, *db._native.labels())
    result = Result(patterns, db, filters=wanted.filters)
    settle(raised, result)
    return result


class Request(NamedTuple):
    """What to mine, checked."""

    unit: str  # of the minimum support: "count", "fraction" or "percentage"
    amount: float
    min_size: int
    max_size: int | None
    filters: tuple[Filter, ...]
    jobs: int
    seconds: float | None
    max_patterns: int | None


def request(
    *,
    min_support: MinSupport,
    min_size: int = 1,
    max_size: int | None = None,
    maximal: bool = False,
    closed: bool = False,
    n_jobs: int | None = None,
    time_limit: float | None = None,
    max_patterns: int | None = None,
) -> Request:
    """Check arguments of `mine`."""
    unit, amount = min_support_parts(min_support)
    least = whole_number("min_size", min_size, 0)
    most = optional_number("max_size", max_size, 1, _LARGEST)
    if most is not None and most < least:
        raise ValueError(f"max_size is {most}, less than min_size, {least}")
    wanted: dict[Filter, object] = {"maximal": maximal, "closed": closed}
    return Request(
        unit,
        amount,
        least,
        most,
        tuple(name for name, value in wanted.items() if truth(name, value)),
        job_count(n_jobs),
        _seconds(time_limit),
        optional_number("max_patterns", max_patterns, 0, 2**63 - 1),
    )


def summary_of(
    wanted: Request,
    told: dict[str, Any],
    raised: BaseException | None,
    *,
    form: Form,
    graphs: int,
    seconds: float,
    atom_labels: AtomLabels | None,
    described: Described | None = None,
) -> RunSummary:
    """Return what is known of a run by what the extension tells of it."""
    ending = told["ending"]
    if ending == "stopped":
        interrupted = isinstance(raised, KeyboardInterrupt)
        ending = "interrupt" if interrupted else "progress"
    return RunSummary(
        form=form,
        graphs=graphs,
        min_support=told["min_support"],
        per_cent=_per_cent(wanted.unit, wanted.amount, graphs),
        min_size=wanted.min_size,
        max_size=wanted.max_size,
        ending=ending,
        last_size=told["last_size"],
        order_dependent=told["order_dependent"],
        candidates=tuple(told["candidates"].tolist()),
        frequent=tuple(told["frequent"].tolist()),
        seconds=seconds,
        atom_labels=atom_labels,
        described=described,
    )


def receiver(
    progress: bool | ProgressCallback | None,
) -> Callable[[int, str, int, int, int], object] | None:
    """Return what the extension calls."""
    if progress is None or progress is False:
        return None
    if not callable(progress):
        raise TypeError(f"progress must be a bool or a callable, not {progress!r}")
    callback = progress
    return lambda *now: callback(Progress(*now))


def _seconds(time_limit: object) -> float | None:
    if time_limit is None:
        return None
    if isinstance(time_limit, (bool, np.bool_)) or not isinstance(
        time_limit, (int, float, np.number)
    ):
        raise TypeError(f"time_limit must be a number of seconds, not {time_limit!r}")
    seconds = float(time_limit)
    if seconds == math.inf:
        raise ValueError("time_limit must be finite; None is no limit")
    if not seconds >= 0:
        raise ValueError(f"time_limit must be 0 or more seconds, not {time_limit!r}")
    return seconds


def _per_cent(unit: str, amount: float, graphs: int) -> float:
    """Return the minimum support as the command line takes it."""
    if unit == "percentage":
        return amount
    return 100 * amount / (max(1, graphs) if unit == "count" else 1)


def settle(raised: BaseException | None, result: Result) -> None:
    """Raise again what ended the run, unless it asked for nothing but that."""
    if raised is None or isinstance(raised, StopMining):
        return
    if isinstance(raised, KeyboardInterrupt):
        warnings.warn(
            f"interrupted: patterns found until then: {len(result._patterns)}",
            RuntimeWarning,
            stacklevel=3,
        )
        return
    raised.result = result  # type: ignore[attr-defined]
    raise raised
