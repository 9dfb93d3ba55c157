"""Results as tables: of pandas, and of Arrow by pyarrow."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro._arrow import import_pyarrow
from kestro._pattern import Pattern
from kestro._patterns import UNKNOWN, YES, Patterns
from kestro._ragged import places

if TYPE_CHECKING:
    import pandas as pd
    import pyarrow as pa


def frame(p: Patterns, chosen: NDArray[np.int64]) -> pd.DataFrame:
    """Return a row per pattern; see ``Result.to_pandas``."""
    import pandas as pd

    sizes = p.sizes(chosen)
    support = p.support[chosen]
    columns: dict[str, Any] = {
        "size": sizes,
        # Text has a type of its own also where there is none.
        "id": pd.Series(p.names(chosen), dtype=str),
        "support": support,
        "fraction": support / max(1, p.summary.graphs),
        "vertices": np.diff(p.vertex_offsets)[chosen],
        "edges": sizes,
    }
    if p.summary.atom_labels is not None:
        smarts = [Pattern(p, i).to_smarts() for i in chosen.tolist()]
        columns["smarts"] = pd.Series(smarts, dtype=str)
    columns["closed"] = _nullable(p.closed[chosen])
    columns["maximal"] = _nullable(p.maximal[chosen])
    return pd.DataFrame(columns)


def _nullable(answers: NDArray[np.uint8]) -> Any:
    import pandas as pd

    return pd.array(
        pd.arrays.BooleanArray(answers == YES, answers == UNKNOWN), dtype="boolean"
    )


def table(p: Patterns, chosen: NDArray[np.int64]) -> pa.Table:
    """Return the same columns, and with them the graphs, TIDs and parents."""
    pa = import_pyarrow()
    columns = frame(p, chosen)
    text = pa.string()
    types = {
        "size": pa.int32(),
        "id": text,
        "support": pa.int32(),
        "fraction": pa.float64(),
        "vertices": pa.int64(),
        "edges": pa.int32(),
        "smarts": text,
        "closed": pa.bool_(),
        "maximal": pa.bool_(),
    }
    schema = pa.schema([(name, types[name]) for name in columns.columns])
    found = pa.Table.from_pandas(columns, schema, preserve_index=False)
    lists: dict[str, Any] = {
        "vertex_labels": _labels(
            p.vertex_offsets, p.vertex_labels, p.vertex_table, chosen
        ),
        "ends": _pairs(p.edge_offsets, p.edges, chosen),
        "edge_labels": _labels(p.edge_offsets, p.edge_labels, p.edge_table, chosen),
    }
    if p.has_tids:
        where, offsets = places(p.tid_offsets, chosen)
        lists["tids"] = pa.LargeListArray.from_arrays(offsets, p.tids[where])
    if p.has_parents:
        parents = list(p.parent_names(chosen))
        lists["parents"] = pa.array(parents, pa.list_(text))
    for name, column in lists.items():
        found = found.append_column(name, column)
    return found.replace_schema_metadata(None)


def _labels(
    offsets: NDArray[np.int64],
    labels: NDArray[np.int32],
    texts: list[str],
    chosen: NDArray[np.int64],
) -> Any:
    """Return the labels as a dictionary: every text once.

    Binary where one of them is no UTF-8, as in tables of databases.
    """
    pa = import_pyarrow()
    where, new = places(offsets, chosen)
    known = pa.array([x.encode("utf-8", "surrogateescape") for x in texts], pa.binary())
    try:
        known = known.cast(pa.string())
    except pa.ArrowInvalid:
        pass
    items = pa.DictionaryArray.from_arrays(labels[where], known)
    return pa.LargeListArray.from_arrays(new, items)


def _pairs(
    offsets: NDArray[np.int64], ends: NDArray[np.int32], chosen: NDArray[np.int64]
) -> Any:
    pa = import_pyarrow()
    where, new = places(offsets, chosen)
    pairs = pa.FixedSizeListArray.from_arrays(ends[where].ravel(), 2)
    return pa.LargeListArray.from_arrays(new, pairs)
