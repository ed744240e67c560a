"""Runs that are larger, longer or more at once than a person's."""

import json
import os
import platform
import re
import signal
import subprocess
import time

from torture_parts.part import Row
from torture_parts.program_runs import LIMIT_SECONDS, program, run_measured, run_through_pipes

JOBS = 32
# What a large tree may take more than a small one: of what the sources were like, 16 MiB are kept
# in memory, and the rest in a file.
FLAT_MIB = 18
FILES_IN_DIRECTORY = 1000
TEBIBYTE = 1 << 40
# Of the sparse file, before its copy is canceled.
ENOUGH_BYTES = 64 << 20
CANCEL_SECONDS = 60


def counted_by(subject, command, held_by_all):
    """The row of a load program, which prints what it tried and what held. HELD_BY_ALL says what
    the program has shown when nothing else is to be said."""
    ended = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False,
                           timeout=LIMIT_SECONDS)
    counts = re.fullmatch(r"(\d+) (\d+)\n", ended.stdout)
    tried, held = map(int, counts.groups()) if counts else (1, 0)
    if ended.returncode == 0:
        return Row(subject, tried, held, held_by_all)
    wrong = re.search(r"^Does not hold: .*|^.*WARNING: ThreadSanitizer.*|^SUMMARY: .*",
                      ended.stderr, re.MULTILINE)
    return Row(subject, tried, min(held, tried - 1),
               f"{wrong[0] if wrong else ended.stderr[-200:]} (exit status {ended.returncode})")


def jobs_at_once(context):
    rounds = context.share(1, 4, 100)
    directory = context.scratch / "at-once"
    directory.mkdir()
    # The sanitizer needs its part of the address space, which some kernels fill at random.
    command = ["setarch", platform.machine(), "-R",
               context.build / "torture/load/tarvane_jobs_at_once", directory, str(rounds)]
    return counted_by(f"jobs, {JOBS} at once, under the thread sanitizer", command,
                      "no data race; polled all the time, listed at 60 Hz, a quarter canceled")


def start_cancel(context):
    # One every two seconds would be a day.
    cycles = context.share(300, 3_000, 43_200)
    directory = context.scratch / "cycles"
    directory.mkdir()
    return counted_by("transfers begun and canceled",
                      [context.build / "torture/load/tarvane_start_cancel", directory, str(cycles)],
                      "no thread, descriptor, memory or part of a file left")


def make_tree(root, files):
    for first in range(0, files, FILES_IN_DIRECTORY):
        directory = root / f"directory-{first // FILES_IN_DIRECTORY:05d}"
        directory.mkdir(parents=True)
        handle = os.open(directory, os.O_RDONLY)
        for number in range(first, min(first + FILES_IN_DIRECTORY, files)):
            os.close(os.open(f"file-{number:07d}", os.O_CREAT | os.O_WRONLY, 0o644, dir_fd=handle))
        os.close(handle)


def entries_of(root):
    return 1 + sum(len(directories) + len(files) for _, directories, files in os.walk(root))


def copy_tree(context, files):
    """Entries, those that arrived, the peak in MiB, and what was said last."""
    source = context.scratch / f"tree-{files}"
    copy = context.scratch / f"copy-{files}"
    make_tree(source, files)
    ended, peak = run_measured([program(context), "copy", source, copy], context.scratch)
    wanted = entries_of(source)
    arrived = entries_of(copy) if ended.status == 0 else 0
    told = f"Copied {wanted:,} entries".encode() in ended.errors + ended.output
    return wanted, arrived if told else 0, peak, ended.last_line()


def large_tree(context):
    files = context.share(5_000, 50_000, 1_000_000)
    small = files // 50
    _, _, few, _ = copy_tree(context, small)
    wanted, arrived, many, last_line = copy_tree(context, files)
    note = f"a peak of {many:.1f} MiB, {few:.1f} MiB for a fiftieth of it"
    if many > few + FLAT_MIB:
        return Row("entries of one tree", wanted, 0, f"Memory is not flat: {note}")
    if arrived != wanted:
        note = f"{arrived:,} arrived; {last_line}"
    return Row("entries of one tree", wanted, min(arrived, wanted), note)


def cancel_after_some(process, output):
    """Ends the copy once a few blocks are there, by the signal that nobody is started to ignore; a
    copy that goes on would fill the disk, so it is killed."""
    limit = time.monotonic() + LIMIT_SECONDS
    asked = None
    while process.poll() is None and time.monotonic() < limit:
        copied = re.findall(rb'"done_bytes":(\d+)', os.pread(output, 1 << 20, 0))
        if asked is None and copied and int(copied[-1]) > ENOUGH_BYTES:
            process.terminate()
            asked = time.monotonic()
        if asked is not None and time.monotonic() - asked > CANCEL_SECONDS:
            process.kill()
        time.sleep(0.05)


def sparse_file(context):
    """Far more than any file of the machine: it is counted whole and copied in part."""
    with open(context.scratch / "sparse", "wb") as file:
        file.truncate(TEBIBYTE)
    ended = run_through_pipes([program(context), "copy", "--progress=json", "--interval=0.1",
                               "sparse", "part"], context.scratch, cancel_after_some)
    subject = "looks at a file of 1 TiB that is copied in part"
    if ended.status != 128 + signal.SIGTERM or (context.scratch / "part").exists():
        return Row(subject, 1, 0, f"It ended with {ended.status}; {ended.last_line()}")
    shown = [record for record in map(json.loads, ended.output.splitlines())
             if record["event"] == "progress"]
    wrong = [record for record in shown if not is_sane(record)]
    note = f"{wrong[0]}" if wrong else f"canceled after {shown[-1]['done_bytes'] >> 20} MiB"
    return Row(subject, len(shown), len(shown) - len(wrong), note)


def is_sane(record):
    """Whether the numbers can be those of the sparse file."""
    total = record["total_bytes"]
    done = record["done_bytes"]
    percent = record["percent"]
    return (total in (None, TEBIBYTE) and 0 <= done < TEBIBYTE
            and record["file_done_bytes"] <= done
            and percent in (None, 100 * done // TEBIBYTE)
            and (record["remaining"] is None or record["remaining"] > 0)
            and not record["more_than_counted"] and not record["less_than_counted"])


def run(context):
    for check in (jobs_at_once, start_cancel, sparse_file, large_tree):
        context.progress(check.__name__.replace("_", " "))
        yield check(context)
