#!/usr/bin/python3
"""Lets each MAPI operation of the calendar scenario hang, in real processes.

usage: hang_sweep.py BUILD [--stride N] [--prefixes N]

The scenario is bring-up, listing, change and release. Three runs count the calls of each operation; then, for
each operation that is called at all, its first call hangs, the first calls that the listing and the change
add, and the last call. Each call hangs twice, once for each road on which the server has to end:

  frame    the client's frame window goes
  release  the client calls ReleaseApp and drops its references

Until then the client's calls must be answered. Prints a line for each case that went wrong and one that counts
them all. --prefixes N runs N cases side by side, each in a Wine prefix of its own, which stays in the build folder
for the next time (0.7 GB each).
"""

import argparse
import os
import queue
import re
import sys
from collections import Counter, namedtuple
from concurrent.futures import ThreadPoolExecutor
from datetime import datetime

from product import (CLEAN, OK, ON_CALENDAR_UPDATED, ON_INITIALIZE, ON_LIST_APPOINTMENT, SERVER, SOURCE, Client,
                     Prefix, Product, change, model)

PHASES = ("bring-up", "listing", "change", "release")
ROADS = ("frame", "release")
TOLD_BY = {"bring-up": ON_INITIALIZE, "listing": ON_LIST_APPOINTMENT, "change": ON_CALENDAR_UPDATED}
OPERATIONS = os.path.join(SOURCE, "mapistore", "operations.txt")
CALENDAR = os.path.join(SOURCE, "tests", "server", "sweep", "calendar.ics")
FIRST, LAST = datetime(2026, 11, 1), datetime(2026, 12, 1)

Case = namedtuple("Case", "operation call road")
Outcome = namedtuple("Outcome", "phase problems")


class Stage:
    """The product in one prefix. A watcher owns the frame window, so that it can go while the client waits for
    an answer, and hears of the hang."""

    def __init__(self, prefix):
        self.prefix = prefix
        self.product = Product(prefix)
        self.product.dtstore("import", self.product.store, CALENDAR, "--quiet")
        self.watcher = Client(prefix)
        self.watcher.must("frame")
        self.changes = 0
        self.cases = 0

    def close(self):
        self.watcher.close()
        self.product.__exit__()

    def cases_of_all_calls(self):
        """Every case: the first calls of all operations, then those that listing and change add, then the last."""
        up, listed, whole = (self._counts(PHASES[:length]) for length in (1, 2, 3))
        kinds = ([(name, 1) for name in whole],
                 [(name, up[name] + 1) for name in whole if listed[name] > up[name]],
                 [(name, listed[name] + 1) for name in whole if whole[name] > listed[name]],
                 [(name, whole[name]) for name in whole])
        calls = list(dict.fromkeys(call for kind in kinds for call in kind))
        return [Case(*call, road) for road in ROADS for call in calls]

    def _counts(self, phases):
        """How often each operation is called, by faults that never come, when a client goes through these phases
        and releases the server."""
        with open(OPERATIONS, encoding="utf-8") as file:
            names = [line.strip() for line in file if line.strip() and not line.startswith("#")]
        self.product.set_faults("\n".join(f"{name} call 1000000000 fail E_FAIL" for name in names))
        client = self._client()
        self._go_through(client, (*phases, "release"), lambda: False)
        client.must("release")
        client.close()
        if not self.product.wait_for_server_end():
            raise RuntimeError("the server does not even end without a fault")
        lines = self.product.ledger()
        if not lines or CLEAN not in lines[-1]:
            raise RuntimeError("\n".join(["the scenario is not clean without a fault:", *lines]))
        calls = re.findall(r"^fault applied 0 of (\d+) calls: (\S+)", "\n".join(lines), re.MULTILINE)
        return Counter({name: int(count) for count, name in calls if count != "0"})

    def _client(self):
        client = Client(self.prefix, self.watcher.came)
        client.must("create")
        client.must("advise main")
        return client

    def _go_through(self, client, phases, hangs):
        """The first of the phases during which hangs() becomes true; None when all of them pass."""
        for phase in phases:
            if phase == "bring-up":
                client.must("initialize 1 CALENDARING")
            elif phase == "listing":
                client.ask(FIRST, LAST)
            elif phase == "change":
                self._change_the_series()
            else:
                client.send("releaseapp 0")

            def passes(heard, phase=phase):
                return hangs() or (client.is_answered("releaseapp") if phase == "release" else
                                   any(event.id == TOLD_BY[phase] for event in heard))
            client.wait(passes, f"the end of the {phase}")
            if hangs():
                return phase
        return None

    def _change_the_series(self):
        self.changes += 1

        def apply(document):
            series = next(message for message in model.default_store(document)["messages"]
                          if message["properties"].get("PidLidRecurring"))
            change(document, series["id"], f"subject=Change {self.changes}")
        self.product.edit(apply)

    def run(self, case):
        """The phase in which the call hung, and what went wrong."""
        self.cases += 1
        name = f"MapiStore.case{self.cases}"
        self.product.set_faults(f"{case.operation} call {case.call} hang case{self.cases}")
        self.watcher.must(f"keepsignal {name}.reached")
        client = self._client()
        self.watcher.send(f"waitsignal {name}.reached")
        phase, problems = None, []
        try:
            phase = self._go_through(client, PHASES, lambda: self.watcher.is_answered("waitsignal"))
            if phase is None:
                client.must(f"signal {name}.reached")
                problems.append("the call never came")
            elif self.watcher.answer("waitsignal").value != "1":
                problems.append("the signal of the hang did not come")
            elif case.road == "frame":
                problems += self._end_by_frame(client, phase)
            else:
                problems += self._end_by_release(client, phase)
        except AssertionError as problem:
            problems.append(str(problem))
        client.close()
        if problems and phase is None:
            self.watcher.answer("waitsignal")
        self._tidy(case, problems)
        return Outcome(phase, [f"{case.operation} call {case.call}, {case.road}, {phase}: {one}" for one in problems])

    @staticmethod
    def _wrong_answers(client, phase):
        """Calls that are not answered as they should be while a call of this phase hangs."""
        wrong = []
        for command, expected in (("empties vtable", "10"), ("list 0", ""),
                                  ("profile", "<CurrentOLProfile>" if phase in ("listing", "change") else "untouched")):
            answer = client.do(command)
            if answer.result != OK or not answer.value.startswith(expected):
                wrong.append(f"{command} answered 0x{answer.result:08X} {answer.value}")
        return wrong

    def _end_by_frame(self, client, phase):
        """The frame window goes; in the release this happens while the client waits for the answer."""
        problems = self._wrong_answers(client, phase) if phase != "release" else []
        self.watcher.must("closeframe")
        problems += self._server_stays()
        if phase == "release":
            # The monitor ends the process long before the release gives up its wait.
            if client.answer("releaseapp").result == OK:
                problems.append("ReleaseApp waited to its end though the frame window had gone")
        elif client.do("empties vtable").result == OK:
            problems.append("a call was answered behind the server's end")
        return problems

    def _end_by_release(self, client, phase):
        """ReleaseApp is answered though the work thread never ends, and the last reference ends the server."""
        problems = []
        if phase != "release":
            problems += self._wrong_answers(client, phase)
            client.send("releaseapp 0")
        answer = client.answer("releaseapp")
        if answer.result != OK:
            problems.append(f"ReleaseApp answered 0x{answer.result:08X}")
        problems += self._wrong_answers(client, phase)
        heard = len(client.events)
        client.must("release")
        problems += self._server_stays()
        return problems + [f"event {event.id} behind the release" for event in client.events[heard:]]

    def _server_stays(self):
        return [] if self.watcher.must(f"waitend {SERVER}") == "1" else ["the server did not end"]

    def _tidy(self, case, problems):
        """Makes the stage as it was: the next server must find no trace of this one."""
        if problems:
            self.watcher.do(f"endall {SERVER}")
        if case.road == "frame":
            self.watcher.must("frame")
        if problems or case.road == "frame":
            self.product.renew_activator()


