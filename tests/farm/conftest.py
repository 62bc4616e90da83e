"""A farm of captures, what the command tells of each, and runs of the farm over them."""

import json
import os
import subprocess
import sys
import time

import pytest
from stmdcm.farm.results import documents
from stmdcm.farm.rows import name_of

BUILD = os.environ["STMDCM_BUILD"]
COUNT = 300
START = "import sys; from stmdcm.farm.command import main; sys.exit(main(sys.argv[2:], sys.argv[1] or None))"
ALL = ["--name", "*.tdf", "--name", "*.dcm"]


def tool(*arguments, names):
    listed = b"".join(name + b"\0" for name in names)
    run = subprocess.run([f"{BUILD}/bin/stmdcm", *arguments, "--json", "--files-from", "-", "-0"], input=listed, capture_output=True)
    return [json.loads(line) for line in run.stdout.splitlines()]


@pytest.fixture(scope="session")
def captures(tmp_path_factory):
    folder = str(tmp_path_factory.mktemp("farm") / "captures")
    subprocess.run([f"{BUILD}/bin/make_captures", folder, str(COUNT)], check=True)
    return folder


@pytest.fixture(scope="session")
def expected(captures):
    """By name: the document of `stmdcm check --json`."""
    names = [os.path.join(place, file) for place, _, files in os.walk(captures.encode()) for file in files]
    told = {name_of(document): document for document in tool("check", names=[n for n in names if not n.endswith(b".out")])}
    assert len(told) == COUNT
    return told


class Farm:
    def __init__(self, captures, out):
        self.captures, self.out = captures, str(out)

    def start(self, *more, what="check", reader="", **options):
        workers = [] if "--scheduler" in more else ["-j", "2"]
        arguments = [what, self.captures, "-o", self.out, *ALL, *workers, *more]
        return subprocess.Popen([sys.executable, "-c", START, reader, *arguments], stderr=subprocess.PIPE, text=True,
                                start_new_session=True, **options)

    def run(self, *more, **options):
        process = self.start(*more, **options)
        said = process.communicate(timeout=120)[1]
        return process.returncode, said

    def wait_for_lines(self, process, number):
        while process.poll() is None and self.lines() < number:
            time.sleep(0.005)

    def lines(self):
        try:
            with open(self.out, "rb") as file:
                return file.read().count(b"\n")
        except FileNotFoundError:
            return 0

    def documents(self):
        """By name, without the summary: each once."""
        found = list(documents(self.out))
        told = {name_of(document): {k: v for k, v in document.items() if k != "summary"} for document in found}
        assert len(told) == len(found)
        return told


@pytest.fixture
def farm(captures, tmp_path):
    return Farm(captures, tmp_path / "out.jsonl")
