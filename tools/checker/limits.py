"""Where the program's canonical form may depend on the incoming order.

docs/design.md tells of the known limit: on some very symmetric graphs the form
of one graph can differ with the order in which its vertices came, so that two
patterns of one isomorphism class are listed, or a frequent pattern above them is
missing.  The test below is necessary for that, not sufficient: it fails, and
then the limit is no excuse, for

- graphs whose coarsest equitable partition has no cell of several vertices, or
  none as large as the stabilizer threshold: all arrangements are tried there;
- trees, single rings, and complete graphs with one label each of both kinds,
  whose cells are orbits at every step of the search.
"""

from checker.graphs import Graph


def form_may_vary(g: Graph, threshold: int) -> bool:
    """Whether the form of this connected graph may depend on its order."""
    n, size = len(g.vlabel), g.size()
    if size < n or all(len(near) == 2 for near in g.adj):
        return False
    if is_complete_of_one_label(g):
        return False
    largest = largest_cell(g)
    return largest > 1 and largest >= threshold


def is_complete_of_one_label(g: Graph) -> bool:
    n = len(g.vlabel)
    return (
        g.size() == n * (n - 1) // 2
        and len(set(g.vlabel)) == 1
        and len({label for _, _, label in g.edges()}) == 1
    )


def largest_cell(g: Graph) -> int:
    """The size of the largest cell of the coarsest equitable partition."""
    cell = list(g.vlabel)
    count = len(set(cell))
    while True:
        seen: dict[tuple, int] = {}
        keys = [
            (cell[u], tuple(sorted((label, cell[w]) for w, label in near.items())))
            for u, near in enumerate(g.adj)
        ]
        cell = [seen.setdefault(key, len(seen)) for key in keys]
        if len(seen) == count:
            return max(map(cell.count, range(count)))
        count = len(seen)
