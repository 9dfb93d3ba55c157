"""Run the golden cases one after the other, until one fails: PROGRAM."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "golden"))

import golden  # noqa: E402

golden.SECONDS = 60


def main() -> int:
    program = Path(sys.argv[1])
    for name, case in golden.case_folders().items():
        if golden.expected(case) != golden.actual(case, program):
            print(f"[  FAILED  ] {name}")
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
