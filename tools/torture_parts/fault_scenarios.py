"""What is copied or moved while something goes wrong."""

import dataclasses

from torture_parts.fault_trees import BIG, directory, file, link

# In every source and destination folder, and never part of the plan.
NEIGHBOR = {"neighbor": file(b"not part of it", 0o600)}


@dataclasses.dataclass(frozen=True)
class Scenario:
    """Operands are the names of source entries; each goes to the same name in the destination."""

    name: str
    operands: tuple
    source: dict
    destination: dict = dataclasses.field(default_factory=dict)
    move: bool = False
    # The destination is on another file system.
    across: bool = False
    # What the engine and the program are told to do with taken names.
    engine: tuple = ("--policy=ask",)
    program: tuple = ()
    # Where an answer or a choice sends an entry, if not to its own name.
    renamed: dict = dataclasses.field(default_factory=dict)
    # Through links, the engine copies more than it has counted.
    follows: bool = False
    # The program can do it a second time, with -f.
    repeatable: bool = True
    # A track of the disc in /dev/sr0 instead of files.
    disc: bool = False
    # What somebody presses at the program's terminal, after which texts; without, there is none.
    keys: tuple = ()

    @property
    def runners(self):
        return ("terminal",) if self.keys else ("engine", "program")

    @property
    def sources(self):
        return self.source | NEIGHBOR

    @property
    def destinations(self):
        return self.destination | NEIGHBOR

    def destination_of(self, name):
        top, slash, rest = name.partition("/")
        return self.renamed.get(top, top) + slash + rest


TREE = {
    "d": directory(),
    "d/a": file(b"a" * 3000, 0o600),
    "d/big": file(BIG),
    "d/read-only": file(b"r", 0o440),
    "d/sub": directory(0o700),
    "d/sub/b": file(b""),
    "d/sub/empty": directory(0o711),
}
DEEP = {"/".join(["d"] * depth): directory() for depth in range(1, 9)} | {
    "d/d/d/d/d/d/d/d/f": file()}
LINKS = {
    "d": directory(),
    "d/f": file(b"linked"),
    "d/to-file": link("f"),
    "d/to-folder": link("sub"),
    "d/sub": directory(),
    "d/sub/g": file(b"linked too"),
}
ONE_FILE = {"f": file(BIG)}
OLD_FILE = {"f": file(b"was here before", 0o600)}
MERGED = {"d": directory(0o700), "d/a": file(b"old", 0o600), "d/other": file(b"stays")}
MIXED = TREE | {"e": file(b""), "f": file(BIG), "x": directory(), "x/y": file(b"y")}
FORCED = {"engine": ("--policy=overwrite",), "program": ("-f",)}

SCENARIOS = {scenario.name: scenario for scenario in (
    Scenario("file", ("f",), ONE_FILE),
    Scenario("empty-file", ("f",), {"f": file(b"")}),
    Scenario("tree", ("d",), TREE),
    Scenario("deep-tree", ("d",), DEEP),
    Scenario("links", ("d",), LINKS, follows=True),
    # Its copy leads to the same device, so a second run refuses to put it onto itself.
    Scenario("link-to-device", ("l",), {"l": link("/dev/null")}, repeatable=False),
    Scenario("overwrite", ("f",), ONE_FILE, OLD_FILE, **FORCED),
    Scenario("skip", ("d",), TREE, MERGED, engine=("--policy=skip",), program=("-n",)),
    Scenario("rename", ("f",), ONE_FILE, OLD_FILE, renamed={"f": "f-2"},
             engine=("--policy=ask", "--answer=rename:{to}/f-2"),
             program=("--on-conflict=keep-both",)),
    Scenario("typed-rename", ("f",), ONE_FILE, OLD_FILE, renamed={"f": "f-2"}, repeatable=False,
             keys=((b"File exists: ", b"r"), (b"f-2", b"\r"))),
    Scenario("directory-over-file", ("d",), TREE, {"d": file(b"a file")}, repeatable=False,
             **FORCED),
    Scenario("file-over-directory", ("f",), ONE_FILE,
             {"f": directory(), "f/old": file(b"old"), "f/g": directory()},
             repeatable=False, **FORCED),
    Scenario("move-by-rename", ("d", "f"), TREE | ONE_FILE, move=True),
    Scenario("move-across", ("d", "f"), TREE | ONE_FILE, move=True, across=True),
    Scenario("move-merge", ("d", "f"), TREE | ONE_FILE, MERGED | OLD_FILE, move=True, **FORCED),
    Scenario("disc-track", ("cdda:/dev/sr0/Track 01.wav",), {}, disc=True,
             repeatable=False),
    Scenario("mixed", ("f", "d", "e", "x"), MIXED, MERGED | {"e": file(b"old")}, **FORCED),
)}
