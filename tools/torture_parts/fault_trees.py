"""Small trees that a test makes, looks at, and makes again."""

import os
import random
import shutil
import stat
import typing

# Two blocks of the engine and a part of a third.
BIG = random.Random(12).randbytes(2 * 262144 + 1000)
MODIFIED = 1_600_000_000 * 10**9


class Entry(typing.NamedTuple):
    """A file with its bytes, a link ("link") with its target, or a directory ("directory")."""

    kind: str
    data: bytes = b""
    mode: int = 0o644
    modified: int = 0

    @property
    def content(self):
        return self.kind, self.data


def file(data=b"some bytes", mode=0o640):
    return Entry("file", data, mode)


def directory(mode=0o750):
    return Entry("directory", b"", mode)


def link(target):
    return Entry("link", os.fsencode(target), 0o777)


def make_tree(root, tree):
    """Directories stand before what is in them; they get their modes and times at the end."""
    shutil.rmtree(root, ignore_errors=True)
    os.mkdir(root)
    for name, entry in tree.items():
        path = os.path.join(root, name)
        if entry.kind == "directory":
            os.mkdir(path)
        elif entry.kind == "link":
            os.symlink(entry.data, path)
        else:
            with open(path, "wb") as stream:
                stream.write(entry.data)
    for name in reversed(tree):
        path = os.path.join(root, name)
        if tree[name].kind != "link":
            os.chmod(path, tree[name].mode)
        os.utime(path, ns=(MODIFIED, MODIFIED), follow_symlinks=False)


def read_entry(path, status):
    mode, modified = stat.S_IMODE(status.st_mode), status.st_mtime_ns
    if stat.S_ISDIR(status.st_mode):
        return Entry("directory", b"", mode, modified)
    if stat.S_ISLNK(status.st_mode):
        return Entry("link", os.fsencode(os.readlink(path)), mode, modified)
    if not stat.S_ISREG(status.st_mode):
        return Entry("special", b"", mode, modified)
    with open(path, "rb") as stream:
        return Entry("file", stream.read(), mode, modified)


def read_tree(root):
    """All entries below root by their path relative to it."""
    found, pending = {}, [""]
    while pending:
        parent = pending.pop()
        with os.scandir(os.path.join(root, parent)) as listing:
            for item in listing:
                name = os.path.join(parent, item.name)
                found[name] = read_entry(item.path, item.stat(follow_symlinks=False))
                if found[name].kind == "directory":
                    pending.append(name)
    return found
