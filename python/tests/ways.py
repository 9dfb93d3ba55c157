"""Ways of results through files, for several tests."""

import kestro
import pytest


def rows(result):
    return [
        (
            p.id,
            p.support,
            p.graph.lines(),
            p.tids.tolist(),
            p.parents,
            p.children,
            p.closed,
            p.maximal,
        )
        for p in result
    ]


def contents(folder):
    return {file.name: file.read_bytes() for file in folder.iterdir()}


def through_files(result, folder, db=None):
    result.write(folder, "p")
    return kestro.read_result(folder / "p.fp", db)


def through_json(result, folder, db=None):
    result.to_jsonl(folder / "p.jsonl")
    return kestro.read_result(folder / "p.jsonl", db)


WAYS = pytest.mark.parametrize("way", [through_files, through_json])
