"""What a file holds, as Python values."""

from __future__ import annotations

import os
from collections.abc import Iterable, Iterator, Mapping
from functools import cached_property
from types import MappingProxyType
from typing import Any, NamedTuple, Optional

from . import _stmdcm
from ._documents import StrPath, name_of, parsed, with_true_texts
from ._errors import Error


class Counter(NamedTuple):
    """A counter of an SC use case."""

    number: int
    text: str


class Formula(NamedTuple):
    """A formula of an SC use case."""

    name: str
    formula: str
    unit: str
    tag_number: int
    output_mask: int


class ScUseCase(NamedTuple):
    """A use case of a hardware monitor, with what it counted."""

    job: int
    module_id: int
    name: str
    probe: str
    sample_window: int
    suppress: bool
    counters: list[Counter]
    formulas: list[Formula]


class CptUseCase(NamedTuple):
    """A use case of a CP tracer."""

    job: int
    module_id: int
    name: str
    probe: str
    sample_window: int
    clock_rate: int
    divide_factor: int
    mode: int
    data_options: int


class PmiUseCase(NamedTuple):
    """A use case of power and clock management: of the source "PMI", "CMI0" or "CMI1"."""

    source: str
    sample_window: int


class UseCases(NamedTuple):
    """The use cases of a configuration, each kind in its order."""

    sc: list[ScUseCase]
    cpt: list[CptUseCase]
    pmi_cmi: list[PmiUseCase]


class Pin(NamedTuple):
    """What a program image was when it was pinned; sha256 and build_id in hexadecimal."""

    size: int
    sha256: str
    build_id: Optional[str]


class Image(NamedTuple):
    """A program image (object file), as recorded and as it is on this machine. Times are seconds since 1970."""

    name: str
    path: str
    recorded: int
    state: str
    modified: Optional[int]
    pin: Optional[Pin]


class Section(NamedTuple):
    """A section of a capture."""

    name: str
    version: int
    live_version: int
    offset: int
    length: int
    payload_offset: int
    payload_length: Optional[int]
    payload_held: int
    use: str
    problem: Optional[str]


class Finding(NamedTuple):
    """Something that a reader passes over or that is doubtful, and the command that mends it."""

    id: str
    severity: str
    section: Optional[str]
    offset: Optional[int]
    line: Optional[int]
    what: str
    reader: str
    next: Optional[str]


def _number(text: Optional[str]) -> Optional[int]:
    return None if text is None else int(text)


def _sc(item: dict[str, Any]) -> ScUseCase:
    item["counters"] = [Counter(**each) for each in item["counters"]]
    item["formulas"] = [Formula(**each) for each in item["formulas"]]
    return ScUseCase(**item)


def _image(item: dict[str, Any]) -> Image:
    pin = item["pin"]
    return Image(
        item["name"],
        item["path"],
        int(item["recorded"]),
        item["state"],
        _number(item["modified"]),
        None if pin is None else Pin(int(pin["size"]), pin["sha256"], pin["build_id"]),
    )


def _section(item: dict[str, Any]) -> Section:
    item.update((key, int(item[key])) for key in ("offset", "payload_offset", "payload_held"))
    return Section(**item)


def _finding(item: dict[str, Any]) -> Finding:
    item["offset"] = _number(item["offset"])
    return Finding(**item)


