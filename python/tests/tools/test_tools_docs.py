"""What the README and the page of the command show is what is printed."""

import doctest
import importlib
import os
import pkgutil
import re
import shutil
import subprocess
import sys
from pathlib import Path

import kestro.tools
import pytest

ROOT = Path(__file__).parents[3]


@pytest.fixture
def shell(tmp_path):
    """Return what runs a line in a folder with the examples."""
    command = tmp_path / "bin" / "kestro-tools"
    command.parent.mkdir()
    command.write_text(f'#!/bin/sh\nexec {sys.executable} -m kestro.tools "$@"\n')
    command.chmod(0o755)
    shutil.copytree(ROOT / "examples", tmp_path / "examples")
    path = f"{command.parent}:{os.environ['PATH']}"
    package = str(Path(kestro.__file__).parents[1])

    def run(line, folder):
        done = subprocess.run(
            line,
            shell=True,
            cwd=tmp_path / folder,
            env={**os.environ, "PATH": path, "PYTHONPATH": package, "LC_ALL": "C"},
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        return done.stdout.decode()

    return run


@pytest.mark.parametrize(
    ("page", "folder", "least"),
    [("README.md", "", 1), ("python/docs/tools.rst", "examples", 6)],
)
def test_what_is_shown(page, folder, least, shell):
    text = (ROOT / page).read_text()
    starts = r"^ {3,4}\$ (kestro-tools|printf|ls|cat|grep) .*\n"
    first = [m.start() for m in re.finditer(starts, text, re.MULTILINE)]
    assert len(first) >= least
    for start in first:
        indent = re.match(" +", text[start:])[0]
        line, *shown = text[start:].split("\n")
        expected = []
        for own in shown:
            if not own.startswith(indent) or own.startswith(f"{indent}$ "):
                break
            expected.append(own.removeprefix(indent))
        printed = shell(line.removeprefix(f"{indent}$ "), folder)
        assert printed.splitlines() == expected


@pytest.mark.parametrize(
    "name", [m.name for m in pkgutil.iter_modules(kestro.tools.__path__)]
)
def test_examples_of_docstrings(name, monkeypatch):
    monkeypatch.chdir(ROOT)
    module = importlib.import_module(f"kestro.tools.{name}")
    assert doctest.testmod(module).failed == 0


def test_the_page_is_in_the_index():
    assert "\n   tools\n" in (ROOT / "python" / "docs" / "index.rst").read_text()
