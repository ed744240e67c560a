"""The rows of the table: what each copies or moves, against what, and how fast it should be."""

import dataclasses
import pathlib
import subprocess
import sys

from bench_parts.places import Failure, command, remove

PEERS = ("rsync", "tar", "mc")
MC_COPY = pathlib.Path(__file__).with_name("mc_copy.py")
# In MiB: the goal, and what is beyond it.
MEMORY = (8, 5)


def require_equal(expected, actual):
    diff = subprocess.run(["diff", "-r", "--brief", "--no-dereference", expected, actual],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if diff.returncode != 0:
        raise Failure(f"{actual} is not what it should be: {diff.stdout.splitlines()[0]}")


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
    peers: tuple = ()

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
        """By who does it: ours first, then the one to compare with, then others."""
        source = places.tree(self.tree, self.source)
        out = places.out(self.target)
        pipe = 'tar -C "$1" -c tree | tar -C "$2" -x'
        peers = {
            "rsync": ["rsync", "-r", source, f"{out}/"],
            "tar": ["sh", "-c", pipe, "sh", source.parent, out],
            "mc": [MC_COPY, source, out],
        }
        return {"ours": [program, "copy", "-q", "--no-preserve", source, out],
                self.against: ["cp", "-r", source, out],
                **{name: peers[name] for name in self.peers}}

    def prepare(self, places, _):
        """Before a run of the command."""
        remove(places.out(self.target))
        places.out(self.target).mkdir()
        places.flush()

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


class Overwrite(Row):
    """A copy onto files of the same names with other contents, from the same program: its writes
    get the memory that its own kind of writes has left, whoever was there before."""

    def other(self, places):
        return places.tree(f"{self.tree}-other", self.target)

    def trees(self):
        return super().trees() + [(f"{self.tree}-other", self.target)]

    def commands(self, program, places):
        source, out = places.tree(self.tree, self.source), places.out(self.target)
        return {"ours": [program, "copy", "-q", "--no-preserve", "-f", source, out],
                self.against: ["cp", "-r", source, out]}

    def prepare(self, places, words):
        super().prepare(places, words)
        source = places.tree(self.tree, self.source)
        command(*(self.other(places) if word == source else word for word in words))
        places.flush()


@dataclasses.dataclass
class Keep(Overwrite):
    """A copy that leaves everything as it is."""

    option: str = ""

    @property
    def against(self):
        return f"cp -r{self.option}"

    def commands(self, program, places):
        source, out = places.tree(self.tree, self.source), places.out(self.target)
        return {"ours": [program, "copy", "-q", "--no-preserve", f"-{self.option}", source, out],
                self.against: ["cp", f"-r{self.option}", source, out]}

    def prepare(self, places, words):
        if not places.out(self.target).exists():
            super().prepare(places, words)

    def check(self, who, places):
        require_equal(self.other(places), places.out(self.target) / "tree")


class Move(Row):
    """A move of a copy of the tree, which stays in the target's file system."""

    against = "mv"

    def trees(self):
        return [(self.tree, self.target)]

    def room(self):
        return super().room() + [(self.tree, self.source)]

    def commands(self, program, places):
        source, out = places.moved(self.source) / "tree", places.out(self.target)
        return {"ours": [program, "move", "-q", "--no-preserve", source, out],
                "mv": ["mv", source, out]}

    def prepare(self, places, words):
        super().prepare(places, words)
        remove(places.moved(self.source))
        places.moved(self.source).mkdir()
        command("cp", "-r", places.tree(self.tree, self.target), places.moved(self.source))
        places.flush()

    def check(self, who, places):
        require_equal(places.tree(self.tree, self.target), places.out(self.target) / "tree")
        if (places.moved(self.source) / "tree").exists():
            raise Failure(f"{who} left the source behind")


class Rename(Move):
    """A move within a file system, against a look at every file: that is most of its work."""

    against = "find -size"

    def commands(self, program, places):
        commands = super().commands(program, places)
        source = places.moved(self.source) / "tree"
        return {"ours": commands["ours"], self.against: ["find", source, "-size", "+1"]}

    def check(self, who, places):
        if who == "ours":
            super().check(who, places)


class Preserve(Row):
    """What modes and dates cost beside the data."""

    against = "--no-preserve"
    bWithQuick = False

    def commands(self, program, places):
        without = super().commands(program, places)["ours"]
        return {"ours": [word for word in without if word != self.against], self.against: without}


class Preflight(Row):
    """The look at everything before the first byte, as a share of the whole run."""

    against = "the whole run"
    bWithQuick = False

    def commands(self, program, places):
        whole = super().commands(program, places)["ours"]
        return {"ours": [*whole, "--dry-run"], self.against: whole}

    def check(self, who, places):
        if who == self.against:
            super().check(who, places)
        elif any(places.out(self.target).iterdir()):
            raise Failure("The dry run copied something")


def rows():
    def ratio(goal, beyond):
        return {"ratio": (goal, beyond), "memory": MEMORY}

    def preflight(name, title, *where):
        return Preflight(f"preflight-{name}", f"pre-flight of {title}", *where, ratio(0.06, 0.03))

    def preserve(name, title, *where):
        return Preserve(f"preserve-{name}", f"modes and dates of {title}", *where,
                        {"ratio": (1.15, 1.1)})

    big, small = "one file of 4 GiB", "50,000 small files"
    mixed = "20,000 mixed files, 1 GiB"
    return [
        Row("big-tmpfs", f"{big}, tmpfs", "big", "tmpfs", "tmpfs", ratio(1, 0.95)),
        Row("big-ext4", f"{big}, ext4", "big", "ext4", "ext4", ratio(1, 0.95)),
        Row("small-tmpfs-ext4", f"{small}, tmpfs → ext4", "small", "tmpfs", "ext4",
            ratio(0.95, 0.75), PEERS),
        Row("small-ext4", f"{small}, ext4", "small", "ext4", "ext4", ratio(1.45, 1.1), PEERS),
        Row("small-tmpfs", f"{small}, tmpfs", "small", "tmpfs", "tmpfs", ratio(1.5, 1.2), PEERS),
        Row("mixed", f"{mixed}, ext4", "mixed", "ext4", "ext4", ratio(1.25, 1), PEERS),
        Row("deep-200", "200 levels deep, 1,000 files, tmpfs", "deep-200", "tmpfs", "tmpfs",
            {"ratio": (1.75, 1)}),
        SlowRow("deep-2000", "2,000 levels deep, 2,000 files, tmpfs", "deep-2000", "tmpfs",
                "tmpfs", {"seconds": (5, 1), "memory": (300, 300)}),
        Move("move-across", f"move of {mixed}, tmpfs → ext4", "mixed", "tmpfs", "ext4",
             ratio(0.85, 0.6)),
        Rename("move-rename", f"move of {mixed}, by rename, tmpfs", "mixed", "tmpfs", "tmpfs",
               ratio(2.2, 1.5)),
        Overwrite("overwrite", f"overwrite {mixed}, ext4", "mixed", "ext4", "ext4",
                  ratio(1.25, 1.05)),
        Keep("skip", f"skip {mixed}, ext4", "mixed", "ext4", "ext4", ratio(2.5, 1.3), option="n"),
        Keep("update", "-u onto 30,000 small files, tmpfs", "update", "tmpfs", "tmpfs",
             ratio(4, 2), option="u"),
        Row("empty", "200,000 empty files in a folder, tmpfs → ext4", "empty", "tmpfs", "ext4",
            ratio(1.3, 1)),
        preserve("small-tmpfs", f"{small}, tmpfs", "small", "tmpfs", "tmpfs"),
        preserve("small-tmpfs-ext4", f"{small}, tmpfs → ext4", "small", "tmpfs", "ext4"),
        preserve("small-ext4", f"{small}, ext4", "small", "ext4", "ext4"),
        preserve("mixed", f"{mixed}, ext4", "mixed", "ext4", "ext4"),
        preflight("small-tmpfs", f"{small}, tmpfs", "small", "tmpfs", "tmpfs"),
        preflight("small-ext4", f"{small}, ext4", "small", "ext4", "ext4"),
        preflight("mixed", f"{mixed}, ext4", "mixed", "ext4", "ext4"),
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
