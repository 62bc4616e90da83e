"""Captures of a System Trace Module and their configurations: read, checked, compared, changed and recovered.

The functions are the commands of the program `stmdcm`, with their names, defaults and safety.

>>> run = stmdcm.read("run7.tdf")
>>> run.properties["STM_DTC_target_clock_hz"]
1000000000
"""

from ._commands import apply, check, diff, history, recover, restore, set
from ._errors import Error, RequestError
from ._reading import (
    Counter,
    CptUseCase,
    Finding,
    Formula,
    Image,
    Pin,
    PmiUseCase,
    Reading,
    ScUseCase,
    Section,
    UseCases,
    read,
    rows,
)

__all__ = [
    "Counter",
    "CptUseCase",
    "Error",
    "Finding",
    "Formula",
    "Image",
    "Pin",
    "PmiUseCase",
    "Reading",
    "RequestError",
    "ScUseCase",
    "Section",
    "UseCases",
    "apply",
    "check",
    "diff",
    "history",
    "read",
    "recover",
    "restore",
    "rows",
    "set",
]

for _name in __all__:
    globals()[_name].__module__ = __name__  # where people find it
