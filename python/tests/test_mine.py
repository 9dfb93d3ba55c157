"""Mining: what is found, what is refused, how a run ends early."""

import contextlib
import os
import pickle
import signal
import subprocess
import sys
import termios
import threading
import time
from collections import Counter

import kestro
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st


def table(result):
    """Support, vertex labels and edges of all patterns."""
    return sorted(
        (
            p.support,
            p.graph.vertex_labels,
            p.graph.edge_labels,
            p.graph.edges.tolist(),
        )
        for p in result
    )


def test_three_molecules(three):
    result = kestro.mine(three, min_support=1)
    found = {
        (tuple(sorted(p.graph.vertex_labels)), tuple(sorted(p.graph.edge_labels))): (
            p.support,
            p.tids.tolist(),
        )
        for p in result
    }
    assert found == {
        (("C", "O"), ("d",)): (2, [0, 1]),
        (("C", "O"), ("s",)): (1, [2]),
        (("C", "C"), ("s",)): (1, [1]),
        (("C", "C", "O"), ("d", "s")): (1, [1]),
    }
    assert result.complete and result.stopped_by is None
    assert result.min_support == 1


def test_the_larger_pattern_of_three_molecules(three):
    result = kestro.mine(three, min_support=1)
    chain = result["2-0"]
    assert (chain.size, chain.id, chain.support) == (2, "2-0", 1)
    assert chain.children == ()
    parents = [result[name].graph.edge_labels for name in chain.parents]
    assert sorted(parents) == [("d",), ("s",)]
    for name in chain.parents:
        assert result[name].children == ("2-0",)
    degree = Counter(np.ravel(chain.graph.edges).tolist())
    middle = max(degree, key=degree.get)
    assert chain.graph.vertex_labels[middle] == "C"


def test_closed_and_maximal(three):
    result = kestro.mine(three, min_support=1)
    flags = {
        (p.graph.vertex_labels, p.graph.edge_labels): (p.closed, p.maximal)
        for p in result
        if p.size == 1
    }
    assert flags == {
        (("C", "O"), ("d",)): (True, False),  # in two graphs, the chain in one
        (("C", "O"), ("s",)): (True, True),
        (("C", "C"), ("s",)): (False, False),
    }
    assert (result["2-0"].closed, result["2-0"].maximal) == (True, True)
    maximal = kestro.mine(three, min_support=1, maximal=True)
    assert sorted(p.id for p in maximal) == sorted(p.id for p in result if p.maximal)
    closed = kestro.mine(three, min_support=1, closed=True)
    assert sorted(p.id for p in closed) == sorted(p.id for p in result if p.closed)
    assert (len(maximal), len(closed)) == (2, 3)
    assert maximal.undecided == closed.undecided == 0


def test_flags_are_unknown_in_the_last_level_of_a_bounded_run(three):
    result = kestro.mine(three, min_support=1, max_size=1)
    assert [p.maximal for p in result] == [None] * 3
    assert [p.closed for p in result] == [None] * 3
    assert result.to_pandas()["closed"].isna().all()
    maximal = kestro.mine(three, min_support=1, max_size=1, maximal=True)
    assert len(maximal) == maximal.undecided == 3
    assert "3 of them undecided" in repr(maximal)
    assert result.complete


def test_the_command_line_takes_the_last_level_for_maximal(three):
    result = kestro.mine(
        three, min_support=1, max_size=1, maximal=True, form="command-line"
    )
    assert [p.maximal for p in result] == [True] * 3
    assert result.undecided == 0


def test_sizes(three):
    assert [p.id for p in kestro.mine(three, min_support=1, min_size=2)] == ["2-0"]
    assert kestro.mine(three, min_support=1, max_size=1).size.tolist() == [1, 1, 1]
    parents = kestro.mine(three, min_support=1, min_size=2)["2-0"].parents
    assert len(parents) == 2  # named, though they are not in the result


def test_one_graph_and_none():
    one = kestro.from_edges([["A", "B", "C"]], [[(0, 1, "x"), (1, 2, "x")]])
    assert len(kestro.mine(one, min_support="100%")) == 3
    empty = kestro.from_edges([], [])
    result = kestro.mine(empty, min_support=1)
    assert (len(empty), len(result), result.complete) == (0, 0, True)
    assert result.incidence().shape == (0, 0)
    assert len(result.to_pandas()) == 0


