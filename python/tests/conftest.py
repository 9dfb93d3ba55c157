"""What several tests use."""

import gc
import pathlib
import signal

import kestro
import pytest
from hypothesis import settings

# The same cases in every run, however busy the machine is.
settings.register_profile("kestro", deadline=None, derandomize=True)
settings.load_profile("kestro")

# Formaldehyde, acetaldehyde and methanol, hydrogens left out.
THREE = """t # 0
v 0 C
v 1 O
u 0 1 d
t # 1
v 0 C
v 1 C
v 2 O
u 0 1 s
u 1 2 d
t # 2
v 0 C
v 1 O
u 0 1 s
"""


@pytest.fixture(scope="session", autouse=True)
def interruptible():
    """Make Ctrl-C raise; what a script starts in the background ignores it."""
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    yield
    signal.signal(signal.SIGINT, before)


@pytest.fixture
def uncollected():
    """Collect no garbage: Hypothesis is called then, and a signal would end there."""
    gc.disable()
    yield
    gc.enable()


@pytest.fixture
def three_text():
    return THREE


@pytest.fixture
def three():
    return kestro.from_edges(
        [["C", "O"], ["C", "C", "O"], ["C", "O"]],
        [[(0, 1, "d")], [(0, 1, "s"), (1, 2, "d")], [(0, 1, "s")]],
    )


@pytest.fixture(scope="session")
def explosive():
    """Two complete graphs of eleven vertices: mining them takes minutes."""
    edges = [(a, b, "-") for b in range(11) for a in range(b)]
    return kestro.from_edges([list("ABCDEFGHIJK")] * 2, [edges] * 2)


@pytest.fixture(scope="session")
def examples():
    return pathlib.Path(__file__).parents[2] / "examples"


@pytest.fixture(scope="session")
def molecules(examples):
    return kestro.read_transactions(examples / "molecules.txt")
