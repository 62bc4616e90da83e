"""Files that get their name when all of them is there."""

from __future__ import annotations

import contextlib
import os
from typing import IO, Iterator

from stmdcm.farm.errors import FarmError


@contextlib.contextmanager
def whole_file(path: str) -> Iterator[IO[bytes]]:
    """The file takes the path's place at the end, synced; where anything is thrown, nothing of it is left."""
    temporary = f"{path}.{os.getpid()}.tmp"
    try:
        with open(temporary, "xb") as file:
            yield file
            file.flush()
            os.fsync(file.fileno())
        os.replace(temporary, path)
    except OSError as error:
        raise FarmError.of_system(path, "it can't be written", error) from error
    finally:
        with contextlib.suppress(OSError):
            os.unlink(temporary)