def test_graphs_without_an_edge_count():
    db = kestro.from_edges([["A", "B"], ["A"], []], [[(0, 1, "x")], [], []])
    assert kestro.mine(db, min_support=1).to_pandas()["fraction"].tolist() == [1 / 3]


@pytest.mark.parametrize(
    ("min_support", "graphs"),
    [
        (1, 1),
        (np.int64(2), 2),
        (7, 7),
        (1.0, 3),
        (0.5, 2),  # 1.5 is rounded up
        (np.float32(0.1), 1),
        ("100%", 3),
        (" 50 % ", 2),
        ("0%", 1),
        (".5%", 1),
    ],
)
def test_kinds_of_minimum_support(three, min_support, graphs):
    assert kestro.mine(three, min_support=min_support).min_support == graphs


@pytest.mark.parametrize(
    "min_support", [True, False, np.True_, None, [1], 1j, b"5%", object()]
)
def test_minimum_supports_of_a_wrong_type(three, min_support):
    with pytest.raises(TypeError, match="min_support"):
        kestro.mine(three, min_support=min_support)


@pytest.mark.parametrize(
    "min_support",
    [
        0,
        -1,
        2**31,
        0.0,
        1.5,
        -0.1,
        float("nan"),
        float("inf"),
        "5",
        "x%",
        "101%",
        "-5%",
    ],
)
def test_minimum_supports_out_of_range(three, min_support):
    with pytest.raises(ValueError, match="min_support"):
        kestro.mine(three, min_support=min_support)


@given(st.floats(min_value=0, max_value=1, exclude_min=True), st.integers(1, 40))
def test_a_fraction_is_rounded_to_the_nearest_number_of_graphs(share, n):
    db = kestro.from_edges([["A"]] * n, [[]] * n)
    graphs = kestro.mine(db, min_support=share).min_support
    assert 1 <= graphs <= n
    assert graphs == 1 or abs(graphs - share * n) <= 0.5 + 1e-9


@pytest.mark.parametrize(
    ("argument", "error"),
    [
        ({"n_jobs": 0}, ValueError),
        ({"n_jobs": -2}, ValueError),
        ({"n_jobs": True}, TypeError),
        ({"n_jobs": 1.0}, TypeError),
        ({"min_size": -1}, ValueError),
        ({"min_size": 3, "max_size": 2}, ValueError),
        ({"max_size": "3"}, TypeError),
        ({"time_limit": -1}, ValueError),
        ({"time_limit": float("nan")}, ValueError),
        ({"time_limit": float("inf")}, ValueError),
        ({"closed": "yes"}, TypeError),
        ({"maximal": 1}, TypeError),
        ({"maximal": None}, TypeError),
        ({"time_limit": "1"}, TypeError),
        ({"max_patterns": -1}, ValueError),
        ({"form": "other"}, ValueError),
        ({"progress": 3}, TypeError),
    ],
)
def test_arguments_that_make_no_sense(three, argument, error):
    with pytest.raises(error, match=next(iter(argument)) + "|max_size"):
        kestro.mine(three, min_support=1, **argument)
    with pytest.raises(TypeError, match="GraphDatabase"):
        kestro.mine([three], min_support=1)


@pytest.mark.parametrize("n_jobs", [1, 2, -1])
def test_jobs_change_nothing(n_jobs, molecules):
    alone = kestro.mine(molecules, min_support="5%")
    several = kestro.mine(molecules, min_support="5%", n_jobs=n_jobs)
    assert len(alone) > 500
    assert table(several) == table(alone)


def test_the_order_of_vertices_changes_nothing(molecules):
    forward = list(molecules)
    backward = kestro.from_edges(
        [g.vertex_labels[::-1] for g in forward],
        [len(g.vertex_labels) - 1 - g.edges for g in forward],
        [g.edge_labels for g in forward],
    )
    assert table(kestro.mine(backward, min_support=6)) == table(
        kestro.mine(molecules, min_support=6)
    )


def test_a_time_limit_keeps_complete_sizes(explosive):
    result = kestro.mine(explosive, min_support=2, time_limit=0.3)
    assert result.stopped_by == "time_limit" and not result.complete
    assert len(result) > 0 and result[0].tids.tolist() == [0, 1]
    assert result[-1].maximal is None


