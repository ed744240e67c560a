"""Runs of the program that the parts of tools/torture look at from outside."""

import contextlib
import dataclasses
import fcntl
import os
import pty
import select
import subprocess
import tempfile
import termios
import threading
import time

# A run that takes longer hangs.
LIMIT_SECONDS = 1200


@dataclasses.dataclass
class Ended:
    """As a shell tells the status: a program that a signal has ended has 128 and its number."""

    status: int
    output: bytes
    errors: bytes

    def last_line(self):
        """What was said last, as a person reads it."""
        lines = self.errors.decode(errors="replace").strip().splitlines()
        return lines[-1] if lines else ""


def program(context):
    return context.build / "program/tarvane"


def run_through_pipes(command, directory, watch=None):
    """Runs it to its end, with what it prints in files. WATCH, where it is given, is called with
    the process and the file of its output while it runs."""
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        with subprocess.Popen(command, cwd=directory, stdin=subprocess.DEVNULL, stdout=output,
                              stderr=errors) as process:
            killer = threading.Timer(LIMIT_SECONDS, process.kill)
            killer.start()
            if watch is not None:
                watch(process, output.fileno())
            code = process.wait()
            killer.cancel()
        output.seek(0)
        errors.seek(0)
        return Ended(code if code >= 0 else 128 - code, output.read(), errors.read())


def run_measured(command, directory):
    """The same, and the most memory that it took, in MiB. A small program starts and measures it,
    as the system counts what stood in the process before, which is this interpreter."""
    with tempfile.NamedTemporaryFile() as peak:
        ended = run_through_pipes(["time", "-f", "%M", "-o", peak.name, *command], directory)
        return ended, int(peak.read().split()[-1]) / 1024


def take_terminal():
    fcntl.ioctl(0, termios.TIOCSCTTY, 0)


def run_on_terminal(command, directory, until, key, limit=60):
    """What the program writes to its terminal. Once it has written UNTIL, it gets KEY every second
    until it ends: keys are dead for a while after a question has appeared."""
    ours, its = pty.openpty()
    termios.tcsetwinsize(its, (40, 150))
    written = bytearray()
    with subprocess.Popen(command, cwd=directory, stdin=its, stdout=its, stderr=its,
                          env={**os.environ, "TERM": "xterm-256color", "LC_ALL": "C.UTF-8"},
                          start_new_session=True, preexec_fn=take_terminal) as process:
        os.close(its)
        pressed = None
        started = time.monotonic()
        # The end of the program ends the terminal, which reading then reports as an error.
        with contextlib.suppress(OSError):
            while time.monotonic() - started < limit:
                if until in written and (pressed is None or time.monotonic() - pressed > 1):
                    os.write(ours, key)
                    pressed = time.monotonic()
                if select.select([ours], [], [], 0.1)[0]:
                    piece = os.read(ours, 65536)
                    if not piece:
                        break
                    written += piece
        process.kill()
        os.close(ours)
    return process.returncode, bytes(written)
