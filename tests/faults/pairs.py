"""Two runs on one FILE at once: what they may leave, and what not."""

import dataclasses
import fcntl
import os
import random
import select
import shutil
import signal
import struct
import subprocess
import tempfile
import time
from collections import Counter
from pathlib import Path
from typing import Self

import faults

SECONDS = 60  # after which a run hangs
REFUSAL = "can't write a file 'db.fp': another run is writing it\n"

Words = list[str]


@dataclasses.dataclass(frozen=True)
class Kind:
    """Two runs, by their words."""

    name: str
    first: Words
    second: Words


KINDS = [
    Kind("patterns beside maximal ones", ["-s", "5", "-t"], ["-s", "10", "-t", "-x"]),
    Kind("the same patterns twice", ["-s", "5", "-t"], ["-s", "5", "-t"]),
    Kind(
        "the same maximal ones twice", ["-s", "5", "-t", "-x"], ["-s", "5", "-t", "-x"]
    ),
]


class Wrong(Exception):
    """What no pair of runs may end with."""


@dataclasses.dataclass
class Expected:
    """A run that nobody disturbs."""

    files: faults.Files
    seconds: float


def is_locked(path: Path) -> bool:
    """Whether a run that lives holds the right to write a file, by either kind of lock."""
    if not path.exists():
        return False
    with open(path, "r+b") as file:
        try:
            fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            return True
        fcntl.flock(file, fcntl.LOCK_UN)
        range_of_all = struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, 0, 0, 0)
        get_owner = 36  # F_OFD_GETLK
        found = fcntl.fcntl(file, get_owner, range_of_all)
        return struct.unpack("hhqqi4x", found)[0] != fcntl.F_UNLCK


class Run:
    """A run that has been started."""

    def __init__(self, folder: Path, words: Words, environment: dict[str, str]) -> None:
        self.words = words
        self.process = subprocess.Popen(
            [faults.Programs.kestro, *words, faults.INPUT],
            cwd=folder,
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
        )
        self.ended = os.pidfd_open(self.process.pid)

    def finish(self) -> int:
        """Its status; what it said is checked."""
        _, err = self.process.communicate(timeout=SECONDS)
        os.close(self.ended)
        said = err.decode(errors="replace")
        status = self.process.returncode
        if (status, said) not in [(0, ""), (1, REFUSAL)]:
            raise Wrong(f"status {status}, and it said: {said!r}")
        return status


class Pairs:
    """Pairs of runs on a database, in a folder that is gone in the end."""

    def __init__(
        self, database: bytes, below: Path | None, library: Path | None
    ) -> None:
        self.path = Path(tempfile.mkdtemp(prefix="kestro-pairs-", dir=below))
        (self.path / faults.INPUT).write_bytes(database)
        self.environment = faults.environment()
        if library:
            self.environment["LD_PRELOAD"] = str(library)
            asan = self.environment["ASAN_OPTIONS"]
            self.environment["ASAN_OPTIONS"] = f"{asan}:verify_asan_link_order=0"
        self.counts: Counter[str] = Counter()

    def __enter__(self) -> Self:
        return self

    def __exit__(self, *_: object) -> None:
        shutil.rmtree(self.path)

    def run_alone(self, words: Words) -> Expected:
        """What a run writes when nobody disturbs it."""
        for name in faults.OUTPUTS:
            (self.path / name).unlink(missing_ok=True)
        start = time.monotonic()
        status = Run(self.path, words, self.environment).finish()
        seconds = time.monotonic() - start
        if status:
            raise Wrong("a run alone was refused")
        files = faults.read_files(self.path)
        del files[faults.INPUT]
        return Expected(files, seconds)

    def compare(self, expected: Expected) -> None:
        found = faults.read_files(self.path)
        for name, data in expected.files.items():
            if found.get(name) != data:
                raise Wrong(f"{name} is not what the run alone writes")

    def check_while_other_waits(self, other: Run, expected: Expected) -> None:
        """Its files, unless the other one has begun to write."""
        os.kill(other.process.pid, signal.SIGSTOP)
        os.waitid(os.P_PID, other.process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
        if is_locked(self.path / "db.fp"):
            self.counts["not looked at, the other writing already"] += 1
        else:
            self.compare(expected)
            self.counts["files right beside the other"] += 1
        os.kill(other.process.pid, signal.SIGCONT)

    def run_pair(self, kind: Kind, alone: list[Expected], wait: float) -> None:
        first = Run(self.path, kind.first, self.environment)
        time.sleep(wait)
        second = Run(self.path, kind.second, self.environment)
        runs = [(first, alone[0]), (second, alone[1])]
        ready, _, _ = select.select([first.ended, second.ended], [], [], SECONDS)
        if not ready:
            raise Wrong("both hang")
        if second.ended in ready and first.ended not in ready:
            runs.reverse()
        (early, early_files), (late, late_files) = runs
        status = early.finish()
        if status == 0 and len(ready) == 1:
            self.check_while_other_waits(late, early_files)
        late_status = late.finish()
        if status and late_status:
            raise Wrong("both were refused")
        if late_status == 0:
            self.compare(late_files)
        elif len(ready) == 1 or not status:
            self.compare(early_files)
        self.counts[f"{'both' if status == late_status else 'one'} ended well"] += 1

    def run_killed(self, kind: Kind, alone: list[Expected], wait: float) -> None:
        """A killed run leaves no lock behind."""
        first = Run(self.path, kind.first, self.environment)
        time.sleep(wait)
        first.process.kill()
        first.process.communicate(timeout=SECONDS)
        os.close(first.ended)
        if Run(self.path, kind.second, self.environment).finish():
            raise Wrong("refused after a run that was killed")
        self.compare(alone[1])
        self.counts["well after one that was killed"] += 1

    def run_many(self, kind: Kind, pairs: int, seed: int) -> Counter[str]:
        """That many pairs at random offsets, and a tenth of it with one killed."""
        offsets = random.Random(seed)
        alone = [self.run_alone(words) for words in (kind.first, kind.second)]
        self.counts.clear()
        for _ in range(pairs):
            self.run_pair(kind, alone, offsets.uniform(0, 1.2 * alone[0].seconds))
        for _ in range(max(1, pairs // 10)):
            self.run_killed(kind, alone, offsets.uniform(0, alone[0].seconds))
        return self.counts
