"""Runs the fuzz targets: inputs that grow out of those in torture/fuzz/corpus, two at a time.

An input for which something does not hold stays in build/fuzz/found. TARVANE_FUZZ_SECONDS is the
time for each target where it is to be another than that of the size, such as 3600.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess

from torture_parts import hostile_input
from torture_parts.part import Row

ROOT = pathlib.Path(__file__).resolve().parents[2]
CORPORA = ROOT / "torture/fuzz/corpus"
PROGRAMS = ROOT / "build/fuzz/torture/fuzz"
FOUND = ROOT / "build/fuzz/found"

SUBJECTS = {
    "command_line": "arguments of the program",
    "host_paths": "paths of audio-CD tracks, and pairs of paths",
    "disc_table": "tables of contents of discs",
    "screen_text": "names on their way to the screen",
    "terminal_keys": "bytes of a terminal as keys",
    "prompt_question": "keys at the question of the prompt",
    "panes_dialogs": "keys in the dialogs of the panes",
    "pane_list": "keys in the list of a pane",
}
AT_ONCE = 2
# No input takes so long, not even on a busy machine.
SECONDS_PER_INPUT = 30


def fuzzed(target, seconds, seed, scratch):
    """The row of one target."""
    grown = scratch / target
    grown.mkdir()
    command = [PROGRAMS / f"fuzz_{target}", f"-max_total_time={seconds}", f"-seed={seed}",
               f"-timeout={SECONDS_PER_INPUT}", "-rss_limit_mb=2048", "-max_len=1024",
               "-print_final_stats=1", f"-artifact_prefix={FOUND}/{target}-",
               grown, CORPORA / target]
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                            errors="replace", timeout=seconds + 300, check=False)
    tried = re.search(r"^stat::number_of_executed_units: (\d+)$", result.stderr, re.MULTILINE)
    inputs = int(tried[1]) if tried else 1
    if result.returncode == 0:
        return Row(SUBJECTS[target], inputs, inputs)
    reason = re.search(r"^Does not hold: .*|^SUMMARY: .*", result.stderr, re.MULTILINE)
    kept = re.search(r"^.*Test unit written to (\S+)$", result.stderr, re.MULTILINE)
    repeat = f"build/fuzz/torture/fuzz/fuzz_{target}"
    return Row(SUBJECTS[target], inputs, inputs - 1,
               f"{reason[0] if reason else 'It ended early.'} Repeat it with `{repeat} "
               f"{pathlib.Path(kept[1]).relative_to(ROOT) if kept else ''}`")


def run(context):
    subprocess.run([ROOT / "tools/build", "fuzz", "fuzz_targets"], check=True)
    FOUND.mkdir(exist_ok=True)
    seconds = int(os.environ.get("TARVANE_FUZZ_SECONDS", context.share(2, 30, 600)))
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        rows = pool.map(lambda target: fuzzed(target, seconds, context.seed, context.scratch),
                        SUBJECTS)
        for number, row in enumerate(rows, 1):
            context.progress(f"{number} of {len(SUBJECTS)} targets, the latest {row.subject}")
            yield row
    yield from hostile_input.rows(context)
