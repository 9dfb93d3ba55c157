"""What stands in a folder where the files of a TU data set are to be written.

Nothing is deleted, and only what `convert` wrote is written over, which its README
tells: of all else nobody knows whose it is.
"""

from __future__ import annotations

from pathlib import Path

from kestro._files import plain_name

README = "README.txt"
VERTICES = "Labels of vertices:"
EDGES = "Labels of edges:"
_KINDS = (
    "A",
    "graph_indicator",
    "graph_labels",
    "graph_attributes",
    "node_labels",
    "node_attributes",
    "edge_labels",
    "edge_attributes",
)


def in_the_way(folder: Path, name: str, written: set[Path]) -> list[str]:
    """Return the names of files that keep a data set from being written.

    Parameters
    ----------
    folder : path
        Which is there.
    name : str
        Of the data set.
    written : set of path
        The files of it, the README among them.

    Returns
    -------
    list of str
        Other files of that data set, with which it would be read; the edges of
        another one, as a folder holds one; and, unless `convert` wrote the
        README, those that would be written over.

    Raises
    ------
    OSError
        When the folder or its README cannot be read.
    """
    own = {f"{name}_{kind}.txt" for kind in _KINDS}
    is_ours = _is_ours(folder / README)
    return sorted(
        path.name
        for path in folder.iterdir()
        if (
            not is_ours
            if path in written
            else plain_name(path.name) in own
            or plain_name(path.name).endswith("_A.txt")
        )
    )


def _is_ours(readme: Path) -> bool:
    if not readme.is_file():
        return False
    lines = readme.read_text("utf-8", "surrogateescape").split("\n")
    return lines[0] == VERTICES and EDGES in lines
