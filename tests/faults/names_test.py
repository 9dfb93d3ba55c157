#!/usr/bin/env python3
"""Names that lead nowhere, to folders, to what must not be written, or back to the input.

What a run refuses it refuses before it has opened anything for writing.
"""

import os
import shutil
import unittest
from pathlib import Path

import faults

ALL = faults.RUNS["all outputs"]
LABELS = faults.RUNS["labels"]
NOBODY = 65534


def is_the_input(name: str) -> str:
    return f"can't write a file '{name}': it is the input\n"


class Names(unittest.TestCase):
    def assert_refused(self, ended: faults.Ended, message: str) -> None:
        self.assertEqual(ended.err, message)
        self.assertEqual(ended.status, 1)

    def test_folder_as_output(self) -> None:
        for name in ["db.fp", "db.c.g", "db.pc", "db.tid"]:
            with self.subTest(file=name), faults.Folder() as folder:
                (folder.path / name).mkdir()
                kept = "db.fp" if name != "db.fp" else "db.tid"
                folder.write(kept, b"old\n")
                ended = folder.run(*ALL)
                self.assert_refused(ended, faults.cannot_open(name))
                self.assertEqual(ended.files[kept], b"old\n")

    def test_folder_as_label_file(self) -> None:
        with faults.Folder() as folder:
            (folder.path / "db.ls").mkdir()
            self.assert_refused(folder.run(*LABELS), faults.cannot_open("db.ls"))

    def test_folder_as_input_is_empty(self) -> None:
        with faults.Folder() as folder:
            (folder.path / "folder").mkdir()
            ended = folder.run("folder")
        self.assertEqual((ended.status, ended.err), (0, ""))
        self.assertRegex(ended.out, rb"Number of Input Transactions: +0\n")
        self.assertIn("folder.fp", ended.files)

    def test_missing_files(self) -> None:
        with faults.Folder() as folder:
            self.assert_refused(folder.run("none"), faults.cannot_open("none"))
            self.assert_refused(
                folder.run("--load-labels", faults.INPUT), faults.cannot_open("db.ls")
            )
            self.assertEqual(set(os.listdir(folder.path)), {faults.INPUT})

    def test_dangling_link_is_followed(self) -> None:
        plain = faults.undisturbed(ALL)
        with faults.Folder() as folder:
            (folder.path / "db.fp").symlink_to("elsewhere")
            ended = folder.run(*ALL)
            self.assertEqual((ended.status, ended.err), (0, ""))
            self.assertEqual(ended.files["elsewhere"], plain.files["db.fp"])

    def test_link_into_a_missing_folder(self) -> None:
        with faults.Folder() as folder:
            (folder.path / "db.fp").symlink_to("none/elsewhere")
            self.assert_refused(folder.run(*ALL), faults.cannot_open("db.fp"))

    def test_link_to_itself(self) -> None:
        with faults.Folder() as folder:
            (folder.path / "db.fp").symlink_to("db.fp")
            self.assert_refused(folder.run(*ALL), faults.cannot_open("db.fp"))

    def test_read_only_folder(self) -> None:
        """Root may write anywhere, so the program runs as nobody then."""
        user = NOBODY if os.geteuid() == 0 else None
        with faults.Folder() as folder:
            program = folder.path / "program"
            shutil.copy(faults.Programs.kestro, program)
            folder.path.chmod(0o555)
            try:
                for words, name in [(ALL, "db.fp"), (LABELS, "db.ls")]:
                    with self.subTest(file=name):
                        ended = folder.run(*words, program=program, user=user)
                        self.assert_refused(ended, faults.cannot_open(name))
            finally:
                folder.path.chmod(0o755)

    def test_input_without_the_right_to_read(self) -> None:
        user = NOBODY if os.geteuid() == 0 else None
        with faults.Folder() as folder:
            program = folder.path / "program"
            shutil.copy(faults.Programs.kestro, program)
            folder.path.chmod(0o755)
            (folder.path / faults.INPUT).chmod(0)
            ended = folder.run(*ALL, program=program, user=user)
            self.assert_refused(ended, faults.cannot_open(faults.INPUT))

    def test_pipe_as_input(self) -> None:
        """Reads as a file: only its name and the outputs' tell the difference."""
        plain = faults.undisturbed(ALL)
        with faults.Folder() as folder:
            database = folder.path / faults.INPUT
            database.unlink()
            os.mkfifo(database)
            feeder = os.fork()
            if feeder == 0:
                database.write_bytes(faults.DATABASE)
                os._exit(0)
            ended = folder.run(*ALL)
            os.waitpid(feeder, 0)
        self.assertEqual((ended.status, ended.err, ended.out), (0, "", plain.out))
        del plain.files[faults.INPUT]
        self.assertEqual(ended.files, plain.files)


class InputAsOutput(unittest.TestCase):
    """By whatever way, the input stays what it was, and so does all else."""

    def check(self, folder: faults.Folder, name: str, *words: str) -> None:
        folder.write("old.tid", b"old")
        before = faults.read_files(folder.path)
        ended = folder.run(*words)
        self.assertEqual(ended.err, is_the_input(name))
        self.assertEqual(ended.status, 1)
        self.assertEqual(ended.files, before)
        self.assertEqual(ended.out, b"")

    def check_all_ways(self, name: str, *words: str) -> None:
        def link(path: Path) -> None:
            path.hardlink_to(path.with_name(faults.INPUT))

        def symlink(path: Path) -> None:
            path.symlink_to(faults.INPUT)

        def two_symlinks(path: Path) -> None:
            path.with_name("between").symlink_to(faults.INPUT)
            path.symlink_to(f"../{path.parent.name}/between")

        for way in [link, symlink, two_symlinks]:
            with self.subTest(way=way.__name__), faults.Folder() as folder:
                folder.write("db.tid", b"old")
                way(folder.path / name)
                self.check(folder, name, *words)

    def test_pattern_file(self) -> None:
        self.check_all_ways("db.fp", "-t", faults.INPUT)

    def test_last_output(self) -> None:
        with faults.Folder() as folder:
            folder.write("db.fp", b"old")
            (folder.path / "db.tid").symlink_to(faults.INPUT)
            self.check(folder, "db.tid", *ALL)

    def test_label_file(self) -> None:
        self.check_all_ways("db.ls", *LABELS)

    def test_same_name(self) -> None:
        for name in ["db.fp", "db.tid", "db.pc", "db.g"]:
            with self.subTest(file=name), faults.Folder() as folder:
                folder.write("old.fp", b"old")
                folder.write(name, faults.DATABASE)
                if name == "db.g":  # no output's name
                    ended = folder.run("-s", "50", name)
                    self.assertEqual((ended.status, ended.err), (0, ""))
                else:
                    self.check(folder, name, "-t", "-p", name)

    def test_same_label_file(self) -> None:
        with faults.Folder() as folder:
            name = f"--save-labels={faults.INPUT}"
            self.check(folder, faults.INPUT, name, faults.INPUT)

    def test_loaded_labels_may_be_written_back(self) -> None:
        with faults.Folder() as folder:
            written = folder.run(*LABELS).files["db.ls"]
            ended = folder.run("--load-labels", *LABELS)
            self.assertEqual((ended.status, ended.err), (0, ""))
            self.assertEqual(ended.files["db.ls"], written)


if __name__ == "__main__":
    faults.main()
