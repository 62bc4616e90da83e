"""What needs no workers: the names, and the file of results."""

import os
import resource

import pytest
from stmdcm.farm import reading
from stmdcm.farm.errors import FarmError
from stmdcm.farm.names import Once, Sources
from stmdcm.farm.progress import Progress
from stmdcm.farm.results import Results, documents
from stmdcm.farm.rows import name_of


def refuse(sentence):
    raise AssertionError(sentence)


def names_of(*sources, zero=False, tell=refuse):
    return list(Sources([str(source) for source in sources], ["*.tdf"], zero, tell))


def test_names_are_those_of_the_folders_and_lists(tmp_path):
    here, odd = os.fsencode(tmp_path), [b"a\xff.tdf", b"\n.TDF", b"=.tdf", b"-.tdf", b"z/y.tdf", b"m/n/deep.tdf"]
    for name in odd + [b"other.txt", b"m/.hidden.tdf"]:
        os.makedirs(os.path.dirname(os.path.join(here, name)), exist_ok=True)
        open(os.path.join(here, name), "wb").close()
    os.symlink(tmp_path, tmp_path / "loop.tdf.d")
    wanted = sorted(os.path.join(here, name) for name in odd + [b"m/.hidden.tdf"])
    assert names_of(tmp_path) == wanted
    listed = tmp_path / "list"
    for end, chosen in ((b"\0", wanted), (b"\n", [name for name in wanted if b"\n" not in name])):
        for last in (end, b""):
            listed.write_bytes(end.join(chosen + chosen) + last)
            assert list(Once().of(iter(names_of(listed, tmp_path / "z", zero=end == b"\0")))) == chosen
    listed.write_bytes(b"x" * 1000000 + b"\n./b\n\nc")
    long, *rest = names_of(listed)
    assert len(long) < 200000 and rest == [os.path.join(os.getcwdb(), name) for name in (b"b", b"c")]
    for wrong in (b"TDF2abc", reading.row(b"/none").line):
        listed.write_bytes(wrong)
        with pytest.raises(FarmError):
            names_of(listed)


def test_progress_tells_a_rate_and_the_time_left():
    progress = Progress(100, None)
    assert progress.line(300, 10.0) == "300 captures, 20/s"
    progress.all = 7600
    assert progress.line(400, 10.0) == "5% (400 of 7,600 captures), 30/s, 4 min 0 s left"


def rows():
    return [reading.row(name) for name in (b"/none.tdf", b"/a\xff\n.tdf", b"/" + b"n" * 5000, b"/zero\0.tdf")]


def test_results_are_whole_lines_wherever_they_end(tmp_path):
    lines = [row.line for row in rows()]
    path = str(tmp_path / "out.jsonl")
    ends = [sum(map(len, lines[:i])) for i in range(len(lines) + 1)]
    for end in sorted({*range(0, ends[-1], 41), *ends, *(at - 1 for at in ends[1:]), *(at + 1 for at in ends[:-1])}):
        with open(path, "wb") as file:
            file.write(b"".join(lines)[:end])
        results, once = Results(path), Once()
        results.take_known(once)
        whole = sum(end >= at for at in ends[1:])
        assert results.number == whole == len(once)
        assert [once.take(name_of(document)) for document in documents(path)] == [False] * whole
        results.append(b"".join(lines[whole:]), {})
        results.close()
        with open(path, "rb") as file:
            assert file.read() == b"".join(lines)


def test_a_full_disk_leaves_whole_lines(tmp_path):
    lines = b"".join(row.line for row in rows())
    results = Results(str(tmp_path / "out.jsonl"))
    with pytest.raises(FarmError, match="another farm is writing"):
        Results(results.path)
    results.append(lines, {4: 4})
    soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
    for room in (0, 1, len(lines) - 1):
        resource.setrlimit(resource.RLIMIT_FSIZE, (len(lines) + room, hard))
        try:
            with pytest.raises(FarmError, match="out.jsonl: .*File too large"):
                results.append(lines, {4: 4})
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
        assert os.path.getsize(results.path) == len(lines) and results.number == 4


def test_what_is_no_file_of_results_is_left_alone(tmp_path):
    good = rows()[0].line
    for content in (b"TDF2", b"\n", b"text\n", b"{}", good[:-9] + b"\n" + good, b'{"schema":1,"command":"check","files":[]}\n'):
        path = tmp_path / "out.jsonl"
        path.write_bytes(content)
        with pytest.raises(FarmError, match="out.jsonl"):
            Results(str(path)).take_known(Once())
        assert path.read_bytes() == content
