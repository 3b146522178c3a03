#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the test programs of a build under valgrind.

usage: valgrind.py [--jobs N] BUILD [PROGRAM...]

Valgrind brings an allocator of its own, which cannot be made to fail, and forks where a
child would share its parent's memory until it runs a program: tests of these are left
out. A first run of each program without valgrind finds out which they are; they are
marked by themselves or by the test kit. Programs that tests start are
watched too where that takes seconds and not minutes.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

# All that these programs do happens in programs that they start.
only_children = {"test_allocation_sweep", "test_call_sweep", "test_kill_sweep", "test_sweep"}
with_children = {"test_processes", "test_moxinfo"}
patience = 600  # seconds; the longest takes a tenth of that
valgrind = ["valgrind", "-q", "--error-exitcode=99", "--leak-check=full",
            "--show-leak-kinds=definite", "--errors-for-leak-kinds=definite",
            # The test programs define malloc themselves.
            "--soname-synonyms=somalloc=NONE"]


def marked(report):
    """Names of the tests that the kit has marked."""
    for suite in json.loads(report.read_text())["testsuites"]:
        for test in suite["testsuite"]:
            if "not_under_valgrind" in test:
                yield f"{suite['name']}.{test['name']}"


def finish(command, **how):
    """Status and output of a command; one that hangs is ended with all that it started."""
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, start_new_session=True, **how)
        note = ""
        try:
            process.wait(patience)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            note = f"\nended after {patience} seconds\n"
        output.seek(0)
        return process.returncode, output.read().decode(errors="replace") + note


def run(program):
    """Gives the line to print, and whether nothing was wrong."""
    started = time.monotonic()
    left_out = []
    with tempfile.TemporaryDirectory() as name:
        directory = pathlib.Path(name)
        place = directory / "work" # for files that a test leaves
        place.mkdir()
        command = [str(program)]
        # It replaces the hooks by which allocations fail.
        environment = dict(os.environ, FUZZ_RUNS="200", FUZZ_MEMORY_HOLDS="1")
        if program.name.startswith("test_"):
            report = directory / "report.json"
            first, output = finish([*command, f"--gtest_output=json:{report}"], cwd=place)
            if first != 0:
                return f"{program.name}: without valgrind already\n{output[-4000:]}", False
            left_out = sorted(marked(report))
            command.append("--gtest_filter=-" + ":".join(left_out))
        options = [f"--log-file={directory}/%p.log"]
        if program.name in with_children:
            options += ["--trace-children=yes", "--trace-children-skip=/bin/*,/usr/bin/*"]
        status, output = finish(valgrind + options + command, env=environment, cwd=place)
        # An error ends in a status here, but that of a child may have been expected.
        errors = [text for text in (log.read_text() for log in sorted(directory.glob("*.log")))
                  if "== " in text and "    at 0x" in text]
    good = status == 0 and not errors
    line = (f"{program.name:<24} {time.monotonic() - started:>7.1f} s  {len(left_out):>3} left out"
            f"  {'ok' if good else 'FAILED'}")
    if not good:
        printed = [] if status == 99 else [output[-4000:]]
        line = "\n".join([line, *(text[:6000] for text in errors[:3]), *printed])
    return line, good


parser = argparse.ArgumentParser()
parser.add_argument("--jobs", type=int, default=os.cpu_count())
parser.add_argument("build", type=pathlib.Path)
parser.add_argument("programs", nargs="*")
options = parser.parse_args()
directory = options.build.resolve() / "bin"
programs = ([directory / name for name in options.programs]
            or sorted(path for pattern in ("test_*", "fuzz_*") for path in directory.glob(pattern)
                      if path.name not in only_children))
passed = True
with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
    for future in concurrent.futures.as_completed([pool.submit(run, p) for p in programs]):
        line, good = future.result()
        passed = passed and good
        print(line, flush=True)
sys.exit(0 if passed else 1)