def test_a_limit_of_patterns_keeps_the_size_that_passes_it(explosive):
    result = kestro.mine(explosive, min_support=2, max_patterns=55)
    # 55 edges do not pass the limit; 11 * C(10, 2) paths of two edges do.
    assert len(result) == 55 + 495
    assert result.stopped_by == "max_patterns"


class WrongError(Exception):
    pass


def test_an_exception_of_the_callback_comes_out_with_what_was_found(explosive):
    raised = []

    def callback(now):
        if now.size >= 3:
            raised.append(now.size)
            raise WrongError("here")

    with pytest.raises(WrongError, match="here") as caught:
        kestro.mine(explosive, min_support=2, progress=callback)
    assert len(raised) == 1
    result = caught.value.result
    assert result.stopped_by == "progress"
    assert len(result) >= 55 + 495


def test_a_callback_may_ask_for_the_end(explosive):
    def callback(now):
        raise kestro.StopMining

    result = kestro.mine(explosive, min_support=2, progress=callback)
    assert result.stopped_by == "progress"


def test_a_callback_that_asks_for_the_end_at_the_end(three):
    """All is found by then: nothing was stopped."""
    told = []
    expected = table(kestro.mine(three, min_support=1, progress=told.append))

    def callback(now):
        if now == told[-1]:
            raise kestro.StopMining

    result = kestro.mine(three, min_support=1, progress=callback)
    assert table(result) == expected
    assert result.complete and result.stopped_by is None


def test_no_size_is_a_size_of_one(three):
    none, one = (kestro.mine(three, min_support=1, min_size=m) for m in (0, 1))
    assert table(none) == table(one)


@pytest.mark.usefixtures("uncollected")
@pytest.mark.parametrize("seconds", [0.0, 0.03, 0.3])
def test_ctrl_c_keeps_what_was_found(explosive, seconds):
    def send():
        os.kill(os.getpid(), signal.SIGINT)

    def start_timer(now):
        if now[:2] == (1, "complete"):  # the run is under way
            threading.Timer(seconds, send).start()

    with pytest.warns(RuntimeWarning, match="interrupted"):
        result = kestro.mine(explosive, min_support=2, progress=start_timer)
    assert result.stopped_by == "interrupt"
    assert len(result) >= 55
    again = kestro.mine(explosive, min_support=2, max_size=2)
    assert again.complete and len(again) == 550


def test_ctrl_c_during_the_callback(explosive):
    def callback(now):
        signal.raise_signal(signal.SIGINT)

    with pytest.warns(RuntimeWarning, match="interrupted"):
        result = kestro.mine(explosive, min_support=2, progress=callback)
    assert result.stopped_by == "interrupt"


@pytest.mark.usefixtures("uncollected")
def test_what_a_signal_handler_raises_comes_out(explosive):
    def handler(number, frame):
        raise WrongError

    before = signal.signal(signal.SIGUSR1, handler)
    try:
        timer = threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGUSR1))
        timer.start()
        with pytest.raises(WrongError) as caught:
            kestro.mine(explosive, min_support=2)
    finally:
        signal.signal(signal.SIGUSR1, before)
    assert isinstance(caught.value.result, kestro.Result)


@pytest.mark.usefixtures("uncollected")
def test_the_interpreter_stays_free(explosive):
    """Another thread goes on while one mines, and is who ends it."""
    steps = []

    def count():
        while len(steps) < 5:
            steps.append(time.sleep(0.01))
        os.kill(os.getpid(), signal.SIGINT)

    thread = threading.Thread(target=count)
    with pytest.warns(RuntimeWarning, match="interrupted"):
        result = kestro.mine(
            explosive,
            min_support=2,
            progress=lambda now: thread.start() if now[:2] == (1, "complete") else 0,
        )
    thread.join()
    assert len(steps) == 5 and result.stopped_by == "interrupt"


def test_threads_mine_at_once(molecules):
    expected = table(kestro.mine(molecules, min_support=4))
    results = [None] * 4

    def work(i):
        results[i] = table(kestro.mine(molecules, min_support=4))

    threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [expected] * 4


