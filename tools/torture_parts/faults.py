"""Makes each single call fail, be the moment of a cancel, and be the last one.

For every scenario, by the engine alone and by the program, and for every kind of call and every
error: the first such call, then the second, until the run no longer gets to it.
"""

import collections
import dataclasses
import multiprocessing
import os
import pathlib
import random
import tempfile

from torture_parts.fault_invariants import (Situation, old_entries_lost,
                                            silently_lost_modes_or_times, violations,
                                            violations_of_second_run)
from torture_parts.fault_kinds import effects_of, rule
from torture_parts.fault_runs import Place, adopt_orphans
from torture_parts.fault_scenarios import SCENARIOS
from torture_parts.part import Row

RUNNERS = {"engine": "engine alone", "program": "program", "terminal": "program on a terminal"}
# Runs on a terminal take two seconds, in which they wait for keys. So many are made at once, and
# the calls of one kind are shared by so many tasks.
PER_PROCESSOR = {"engine": 1, "program": 1, "terminal": 8}
PER_TERMINAL = 16
# They take the longest and begin first, so that no processor waits for the last of them.
MANY_CALLS = ("alloc", "wait", "any")
# No run makes so many calls.
MOST_CALLS = 20000
FAILURES_SHOWN = 3


@dataclasses.dataclass(frozen=True)
class Task:
    """Every step-th call of a kind, from the first one on."""

    scenario: str
    runner: str
    kind: str
    effect: str
    first: int = 1
    step: int = 1

    def case(self, number):
        return f"{self.scenario}:{self.runner}:{self.kind}:{number}:{self.effect}"


@dataclasses.dataclass
class Tally:
    """What came of a task."""

    tried: int = 0
    lost: int = 0
    without_modes: int = 0
    failures: list = dataclasses.field(default_factory=list)


class Worker:
    """Runs tasks in folders of its own."""

    def __init__(self, build, scratch, elsewhere):
        adopt_orphans()
        self.place = Place(build, scratch, elsewhere)
        self.expected = {}

    def expected_of(self, scenario, runner):
        """The trees before, and the outcome with nothing going wrong."""
        key = scenario.name, runner
        if key not in self.expected:
            before = self.place.fresh_trees(scenario)
            self.expected[key] = (*before, self.place.run(scenario, runner, rule("any", 0, "EIO")))
        return self.expected[key]

    def situation(self, task, number):
        scenario = SCENARIOS[task.scenario]
        expected = self.expected_of(scenario, task.runner)
        outcome = self.place.run(scenario, task.runner, rule(task.kind, number, task.effect))
        return Situation(scenario, task.runner, task.kind, task.effect, *expected, outcome)

    def second_run(self, run):
        """What does not hold after it."""
        if not run.killed or not run.scenario.repeatable:
            return []
        return list(violations_of_second_run(run, self.place.run_again(run.scenario)))

    def perform(self, task):
        tally = Tally()
        for number in range(task.first, MOST_CALLS, task.step):
            run = self.situation(task, number)
            if not run.fits:
                continue
            found = list(violations(run)) + self.second_run(run)
            if found:
                tally.failures.append((task.case(number), run.outcome.call, found))
            if not run.outcome.reached:
                break
            tally.tried += 1
            tally.lost += old_entries_lost(run)
            tally.without_modes += silently_lost_modes_or_times(run)
        return task, tally


def start_worker(build, scratch, elsewhere):
    name = str(os.getpid())
    Worker.current = Worker(build, scratch / name, elsewhere / name)


def perform(task):
    return Worker.current.perform(task)


def firsts(context, runner, step, chance):
    """Where tasks of that step begin: all together go through every call, one takes a share."""
    if context.size == "whole" and runner == "terminal":
        return range(1, step + 1)
    return [chance.randint(1, step)]


def tasks_of(context):
    """All of them, or a share that the seed picks: of the tasks, and of the calls in each."""
    chance = random.Random(context.seed)
    step = {"engine": context.share(5, 4, 1), "terminal": context.share(500, 100, PER_TERMINAL)}
    step["program"] = step["engine"]
    tasks = [Task(name, runner, kind, effect, first, step[runner])
             for name, scenario in SCENARIOS.items() for runner in scenario.runners
             for kind, effect in effects_of(runner)
             for first in firsts(context, runner, step[runner], chance)]
    mixed = chance.sample(tasks, context.share(150, 2000, len(tasks)))
    return sorted(mixed, key=lambda task: task.kind not in MANY_CALLS)


def shown_failures(failures):
    shown = [f"`tools/torture faults --case '{case}'` ({call}): {'; '.join(found)}"
             for case, call, found in failures[:FAILURES_SHOWN]]
    more = len(failures) - FAILURES_SHOWN
    return "<br>".join(shown + ([f"and {more} more"] if more > 0 else []))


def note_of(tally):
    if tally.failures:
        return shown_failures(tally.failures)
    notes = []
    if tally.lost:
        notes.append(f"old entries lost that were to be replaced: {tally.lost:,}")
    if tally.without_modes:
        notes.append("runs whose copies are more private than their sources, or of another"
                     f" time, and no line says so: {tally.without_modes:,}")
    return "; ".join(notes)


def subject_of(task):
    if task.kind == "any":
        return f"{task.effect} at any call, {RUNNERS[task.runner]}"
    what = "is short" if task.effect == "short" else "fails"
    return f"{task.kind} {what}, {RUNNERS[task.runner]}"


def rows_of(tallies):
    rows = collections.defaultdict(Tally)
    for task, tally in tallies:
        row = rows[subject_of(task)]
        row.tried += tally.tried
        row.lost += tally.lost
        row.without_modes += tally.without_modes
        row.failures += tally.failures
    return [Row(subject, row.tried, row.tried - len(row.failures), note_of(row))
            for subject, row in sorted(rows.items()) if row.tried or row.failures]


def repeat(context, elsewhere):
    """The one case that the command line names."""
    scenario, runner, kind, number, effect = context.case.rsplit(":", 4)
    worker = Worker(context.build, context.scratch / "case", elsewhere / "case")
    run = worker.situation(Task(scenario, runner, kind, effect), int(number))
    print(f"{run.outcome.call}\nstatus {run.outcome.status}\n{run.outcome.text}")
    found = list(violations(run)) + worker.second_run(run)
    return [Row(context.case, 1, int(not found), "; ".join(found))]


def run(context):
    """The rows of this part."""
    with tempfile.TemporaryDirectory(prefix="tarvane-torture-", dir="/dev/shm") as elsewhere:
        if context.case:
            return repeat(context, pathlib.Path(elsewhere))
        return rows_of(tallies_of(context, pathlib.Path(elsewhere)))


def tallies_of(context, elsewhere):
    tallies, tasks = [], tasks_of(context)
    for per_processor in sorted(set(PER_PROCESSOR.values())):
        share = [task for task in tasks if PER_PROCESSOR[task.runner] == per_processor]
        with multiprocessing.Pool(per_processor * os.cpu_count(), start_worker,
                                  (context.build, context.scratch, elsewhere)) as pool:
            for done in pool.imap_unordered(perform, share):
                tallies.append(done)
                context.progress(f"{len(tallies)} of {len(tasks)} kinds of failure")
    return tallies
