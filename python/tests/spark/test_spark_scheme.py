"""Mining in parts, by processes of this machine, against mining at once."""

import random
from itertools import combinations

import kestro
import numpy as np
import pytest
from kestro._mine import request
from kestro._native import Arrays
from kestro._summary import describe
from kestro.spark import (
    __main__,
    _blocks,
    _keys,
    _memory,
    _reading,
    _scheme,
    _session,
    _tasks,
    _watching,
)
from kestro.spark._plan import grown, make_plan
from kestro.spark._pool import PoolEngine
from kestro.spark._run import Division, run
from kestro.spark._tasks import Caps

ARRAYS = (
    "level_sizes",
    "level_ends",
    "vertex_offsets",
    "vertex_labels",
    "edges",
    "edge_labels",
    "tid_offsets",
    "tids",
    "parent_offsets",
    "parents",
    "order_dependent",
)


def in_parts(paths, shards, *, caps=None, n_jobs=1, with_tids=True, **wanted):
    division = Division(shards, 1, Caps() if caps is None else caps)
    engine = PoolEngine(list(map(str, paths)), n_jobs)
    try:
        return run(engine, request(**wanted), division, with_tids=with_tids)
    finally:
        engine.close()


def same(found, expected, db):
    ours, theirs = found._patterns, expected._patterns
    for name in ARRAYS:
        assert np.array_equal(ours._packed[name], theirs._packed[name]), name
    assert np.array_equal(ours.support, theirs.support)
    assert ours.vertex_table == theirs.vertex_table
    assert ours.edge_table == theirs.edge_table
    for name in ("candidates", "frequent", "order_dependent", "ending", "last_size"):
        assert getattr(ours.summary, name) == getattr(theirs.summary, name), name
    assert ours.summary.described == describe(db)


def random_graph(draw):
    kind = draw.randrange(4)
    n = draw.randrange(1, 7)
    if kind == 0:  # a ring or a complete graph, of labels that are all alike
        n = max(n, 3)
        ring = [(i, (i + 1) % n) for i in range(n)]
        pairs = ring if draw.random() < 0.5 else list(combinations(range(n), 2))
        return ["C"] * n, pairs, ["s"] * len(pairs)
    pairs = [p for p in combinations(range(n), 2) if draw.random() < 0.4]
    labels = ["C", "N", "é"][: draw.randrange(1, 4)]
    return (
        [draw.choice(labels) for _ in range(n)],
        pairs,
        [draw.choice("sd") for _ in pairs],
    )


def random_database(draw):
    graphs = [random_graph(draw) for _ in range(draw.randrange(1, 25))]
    return kestro.from_edges(
        [g[0] for g in graphs],
        [g[1] for g in graphs],
        [g[2] for g in graphs],
    )


@pytest.mark.parametrize("shards", [1, 2, 3, 7, 16])
def test_random_databases(shards, tmp_path):
    draw = random.Random(shards)
    for _ in range(8):
        db = random_database(draw)
        path = tmp_path / "graphs.txt"
        db.to_transactions(path)
        # As it is read: labels of a file are those of its lines.
        db = kestro.read_transactions(path)
        wanted = {"min_support": draw.randrange(1, 5), "max_size": 5}
        same(in_parts([path], shards, **wanted), kestro.mine(db, **wanted), db)


@pytest.mark.parametrize("shards", [1, 2, 5])
def test_example_and_its_files(shards, examples, molecules, tmp_path):
    path = examples / "molecules.txt"
    found = in_parts([path], shards, min_support="20%")
    expected = kestro.mine(molecules, min_support="20%")
    same(found, expected, molecules)
    for name, result in (("ours", found), ("theirs", expected)):
        (tmp_path / name).mkdir()
        result.write(tmp_path / name, "molecules", tids=True, parents=True)
    for suffix in ("fp", "tid", "pc"):
        texts = [
            [
                line
                for line in (tmp_path / name / f"molecules.{suffix}")
                .read_text()
                .splitlines()
                if "Elapsed" not in line and "CPU" not in line
            ]
            for name in ("ours", "theirs")
        ]
        assert texts[0] == texts[1]


def test_two_processes_and_several_files(molecules, tmp_path):
    for i, part in enumerate((slice(0, 7), slice(7, 8), slice(8, 60))):
        molecules[part].to_transactions(tmp_path / f"{i}.txt")
    paths = list(tmp_path.iterdir())
    expected = kestro.mine(molecules, min_support="20%")
    same(in_parts(paths, 3, min_support="20%", n_jobs=2), expected, molecules)


