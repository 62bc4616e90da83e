"""Which captures there are: folders and lists, read as they are needed."""

from __future__ import annotations

import fnmatch
import hashlib
import io
import os
import re
import stat
import sys
from typing import Callable, Iterator, Protocol, Sequence, Set

from stmdcm.farm.errors import FarmError, shown
from stmdcm.farm.reading import told
from stmdcm.farm.rows import CHECK_START, UNREAD

STANDARD_INPUT = b"-"
PIECE = 1 << 16
LONGEST = 4096  # no file has a longer name (PATH_MAX)
CAPTURE_START = b"TDF2"


class Names(Protocol):
    """The captures, by their names. They may stand there twice."""

    can_be_read_again: bool

    def __iter__(self) -> Iterator[bytes]: ...


class Sources:
    """The folders and lists of a command line, each name absolute.

    A folder gives the files in it, and in the folders below, that match: each folder's entries in the order of their
    bytes, a folder's own in its place, which is one folder's names in memory and no more. Links to folders are not
    followed. A list has a name a line, or with a zero byte behind each. A folder that can't be read is told through
    `tell`; the others go on.
    """

    def __init__(self, sources: Sequence[str], patterns: Sequence[str], is_zero_ended: bool,
                 tell: Callable[[str], None]) -> None:
        self._sources = [os.fsencode(source) for source in sources]
        self._pattern = re.compile("|".join(fnmatch.translate(p) for p in patterns).encode(), re.IGNORECASE | re.DOTALL)
        self._end = b"\0" if is_zero_ended else b"\n"
        self._tell = tell
        self._here = os.getcwdb()
        self.can_be_read_again = STANDARD_INPUT not in self._sources

    def require_readable(self) -> None:
        """Throws for what is neither folder nor list, before any work."""
        for source in self._sources:
            if source != STANDARD_INPUT and not os.path.isdir(source):
                with self._open_list(source):
                    pass

    def __iter__(self) -> Iterator[bytes]:
        for source in self._sources:
            if source != STANDARD_INPUT and os.path.isdir(source):
                yield from self._walk(self._absolute(source))
            else:
                yield from self._read_list(source)

    def _absolute(self, name: bytes) -> bytes:
        while name.startswith(b"./"):
            name = name[2:].lstrip(b"/")
        return self._here if name in (b"", b".") else os.path.join(self._here, name)

    def _walk(self, folder: bytes) -> Iterator[bytes]:
        try:
            with os.scandir(folder) as entries:
                found = sorted((entry.name, entry.is_dir(follow_symlinks=False)) for entry in entries)
        except OSError as error:
            self._tell(str(FarmError.of_system(folder, "the folder can't be read", error)))
            return
        for name, is_folder in found:
            path = os.path.join(folder, name)
            if is_folder:
                yield from self._walk(path)
            elif self._pattern.fullmatch(name):
                yield path

    def _open_list(self, source: bytes) -> io.BufferedReader:
        if source == STANDARD_INPUT:
            return open(os.dup(sys.stdin.fileno()), "rb")
        try:
            file = open(source, "rb")
            begin = file.peek(1) if stat.S_ISREG(os.fstat(file.fileno()).st_mode) else b""
            for start, what in ((CAPTURE_START, "a capture"), (CHECK_START, "results")):
                if begin.startswith(start):
                    raise FarmError(f"{shown(source)}: this is {what}, no list of captures; name the folder of captures")
            return file
        except OSError as error:
            raise FarmError.of_system(source, "the list of captures can't be read", error, UNREAD) from error

    def _read_list(self, source: bytes) -> Iterator[bytes]:
        with self._open_list(source) as file:
            rest = b""
            try:
                while piece := file.read1(PIECE):
                    *names, rest = (rest + piece).split(self._end)
                    rest = rest[: LONGEST + 1]
                    yield from (self._absolute(name) for name in names if name)
            except OSError as error:
                self._tell(str(FarmError.of_system(source, "the list can't be read to its end", error)))
                return
        if rest:
            yield self._absolute(rest)


class Once:
    """Takes each name the first time that it comes. Keeps 16 bytes of each, about 100 with what Python adds."""

    def __init__(self) -> None:
        self._known: Set[bytes] = set()

    def __len__(self) -> int:
        return len(self._known)

    def take(self, name: bytes) -> bool:
        digest = hashlib.blake2b(name if len(name) <= LONGEST else told(name), digest_size=16).digest()
        is_new = digest not in self._known
        self._known.add(digest)
        return is_new

    def of(self, names: Iterator[bytes]) -> Iterator[bytes]:
        return (name for name in names if self.take(name))


def total(sources: Names) -> int:
    """How many names there are; one that stands there twice counts twice."""
    count = 0
    for count, _ in enumerate(sources, 1):
        pass
    return count
