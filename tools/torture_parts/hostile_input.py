"""Names, paths and command lines that nobody would type, given to the whole program."""

import json
import os
import subprocess

from torture_parts.part import Row
from torture_parts.program_runs import program, run_measured, run_on_terminal, run_through_pipes

# What a terminal obeys, or shows as something else than it is, with a word to know it by.
DRIVING_NAMES = [
    b"\x1b]0;title\x07", b"\x1b[2Jclear", b"\x1b[31mred", b"\x9b2Jlate", b"\xc2\x9b2Jlater",
    b"carriage\rreturn", b"line\nfeed", b"back\x08\x08\x08\x08space", b"\x7fdelete", b"\x0eshift",
    "turned\u202egnp.exe".encode(), "hidden\u200bjoiner".encode(), b"\xff\xfe\xfd", b"\xed\xa0\x80",
    b"-rf", b"--help", b"cdda:x", b"\\", b"'\"$(reboot)`", b" ", b"*", b"tab\t",
]
LONG_NAMES = [b"x" * 255, "日".encode() * 85, b"\xff" * 255, b"\x1b[" * 127 + b"m",
              b"y" * 251 + b".txt", b"." * 3 + b"z" * 252]
NAMES = DRIVING_NAMES + LONG_NAMES
COMPONENTS = 10_000
# With the zero at its end.
PATH_MAX = 4096


def is_harmless(written, may_style):
    """Whether the bytes are text of one kind: UTF-8 without what a name has put into it."""
    try:
        text = written.decode()
    except UnicodeDecodeError:
        return False
    driving = [name for name in DRIVING_NAMES if name[0] < 0x20 or name[0] == 0x7F]
    return ((may_style or "\x1b" not in text)
            and not any(name in written for name in driving)
            and not any("\x80" <= each <= "\x9f" or "\u202a" <= each <= "\u202e" for each in text))


def make_files(directory, names, content):
    directory.mkdir()
    for name in names:
        with open(os.fsencode(directory) + b"/" + name, "wb") as file:
            file.write(content + name)


def contents(directory):
    """By name, what is in the files."""
    found = {}
    for entry in os.scandir(os.fsencode(directory)):
        with open(entry.path, "rb") as file:
            found[entry.name] = file.read()
    return found


def names_through_pipes(context, scratch):
    """Each way to deal with them, and whether all of them came through it."""
    make_files(scratch / "from", NAMES, b"new ")
    made = contents(scratch / "from")
    command = program(context)

    def tried(arguments, holds):
        ended = run_through_pipes([command, *arguments], scratch)
        harmless = is_harmless(ended.output, False) and is_harmless(ended.errors, False)
        return ended.status == 0 and harmless and holds(ended)

    def all_lines_are_records(ended):
        return all(json.loads(line)["event"] for line in ended.output.splitlines())

    def keeps_both(_):
        found = contents(scratch / "to/from")
        return (len(found) == 2 * len(NAMES) and made.items() <= found.items()
                and sorted(found.values()) == sorted(2 * list(made.values())))

    checks = [
        (["copy", "-v", "from", "to"], lambda _: contents(scratch / "to") == made),
        (["copy", "-fT", "--progress=json", "from", "to"], all_lines_are_records),
        (["copy", "-v", "--progress=lines", "--interval=0.1", "from", "-t", "to"],
         lambda _: contents(scratch / "to/from") == made),
        (["copy", "--on-conflict=keep-both", "-v", "from", "-t", "to"], keeps_both),
        (["move", "-v", "from", "moved"],
         lambda _: contents(scratch / "moved") == made and not (scratch / "from").exists()),
    ]
    results = [tried(*check) for check in checks]
    return Row("names of 255 bytes, and names that drive a terminal, through pipes",
               len(checks) * len(NAMES), sum(results) * len(NAMES),
               "" if all(results) else f"Not in {checks[results.index(False)][0]}")


