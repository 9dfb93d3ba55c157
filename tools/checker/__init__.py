"""An independent judge of finished runs: what tools/check_run.py is made of.

graphs        labelled graphs, and the reader of transaction files
certificates  isomorphism, by the canonical labelling of igraph
occurrences   which transactions contain a pattern, by the VF2 of igraph
run_files     what a run has written
report        the report's head, table and totals
limits        where the canonical form may depend on the incoming order
growth        the one-edge extensions of patterns, level by level
levels        the patterns of each size: their transactions, and none missing
run_check     a finished run, with all that rests on its levels
plan          the steps of a check, and what is left of them
estimate      what there is to prove, and about how long it takes
progress      how far it is, told on a terminal
"""

import sys

try:
    import igraph  # noqa: F401
except ModuleNotFoundError:
    print(
        f"the checker needs igraph, which {sys.executable} does not have: use "
        "Debian's /usr/bin/python3, after ./scripts/install_packages test",
        file=sys.stderr,
    )
    sys.exit(2)
