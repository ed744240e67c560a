"""Runs a program on a terminal of its own, with somebody at its keys."""

import contextlib
import os
import pty
import re
import select
import subprocess
import termios
import time

from torture_parts.program_runs import take_terminal

SIZE = 40, 150
# Keys are dead for 0.7 seconds after a question has appeared; a busy machine shows it late.
SECONDS_UNTIL_KEY = 1.45
# For so long nothing new is written at a question that the person was not told of.
SECONDS_UNTIL_ESCAPE = 3.5
# What stands below the cursor goes, so what is written next begins a line.
ERASURE = re.compile(rb"\x1b\[0?J")
SEQUENCE = re.compile(rb"\x1b(?:\[[0-?]*[ -/]*[@-~]|[()][0-9A-Za-z]|[78=>])|[\x07\x0f\r]")
# What a program sets and resets, as the sequences for it say.
PRIVATE_MODE = re.compile(rb"\x1b\[\?([0-9;]+)([hl])")
# The wrapping of lines and the cursor.
SET_AT_FIRST = b"7", b"25"


def open_terminal():
    """Both of its sides. It does not show keys itself: the program may end as one is pressed."""
    ours, its = pty.openpty()
    termios.tcsetwinsize(its, SIZE)
    settings = termios.tcgetattr(its)
    settings[3] &= ~termios.ECHO
    termios.tcsetattr(its, termios.TCSANOW, settings)
    return ours, its


def takes_keys(terminal):
    """Whether the program gets them one by one, as it did not before."""
    local_modes = termios.tcgetattr(terminal)[3]
    return not local_modes & termios.ICANON


class Person:
    """Presses keys: of pairs of a text and a key, each key once after its text has appeared. Gives
    up with Esc, as often as it takes, where the program waits for another key."""

    def __init__(self, keys):
        self.keys = list(keys)
        self.seen_at = None
        self.begin = 0
        self.heard = 0, time.monotonic()
        self.gave_up = False

    def press(self, terminal, written):
        now = time.monotonic()
        if len(written) != self.heard[0]:
            self.heard = len(written), now
        if not self.keys or self.keys[0][0] not in written[self.begin:]:
            if now - self.heard[1] > SECONDS_UNTIL_ESCAPE and takes_keys(terminal):
                os.write(terminal, b"\x1b")
                self.heard = len(written), now
                self.gave_up = True
            return
        if self.seen_at is None:
            self.seen_at = now
        elif now - self.seen_at > SECONDS_UNTIL_KEY and takes_keys(terminal):
            os.write(terminal, self.keys.pop(0)[1])
            self.begin, self.seen_at = len(written), None


def read_more(terminal, written, seconds):
    if not select.select([terminal], [], [], seconds)[0]:
        return False
    written += os.read(terminal, 65536)
    return True


def what_is_left(written):
    """Which of its modes the terminal has otherwise than before."""
    modes = {}
    for numbers, letter in PRIVATE_MODE.findall(written):
        for number in numbers.split(b";"):
            modes[number] = letter == b"h"
    return [number.decode() for number, is_set in modes.items()
            if is_set != (number in SET_AT_FIRST)]


def plain_text(written):
    return SEQUENCE.sub(b"", ERASURE.sub(b"\n", written)).rstrip() + b"\n"


def run(command, keys, limit, **setting):
    """The status, what was written, whether it had to be ended, what became of the terminal, and
    whether the person gave up."""
    ours, its = open_terminal()
    before = termios.tcgetattr(its)
    person, written, hung = Person(keys), bytearray(), False
    with contextlib.ExitStack() as closing:
        closing.callback(os.close, ours)
        closing.callback(os.close, its)
        with subprocess.Popen(command, stdin=its, stdout=its, stderr=its, start_new_session=True,
                              preexec_fn=take_terminal, **setting) as process:
            end = time.monotonic() + limit
            while process.poll() is None:
                read_more(ours, written, 0.01)
                person.press(ours, written)
                if time.monotonic() > end:
                    hung = True
                    process.kill()
        while read_more(ours, written, 0):
            pass
        left = what_is_left(written)
        if termios.tcgetattr(its) != before:
            left.append("its settings")
    return process.returncode, plain_text(written), hung, left, person.gave_up
