"""Batches of captures as tasks of Dask's distributed scheduler, a bounded number of them at a time."""

from __future__ import annotations

import collections
import concurrent.futures
import contextlib
import importlib
import itertools
import logging
import queue
import socket
import time
from typing import Any, Callable, Deque, Dict, Iterator, List, NamedTuple, Optional

from stmdcm.farm.batch import BatchResult, dead_row, read_apart, read_batch
from stmdcm.farm.errors import FarmError
from stmdcm.farm.local import local_workers
from stmdcm.farm.reading import version

BATCHES_A_THREAD = 3  # one that is worked on, one that waits there, one on its way
LONGEST_BATCH = 1024
SECONDS_A_BATCH = 0.25  # against a millisecond or two that a task costs the scheduler
MOST_DEATHS = 5
TICK = 0.2
GONE = "the scheduler is gone"
SECONDS_TO_ANSWER = 10

def _load(name: str) -> Any:
    """Loaded when it is needed: a wrong call is told at once, and a table is made without it."""
    try:
        return importlib.import_module(name)
    except ImportError as error:
        raise FarmError(f"the farm runs on Dask's distributed scheduler (python3-distributed): {error}") from error


def _require_address(distributed: Any, address: str) -> None:
    """Throws for what Dask would ask for again and again until its time is over."""
    try:
        host, port = distributed.comm.get_address_host_port(address)
    except ValueError as error:
        raise FarmError(f"--scheduler {address}: that is no address; write it as tcp://HOST:PORT") from error
    socket.getaddrinfo(host, port)
    if address.startswith("tls:") and not distributed.Security().get_connection_args("client")["ssl_context"]:
        raise FarmError(f"--scheduler {address}: Dask's configuration names no certificates for it (docs/farm.md)")


class Task(NamedTuple):
    names: List[bytes]
    is_apart: bool = False
    deaths: int = 0

    def after_a_death(self) -> List[Task]:
        """Reads apart what died, and what dies apart in halves: so one capture costs no other its row."""
        if not self.is_apart:
            return [Task(self.names, True)]
        if len(self.names) == 1:
            return [Task(self.names, True, self.deaths + 1)]
        half = len(self.names) // 2
        return [Task(self.names[:half], True), Task(self.names[half:], True)]


class BatchSize:
    """Follows what a capture costs, so that small ones cost no task each and large ones no minutes a batch."""

    def __init__(self) -> None:
        self.number = 16

    def learn(self, result: BatchResult) -> None:
        number = sum(result.statuses.values())
        wanted = SECONDS_A_BATCH * number / max(result.seconds, 1e-6)
        self.number = int(max(1, min(LONGEST_BATCH, wanted, 2 * self.number)))


class Engine:
    """A scheduler and its workers, as a context: ours on this machine, or those at an address."""

    def __init__(self, jobs: int, scheduler: Optional[str], reader: str, tell: Callable[[str], None]) -> None:
        self._jobs = jobs
        self._scheduler = scheduler
        self._reader = reader
        self._tell = tell
        self._stack = contextlib.ExitStack()
        self._client: Any = None
        self._waiting: Deque[Task] = collections.deque()
        self._flying: Dict[Any, Task] = {}
        self._landed: "queue.SimpleQueue[Any]" = queue.SimpleQueue()
        self._size = BatchSize()
        self._room_known = -1
        self._asked_next = 0.0

    def __enter__(self) -> Engine:
        distributed = _load("distributed")
        for logger in [name for name in logging.root.manager.loggerDict if name.startswith("distributed")]:
            logging.getLogger(logger).setLevel(logging.CRITICAL + 1)  # what matters of it is told in a sentence
        try:
            address, security, options = self._scheduler, None, {}
            if address:
                _require_address(distributed, address)
                options["timeout"] = SECONDS_TO_ANSWER
            else:
                address, security = self._stack.enter_context(local_workers(self._jobs))
            self._client = self._stack.enter_context(
                distributed.Client(address, security=security, set_as_default=False, **options)
            )
        except (OSError, RuntimeError, ValueError) as error:
            self._stack.close()
            where = f"no scheduler at {self._scheduler}" if self._scheduler else "no local workers"
            raise FarmError(f"{where}: {getattr(error, 'strerror', None) or error}") from error
        except BaseException:
            self._stack.close()
            raise
        return self

    def __exit__(self, *_: object) -> None:
        self._stack.close()

    def _room(self) -> int:
        """How many batches are on their way at most. Asked anew each second: workers come and go."""
        if time.monotonic() >= self._asked_next:
            try:
                threads = sum(self._client.nthreads().values())
            except OSError as error:
                raise FarmError(GONE) from error
            if threads == 0 and self._room_known != 0:
                self._tell("there is no worker yet; it begins with the first")
            self._room_known = BATCHES_A_THREAD * threads
            self._asked_next = time.monotonic() + 1.0
        return max(1, self._room_known)

    def results(self, names: Iterator[bytes]) -> Iterator[Optional[BatchResult]]:
        """What became of all of them, in batches as they are done; nothing now and then, while none is."""
        while True:
            room = self._room()
            while len(self._flying) < room and (task := self._next(names)):
                self._submit(task)
            if not self._flying:
                return
            yield self._land()

    def _next(self, names: Iterator[bytes]) -> Optional[Task]:
        if self._waiting:
            return self._waiting.popleft()
        batch = list(itertools.islice(names, self._size.number))
        return Task(batch) if batch else None

    def _submit(self, task: Task) -> None:
        work = read_apart if task.is_apart else read_batch
        future = self._client.submit(work, task.names, self._reader, version(), pure=False)
        self._flying[future] = task
        future.add_done_callback(self._landed.put)

    def _land(self) -> Optional[BatchResult]:
        try:
            future = self._landed.get(timeout=TICK)
        except queue.Empty:
            return None
        task = self._flying.pop(future)
        try:
            result: BatchResult = future.result()
        except _load("distributed").scheduler.KilledWorker:
            if task.deaths >= MOST_DEATHS:
                return dead_row(task.names[0])
            self._waiting.extend(task.after_a_death())
            return None
        except (concurrent.futures.CancelledError, OSError) as error:
            raise FarmError(GONE) from error
        except Exception as error:
            raise FarmError(f"the workers can't do it: {type(error).__name__}: {error}") from error
        finally:
            future.release()
        self._size.learn(result)
        return result
