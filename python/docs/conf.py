"""How Sphinx builds these pages; python/tests/test_docs.py does, warnings as errors."""

import importlib.metadata

project = "kestro"
release = importlib.metadata.version("kestro")
extensions = ["sphinx.ext.autodoc", "sphinx.ext.viewcode", "numpydoc"]
html_theme = "alabaster"
html_theme_options = {
    "description": "Frequent connected subgraphs of labelled graphs",
    "fixed_sidebar": True,
    "page_width": "1200px",  # room for the tables of the examples
}
html_sidebars = {"**": ["about.html", "navigation.html", "searchbox.html"]}
html_show_sourcelink = False

# A name in single backquotes is one of the package: a page that names what does
# not exist is not built.
default_role = "py:obj"
nitpicky = True
nitpick_ignore_regex = [("py:(class|data)", ".*")]  # types of other packages

autodoc_member_order = "bysource"
autodoc_typehints = "none"  # the docstrings say more
# The pages list members themselves.
numpydoc_show_class_members = False