def names_on_terminal(context, scratch):
    """The question about each name at the prompt, and all of them in a pane."""
    command = program(context)
    held = 0
    wrong = ""
    asked = NAMES[::context.share(7, 3, 1)]
    for number, name in enumerate(asked):
        place = scratch / f"asked{number}"
        make_files(place, [name], b"new ")
        make_files(place / "to", [name], b"old ")
        status, written = run_on_terminal([command, "copy", "--", b"./" + name, "to"], place,
                                          b"overwrite all", b"s")
        if status == 0 and is_harmless(written, True):
            held += 1
        else:
            wrong = f"The question about {name!r} ended with {status}. "
    make_files(scratch / "shown", NAMES, b"")
    f10 = b"\x1b[21~"
    status, written = run_on_terminal([command, "shown"], scratch, b"Quit", f10)
    in_pane = status == 0 and is_harmless(written, True)
    return Row("the same names at the prompt's question and in a pane",
               len(asked) + len(NAMES),
               held + (len(NAMES) if in_pane else 0),
               wrong + ("" if in_pane else f"The panes ended with {status}."))


def make_deep_directory(directory, depth):
    directory.mkdir()
    current = os.open(directory, os.O_RDONLY)
    for _ in range(depth):
        os.mkdir("d", dir_fd=current)
        below = os.open("d", os.O_RDONLY, dir_fd=current)
        os.close(current)
        current = below
    os.close(os.open("leaf", os.O_CREAT | os.O_WRONLY, dir_fd=current))
    os.close(current)


def count_of(directory):
    """The entries below it. The walk of the library fails where paths get too long."""
    found = subprocess.run(["find", ".", "-printf", "x"], cwd=directory, check=True,
                           capture_output=True)
    return len(found.stdout)


def deep_paths(context, scratch):
    """Paths that are longer than the system takes, typed and found."""
    typed = "/".join(["a"] * COMPONENTS)
    (scratch / "file").write_text("x")
    make_deep_directory(scratch / "deep", COMPONENTS)
    whole = count_of(scratch / "deep")
    commands = [["copy", typed, "to"], ["copy", "file", typed], ["copy", "file", "-t", typed],
                ["copy", "deep", "to"], ["copy", "--no-preflight", "deep", "to2"],
                ["move", "deep", "to/x/"], ["move", "--no-preflight", "file", "deep", typed]]
    held = 0
    wrong = ""
    for arguments in commands:
        ended = run_through_pipes([program(context), *arguments], scratch)
        told = ended.last_line() != "" and is_harmless(ended.errors, False)
        if ended.status in (1, 2) and told and count_of(scratch / "deep") == whole:
            held += 1
        else:
            wrong = f"`{' '.join(arguments)[:60]}` ended with {ended.status}"
    return Row(f"paths of {COMPONENTS:,} components", len(commands), held, wrong)


def deepest_directories(context, scratch):
    """Directories down to the longest path that the system takes, with the stack of a user."""
    depth = (PATH_MAX - 1 - len(os.fsencode(scratch)) - len("/from/leaf")) // len("/d")
    make_deep_directory(scratch / "from", depth)
    whole = count_of(scratch / "from")
    held = 0
    wrong = ""
    commands = [["copy", "from", "copy"], ["copy", "-fT", "from", "copy"],
                ["move", "-fT", "from", "copy"]]
    for arguments in commands:
        ended = run_through_pipes([program(context), *arguments], scratch)
        if ended.status == 0 and count_of(scratch / "copy") == whole:
            held += 1
        else:
            wrong = f"`{' '.join(arguments)}` ended with {ended.status}: {ended.last_line()}"
    return Row(f"directories {depth:,} levels deep", len(commands), held, wrong)


def many_sources(context, scratch):
    """As many operands as a shell makes of `*` in a large directory."""
    count = context.share(2_000, 20_000, 100_000)
    for directory in ("many", "all"):
        (scratch / directory).mkdir()
    names = [f"{number:06d}" for number in range(count)]
    for name in names:
        (scratch / "many" / name).touch()
    ended, peak = run_measured([program(context), "copy", "-q", *names, "-t", scratch / "all"],
                               scratch / "many")
    copied = count_of(scratch / "all") - 1
    return Row(f"{count:,} sources on a command line", count, copied if ended.status == 0 else 0,
               f"a peak of {peak:.1f} MiB" if ended.status == 0 else ended.last_line())


def rows(context):
    for check in (names_through_pipes, names_on_terminal, deep_paths, deepest_directories,
                  many_sources):
        context.progress(check.__doc__.splitlines()[0])
        scratch = context.scratch / check.__name__
        scratch.mkdir()
        try:
            yield check(context, scratch)
        finally:
            # The library's own way is too deep for ten thousand directories.
            subprocess.run(["rm", "-rf", "--", scratch], check=False)