class Doubled(PoolEngine):
    """Every task is done twice, in processes side by side; the later one counts."""

    def _run(self, task, arguments):
        twice = [one for one in arguments for _ in range(2)]
        answers = list(super()._run(task, twice))
        self.tasks = getattr(self, "tasks", 0) + len(twice)
        return answers[1::2]


def test_tasks_that_are_delivered_twice(examples, molecules):
    engine = Doubled([str(examples / "molecules.txt")], 2)
    found = run(
        engine,
        request(min_support="20%"),
        Division(3, 1, Caps()),
        with_tids=True,
    )
    same(found, kestro.mine(molecules, min_support="20%"), molecules)
    assert engine.tasks == 2 * (1 + 3 + 3 + 3)


def test_more_graphs_than_can_be_counted(examples):
    class Endless(PoolEngine):
        def read(self, buckets):
            read = super().read(buckets)
            return read._replace(
                whole=read.whole._replace(graphs=read.whole.graphs * 2**31)
            )

    with pytest.raises(kestro.KestroError, match="2147483647 are the most"):
        run(
            Endless([str(examples / "molecules.txt")]),
            request(min_support=2),
            Division(3, 1, Caps()),
            with_tids=False,
        )


def test_filters_and_sizes(molecules, examples):
    for wanted in (
        {"min_support": 0.3, "closed": True},
        {"min_support": 18, "min_size": 3, "max_size": 4, "maximal": True},
    ):
        found = in_parts([examples / "molecules.txt"], 3, **wanted)
        expected = kestro.mine(molecules, **wanted)
        assert [p.id for p in found] == [p.id for p in expected]
        assert [p.closed for p in found] == [p.closed for p in expected]


def test_supports_without_tids(molecules, examples):
    found = in_parts([examples / "molecules.txt"], 2, min_support=12, with_tids=False)
    expected = kestro.mine(molecules, min_support=12)
    assert [p.support for p in found] == [p.support for p in expected]
    with pytest.raises(kestro.KestroError, match="TIDs are unknown"):
        found.incidence()


def test_more_than_there_are_graphs(examples):
    assert len(in_parts([examples / "molecules.txt"], 2, min_support=61)) == 0


def test_no_graphs(tmp_path):
    path = tmp_path / "none.txt"
    path.write_text("")
    found = in_parts([path], 3, min_support=1)
    assert len(found) == 0
    assert found.graphs == 0


def test_faults_have_path_and_line(tmp_path):
    path = tmp_path / "bad.txt"
    path.write_text("t # 0\nv 0 C\nv 1 C\nu 0 2 s\n")
    with pytest.raises(kestro.KestroError, match="line 4") as caught:
        in_parts([path], 2, min_support=1)
    assert caught.value.path == str(path)


def test_a_cap_ends_the_run(examples):
    with pytest.raises(kestro.KestroError, match="fewer shards"):
        in_parts(
            [examples / "molecules.txt"], 16, min_support="40%", caps=Caps(patterns=5)
        )
    with pytest.raises(kestro.KestroError, match="bytes of memory"):
        in_parts(
            [examples / "molecules.txt"], 16, min_support="40%", caps=Caps(memory=1)
        )


def test_progress_by_pass_and_shard(examples):
    told = []
    engine = PoolEngine([str(examples / "molecules.txt")])
    run(
        engine,
        request(min_support="20%"),
        Division(3, 1, Caps()),
        with_tids=True,
        callback=lambda *now: told.append(now),
    )
    passes = [now for now in told if now[0] == 0]
    assert passes == [
        (0, step, done, 3, 0)
        for step in ("mining shards", "counting in shards", "finding in shards")
        for done in (1, 2, 3)
    ]
    assert [now[0] for now in told if now[1] == "complete"] == list(range(1, 10))


def test_what_the_callback_raises_ends_the_run(examples):
    def stop(*_now):
        raise kestro.StopMining

    with pytest.raises(kestro.StopMining):
        run(
            PoolEngine([str(examples / "molecules.txt")]),
            request(min_support="20%"),
            Division(3, 1, Caps()),
            with_tids=False,
            callback=stop,
        )


def test_a_plan_tells_what_the_shards_report(examples):
    wanted, division = request(min_support="20%"), Division(3, 1, Caps())
    path = str(examples / "molecules.txt")
    plan = make_plan(PoolEngine([path]), wanted, division)
    engine = PoolEngine([path])
    run(engine, wanted, division, with_tids=False)
    reported = len(engine._reported)
    assert (plan.graphs, plan.min_support, plan.shards, plan.sampled) == (60, 12, 3, 3)
    assert plan.min_local_support == 4
    assert reported <= plan.union
    assert 0 < plan.local_patterns <= plan.union
    assert plan.memory > 1 << 20
    assert plan.capped is None
    capped = make_plan(PoolEngine([path]), wanted, Division(3, 1, Caps(patterns=5)))
    assert capped.capped == "patterns"


