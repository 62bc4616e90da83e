"""Workers on this machine, and their scheduler, in a process beside the one that asks for them.

So what a terminal sends to the command reaches none of them, and they end, tidied up, with that process, however it ends.
"""

from __future__ import annotations

import contextlib
import importlib
import logging
import os
import pickle
import signal
import subprocess
import sys
import tempfile
from typing import IO, Any, Iterator, Tuple

SECONDS_TO_END = 20.0

# A farm makes many tasks in a row: what the scheduler remembers of those that are over would be most of its memory.
# A worker that dies has its batches read in processes of their own, so nothing is gained by another try before that.
CONFIGURATION = {
    "distributed.scheduler.transition-log-length": 1000,
    "distributed.scheduler.events-log-length": 1000,
    "distributed.scheduler.allowed-failures": 0,
    "distributed.scheduler.http.routes": [],
    "distributed.worker.http.routes": [],
    "distributed.comm.timeouts.connect": "60s",
}


@contextlib.contextmanager
def local_workers(jobs: int) -> Iterator[Tuple[str, Any]]:
    """The scheduler's address, and what it takes to talk to it. Throws RuntimeError where they don't start."""
    security = importlib.import_module("distributed").Security.temporary()
    with tempfile.TemporaryFile() as said, _process(said) as process:
        assert process.stdin and process.stdout
        with contextlib.suppress(BrokenPipeError):
            pickle.dump((jobs, security), process.stdin)
            process.stdin.flush()
        address = process.stdout.readline().decode().strip()
        if not address:
            said.seek(0)
            raise RuntimeError(said.read().decode(errors="replace").strip().rpartition("\n")[2])
        yield address, security


@contextlib.contextmanager
def _process(said: IO[bytes]) -> "Iterator[subprocess.Popen[bytes]]":
    process = subprocess.Popen(
        [sys.executable, "-m", __name__],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=said,
        start_new_session=True,
    )
    try:
        yield process
    finally:
        try:
            process.communicate(timeout=SECONDS_TO_END)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def main() -> None:
    """Nobody else on the machine can talk to them: they listen on it alone, and each end shows a certificate of this run."""
    jobs, security = pickle.load(sys.stdin.buffer)
    dask, distributed = importlib.import_module("dask"), importlib.import_module("distributed")
    with tempfile.TemporaryDirectory(prefix="stmdcm-farm-", ignore_cleanup_errors=True) as folder:
        with dask.config.set(CONFIGURATION), distributed.LocalCluster(
            n_workers=jobs,
            threads_per_worker=1,
            processes=True,
            host="127.0.0.1",
            security=security,
            dashboard_address="127.0.0.1:0",
            worker_dashboard_address="127.0.0.1:0",
            scheduler_kwargs={"dashboard": False},
            local_directory=folder,
            silence_logs=logging.CRITICAL,
        ) as cluster:
            print(cluster.scheduler_address, flush=True)
            sys.stdin.buffer.read()  # until the process that asked is gone, or has what it wanted


if __name__ == "__main__":
    main()
