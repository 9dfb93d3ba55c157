#!/usr/bin/env python3
"""Every read, seek and question about a file's state fails in turn.

What a run did not get to read must not be missing from its results in silence.
"""

import unittest

import faults


class Reads(unittest.TestCase):
    def check_failing(self, call: str, words: list[str]) -> int:
        """Returns how many of the calls the run could not do without."""
        plain = faults.undisturbed(words)
        needed = 0
        for n, target in faults.calls_of(words, call):
            with self.subTest(call=call, number=n, file=target):
                fault = f"{call}:error=EIO:when={n}"
                ended = faults.run_once(*words, before=faults.injecting(fault))
                if ended.status == 0:
                    self.assertEqual(ended.err, "")
                    self.assertEqual(ended.results(), plain.results())
                    continue
                messages = [faults.cannot_read(target), faults.cannot_open(target)]
                self.assertIn(ended.err, messages)
                self.assertEqual(ended.status, 1)
                needed += 1
        return needed

    def test_read(self) -> None:
        least = {"all outputs": 2, "maximal patterns": 10, "labels": 2}
        for purpose, words in faults.RUNS.items():
            with self.subTest(run=purpose):
                needed = self.check_failing("read", words)
                self.assertGreaterEqual(needed, least[purpose])

    def test_seek(self) -> None:
        words = faults.RUNS["maximal patterns"]
        self.assertGreaterEqual(self.check_failing("lseek", words), 3)

    def test_state(self) -> None:
        for purpose, words in faults.RUNS.items():
            with self.subTest(run=purpose):
                self.check_failing("newfstatat", words)


if __name__ == "__main__":
    faults.main()
