"""The farm as people run it: whole processes, killed and stopped on the way."""

import csv
import os
import random
import re
import resource
import signal
import subprocess
import sys
import urllib.parse

import psutil
import pytest
from conftest import BUILD, COUNT, Farm, tool
from readers import POISON
from stmdcm.farm import reading, report
from stmdcm.farm.errors import FarmError
from stmdcm.farm.results import documents
from stmdcm.farm.rows import name_of


def test_rows_are_what_the_command_tells(farm, expected, tmp_path):
    status, said = farm.run()
    assert status == 4 and f"{COUNT} captures" in said
    assert farm.documents() == expected
    summaries = {name_of(document): document["summary"] for document in documents(farm.out)}
    shown = tool("show", "--changed", "--use-cases", "--objects", names=summaries)
    assert sum("configuration" in show for show in shown) > COUNT / 2
    for show in shown:
        if "configuration" in show and "bytes" not in show:
            summary, held = summaries[show["file"].encode()], show["configuration"]
            assert summary["properties"] == held["properties"]
            assert summary["use_cases"] == (held["use_cases"] and {k: len(found) for k, found in held["use_cases"].items()})
            assert summary["object_files"] == (held["object_files"] if held["object_files"] is None else len(held["object_files"]))

    before = os.stat(farm.out)
    assert farm.run()[0] == 4 and os.stat(farm.out).st_size == before.st_size  # nothing is left to do
    table = str(tmp_path / "table.csv")
    again = Farm(farm.out, table)
    assert again.run(what="table")[0] == 4
    with open(table, newline="", encoding="utf-8") as file:
        lines = {bytes.fromhex(line["path_bytes"]) or line["path"].encode(): line for line in csv.DictReader(file)}
    words = {"ok": 0, "problems": 1, "unreadable": 4}
    for name, document in expected.items():
        line, told = lines.pop(name), document["files"][0]
        assert (line["verdict"], line["errors"]) == (told["verdict"], str(told["errors"]))
        assert (words[line["status"]] > 0) == document["problems"]
    assert not lines
    assert again.run(what="table")[0] == 1  # there is one


def test_what_is_refused_leaves_no_file(captures, tmp_path):
    empty = tmp_path / "empty"
    empty.mkdir()
    for source, more, expected_status, words in (
        (captures, ["-o", "-"], 2, "name a file"),
        (captures, ["--scheduler", "lab1"], 1, "write it as tcp://HOST:PORT"),
        (captures, ["--scheduler", "none.invalid:1"], 1, "no scheduler at none.invalid:1: "),
        (captures, ["--scheduler", "tls://127.0.0.1:1"], 1, "certificates"),
        (captures + "/none", [], 4, "No such file"),
        (str(empty), [], 1, "there are no captures"),
    ):
        status, said = Farm(source, tmp_path / "out").run(*more)
        assert (status, os.listdir(tmp_path)) == (expected_status, ["empty"]) and words in said, said


