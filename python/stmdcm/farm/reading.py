"""A capture's row, as the library makes it."""

from __future__ import annotations

import json
from typing import Dict

from stmdcm import _stmdcm
from stmdcm.farm.rows import Row, name_of, status_of


def row(name: bytes) -> Row:
    """The document of `stmdcm check --json`, with a summary of `show`, by one reading."""
    return Row(*_stmdcm.row(name))


def failure(name: bytes, cause: str) -> Row:
    """Of a capture that could not be read, and not for anything in its file."""
    return Row(*_stmdcm.failure_row(name, cause))


def page_row(name: bytes) -> Row:
    """The document of `stmdcm report --json`, a tab, and as a JSON string the text for a page without scripts."""
    line, text = _stmdcm.page_block(name)
    plain = json.dumps(text.decode("utf-8", "surrogateescape")).encode()
    return Row(line.rstrip(b"\n") + b"\t" + plain + b"\n", status_of(json.loads(line)))


def told(name: bytes) -> bytes:
    """What a row calls it: one that no file can have, and that is too long, by its beginning."""
    return name_of(json.loads(failure(name, "").line))


def defaults() -> Dict[str, int]:
    """What a fresh manager has for each property, in their order; of flags 1 or 0."""
    return _stmdcm.defaults()


def version() -> str:
    """Of the library."""
    return _stmdcm.version()
