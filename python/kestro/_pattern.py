"""One pattern of a result."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
from numpy.typing import NDArray

from kestro._arguments import Index
from kestro._atoms import graph_smarts
from kestro._database import Graph, GraphDatabase
from kestro._patterns import UNKNOWN, YES, Patterns
from kestro._picture import Picture, Size

if TYPE_CHECKING:
    import networkx as nx


def _truth(answer: int) -> bool | None:
    return None if answer == UNKNOWN else answer == YES


class Pattern:
    """One pattern of a result, looked at where it lies.

    Patterns of one run are equal when they are the same one.
    """

    __slots__ = ("_all", "_db", "_i")

    def __init__(
        self, patterns: Patterns, i: int, db: GraphDatabase | None = None
    ) -> None:
        self._all = patterns
        self._i = i
        self._db = db

    @property
    def size(self) -> int:
        """Number of edges."""
        return int(self._all.level_sizes[self._all.level_of(self._i)])

    @property
    def id(self) -> str:
        """The program's name of it, such as "3-7": size, number of that size."""
        return self._all.names(np.array([self._i]))[0]

    @property
    def support(self) -> int:
        """Number of graphs that contain it."""
        return int(self._all.support[self._i])

    @property
    def tids(self) -> NDArray[np.int32]:
        """Positions of these graphs in the database, ascending; a view."""
        offsets = self._all.tid_offsets
        return self._all.tids[offsets[self._i] : offsets[self._i + 1]]

    @property
    def graph(self) -> Graph:
        """Its vertices in canonical order, and its edges."""
        p = self._all
        level = p.level_of(self._i)
        size = int(p.level_sizes[level])
        first = int(p.edge_starts[level])
        first += (self._i - int(p.level_starts[level])) * size
        vertices = p.vertex_labels[
            p.vertex_offsets[self._i] : p.vertex_offsets[self._i + 1]
        ]
        return Graph(
            tuple(p.vertex_table[x] for x in vertices.tolist()),
            p.edges[first : first + size],
            tuple(
                p.edge_table[x] for x in p.edge_labels[first : first + size].tolist()
            ),
        )

    def to_smarts(self) -> str:
        """Return the SMARTS of a pattern of molecules.

        It says all that the labels say, no more: element and aromaticity of
        atoms, their charge where the database has it, the kind of each bond.
        So RDKit finds it in the molecules whose numbers are ``tids``; where
        hydrogens are vertices, once ``Chem.AddHs`` has made them atoms.

        Its atoms come in another order than the vertices of ``graph``, which
        `smarts_order` tells.

        Raises
        ------
        ValueError
            When the database is none of molecules, or was not given where the
            result was read from the program's files.
        """
        return self._smarts()[0]

    def smarts_order(self) -> NDArray[np.int64]:
        """Return the vertices in the order of the atoms of the SMARTS.

        So ``result.embeddings(pattern, tid)[:, pattern.smarts_order()]`` are
        the matches that RDKit finds in the molecule, symmetric ones included.

        Returns
        -------
        ndarray of int64, shape (vertices,)

        Raises
        ------
        ValueError
            As `to_smarts` does.
        """
        return np.array(self._smarts()[1], np.int64)

    def _smarts(self) -> tuple[str, list[int]]:
        labels = self._all.summary.atom_labels
        if labels is None:
            # Of what was mined and not read the database tells the counts.
            if self._all.summary.described is None:
                raise ValueError(
                    "the labels of this pattern are not those of atoms: "
                    "the database that was mined is none of molecules"
                )
            raise ValueError(
                "the labels of this pattern are not known to be those of atoms; where "
                "they are, give the database of molecules to read_result"
            )
        return graph_smarts(self.graph, labels)

    def draw(self, size: Size | None = None) -> Picture:
        """Return a picture of it.

        Patterns of molecules are drawn by RDKit, without the hydrogens and
        charges that labels do not tell.  An aromatic bond is a line with a
        dashed one beside it; where none of an aromatic atom's bonds is in the
        pattern, its symbol stands in lower case.  Other patterns are drawn
        with their labels in boxes and along the edges.

        Parameters
        ----------
        size : tuple of int, optional
            Width and height in pixels.  None is 250 x 200 for molecules, and for
            others what they need.

        Raises
        ------
        ImportError
            Without RDKit, for patterns of molecules;
            ``pip install kestro[pictures]`` brings it.
        TypeError, ValueError
            When size is no pair of int, or one is less than 20.

        Examples
        --------
        >>> import kestro
        >>> db = kestro.from_smiles(["CCO", "CO"])
        >>> kestro.mine(db, min_support=2)[0].draw()
        <Picture: Pattern 1-0, in 2 of 2 graphs: [#6&A]-[#8&A], 250 x 200>
        """
        from kestro import _drawing

        return _drawing.draw(self, size)

    def highlight(
        self,
        graph: Graph | nx.Graph | Index | str | Any,
        *,
        embedding: Index = 0,
        size: Size | None = None,
    ) -> Picture:
        """Return a picture of a graph with an embedding of the pattern in it.

        Parameters
        ----------
        graph : Mol, str, Graph, networkx.Graph or int
            For patterns of molecules one of RDKit's, or a SMILES, drawn with all
            that it tells; where hydrogens are vertices, with those that
            ``Chem.AddHs`` adds.  For any pattern a `Graph`, or a position in the
            database that was mined, drawn with what its labels tell; for other
            patterns one of NetworkX's, its labels in the attributes ``label``.
        embedding : int
            Which one, in the order of `Result.embeddings`.
        size : tuple of int, optional
            Width and height in pixels.  None is 350 x 260 for molecules, and for
            others what they need.

        Returns
        -------
        Picture
            Of other graphs than molecules no more than 60 vertices are drawn,
            those nearest to the embedding; the title tells.

        Raises
        ------
        ImportError
            As `draw` does.
        IndexError
            When there is no graph at that position, or no such embedding.
        KestroError
            When the graph does not contain the pattern, or is none.
        TypeError, ValueError
            For another type of graph, and for a position where the result was
            read without its database; as `draw` does for the size.

        Examples
        --------
        >>> import kestro
        >>> result = kestro.mine(kestro.from_smiles(["CCO", "CO"]), min_support=2)
        >>> result[0].highlight("OCCCN")
        <Picture: Pattern 1-0 in OCCCN, 350 x 260>
        """
        from kestro import _drawing

        return _drawing.highlight(self, graph, self._db, embedding, size)

    @property
    def parents(self) -> tuple[str, ...]:
        """The ids of the patterns one edge smaller that it contains.

        Also where those are smaller than ``min_size`` and not in the result.
        """
        p = self._all
        numbers = p.parents[p.parent_offsets[self._i] : p.parent_offsets[self._i + 1]]
        below = self.size - 1
        return tuple(f"{below}-{number}" for number in numbers.tolist())

    @property
    def children(self) -> tuple[str, ...]:
        """The ids of the patterns of the run one edge larger that contain it."""
        offsets, children = self._all.children
        found = children[offsets[self._i] : offsets[self._i + 1]]
        return tuple(self._all.names(found.astype(np.int64)))

    @property
    def closed(self) -> bool | None:
        """Whether no larger pattern of the same support contains it.

        None where larger patterns may exist that the run did not reach.
        """
        return _truth(int(self._all.closed[self._i]))

    @property
    def maximal(self) -> bool | None:
        """Whether no larger pattern contains it; None likewise."""
        return _truth(int(self._all.maximal[self._i]))

    def __eq__(self, other: object) -> bool:
        """Whether it is the same pattern of the same run."""
        if not isinstance(other, Pattern):
            return NotImplemented
        return self._all is other._all and self._i == other._i

    def __hash__(self) -> int:
        """Return a hash of the run and the position."""
        return hash((id(self._all), self._i))

    def __repr__(self) -> str:
        """Return id, support, vertices and edges."""
        g = self.graph
        edges = ", ".join(
            f"{a}-{b} {label}"
            for (a, b), label in zip(g.edges.tolist(), g.edge_labels, strict=True)
        )
        return (
            f"<Pattern {self.id}: support {self.support}, "
            f"{' '.join(g.vertex_labels)}, {edges}>"
        )