def test_a_plan_without_graphs(tmp_path):
    (tmp_path / "none.txt").write_text("")
    engine = PoolEngine([str(tmp_path / "none.txt")])
    plan = make_plan(engine, request(min_support=1), Division(3, 1, Caps()))
    assert (plan.graphs, plan.shards, plan.union) == (0, 0, 0)


def test_unions_grow_as_a_power_of_their_parts():
    assert grown([100, 100, 100], 300, 10) == 1000  # nothing in common
    assert grown([100, 100, 100], 100, 10) == 100  # everything
    assert grown([100, 100, 100, 100], 200, 16) == 400
    assert grown([100], 100, 10) == 100
    assert grown([], 0, 10) == 0


def test_shares_are_rounded_up_in_integers():
    assert _scheme.share(3, 10, 10) == 3
    assert _scheme.share(3, 1, 10) == 1
    assert _scheme.share(3, 4, 10) == 2
    large = 2**31 - 1
    assert _scheme.share(large, large - 1, large) == large - 1


def described(graphs, cost):
    """Return what is told of buckets with so many graphs, of that cost."""
    nothing = _blocks.Tables((), ())
    return _reading.Described(np.array(graphs), np.array(cost), 0, 0, 0, 0, nothing)


def test_shards_are_balanced_by_cost():
    whole = described([10] * 11, [100 if i == 3 else 10 for i in range(11)])
    made = _scheme.make_shards(whole, 11, 2, 1)
    assert [shard.cost for shard in made] == [100, 100]
    assert made[0].buckets == (3,)
    assert [shard.min_support for shard in made] == [1, 10]


def test_shards_are_merged_until_their_share_is_enough():
    whole = described([10] * 12, [10] * 12)
    assert len(_scheme.make_shards(whole, 60, 12, 1)) == 12
    made = _scheme.make_shards(whole, 60, 12, 15)
    assert len(made) == 4
    assert sum(shard.graphs for shard in made) == 120
    assert len(_scheme.make_shards(whole, 2, 12, 15)) == 1
    few = described([10, 0, 10, 0], [10, 0, 10, 0])
    made = _scheme.make_shards(few, 60, 12, 1)
    assert [shard.buckets for shard in made] == [(0,), (2,)]
    assert _scheme.make_shards(described([0] * 9, [0] * 9), 60, 12, 1) == []


def test_many_shards_are_made_of_many_buckets():
    number = np.arange(1 << 14)
    whole = described(1 + number % 3, 1 + number % 7)
    made = _scheme.make_shards(whole, 30_000, 1000, 60)
    assert all(shard.min_support >= 60 for shard in made)
    # Shards of equal cost hold about equally many graphs, so few less would do.
    assert 400 < len(made) <= 500
    costs = [shard.cost for shard in made]
    assert max(costs) - min(costs) <= 7
    assert sorted(b for shard in made for b in shard.buckets) == list(range(1 << 14))


def test_a_giant_does_not_make_few_shards_of_many():
    tally = _reading.Tally(256)
    edges = np.full(400, 30)
    for bucket in range(256):
        edges[0] = 100_000 if bucket == 7 else 30
        nothing = np.zeros(0, np.int32)
        arrays = Arrays(edges, edges, nothing, nothing, nothing, [], [])
        tally.add(bucket, _blocks.Block(("a",), np.arange(400), arrays))
    made = _scheme.make_shards(tally.described(), 2048, 32, 30)
    assert len(made) == 32
    assert min(shard.graphs for shard in made) > 2800


def test_few_shards_are_found_among_many():
    draw = np.random.default_rng(1)
    whole = described([60] * (1 << 14), draw.lognormal(3, 1, 1 << 14).astype(int))
    made = _scheme.make_shards(whole, 49_152, 2000, 90)
    assert all(shard.min_support >= 90 for shard in made)
    assert len(made) > 300


def test_memory_is_scarce_below_a_sixteenth(tmp_path):
    machine, group = tmp_path / "meminfo", tmp_path / "group"
    machine.write_text("MemTotal: 1600 kB\nMemFree: 1 kB\nMemAvailable: 100 kB\n")
    assert not _memory.is_memory_scarce(machine, group)
    group.mkdir()
    (group / "memory.max").write_text("max\n")
    assert not _memory.is_memory_scarce(machine, group)
    (group / "memory.max").write_text("1600\n")
    (group / "memory.current").write_text("1550\n")
    (group / "memory.stat").write_text("anon 3\ninactive_file 60\n")
    assert not _memory.is_memory_scarce(machine, group)
    (group / "memory.stat").write_text("anon 3\ninactive_file 40\n")
    assert _memory.is_memory_scarce(machine, group)
    machine.write_text("MemTotal: 1600 kB\nMemAvailable: 99 kB\n")
    assert _memory.is_memory_scarce(machine, tmp_path / "none")
    assert not _memory.is_memory_scarce(tmp_path / "none", tmp_path / "none")
    assert _memory.resident_bytes() > 1 << 20


