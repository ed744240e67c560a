"""Random trees: the engine against a model of its rules, and the program against its promises."""

import os
import re
import subprocess
import sys

from torture_parts.part import Row

# One for each of the two cores that a share of CI has.
PROCESSES = 2

SUBJECTS = {
    "--engine": "random trees, plans and answers: result, message, counters, questions and files "
                "as a model of the rules foresees them",
    "--program": "random trees and choices: the program loses nothing that was not named",
}


def run(context):
    yield tried_row(context, "--engine", context.share(2_000, 10_000, 100_000))
    yield tried_row(context, "--program", context.share(300, 2_000, 20_000))


def tried_row(context, mode, cases):
    """Shares the cases out among the processes and adds up what they tried and what held."""
    program = context.build / "torture/random/tarvane_random_trees"
    share = cases // PROCESSES
    running = []
    for index in range(PROCESSES):
        words = [program, mode, "--seed", str(context.seed), "--first", str(index * share),
                 "--cases", str(share)]
        # pylint: disable=consider-using-with
        running.append(subprocess.Popen(words, stdout=subprocess.PIPE, text=True,
                                        errors="replace",
                                        env=os.environ | {"TMPDIR": str(context.scratch)}))
    context.progress(f"{cases:,} cases {mode}")
    outputs = [process.communicate()[0] for process in running]
    ends = [re.search(r"^cases (\d+) held (\d+)$", output, re.MULTILINE) for output in outputs]
    tried = sum(int(end[1]) if end else 1 for end in ends)
    held = sum(int(end[2]) if end else 0 for end in ends)
    failed = [process.returncode != 0 for process in running]
    if any(failed):
        context.progress("")
        print("\n".join(output for output, bad in zip(outputs, failed) if bad), file=sys.stderr)
        held = min(held, tried - 1)
    return Row(SUBJECTS[mode], tried, held, note_of(mode, outputs))


def note_of(mode, outputs):
    """With which command what failed is repeated."""
    repeats = re.findall(r"^(?:failed|a case does not end): (.*)$", "\n".join(outputs), re.MULTILINE)
    command = f"build/torture/torture/random/tarvane_random_trees {mode}"
    return f"repeat with `{command} {repeats[0]}`" if repeats else ""
