"""The commands of `stmdcm`, as functions that return their documents (docs/json.md)."""

from __future__ import annotations

import os
from collections.abc import Iterable
from typing import Optional

from . import _stmdcm
from ._documents import Document, StrPath, name_of, parsed


def check(
    file: StrPath,
    *,
    as_: Optional[str] = None,
    severity: str = "note",
    ignore: Iterable[str] = (),
    portable: bool = False,
) -> Document:
    """Tells what the lenient readers pass over in silence: the document of `stmdcm check --json`. A file that can't be
    read is a finding.

    >>> document = stmdcm.check("torn.tdf", severity="error")
    >>> document["files"][0]["findings"][0]["next"]
    'stmdcm recover torn.tdf -o NEW.tdf'
    """
    kind = None if as_ is None else _word("as_", as_)
    severity_name = _word("severity", severity)
    return parsed(_stmdcm.check(name_of(file), kind, severity_name, _words("ignore", ignore), bool(portable)))


def diff(left: StrPath, right: StrPath) -> Document:
    """Compares the configurations of two captures or settings files: the document of `stmdcm diff --json`.

    >>> stmdcm.diff("run7.tdf", "torn.tdf")["equal"]
    False
    """
    return parsed(_stmdcm.diff(name_of(left), name_of(right)))


def _word(option: str, value: str) -> bytes:
    if not isinstance(value, str):
        raise TypeError(f"{option}: expected str, not {type(value).__name__}")
    return os.fsencode(value)


def _words(option: str, values: Iterable[str]) -> list[bytes]:
    """One alone may come without a list."""
    return [_word(option, value) for value in ([values] if isinstance(values, str) else values)]
