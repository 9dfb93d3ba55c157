"""The report of a run: head, table and totals, in the pattern file and on
standard output.

The head is written anew from the input and the settings that the head itself
names, and compared line by line.  Of the percentage it shows one digit behind
the point, so unless the support is given, the count has to be that of one of
the percentages shown so.
"""

import dataclasses
import math
import re
from fractions import Fraction

from checker.findings import Findings
from checker.graphs import Graph

STARS = "*" * 55
INT_MAX = 2147483647
# What a setting is begins in column 47; a file name may itself begin with blanks.
SETTING = re.compile(r"  ([A-Z][A-Za-z -]+): +(?<=^.{47})(.*)")
SUPPORT = re.compile(r"(-?[0-9.]+|-?inf|-?nan)% \((\d+) transactions?\)")
ROW = re.compile(r"  (\d+) +(?:(\d+) +)?(\d+) +")


class NoHead(Exception):
    """A report that cannot be told apart; the text says why."""


@dataclasses.dataclass
class Settings:
    """What the head says of the run."""

    input_file: str
    minsize: int
    maxsize: int
    percentage: str  # as shown
    least: int  # min_support_count
    maximal: bool
    pc_list: bool
    tid_list: bool


@dataclasses.dataclass
class Facts:
    """What the input says of itself."""

    graphs: list[Graph]
    vertex_labels: int
    edge_labels: int


def extended(value: Fraction) -> Fraction:
    """The nearest number of 64 significant bits, ties to even: the extended
    precision of x87, whose exponents no support needs to the end."""
    if value == 0:
        return value
    top = abs(value)
    exponent = top.numerator.bit_length() - top.denominator.bit_length()
    if top < Fraction(2) ** exponent:
        exponent -= 1
    unit = Fraction(2) ** (exponent - 63)
    return round(value / unit) * unit  # round() takes ties to even


def support_count(support: float, transactions: int) -> int:
    """Per cent of the transactions, to the nearest whole one, at least 1: each
    step of support / 100 * transactions + 1/2 rounded as extended() does."""
    if math.isnan(support) or support <= 0:
        return 1
    if math.isinf(support):
        return max(1, transactions)
    share = extended(Fraction(support) / 100)
    count = extended(extended(share * transactions) + Fraction(1, 2))
    return max(1, min(transactions, math.floor(count)))


def possible_counts(shown: str, transactions: int) -> tuple[int, int]:
    """The least and the largest count of a percentage that is shown so."""
    value = float(shown)
    if not math.isfinite(value):
        count = support_count(value, transactions)
        return count, count
    return (
        support_count(value - 0.0501, transactions),
        support_count(value + 0.0501, transactions),
    )


def read_settings(head: list[str]) -> Settings:
    found = {}
    for line in head:
        match = SETTING.fullmatch(line)
        if match:
            found[match[1]] = match[2]
    try:
        support = SUPPORT.fullmatch(found["Min Support Threshold"])
        if support is None:
            raise NoHead("the head does not tell the support")
        return Settings(
            found["Transaction File Name"],
            int(found["Min Output Pattern Size"]),
            int(found["Max Output Pattern Size"].removesuffix("(INT_MAX)")),
            support[1],
            int(support[2]),
            found["Generate Only Maximal Patterns"] == "Yes",
            found["Generate PC-List"] == "Yes",
            found["Generate TID-List"] == "Yes",
        )
    except (KeyError, ValueError) as error:
        raise NoHead(f"the head lacks or garbles {error}") from None


def derived_name(file: str, suffix: str) -> str:
    """The name of an output: everything from the last dot on is replaced."""
    dot = file.rfind(".")
    return (file[:dot] if dot > 0 else file) + suffix


def average(total: int, count: int) -> str:
    return f"{total / count:.0f}" if count else "-nan"


def expected_head(settings: Settings, facts: Facts) -> list[str]:
    graphs = facts.graphs
    sizes = [g.size() for g in graphs]
    orders = [len(g.vlabel) for g in graphs]
    yes = {True: "Yes", False: "No"}
    unlimited = "(INT_MAX)" if settings.maxsize == INT_MAX else ""
    plural = "" if settings.least == 1 else "s"
    name = settings.input_file

    def line(title: str, value: object) -> str:
        return f"  {title + ':':45}{value}"

    head = [
        STARS,
        "kestro 1.34 (VESK 1.0)",
        "",
        "Transaction File Information --------------------------",
        line("Transaction File Name", name),
        line("Number of Input Transactions", len(graphs)),
        line("Number of Distinct Edge Labels", facts.edge_labels),
        line("Number of Distinct Vertex Labels", facts.vertex_labels),
        line("Average Number of Edges In a Transaction", average(sum(sizes), len(graphs))),
        line("Average Number of Vertices In a Transaction", average(sum(orders), len(graphs))),
        line("Max Number of Edges In a Transaction", max(sizes, default=0)),
        line("Max Number of Vertices In a Transaction", max(orders, default=0)),
        "",
        "Options -----------------------------------------------",
        line("Min Output Pattern Size", settings.minsize),
        line("Max Output Pattern Size", f"{settings.maxsize}{unlimited}"),
        line(
            "Min Support Threshold",
            f"{settings.percentage}% ({settings.least} transaction{plural})",
        ),
        line("Generate Only Maximal Patterns", yes[settings.maximal]),
        line("Generate PC-List", yes[settings.pc_list]),
        line("Generate TID-List", yes[settings.tid_list]),
        "",
        "Outputs -----------------------------------------------",
        line("Frequent Pattern File", derived_name(name, ".fp")),
    ]
    if settings.pc_list:
        head.append(line("PC-List File", derived_name(name, ".pc")))
    if settings.tid_list:
        head.append(line("TID-List File", derived_name(name, ".tid")))
    return head + [""]


