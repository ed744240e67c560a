#!/usr/bin/env python3
"""Copies a folder with mc as a person does: selects it in the left panel and presses F5.

    mc_copy.py FOLDER EMPTY_PARENT

mc has no command for a copy, so a helper types its keys on a terminal made for it. FOLDER must be
the only entry of the directory that it is in. The caller gives this a session of its own.
"""

import fcntl
import os
import pathlib
import pty
import select
import struct
import sys
import termios

# Shift-F10 quits, and means nothing to the box that shows the progress, so it can be pressed all
# the time: mc obeys once the copy is finished and it is back at its panels.
DOWN, F5, ENTER, SHIFT_F10 = b"\x1bOB", b"\x1b[15~", b"\r", b"\x1b[21;2~"
SECONDS_UNTIL_SHOWN = 20
SECONDS_BETWEEN_QUITS = 0.1


class Keyboard:
    """The other side of mc's terminal."""

    def __init__(self, descriptor):
        self.descriptor = descriptor

    def shown(self, seconds):
        """What mc draws within the seconds, b"" for nothing, None when it has ended."""
        if not select.select([self.descriptor], [], [], seconds)[0]:
            return b""
        try:
            return os.read(self.descriptor, 65536) or None
        except OSError:
            return None

    def wait_for(self, text):
        drawn = b""
        while text not in drawn:
            more = self.shown(SECONDS_UNTIL_SHOWN)
            if not more:
                sys.exit(f"mc did not show {text}, but {drawn}")
            drawn += more

    def press(self, key):
        os.write(self.descriptor, key)

    def copy_and_quit(self, name):
        shown_name = f"/{name} ".encode()
        self.wait_for(shown_name)
        self.press(DOWN)
        self.wait_for(shown_name)
        self.press(F5)
        self.wait_for(b"ackground")
        self.press(ENTER)
        while self.shown(SECONDS_BETWEEN_QUITS) is not None:
            self.press(SHIFT_F10)


def become_mc(folder, parent, terminal):
    os.login_tty(terminal)
    fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
    # Its settings are not those of the user, and go with the file system of the copy.
    environment = {"HOME": str(parent.parent), "TERM": "xterm", "LC_ALL": "C.UTF-8",
                   "PATH": os.environ["PATH"]}
    os.execvpe("mc", ["mc", "--nomouse", "--nosubshell", folder.parent, parent], environment)


def main():
    folder, parent = map(pathlib.Path, sys.argv[1:])
    keyboard, terminal = pty.openpty()
    helper = os.fork()
    if helper == 0:
        # Nobody waits for the child of a child, so what it takes does not count as mc's.
        if os.fork() == 0:
            os.close(terminal)
            Keyboard(keyboard).copy_and_quit(folder.name)
        os._exit(0)
    os.waitpid(helper, 0)
    os.close(keyboard)
    become_mc(folder, parent, terminal)


if __name__ == "__main__":
    main()
