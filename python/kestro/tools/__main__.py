"""The command itself: which sub-commands there are, and how each of them ends."""

from __future__ import annotations

import argparse
import os
import sys
import traceback
from collections.abc import Sequence
from typing import Any

import kestro
from kestro._errors import KestroError
from kestro.tools import (
    _writing,
    check,
    completion,
    convert,
    diff,
    match,
    mine,
    report,
    suggest,
)
from kestro.tools._status import OutputError, Status, UsageError, told
from kestro.tools._terminal import Terminal

_EPILOG = """\
examples:
  kestro-tools mine molecules.smi --support 5% > patterns.csv
  kestro-tools check graphs.txt
  kestro-tools convert molecules.smi -o molecules.txt
  kestro-tools COMMAND --help

The extension of a file tells its format, else --from does.  A file named - is
standard input.  What is read may be compressed by gzip.

exit codes:
  0 found   1 nothing found   2 wrong usage   3 bad input   4 output failed
  5 a limit was reached   70 a fault of the command itself   130 interrupted
"""
_COMMANDS = (mine, suggest, check, convert, report, match, diff, completion)


class _Parser(argparse.ArgumentParser):
    """Tells what cannot be written, which argparse leaves out."""

    def print_help(self, file: Any = None) -> None:
        _writing.write_lines(_writing.STDOUT, [self.format_help()])

    def print_usage(self, file: Any = None) -> None:
        if file is not None:  # else standard error is closed
            super().print_usage(file)


class _Version(argparse.Action):
    def __call__(self, parser: argparse.ArgumentParser, *_: object) -> None:
        _writing.write_lines(_writing.STDOUT, [f"kestro-tools {_version()}\n"])
        parser.exit()


def parser() -> argparse.ArgumentParser:
    """Return the parser of the command line."""
    top = _Parser(
        prog="kestro-tools",
        description="Frequent subgraphs of molecules and other labelled graphs.",
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    top.add_argument(
        "--version", action=_Version, nargs=0, help="show the version and exit"
    )
    commands = top.add_subparsers(dest="command", metavar="COMMAND", required=True)
    for module in _COMMANDS:
        sub = commands.add_parser(
            module.__name__.rpartition(".")[2],
            help=module.HELP,
            description=module.DESCRIPTION,
            epilog=module.EPILOG,
            formatter_class=argparse.RawDescriptionHelpFormatter,
        )
        module.add_arguments(sub)
        sub.add_argument(
            "-q",
            "--quiet",
            action="store_true",
            help="tell problems alone: neither progress nor what goes well; the output "
            "stays",
        )
        sub.set_defaults(run=module.run)
    return top


def main(argv: Sequence[str] | None = None) -> int:
    """Run the command.

    Parameters
    ----------
    argv : sequence of str, optional
        The arguments; None is those of the process.

    Returns
    -------
    int
        The exit code: 0 found, 1 nothing found, 2 wrong usage, 3 bad input,
        4 output failed, 5 a limit was reached, 70 a fault of the command itself,
        130 interrupted.

    Examples
    --------
    >>> from kestro.tools.__main__ import main
    >>> main(["convert", "examples/molecules.smi", "-q", "-o", "/dev/null"])
    0
    """
    _hold_closed_streams()
    try:
        status = _run(argv)
        if sys.stdout is not None:
            sys.stdout.flush()
    except BrokenPipeError:
        return _lost_output()
    except OSError as e:
        _complain(told("cannot write", e))
        return _lost_output()
    return status


def _run(argv: Sequence[str] | None) -> int:
    try:
        args = parser().parse_args(argv)
        status: Status = args.run(args, Terminal(args.quiet))
        return int(status)
    except SystemExit as e:  # argparse has said what there was to say
        return int(e.code or 0)
    except UsageError as e:
        _complain(str(e))
        return int(Status.USAGE)
    except ImportError as e:
        _complain(str(e))
        return int(Status.USAGE)
    except OutputError as e:
        if isinstance(e.__cause__, BrokenPipeError):
            return _lost_output()
        _complain(str(e))
        return int(Status.OUTPUT)
    except BrokenPipeError:
        raise
    except KestroError as e:
        _complain(str(e))
        return int(Status.INPUT)
    except OSError as e:
        _complain(told("cannot read", e))
        return int(Status.INPUT)
    except MemoryError:
        _complain("memory has run out")
        return int(Status.LIMIT)
    except KeyboardInterrupt:
        _complain("interrupted")
        return int(Status.INTERRUPTED)
    except Exception:
        # By itself Python would end with 1, which says that nothing was found.
        traceback.print_exc()
        return int(Status.FAULT)


def _hold_closed_streams() -> None:
    """Keep files from taking the place of a closed standard stream.

    What libraries tell there would be written into them.
    """
    for number, stream in enumerate((sys.stdin, sys.stdout, sys.stderr)):
        if stream is None:
            try:
                os.fstat(number)
            except OSError:
                os.open(os.devnull, os.O_RDWR)


def _complain(text: str) -> None:
    Terminal().warn(text, "error")


def _lost_output() -> int:
    """Return the code; nobody is left to read, so nothing more may be flushed."""
    try:
        if sys.stdout is not None:
            os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    except (OSError, ValueError):
        pass
    return int(Status.OUTPUT)


def _version() -> str:
    try:
        return str(kestro.__version__)
    except ImportError:  # in a folder of sources that was never installed
        return "(not installed)"


if __name__ == "__main__":
    sys.exit(main())
