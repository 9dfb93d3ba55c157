"""Sub-command ``mine``: the frequent subgraphs of whatever can be read."""

from __future__ import annotations

import argparse
import re
import signal
import threading
import time
import warnings
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import Any

import kestro
from kestro._arguments import min_support_parts
from kestro._database import number_of
from kestro._errors import KestroError
from kestro._files import plain_name
from kestro._progress import Progress
from kestro._result import Result
from kestro.tools import _reading, _results, _source, _writing
from kestro.tools._options import INT_MAX, add_jobs, seconds, whole
from kestro.tools._status import OutputError, Status, UsageError
from kestro.tools._terminal import Terminal

HELP = "find the frequent subgraphs"
DESCRIPTION = """\
Find every connected subgraph that occurs in enough of the graphs.

Without --output-dir the patterns go to standard output, as CSV or lines of JSON.
On a terminal a line tells of each size as it is found.
"""
EPILOG = """\
examples:
  kestro-tools mine molecules.smi --support 5% > patterns.csv
  kestro-tools mine table.csv --support 17 --max-size 8 --closed \\
      --output-dir found --format files,parquet
  kestro-tools mine - --from sdf --support 0.05 --format jsonl < molecules.sdf

--support 5% is a share of the graphs, as is 0.05; 17 is a number of graphs.
After a limit (--time-limit, --max-patterns) the sizes that are complete are
written, and the exit code is 5.
"""
_TO_STDOUT = ("csv", "jsonl")
_FORMATS = ("files", "csv", "parquet", "jsonl", "html")
# Seconds from which on a rate is told: ends of sizes come some 20 times a second.
_MEASURED = 0.5
_COUNT = re.compile(r"[0-9]+")
_FRACTION = re.compile(r"[0-9]*\.[0-9]+|[0-9]+\.[0-9]*")


def support(text: str) -> int | float | str:
    """Return a minimum support as the package takes it.

    Raises
    ------
    argparse.ArgumentTypeError
        For a text that is none, with what it should be.

    Examples
    --------
    >>> from kestro.tools.mine import support
    >>> support("5%"), support("17"), support("0.05")
    ('5%', 17, 0.05)
    """
    value: int | float | str = text
    if _COUNT.fullmatch(text):
        value = int(text)
    elif _FRACTION.fullmatch(text):
        value = float(text)
    try:
        # 0%, which the program kestro takes for one graph, is hardly meant so here.
        is_some = min_support_parts(value)[1] > 0
    except ValueError:
        is_some = False
    if not is_some:
        raise argparse.ArgumentTypeError(
            f"{text!r} is no minimum support; write a percentage above 0 such as 5%, "
            f"a fraction above 0 and up to 1.0 such as 0.05, or a number of graphs "
            f"such as 17 (1 finds what any graph has)"
        )
    return value


