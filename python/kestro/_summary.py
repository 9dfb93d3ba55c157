"""What is known of a run beside its patterns."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import asdict, dataclass, fields
from typing import Any, Literal, NamedTuple, cast, get_args

from kestro._database import AtomLabels, GraphDatabase
from kestro._errors import KestroError

Form = Literal["exact", "command-line"]
Ending = Literal[
    "complete", "max_size", "max_patterns", "time_limit", "interrupt", "progress"
]
# What ends a run before it has found everything that was asked for.
STOPPED: tuple[Ending, ...] = ("max_patterns", "time_limit", "interrupt", "progress")
# Which patterns of the run there are: all that were found, those that the filter
# for maximal ones lets pass, or some others.
Holds = Literal["all", "maximal", "some"]
# Filters by which patterns were chosen.
Filter = Literal["maximal", "closed"]


class Described(NamedTuple):
    """What the head of a pattern file tells of the graphs, as it is written."""

    edge_labels: str
    vertex_labels: str
    average_edges: str
    average_vertices: str
    max_edges: str
    max_vertices: str


@dataclass(frozen=True)
class RunSummary:
    """What is known of a run, and which of its patterns there are."""

    form: Form
    graphs: int  # that were mined
    min_support: int  # graphs
    per_cent: float  # the same, as the command line takes it
    min_size: int  # edges
    max_size: int | None
    ending: Ending
    last_size: int  # edges
    order_dependent: int | None  # None where it is unknown
    candidates: tuple[int, ...]  # by size, from 0 on
    frequent: tuple[int, ...]  # likewise
    seconds: float  # of the processor
    atom_labels: AtomLabels | None = None  # None where nothing says that there are
    described: Described | None = None  # None where the database tells it
    holds: Holds = "all"
    filters: tuple[Filter, ...] = ()  # of what was written; runs hold all

    def __post_init__(self) -> None:
        """Refuse numbers of graphs that TIDs of 32 bits cannot count."""
        if not 0 <= self.graphs < 2**31:
            raise KestroError(f"there cannot have been {self.graphs} graphs")

    @property
    def stopped_by(self) -> str | None:
        """What ended the run early, None if nothing did."""
        return self.ending if self.ending in STOPPED else None

    def to_json(self) -> dict[str, Any]:
        """Return the fields as JSON takes them."""
        told = asdict(self)
        for name in ("atom_labels", "described"):
            value = getattr(self, name)
            told[name] = None if value is None else value._asdict()
        return told

    @classmethod
    def from_json(cls, told: dict[str, Any]) -> RunSummary:
        """Return what `to_json` made.

        Raises
        ------
        KestroError
            When a field is missing, or is not what it should be.
        """
        values: dict[str, Any] = {}
        for field in fields(cls):
            if field.name not in told:
                raise KestroError(f"the first line lacks {field.name!r}")
            value = told[field.name]
            if not _CHECKS[field.name](value):
                raise KestroError(
                    f"the first line has a wrong {field.name!r}: {value!r:.60}"
                )
            values[field.name] = tuple(value) if isinstance(value, list) else value
        for name, kind in (("atom_labels", AtomLabels), ("described", Described)):
            if values[name] is not None:
                values[name] = kind(**values[name])
        summary = cls(**values)
        sizes = len(summary.frequent)
        if len(summary.candidates) != sizes or 0 < sizes <= summary.last_size:
            raise KestroError("the first line's counts are not those of its sizes")
        return summary


def describe(db: GraphDatabase) -> Described:
    """Return what the head of a pattern file tells of these graphs."""
    packed = db._native.to_arrays()
    average = {}
    for name in ("edge_counts", "vertex_counts"):
        average[name] = (
            f"{int(packed[name].sum()) / len(db):.0f}" if len(db) else "-nan"
        )
    return Described(
        edge_labels=str(len(packed["edge_table"])),
        vertex_labels=str(len(packed["vertex_table"])),
        average_edges=average["edge_counts"],
        average_vertices=average["vertex_counts"],
        max_edges=str(int(packed["edge_counts"].max(initial=0))),
        max_vertices=str(int(packed["vertex_counts"].max(initial=0))),
    )


def check_atom_labels(mined: AtomLabels | None, other: AtomLabels | None) -> None:
    """Raise when labels of both are known, and mean something else.

    Files of graphs do not tell what their labels mean; they may be molecules.
    """
    if mined is None or other is None or mined == other:
        return
    told = [
        f"{name}={getattr(mined, name)}, not {getattr(other, name)}"
        for name in AtomLabels._fields
        if getattr(mined, name) != getattr(other, name)
    ]
    raise KestroError(f"the patterns are of molecules read with {'; '.join(told)}")


def _is_whole(value: object) -> bool:
    return type(value) is int


def _is_count(value: object) -> bool:
    return type(value) is int and 0 <= value < 2**63


def _is_number(value: object) -> bool:
    return type(value) in (int, float) and cast(float, value) >= 0


def _is_one_of(choices: Any) -> Callable[[object], bool]:
    return lambda value: isinstance(value, str) and value in get_args(choices)


def _is_list_of(check: Callable[[object], bool]) -> Callable[[object], bool]:
    return lambda value: isinstance(value, list) and all(map(check, value))


def _or_none(check: Callable[[object], bool]) -> Callable[[object], bool]:
    return lambda value: value is None or check(value)


def _has_fields(kind: Any, of: type) -> Callable[[object], bool]:
    """Return whether a value has the fields of a tuple, all of a type."""
    return lambda value: (
        isinstance(value, dict)
        and value.keys() == set(kind._fields)
        and all(type(x) is of for x in value.values())
    )


_CHECKS: dict[str, Callable[[object], bool]] = {
    "form": _is_one_of(Form),
    "graphs": _is_count,
    "min_support": _is_count,
    "per_cent": _is_number,
    "min_size": _is_whole,  # the program writes negative ones as they are
    "max_size": _or_none(_is_whole),
    "ending": _is_one_of(Ending),
    "last_size": _is_count,
    "order_dependent": _or_none(_is_count),
    "candidates": _is_list_of(_is_count),
    "frequent": _is_list_of(_is_count),
    "seconds": _is_number,
    "atom_labels": _or_none(_has_fields(AtomLabels, bool)),
    "described": _or_none(_has_fields(Described, str)),
    "holds": _is_one_of(Holds),
    "filters": _is_list_of(_is_one_of(Filter)),
}
