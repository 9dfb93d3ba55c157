"""Where mutants are built and tried: one build folder with a shared core.

The tests and the program are linked once, against the core as a shared
library; for a mutant one object is compiled and the library linked anew.  Its
folder is named to the programs by LD_LIBRARY_PATH, and by nothing else, so
that none can find another core.
"""

import dataclasses
import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
from collections.abc import Sequence
from pathlib import Path

from mutants import TREE, Mutant, source_lines

HERE = Path(__file__).resolve().parent
GIB = 1 << 30
LIBRARY = "libkestro_core.so"
FIRST_FAILED = re.compile(rb"\[  FAILED  \] ([^\s,]+)")
LAST_BEGUN = re.compile(rb"\[ RUN      \] (\S+)")
# The property tests that get to a file; those of other files are left out.
WHOLE_RUNS = "*Miner*:*Threads*"
JOINING = "DerivedParents.*:*Generation*"
PROPERTIES = {
    "cl/": ["*CanonicalEngines*", JOINING, WHOLE_RUNS],
    "graph/connectivity": [JOINING, WHOLE_RUNS],
    "graph/": [WHOLE_RUNS],
    "mining/occurrences": ["*CountingWithRows*", WHOLE_RUNS],
    "mining/support": ["*CountingWithRows*", WHOLE_RUNS],
    "mining/tid_lists": ["*CountingWithRows*", WHOLE_RUNS],
    "mining/": [JOINING, WHOLE_RUNS],
    "base/": [WHOLE_RUNS],
}


@dataclasses.dataclass
class Stage:
    """A part of the suite."""

    name: str
    command: list[str]
    seconds: int = 0  # CPU time that each of its processes may take


