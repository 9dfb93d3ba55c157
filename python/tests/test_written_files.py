"""How files of results appear, and where."""

import os
import subprocess
from concurrent.futures import ThreadPoolExecutor

import kestro
import pytest
from ways import contents


@pytest.fixture(scope="module")
def result(molecules):
    return kestro.mine(molecules, min_support="20%")


class FullError(Exception):
    pass


def test_a_file_that_is_not_whole_is_not_there(result, tmp_path, monkeypatch):
    result.write(tmp_path, "p")
    before = contents(tmp_path)
    real = os.replace

    def parents(*_):
        yield ["1-0"]
        raise FullError

    monkeypatch.setattr("kestro._patterns.Patterns.parent_names", parents)
    with pytest.raises(FullError):
        result[5:].write(tmp_path, "p")
    with pytest.raises(FullError):
        result[5:].to_jsonl(tmp_path / "q.jsonl")
    assert contents(tmp_path) == before and os.replace is real
    with pytest.raises(FileNotFoundError):
        result.write(tmp_path / "none", "p")
    for name, source in (("a\nb", None), ("a", "b\nc")):
        with pytest.raises(kestro.KestroError, match="newline"):
            result.write(tmp_path, name, source=source)
    assert contents(tmp_path) == before


def test_files_of_an_earlier_run_are_not_taken_for_this_one(molecules, tmp_path):
    for db in (molecules, molecules[::-1]):
        result = kestro.mine(db, min_support="20%")
        result.write(tmp_path, "p", tids=db is molecules, parents=db is molecules)
    assert sorted(contents(tmp_path)) == ["p.fp"]
    again = kestro.read_result(tmp_path / "p.fp", molecules[::-1])
    assert (again.incidence() != result.incidence()).nnz == 0
    with pytest.raises(kestro.KestroError, match="parents are unknown"):
        _ = again[0].parents


@pytest.mark.parametrize("name", ["a/b", "../up", "", ".", "..", "/p", "a\0b"])
def test_names_that_leave_the_folder(result, tmp_path, name):
    (tmp_path / "a").mkdir()
    folder = tmp_path / "own"
    folder.mkdir()
    before = sorted(tmp_path.rglob("*"))
    with pytest.raises(kestro.KestroError, match="name must be that of a file"):
        result.write(folder, name)
    assert sorted(tmp_path.rglob("*")) == before


def test_errors_of_writing_name_the_file(result, tmp_path):
    with pytest.raises(FileNotFoundError) as caught:
        result.write(tmp_path / "none", "p", tids=False, parents=False)
    assert caught.value.filename == str(tmp_path / "none" / "p.fp")
    with pytest.raises(FileNotFoundError) as caught:
        result.to_jsonl(tmp_path / "none" / "p.jsonl")
    assert caught.value.filename == str(tmp_path / "none" / "p.jsonl")


def test_threads_write_one_file_at_once(result, tmp_path):
    with ThreadPoolExecutor(8) as pool:
        for done in [pool.submit(result.to_jsonl, tmp_path / "p") for _ in range(64)]:
            done.result()
    assert contents(tmp_path) == {"p": result.to_jsonl().encode()}


def test_a_pipe_is_written_to_and_stays(result, tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    reader = subprocess.Popen(["cat", pipe], stdout=subprocess.PIPE)
    result.to_jsonl(pipe)
    if not pipe.is_fifo():
        reader.kill()  # who waits for a writer that will not come
    assert reader.communicate()[0].decode() == result.to_jsonl()
