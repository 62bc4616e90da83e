"""The page of `stmdcm report` over all: one, or of very many captures several, and a page that leads to them."""

from __future__ import annotations

import contextlib
import html
import json
import os
import re
import urllib.parse
from typing import IO, Counter, List, NamedTuple, Optional, Set

from stmdcm import _stmdcm
from stmdcm.farm.errors import FarmError, shown
from stmdcm.farm.output import whole_file
from stmdcm.farm.results import placed_documents
from stmdcm.farm.rows import DONE, PROBLEMS, UNREAD, VERDICTS, Document, name_of, status_of, verdict_of

CAPTURES_A_PAGE = 1000  # about 12 MiB: what a browser draws at once, and a mail takes

FRONT = """<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{captures} captures</title>
<style>
:root {{ color-scheme: light dark; font: 1rem/1.5 system-ui, sans-serif; }}
body {{ margin: 1rem auto; max-width: 80rem; padding: 0 1rem; }}
table {{ border-collapse: collapse; }}
th, td {{ border-bottom: 1px solid; padding: 0.3rem 0.8rem; text-align: left; vertical-align: top; overflow-wrap: anywhere; }}
td.number {{ text-align: right; }}
</style>
<h1>{captures} captures: {done} without problems, {problems} with problems, {unread} unreadable</h1>
<p>In the order of their names, {each} on a page.</p>
<table>
<tr><th>page<th>first<th>last<th>{kinds}</tr>
"""
KINDS = ("without problems", "with problems", "unreadable", *VERDICTS)
FRONT_START = FRONT.partition("{")[0].encode()


class Place(NamedTuple):
    """Where a capture's line is. They sort by name."""

    name: bytes
    offset: int
    status: int
    verdict: Optional[str]


def _place(document: Document, offset: int) -> Place:
    return Place(name_of(document), offset, status_of(document), verdict_of(document))


def part_names(output: str, captures: int) -> List[str]:
    """The files of the pages behind `output`, where one does not hold so many captures."""
    stem, extension = os.path.splitext(output)
    number = -(-captures // CAPTURES_A_PAGE)
    return [f"{stem}-{part:0{max(4, len(str(number)))}}{extension}" for part in range(1, number + 1)] if number > 1 else []


def _old_parts(output: str) -> Set[str]:
    """The names of the pages that a front page at `output`, which an earlier run made, leads to."""
    stem, extension = os.path.splitext(os.path.basename(output))
    form = re.escape(stem) + "-[0-9]{4,}" + re.escape(extension)
    try:
        with open(output, "rb") as file:
            text = file.read() if file.read(len(FRONT_START)) == FRONT_START else b""
    except OSError:
        return set()
    quoted = re.findall(rb'^<tr><td><a href="([^"]*)">', text, re.MULTILINE)
    links = {os.fsdecode(urllib.parse.unquote_to_bytes(link)) for link in quoted}
    return {link for link in links if re.fullmatch(form, link)}


def write_report(rows: str, output: str, may_overwrite: bool) -> int:
    """`rows` is the file of what `reading.page_row` gave. Gives the status that counts most."""
    places = sorted(_place(document, at) for document, at in placed_documents(rows))
    parts = part_names(output, len(places))
    for part in parts:
        if os.path.lexists(part) and not may_overwrite:
            raise FarmError(f"{shown(part)}: there is such a file already; --force overwrites it")
    stale = _old_parts(output).difference(map(os.path.basename, parts))
    with open(rows, "rb") as file:
        for number, part in enumerate(parts or [output]):
            with whole_file(part) as page:
                _write_page(file, _of_part(places, number), page)
    if parts:
        with whole_file(output) as front:
            front.write(_front(places, parts).encode())
    for part in stale:
        with contextlib.suppress(OSError):
            os.unlink(os.path.join(os.path.dirname(output), part))
    return max(place.status for place in places)


def _of_part(places: List[Place], number: int) -> List[Place]:
    return places[number * CAPTURES_A_PAGE : (number + 1) * CAPTURES_A_PAGE]


def _write_page(rows: IO[bytes], places: List[Place], output: IO[bytes]) -> None:
    page = _stmdcm.Page()
    for place in places:
        rows.seek(place.offset)
        line, _, text = rows.readline().rstrip(b"\n").partition(b"\t")
        plain = json.loads(text) if text else f"{shown(place.name)}: {json.loads(line)['failure']['cause']}"
        page.add(line, plain.encode("utf-8", "surrogateescape"))
        output.write(page.take())
    page.end()
    output.write(page.take())


def _numbers(places: List[Place]) -> List[int]:
    """As many as there are of each of the KINDS."""
    statuses = Counter(place.status for place in places)
    verdicts = Counter(place.verdict for place in places)
    return [statuses[status] for status in (DONE, PROBLEMS, UNREAD)] + [verdicts[verdict] for verdict in VERDICTS]


def _front(places: List[Place], parts: List[str]) -> str:
    done, problems, unread, *_ = _numbers(places)
    text = FRONT.format(captures=len(places), done=done, problems=problems, unread=unread, each=CAPTURES_A_PAGE,
                        kinds="<th>".join(KINDS))
    for number, part in enumerate(parts):
        own = _of_part(places, number)
        link = urllib.parse.quote(os.fsencode(os.path.basename(part)))
        names = [html.escape(shown(place.name)) for place in (own[0], own[-1])]
        text += f'<tr><td><a href="{link}">{number + 1}</a><td>{names[0]}<td>{names[1]}'
        text += "".join(f'<td class="number">{count}' for count in _numbers(own)) + "</tr>\n"
    return text + "</table>\n</html>\n"
