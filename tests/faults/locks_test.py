#!/usr/bin/env python3
"""Runs beside others on one FILE, and outputs that are no files at all.

A few pairs of each kind, at offsets drawn from a fixed seed; many_pairs starts any
number of them.
"""

import contextlib
import fcntl
import os
import signal
import socket
import sys
import threading
import unittest
from collections.abc import Callable, Iterator
from contextlib import AbstractContextManager
from pathlib import Path

import faults
import pairs

if len(sys.argv) < 4:
    sys.exit(f"usage: {sys.argv[0]} KESTRO SHORT_WRITES NO_FLOCK [TEST ...]")
NO_FLOCK = Path(sys.argv.pop(3)).resolve()


class Pairs(unittest.TestCase):
    def check_pairs(self, library: Path | None = None) -> None:
        refused = 0
        with pairs.Pairs(faults.DATABASE, None, library) as both:
            for kind in pairs.KINDS:
                with self.subTest(kind=kind.name):
                    refused += both.run_many(kind, 10, 1)["one ended well"]
            # The offsets are drawn, the moments are not: start two at once.
            alone = [both.run_alone(words) for words in (kind.first, kind.second)]
            both.run_pair(kind, alone, 0)
            refused += both.counts["one ended well"]
        self.assertGreater(refused, 0)  # or no two runs ever met

    def test_three_kinds(self) -> None:
        self.check_pairs()

    def test_without_whole_file_locks(self) -> None:
        self.check_pairs(NO_FLOCK)


class Locked(unittest.TestCase):
    """While another run writes, all stays as it is."""

    def check_refused(self, name: str, words: list[str]) -> None:
        with faults.Folder() as folder:
            before = {file: b"theirs\n" for file in [name, "db.tid"]}
            for file, data in before.items():
                folder.write(file, data)
            with open(folder.path / name, "r+b") as theirs:
                fcntl.flock(theirs, fcntl.LOCK_EX)
                ended = folder.run(*words)
            text = f"can't write a file '{name}': another run is writing it\n"
            self.assertEqual((ended.status, ended.err, ended.out), (1, text, b""))
            for file, data in before.items():
                self.assertEqual(ended.files[file], data)
            self.assertEqual(folder.run(*words).status, 0)

    def test_each_output(self) -> None:
        for name in ["db.fp", "db.c.g", "db.pc", "db.tid"]:
            with self.subTest(file=name):
                self.check_refused(name, faults.RUNS["all outputs"])

    def test_label_file(self) -> None:
        self.check_refused("db.ls", faults.RUNS["labels"])


class OtherLocks(unittest.TestCase):
    def test_runs_without_whole_file_locks(self) -> None:
        for words in faults.RUNS.values():
            plain = faults.undisturbed(words)
            ended = faults.run_once(
                *words, before=faults.injecting("flock:error=ENOLCK")
            )
            self.assertEqual((ended.status, ended.err), (0, ""))
            self.assertEqual(ended.results(), plain.results())


@contextlib.contextmanager
def pipe(path: Path) -> Iterator[None]:
    os.mkfifo(path)
    yield


@contextlib.contextmanager
def pipe_with_reader(path: Path) -> Iterator[None]:
    os.mkfifo(path)
    reader = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    yield
    os.close(reader)


@contextlib.contextmanager
def listening_socket(path: Path) -> Iterator[None]:
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(path))
        yield


class NoFiles(unittest.TestCase):
    """Pipes and sockets hold nothing; devices take what they get."""

    def check_outputs(
        self, make: Callable[[Path], AbstractContextManager[None]], text: str
    ) -> None:
        for purpose, words in faults.RUNS.items():
            names = faults.OUTPUTS & set(faults.undisturbed(words).files)
            for name in sorted(names):
                with self.subTest(run=purpose, file=name), faults.Folder() as folder:
                    kept = "db.tid" if name != "db.tid" else "db.fp"
                    folder.write(kept, b"old\n")
                    with make(folder.path / name):
                        ended = folder.run(*words)
                    self.assertEqual(
                        ended.err, f"can't write a file '{name}': {text}\n"
                    )
                    self.assertEqual((ended.status, ended.out), (1, b""))
                    self.assertEqual(ended.files[kept], b"old\n")

    def test_pipe_without_a_reader(self) -> None:
        self.check_outputs(pipe, "it is a pipe")

    def test_pipe_with_a_reader(self) -> None:
        self.check_outputs(pipe_with_reader, "it is a pipe")

    def test_socket(self) -> None:
        self.check_outputs(listening_socket, "it is a socket")

    def test_device(self) -> None:
        """Shared freely, also by two outputs of one run."""
        for purpose in ["all outputs", "labels"]:
            words = faults.RUNS[purpose]
            plain = faults.undisturbed(words)
            names = faults.OUTPUTS & set(plain.files)
            with self.subTest(run=purpose), faults.Folder() as folder:
                for name in names:
                    (folder.path / name).symlink_to("/dev/null")
                ended = folder.run(*words)
                self.assertEqual((ended.status, ended.err), (0, ""))
                self.assertEqual(ended.out, plain.out)

    def test_candidates_of_maximal_patterns_may_be_a_device(self) -> None:
        with faults.Folder() as folder:
            (folder.path / "db.c.g").symlink_to("/dev/null")
            ended = folder.run("-x", "--candidates", "-s", "50", faults.INPUT)
            self.assertEqual((ended.status, ended.err), (0, ""))


class StandardOutput(unittest.TestCase):
    """The report may go anywhere, and is checked where that can tell."""

    words = faults.RUNS["all outputs"]

    def check_report(self, reader: int, writer: int) -> None:
        plain = faults.undisturbed(self.words)
        pieces: list[bytes] = []

        def read_all() -> None:
            while piece := os.read(reader, 65536):
                pieces.append(piece)

        thread = threading.Thread(target=read_all)
        thread.start()
        ended = faults.run_once(*self.words, stdout=writer)
        os.close(writer)
        thread.join()
        os.close(reader)
        self.assertEqual((ended.status, ended.err), (0, ""))
        self.assertEqual(faults.masked(b"".join(pieces)), plain.out)
        self.assertEqual(ended.files, plain.files)

    def test_pipe(self) -> None:
        self.check_report(*os.pipe())

    def test_socket(self) -> None:
        ours, theirs = socket.socketpair()
        self.check_report(ours.detach(), theirs.detach())

    def test_named_pipe(self) -> None:
        with faults.Folder() as folder:
            os.mkfifo(folder.path / "report")
            reader = os.open(folder.path / "report", os.O_RDONLY | os.O_NONBLOCK)
            writer = os.open(folder.path / "report", os.O_WRONLY)
            os.set_blocking(reader, True)
            self.check_report(reader, writer)

    def test_socket_that_is_closed(self) -> None:
        ours, theirs = socket.socketpair()
        ours.close()
        ended = faults.run_once(*self.words, stdout=theirs)
        theirs.close()
        self.assertEqual(ended.status, -signal.SIGPIPE)  # as in front of "| head"


if __name__ == "__main__":
    faults.main()
