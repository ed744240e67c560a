"""The rows of the table: what each copies or moves, against what, and how fast it should be."""

import dataclasses
import os
import subprocess
import sys

from bench_parts.places import command, remove

# In MiB: the goal, and what is beyond it.
MEMORY = (8, 5)


class WrongResult(Exception):
    pass


def require_equal(expected, actual):
    diff = subprocess.run(["diff", "-r", "--brief", "--no-dereference", expected, actual],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if diff.returncode != 0:
        raise WrongResult(f"{actual} is not what it should be: {diff.stdout.splitlines()[0]}")


@dataclasses.dataclass
class Row:
    """A copy into an empty directory, against cp -r."""

    name: str
    title: str
    tree: str
    source: str
    target: str
    # By what is measured: the goal, and what is beyond it.
    goals: dict

    against = "cp -r"
    bWithQuick = True
    bWithoutFull = True
    bTraced = True
    most_pairs = sys.maxsize

    def trees(self):
        return [(self.tree, self.source)]

    def room(self):
        """What is there during the run: each tree and the copy, with the place."""
        return self.trees() + [(self.tree, self.target)]

    def commands(self, program, places):
        """By who does it: ours first, then the one to compare with."""
        source = places.tree(self.tree, self.source)
        out = places.out(self.target)
        return {"ours": [program, "copy", "-q", source, out],
                self.against: ["cp", "-r", source, out]}

    def prepare(self, places):
        remove(places.out(self.target))
        places.out(self.target).mkdir()
        os.sync()

    def check(self, who, places):
        require_equal(places.tree(self.tree, self.source), places.out(self.target) / "tree")


class SlowRow(Row):
    bWithQuick = False
    most_pairs = 3


class MemoryRow(Row):
    """Only for the memory that we take."""

    bWithoutFull = False
    bTraced = False
    most_pairs = 1

    def commands(self, program, places):
        commands = super().commands(program, places)
        return {"ours": commands["ours"]}


def rows():
    def ratio(goal, beyond):
        return {"ratio": (goal, beyond), "memory": MEMORY}

    big, small = "one file of 4 GiB", "50,000 small files"
    mixed = "20,000 mixed files, 1 GiB"
    return [
        Row("big-tmpfs", f"{big}, tmpfs", "big", "tmpfs", "tmpfs", ratio(1, 0.95)),
        Row("big-ext4", f"{big}, ext4", "big", "ext4", "ext4", ratio(1, 0.95)),
        Row("small-tmpfs-ext4", f"{small}, tmpfs → ext4", "small", "tmpfs", "ext4",
            ratio(0.95, 0.75)),
        Row("small-ext4", f"{small}, ext4", "small", "ext4", "ext4", ratio(1.45, 1.1)),
        Row("small-tmpfs", f"{small}, tmpfs", "small", "tmpfs", "tmpfs", ratio(1.5, 1.2)),
        Row("mixed", f"{mixed}, ext4", "mixed", "ext4", "ext4", ratio(1.25, 1)),
        Row("deep-200", "200 levels deep, 1,000 files, tmpfs", "deep-200", "tmpfs", "tmpfs",
            {"ratio": (1.75, 1)}),
        SlowRow("deep-2000", "2,000 levels deep, 2,000 files, tmpfs", "deep-2000", "tmpfs",
                "tmpfs", {"seconds": (5, 1), "memory": (300, 300)}),
        Row("empty", "200,000 empty files in a folder, tmpfs → ext4", "empty", "tmpfs", "ext4",
            ratio(1.3, 1)),
        MemoryRow("million", "1,000,000 empty files, tmpfs", "million", "tmpfs", "tmpfs",
                  {"memory": MEMORY}),
    ]


@dataclasses.dataclass
class Room:
    """The most that the rows need at one time."""

    tmpfs_bytes: int = 0
    ext4_bytes: int = 0
    ext4_entries: int = 0
    memory_bytes: int = 0


def kept_trees(chosen, index):
    """The trees that are there while the row is measured: its own, and those made for others."""
    made = {tree for row in chosen[:index + 1] for tree in row.trees()}
    needed = {tree for row in chosen[index:] for tree in row.trees()}
    return made & needed


def needed_room(chosen, trees):
    room = Room()
    for index, row in enumerate(chosen):
        there = list(kept_trees(chosen, index) - set(row.trees())) + row.room()
        tmpfs = [trees[name] for name, place in there if place == "tmpfs"]
        ext4 = [trees[name] for name, place in there if place == "ext4"]
        tmpfs_bytes, ext4_bytes = (sum(tree.size for tree in group) * 11 // 10
                                   for group in (tmpfs, ext4))
        room.tmpfs_bytes = max(room.tmpfs_bytes, tmpfs_bytes)
        room.ext4_bytes = max(room.ext4_bytes, ext4_bytes)
        room.ext4_entries = max(room.ext4_entries, sum(tree.entries for tree in ext4))
        # Files of the ext4 are in memory too, or they would be read from the disk.
        room.memory_bytes = max(room.memory_bytes, tmpfs_bytes + ext4_bytes)
    return room
