"""A table of results: CSV, a row a capture, always the same columns (docs/farm.md)."""

from __future__ import annotations

import csv
import io
from typing import IO, Any, Dict, Iterable, Iterator, List

import stmdcm.farm.reading as reading
from stmdcm.farm.rows import DONE, PROBLEMS, UNREAD, Document, name_of, status_of

STATUS_WORDS = {DONE: "ok", PROBLEMS: "problems", UNREAD: "unreadable"}
HEAD = ["path", "path_bytes", "status", "kind", "loads", "verdict", "errors", "warnings", "notes", "findings"]
COUNTS = ["sc", "cpt", "pmi_cmi", "object_files"]
NO_SUMMARY: Dict[str, Any] = {"properties": None, "use_cases": None, "object_files": None}


def write_table(documents: Iterable[Document], file: IO[bytes]) -> None:
    text = io.TextIOWrapper(file, "utf-8", newline="")
    writer = csv.writer(text, lineterminator="\n")
    defaults = reading.defaults()
    writer.writerow(HEAD + COUNTS + list(defaults))
    for document in documents:
        writer.writerow(cells(document, defaults))
    text.detach()


def cells(document: Document, defaults: Dict[str, int]) -> List[Any]:
    status = STATUS_WORDS[status_of(document)]
    if "failure" in document:
        failure = document["failure"]
        head = [*_path(document, failure["file"]), status, "", "no", failure["cause"]]
        return head + [""] * (len(HEAD) - len(head) + len(COUNTS) + len(defaults))
    (file,) = document["files"]
    summary = document.get("summary") or NO_SUMMARY  # `stmdcm check --json` gives none
    kinds = sorted({finding["id"] for finding in file["findings"]})
    head = [*_path(document, file["path"]), status, file["kind"] or "", "yes" if file["loads"] else "no", file["verdict"]]
    counts = [file[severity] for severity in ("errors", "warnings", "notes")]
    return head + counts + [" ".join(kinds)] + _numbers(summary) + list(_values(summary, defaults))


def _path(document: Document, text: str) -> List[str]:
    """As text, and where that is not all of it its bytes in hexadecimal."""
    name = name_of(document)
    return [text, "" if text.encode() == name else name.hex()]


def _numbers(summary: Dict[str, Any]) -> List[Any]:
    use_cases = summary["use_cases"] or {}
    return [use_cases.get(kind, "") for kind in COUNTS[:-1]] + [_or_empty(summary["object_files"])]


def _or_empty(value: Any) -> Any:
    return "" if value is None else value


def _values(summary: Dict[str, Any], defaults: Dict[str, int]) -> Iterator[Any]:
    """Of each property what is in force; of flags 1 or 0, as settings texts have them."""
    if summary["properties"] is None:
        yield from [""] * len(defaults)
        return
    changed = {each["name"]: each["value"] for each in summary["properties"]}
    for name, default in defaults.items():
        yield int(changed.get(name, default))
