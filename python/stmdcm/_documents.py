"""Documents (docs/json.md) as Python values."""

from __future__ import annotations

import json
import os
from typing import Any, Union

StrPath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
Document = dict[str, Any]


def name_of(path: StrPath) -> bytes:
    """As the file system has it."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("embedded null byte")
    return name


def parsed(text: str) -> Document:
    document: Document = json.loads(text)
    return document


def with_true_texts(document: Document) -> Document:
    """With the bytes that are no UTF-8 as surrogates, from which `surrogateescape` makes them again."""
    for pointer, digits in document.pop("bytes", {}).items():
        *way, last = pointer.split("/")[1:]
        place: Any = document
        for step in way:
            place = place[int(step)] if isinstance(place, list) else place[step]
        place[int(last) if isinstance(place, list) else last] = bytes.fromhex(digits).decode("utf-8", "surrogateescape")
    return document
