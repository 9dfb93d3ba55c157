#!/usr/bin/env python3
"""Disks without room: small file systems, files over a limit, /dev/full.

A file system is mounted where only the program sees it, as root or in a user
namespace.  On a machine that allows neither, a limit on the size of files stands
in for it, and the test says so.
"""

import resource
import signal
import subprocess
import unittest

import faults

# What follows $0 is run in an empty file system of 64 KiB, to which the input
# leads by a link; what is there in the end is copied back.
SMALL_DISK = """
mkdir disk && mount -t tmpfs -o size=64k none disk && cd disk || exit 1
ln -s ../db.txt db.txt && "$@"
status=$?
cp -f db.* .. 2>/dev/null
cd .. && umount disk
exit $status
"""
# The same with such a file system for temporary files alone.
SMALL_TEMPORARY = """
cp "$1" program && shift || exit 1 # which may itself lie below /tmp
mount -t tmpfs -o size=4k none /tmp || exit 1
./program "$@"
status=$?
umount -l /tmp
exit $status
"""
LARGE = ["-s", "4", "-t", "-p", faults.INPUT]  # outputs of half a MiB
LARGE_MAXIMAL = ["-s", "4", "-t", "-x", faults.INPUT]


# Ways to file systems that no other process sees: as root, as anybody, and in a
# changed root, where nothing can be said of what is mounted above.
WAYS = [
    ("unshare", "-m"),
    ("unshare", "-rm"),
    ("unshare", "-m", "--propagation", "unchanged"),
]


def way_to_mount() -> tuple[str, ...] | None:
    """The first of these ways that this machine allows."""
    for way in WAYS:
        script = "mount -t tmpfs -o size=4k none /mnt && umount /mnt"
        tried = subprocess.run(
            [*way, "sh", "-c", script], capture_output=True, check=False
        )
        if tried.returncode == 0:
            return way
    return None


def run_limited(limit: int, words: list[str]) -> faults.Ended:
    """The run under a limit on the size of files, in bytes."""

    def set_limit() -> None:
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    return faults.run_once(*words, preexec_fn=set_limit)


class SmallDisk(unittest.TestCase):
    def run_in_little(self, script: str, limit: int, words: list[str]) -> faults.Ended:
        """The run with a small file system, or else under a limit."""
        way = way_to_mount()
        if way is None:
            print(f"nothing can be mounted here: a limit of {limit} bytes instead")
            return run_limited(limit, words)
        with faults.Folder() as folder:
            return folder.run(*words, before=(*way, "sh", "-c", script, "sh"))

    def check_full(self, words: list[str]) -> None:
        ended = self.run_in_little(SMALL_DISK, 65536, words)
        told = [faults.cannot_write(name) for name in sorted(faults.OUTPUTS)]
        self.assertIn(ended.err, told)
        self.assertEqual(ended.status, 1)
        self.assertEqual(ended.files[faults.INPUT], faults.DATABASE)
        plain = faults.undisturbed(words[:-2] + ["-p", words[-1]])
        begun = ended.files["db.fp"].split(b"t #", 1)[1]
        self.assertGreater(len(begun), 4096)
        self.assertIn(begun, plain.files["db.fp"])

    def test_all_outputs(self) -> None:
        self.check_full(LARGE)

    def test_maximal_patterns(self) -> None:
        self.check_full(LARGE_MAXIMAL)

    def test_temporary_file(self) -> None:
        words = faults.RUNS["maximal patterns"]
        ended = self.run_in_little(SMALL_TEMPORARY, 4096, words)
        # A limit meets the outputs first; writes_test makes the writes of
        # the temporary file fail one by one.
        names = [faults.TEMPORARY] if way_to_mount() else faults.OUTPUTS
        self.assertIn(ended.err, map(faults.cannot_write, names))
        self.assertEqual(ended.status, 1)


class SizeLimit(unittest.TestCase):
    """A limit on the size of files, which also cuts the last write short."""

    def check_limits(self, words: list[str]) -> None:
        plain = faults.undisturbed(words)
        sizes = [
            len(plain.files[name]) for name in plain.files if name in faults.OUTPUTS
        ]
        names = [*faults.OUTPUTS, faults.TEMPORARY, faults.STDOUT]
        for limit in [0, 1, 100, 4095, 4096, 4097, *(size - 1 for size in sizes)]:
            with self.subTest(limit=limit):
                ended = run_limited(limit, words)
                if limit >= max(sizes):
                    continue
                self.assertIn(ended.err, map(faults.cannot_write, names))
                self.assertEqual(ended.status, 1)
        ended = run_limited(10_000_000, words)
        self.assertEqual((ended.status, ended.err), (0, ""))
        self.assertEqual(ended.results(), plain.results())

    def test_all_outputs(self) -> None:
        self.check_limits(faults.RUNS["all outputs"])

    def test_maximal_patterns(self) -> None:
        self.check_limits(faults.RUNS["maximal patterns"])

    def test_labels(self) -> None:
        self.check_limits(faults.RUNS["labels"])

    def test_signal_is_not_default(self) -> None:
        """The program must see to it itself that a limit is not a signal."""
        ended = faults.run_once(
            *faults.RUNS["labels"],
            preexec_fn=lambda: (
                signal.signal(signal.SIGXFSZ, signal.SIG_DFL),
                resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0)),
            ),
        )
        self.assertEqual(ended.err, faults.cannot_write("db.ls"))
        self.assertEqual(ended.status, 1)


class DevFull(unittest.TestCase):
    def test_standard_output(self) -> None:
        commands = [
            [],
            ["--help"],
            faults.RUNS["all outputs"],
            faults.RUNS["maximal patterns"],
        ]
        for words in commands:
            with self.subTest(words=words), open("/dev/full", "wb") as full:
                ended = faults.run_once(*words, stdout=full)
                self.assertEqual(ended.err, faults.cannot_write(faults.STDOUT))
                self.assertEqual(ended.status, 1)

    def test_labels_need_no_standard_output(self) -> None:
        with open("/dev/full", "wb") as full:
            ended = faults.run_once(*faults.RUNS["labels"], stdout=full)
        self.assertEqual((ended.status, ended.err), (0, ""))

    def test_each_output(self) -> None:
        for purpose in ["all outputs", "labels"]:
            words = faults.RUNS[purpose]
            outputs = faults.OUTPUTS & set(faults.undisturbed(words).files)
            for name in sorted(outputs):
                with self.subTest(file=name), faults.Folder() as folder:
                    (folder.path / name).symlink_to("/dev/full")
                    ended = folder.run(*words)
                    self.assertEqual(ended.err, faults.cannot_write(name))
                    self.assertEqual(ended.status, 1)


if __name__ == "__main__":
    faults.main()
