"""Frequent connected subgraphs of labelled graphs.

>>> import kestro
>>> db = kestro.from_edges([["C", "O"]] * 2, [[(0, 1, "=")]] * 2)
>>> result = kestro.mine(db, min_support=2)
>>> result.to_pandas()["id"].tolist()
['1-0']
"""

from kestro._arrow import from_arrow
from kestro._csv import from_csv
from kestro._database import AtomLabels, Graph, GraphDatabase, Skipped
from kestro._edges import from_edges
from kestro._errors import KestroError, StopMining
from kestro._graphml import from_graphml
from kestro._mine import mine
from kestro._molecules import from_rdkit, from_smiles
from kestro._networkx import from_networkx
from kestro._pattern import Pattern
from kestro._picture import Picture
from kestro._progress import Progress
from kestro._read_result import read_result
from kestro._result import Result
from kestro._sdf import from_sdf
from kestro._transactions import read_transactions
from kestro._tu import from_tu


def __getattr__(name: str) -> str:
    # Found out when asked for: it takes longer than the rest of the import.
    if name == "__version__":
        from importlib.metadata import version

        return version("kestro")
    raise AttributeError(f"module 'kestro' has no attribute {name!r}")


__all__ = [
    "AtomLabels",
    "Graph",
    "GraphDatabase",
    "KestroError",
    "Pattern",
    "Picture",
    "Progress",
    "Result",
    "Skipped",
    "StopMining",
    "from_arrow",
    "from_csv",
    "from_edges",
    "from_graphml",
    "from_networkx",
    "from_rdkit",
    "from_sdf",
    "from_smiles",
    "from_tu",
    "mine",
    "read_result",
    "read_transactions",
]
