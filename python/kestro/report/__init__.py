"""The report on a run: one page of HTML that needs no network.

`Result.report` writes it.  The page holds its data as JSON, a script of ours
that shows them, D3, and, for molecules, RDKit's own build for browsers, which
draws what is not stored and looks for substructures.
"""

from kestro.report._page import page

__all__ = ["page"]
