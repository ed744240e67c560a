"""The trees that the rows copy: how to make them, and the room that they take."""

import collections.abc
import dataclasses
import os
import random

KIB, MIB, GIB = 1024, 1024**2, 1024**3
BLOCK = 4 * KIB


@dataclasses.dataclass
class Tree:
    entries: int
    size: int  # On disk, about.
    make: collections.abc.Callable  # Takes the path and the random numbers.


def small_size(numbers):
    return numbers.randrange(4 * KIB)


def mixed_size(numbers):
    """52 KB on average: mostly small files, but most bytes in larger ones."""
    kind = numbers.random()
    if kind < 0.75:
        return numbers.randrange(8 * KIB)
    if kind < 0.98:
        return numbers.randrange(8 * KIB, 256 * KIB)
    return numbers.randrange(256 * KIB, 1600 * KIB)


def no_size(_):
    return 0


def make_folders(path, numbers, files, files_a_folder, size):
    for index in range(files):
        folder = path / f"folder-{index // files_a_folder:04}"
        if index % files_a_folder == 0:
            folder.mkdir(parents=True)
        (folder / f"file-{index:06}.txt").write_bytes(numbers.randbytes(size(numbers)))


def make_chain(path, numbers, levels, files):
    """A folder in a folder in a folder, each with its share of the files."""
    path.mkdir()
    folder = os.open(path, os.O_PATH)
    for _ in range(levels):
        os.mkdir("d", dir_fd=folder)
        inner = os.open("d", os.O_PATH, dir_fd=folder)
        os.close(folder)
        folder = inner
        for name in range(files // levels):
            file = os.open(str(name), os.O_WRONLY | os.O_CREAT, 0o644, dir_fd=folder)
            os.write(file, numbers.randbytes(100))
            os.close(file)
    os.close(folder)


def make_file(path, numbers, size):
    """Each piece begins with its number, so that pieces in the wrong order are noticed."""
    piece = numbers.randbytes(MIB)
    with path.open("wb") as file:
        for number in range(size // MIB):
            file.write(number.to_bytes(8, "little") + piece[8:])


def folders(files, files_a_folder, size, average):
    entries = files + files // files_a_folder
    return Tree(entries, entries * BLOCK + files * average,
                lambda path, numbers: make_folders(path, numbers, files, files_a_folder, size))


def chain(levels, files):
    return Tree(levels + files, (levels + files) * BLOCK,
                lambda path, numbers: make_chain(path, numbers, levels, files))


def one_file(size):
    return Tree(1, size, lambda path, numbers: make_file(path, numbers, size))


def trees(quick):
    """All trees by name; the quick ones are a tenth of the size."""
    part = 10 if quick else 1
    return {
        "big": one_file(4 * GIB // part // MIB * MIB),
        "small": folders(50_000 // part, 500, small_size, 0),
        "mixed": folders(20_000 // part, 200, mixed_size, 52 * KIB),
        # The same names with other contents, to be where a copy goes.
        "mixed-other": folders(20_000 // part, 200, mixed_size, 52 * KIB),
        "update": folders(30_000 // part, 500, small_size, 0),
        "update-other": folders(30_000 // part, 500, small_size, 0),
        "empty": folders(200_000 // part, 200_000, no_size, 0),
        "million": folders(1_000_000, 1000, no_size, 0),
        "deep-200": chain(200, 1000),
        "deep-2000": chain(2000, 2000),
    }


def make(name, tree, path, seed):
    path.parent.mkdir()
    tree.make(path, random.Random(f"{seed} {name}"))