def test_the_end_of_the_machine_s_memory_ends_the_run(examples, monkeypatch):
    monkeypatch.setattr(_tasks, "is_memory_scarce", lambda: True)
    with pytest.raises(kestro.KestroError, match="end of its machine's memory"):
        in_parts([examples / "molecules.txt"], 2, min_support="20%")


def test_rows_that_were_made_again_in_vain_are_refused():
    _scheme.refuse_lost([b"some", b"keys"])
    with pytest.raises(kestro.KestroError, match="were lost"):
        _scheme.refuse_lost([b"some", _scheme.CAPPED])


def test_stages_of_a_task_for_each_shard_tell_how_far_a_pass_is():
    told = []
    teller = _watching._Teller(lambda *now: told.append(now), 3)
    teller.stages([(5, 9), (1, 3)])
    teller.stages([(9, 9)])
    teller.stages([(1, 3)])
    teller.tell(3)
    assert told == [(1, 3), (3, 3)]


def test_an_interrupt_comes_out_of_spark_as_one():
    with pytest.raises(KeyboardInterrupt), _session.sparks_errors():
        try:
            raise KeyboardInterrupt
        finally:
            raise RuntimeError("o76.getResult")
    for text, told in (
        ("ModuleNotFoundError: No module named 'kestro.spark'", "PYSPARK_PYTHON"),
        ("ImportError: this needs RDKit: ...", "lacks RDKit"),
    ):
        with pytest.raises(kestro.KestroError, match=told), _session.sparks_errors():
            raise RuntimeError(text)

    def fail():
        raise RuntimeError("another")

    try:
        raise KeyboardInterrupt  # of the caller's own, which is handled
    except KeyboardInterrupt:
        with pytest.raises(RuntimeError, match="another"), _session.sparks_errors():
            fail()


@pytest.mark.parametrize("text", ["5%", "0.05", "1e-2", "17"])
def test_the_command_takes_supports(text):
    args = __main__._parser().parse_args(["graphs.txt", "-s", text, "-o", "found"])
    assert str(args.support) == {"1e-2": "0.01"}.get(text, text)


@pytest.mark.parametrize("text", ["0.5.5", "abc%", "many", "1.5"])
def test_the_command_refuses_supports(text, capsys):
    with pytest.raises(SystemExit):
        __main__._parser().parse_args(["graphs.txt", "-s", text, "-o", "found"])
    assert "argument -s/--support" in capsys.readouterr().err


def test_blocks_come_back_from_bytes(molecules):
    block = _reading.block_of(
        molecules, tuple(f"\udce9{i}" for i in range(60)), np.arange(60) - 30
    )
    again = _blocks.Block.from_bytes(block.to_bytes())
    assert again.sources == block.sources
    assert again.numbers.tolist() == block.numbers.tolist()
    assert again.tables == block.tables
    rebuilt = _blocks.database_of([again], block.tables)
    theirs = molecules._native.to_arrays()
    for name, array in rebuilt.to_arrays().items():
        assert np.array_equal(array, theirs[name])


def test_buckets_hold_each_graph_once(molecules):
    block = _reading.block_of(molecules, ("a",), np.arange(60))
    parts = dict(_blocks.into_buckets(block, 7))
    assert sorted(n for part in parts.values() for n in part.numbers) == list(range(60))
    for bucket, part in parts.items():
        assert {_blocks.bucket_of("a", n, 7) for n in part.numbers.tolist()} == {bucket}


@pytest.mark.parametrize("labels", [9, 2**16 + 1])
def test_keys_come_back(molecules, labels):
    found = kestro.mine(molecules, min_support=12)._patterns._packed
    tables = _blocks.Tables(tuple(map(str, range(labels))), ())
    packed = _keys.packed_of(found, tables)
    keys = _keys.keys_of(packed)
    assert len(set(keys)) == len(keys)
    width = 2 if labels < 2**16 else 4
    assert len(keys[0]) == width * (1 + 2 + 3)
    for ours, theirs in zip(_keys.patterns_of(keys, tables), packed, strict=True):
        assert np.array_equal(ours, theirs)
