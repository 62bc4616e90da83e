"""The command line of the farm."""

from __future__ import annotations

import argparse
import os
import signal
import sys
from typing import List, Optional, Sequence

from stmdcm.farm.batch import READER
from stmdcm.farm.errors import FarmError, Stopped
from stmdcm.farm.gather import Plan, Round, gather
from stmdcm.farm.names import Sources
from stmdcm.farm.results import Results

FAILED = 1

EPILOG = """\
Stopped or crashed in the midst, the same command goes on behind what it has. Ends with status 4 when a capture or a
list could not be read, else with 1 when one has a problem or the work failed, with 2 for a wrong call, with 130 after
Ctrl-C. docs/farm.md tells more.

example:
  python3 -m stmdcm.farm check /srv/captures -o results.jsonl
"""


def _number(text: str) -> int:
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("at least 1")
    return value


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="stmdcm.farm",
        description="Tells of many captures what `stmdcm check` tells of one, on all cores or on a lab's cluster.",
        epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("what", choices=["check"], help="results as JSON lines")
    parser.add_argument("sources", nargs="+", metavar="FOLDER-OR-LIST",
                        help="a folder, whose captures are found at any depth; or a file with a name a line, - for standard input")
    parser.add_argument("-o", "--output", required=True, metavar="OUT", help="the file of the results")
    parser.add_argument("--name", action="append", metavar="PATTERN",
                        help="take the files of a folder that are called so (default: *.tdf, in any case)")
    parser.add_argument("-0", "--null", action="store_true", help="the names of a list end with a zero byte each")
    who = parser.add_mutually_exclusive_group()
    who.add_argument("--scheduler", metavar="ADDRESS", help="the scheduler of a cluster, such as tcp://lab1:8786")
    who.add_argument("-j", "--jobs", type=_number, default=os.cpu_count() or 1, metavar="N",
                     help="so many worker processes on this machine (default: one a core)")
    return parser


def _stop(number: int, _: object) -> None:
    raise Stopped(number)


def main(arguments: Sequence[str], reader: str = READER) -> int:
    """The exit status. `reader` is what gives a capture's row, as `module:function` that each worker can import."""
    options = _parser().parse_args(arguments)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, _stop)
    a_round = Round()
    try:
        sources = Sources(options.sources, options.name or ["*.tdf"], options.null, a_round.tell_of_list)
        sources.require_readable()
        return gather(sources, Results(options.output), Plan(options.jobs, options.scheduler, reader), a_round)
    except FarmError as error:
        a_round.tell(str(error))
        return FAILED
    except Stopped as stopped:
        return 128 + stopped.number
