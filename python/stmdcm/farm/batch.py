"""What a worker does: a batch of captures, one by one."""

from __future__ import annotations

import importlib
import socket
import subprocess
import sys
import time
from typing import Callable, Dict, List, NamedTuple, Sequence

from stmdcm.farm.reading import failure, version
from stmdcm.farm.rows import Row

Reader = Callable[[bytes], Row]

READER = "stmdcm.farm.reading:row"
READY = b"ready"  # a process says so before it reads the first


class BatchResult(NamedTuple):
    lines: bytes
    statuses: Dict[int, int]  # how many captures ended with each
    seconds: float


def load_reader(reference: str) -> Reader:
    """The function `module:name`, which gives a capture's row."""
    module, _, name = reference.partition(":")
    reader: Reader = getattr(importlib.import_module(module), name)
    return reader


def _result(rows: Sequence[Row], seconds: float) -> BatchResult:
    statuses: Dict[int, int] = {}
    for row in rows:
        statuses[row.status] = statuses.get(row.status, 0) + 1
    return BatchResult(b"".join(row.line for row in rows), statuses, seconds)


def require_version(wanted: str) -> None:
    """Rows of one file come from one version, or they could not be compared."""
    if version() != wanted:
        raise RuntimeError(f"{socket.gethostname()} has stmdcm {version()}, and the command is of {wanted}")


def read_batch(names: Sequence[bytes], reference: str, wanted: str) -> BatchResult:
    require_version(wanted)
    reader = load_reader(reference)
    begin = time.perf_counter()
    rows = [reader(name) for name in names]
    return _result(rows, time.perf_counter() - begin)


def read_apart(names: Sequence[bytes], reference: str, wanted: str) -> BatchResult:
    """The same in a process of its own, and another one behind each capture that ended it, which has a row that says so."""
    require_version(wanted)
    begin = time.perf_counter()
    rows: List[Row] = []
    while len(rows) < len(names):
        rest = names[len(rows) :]
        done, ending = _read_in_child(rest, reference)
        rows += done
        if len(done) < len(rest):
            cause = f"the process that read it {ending}; it was given up, and the others were read"
            rows.append(failure(rest[len(done)], cause))
    return _result(rows, time.perf_counter() - begin)


def _read_in_child(names: Sequence[bytes], reference: str) -> "tuple[List[Row], str]":
    child = subprocess.run(
        [sys.executable, "-m", "stmdcm.farm.apart", reference],
        input=b"".join(b"%d\n%b" % (len(name), name) for name in names),
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        check=False,
    )
    ready, *lines = child.stdout.split(b"\n")
    if ready != READY:
        raise RuntimeError(f"a process for {reference} ended with status {child.returncode} before it read anything")
    lines.pop()  # empty, or torn: that of the capture that ended the process
    rows = [Row(line[1:] + b"\n", int(line[:1])) for line in lines]
    status = child.returncode
    return rows, f"was ended by signal {-status}" if status < 0 else f"ended with status {status}"


def dead_row(name: bytes) -> BatchResult:
    """Of a capture on which every worker died that was to read it."""
    return _result([failure(name, "each worker that was to read it died; it was given up")], 0.0)