class Reading:
    """What a capture or a settings file holds, as `read` gives it. Nothing of it changes; threads may share it.

    Bytes of a text that are no UTF-8 are surrogates: `text.encode("utf-8", "surrogateescape")` gives the bytes.

    >>> run = stmdcm.read("run7.tdf")
    >>> run
    <stmdcm.Reading 'run7.tdf': capture, loads, ...>
    """

    def __init__(self, file: _stmdcm.ReadFile) -> None:
        self._file = file

    def __repr__(self) -> str:
        return f"<stmdcm.Reading {self.path!r}: {self.kind}, {self.verdict}>"

    @property
    def path(self) -> str:
        """As it was given, as text.

        >>> stmdcm.read(b"run7.tdf").path
        'run7.tdf'
        """
        return os.fsdecode(self._file.path())

    @property
    def kind(self) -> str:
        """What the file is, by content and name: "capture" or "settings".

        >>> stmdcm.read("settings.txt").kind
        'settings'
        """
        return self._file.kind()

    @property
    def loads(self) -> bool:
        """Any host holds what is here, after loading the file.

        >>> stmdcm.read("torn.tdf").loads
        True
        """
        return self._file.loads()

    @property
    def verdict(self) -> str:
        """What becomes of a file that a host loads, in words.

        >>> stmdcm.read("torn.tdf").verdict
        'loads, but without parts of STMDECODERINFO and some use cases'
        """
        return self._file.verdict()

    @cached_property
    def properties(self) -> Mapping[str, int]:
        """The 26 properties by their names, in their order: bool for a flag, else int. Empty where none were read.

        >>> run = stmdcm.read("run7.tdf")
        >>> run.properties["STM_DTC_target_clock_hz"]
        1000000000
        >>> {name: value for name, value in run.properties.items() if value != run.defaults[name]}["STM_ATB_Id"]
        12
        """
        return MappingProxyType(self._file.properties())

    @property
    def defaults(self) -> Mapping[str, int]:
        """What a fresh manager has for each of the properties.

        >>> stmdcm.read("run7.tdf").defaults["STM_DTC_target_clock_hz"]
        1
        """
        return MappingProxyType(self._file.defaults())

    @cached_property
    def use_cases(self) -> UseCases:
        """What the monitors counted.

        >>> [use_case.name for use_case in stmdcm.read("run7.tdf").use_cases.sc][:1]
        ['mod0']
        """
        found = self._configuration["use_cases"] or {"sc": [], "cpt": [], "pmi_cmi": []}
        return UseCases(
            [_sc(item) for item in found["sc"]],
            [CptUseCase(**item) for item in found["cpt"]],
            [PmiUseCase(**item) for item in found["pmi_cmi"]],
        )

    @cached_property
    def images(self) -> list[Image]:
        """The program images, as recorded and as they are on this machine.

        >>> [(image.path, image.state) for image in stmdcm.read("run7.tdf").images]
        [('/opt/images/app0.out', 'missing'), ('/opt/images/app1.out', 'missing')]
        """
        return [_image(item) for item in self._configuration["object_files"] or []]

    @cached_property
    def sections(self) -> list[Section]:
        """The sections of a capture, in their order; a settings file has none. The file is read for them once more when
        they are first asked for: `Error` where it was changed meanwhile.

        >>> [section.name for section in stmdcm.read("run7.tdf").sections if section.use == "read"][-2:]
        ['DCM_COMMON', 'STMDECODERINFO']
        """
        if self.kind != "capture":
            return []
        return [_section(item) for item in with_true_texts(parsed(self._file.sections()))["sections"]]

    @cached_property
    def findings(self) -> list[Finding]:
        """What `check` tells of the file, but for what program images are: it alone opens them.

        >>> {finding.id for finding in stmdcm.read("torn.tdf").findings if finding.severity == "error"}
        {...'C-TORN-PAYLOAD'...}
        """
        return [_finding(item) for item in with_true_texts(parsed(self._file.check()))["files"][0]["findings"]]

    @cached_property
    def _configuration(self) -> dict[str, Any]:
        configuration: dict[str, Any] = with_true_texts(parsed(self._file.show()))["configuration"]
        return configuration

    def row(self) -> dict[str, object]:
        """A flat row of a table: the file, its verdict, how many findings, use cases and images, each property.

        >>> stmdcm.read("run7.tdf").row()["STM_ATB_Id"]
        12
        """
        errors, warnings, notes = self._file.count_findings()
        sc, cpt, pmi_cmi, images = self._file.count_items()
        row: dict[str, object] = {
            "file": self.path,
            "failure": None,
            "kind": self.kind,
            "loads": self.loads,
            "verdict": self.verdict,
            "errors": errors,
            "warnings": warnings,
            "notes": notes,
            "sc": sc,
            "cpt": cpt,
            "pmi_cmi": pmi_cmi,
            "images": images,
        }
        row.update(self._file.properties())
        return row


def read(path: StrPath) -> Reading:
    """Reads a capture or a settings file. Other threads run meanwhile. `Error` for a file that can't be read.

    >>> stmdcm.read("run7.tdf").properties["STM_ATB_Id"]
    12
    """
    return Reading(_stmdcm.read(name_of(path)))


def rows(paths: Iterable[StrPath]) -> Iterator[dict[str, object]]:
    """`row` of each file, which `pandas.DataFrame` takes as they are. A file that can't be read has a row, too: with
    its name and the cause as `failure`, which is None in all others.

    >>> import pandas
    >>> table = pandas.DataFrame(stmdcm.rows(["run7.tdf", "torn.tdf", "missing.tdf"]))
    >>> table[["file", "errors", "STM_ATB_Id"]]
              file  errors  STM_ATB_Id
    0     run7.tdf     0.0        12.0
    1     torn.tdf     3.0        12.0
    2  missing.tdf     NaN         NaN
    """
    for path in paths:
        try:
            yield read(path).row()
        except Error as error:
            yield {"file": os.fsdecode(path), "failure": error.cause}
