"""The file of results: JSON lines, each of them there whole or not at all, and once."""

from __future__ import annotations

import fcntl
import json
import os
import stat
import time
from typing import Dict, Iterator, Tuple

from stmdcm.farm.errors import FarmError, shown
from stmdcm.farm.names import Once
from stmdcm.farm.rows import CHECK_START, START, Document, name_of, status_of

READ_AHEAD = 1 << 20
SYNC_EVERY = 5.0  # seconds: what a loss of power may cost


def is_results(path: str) -> bool:
    """Whether the file begins as results of check do."""
    try:
        with open(path, "rb") as file:
            return file.read(len(CHECK_START)) == CHECK_START
    except OSError:
        return False


def documents(path: str) -> Iterator[Document]:
    """Each document of a file of results, whoever wrote it. What follows the last line feed is none yet."""
    return (document for document, _ in placed_documents(path))


def placed_documents(path: str) -> Iterator[Tuple[Document, int]]:
    """The same, each with the offset of its line."""
    try:
        with open(path, "rb", buffering=READ_AHEAD) as file:
            offset = 0
            for number, line in enumerate(file, 1):
                if line.endswith(b"\n"):
                    yield _parse(path, number, line), offset
                offset += len(line)
    except OSError as error:
        raise FarmError.of_system(path, "the results can't be read", error) from error


def _parse(path: str, number: int, line: bytes) -> Document:
    try:
        document: Document = json.loads(line.partition(b"\t")[0])
        name_of(document), status_of(document)
        return document
    except (ValueError, KeyError, TypeError, AttributeError, IndexError) as error:
        raise FarmError(
            f"{shown(path)}: line {number} is no result; if it was damaged, take the line out, and its capture is read again"
        ) from error


class Named:
    """The captures of a file of results."""

    can_be_read_again = True

    def __init__(self, path: str) -> None:
        self._path = path

    def __iter__(self) -> Iterator[bytes]:
        return (name_of(document) for document in documents(self._path))


class Results:
    """The file while it grows. This process alone writes it, as a lock tells other farms.

    What is there already is kept: a last line without its line feed is cut off, of all others the names are known.
    """

    def __init__(self, path: str) -> None:
        self.path = path
        self.statuses: Dict[int, int] = {}
        self._is_new = not os.path.lexists(path)
        self._descriptor = self._open()
        try:
            self._lock()
            self._size, self.was_cut = self._cut_torn_line()
        except BaseException:
            os.close(self._descriptor)
            raise
        self._synced = time.monotonic()

    def _open(self) -> int:
        try:
            descriptor = os.open(self.path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC | os.O_NONBLOCK, 0o666)
        except OSError as error:
            raise FarmError.of_system(self.path, "the results can't be written", error) from error
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            os.close(descriptor)
            raise FarmError(f"{shown(self.path)}: no regular file; results go where they can be read back and gone on with")
        return descriptor

    def _lock(self) -> None:
        try:
            fcntl.flock(self._descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError as error:
            raise FarmError(f"{shown(self.path)}: another farm is writing these results") from error
        except OSError:
            pass  # a file system without locks

    def _cut_torn_line(self) -> Tuple[int, bool]:
        size = os.fstat(self._descriptor).st_size
        begin = os.pread(self._descriptor, len(START), 0)
        if not START.startswith(begin):
            raise FarmError(f"{shown(self.path)}: these are no results of a farm; nothing was changed")
        end = size
        while end > 0:
            piece = os.pread(self._descriptor, min(end, 1 << 16), max(0, end - (1 << 16)))
            if (found := piece.rfind(b"\n")) >= 0:
                end -= len(piece) - found - 1
                break
            end -= len(piece)
        if end != size:
            os.ftruncate(self._descriptor, end)
        return end, end != size

    def take_known(self, once: Once) -> None:
        """Takes the names of all that is there."""
        for document in documents(self.path):
            once.take(name_of(document))
            self._count(status_of(document), 1)

    @property
    def number(self) -> int:
        return sum(self.statuses.values())

    def _count(self, status: int, number: int) -> None:
        self.statuses[status] = self.statuses.get(status, 0) + number

    def append(self, lines: bytes, statuses: Dict[int, int]) -> None:
        """All of these lines, or none, where it throws."""
        try:
            written = 0
            while written < len(lines):
                written += os.pwrite(self._descriptor, lines[written:], self._size + written)
            if time.monotonic() - self._synced > SYNC_EVERY:
                self._sync()
        except OSError as error:
            self._cut_back()
            raise FarmError.of_system(self.path, "the results can't be written", error) from error
        except BaseException:
            self._cut_back()
            raise
        self._size += len(lines)
        for status, number in statuses.items():
            self._count(status, number)

    def _cut_back(self) -> None:
        try:
            os.ftruncate(self._descriptor, self._size)
        except OSError:
            pass  # a torn line, which is cut off when these results are gone on with

    def _sync(self) -> None:
        os.fsync(self._descriptor)
        self._synced = time.monotonic()

    def close(self) -> None:
        """Throws where what was written may not be on the disk. A new file that got no result is taken away."""
        try:
            if self._is_new and self.number == 0:
                os.unlink(self.path)
            self._sync()
        except OSError as error:
            raise FarmError.of_system(self.path, "the results can't be written", error) from error
        finally:
            os.close(self._descriptor)