@dataclasses.dataclass
class Expected:
    """What the foot has to say."""

    settings: Settings
    frequent: dict[int, int]  # patterns written, by size
    candidates: dict[int, int] | None  # where the candidate file tells
    largest: int | None  # of all sizes; None where that is not known


def head_length(settings: Settings) -> int:
    return 24 + settings.pc_list + settings.tid_list


def check_head(lines: list[str], expected: list[str], where: str, findings: Findings) -> None:
    for found, wanted in zip(lines, expected):
        if found != wanted:
            findings.add("wrong-header", f"{where}: {found.strip()!r}, not {wanted.strip()!r}")
    if len(lines) < len(expected):
        findings.add("wrong-header", f"{where}: it ends early")


def check_foot(
    lines: list[str], expected: Expected, where: str, live: bool, findings: Findings
) -> None:
    """Table, totals and timing; a live table may leave out an empty last row,
    and its heading where size 1 is not shown."""
    rows: dict[int, tuple[int | None, int]] = {}
    at = 0
    while at < len(lines) and lines[at]:
        match = ROW.fullmatch(lines[at])
        if match:
            candidates = int(match[2]) if match[2] else None
            rows[int(match[1])] = candidates, int(match[3])
        at += 1
    heading = (
        "  Size Frequent Patterns "
        if expected.settings.maximal
        else "  Size Candidates Frequent Patterns "
    )
    headed = bool(rows)
    if live and not expected.settings.maximal:
        headed = expected.settings.minsize < 2 and bool(rows)
    text = [heading] if headed else []
    if lines[:at] != text + [
        row_text(size, row, expected.settings.maximal) for size, row in rows.items()
    ]:
        findings.add("wrong-table", f"{where}: not the form of a table")
    check_rows(rows, expected, where, findings)
    check_totals(lines[at:], rows, expected, where, live, findings)


def row_text(size: int, row: tuple[int | None, int], maximal: bool) -> str:
    candidates, frequent = row
    shown = "" if candidates is None else str(candidates)
    column = "" if maximal else f"{shown:10} "
    return f"  {size:<4d} {column}{frequent:<17d} "


def check_rows(
    rows: dict[int, tuple[int | None, int]], expected: Expected, where: str, findings: Findings
) -> None:
    frequent = expected.frequent
    first = max(1, expected.settings.minsize)
    last = max(frequent, default=first - 1)
    wanted = list(range(first, last + 1))
    extra = last + 1  # all of its candidates may have failed
    failed = extra in rows and rows[extra][1] == 0 and extra <= expected.settings.maxsize
    if failed and rows[extra][0] and not expected.settings.maximal:
        wanted.append(extra)
    if list(rows) != wanted:
        findings.add("wrong-table", f"{where}: has the sizes {list(rows)}, not {wanted}")
    for size, (candidates, found) in rows.items():
        if found != frequent.get(size, 0):
            findings.add(
                "wrong-table",
                f"{where}: {found} patterns of size {size}, not {frequent.get(size, 0)}",
            )
        if expected.settings.maximal:
            continue
        if (candidates is None) != (size < 3):
            findings.add("wrong-table", f"{where}: candidates of size {size}")
        elif candidates is not None:
            generated = (expected.candidates or {}).get(size, 0)
            if candidates < found or (expected.candidates is not None and candidates != generated):
                findings.add("wrong-table", f"{where}: {candidates} candidates of size {size}")


def check_totals(
    lines: list[str],
    rows: dict[int, tuple[int | None, int]],
    expected: Expected,
    where: str,
    live: bool,
    findings: Findings,
) -> None:
    total = sum(expected.frequent.values())
    largest = max(expected.frequent, default=None)
    if largest is None:
        largest = expected.largest
    wanted = ["", f"  Largest Frequent Pattern Size:               {largest}"]
    generated = sum(candidates or 0 for candidates, _ in rows.values())
    if live and not expected.settings.maximal:
        # A level that the bound alone emptied has no live row, but counts.
        shown = [line for line in lines if "Candidates Generated" in line]
        more = int(shown[0].rpartition(" ")[2]) if shown else 0
        if expected.candidates is None:
            generated = max(generated, more)
        else:
            generated = sum(
                count
                for size, count in expected.candidates.items()
                if size >= expected.settings.minsize
            )
    if generated:
        wanted.append(f"  Total Number of Candidates Generated:        {generated}")
    wanted += [
        f"  Total Number of Frequent Patterns Found:     {total}",
        "",
        "Timing Information ------------------------------------",
    ]
    found = lines[: len(wanted)]
    if largest is None and len(found) > 1:
        found[1] = wanted[1]
    for have, want in zip(found, wanted):
        if have != want:
            findings.add("wrong-total", f"{where}: {have.strip()!r}, not {want.strip()!r}")
            return
    rest = lines[len(wanted) :]
    timing = r"  Elapsed User CPU Time:                       \d+\.\d\[sec\]"
    if len(rest) != 2 or not re.fullmatch(timing, rest[0]) or rest[1] != STARS:
        findings.add("wrong-total", f"{where}: it does not end as a report")