def test_a_fork_in_the_callback_does_not_hang(explosive):
    def callback(now):
        nonlocal child
        if child is None:
            child = os.fork()
        raise kestro.StopMining

    child = None
    parent = os.getpid()
    try:
        result = kestro.mine(explosive, min_support=2, progress=callback)
    except RuntimeError as e:
        if os.getpid() != parent:
            os._exit(7 if "forked" in str(e) else 8)
        raise
    assert result.stopped_by == "progress"
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 7


def test_progress_tells_every_size(molecules):
    seen = []
    result = kestro.mine(molecules, min_support=6, progress=seen.append)
    complete = {p.size: p.done for p in seen if p.step == "complete"}
    counts = Counter(result.size.tolist())
    assert {size: n for size, n in complete.items() if n} == counts
    assert all(0 <= p.done <= p.known for p in seen)
    assert isinstance(seen[0], kestro.Progress)


def test_the_bar_is_silent_where_no_terminal_is(molecules, capfd):
    kestro.mine(molecules, min_support=6, progress=True)
    assert capfd.readouterr() == ("", "")


def test_the_bar_in_a_terminal():
    code = (
        "import kestro\n"
        "edges = [(a, b, '-') for b in range(9) for a in range(b)]\n"
        "db = kestro.from_edges([list('ABCDEFGHI')] * 2, [edges] * 2)\n"
        "kestro.mine(db, min_support=2, max_size=4, progress=True)\n"
        "print('done')\n"
    )
    terminal, other_end = os.openpty()
    termios.tcsetwinsize(other_end, (24, 100))
    done = subprocess.run(
        [sys.executable, "-c", code],
        check=True,
        stdout=subprocess.PIPE,
        stderr=other_end,
    )
    os.close(other_end)
    shown = b""
    with contextlib.suppress(OSError), open(terminal, "rb", buffering=0) as f:
        while piece := f.read(4096):
            shown += piece
    assert done.stdout == b"done\n"
    last = shown.rstrip().rsplit(b"\r", 1)[-1].decode()
    assert "size 4, complete" in last and "patterns: 100%" in last
    assert "it/s" not in shown.decode()


def test_the_bar_in_a_notebook(three, monkeypatch, capsys):
    """Where notebooks run, standard error is no terminal, and yet it is shown."""
    monkeypatch.setitem(sys.modules, "ipykernel.zmqshell", sys)
    kestro.mine(three, min_support=1, progress=True)
    out, err = capsys.readouterr()
    assert out == "" and "size 2, complete, 4 patterns: 100%" in err


@pytest.mark.usefixtures("uncollected")
def test_ctrl_c_during_matching(explosive):
    result = kestro.mine(explosive, min_support=2, max_size=3)
    other = explosive[[0] * 30_000]  # half a minute, were it not for the signal
    for n_jobs in (1, 2):
        threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
        with pytest.raises(KeyboardInterrupt):
            result.transform(other, n_jobs=n_jobs)
    assert result.transform(other[:2], n_jobs=2).sum() == 2 * len(result)


def test_kinds_of_time_limits(three):
    for seconds in (5, 5.0, np.float32(5), np.int64(5)):
        assert kestro.mine(three, min_support=1, time_limit=seconds).complete


def test_bounds_that_nothing_reaches(molecules):
    nine = kestro.mine(molecules, min_support="20%", max_size=9)
    ten = kestro.mine(molecules, min_support="20%", max_size=10)
    assert (len(nine), len(ten)) == (114, 114)
    assert nine["9-0"].maximal is None and ten["9-0"].maximal is True
    assert nine["8-0"].maximal is ten["8-0"].maximal is False


def test_errors_can_be_pickled():
    e = pickle.loads(pickle.dumps(kestro.KestroError("wrong", "file", 3)))
    assert (str(e), e.text, e.path, e.line) == (
        "wrong (file, line 3)",
        "wrong",
        "file",
        3,
    )
    assert isinstance(e, ValueError)


def test_a_percentage_with_a_comma(three):
    with pytest.raises(ValueError, match=r"not '5,5%'; write a point, not a comma"):
        kestro.mine(three, min_support="5,5%")


def test_more_graphs_than_there_are(three):
    result = kestro.mine(three, min_support=4)
    assert len(result) == 0 and result.complete and result.min_support == 4
