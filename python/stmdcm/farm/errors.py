"""What ends a farm, each with a sentence for the user."""

from __future__ import annotations

import os
import signal
from typing import Union

FAILED = 1

PathLike = Union[str, bytes, "os.PathLike[str]"]


def shown(path: PathLike) -> str:
    """A name as people see it, on one line, whatever bytes it has."""
    text = os.fsdecode(path).encode("utf-8", "surrogateescape").decode("utf-8", "backslashreplace")
    return "".join(c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)


class FarmError(Exception):
    """It can't go on. The message names the file, where there is one, and the cause; `status` is what the command ends with."""

    def __init__(self, sentence: str, status: int = FAILED) -> None:
        super().__init__(sentence)
        self.status = status

    @classmethod
    def of_system(cls, path: PathLike, what: str, error: OSError, status: int = FAILED) -> FarmError:
        return cls(f"{shown(path)}: {what}: {error.strerror or error}", status)


class Stopped(BaseException):
    """A signal has asked for the end. No Exception: nothing on the way may take it for a failure of its own."""

    def __init__(self, number: int) -> None:
        super().__init__(signal.Signals(number).name)
        self.number = number
