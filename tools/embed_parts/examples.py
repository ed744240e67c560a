"""Runs each of the examples on real files."""

import contextlib
import os
import pathlib
import signal
import subprocess
import tempfile
import time

from embed_parts.running import LIMIT_SECONDS, expect, run


def write(files):
    """Makes files, as {path: text}, below the working directory."""
    for path, text in files.items():
        pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
        pathlib.Path(path).write_text(text)


def files_below(directory):
    return {str(path.relative_to(directory)): path.read_text()
            for path in pathlib.Path(directory).rglob("*") if path.is_file()}


def expect_output(output, lines):
    expect(sorted(output.splitlines()) == sorted(lines), f"{output!r} are the lines {lines}")


def run_copy(program):
    tree = {"a": "one", "sub/b": "two" * 1000000}
    write({f"from/{path}": text for path, text in tree.items()})
    output = run([program, "from", "to/tree"])
    end = "\r100% | Overall 2.9 MB / 2.9 MB | Items 4 / 4\033[K\nCopied 1 item(s).\n"
    expect(output.endswith(end), f"{output!r} ends with {end!r}")
    expect(files_below("to/tree") == tree, "copy copies a tree")

    write({"from/a": "changed"})
    run([program, "from", "to/tree"])
    expect(files_below("to/tree") == tree, "copy leaves names alone that are taken")

    output = run([program, "missing", "to/other"], status=1)
    expect(output.endswith("\nSource does not exist.\n"), f"copy tells why it failed: {output!r}")
    run([program], status=2)


def run_answers(program):
    names = ["compared", "different", "merged/inner", "new", "overwritten", "renamed", "skipped"]
    write({f"from/{name}": "new" for name in names})
    old = {"compared": "new", "different": "old", "merged/inner": "old", "merged/other": "old",
           "overwritten": "old", "renamed": "old", "skipped": "old"}
    write({f"to/{path}": text for path, text in old.items()})
    script = {"to": "merge", "merged": "merge", "compared": "compare", "different": "compare",
              "inner": "skip", "overwritten": "overwrite", "renamed": "rename", "skipped": "skip"}
    output = run([program, "from", "to", *[f"{name}={word}" for name, word in script.items()]])
    expect_output(output, ["directory to: merge", "directory to/merged: merge",
                           "file to/compared: compare", "file to/different: compare",
                           "file to/merged/inner: skip", "file to/overwritten: overwrite",
                           "file to/renamed: rename", "file to/skipped: skip", "Copied 1 item(s)."])
    expect(files_below("to") == {**old, "different": "new", "new": "new", "overwritten": "new",
                                 "renamed.new": "new"}, "answers does what its script says")


def run_answers_for_all(program):
    write({"from/sub/older": "new", "from/sub/newer": "new", "to/sub/older": "old",
           "to/sub/newer": "old"})
    for path, seconds in {"from/sub/older": 1000, "to/sub/older": 2000, "from/sub/newer": 2000,
                          "to/sub/newer": 1000}.items():
        os.utime(path, (seconds, seconds))
    every = ["to=merge-all", "older=overwrite-all-older", "newer=overwrite-all-older"]
    questions = run([program, "from", "to", *every]).splitlines()
    expect(len(questions) == 3, f"an answer for all is asked for once a kind: {questions}")
    expect(files_below("to") == {"sub/older": "old", "sub/newer": "new"},
           "overwrite-all-older overwrites what is older")

    output = run([program, "from", "to"], status=1)
    expect_output(output, ["directory to: cancel",
                           "Copy canceled. Partial destination files may remain."])


def run_own_functions(program):
    write({"from/sub/file": "text"})
    pathlib.Path("link").symlink_to("from/sub")
    for source, destination, reason in (
            ("from", "from", "Source and destination are the same path."),
            ("from/sub/file", "link/file", "Source and destination are the same path."),
            ("from", "link/new/deep", "Destination cannot be inside the source directory.")):
        output = run([program, source, destination], status=1)
        expect(output == f"{reason}\n", f"{source} to {destination} is refused: {output!r}")
    expect(files_below("from") == {"sub/file": "text"}, "what is refused changes nothing")

    output = run([program, "from", "to"])
    expect(output == "\aMoved 1 item(s).\n", f"the sound comes with the end: {output!r}")
    expect(files_below("to") == {"sub/file": "text"} and not pathlib.Path("from").exists(),
           "own_functions moves a tree")


def run_window(program):
    write({"one/a": "text", "two/b": "text"})
    copies = {"one/a": "text", "two/b": "text"}
    limit = time.monotonic() + LIMIT_SECONDS
    with subprocess.Popen([program, "one", "to", "two", "to"]) as process:
        try:
            while files_below("to") != copies:
                expect(time.monotonic() < limit and process.poll() is None,
                       "window copies two trees")
                time.sleep(0.05)
        finally:
            process.terminate()
    expect(process.returncode == -signal.SIGTERM, "window goes on until it is closed")


def run_all(build, scratch):
    directory = build / "examples"
    for check, program in ((run_copy, "copy"), (run_answers, "answers"),
                           (run_answers_for_all, "answers"), (run_own_functions, "own_functions"),
                           (run_window, "window")):
        print(f"example: {check.__name__}", flush=True)
        with tempfile.TemporaryDirectory(dir=scratch) as place, contextlib.chdir(place):
            check(directory / program)
    print(run([build / "transfer_window_test", "--gtest_brief=1"]), end="", flush=True)
