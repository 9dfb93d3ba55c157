#!/usr/bin/env python3
"""Every write and every close of a run fails in turn.

A run that could not write all it had to say must not claim that it has; one
whose writes are only cut short or interrupted must not show it.
"""

import subprocess
import sys
import tempfile
import unittest

import faults


class Writes(unittest.TestCase):
    def assert_told(self, ended: faults.Ended, target: str) -> None:
        self.assertEqual(ended.err, faults.cannot_write(target))
        self.assertEqual(ended.status, 1)

    def check_failing_writes(self, words: list[str]) -> None:
        writes = faults.calls_of(words, "write")
        self.assertTrue(writes)
        for error in ["ENOSPC", "EIO"]:
            for n, target in writes:
                with self.subTest(error=error, write=n, file=target):
                    fault = f"write:error={error}:when={n}"
                    ended = faults.run_once(*words, before=faults.injecting(fault))
                    self.assert_told(ended, target)
                    self.assertEqual(ended.files[faults.INPUT], faults.DATABASE)

    def test_all_outputs(self) -> None:
        self.check_failing_writes(faults.RUNS["all outputs"])

    def test_maximal_patterns(self) -> None:
        self.check_failing_writes(faults.RUNS["maximal patterns"])

    def test_labels(self) -> None:
        self.check_failing_writes(faults.RUNS["labels"])

    def test_each_kind_of_file_is_written(self) -> None:
        targets = {
            target
            for words in faults.RUNS.values()
            for _, target in faults.calls_of(words, "write")
        }
        self.assertEqual(targets, faults.OUTPUTS | {faults.STDOUT, faults.TEMPORARY})

    def test_interrupted(self) -> None:
        """No handler of the program's interrupts one; where one does, it shows."""
        words = faults.RUNS["all outputs"]
        plain = faults.undisturbed(words)
        for n, target in faults.calls_of(words, "write"):
            with self.subTest(write=n, file=target):
                fault = f"write:error=EINTR:when={n}"
                ended = faults.run_once(*words, before=faults.injecting(fault))
                if ended.status == 0:
                    self.assertEqual(ended.results(), plain.results())
                else:
                    self.assert_told(ended, target)

    def test_the_tool_shortens(self) -> None:
        program = [sys.executable, "-c", "import os; print(os.write(1, b'abcd'))"]
        with tempfile.TemporaryFile() as out:
            command = [faults.Programs.short_writes, *program]
            subprocess.run(command, stdout=out, check=True)
            out.seek(0)
            self.assertEqual(out.read(), b"ab2\n")

    def test_short(self) -> None:
        for purpose, words in faults.RUNS.items():
            with self.subTest(run=purpose):
                plain = faults.undisturbed(words)
                ended = faults.run_once(
                    *words, before=(str(faults.Programs.short_writes),)
                )
                self.assertEqual((ended.status, ended.err), (0, ""))
                self.assertEqual(ended.results(), plain.results())


class Closes(unittest.TestCase):
    """The last failure that a file system can tell."""

    def check_failing_closes(self, words: list[str]) -> None:
        plain = faults.undisturbed(words)
        for n, target in faults.calls_of(words, "close"):
            with self.subTest(close=n, file=target):
                fault = f"close:error=EIO:when={n}"
                ended = faults.run_once(*words, before=faults.injecting(fault))
                if ended.status == 0:  # nothing was lost
                    self.assertEqual(ended.results(), plain.results())
                    self.assertEqual(ended.err, "")
                else:
                    self.assertNotEqual(target, faults.INPUT)
                    self.assertEqual(ended.err, faults.cannot_write(target))
                    self.assertEqual(ended.status, 1)

    def check_last_close(self, words: list[str], name: str) -> None:
        """That of a finished output, which counts in any case.

        Behind it comes only that of the lock's descriptor, which wrote nothing.
        """
        closes = faults.calls_of(words, "close")
        *_, last, _ = (n for n, target in closes if target == name)
        fault = f"close:error=EIO:when={last}"
        ended = faults.run_once(*words, before=faults.injecting(fault))
        self.assertEqual(ended.err, faults.cannot_write(name))
        self.assertEqual(ended.status, 1)

    def test_any(self) -> None:
        for purpose, words in faults.RUNS.items():
            with self.subTest(run=purpose):
                self.check_failing_closes(words)

    def test_all_outputs(self) -> None:
        for name in ["db.fp", "db.tid", "db.pc", "db.c.g"]:
            with self.subTest(file=name):
                self.check_last_close(faults.RUNS["all outputs"], name)

    def test_maximal_patterns(self) -> None:
        for name in ["db.fp", "db.tid", "db.pc"]:
            with self.subTest(file=name):
                self.check_last_close(faults.RUNS["maximal patterns"], name)

    def test_labels(self) -> None:
        self.check_last_close(faults.RUNS["labels"], "db.ls")


if __name__ == "__main__":
    faults.main()
