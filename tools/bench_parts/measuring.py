"""Runs the contenders of a row in turn, and says what it took."""

import contextlib
import ctypes
import os
import pathlib
import platform
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from bench_parts import trees
from bench_parts.places import Failure, remove
from bench_parts.rows import kept_trees


def adopt_orphans():
    """Processes whose parent has ended become children of this one."""
    set_child_subreaper = 36
    if ctypes.CDLL(None).prctl(set_child_subreaper, 1, 0, 0, 0) != 0:
        raise Failure("the system does not let this process adopt orphans")


def cpu_of_orphans(name):
    """Of those that a program has left behind: the system counts a child only when its parent has
    waited for it, and a worker process may be a moment behind its program. The helper that presses
    the keys of mc is none."""
    cpu = 0.0
    with contextlib.suppress(ChildProcessError):
        while ended := os.waitid(os.P_ALL, 0, os.WEXITED | os.WNOWAIT):
            whose = pathlib.Path(f"/proc/{ended.si_pid}/comm").read_text(errors="replace").strip()
            _, _, usage = os.wait4(ended.si_pid, 0)
            if whose == name[:15] and not name.endswith(".py"):
                cpu += usage.ru_utime + usage.ru_stime
    return cpu


def run(command):
    """CPU and wall seconds of the command and all its children."""
    with tempfile.TemporaryFile() as errors:
        started = time.perf_counter()
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=errors, start_new_session=True)
        try:
            _, status, usage = os.wait4(process.pid, 0)
        except BaseException:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            raise
        wall = time.perf_counter() - started
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            errors.seek(0)
            text = errors.read().decode(errors="replace").strip()[-500:]
            raise Failure(f"{command[0]} ended with {process.returncode}: {text}")
    orphans = cpu_of_orphans(pathlib.Path(command[0]).name)
    return {"cpu": usage.ru_utime + usage.ru_stime + orphans, "wall": wall}


def peak_memory(command):
    """In KiB. A child of ours would begin with our own peak, so a small program starts it."""
    with tempfile.NamedTemporaryFile("r") as file:
        run(["time", "--format=%M", f"--output={file.name}", *command])
        return int(file.read())


def system_calls(command):
    """How often each kind was called."""
    with tempfile.NamedTemporaryFile("r") as file:
        run(["strace", "--follow-forks", "--summary-only", f"--output={file.name}", *command])
        lines = [line.split() for line in file]
    return {words[-1]: int(words[3]) for words in lines
            if len(words) > 3 and words[3].isdigit() and words[-1] != "total"}


class Bench:
    def __init__(self, options, places, chosen):
        self.options = options
        self.places = places
        self.chosen = chosen
        self.trees = trees.trees(options.quick)

    def make_trees(self, row):
        for name, place in row.trees():
            path = self.places.tree(name, place)
            if not path.exists():
                trees.make(name, self.trees[name], path, self.options.seed)

    def remove_trees(self, index):
        later = kept_trees(self.chosen, index + 1)
        for name, place in kept_trees(self.chosen, index) - later:
            remove(self.places.tree(name, place).parent)
        for place in self.places.directories:
            remove(self.places.out(place))
            remove(self.places.moved(place))

    def present(self, commands):
        """A program that could not be installed is left out; the first two are always there."""
        for name in list(commands):
            if name in ("rsync", "mc") and not shutil.which(name):
                print(f"{name} is not installed and left out.", file=sys.stderr)
                del commands[name]
        return commands

    def measure(self, row):
        commands = self.present(row.commands(self.options.program, self.places))
        # A round that does not count: it warms the caches, and it is checked.
        for who, command in commands.items():
            row.prepare(self.places, command)
            run(command)
            row.check(who, self.places)
        runs = {who: [] for who in commands}
        for number in range(min(self.options.pairs, row.most_pairs)):
            # The first of a turn gets the memory that has been idle for longest.
            for who in list(commands)[::1 if number % 2 == 0 else -1]:
                row.prepare(self.places, commands[who])
                runs[who].append(run(commands[who]))
        row.prepare(self.places, commands["ours"])
        memory = peak_memory(commands["ours"])
        calls = {}
        if row.bTraced:
            row.prepare(self.places, commands["ours"])
            calls = system_calls(commands["ours"])
        return {"name": row.name, "title": row.title, "against": row.against,
                "goals": row.goals, "entries": self.trees[row.tree].entries, "runs": runs,
                "memory": memory, "calls": calls}

    def rows(self):
        for index, row in enumerate(self.chosen):
            print(f"{row.name} ...", file=sys.stderr)
            self.make_trees(row)
            yield self.measure(row)
            self.remove_trees(index)


def machine():
    cpus = pathlib.Path("/proc/cpuinfo").read_text().splitlines()
    model = next((line.split(":")[1].strip() for line in cpus if line.startswith("model name")),
                 platform.machine())
    memory = os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
    return {"cpu": model, "cores": os.cpu_count(), "memory": memory,
            "kernel": platform.release()}
