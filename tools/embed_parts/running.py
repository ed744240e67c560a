"""Runs commands and says what was expected of them."""

import os
import subprocess

LIMIT_SECONDS = 300


class Difference(Exception):
    """What was expected and is not so."""


def expect(holds, what):
    if not holds:
        raise Difference(f"This does not hold: {what}")


def run(command, status=0, cwd=None, environment=None):
    """What the command writes, on both of its outputs."""
    done = subprocess.run(command, check=False, cwd=cwd, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=LIMIT_SECONDS,
                          env={**os.environ, **(environment or {})})
    output = done.stdout.decode(errors="replace")
    if done.returncode != status:
        words = " ".join(str(word) for word in command)
        raise Difference(f"{words}\nended with {done.returncode} instead of {status}:\n{output}")
    return output
