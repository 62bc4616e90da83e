"""The module in somebody's program: its examples, types, threads, interrupts, and whatever it is given."""

import doctest
import fcntl
import importlib.util
import itertools
import os
import pickle
import re
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest
from conftest import BUILD, PRELOAD, SOURCE

import stmdcm

pandas = pytest.importorskip("pandas")
PAGE = (SOURCE / "docs" / "python.md").read_text()
DOCTEST = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE


def examples():
    """Of every function, exception and attribute, and the page's."""
    texts = {name: getattr(stmdcm, name).__doc__ for name in sorted(stmdcm.__all__)}
    texts.update((f"Reading.{name}", item.__doc__) for name, item in vars(stmdcm.Reading).items() if name[0] != "_")
    for name, text in {**texts, "docs/python.md": PAGE}.items():
        globals_ = {} if text is PAGE else {"stmdcm": stmdcm}
        example = doctest.DocTestParser().get_doctest(text, globals_, name, None, 0)
        if example.examples:
            yield example
        else:
            assert issubclass(getattr(stmdcm, name), tuple), f"{name} has no example"


@pytest.mark.parametrize("example", examples(), ids=lambda example: example.name)
def test_examples(captures, example):
    assert doctest.DocTestRunner(optionflags=DOCTEST).run(example).failed == 0


def outcome_of_blocks():
    """What the shell's block of each page ends with, and what it then has said or made."""
    yield "python.md", 0, "loads"
    yield "report.md", 0, "run7.html"
    if importlib.util.find_spec("distributed") and importlib.util.find_spec("cryptography") and not PRELOAD:
        yield "farm.md", 4, "results.jsonl"


@pytest.mark.parametrize("page, status, outcome", outcome_of_blocks())
def test_pages(tmp_path, page, status, outcome):
    for part in ("scripts", "tool", "tests"):
        (tmp_path / part).symlink_to(SOURCE / part)
    (tmp_path / "build").mkdir()
    (tmp_path / "build" / "release").symlink_to(BUILD)
    block = re.search(r"```sh\n(.*?)```", (SOURCE / "docs" / page).read_text(), re.DOTALL)[1]
    shell = "cmake() { :; }\n" + block  # this build is there already
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    environment["LD_PRELOAD"] = PRELOAD if "python3" in block else ""  # of Python alone: the command has its own
    done = subprocess.run(["bash", "-euc", shell], cwd=tmp_path, env=environment, capture_output=True, text=True)
    assert done.returncode == status, done.stderr
    assert done.stdout.startswith(outcome) or (tmp_path / outcome).stat().st_size > 0


def test_types(tmp_path):
    pytest.importorskip("mypy")
    def run(*words):
        environment = os.environ | {"LD_PRELOAD": PRELOAD}
        return subprocess.run(
            [sys.executable, "-m", *words], cwd=tmp_path, env=environment, capture_output=True, text=True, check=False
        )

    for words in (["mypy", "--strict", "-p", "stmdcm"], ["mypy.stubtest", "stmdcm._stmdcm"]):
        done = run(*words)
        assert done.returncode == 0, done.stdout + done.stderr
    right = """import pathlib, stmdcm
run = stmdcm.read(pathlib.Path("run7.tdf"))
clock: int = run.properties["STM_DTC_target_clock_hz"]
names: list[str] = [image.path for image in run.images] + [case.name for case in run.use_cases.sc]
document = stmdcm.set(b"run7.tdf", "STM_ATB_Id=1", dry_run=True, STM_data_flip=True)
"""
    wrong = ["run.loads = False", "stmdcm.read(7)", "run.properties[1]", "stmdcm.restore('run7.tdf', None)"]
    (tmp_path / "program.py").write_text(right)
    (tmp_path / "wrong.py").write_text("\n".join([right, *wrong]))
    assert run("mypy", "--strict", "program.py").returncode == 0
    assert f"Found {len(wrong)} errors" in run("mypy", "--strict", "wrong.py").stdout


@pytest.mark.parametrize("make", [str, os.fsencode, Path, os.DirEntry], ids=lambda kind: kind.__name__)
def test_takes_every_kind_of_path(captures, make):
    name = os.fsdecode(b"na\xefve\xff.tdf")
    (captures / "run7.tdf").rename(name)
    path = next(each for each in os.scandir() if each.name == name) if make is os.DirEntry else make(name)
    assert os.path.basename(stmdcm.read(path).path) == name
    assert stmdcm.set(path, STM_ATB_Id=9)["written"]
    assert stmdcm.recover(path, plan=True)["good"]
    rows = list(stmdcm.rows([path, "none.tdf"]))
    assert rows[0]["STM_ATB_Id"] == 9 and rows[0]["file"] == os.fsdecode(path)
    assert "no such file" in rows[1]["failure"] and pandas.DataFrame(rows).shape[0] == 2


