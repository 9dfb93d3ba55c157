"""Results as tables of Arrow's, by pyarrow."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro._arrow import import_pyarrow
from kestro._patterns import Patterns
from kestro._ragged import places

if TYPE_CHECKING:
    import pandas as pd
    import pyarrow as pa


def table(p: Patterns, chosen: NDArray[np.int64], columns: pd.DataFrame) -> pa.Table:
    """Return the columns, and with them the graphs, TIDs and parents."""
    pa = import_pyarrow()
    found = pa.Table.from_pandas(columns, preserve_index=False)
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
        lists["parents"] = pa.array(parents, pa.list_(pa.string()))
    for name, column in lists.items():
        found = found.append_column(name, column)
    return found.replace_schema_metadata(None)


def _labels(
    offsets: NDArray[np.int64],
    labels: NDArray[np.int32],
    texts: list[str],
    chosen: NDArray[np.int64],
) -> Any:
    """Return the labels as a dictionary: every text once."""
    pa = import_pyarrow()
    where, new = places(offsets, chosen)
    # Arrow's text is UTF-8; what is none is shown as that sign.
    known = [
        x.encode("utf-8", "surrogateescape").decode("utf-8", "replace") for x in texts
    ]
    items = pa.DictionaryArray.from_arrays(labels[where], pa.array(known, pa.string()))
    return pa.LargeListArray.from_arrays(new, items)


def _pairs(
    offsets: NDArray[np.int64], ends: NDArray[np.int32], chosen: NDArray[np.int64]
) -> Any:
    pa = import_pyarrow()
    where, new = places(offsets, chosen)
    pairs = pa.FixedSizeListArray.from_arrays(ends[where].ravel(), 2)
    return pa.LargeListArray.from_arrays(new, pairs)
