"""What the functions of this package raise."""

from __future__ import annotations

from typing import Optional


class Error(Exception):
    """Why something was not done.

    >>> try:
    ...     stmdcm.read("missing.tdf")
    ... except stmdcm.Error as error:
    ...     print(error.file, error.offset, error.cause, sep="; ")
    missing.tdf; None; there is no such file; check the path
    """

    file: Optional[str]
    """The file that it is about, as it was named; None: none alone."""
    offset: Optional[int]
    """Where in the file, in bytes; None: nowhere alone."""
    cause: str
    """Why, and mostly what to do about it."""

    def __init__(self, cause: str, file: Optional[str] = None, offset: Optional[int] = None) -> None:
        super().__init__(cause, file, offset)
        self.cause = cause
        self.file = file
        self.offset = offset

    def __str__(self) -> str:
        """In one line that can be printed everywhere, whatever bytes the file's name has."""
        text = self.cause if self.file is None else f"{self.file}: {self.cause}"
        return text.encode("utf-8", "backslashreplace").decode()


class RequestError(Error, ValueError):
    """What was asked for makes no sense: an unknown property, a value that is none of its kind.

    >>> stmdcm.set("run7.tdf", STM_ATB_Id="many", dry_run=True)
    Traceback (most recent call last):
      ...
    stmdcm.RequestError: STM_ATB_Id: "many" won't do, it takes a whole number from -2147483648 to 2147483647
    """
