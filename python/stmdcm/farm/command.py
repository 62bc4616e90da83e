"""The command line of the farm."""

from __future__ import annotations

import argparse
import os
import signal
from typing import Optional, Sequence

from stmdcm.farm.batch import READER
from stmdcm.farm.errors import FarmError, Stopped, shown
from stmdcm.farm.gather import Plan, Round, gather
from stmdcm.farm.names import Names, Sources
from stmdcm.farm.output import whole_file
from stmdcm.farm.report import write_report
from stmdcm.farm.results import Named, Results, documents, is_results
from stmdcm.farm.rows import Statuses
from stmdcm.farm.table import write_table

WORKING = {"table": ".results.jsonl", "report": ".blocks"}  # behind OUT: what it is made of, while that is gathered
READERS = {"check": READER, "table": READER, "report": "stmdcm.farm.reading:page_row"}

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


def _file(text: str) -> str:
    if text == "-":
        raise argparse.ArgumentTypeError("standard output can't be gone on with after a stop; name a file")
    return text


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="stmdcm.farm",
        description="Tells of many captures what `stmdcm check` tells of one, on all cores or on a lab's cluster.",
        epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("what", choices=list(READERS),
                        help="check: results as JSON lines; table: CSV, a row a capture; report: pages for a browser")
    parser.add_argument("sources", nargs="+", metavar="FOLDER-OR-LIST",
                        help="a folder, whose captures are found at any depth; a file with a name a line, - for standard "
                        "input; of table and report also results of check")
    parser.add_argument("-o", "--output", required=True, type=_file, metavar="OUT", help="the file of the results")
    parser.add_argument("--name", action="append", metavar="PATTERN",
                        help="take the files of a folder that are called so (default: *.tdf, in any case)")
    parser.add_argument("-0", "--null", action="store_true", help="the names of a list end with a zero byte each")
    parser.add_argument("--force", action="store_true", help="overwrite OUT, where it is no unfinished one of this command")
    who = parser.add_mutually_exclusive_group()
    who.add_argument("--scheduler", metavar="ADDRESS", help="the scheduler of a cluster, such as tcp://lab1:8786")
    who.add_argument("-j", "--jobs", type=_number, default=os.cpu_count() or 1, metavar="N",
                     help="so many worker processes on this machine (default: one a core)")
    return parser


def _stop(number: int, _: object) -> None:
    raise Stopped(number)


def main(arguments: Sequence[str], reader: Optional[str] = None) -> int:
    """The exit status. `reader` is what gives a capture's row, as `module:function` that each worker can import."""
    options = _parser().parse_args(arguments)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, _stop)
    a_round = Round()
    plan = Plan(options.jobs, options.scheduler, reader or READERS[options.what])
    try:
        if options.what == "check":
            return gather(_sources(options, a_round), Results(options.output), plan, a_round)
        return _from_results(options, plan, a_round)
    except FarmError as error:
        a_round.tell(str(error))
        return error.status
    except Stopped as stopped:
        return 128 + stopped.number


def _sources(options: argparse.Namespace, a_round: Round) -> Sources:
    sources = Sources(options.sources, options.name or ["*.tdf"], options.null, a_round.tell_of_list)
    sources.require_readable()
    return sources


def _from_results(options: argparse.Namespace, plan: Plan, a_round: Round) -> int:
    """From results that are there, or that are gathered first, into a file beside OUT until that is there."""
    output: str = options.output
    own = output + WORKING[options.what]
    given: Optional[str] = options.sources[0] if len(options.sources) == 1 and is_results(options.sources[0]) else None
    is_unfinished = os.path.exists(own)
    if os.path.lexists(output) and not options.force and not is_unfinished:
        raise FarmError(f"{shown(output)}: there is such a file already; --force overwrites it")
    if given and options.what == "table":
        return _make_table(given, output)
    status = gather(_names(options, given, a_round), Results(own), plan, a_round)
    if options.what == "table":
        _make_table(own, output)
    else:
        write_report(own, output, options.force or is_unfinished)
    os.unlink(own)
    return status


def _names(options: argparse.Namespace, given: Optional[str], a_round: Round) -> Names:
    if given:
        return Named(given)
    return _sources(options, a_round)


def _make_table(results: str, output: str) -> int:
    statuses = Statuses()
    with whole_file(output) as file:
        write_table(statuses.heard(documents(results)), file)
    return statuses.worst
