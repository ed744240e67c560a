"""What must hold after a run, whatever went wrong in it."""

import dataclasses
import os
import re
import stat

from torture_parts.fault_kinds import SIGNALS
from torture_parts.fault_trees import MODIFIED

COUNTS_LINE = re.compile(r"(Copied|Moved) \d.*|Nothing (copied|moved)\..*")
OTHER_LAST_LINE = re.compile(r"Canceled before anything was touched\.|tarvane: .+"
                             r"|The destination does not keep .*\.|\d.* left alone: .*\.")
# A run that says one of these has told what has not got its mode and times.
NOT_CARRIED_OVER = ("The destination does not keep", "left alone: ",
                    "The job will stop at entries that cannot be looked at:")


@dataclasses.dataclass
class Situation:
    """A run and what it is compared with."""

    scenario: object
    runner: str
    kind: str
    effect: str
    # The trees before the run, and a run in which nothing went wrong.
    sources: dict
    destinations: dict
    expected: object
    outcome: object

    @property
    def killed(self):
        return self.effect == "SIGKILL" and self.outcome.reached

    @property
    def fits(self):
        """Whether a file system could have failed so: a taken name is not missing."""
        name = (self.outcome.call + "/").partition("/to/")[2].rstrip("/")
        is_there = name in self.destinations or self.outcome.call.endswith("/to")
        return self.effect != "ENOENT" or self.kind != "stat" or not is_there


def differs(first, second):
    return first is None or second is None or first.content != second.content


def resolved(tree, name):
    """The content that a link in the tree leads to, or what the entry itself has."""
    entry = tree[name]
    if entry.kind != "link":
        return entry.content
    target = os.path.normpath(os.path.join(os.path.dirname(name), os.fsdecode(entry.data)))
    return tree[target].content if target in tree else entry.content


def sources_are_safe(run):
    for name, before in run.sources.items():
        after = run.outcome.sources.get(name)
        if after is not None and (differs(before, after) or before.mode != after.mode):
            yield f"the source {name} was changed"
        if after is not None:
            continue
        copy = run.outcome.destinations.get(run.scenario.destination_of(name))
        if not run.scenario.move or name in run.expected.sources:
            yield f"the source {name} is gone"
        elif copy is None or copy.content not in (before.content, resolved(run.sources, name)):
            yield f"the source {name} is gone and its copy is not complete"
    for name in run.outcome.sources.keys() - run.sources.keys():
        yield f"{name} was made among the sources"


def destinations_are_whole(run):
    """Each is as it was or as it was to become, or has made room for what was to become."""
    expected = run.expected.destinations
    for name, after in run.outcome.destinations.items():
        before, planned = run.destinations.get(name), expected.get(name)
        if not differs(before, after) or not differs(planned, after):
            continue
        begun = planned is not None and after.kind == planned.kind == "file"
        if not (run.killed and begun and planned.data.startswith(after.data)):
            yield f"{name} is left at the destination, neither old nor complete"
    for name, before in run.destinations.items():
        if name not in run.outcome.destinations and not differs(before, expected.get(name)):
            yield f"{name} is gone from the destination"


def old_entries_lost(run):
    """What was to be replaced, and is gone without a replacement: this much is allowed."""
    return sum(name not in run.outcome.destinations for name in run.destinations)


def nothing_is_more_open(run):
    """The engine makes new files as the umask says, so only the program has to see to it."""
    for name, after in run.outcome.destinations.items():
        before = run.destinations.get(name)
        planned = run.expected.destinations.get(name)
        allowed = [entry.mode for entry in (before, planned) if entry is not None]
        if after.kind != "link" and allowed and not any(
                after.mode & ~mode & ~stat.S_IRWXU == 0 for mode in allowed):
            yield f"{name} is more open than its source: {after.mode:o}"


def everything_is_done(run):
    """Of a run that says that it has succeeded."""
    for tree, planned in ((run.outcome.sources, run.expected.sources),
                          (run.outcome.destinations, run.expected.destinations)):
        for name in sorted(tree.keys() | planned.keys()):
            if differs(tree.get(name), planned.get(name)):
                yield f"success is reported, but {name} is not as it should be"


def silently_lost_modes_or_times(run):
    """Whether the program has succeeded without them, and without a word of it."""
    if (run.runner == "engine" or run.outcome.status != 0
            or any(text in run.outcome.text for text in NOT_CARRIED_OVER)):
        return False
    for name, planned in run.expected.destinations.items():
        after = run.outcome.destinations.get(name)
        if after is None or planned.kind == "link":
            continue
        if after.mode != planned.mode or (
                planned.modified == MODIFIED != after.modified and planned.kind == "file"):
            return True
    return False


def is_unreadable_folder(run):
    """The engine takes a folder for empty that it may not list, in its scan and in its copy."""
    return (run.kind == "open" and run.effect == "EACCES"
            and run.outcome.call.startswith("open openat"))


