"""The pages build without warnings, and what they show is what their code gives."""

import doctest
import importlib
import pkgutil
import re
import subprocess
import sys
from pathlib import Path

import kestro
import kestro.sklearn
import pytest

ROOT = Path(__file__).parents[2]
DOCS = ROOT / "python" / "docs"
README = (ROOT / "README.md").read_text()


@pytest.fixture(autouse=True)
def at_the_root(monkeypatch):
    monkeypatch.chdir(ROOT)


@pytest.mark.parametrize(
    "page", sorted(page.stem for page in DOCS.glob("*.rst") if page.stem != "api")
)
def test_code_of_a_page(page):
    done = doctest.testfile(str(DOCS / f"{page}.rst"), module_relative=False)
    assert done.attempted > 0
    assert done.failed == 0


@pytest.mark.parametrize(
    "name", [m.name for m in pkgutil.iter_modules(kestro.__path__) if m.name != "_core"]
)
def test_examples_of_docstrings(name):
    module = importlib.import_module(f"kestro.{name}")
    assert doctest.testmod(module).failed == 0


def test_examples_of_the_package():
    done = doctest.testmod(kestro)
    assert done.attempted > 0
    assert done.failed == 0


def test_the_five_lines_of_the_readme():
    code, printed = (block(after) for after in ("## In Python\n", "It prints\n"))
    assert code.count("\n") == 5
    assert code == (ROOT / "examples" / "fragments.py").read_text()
    done = subprocess.run(
        [sys.executable, "-c", code], check=True, capture_output=True, text=True
    )
    assert done.stdout == printed


def block(after):
    """Return the first indented block of the README behind these words."""
    text = README[README.index(after) + len(after) :]
    lines = re.search(r"(?:^    .*\n)+", text, re.MULTILINE)[0].splitlines()
    return "".join(line[4:] + "\n" for line in lines)


def test_pages_build_without_warnings(tmp_path):
    done = subprocess.run(
        [
            *(sys.executable, "-m", "sphinx", "-W", "--keep-going", "-q"),
            *("-b", "html", "-d", str(tmp_path / "trees")),
            *(str(DOCS), str(tmp_path / "html")),
        ],
        capture_output=True,
        text=True,
    )
    assert done.returncode == 0, done.stderr
    page = (tmp_path / "html" / "api.html").read_text()
    for name in kestro.__all__:
        assert f'id="kestro.{name}"' in page
    for name in kestro.sklearn.__all__:
        assert f'id="kestro.sklearn.{name}"' in page
