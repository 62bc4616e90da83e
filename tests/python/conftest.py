"""What the tests of the module share."""

import os
import shutil
from pathlib import Path

import pytest

SOURCE = Path(os.environ["STMDCM_SOURCE"])
BUILD = Path(os.environ["STMDCM_BUILD"])
# The sanitizers' run time is for what imports the module; programs with one of their own don't take it.
PRELOAD = os.environ.pop("LD_PRELOAD", "")
TOOL = BUILD / "bin" / "stmdcm"


def fill(folder):
    """The captures of the examples, and the inputs of all tests."""
    folder.mkdir(exist_ok=True)
    for file in (SOURCE / "tests" / "data").iterdir():
        shutil.copy(file, folder)
    shutil.copy(SOURCE / "tool" / "data" / "full.tdf", folder / "run7.tdf")
    shutil.copy(SOURCE / "tests" / "data" / "torn-payload.tdf", folder / "torn.tdf")
    return folder


@pytest.fixture
def captures(tmp_path, monkeypatch):
    """A folder of its own with them, which is the working directory."""
    monkeypatch.chdir(fill(tmp_path / "captures"))
    return Path.cwd()
