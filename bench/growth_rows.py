"""What the rows of bench/growth show: medians, fits, verdicts and plots.

A verdict is printed with its figure; matplotlib is only loaded to draw.
"""

import math
import statistics
from collections.abc import Callable
from typing import Any, NamedTuple

LEAST_STRAIGHT = 0.98  # coefficient of determination
MOST_PER_PATTERN = 2.0  # times that of a run with fewer patterns
MOST_POWER = 4.0

Rows = list[dict[str, str]]


class Point(NamedTuple):
    """A row of a plot, medians over the runs."""
    x: float
    y: float
    name: str


class Line(NamedTuple):
    """A least squares fit."""
    slope: float
    offset: float
    determination: float  # 1 when all points lie on it


# Medians and fits


def take_medians(rows: Rows, x: Callable[[dict[str, str]], float],
                 y: Callable[[dict[str, str]], float]) -> list[Point]:
    samples: dict[str, list[dict[str, str]]] = {}
    for row in rows:
        samples.setdefault(row["row"], []).append(row)
    return sorted(Point(x(runs[0]), statistics.median(map(y, runs)), name)
                  for name, runs in samples.items())


def fit_line(points: list[tuple[float, float]]) -> Line:
    xs, ys = zip(*points)
    slope, offset = statistics.linear_regression(xs, ys)
    mean = statistics.fmean(ys)
    total = sum((y - mean) ** 2 for y in ys)
    left = sum((y - offset - slope * x) ** 2 for x, y in points)
    return Line(slope, offset, 1 - left / total if total > 0 else 1.0)


def fit_power(points: list[Point]) -> float:
    """The power of x by which y grows in the larger half of the points, of
    which there must be three."""
    middle = statistics.median(point.x for point in points)
    return fit_line([(math.log(point.x), math.log(point.y))
                     for point in points if point.x >= middle]).slope


# Verdicts


def judge(what: str, value: float, good: bool) -> bool:
    print(f"{what}: {value:.3f}" + ("" if good else "  FAILED"), flush=True)
    return good


def select_times(rows: Rows) -> list[Point]:
    return take_medians(rows, lambda row: float(row["transactions"]),
                        lambda row: float(row["cpu_s"]))


def select_peaks(rows: Rows) -> list[Point]:
    return take_medians(rows, lambda row: float(row["transactions"]),
                        lambda row: float(row["peak_kib"]) / 1024)


def select_costs(rows: Rows) -> list[Point]:
    return take_medians(
        rows, lambda row: float(row["patterns"]),
        lambda row: 1e6 * float(row["cpu_s"]) / float(row["patterns"]))


def select_families(rows: Rows) -> dict[str, list[Point]]:
    families: dict[str, Rows] = {}
    for row in rows:
        families.setdefault(row["family"], []).append(row)
    return {family: take_medians(
        own, lambda row: float(row["vertices"]) + float(row["edges"]),
        lambda row: float(row["cpu_ns"]) / 1000)
        for family, own in families.items()}


def judge_transactions(rows: Rows) -> bool:
    good = True
    for what, points in (("CPU time", select_times(rows)),
                         ("peak memory", select_peaks(rows))):
        if len(points) < 3:
            continue
        line = fit_line([(point.x, point.y) for point in points])
        good &= judge(f"{what} against transactions, straightness (R², at "
                      f"least {LEAST_STRAIGHT})", line.determination,
                      line.determination >= LEAST_STRAIGHT)
    return good


def judge_patterns(rows: Rows) -> bool:
    costs = [point.y for point in select_costs(rows)]
    growth = max((later / costs[i] for i in range(len(costs))
                  for later in costs[i + 1:]), default=1.0)
    return judge("CPU time per pattern, largest growth (at most "
                 f"{MOST_PER_PATTERN:g})", growth, growth <= MOST_PER_PATTERN)


def judge_canonical(rows: Rows) -> bool:
    good = True
    for family, points in select_families(rows).items():
        power = fit_power(points)
        good &= judge(f"canonical labelling, {family}, power of the size "
                      f"(at most {MOST_POWER:g})", power, power <= MOST_POWER)
    return good


# Plots


def draw_line(axes: Any, points: list[Point], unit: str) -> None:
    axes.plot([point.x for point in points], [point.y for point in points],
              "o", color="C0", label="measured")
    if len(points) > 1:
        line = fit_line([(point.x, point.y) for point in points])
        axes.plot([0, points[-1].x],
                  [line.offset, line.offset + line.slope * points[-1].x], "--",
                  color="C1",
                  label=f"{1000 * line.slope:.3g} {unit} more per 1,000, "
                  f"R² = {line.determination:.4f}")
    axes.set(xlabel="transactions", xlim=(0, None), ylim=(0, None))
    axes.legend(loc="upper left")


def draw_transactions(rows: Rows, plt: Any) -> Any:
    figure, (left, right) = plt.subplots(1, 2, figsize=(10, 4))
    draw_line(left, select_times(rows), "s")
    left.set(ylabel="CPU time, s")
    draw_line(right, select_peaks(rows), "MiB")
    right.set(ylabel="peak memory, MiB")
    return figure


def draw_patterns(rows: Rows, plt: Any) -> Any:
    points = select_costs(rows)
    figure, axes = plt.subplots(figsize=(6, 4))
    axes.plot([point.x for point in points], [point.y for point in points],
              "o-")
    for point in points:
        axes.annotate("-s " + point.name.partition("-s")[2],
                      (point.x, point.y), xytext=(4, -12),
                      textcoords="offset points")
    axes.margins(x=0.12)
    axes.set(xlabel="patterns", ylabel="CPU time per pattern, µs",
             xscale="log", ylim=(0, None))
    return figure


def draw_canonical(rows: Rows, plt: Any) -> Any:
    figure, axes = plt.subplots(figsize=(7, 5))
    for family, points in select_families(rows).items():
        axes.plot([point.x for point in points],
                  [point.y for point in points], "o-", markersize=3,
                  label=f"{family}: size$^{{{fit_power(points):.1f}}}$")
    axes.set(xlabel="size: vertices and edges", xscale="log", yscale="log",
             ylabel="CPU time of canonical labelling, µs")
    axes.legend()
    return figure


def load_pyplot() -> Any:
    """matplotlib's plotting module, set to write the same bytes each time."""
    import matplotlib
    matplotlib.use("svg")
    matplotlib.rcParams["svg.hashsalt"] = "kestro"
    import matplotlib.pyplot
    return matplotlib.pyplot