def formats(text: str) -> list[str]:
    """Return the formats in a list with commas."""
    names = [name.strip() for name in text.split(",")]
    for name in names:
        if name not in _FORMATS:
            raise argparse.ArgumentTypeError(
                f"{name!r} is none of {', '.join(_FORMATS)}"
            )
    return names


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    _reading.add_input(parser)
    parser.add_argument(
        "-s",
        "--support",
        type=support,
        required=True,
        metavar="5%|17|0.05",
        # argparse takes a per cent sign for a place to fill in.
        help="in how many graphs a pattern must occur",
    )
    parser.add_argument(
        "--min-size",
        type=whole(0, INT_MAX),
        default=1,
        metavar="N",
        help="edges at least (1)",
    )
    parser.add_argument(
        "--max-size", type=whole(1, INT_MAX), metavar="N", help="edges at most"
    )
    parser.add_argument(
        "--closed",
        action="store_true",
        help="only those without a larger one in the same graphs; "
        "of --max-size edges, where that is open, all",
    )
    parser.add_argument(
        "--maximal",
        action="store_true",
        help="only those that no other one contains; of --max-size edges all",
    )
    add_jobs(parser)
    parser.add_argument(
        "--time-limit", type=seconds, metavar="S", help="end after S seconds"
    )
    parser.add_argument(
        "--max-patterns",
        type=whole(0),
        metavar="N",
        help="end after the size with which there are more than N patterns",
    )
    parser.add_argument(
        "--form",
        dest="canonical",
        choices=("exact", "command-line"),
        default="exact",
        help="the canonical form: each pattern once (exact), or what the program "
        "kestro writes",
    )
    parser.add_argument(
        "-o",
        "--output-dir",
        type=_source.file_name,
        metavar="FOLDER",
        help="where files go; made if missing",
    )
    parser.add_argument(
        "-f",
        "--format",
        type=formats,
        metavar="LIST",
        help=f"of {', '.join(_FORMATS)}, with commas between (files with "
        f"--output-dir, else csv)",
    )
    _reading.add_arguments(parser)


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Mine and write."""
    wanted = args.format or (["files"] if args.output_dir else ["csv"])
    if not args.output_dir and (len(wanted) > 1 or wanted[0] not in _TO_STDOUT):
        raise UsageError(f"{','.join(wanted)} needs --output-dir")
    if args.max_size is not None and args.max_size < max(1, args.min_size):
        raise UsageError(
            f"--max-size {args.max_size} is less than --min-size {args.min_size}",
            see_help=False,
        )
    name = name_of(args.input)
    if args.output_dir:  # before the work, not after it
        written = [x for form in wanted for x in _targets(form, args.output_dir, name)]
        _source.check_outputs(written, args.input)
        with _writing.output_errors():
            Path(args.output_dir).mkdir(parents=True, exist_ok=True)
    source = _reading.read(args.input, args, terminal)
    if not len(source.db):
        terminal.warn("there are no graphs")
    if "html" in wanted:  # before the work, too
        _reading.check_classes(source.db, args, terminal)
    show = Levels(terminal)
    with warnings.catch_warnings():
        # That it was interrupted is told below.
        warnings.simplefilter("ignore", RuntimeWarning)
        try:
            result = kestro.mine(
                source.db,
                min_support=args.support,
                min_size=args.min_size,
                max_size=args.max_size,
                maximal=args.maximal,
                closed=args.closed,
                n_jobs=args.jobs,
                progress=show if terminal.is_live else None,
                time_limit=args.time_limit,
                max_patterns=args.max_patterns,
                form=args.canonical,
            )
        except ValueError as e:
            raise UsageError(str(e)) from e
    terminal.clear()
    if result.stopped_by == "interrupt" and args.output_dir:
        with _deaf():  # what was found until then is to be whole
            failed = _write_all(result, wanted, args.output_dir, name, terminal)
    else:
        failed = _write_all(result, wanted, args.output_dir, name, terminal)
    tell(result, terminal)
    if failed:
        raise OutputError("; ".join(failed))
    return ending(result)


@contextmanager
def _deaf() -> Iterator[None]:
    """Ignore Ctrl-C; only the main thread hears it, and can ignore it."""
    if threading.current_thread() is not threading.main_thread():
        yield
        return
    before = signal.signal(signal.SIGINT, signal.SIG_IGN)
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, before)


def _write_all(
    result: Result,
    wanted: list[str],
    folder: str | None,
    name: str,
    terminal: Terminal,
) -> list[str]:
    """Write all formats; return what went wrong, as one may hold what another cannot.

    Where it is interrupted, those that are missing are told.
    """
    failed = []
    for i, form in enumerate(wanted):
        try:
            _write(result, form, folder, name)
        except (KestroError, ImportError, OutputError) as e:
            if isinstance(e.__cause__, BrokenPipeError):
                raise
            failed.append(f"{form}: {e}")
        except KeyboardInterrupt:
            terminal.warn(f"not written: {', '.join(wanted[i:])}")
            raise
    return failed


def name_of(source: str) -> str:
    """Return the name of files that are made of an input."""
    path = Path(source).resolve()
    if source == _source.STDIN or not (path.is_file() or path.is_dir()):
        return "patterns"  # a pipe has no name of its own
    plain = plain_name(path.name)
    return Path(plain).stem or plain


def tell(result: Result, terminal: Terminal) -> None:
    """Say what was found; that something is open or unknown, always."""
    text = repr(result)[1:-1].removeprefix("Result: ")
    if result.stopped_by or result.undecided:
        terminal.warn(text)
    else:
        terminal.say(text)


def ending(result: Result) -> Status:
    """Return how a command ends that made this result."""
    if result.stopped_by == "interrupt":
        return Status.INTERRUPTED
    if result.stopped_by:
        return Status.LIMIT
    return Status.FOUND if len(result) else Status.NOTHING


class Levels:
    """Shows a line per size, and where the run is within one.

    Parameters
    ----------
    terminal : Terminal
        Where to.
    clock : callable
        Seconds from any point in time on.
    """

    def __init__(
        self, terminal: Terminal, clock: Callable[[], float] = time.monotonic
    ) -> None:
        self._terminal = terminal
        self._clock = clock
        self._start = clock()
        self._level = self._start

    def __call__(self, now: Progress) -> None:
        """Show where the run is."""
        elapsed = self._clock() - self._start
        if now.step != "complete":
            self._terminal.passing(
                f"size {now.size}: {now.step} {now.done} of {now.known}, "
                f"{elapsed:.1f} s"
            )
            return
        took = self._clock() - self._level
        self._level += took
        # Sizes 1 and 2 are counted without candidates.
        tried = now.candidates or now.done
        candidates = f"{now.candidates} candidates, " if now.candidates else ""
        rate = f", {tried / took:.0f}/s" if took >= _MEASURED else ""
        self._terminal.say(
            f"size {now.size}: {candidates}{number_of(now.done, 'pattern')}, "
            f"{elapsed:.1f} s{rate}"
        )


def _targets(form: str, folder: str | None, name: str) -> list[str]:
    """Return the files that are written in a format."""
    if not folder:
        return [_writing.STDOUT]
    extensions = ("fp", "tid", "pc") if form == "files" else (form,)
    return [str(Path(folder) / f"{name}.{extension}") for extension in extensions]


def _write(result: Result, form: str, folder: str | None, name: str) -> None:
    target = _targets(form, folder, name)[0]
    if form == "csv":
        _writing.write_lines(target, csv_lines(result))
    elif form == "jsonl":
        _writing.write_lines(target, (result.to_jsonl() or "").splitlines(True))
    elif form == "parquet":
        _writing.write_parquet(target, result.to_arrow())
    elif form == "html":
        _writing.write_page(result, target, title=name)
    else:
        assert folder is not None
        with _writing.output_errors():
            result.write(folder, name)


def csv_lines(result: Result) -> Any:
    """Return the table of a result as lines of CSV, graphs as lines in cells."""
    frame = result.to_pandas()
    names = list(frame.columns)
    frame = frame.astype(object).where(frame.notna(), "")
    rows = list(frame.itertuples(index=False, name=None))
    if "smarts" not in names:
        # Not in the frame, whose texts are UTF-8, which labels need not be.
        names.append("graph")
        graphs = (_results.line_of(p.graph) for p in result)
        rows = [(*row, graph) for row, graph in zip(rows, graphs, strict=True)]
    return _writing.csv_lines([names, *rows])
