"""The notebooks of examples/ run from top to bottom, and end with what they say.

They run in a kernel of the interpreter that runs the tests, which may open no
connection but to this machine.
"""

import csv
import json
import os
import shutil
import subprocess
import sys

import nbformat
import pytest
from nbclient import NotebookClient
from rdkit import Chem

NAMES = ["molecules", "graphs"]
KERNEL = "kestro-tests"
# In front of the notebook: what leaves the machine raises.
GUARD = """
import sys
def _guard(event, args):
    if event == "socket.connect" and isinstance(args[1], tuple):
        if args[1][0] not in ("127.0.0.1", "::1", "localhost"):
            raise OSError(f"a notebook wants {args[1]}")
    if event == "socket.getaddrinfo" and args[0] not in ("127.0.0.1", "localhost"):
        raise OSError(f"a notebook asks for {args[0]}")
sys.addaudithook(_guard)
"""
# Behind it: what ran it, and what some of its names stand for.
SEEN = """
import json as _json
import kestro as _kestro
print(_json.dumps([sys.executable, _kestro.__file__]))
if "folds_table" in globals():
    print(folds_table.to_json())
"""


@pytest.fixture(scope="module")
def kernel(tmp_path_factory):
    """A kernel of this interpreter, found before any other, and by no other name."""
    folder = tmp_path_factory.mktemp("jupyter")
    spec = folder / "kernels" / KERNEL
    spec.mkdir(parents=True)
    argv = [sys.executable, "-m", "ipykernel_launcher", "-f", "{connection_file}"]
    told = {"argv": argv, "display_name": KERNEL, "language": "python"}
    (spec / "kernel.json").write_text(json.dumps(told))
    with pytest.MonkeyPatch.context() as patch:
        patch.setenv("JUPYTER_PATH", str(folder))
        patch.setenv("JUPYTER_RUNTIME_DIR", str(folder / "runtime"))
        patch.setenv("IPYTHONDIR", str(folder / "ipython"))
        patch.setenv("MPLCONFIGDIR", str(folder / "matplotlib"))
        patch.setenv("PYTHONPATH", os.pathsep.join(x for x in sys.path if x))
        yield KERNEL


@pytest.fixture(scope="module")
def run(kernel, examples):
    """Return the notebooks, executed, by name."""
    done = {}
    for name in NAMES:
        notebook = nbformat.read(examples / f"{name}.ipynb", as_version=4)
        cells = notebook.cells
        cells.insert(0, nbformat.v4.new_code_cell(GUARD))
        cells.append(nbformat.v4.new_code_cell(SEEN))
        NotebookClient(
            notebook,
            timeout=300,
            kernel_name=kernel,
            resources={"metadata": {"path": str(examples)}},
        ).execute()
        done[name] = notebook
    return done


def printed(cell):
    return "".join(x.get("text", "") for x in cell.outputs)


def shown(notebook, kind):
    """Return what the cells show of a MIME type."""
    return [
        output.data[kind]
        for cell in notebook.cells
        if cell.cell_type == "code"
        for output in cell.outputs
        if kind in output.get("data", {})
    ]


@pytest.mark.parametrize("name", NAMES)
def test_it_runs_in_this_interpreter_with_this_package(name, run):
    import kestro

    executable, package = json.loads(printed(run[name].cells[-1]).splitlines()[0])
    assert executable == sys.executable
    assert os.path.samefile(package, kestro.__file__)


def test_models_are_as_good_as_the_text_says(run):
    told = json.loads(printed(run["molecules"].cells[-1]).splitlines()[1])
    assert list(told) == ["all fragments", "the best 100", "Morgan"]
    assert all(list(column) == [*"01234", "mean"] for column in told.values())
    mean = {name: column["mean"] for name, column in told.items()}
    assert all(abs(mean[name] - 0.9) < 0.015 for name in ("all fragments", "Morgan"))
    assert 0.8 < mean["the best 100"] < mean["all fragments"] - 0.01


@pytest.mark.parametrize("name", NAMES)
def test_nothing_is_said_on_standard_error(name, run):
    said = [
        output.text
        for cell in run[name].cells
        if cell.cell_type == "code"
        for output in cell.outputs
        if output.get("name") == "stderr"
    ]
    assert said == []


@pytest.mark.parametrize(
    ("name", "pictures", "plots"), [("molecules", 7, 2), ("graphs", 4, 2)]
)
def test_pictures_and_plots_are_shown(name, pictures, plots, run):
    assert len(shown(run[name], "image/svg+xml")) == pictures
    assert len(shown(run[name], "image/png")) == plots


@pytest.mark.parametrize("name", NAMES)
def test_it_is_kept_without_outputs(name, examples):
    notebook = nbformat.read(examples / f"{name}.ipynb", as_version=4)
    nbformat.validate(notebook)
    assert notebook.cells[0].source.startswith("# ")
    for cell in notebook.cells:
        if cell.cell_type == "code":
            assert cell.outputs == [] and cell.execution_count is None


def test_the_molecules_are_what_their_script_writes(examples, tmp_path):
    shutil.copy(examples / "make_classes.py", tmp_path)
    subprocess.run([sys.executable, tmp_path / "make_classes.py"], check=True)
    written = (tmp_path / "classes.csv").read_bytes()
    assert written == (examples / "classes.csv").read_bytes()


def test_one_of_ten_molecules_breaks_the_rule(examples):
    """The rule, said in SMARTS."""
    sulfonamide = Chem.MolFromSmarts("cS(=O)(=O)[NH]")
    free = Chem.MolFromSmarts("c[NH2,OH]")
    amide = Chem.MolFromSmarts("[$(cC(=O)N),$(cNC(=O)N)]")
    with open(examples / "classes.csv", newline="") as f:
        rows = [
            (Chem.MolFromSmiles(x["smiles"]), int(x["active"]))
            for x in csv.DictReader(f)
        ]
    assert len({Chem.MolToSmiles(molecule) for molecule, _ in rows}) == len(rows) == 400
    wrong = [0, 0]
    for molecule, active in rows:
        rule = molecule.HasSubstructMatch(sulfonamide) or (
            molecule.HasSubstructMatch(free) and molecule.HasSubstructMatch(amide)
        )
        wrong[active] += rule != active
    assert wrong == [20, 20]
