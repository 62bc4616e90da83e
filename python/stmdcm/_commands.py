"""The commands of `stmdcm`, as functions that return their documents (docs/json.md)."""

from __future__ import annotations

import operator
import os
from collections.abc import Iterable
from typing import Optional, Union

from . import _stmdcm
from ._documents import Document, StrPath, name_of, parsed
from ._errors import RequestError


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
    least = _word("severity", severity)
    return parsed(_stmdcm.check(name_of(file), kind, least, _words("ignore", ignore), bool(portable)))


def set(
    file: StrPath,
    *assignments: str,
    force: bool = False,
    dry_run: bool = False,
    **values: Union[bool, int, str],
) -> Document:
    """Changes properties of a capture, in place, or of a settings file: the document of `stmdcm set --json`. What to set
    is said as for the command, "NAME=VALUE", or as keywords.

    >>> document = stmdcm.set("run7.tdf", STM_DTC_target_clock_hz="1.25GHz", STM_VornLib_Import=True)
    >>> [(change["item"], change["left"], change["right"]) for change in document["changes"]]
    [('STM_DTC_target_clock_hz', '1 GHz', '1.25 GHz'), ('STM_VornLib_Import', 'no', 'yes')]
    """
    texts = _words("assignments", assignments) + [
        os.fsencode(f"{name}={_value(name, value)}") for name, value in values.items()
    ]
    if not texts:
        raise RequestError("set: NAME=VALUE is required")
    return parsed(_stmdcm.set(name_of(file), texts, bool(force), bool(dry_run)))


def apply(
    source: StrPath,
    capture: StrPath,
    *,
    replace: bool = False,
    only: Iterable[str] = (),
    except_: Iterable[str] = (),
    force: bool = False,
    dry_run: bool = False,
) -> Document:
    """Puts the configuration of a settings file or capture into a capture: the document of `stmdcm apply --json`.

    >>> document = stmdcm.apply("torn.tdf", "run7.tdf", only=["STM_ATB_Id"], force=True, dry_run=True)
    >>> document["captures"][0]["written"]
    False
    """
    wanted, unwanted = _words("only", only), _words("except_", except_)
    if replace and (wanted or unwanted):
        raise RequestError("replace excludes only and except_")
    return parsed(
        _stmdcm.apply(name_of(source), name_of(capture), wanted, unwanted, bool(replace), bool(force), bool(dry_run))
    )


def diff(left: StrPath, right: StrPath) -> Document:
    """Compares the configurations of two captures or settings files: the document of `stmdcm diff --json`.

    >>> stmdcm.diff("run7.tdf", "run7.tdf")["equal"]
    True
    """
    return parsed(_stmdcm.diff(name_of(left), name_of(right)))


def history(
    capture: StrPath,
    *,
    prune: Optional[int] = None,
    output: Optional[StrPath] = None,
    force: bool = False,
) -> Document:
    """Lists the earlier configurations that a capture holds: the document of `stmdcm history --json`. With `output`
    writes a new capture without all but the youngest `prune` retired ones.

    >>> [each["state"] for each in stmdcm.history("run7.tdf")["configurations"]][-1]
    'current'
    """
    keep = None if prune is None else _count("prune", prune)
    if output is None:
        if force:
            raise RequestError("force needs output")
        return parsed(_stmdcm.history(name_of(capture), keep))
    if keep is None:
        raise RequestError("output needs prune")
    options = [b"--prune", b"%d" % keep, b"--output=" + name_of(output)] + [b"--force"] * bool(force)
    return _run(b"history", *options, b"--", name_of(capture))


def restore(capture: StrPath, number: int, *, dry_run: bool = False) -> Document:
    """Puts an earlier configuration of a capture in force again, by its number in `history`: the document of `stmdcm
    restore --json`.

    >>> stmdcm.restore("run7.tdf", 2, dry_run=True)["section"]
    'STMDECODERINFO'
    """
    return parsed(_stmdcm.restore(name_of(capture), _count("number", number), bool(dry_run)))


def recover(
    file: StrPath,
    output: Optional[StrPath] = None,
    *,
    plan: bool = False,
    split: Iterable[int] = (),
    force: bool = False,
) -> Document:
    """Makes a new capture of what can be found in a torn or broken one: the document of `stmdcm recover --json`. With
    `plan` tells the same and writes nothing. The plug-in has to load the result, so a process of its own does it.

    >>> document = stmdcm.recover("torn.tdf", "recovered.tdf")
    >>> document["written"], document["good"]
    (True, False)
    """
    options = [b"--output=" + name_of(output)] if output is not None else []
    options += [b"--plan"] * bool(plan) + [b"--force"] * bool(force)
    for offset in split:
        options += [b"--split", b"%d" % _count("split", offset)]
    return _run(b"recover", *options, b"--", name_of(file))


def _run(*words: bytes) -> Document:
    from ._program import run  # takes a third of the time of `import stmdcm`, for two functions

    return run(*words)


def _value(name: str, value: Union[bool, int, str]) -> str:
    if isinstance(value, bool):
        return "yes" if value else "no"
    return value if isinstance(value, str) else str(_number(name, value))


def _number(option: str, value: int) -> int:
    try:
        return operator.index(value)
    except TypeError:
        raise TypeError(f"{option}: expected int, not {type(value).__name__}") from None


def _count(option: str, value: int) -> int:
    number = _number(option, value)
    if not 0 <= number < 2**64:
        raise RequestError(f"{option}: {number} is no number of things")
    return number


def _word(option: str, value: str) -> bytes:
    if not isinstance(value, str):
        raise TypeError(f"{option}: expected str, not {type(value).__name__}")
    return os.fsencode(value)


def _words(option: str, values: Iterable[str]) -> list[bytes]:
    """One alone may come without a list."""
    return [_word(option, value) for value in ([values] if isinstance(values, str) else values)]
