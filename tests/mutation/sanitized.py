"""Mutants under the sanitizers: in the dev build, where the suite usually runs.

Linking there takes longer, so only a file's own unit tests and the golden runs
are tried.  What they kill on top is mostly what reads or frees wrongly.
"""

import subprocess
import sys
from pathlib import Path

from mutants import TREE
from workshop import HERE, Stage, Workshop, own_tests

SUPPORT = ["support/sanitizer_options.cpp", "support/plain_generation.cpp"]


class SanitizedWorkshop(Workshop):
    memory_limit = 0  # the sanitizer's own takes terabytes of addresses

    def __init__(self) -> None:
        super().__init__()
        self.build = TREE / "build/dev"
        self.scratch = self.build / "mutation"
        self.temporary = self.scratch / "tmp"

    def prepare(self) -> None:
        configure = ["cmake", "--preset", "dev"]
        subprocess.run(configure, cwd=TREE, check=True, stdout=subprocess.DEVNULL)
        self.make("kestro_core", "kestro", "kestro_reference")
        self.read_commands()

    def stages(self, file: str) -> list[Stage]:
        sources = [f"unit/{Path(file).stem}_test.cpp", *SUPPORT]
        folder = Path("tests/CMakeFiles/kestro_unit.dir")
        tests = [f"{folder}/{source}.o" for source in sources]
        self.make(*tests)
        reference = self.build / "reference/libkestro_reference.a"
        self.test_objects = [*(self.build / test for test in tests), reference]
        program = str(self.scratch / "kestro")
        golden = [sys.executable, str(HERE / "golden_until_failure.py"), program]
        unit = [str(self.scratch / "kestro_unit"), "--gtest_fail_fast"]
        return [
            Stage("own unit tests", [*unit, "--gtest_filter=" + own_tests(file)]),
            Stage("golden runs", golden),
        ]

    def link_core(self, file: str = "", instead: Path | None = None) -> None:
        """Links the tests and the program; instead replaces the library's object."""
        added = [instead] if instead else []
        core = self.build / "src/libkestro_core.a"
        main = self.build / "src/CMakeFiles/kestro.dir/driver/main.cpp.o"
        options = ["-fsanitize=address,undefined", "-pthread"]
        self.run_linker([*options, main, *added, core], self.scratch / "kestro")
        objects = [*self.test_objects, *added, core]
        self.run_linker(
            [*options, *objects, "-lgtest_main", "-lgtest"],
            self.scratch / "kestro_unit",
        )

    def environment(self) -> dict[str, str]:
        options = "allocator_may_return_null=1:detect_stack_use_after_return=1"
        return super().environment() | {
            "ASAN_OPTIONS": options + ":hard_rss_limit_mb=4096"
        }
