"""Plots of a result, by matplotlib.

They can be read without colour: marks differ in their form, too.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from kestro._arguments import whole_number
from kestro._errors import KestroError, printable

if TYPE_CHECKING:
    from matplotlib.axes import Axes

    from kestro._result import Result
    from kestro._scoring import Correction

_DARK, _LIGHT = "#1f4e79", "#8a8a8a"
# Of counts, from which on the axis has powers of ten.
_WIDE = 100


def sizes(result: Result, ax: Axes | None) -> Axes:
    """Return a plot of the patterns per size; see `Result.plot_sizes`."""
    ax = _axes(ax)
    from matplotlib.ticker import MaxNLocator

    summary = result._patterns.summary
    rows = [
        ("candidates", np.array(summary.candidates), "s", "--", _LIGHT, "none"),
        ("frequent", np.array(summary.frequent), "o", "-", _DARK, _DARK),
    ]
    chosen = np.bincount(result.size, minlength=len(summary.frequent))
    if not result._is_whole or chosen.sum() != sum(summary.frequent):
        rows.append(("in this result", chosen, "^", ":", "#b3541e", "none"))
    for label, counts, marker, line, colour, fill in rows:
        found = np.flatnonzero(counts)
        ax.plot(
            found,
            counts[found],
            marker=marker,
            linestyle=line,
            color=colour,
            markerfacecolor=fill,
            label=label,
        )
    every = np.concatenate([counts[counts > 0] for _, counts, *_ in rows])
    if len(every) and every.max() > _WIDE * every.min():
        ax.set_yscale("log")
    else:
        ax.set_ylim(bottom=0)
    ax.xaxis.set_major_locator(MaxNLocator(integer=True))
    ax.set_xlabel("size (edges)")
    ax.set_ylabel("patterns")
    ax.legend()
    return ax


def scores(
    result: Result,
    y: ArrayLike | None,
    ax: Axes | None,
    of: object,
    correction: Correction | None,
    alpha: float,
    labels: int,
) -> Axes:
    """Return a volcano plot; see `Result.plot_scores`."""
    most = whole_number("labels", labels, 0)
    table = result.score(y, method="fisher", correction=correction, alpha=alpha)
    ratios = result.score(y, method="odds_ratio")
    name = _class(table["class"].unique().tolist(), of) if len(table) else of
    mine = (table["class"] == name).to_numpy(np.bool_)
    table, ratios = table[mine], ratios[mine]
    height = table["score"].to_numpy(np.float64)
    with np.errstate(divide="ignore"):
        across = np.log2(ratios["score"].to_numpy(np.float64))
    x, end = _clipped(across)
    significant = (
        table["significant"].to_numpy(np.bool_)
        if correction
        else np.zeros(len(table), np.bool_)
    )
    ax = _axes(ax)
    told = {
        "significant": f"significant ({correction}, {alpha:g})",
        "not significant": "not significant" if correction else "patterns",
    }
    marks = {"o": np.isfinite(across) | np.isnan(across)}
    marks |= {"<": across == -np.inf, ">": across == np.inf}
    kinds = (
        ("not significant", ~significant, _LIGHT, "none"),
        ("significant", significant, _DARK, _DARK),
    )
    for kind, which, colour, fill in kinds[: 2 if correction else 1]:
        for mark, here in marks.items():
            ax.scatter(
                x[which & here],
                height[which & here],
                marker=mark,
                edgecolors=colour,
                facecolors=fill,
                label=told[kind] if mark == "o" else None,
                gid=f"{kind} {mark}",
            )
    _name_best(ax, x, height, table["id"].tolist(), most)
    ax.axvline(0, color="#ccc", linewidth=1, zorder=0)
    ax.set_xlim(-1.15 * end, 1.15 * end)
    ax.set_ylim(bottom=0)
    ax.set_xlabel(
        printable(
            f"log2 of the odds ratio, class {name!s} to others\ntriangles: infinite"
        )
    )
    ax.set_ylabel("-log10 p (Fisher)")
    ax.legend(fontsize="small", loc="upper center")
    return ax


def _class(classes: list[Any], of: object) -> Any:
    if of is None:
        if len(classes) > 1:
            raise KestroError(
                f"of {len(classes)} classes one is compared with the others: "
                f"of is one of {classes}"
            )
        return classes[0]
    if of not in classes:
        raise KestroError(f"of must be one of {classes}, not {of!r}")
    return of


def _clipped(across: NDArray[np.float64]) -> tuple[NDArray[np.float64], float]:
    """Return the places of logarithms of ratios, and that of infinite ones.

    A ratio that is none, of a pattern in all graphs, tells as little as 1.
    """
    finite = np.abs(across[np.isfinite(across)])
    end = max(1.0, 1.2 * float(finite.max(initial=0.0)))
    return np.nan_to_num(across, nan=0.0, posinf=end, neginf=-end), end


def _name_best(
    ax: Axes,
    x: NDArray[np.float64],
    y: NDArray[np.float64],
    names: list[str],
    most: int,
) -> None:
    """Write ids beside the highest marks; of those in one place the first one's."""
    named: dict[tuple[float, float], str] = {}
    for i in np.argsort(-y, kind="stable").tolist():
        if len(named) == most:
            break
        named.setdefault((float(x[i]), float(y[i])), names[i])
    for place, name in named.items():
        ax.annotate(
            name, place, xytext=(4, 4), textcoords="offset points", fontsize="small"
        )


def _axes(ax: Axes | None) -> Axes:
    try:
        from matplotlib import pyplot as plt
    except ImportError as e:
        raise ImportError(
            "this needs matplotlib: pip install 'kestro[pictures]'"
        ) from e
    # Else what stands beside the axes is cut off where it is saved.
    return plt.subplots(layout="constrained")[1] if ax is None else ax
