"""How far it is, on the terminal."""

from __future__ import annotations

import sys
import threading
import time
from typing import Callable, Optional

INTERVAL = 0.2


def in_words(seconds: float) -> str:
    minutes, rest = divmod(round(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return f"{hours} h {minutes} min" if hours else f"{minutes} min {rest} s" if minutes else f"{rest} s"


class Progress:
    """A line of standard error that is written over; nothing where that is no terminal."""

    def __init__(self, before: int, count_all: Optional[Callable[[], int]]) -> None:
        """`before` are done already. All are counted beside the work, where `count_all` can do that."""
        self._before = before
        self.all: Optional[int] = None
        self._begin = time.monotonic()
        self._next = self._begin
        self._is_shown = sys.stderr.isatty()
        if self._is_shown and count_all:
            threading.Thread(target=self._count, args=(count_all,), daemon=True).start()

    def _count(self, count_all: Callable[[], int]) -> None:
        self.all = count_all()

    def update(self, done: int) -> None:
        now = time.monotonic()
        if done == self._before:
            self._begin = now  # the workers start, which says nothing of the rate
        elif self._is_shown and now >= self._next:
            self._write("\r" + self.line(done, now - self._begin) + "\x1b[K")
            self._next = now + INTERVAL

    def line(self, done: int, seconds: float) -> str:
        rate = (done - self._before) / max(seconds, 0.001)
        speed = f"{rate:,.0f}/s"
        if self.all is None:
            return f"{done:,} captures, {speed}"
        left = f", {in_words((self.all - done) / rate)} left" if rate > 0 and self.all >= done else ""
        percent = 100 * done // max(1, self.all)
        return f"{percent}% ({done:,} of {self.all:,} captures), {speed}{left}"

    def clear(self) -> None:
        self._write("\r\x1b[K")

    def _write(self, text: str) -> None:
        if self._is_shown:
            print(text, end="", file=sys.stderr, flush=True)
