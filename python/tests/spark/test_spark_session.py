"""Real Spark, one session a master, each in a process of its own."""

import os
import pathlib
import subprocess
import sys

import pytest

HERE = pathlib.Path(__file__).parent


@pytest.mark.parametrize("master", ["local[2]", "local-cluster[2,1,1024]", "connect"])
def test_session(master, examples, tmp_path):
    environment = os.environ | {
        "PYSPARK_PYTHON": sys.executable,
        "SPARK_LOCAL_IP": "127.0.0.1",
        # Workers need the package as this process has it.
        "PYTHONPATH": os.pathsep.join(map(os.path.abspath, filter(None, sys.path))),
    }
    done = subprocess.run(
        [sys.executable, HERE / "session.py", master, examples, tmp_path],
        env=environment,
        cwd=tmp_path,
        capture_output=True,
        text=True,
        check=False,
    )
    assert done.returncode == 0, done.stderr[-5000:]
    assert done.stdout.splitlines() == [
        f"{name}: as on one machine" for name in ("files", "rows", "told", "bad_input")
    ]
