"""Captures and pages to look at, in a folder of the test's own. The layout is that of docs/tdf.md."""

import json
import os
import pathlib
import shutil
import struct
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOL = ROOT / "build/release/bin/stmdcm"
DATA = ROOT / "tests/data"


def section(name, payload, version=1):
    return struct.pack("<III", 12 + len(name) + len(payload), version, len(name)) + name + payload


def settings(text):
    """The section with the properties of a real capture, and `text` behind them."""
    properties = (DATA / "settings.txt").read_bytes().split(b"{")[0]
    return section(b"STMDECODERINFO", properties + text)


class Folder:
    """Makes captures and pages; `run` is the tool in it."""

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def run(self, *arguments, status=0):
        done = subprocess.run([TOOL, *arguments], cwd=self.path, capture_output=True, check=False)
        assert status is None or done.returncode == status, done
        return done.stdout.decode()

    def json(self, *arguments):
        return json.loads(self.run("--json", *arguments, status=None))

    def write(self, name, content):
        with open(os.fsencode(self.path) + b"/" + os.fsencode(name), "wb") as file:
            file.write(content)
        return name

    def copy(self, sample, name=None):
        shutil.copyfile(DATA / sample, self.path / (name or sample))
        return name or sample

    def changed(self, name="changed.tdf"):
        """One that was changed three times, whose images are there and pinned."""
        self.copy("full.tdf", name)
        for image in ("app0.out", "app1.out"):
            self.write(image, image.encode() * 1000)
        self.run("objects", name, "--map", f"/opt/images={self.path}", "--accept-changed", "--update", "--pin")
        for assignment in ("STM_DTC_target_clock_hz=1.25GHz", "STM_ATB_Id=42", "STM_ATB_Id=17"):
            self.run("set", name, assignment)
        return name

    def damaged(self, name="damaged.tdf"):
        """One with a part of every kind: a section over the limit of a search hides the last one, which is torn."""
        self.copy("full.tdf", name)
        self.run("set", name, "STM_ATB_Id=42")
        over = (1 << 27) + 1
        with open(self.path / name, "ab") as file:
            file.write(settings(b"") + struct.pack("<III", over, 1, 5) + b"TRACE")
            file.seek(over - 17, os.SEEK_CUR)
            file.write(section(b"TRACE", b"x" * 1000)[:-40])
        return name

    def long(self, count, name="long.tdf"):
        """With so many sections, the configuration in the midst of them."""
        traces = [section(b"TRACE%d" % i, b"x" * 20) for i in range(count - 3)]
        configuration = section(b"DEVID", b"device=board\n") + section(b"DCM_COMMON", b"") + settings(b"")
        half = len(traces) // 2
        return self.write(name, b"TDF2" + b"".join(traces[:half]) + configuration + b"".join(traces[half:]))

    def page(self, *files, name="page.html", status=0):
        self.run("report", *files, "--force", "-o", name, status=status)
        return (self.path / name).as_uri()