def sample_of(cases, road, number, share):
    """That many cases of a road, spread over all of them. `share` says how far inside its piece each lies: 0 to 1."""
    of_road = [case for case in cases if case.road == road]
    step = len(of_road) / number
    return [of_road[int((piece + share) * step)] for piece in range(number)]


def run_all(stages, cases):
    """The outcomes of all cases; each stage takes the next one when it is free."""
    waiting = queue.SimpleQueue()
    for case in cases:
        waiting.put(case)

    def work(stage):
        outcomes = []
        while True:
            try:
                case = waiting.get_nowait()
            except queue.Empty:
                return outcomes
            outcomes.append(stage.run(case))
            for line in outcomes[-1].problems:
                print(line, flush=True)

    with ThreadPoolExecutor(len(stages)) as pool:
        return [outcome for some in pool.map(work, stages) for outcome in some]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("--stride", type=int, default=1, help="each STRIDE-th case alone, as a sample (1)")
    parser.add_argument("--prefixes", type=int, default=1, help="cases side by side, each in a prefix of its own (1)")
    options = parser.parse_args()
    with ThreadPoolExecutor(options.prefixes) as pool:
        prefixes = list(pool.map(lambda number: Prefix(options.build, name=f"wineprefix-hang-{number}"),
                                 range(options.prefixes)))
        stages = list(pool.map(Stage, prefixes))
    try:
        cases = stages[0].cases_of_all_calls()
        print(f"{len({case.operation for case in cases})} operations called, {len(cases)} cases", flush=True)
        outcomes = run_all(stages, cases[::options.stride])
    finally:
        for stage in stages:
            stage.close()
        for prefix in prefixes:
            prefix.stop()
    phases = Counter(outcome.phase for outcome in outcomes)
    wrong = sum(bool(outcome.problems) for outcome in outcomes)
    print(f"{len(outcomes)} of {len(cases)} cases, {wrong} wrong; hung in "
          + ", ".join(f"{phase} {phases[phase]}" for phase in PHASES))
    return 1 if wrong or not outcomes else 0


if __name__ == "__main__":
    sys.exit(main())
