"""Runs the command `stmdcm`, in a process of its own: what loads the plug-in or writes another file."""

from __future__ import annotations

import json
import os
import subprocess

from ._documents import Document, with_true_texts
from ._errors import Error, RequestError
from ._location import COMMAND

_USAGE = 2


def run(*words: bytes) -> Document:
    """The document of the command. Raises its failure."""
    try:
        status, out, err = _end_of([os.fsencode(COMMAND), b"--json", *words])
    except OSError as error:
        raise Error(f"the command of this package can't be run: {error.strerror}", COMMAND) from None
    try:
        document: Document = json.loads(out)
    except ValueError:
        kind = RequestError if status == _USAGE else Error
        raise kind(err.decode("utf-8", "surrogateescape").strip() or f"the command ended with {status}") from None
    if "failure" not in document:
        return document
    failure = with_true_texts(document)["failure"]
    offset = failure["offset"]
    kind = RequestError if status == _USAGE else Error
    raise kind(failure["cause"], failure["file"], None if offset is None else int(offset))


def _end_of(command: list[bytes]) -> tuple[int, bytes, bytes]:
    with subprocess.Popen(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE
    ) as process:
        try:
            out, err = process.communicate()
        except BaseException:
            process.terminate()  # it leaves nothing behind
            raise
    return process.returncode, out, err
