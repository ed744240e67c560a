"""Runs the program on file systems that misbehave; what holds there, tests of their own tell."""

import json
import pathlib
import re
import subprocess

from torture_parts.part import Row

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRESET = "dev"
LIMIT_SECONDS = 300

# Executables below the folder of the tests, each with the tests that belong here.
PROGRAMS = {
    "torture/file_system_torture_tests": ["*"],
    "program/program_tests": [
        "ThroughPipes.FailsOnAFullFileSystem*", "EndOfRun.NamesTheDiskThatIsFull",
        "ChangingSources.*", "HungEndsOnTerminal.*", "HungPreflightOnTerminal.*"],
    "engine/whole_job_tests": ["FullDisk.*", "ReadOnlyDisk.*"],
    "engine/copy_tests": ["FileCopierFailure.LeavesNoDestination*"],
    "transfer/job/job_tests": ["EntriesInTheWay.ALinkThatTookTheName*"],
    "transfer/job/flusher_test": ["FlusherTest.Finds*", "FlusherTest.Fails*"],
    "transfer/preflight/preflight_space_test": ["PreflightSpace.*Fat*", "*LargestFiles"],
}

# The moves, which can lose more than the copies.
QUICK_PROGRAMS = {"torture/file_system_torture_tests": ["*/1"]}


def in_words(name):
    """FailsToRead as "fails to read"."""
    return re.sub(r"(?<=.)(?=[A-Z])", " ", name).lower()


def cases_of(executable, tests, scratch):
    """The tests that were run, with what became of each, as the framework writes them."""
    report = scratch / "report.json"
    command = [ROOT / "build" / PRESET / "tests" / executable, f"--gtest_output=json:{report}",
               f"--gtest_filter={':'.join(tests)}"]
    subprocess.run(command, stdout=subprocess.DEVNULL, timeout=LIMIT_SECONDS, check=False)
    cases = [(suite["name"], case) for suite in json.loads(report.read_text())["testsuites"]
             for case in suite["testsuite"]]
    report.unlink()
    return cases


def row_of(subject, executable, cases):
    """The copy, the move and what else was tried of one misbehaviour."""
    tried = [case for _, case in cases if case["result"] != "SKIPPED"]
    held = [case for case in tried if not case.get("failures")]
    notes = {case["note"] for case in tried if "note" in case}
    if len(tried) < len(cases):
        notes.add("this machine could not try all")
    if len(held) < len(tried):
        suite, case = next(case for case in cases if case[1].get("failures"))
        notes.add(f"repeat: build/{PRESET}/tests/{executable} "
                  f"--gtest_filter={suite}.{case['name']}")
    return Row(subject, len(tried), len(held), "; ".join(sorted(notes)))


def run(context):
    programs = context.share(QUICK_PROGRAMS, PROGRAMS, PROGRAMS)
    targets = [pathlib.PurePath(executable).name for executable in programs]
    subprocess.run([ROOT / "tools/build", PRESET, *targets], check=True)
    for executable, tests in programs.items():
        context.progress(executable)
        subjects = {}
        for _ in range(context.share(1, 1, 20)):
            for suite, case in cases_of(executable, tests, context.scratch):
                subject = f"{suite.split('/')[-1]}.{case['name'].split('/')[0]}"
                subjects.setdefault(subject, []).append((suite, case))
        for subject, cases in subjects.items():
            suite, name = subject.split(".")
            words = in_words(suite.removesuffix("Test"))
            yield row_of(f"{words[0].upper()}{words[1:]}: {in_words(name)}", executable, cases)
