"""``python -m kestro.spark``: mine transaction files, for ``spark-submit`` too."""

from __future__ import annotations

import argparse
import logging
import os
import signal
import sys
import tempfile
from pathlib import Path

from kestro._errors import KestroError
from kestro._mine import request
from kestro.spark import mine

_DESCRIPTION = """\
Mine the transaction files of a path or a glob on Spark, and write what was found
as kestro writes it: NAME.fp, and with --tids and --parents NAME.tid and NAME.pc.
"""
_EPILOG = """\
examples:
  python -m kestro.spark examples/molecules.txt -s 20% -o found --master 'local[2]'
  spark-submit --master spark://host:7077 mine.py 'hdfs:///graphs/*.gz' -s 2% -o found

where mine.py holds: from kestro.spark.__main__ import main; main()
"""


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="python -m kestro.spark",
        description=_DESCRIPTION,
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument(
        "source", help="a path or a glob, on any file system of Spark's"
    )
    parser.add_argument(
        "-s",
        "--support",
        required=True,
        type=_support,
        help="minimum support: 17 graphs, 5%%, or 0.05 of them",
    )
    parser.add_argument("--min-size", type=int, default=1, help="edges")
    parser.add_argument("--max-size", type=int, help="edges")
    parser.add_argument(
        "--shards", type=int, help="how many; usually Spark's own guess"
    )
    parser.add_argument(
        "--min-local-support",
        type=int,
        default=30,
        help="fewer shards rather than a local minimum support below this (30)",
    )
    parser.add_argument("--tids", action="store_true", help="write TIDs, too")
    parser.add_argument("--parents", action="store_true", help="write parents, too")
    parser.add_argument(
        "-o", "--output-dir", required=True, help="a folder of the driver's"
    )
    parser.add_argument("--name", default="patterns", help="of the files (patterns)")
    parser.add_argument("--master", help="what spark-submit sets otherwise")
    return parser


def _support(text: str) -> int | float | str:
    try:
        number: int | float | str = text
        if not text.endswith("%"):
            number = float(text) if set(text) & set(".e") else int(text)
        request(min_support=number)
    except (TypeError, ValueError) as e:
        raise argparse.ArgumentTypeError(str(e)) from None
    return number


def main(arguments: list[str] | None = None) -> None:
    """Run the command; end the process with 1 where it fails."""
    args = _parser().parse_args(arguments)
    logging.basicConfig(format="%(message)s", level=logging.WARNING)
    logging.getLogger("kestro").setLevel(logging.INFO)
    if args.master and args.master.startswith("local"):
        # Workers are this machine's: the interpreter that has the package.
        os.environ.setdefault("PYSPARK_PYTHON", sys.executable)
    from pyspark.sql import SparkSession

    folder = Path(args.output_dir)
    try:
        folder.mkdir(parents=True, exist_ok=True)
        # Now, rather than when all is done.
        with tempfile.TemporaryFile(dir=folder):
            pass
    except OSError as e:
        sys.exit(f"kestro.spark: {e}")
    builder = SparkSession.builder.appName("kestro")
    if args.master:
        builder = builder.master(args.master)
    spark = builder.getOrCreate()
    try:
        result = mine(
            args.source,
            spark,
            min_support=args.support,
            min_size=args.min_size,
            max_size=args.max_size,
            shards=args.shards,
            min_local_support=args.min_local_support,
            tids=args.tids,
        )
        result.write(folder, args.name, tids=args.tids, parents=args.parents)
        print(result)
    except KeyboardInterrupt:
        sys.exit(128 + signal.SIGINT)
    except (KestroError, OSError, ValueError) as e:
        sys.exit(f"kestro.spark: {e}")
    finally:
        spark.stop()


if __name__ == "__main__":
    main()
