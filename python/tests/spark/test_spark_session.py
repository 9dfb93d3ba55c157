"""Real Spark, one session a master, each in a process of its own."""

import os
import pathlib
import subprocess
import sys

import pytest

HERE = pathlib.Path(__file__).parent


def printed(script, master, examples, folder):
    """Return the lines that a script prints, which must end well."""
    environment = os.environ | {
        "PYSPARK_PYTHON": sys.executable,
        "SPARK_LOCAL_IP": "127.0.0.1",
        # Workers need the package as this process has it.
        "PYTHONPATH": os.pathsep.join(map(os.path.abspath, filter(None, sys.path))),
    }
    done = subprocess.run(
        [sys.executable, HERE / script, master, examples, folder],
        env=environment,
        cwd=folder,
        capture_output=True,
        text=True,
        check=False,
    )
    assert done.returncode == 0, done.stderr[-5000:]
    return done.stdout.splitlines()


@pytest.mark.parametrize("master", ["local[2]", "local-cluster[2,1,1024]", "connect"])
def test_session(master, examples, tmp_path):
    assert printed("session.py", master, examples, tmp_path) == [
        f"{name}: as on one machine"
        for name in ("files", "rows", "odd", "told", "bad_input")
    ]


def test_workers_that_are_killed(examples, tmp_path):
    # Without the second number nothing is tried again.
    assert printed("faults.py", "local[2,4]", examples, tmp_path) == [
        f"{name}: one task more, the same result"
        for name in ("reading", "mining", "counting", "finding")
    ] + ["lost rows: mined again, or refused"]


def test_executors_that_are_killed(examples, tmp_path):
    assert printed("faults.py", "local-cluster[2,1,1024]", examples, tmp_path) == [
        f"{name}: the same result" for name in ("mining", "counting")
    ]
