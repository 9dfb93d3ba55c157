#!/usr/bin/env python3
"""Runs that a signal ends, at each of their writes.

Nothing is cleaned up then; what can be asked for is that the input is what it
was, and that the pattern file is right up to its last complete pattern.
"""

import os
import signal
import unittest

import faults

SIGNALS = [signal.SIGKILL, signal.SIGINT, signal.SIGTERM]


class Ends(unittest.TestCase):
    def check_ended(self, words: list[str], all_patterns: list[str]) -> int:
        """End the run at each of its writes; returns how often."""
        plain = faults.undisturbed(words)
        complete = [
            faults.complete_patterns(faults.undisturbed(other).files["db.fp"])
            for other in (words, all_patterns)
        ]
        writes = faults.calls_of(words, "write")
        for n, _ in writes:
            number = SIGNALS[n % len(SIGNALS)]
            fault = f"write:signal={number.name}:when={n}"
            with self.subTest(fault=fault):
                ended = faults.run_once(*words, before=faults.injecting(fault))
                self.assertEqual(ended.status, -number)
                self.assertEqual(ended.err, "")
                self.assertEqual(ended.files[faults.INPUT], faults.DATABASE)
                found = faults.complete_patterns(ended.files["db.fp"])
                self.assertTrue(any(found == whole[: len(found)] for whole in complete))
                self.assertTrue(plain.out.startswith(ended.out))
        return len(writes)

    def test_all_outputs(self) -> None:
        words = faults.RUNS["all outputs"]
        self.assertGreater(self.check_ended(words, words), 25)

    def test_maximal_patterns(self) -> None:
        all_patterns = ["-s", "10", faults.INPUT]
        ends = self.check_ended(faults.RUNS["maximal patterns"], all_patterns)
        self.assertGreater(ends, 25)


class ClosedPipe(unittest.TestCase):
    def run_unread(self, **how: object) -> faults.Ended:
        reader, writer = os.pipe()
        os.close(reader)
        try:
            return faults.run_once(*faults.RUNS["all outputs"], stdout=writer, **how)
        finally:
            os.close(writer)

    def test_ends_the_program(self) -> None:
        self.assertEqual(self.run_unread().status, -signal.SIGPIPE)

    def test_is_a_failed_write_where_the_signal_is_ignored(self) -> None:
        ended = self.run_unread(
            restore_signals=False,
            preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN),
        )
        self.assertEqual(ended.err, faults.cannot_write(faults.STDOUT))
        self.assertEqual(ended.status, 1)


if __name__ == "__main__":
    faults.main()
