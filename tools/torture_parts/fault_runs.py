"""Runs one scenario, by the engine alone or by the program, with one call going wrong."""

import ctypes
import dataclasses
import json
import os
import pathlib
import signal
import struct
import subprocess
import time

from torture_parts import fault_terminal
from torture_parts.fault_kinds import rule
from torture_parts.fault_trees import make_tree, read_tree

RECORD_BYTES = 512
SECONDS_LIMIT = 20
SECONDS_FOR_CHILDREN = 5
DISC = """log {place}/log
driver-list {place}/list
device /dev/sr0
disc 7
track 1 150 audio
track 2 350 audio
lead-out 40500
"""


@dataclasses.dataclass
class Outcome:
    """What a run said and what it left."""

    status: int = 0
    text: str = ""
    reached: bool = False
    # The kind of the call, its function and its path.
    call: str = ""
    hung: bool = False
    # What of the terminal is not as it was before.
    terminal: list = dataclasses.field(default_factory=list)
    # Whether whoever was at the keys has canceled it.
    gave_up: bool = False
    children: int = 0
    # Closes of what was not open, which may hit what another thread has opened.
    surplus_closes: int = 0
    sources: dict = dataclasses.field(default_factory=dict)
    destinations: dict = dataclasses.field(default_factory=dict)

    @property
    def report(self):
        """Of the engine alone."""
        return json.loads(self.text)


def adopt_orphans():
    """What a program leaves behind becomes our child, and so can be found and ended."""
    pr_set_child_subreaper = 36
    if ctypes.CDLL(None).prctl(pr_set_child_subreaper, 1, 0, 0, 0) != 0:
        raise OSError("no subreaper")


def children_left():
    """Gives what ends by itself the time to do so, ends the rest and counts it."""
    limit, left = time.monotonic() + SECONDS_FOR_CHILDREN, 0
    while True:
        try:
            process, _ = os.waitpid(-1, os.WNOHANG)
        except ChildProcessError:
            return left
        if process == 0 and time.monotonic() > limit:
            for child in pathlib.Path("/proc/self/task").glob("*/children"):
                for text in child.read_text().split():
                    os.kill(int(text), signal.SIGKILL)
                    left += 1
            limit += SECONDS_FOR_CHILDREN
        elif process == 0:
            time.sleep(0.0005)


def run_through_pipe(command, setting):
    """The status, what was written, and whether it had to be ended."""
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, start_new_session=True, **setting) as process:
        try:
            output, _ = process.communicate(timeout=SECONDS_LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            output, _ = process.communicate()
            return process.returncode, output, True
    return process.returncode, output, False


class Place:
    """The folders of one worker, in which run after run is made."""

    def __init__(self, build, scratch, elsewhere):
        self.build, self.root, self.elsewhere = build, scratch, elsewhere
        self.root.mkdir()
        self.elsewhere.mkdir()
        if os.stat(self.elsewhere).st_dev == os.stat(self.root).st_dev:
            raise OSError(f"{elsewhere} is on the file system of the scratch folder")
        self.record = self.root / "record"
        (self.root / "drives").write_text(DISC.format(place=self.root))
        (self.root / "list").write_text("")
        self.made = None

    def folders(self, scenario):
        other = self.elsewhere if scenario.across else self.root
        return self.root / "from", other / "to"

    def command(self, scenario, runner):
        source, destination = self.folders(scenario)
        sources = [name if scenario.disc else f"{source}/{name}" for name in scenario.operands]
        if runner != "engine":
            return [self.build / "program/tarvane", "move" if scenario.move else "copy",
                    *scenario.program, *sources, destination]
        options = [option.format(to=destination) for option in scenario.engine]
        names = [name.rpartition("/")[2] for name in scenario.operands]
        pairs = [path for pair in zip(sources, names)
                 for path in (pair[0], f"{destination}/{pair[1]}")]
        return [self.build / "torture/faults/tarvane_engine_run",
                *(["--move"] if scenario.move else []), *options, *pairs]

    def fresh_trees(self, scenario):
        """Both folders as before a run; those that are so already are left alone."""
        if self.made is None or self.made[0] != scenario.name:
            for folder, tree in zip(self.folders(scenario),
                                    (scenario.sources, scenario.destinations)):
                make_tree(folder, tree)
            self.made = scenario.name, tuple(map(read_tree, self.folders(scenario)))
        return self.made[1]

    def environment(self, fault):
        libraries = [self.build / "torture/faults/fault_preload.so",
                     self.build / "torture/faults/drive_preload.so"]
        return {"LD_PRELOAD": ":".join(str(library) for library in libraries), "LC_ALL": "C",
                "PATH": os.environ["PATH"], "TERM": "xterm-256color",
                "TEST_DRIVES": str(self.root / "drives"),
                "FAULT": fault, "FAULT_RECORD": str(self.record)}

    def execute(self, command, fault, keys=()):
        self.record.write_bytes(bytes(RECORD_BYTES))
        outcome = Outcome()
        setting = {"env": self.environment(fault), "cwd": self.root, "umask": 0o022}
        if keys:
            (outcome.status, output, outcome.hung, outcome.terminal,
             outcome.gave_up) = fault_terminal.run(command, keys, SECONDS_LIMIT, **setting)
        else:
            outcome.status, output, outcome.hung = run_through_pipe(command, setting)
        outcome.text = output.decode(errors="replace")
        outcome.children = children_left()
        noted = self.record.read_bytes()
        outcome.reached, outcome.surplus_closes = struct.unpack("4x?3xI", noted[:12])
        outcome.call = noted[12:].rstrip(b"\0").decode(errors="replace")
        return outcome

    def look(self, scenario, outcome):
        source, destination = self.folders(scenario)
        outcome.sources, outcome.destinations = read_tree(source), read_tree(destination)

    def run(self, scenario, runner, fault):
        """The outcome of one run in fresh folders; fault is a rule, or one that is not reached."""
        before = self.fresh_trees(scenario)
        outcome = self.execute(self.command(scenario, runner), fault, scenario.keys)
        self.look(scenario, outcome)
        if before != (outcome.sources, outcome.destinations):
            self.made = None
        return outcome

    def run_again(self, scenario):
        """Once more by the program, with -f, over the sources that are still there."""
        command = self.command(scenario, "program")
        choices = len(scenario.program)
        self.made = None
        sources = [path for path in command[2 + choices:-1]
                   if scenario.disc or os.path.lexists(path)]
        if not sources:
            return None
        outcome = self.execute([*command[:2], "-f", *sources, command[-1]], rule("any", 0, "EIO"))
        self.look(scenario, outcome)
        return outcome
