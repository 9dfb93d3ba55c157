#!/usr/bin/env python3
"""Memory that is short from the very start: limits on the address space.

From the smallest limit under which the program starts at all, in steps of a page.
"""

import resource
import subprocess
import unittest

import faults

PAGE = 4096
RANGE = 2 << 20  # bytes, from the smallest limit on
NOT_STARTED = 127  # the status when the loader itself finds no memory
NO_MEMORY = r"\Axmalloc\.c:\d+: not enough memory\n\Z"


def run_within(limit: int, folder: faults.Folder, words: list[str]) -> faults.Ended:
    def set_limit() -> None:
        resource.setrlimit(resource.RLIMIT_AS, (limit, limit))

    try:
        return folder.run(*words, preexec_fn=set_limit)
    except subprocess.SubprocessError:  # not even the limit can be set
        return faults.Ended(NOT_STARTED, b"", "", {})


def has_started(limit: int, folder: faults.Folder) -> bool:
    return run_within(limit, folder, ["--help"]).status not in (NOT_STARTED, -11, -9)


def smallest_limit(folder: faults.Folder) -> int:
    """In bytes; starting is taken to be monotone."""
    low, high = PAGE, 1 << 30
    while high - low > PAGE:
        middle = (low + high) // 2 // PAGE * PAGE
        if has_started(middle, folder):
            high = middle
        else:
            low = middle
    return high


class AddressSpace(unittest.TestCase):
    def check_limits(self, words: list[str]) -> None:
        plain = faults.undisturbed(words)
        ends = {0: 0, 1: 0}
        with faults.Folder() as folder:
            first = smallest_limit(folder)
            for limit in range(first, first + RANGE, PAGE):
                ended = run_within(limit, folder, words)
                with self.subTest(limit=limit):
                    if ended.status == 0:
                        self.assertEqual(ended.err, "")
                        self.assertEqual(ended.results(), plain.results())
                    else:
                        self.assertEqual(ended.status, 1)
                        self.assertRegex(ended.err, NO_MEMORY)
                    ends[ended.status] = ends.get(ended.status, 0) + 1
        print(f"{words}: from {first // 1024} KiB on, ends by status: {ends}")
        self.assertGreater(ends[0], 0)
        self.assertGreater(ends[1], 0)

    def test_runs(self) -> None:
        for words in faults.RUNS.values():
            self.check_limits(words)


if __name__ == "__main__":
    faults.main()
