"""A row of the results: the document of one capture, and what is asked of it (docs/farm.md)."""

from __future__ import annotations

from typing import Any, Dict, Iterable, Iterator, NamedTuple, Optional

Document = Dict[str, Any]

START = b'{"schema":1,"command":"'  # of every row
CHECK_START = START + b'check",'
DONE, PROBLEMS, UNREAD = 0, 1, 4  # as `stmdcm check` ends of this capture alone


class Row(NamedTuple):
    line: bytes  # with its line feed
    status: int


def status_of(document: Document) -> int:
    if "failure" in document:
        return UNREAD
    if "check" in document:  # of a page
        return status_of(document["check"])
    (file,) = document["files"]
    if any(finding["id"] == "F-UNREADABLE" for finding in file["findings"]):
        return UNREAD
    return PROBLEMS if document["problems"] else DONE


VERDICTS = ("load", "load in part", "do not load")


def verdict_of(document: Document) -> Optional[str]:
    """Of a page's; None where the capture could not be read."""
    if status_of(document) == UNREAD:
        return None
    (file,) = document["check"]["files"]
    return VERDICTS[2 if not file["loads"] else 1 if file["missing"] else 0]


def name_of(document: Document) -> bytes:
    """The capture's name in its true bytes; of one that no file can have what is told of it."""
    if "failure" in document:
        pointer, text = "/failure/file", document["failure"]["file"]
    elif "check" in document:
        pointer, text = "/file", document["file"]
    else:
        pointer, text = "/files/0/path", document["files"][0]["path"]
    true_bytes = document.get("bytes", {}).get(pointer)
    return bytes.fromhex(true_bytes) if true_bytes is not None else str(text).encode()


class Statuses:
    """Hears of documents on their way what all of them end with."""

    def __init__(self) -> None:
        self.worst = DONE

    def heard(self, documents: Iterable[Document]) -> Iterator[Document]:
        for document in documents:
            self.worst = max(self.worst, status_of(document))
            yield document