def counters_tell_the_truth(run, report):
    uncounted = run.scenario.follows or is_unreadable_folder(run)
    for unit in ("items", "bytes"):
        done, total, skipped = report[unit]
        if not uncounted and done > total:
            yield f"{done} {unit} of {total} are done"
        if skipped > done:
            yield f"{skipped} {unit} of {done} are skipped"
        if report["result"] == "succeeded" and not uncounted and done != total:
            yield f"success is reported, but only {done} {unit} of {total} are counted"
    complete = sum(not differs(entry, run.expected.destinations.get(name))
                   for name, entry in run.outcome.destinations.items())
    if report["items"][0] - report["items"][2] > complete:
        yield f"{report['items'][0]} items are counted as done, {complete} are there"


def engine_gives_back_everything(run, report):
    for what in ("descriptors", "threads"):
        if report[what] != 0:
            yield f"{report[what]} {what} are left"
    if report["allocations"] > run.expected.report["allocations"]:
        yield f"{report['allocations']} allocations are left"


def engine_ends_properly(run):
    if run.outcome.status != 0:
        yield f"the embedding program ended with {run.outcome.status}: {run.outcome.text}"
        return
    report = run.outcome.report
    thrown = report["result"] == "unfinished" and report["exception"]
    if not thrown and (report["result"] == "unfinished" or not report["message"]):
        yield "the job has not ended"
    if thrown and run.kind != "alloc":
        yield f"an exception left the engine: {report['exception']}"
    yield from counters_tell_the_truth(run, report)
    yield from engine_gives_back_everything(run, report)
    if report["result"] == "succeeded" and not is_unreadable_folder(run):
        yield from everything_is_done(run)


def statuses_that_fit(run):
    """A signal that comes before its handler is there, or after it, ends the program at once."""
    ends = {"SIGINT": {130, -SIGNALS["SIGINT"]}, "SIGTERM": {143, -SIGNALS["SIGTERM"]}}
    canceled = {130} if run.outcome.gave_up else set()
    return {run.expected.status, 1} | canceled | ends.get(run.effect, set())


def says_how_it_ended(run):
    lines = run.outcome.text.splitlines()
    counts = sum(COUNTS_LINE.fullmatch(line) is not None for line in lines)
    if counts > 1:
        yield f"it ended more than once: {run.outcome.text}"
    if not lines or not (COUNTS_LINE.fullmatch(lines[-1]) or OTHER_LAST_LINE.fullmatch(lines[-1])):
        yield f"the last line does not say how it ended: {run.outcome.text}"
    if run.outcome.status == 1 and not any(line.startswith("tarvane: ") for line in lines):
        yield f"it failed and does not say of what: {run.outcome.text}"


def is_untouched(run):
    return (run.outcome.sources, run.outcome.destinations) == (run.sources, run.destinations)


def program_ends_properly(run):
    status = run.outcome.status
    if status == 2 and is_untouched(run):
        # What was asked for made no sense with what was seen of the destination.
        return
    if status in (130, 143) and not run.outcome.text and is_untouched(run):
        # Canceled while it still found out what was asked for.
        return
    if status not in statuses_that_fit(run):
        yield f"the exit status is {status}: {run.outcome.text}"
        return
    if status < 0 and is_untouched(run):
        return
    if status >= 0 and run.kind != "print":
        yield from says_how_it_ended(run)
    if status > 0 or run.expected.status != 0:
        return
    if run.scenario.follows and is_unreadable_folder(run):
        # The program tells it from the counts, to which followed links add as much elsewhere.
        return
    yield from everything_is_done(run)


def violations(run):
    """Sentences, one for each thing that does not hold."""
    if run.outcome.hung:
        yield "it did not end"
        return
    yield from sources_are_safe(run)
    yield from destinations_are_whole(run)
    if run.outcome.surplus_closes:
        yield f"{run.outcome.surplus_closes} descriptors are closed that are not open"
    if run.outcome.children:
        yield f"{run.outcome.children} child processes are left"
    if run.runner != "engine":
        yield from nothing_is_more_open(run)
    if run.killed:
        return
    if run.runner == "engine":
        yield from engine_ends_properly(run)
        return
    yield from program_ends_properly(run)
    for what in run.outcome.terminal:
        yield f"the terminal is not restored: {what}"


def violations_of_second_run(run, again):
    """After a kill: again is the run with -f over what is left of the sources."""
    if again is not None and again.status != 0:
        yield f"the second run ended with {again.status}: {again.text}"
    final = run.outcome if again is None else again
    for name, before in run.sources.items():
        top = name.partition("/")[0]
        if top not in run.scenario.operands:
            continue
        if run.scenario.move and name in final.sources:
            yield f"the source {name} is still there after the second run"
        copy = final.destinations.get(name)
        if copy is None or copy.content not in (before.content, resolved(run.sources, name)):
            yield f"{name} is not complete after the second run"