def test_a_report_is_the_page_of_the_command(captures, expected, tmp_path, monkeypatch):
    def blocks(page):
        with open(page, "rb") as file:
            return re.findall(rb'<script type="application/json" class="capture">.*?</noscript>', file.read(), re.DOTALL)

    names = sorted(expected)
    made = tmp_path / "made.html"
    command = [f"{BUILD}/bin/stmdcm", "report", "--files-from", "-", "-0", "-o", str(made)]
    subprocess.run(command, input=b"".join(name + b"\0" for name in names), stderr=subprocess.DEVNULL)
    whole = Farm(captures, tmp_path / "whole.html")
    assert whole.run(what="report")[0] == 4
    assert blocks(whole.out) == blocks(made) and len(blocks(made)) == COUNT

    monkeypatch.setattr(report, "CAPTURES_A_PAGE", 100)
    rows, front = tmp_path / "rows", str(tmp_path / "odd <name>.html")
    rows.write_bytes(b"".join(reading.page_row(name).line for name in reversed(names)))
    assert report.write_report(str(rows), front, False) == 4
    parts = report.part_names(front, COUNT)
    assert sum(map(blocks, parts), []) == blocks(made) and len(parts) == 3
    with open(front, encoding="utf-8") as file:
        text = file.read()
    links = [urllib.parse.unquote(link) for link in re.findall('href="([^"]*)"', text)]
    assert links == [os.path.basename(part) for part in parts]
    files = [each["files"][0] for each in expected.values() if "F-UNREADABLE" not in str(each)]
    loads = sum(file["loads"] and not file["missing"] for file in files)
    counts = [[int(count) for count in re.findall('class="number">([0-9]+)', line)] for line in text.split("\n")]
    assert [sum(column) for column in zip(*filter(None, counts))][2:4] == [COUNT - len(files), loads]
    with pytest.raises(FarmError, match="--force"):
        report.write_report(str(rows), front, False)
    other = front.replace(".html", "-0009.html")
    os.link(parts[0], other)
    for pages in (2, 1):
        monkeypatch.setattr(report, "CAPTURES_A_PAGE", COUNT // pages)
        report.write_report(str(rows), front, True)
        assert [part for part in [*parts, other] if os.path.exists(part)] == [*(parts[:2] if pages == 2 else []), other]


def test_a_worker_that_dies_costs_no_result(farm, expected):
    process = farm.start(reader="readers:dying")
    farm.wait_for_lines(process, 40)
    workers = [child for child in psutil.Process(process.pid).children(recursive=True) if "spawn_main" in " ".join(child.cmdline())]
    workers[0].kill()
    said = process.communicate(timeout=120)[1]
    assert process.returncode == 4, said
    found = farm.documents()
    (poison,) = [name for name in expected if POISON in name]
    assert "signal 11" in found.pop(poison)["failure"]["cause"]
    assert found == {name: document for name, document in expected.items() if name != poison}


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (20000, resource.RLIM_INFINITY))


def test_what_ends_in_the_midst_goes_on_behind_what_is_there(farm, expected):
    status, said = farm.run(reader="readers:slow", preexec_fn=limit_files)
    assert status == 1 and "File too large" in said and farm.out in said
    signals = [signal.SIGKILL, signal.SIGINT, signal.SIGTERM, signal.SIGKILL]
    for number in signals:
        process = farm.start(reader="readers:slow")
        farm.wait_for_lines(process, farm.lines() + 1 + random.randrange(40))
        assert 0 < farm.lines() <= len(farm.documents())
        children = psutil.Process(process.pid).children(recursive=True)
        os.killpg(process.pid, number)
        said = process.communicate(timeout=60)[1]
        assert process.returncode == (-number if number == signal.SIGKILL else 128 + number)
        assert (number == signal.SIGKILL) or "the same command goes on" in said
        assert not psutil.wait_procs(children, timeout=30)[1]
        with open(farm.out, "ab") as file:
            file.write(b'{"schema":1,"command":"check","files":[{"pa')  # a loss of power
    assert farm.run()[0] == 4
    assert farm.documents() == expected


def test_a_labs_cluster(farm, expected, tmp_path):
    def start(*arguments):
        return subprocess.Popen([sys.executable, "-m", *arguments], cwd=tmp_path, stderr=subprocess.DEVNULL)

    port = str(random.randrange(20000, 30000))
    address = f"tcp://127.0.0.1:{port}"
    own = ["--no-dashboard", "--host", "127.0.0.1"]
    cluster = [start("distributed.cli.dask_scheduler", "--port", port, *own),
               start("distributed.cli.dask_worker", address, "--nworkers", "2", "--nthreads", "1", *own)]
    try:
        process = farm.start("--scheduler", address, reader="readers:slow")
        farm.wait_for_lines(process, 50)
        cluster[0].kill()
        said = process.communicate(timeout=60)[1]
        assert process.returncode == 1 and "the scheduler is gone" in said, said
    finally:
        for each in cluster:
            each.kill()
            each.wait()
    assert farm.run()[0] == 4
    assert farm.documents() == expected