class Workshop:
    memory_limit = 4 * GIB  # of each process

    def __init__(self) -> None:
        self.build = TREE / "build/mutation/plain"
        self.scratch = self.build / "scratch"
        self.temporary = self.scratch / "tmp"
        self.commands: dict[str, dict[str, str]] = {}
        self.originals: dict[str, bytes] = {}
        self.limits: dict[str, int] = {}
        self.headers: set[Path] = set()  # compiled

    # Building

    def prepare(self) -> None:
        """Builds everything that mutants have in common."""
        options = [
            "-DCMAKE_BUILD_TYPE=Debug",
            "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
            "-DCMAKE_POSITION_INDEPENDENT_CODE=ON",
            "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
            "-DKESTRO_CHECKERS=ON",
            "-DKESTRO_TESTS=ON",
        ]
        configure = [
            "cmake",
            "-S",
            str(TREE),
            "-B",
            str(self.build),
            "-G",
            "Ninja",
            *options,
        ]
        subprocess.run(configure, check=True, stdout=subprocess.DEVNULL)
        self.make("kestro_unit", "kestro_property", "kestro")
        self.read_commands()
        self.link_core()
        self.link("tests/kestro_unit", ["kestro_unit", "kestro_reference"])
        self.link("tests/kestro_property", ["kestro_property", "kestro_reference"])
        self.link("src/kestro", ["kestro"])

    def make(self, *targets: str) -> None:
        words = ["ninja", "-j1", "-C", str(self.build), *targets]
        subprocess.run(words, check=True, stdout=subprocess.DEVNULL)

    def read_commands(self) -> None:
        """Learns how the sources are compiled."""
        for command in json.loads((self.build / "compile_commands.json").read_text()):
            path = Path(command["file"])
            if path.is_relative_to(TREE / "src"):
                self.commands[path.relative_to(TREE / "src").as_posix()] = command
        self.scratch.mkdir(exist_ok=True)

    def link(self, program: str, targets: list[str]) -> None:
        """Links a program again, against the shared core."""
        files = self.build.rglob("CMakeFiles/*/**/*.o")
        objects = [f for f in files if any(f"{t}.dir" in f.parts for t in targets)]
        libraries = ["-lgtest_main", "-lgtest"] if "tests" in program else []
        self.run_linker(
            [*objects, f"-L{self.scratch}", "-lkestro_core", *libraries, "-pthread"],
            self.build / program,
        )

    def link_core(self, file: str = "", instead: Path | None = None) -> None:
        """Links the library, with an object in the place of a file's."""
        folder = self.build / "src/CMakeFiles/kestro_core.dir"
        objects = [o for o in folder.rglob("*.o") if o != folder / f"{file}.o"]
        added = [instead] if instead else []
        words: list[str | Path] = ["-shared", *objects, *added, "-pthread"]
        self.run_linker(words, self.scratch / LIBRARY)

    def run_linker(self, words: Sequence[str | Path], result: Path) -> None:
        subprocess.run(["c++", *words, "-o", result], check=True)

    def compile(self, file: str, source: Path, more: str = "") -> Path | None:
        """The object of a source that stands for file; None if it has errors."""
        result = self.scratch / "mutant.o"
        words = more.split()  # which must not meet headers compiled without
        if not words:
            words = ["-include", str(self.precompiled_headers(file))]
        return result if self.run_compiler(file, source, result, words) else None

    def precompiled_headers(self, file: str) -> Path:
        """A header of all that the file includes, which is most of the work."""
        header = self.scratch / "headers" / f"{file}.h"
        if header not in self.headers:
            lines = source_lines(file)
            text = "\n".join(line for line in lines if line.startswith("#include"))
            header.parent.mkdir(parents=True, exist_ok=True)
            header.write_text(text + "\n")
            result = header.with_suffix(".h.gch")
            if not self.run_compiler(file, header, result, ["-x", "c++-header"]):
                sys.exit(f"no headers: {file}")
            self.headers.add(header)
        return header

    def run_compiler(
        self, file: str, source: Path, result: Path, more: list[str]
    ) -> bool:
        command = self.commands[file]
        words = [w for w in shlex.split(command["command"]) if not w.endswith("ccache")]
        words[words.index("-o") + 1] = str(result)
        at = words.index(command["file"])
        always = [f"-fmacro-prefix-map={self.scratch}/src/=", "-frandom-seed=kestro"]
        words[at : at + 1] = [*always, "-w", *more, str(source)]
        done = subprocess.run(
            words, cwd=command["directory"], capture_output=True, check=False
        )
        return done.returncode == 0

    def code(self, mutant: Mutant | None, file: str, more: str = "") -> bytes | None:
        """The object code of a mutant, or of the file as it is."""
        source = self.scratch / "src" / file
        if mutant:
            mutant.write(source)
        else:
            source.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(TREE / "src" / file, source)
        made = self.compile(file, source, more)
        return made.read_bytes() if made else None

    def original_code(self, file: str, more: str = "") -> bytes | None:
        key = file + more
        if key not in self.originals:
            self.originals[key] = self.code(None, file, more) or b""
        return self.originals[key]

    # Trying

    def stages(self, file: str) -> list[Stage]:
        """The suite, what is likely to kill a mutant of file first."""
        unit = str(self.build / "tests/kestro_unit")
        properties = str(self.build / "tests/kestro_property")
        fast = "--gtest_fail_fast"
        program = str(self.build / "src/kestro")
        golden = [sys.executable, str(HERE / "golden_until_failure.py"), program]
        return [
            Stage("own unit tests", [unit, fast, "--gtest_filter=" + own_tests(file)]),
            Stage("golden runs", golden),
            Stage("unit tests", [unit, fast]),
            *(
                Stage("property tests", [properties, fast, "--gtest_filter=" + tests])
                for tests in properties_of(file)
            ),
        ]

    def limit_stages(self, stages: list[Stage]) -> None:
        """Limits each by what it takes without a mutant, which must pass."""
        for stage in stages:
            key = " ".join(stage.command)
            if key not in self.limits:
                self.limits[key] = self.limit(stage)
            stage.seconds = self.limits[key]

    def limit(self, stage: Stage) -> int:
        self.link_core()
        stage.seconds = 600
        before = children_seconds()
        failed = self.failure(stage)
        if failed:
            sys.exit(f"fails without a mutant: {stage.name}: {failed}")
        return 3 + round(3 * (children_seconds() - before))

    def failure(self, stage: Stage) -> str:
        """Runs a stage; what failed in it and how, "" if nothing did."""
        shutil.rmtree(self.temporary, ignore_errors=True)
        self.temporary.mkdir()
        told = self.scratch / "told"
        with open(told, "wb") as out:
            process = subprocess.Popen(
                stage.command,
                cwd=self.temporary,
                env=self.environment(),
                stdin=subprocess.DEVNULL,
                stdout=out,
                stderr=subprocess.STDOUT,
                start_new_session=True,
                preexec_fn=lambda: self.set_limits(stage.seconds),
            )
            try:
                status = process.wait(60 + 20 * stage.seconds)
            except subprocess.TimeoutExpired:
                status = -signal.SIGXCPU
            finally:
                stop_group(process.pid)
                process.wait()
        if status == 0:
            return ""
        return describe(status, told.read_bytes())

    def environment(self) -> dict[str, str]:
        return os.environ | {
            "LD_LIBRARY_PATH": str(self.scratch),
            "TMPDIR": str(self.temporary),
            "MALLOC_PERTURB_": "165",
        }

    def set_limits(self, seconds: int) -> None:
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
        resource.setrlimit(resource.RLIMIT_FSIZE, (GIB // 2, GIB // 2))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if self.memory_limit:
            most = (self.memory_limit, self.memory_limit)
            resource.setrlimit(resource.RLIMIT_AS, most)


def own_tests(file: str) -> str:
    """The gtest filter of a source file's own unit tests."""
    path = TREE / "tests/unit" / f"{Path(file).stem}_test.cpp"
    suites = re.findall(r"^TEST(?:_F|_P)?\((\w+),", path.read_text(), re.MULTILINE)
    return ":".join(f"{s}.*:*/{s}.*" for s in dict.fromkeys(suites))


def properties_of(file: str) -> list[str]:
    return next(t for head, t in PROPERTIES.items() if file.startswith(head))


def children_seconds() -> float:
    """The CPU time of all processes waited for so far."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def stop_group(pid: int) -> None:
    """Ends what a stage's process may have left behind."""
    try:
        os.killpg(pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def describe(status: int, told: bytes) -> str:
    failed = FIRST_FAILED.search(told)
    begun = LAST_BEGUN.findall(told)
    name = failed[1].decode() if failed else begun[-1].decode() if begun else ""
    if status in (-signal.SIGXCPU, -signal.SIGKILL):
        return f"{name} (out of time)"
    return f"{name} (ended by signal {-status})" if status < 0 else name