ODD = [None, 3, 1.5, [], object(), {"run7.tdf"}, float("nan"), b"\0", "a\0b", "", "\ud800", "x" * 5000, 2**70, -1, True]


def test_whatever_it_is_given_is_refused(captures):
    before = {path: path.read_bytes() for path in captures.iterdir()}
    calls = [
        *(lambda odd, call=getattr(stmdcm, name): call(odd) for name in ("read", "check", "history")),
        lambda odd: stmdcm.diff("run7.tdf", odd),
        lambda odd: stmdcm.apply(odd, "full.tdf"),
        lambda odd: stmdcm.restore("run7.tdf", odd if odd not in (3, True) else 99),
        lambda odd: stmdcm.recover(odd, plan=True),
        lambda odd: stmdcm.recover("torn.tdf", odd),
        lambda odd: stmdcm.recover("torn.tdf", split=[odd], plan=True),
        lambda odd: stmdcm.set("run7.tdf", odd),
        lambda odd: stmdcm.set("run7.tdf", STM_data_flip=odd if odd is not True else ""),
        lambda odd: stmdcm.check("run7.tdf", severity=odd),
        lambda odd: stmdcm.check("run7.tdf", ignore=[odd]),
    ]
    for call, odd in itertools.product(calls, ODD):
        with pytest.raises((stmdcm.Error, TypeError, ValueError)):
            document = call(odd)
            assert not document["files"][0]["loads"]  # a name that no file has is told as any file that can't be read
            raise stmdcm.Error(document["files"][0]["verdict"])
    assert before == {path: path.read_bytes() for path in captures.iterdir()}


def test_errors_are_told_and_carried(captures):
    with pytest.raises(stmdcm.Error) as caught:
        stmdcm.read(b"no\xff.tdf")
    error = pickle.loads(pickle.dumps(caught.value))
    assert (error.file, error.offset) == ("no\udcff.tdf", None) and "no such file" in error.cause
    assert str(error).encode("ascii") == str(caught.value).encode()
    with pytest.raises(stmdcm.Error) as placed:
        stmdcm.set("torn-header.tdf", STM_ATB_Id=1)
    assert placed.value.offset == 833
    run = stmdcm.read("run7.tdf")
    stmdcm.set("run7.tdf", STM_ATB_Id=1)
    with pytest.raises(stmdcm.Error, match="changed since it was read"):
        _ = run.sections
    with pytest.raises(TypeError):
        run.properties["STM_ATB_Id"] = 1


def test_threads_share_files_and_readings(captures):
    shared = stmdcm.read("run7.tdf")
    names = [name for name, value in shared.defaults.items() if value is not True and value is not False]

    def work(number):
        stmdcm.set("run7.tdf", **{names[number % len(names)]: number + 100})
        stmdcm.check("torn.tdf")
        assert len(stmdcm.recover("torn.tdf", plan=True)["remarks"]) == 4
        return shared.use_cases, shared.findings, len(shared.properties), stmdcm.read("full.tdf").row()

    with ThreadPoolExecutor(8) as pool:
        results = list(pool.map(work, range(len(names))))
    assert all(result == results[0] for result in results)
    now = stmdcm.read("run7.tdf").properties
    assert [now[name] for name in names] == [number + 100 for number in range(len(names))]
    assert len(stmdcm.history("run7.tdf")["configurations"]) == len(names) + 2


def test_other_threads_run_and_an_interrupt_ends_the_wait(captures, caplog):
    large = captures / "large.txt"
    large.write_bytes(b"STM_ATB_Id = 1\n" * 2_000_000)
    count, seen = 0, []
    reader = threading.Thread(target=lambda: seen.extend([count, stmdcm.read(large).kind, count]))
    reader.start()
    while reader.is_alive():
        count += 1
        time.sleep(0.001)
    assert seen[2] - seen[0] > 5
    with open("run7.tdf", "r+b") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        threading.Timer(1.5, os.kill, (os.getpid(), signal.SIGINT)).start()
        with pytest.raises(KeyboardInterrupt):
            stmdcm.set("run7.tdf", STM_ATB_Id=1)
    assert "another program changes the file" in caplog.text
    assert stmdcm.set("run7.tdf", STM_ATB_Id=1)["written"]
