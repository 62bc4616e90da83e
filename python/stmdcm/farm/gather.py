"""The loop: what is not among the results yet goes to the workers, and what comes back is written."""

from __future__ import annotations

import itertools
import sys
import time
from typing import NamedTuple, Optional

from stmdcm.farm.engine import Engine
from stmdcm.farm.errors import FAILED, FarmError, Stopped, shown
from stmdcm.farm.names import Once, Names, total
from stmdcm.farm.progress import Progress, in_words
from stmdcm.farm.results import Results
from stmdcm.farm.rows import DONE, PROBLEMS, UNREAD


class Plan(NamedTuple):
    """Who works, and with what."""

    jobs: int
    scheduler: Optional[str]
    reader: str


class Round:
    """What is told of one run on standard error."""

    def __init__(self) -> None:
        self.is_list_whole = True
        self._progress: Optional[Progress] = None

    def tell(self, sentence: str) -> None:
        if self._progress:
            self._progress.clear()
        print(f"stmdcm.farm: {sentence}", file=sys.stderr)

    def tell_of_list(self, sentence: str) -> None:
        self.is_list_whole = False
        self.tell(sentence)

    def begin(self, progress: Progress) -> None:
        self._progress = progress

    def end(self, results: Results, before: int, begin: float) -> None:
        number, seconds = results.number, time.monotonic() - begin
        new = number - before
        kinds = {DONE: "without problems", PROBLEMS: "with problems", UNREAD: "unreadable"}
        counts = ", ".join(f"{results.statuses.get(status, 0)} {words}" for status, words in kinds.items())
        self.tell(f"{number} captures: {counts}; {new} of them in {in_words(seconds)}, {new / seconds:.0f}/s")


def gather(sources: Names, results: Results, plan: Plan, a_round: Round) -> int:
    """Gives the status that counts most, of what was there before, too. Throws FarmError, and Stopped with all on disk."""
    once = Once()
    results.take_known(once)
    before, begin = results.number, time.monotonic()
    if results.was_cut or before > 0:
        a_round.tell(f"goes on behind the {before} results that are there")
    try:
        _work(sources, results, plan, once, a_round)
    except (Stopped, FarmError):
        if results.number > 0:
            a_round.tell(f"stopped with {results.number} results in {shown(results.path)}; the same command goes on behind them")
        raise
    finally:
        results.close()
    if results.number == 0:
        what = "there are no captures: the lists are empty, and no file of the folders has such a name"
        raise FarmError(what, FAILED if a_round.is_list_whole else UNREAD)
    a_round.end(results, before, begin)
    return max([*results.statuses, DONE if a_round.is_list_whole else UNREAD])


def _work(sources: Names, results: Results, plan: Plan, once: Once, a_round: Round) -> None:
    names = once.of(iter(sources))
    first = next(names, None)
    if first is None:
        return
    progress = Progress(results.number, (lambda: total(sources)) if sources.can_be_read_again else None)
    a_round.begin(progress)
    with Engine(plan.jobs, plan.scheduler, plan.reader, a_round.tell) as engine:
        for result in engine.results(itertools.chain([first], names)):
            if result is not None:
                results.append(result.lines, result.statuses)
            progress.update(results.number)
    progress.clear()
