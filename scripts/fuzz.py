#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the fuzz harnesses of a build, or makes a small corpus of what they found.

usage: fuzz.py [--jobs N] [--seed N] run SECONDS [TOPIC...]
       fuzz.py merge TOPIC...

`run` starts each harness from the committed corpus and from what earlier runs
found, lets it work for SECONDS, and prints a line for each. New inputs go to
build/fuzz/corpus/TOPIC. A failing input stays in build/fuzz/failed/ and makes the
status 1; so does one of 1 MiB that takes more than 5 seconds of processor time.
The same seed, corpus and programs give the same inputs in the same order.

`merge` reduces committed corpus and finds to inputs that together reach every
known place of the code, and writes these to fuzz/corpus/TOPIC. Files with a
name of their own, written by hand, stay.
"""

import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

root = pathlib.Path(__file__).resolve().parent.parent
build = root / "build" / "fuzz"
large_input = 1 << 20
large_seconds = 5  # of processor time, whatever else the machine does: most take a tenth of one
# Most harnesses work far below this; growth without end is what it stops.
limits = ["-timeout=60", "-rss_limit_mb=2048"]


def topics():
    return sorted(p.name.removeprefix("fuzz_") for p in (build / "bin").glob("fuzz_*"))


def program(topic):
    return str(build / "bin" / f"fuzz_{topic}")


def committed(topic):
    return root / "fuzz" / "corpus" / topic


def found(topic):
    directory = build / "corpus" / topic
    directory.mkdir(parents=True, exist_ok=True)
    return directory


class Result:
    """Of a harness that ran in a directory of its own, where it may leave files."""

    def __init__(self, topic, *arguments):
        with (tempfile.TemporaryDirectory(dir=build) as directory,
              tempfile.TemporaryFile("w+", errors="replace") as log):
            process = subprocess.Popen([program(topic), *limits, *map(str, arguments)],
                                       cwd=directory, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=log)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = self.returncode = os.waitstatus_to_exitcode(status)
            self.seconds = usage.ru_utime + usage.ru_stime
            log.seek(0)
            self.stderr = log.read()


def large_inputs(topic, seed, directory):
    """Inputs of 1 MiB: the corpus over and over, and random bytes; more than once, as
    the first ones choose what a harness does with the others."""
    source = random.Random(f"{topic} {seed}")
    texts = {f"random-{number}": source.randbytes(large_input) for number in range(1, 5)}
    texts["corpus"] = b"".join(p.read_bytes() for p in sorted(committed(topic).glob("*")))
    for name, text in texts.items():
        if text:
            path = directory / f"{topic}-large-{name}"
            path.write_bytes((text * (large_input // len(text) + 1))[:large_input])
            yield path


def run(topic, seconds, seed):
    """Gives the line to print, and whether nothing was found."""
    failed = build / "failed"
    failed.mkdir(exist_ok=True)
    prefix = failed / f"{topic}-"
    slowest = 0.0
    for path in large_inputs(topic, seed, failed):
        result = Result(topic, path)
        slowest = max(slowest, result.seconds)
        if result.returncode != 0:
            return report(topic, result, path), False
        if result.seconds > large_seconds:
            return (f"{topic:<20} FAILED, {result.seconds:.1f} s instead of {large_seconds} s for"
                    f" 1 MiB: {path}"), False
        path.unlink()
    corpus = [found(topic)] + [d for d in [committed(topic)] if d.is_dir()]
    result = Result(topic, f"-max_total_time={seconds}", f"-seed={seed}", "-print_final_stats=1",
                    f"-artifact_prefix={prefix}", *corpus)
    stats = dict(re.findall(r"stat::(\w+):\s+(\d+)", result.stderr))
    if result.returncode != 0 or not stats:
        kept = re.search(r"Test unit written to (\S+)", result.stderr)
        return report(topic, result, kept and kept[1]), False
    sizes = re.findall(r"corp: (\d+)/", result.stderr)
    return (f"{topic:<20} {int(stats['number_of_executed_units']):>12,}"
            f" {int(stats['average_exec_per_sec']):>12,} {sizes[-1] if sizes else 0:>8}"
            f" {slowest:>9.1f}  ok"), True


def report(topic, result, kept):
    log = build / "failed" / f"{topic}.log"
    log.write_text(result.stderr)
    lines = [line for line in result.stderr.splitlines() if not line.startswith(("#", "INFO", '"'))]
    return (f"{topic:<20} FAILED, input: {kept or 'none kept'}, log: {log}\n"
            + "\n".join("    " + line for line in lines[:40]))


def run_all(names, seconds, seed, jobs):
    print(f"seed {seed}")
    print(f"{'harness':<20} {'executions':>12} {'a second':>12} {'corpus':>8} {'1 MiB, s':>9}",
          flush=True)
    passed = True
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for future in concurrent.futures.as_completed(
                [pool.submit(run, topic, seconds, seed) for topic in names]):
            line, good = future.result()
            passed = passed and good
            print(line, flush=True)
    return passed


def merge(topic):
    target = committed(topic)
    target.mkdir(parents=True, exist_ok=True)
    by_hand = [p for p in target.iterdir() if not re.fullmatch(r"[0-9a-f]{40}", p.name)]
    with tempfile.TemporaryDirectory(dir=build) as directory:
        for path in by_hand:
            shutil.copy(path, directory)
        # How often a place is reached does not count: that would keep hundreds.
        result = Result(topic, "-set_cover_merge=1", "-use_counters=0", "-max_len=4096", directory,
                        target, found(topic))
        if result.returncode != 0:
            sys.exit(report(topic, result, None))
        for path in target.iterdir():
            path.unlink()
        for path in pathlib.Path(directory).iterdir():
            shutil.copy(path, target)
    sizes = [p.stat().st_size for p in target.iterdir()]
    print(f"{topic}: {len(sizes)} files, {sum(sizes)} bytes")


parser = argparse.ArgumentParser()
parser.add_argument("--jobs", type=int, default=os.cpu_count())
parser.add_argument("--seed", type=int, default=random.randrange(1, 1 << 32))
parser.add_argument("command", choices=["run", "merge"])
parser.add_argument("arguments", nargs="*")
options = parser.parse_args()
names = options.arguments
seconds = names.pop(0) if options.command == "run" else None
unknown = set(names) - set(topics())
if unknown or (options.command == "merge" and not names):
    sys.exit(f"fuzz.py: topics are {' '.join(topics())}")
if options.command == "merge":
    for name in names:
        merge(name)
else:
    sys.exit(0 if run_all(names or topics(), seconds, options.seed, options.jobs) else 1)
