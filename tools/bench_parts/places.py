"""Where the trees are: a tmpfs and an ext4 of our own, or two directories."""

import contextlib
import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

from bench_parts.trees import GIB, MIB

CLONE_NEWNS = 0x20000
ENDING_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Failure(Exception):
    """Ends the tool with its sentence."""


def command(*words):
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise Failure(f"{' '.join(map(str, words))}: {done.stderr.strip()}")


def remove(path):
    command("rm", "-rf", "--", path)


def available_memory():
    lines = pathlib.Path("/proc/meminfo").read_text().splitlines()
    kibibytes = next(line.split()[1] for line in lines if line.startswith("MemAvailable:"))
    return int(kibibytes) * 1024


def refuse_unless(needed, free, what):
    if needed > free:
        raise Failure(f"These rows need {needed / GIB:.1f} GiB {what}, and {free / GIB:.1f} GiB"
                      " are free; name fewer rows or use --quick.")


class Places:
    """The directory of each file system, the trees in it, and the one where copies go."""

    def __init__(self, work):
        self.directories = {"tmpfs": work / "tmpfs", "ext4": work / "ext4"}

    def tree(self, name, place):
        """A tree is alone in its directory, because mc is told to copy the first entry."""
        return self.directories[place] / name / "tree"

    def flush(self):
        """Writes what is still to be written here; nobody else's data."""
        for directory in self.directories.values():
            command("sync", "--file-system", directory)

    def out(self, place):
        return self.directories[place] / "out"

    def moved(self, place):
        return self.directories[place] / "moved"


def enter_mount_table_of_our_own():
    """Nobody else sees what is mounted from here on, and it goes when this process does."""
    library = ctypes.CDLL(None, use_errno=True)
    if library.unshare(CLONE_NEWNS) != 0:
        raise OSError(ctypes.get_errno(), "This system lets nobody mount here")
    command("mount", "--make-rprivate", "/")


def mount(places, room):
    tmpfs, ext4 = places.directories.values()
    size = room.tmpfs_bytes + 64 * MIB
    command("mount", "-t", "tmpfs", "-o", f"size={size},nr_inodes=0", "tmpfs", tmpfs)
    image = ext4.with_name("ext4.image")
    with image.open("wb") as file:
        # A tenth for the journal, the inodes and the blocks that are kept for root.
        file.truncate((room.ext4_bytes + 512 * MIB) * 11 // 10)
    command("mkfs.ext4", "-q", "-F", "-N", str(room.ext4_entries + 10_000),
            "-E", "lazy_itable_init=0,lazy_journal_init=0", image)
    command("mount", "-o", "loop", image, ext4)
    # The mount holds it; without a name it goes even if this process is killed.
    image.unlink()


@contextlib.contextmanager
def made_places(parent, room):
    """Two directories below a new one in parent, which are file systems of their own for root."""
    refuse_unless(room.memory_bytes, available_memory(), "of memory, where their files stay")
    refuse_unless(room.ext4_bytes + 512 * MIB, shutil.disk_usage(parent).free, f"in {parent}")
    work = pathlib.Path(tempfile.mkdtemp(prefix="tarvane-bench-", dir=parent))
    places = Places(work)
    try:
        for directory in places.directories.values():
            directory.mkdir()
        if os.geteuid() == 0:
            enter_mount_table_of_our_own()
            mount(places, room)
        yield places
    finally:
        # Nor do the programs that are started from here on hear an impatient second Ctrl-C.
        for number in ENDING_SIGNALS:
            signal.signal(number, signal.SIG_IGN)
        for directory in places.directories.values():
            if directory.is_mount():
                # Lazy: a program that was just killed may need a moment to let go.
                command("umount", "--lazy", directory)
        remove(work)
