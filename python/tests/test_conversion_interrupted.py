"""Ctrl-C while molecules are converted: it gets through, no process is left."""

import signal
import subprocess
import threading

import kestro
import pytest
from kestro import _conversion, _molecules, _workers

SMILES = ["CCO"] * 20


@pytest.fixture
def processes(monkeypatch):
    """Return the processes that are started."""
    started = []
    real = subprocess.Popen

    def start(*arguments, **others):
        started.append(real(*arguments, **others))
        return started[-1]

    monkeypatch.setattr(_workers.subprocess, "Popen", start)
    monkeypatch.setattr(_molecules, "_CHUNK", 2)
    yield started
    left = [p for p in started if p.poll() is None]
    for process in left:
        process.kill()
    assert not left


def interrupt():
    signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)


def at_call(number, function):
    """Return the function, at whose call of that number there is a Ctrl-C."""
    calls = []

    def called(*arguments, **others):
        calls.append(arguments)
        if len(calls) == number:
            interrupt()
        return function(*arguments, **others)

    return called


def test_in_this_process(processes, monkeypatch):
    add = _conversion.Converter.add
    monkeypatch.setattr(_conversion.Converter, "add", at_call(7, add))
    with pytest.raises(KeyboardInterrupt):
        kestro.from_smiles(SMILES, on_error="skip")
    assert not processes
    assert len(kestro.from_smiles(SMILES)) == 20


@pytest.mark.parametrize("call", [1, 2, 5])
def test_while_processes_are_waited_for(processes, monkeypatch, call):
    # Called by threads that wait for one process each.
    work = at_call(call, _workers._Worker.call)
    monkeypatch.setattr(_workers._Worker, "call", work)
    with pytest.raises(KeyboardInterrupt) as caught:
        kestro.from_smiles(SMILES, n_jobs=2, on_error="skip")
    # While the exception is at hand: it must not be what ends them.
    assert len(processes) == 2 and all(p.poll() is not None for p in processes)
    assert caught.value is not None
    assert len(kestro.from_smiles(SMILES, n_jobs=2)) == 20


def test_while_answers_are_put_together(processes, monkeypatch):
    extend = at_call(3, _molecules.Packer.extend)
    monkeypatch.setattr(_molecules.Packer, "extend", extend)
    with pytest.raises(KeyboardInterrupt) as caught:
        kestro.from_smiles(SMILES, n_jobs=2)
    assert len(processes) == 2 and all(p.poll() is not None for p in processes)
    assert caught.value is not None


def test_while_processes_are_started(processes, monkeypatch):
    start = at_call(2, _workers.subprocess.Popen)
    monkeypatch.setattr(_workers.subprocess, "Popen", start)
    with pytest.raises(KeyboardInterrupt):
        kestro.from_smiles(SMILES, n_jobs=2)
    assert processes and all(p.poll() is not None for p in processes)


def test_an_error_ends_the_processes(processes):
    with pytest.raises(kestro.KestroError, match="record 5: ") as caught:
        kestro.from_smiles([*SMILES[:5], "x", *SMILES], n_jobs=2)
    assert len(processes) == 2 and all(p.poll() is not None for p in processes)
    assert caught.value is not None


def test_a_task_that_an_ended_process_does_not_take():
    worker = _workers._Worker()
    worker._process.stdin.write(b"x")  # into the buffer
    worker.end()
    worker._process.wait()
    worker.close()
    assert worker._process.stdin.closed and worker._process.stdout.closed
