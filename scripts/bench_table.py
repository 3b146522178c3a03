#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs benchmark programs and prints how the library stands beside its peers.

usage: bench_table.py [--quick] [--write FILE] [--min-time S] [--repetitions N]
                      [--filter REGEX] DIRECTORY AREA...

A benchmark is called "work/implementation/size", the library's own
implementation being "moxtools"; the size may be missing. Each is repeated, the
repetitions of all benchmarks of a program in random order, and the median
counts. A benchmark that sets the counter `bytes` measures memory, not time.

Results stay in DIRECTORY/../bench/AREA.json. --write puts the table of all areas
into FILE, between its two marker lines. --quick runs each benchmark for a
moment: it only shows that all of them work and have a row.
"""

import argparse
import collections
import datetime
import json
import pathlib
import re
import statistics
import subprocess
import sys

areas = ["strings", "containers", "util", "config", "messages", "app", "files", "formats", "documents",
         "services", "settings"]
ours = "moxtools"
begin, end = "<!-- table: begin -->", "<!-- table: end -->"
headings = ("work", "size", "ours", "best peer", "ratio", "to std")
nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
# What the benchmark library appends to names.
suffixes = re.compile(r"(real_time|manual_time|process_time|(iterations|repeats|min_time|threads):.*)$")


def run(program, output, options):
    command = [str(program), f"--benchmark_out={output}", "--benchmark_out_format=json",
               f"--benchmark_min_time={0.001 if options.quick else options.min_time}",
               f"--benchmark_repetitions={1 if options.quick else options.repetitions}",
               "--benchmark_enable_random_interleaving=true",
               f"--benchmark_filter={options.filter}"]
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            errors="replace", stdin=subprocess.DEVNULL)
    if result.returncode != 0:
        sys.exit(f"{result.stdout}\nbench_table.py: {program.name} ended with {result.returncode}")


def measure(entry):
    """The value of one run: (is it memory?, bytes or nanoseconds)."""
    if "bytes" in entry:
        return True, entry["bytes"]
    # Work that other processes do, or that waits, is measured by the clock.
    clock = re.search(r"/(real_time|manual_time)\b", entry["run_name"])
    return False, entry["real_time" if clock else "cpu_time"] * nanoseconds[entry["time_unit"]]


class Row:
    def __init__(self):
        self.values = collections.defaultdict(list)
        self.is_memory = False
        self.family = sys.maxsize

    def medians(self):
        return {name: statistics.median(values) for name, values in self.values.items()}

    def cells(self):
        """Ours, best peer, our ratio to it, and to the standard library where it is
        not the best."""
        medians = self.medians()
        own = medians.pop(ours, None)
        best = min(medians, key=medians.get) if medians else None
        ratios = [f"{own / medians[peer]:.2f}" if own is not None and medians.get(peer) else ""
                  for peer in (best, "std" if best != "std" else None)]
        return ("" if own is None else self.shown(own),
                "" if best is None else f"{self.shown(medians[best])} ({best})", *ratios)

    def shown(self, value):
        if self.is_memory:
            return f"{value:.0f} bytes"
        for unit, size in reversed(nanoseconds.items()):
            if value >= size or unit == "ns":
                return f"{value / size:.3g} {unit}" if value < 1000 * size else f"{value / size:.0f} {unit}"


def rows_of(path, problems):
    rows = collections.defaultdict(Row)
    # The file is empty when no benchmark fits the filter.
    for entry in json.loads(path.read_text() or '{"benchmarks": []}')["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        if entry.get("error_occurred"):
            problems.append(f"{entry['run_name']}: {entry['error_message']}")
            continue
        parts = [part for part in entry["run_name"].split("/") if not suffixes.match(part)]
        if len(parts) not in (2, 3):
            problems.append(f"{entry['run_name']}: not work/implementation/size")
            continue
        row = rows[parts[0], parts[2] if len(parts) == 3 else ""]
        row.is_memory, value = measure(entry)
        row.values[parts[1]].append(value)
        row.family = min(row.family, entry["family_index"])
    if not rows:
        problems.append(f"{path.stem}: nothing was measured")
    for (work, size), row in rows.items():
        if ours not in row.values:
            problems.append(f"{work} {size}: no row of ours")
    return in_order(rows)


def in_order(rows):
    """Works as their program registers them, sizes rising."""
    first = {}
    for (work, _), row in rows.items():
        first[work] = min(row.family, first.get(work, sys.maxsize))
    return dict(sorted(rows.items(), key=lambda item: (first[item[0][0]], number(item[0][1]))))


def number(size):
    return int(size) if size.isdigit() else 0


def size_shown(size):
    return f"{int(size):,}" if size.isdigit() else size


def print_table(rows):
    lines = [headings]
    lines += [(work, size_shown(size), *row.cells()) for (work, size), row in rows.items()]
    widths = [max(len(line[i]) for line in lines) for i in range(len(headings))]
    for line in lines:
        print(f"{line[0]:<{widths[0]}}  {line[1]:>{widths[1]}}  {line[2]:>{widths[2]}}"
              f"  {line[3]:<{widths[3]}}  {line[4]:>{widths[4]}}  {line[5]:>{widths[5]}}")


def markdown(directory):
    """The tables of all areas, which must all have been measured."""
    text = []
    for area in areas:
        path = directory / f"{area}.json"
        if not path.is_file():
            sys.exit(f"bench_table.py: {area} has not been measured")
        context = json.loads(path.read_text())["context"]
        text += ["", f"### {area}", "", f"| {' | '.join(headings)} |", "|---|---:|---:|---:|---:|---:|"]
        for (work, size), row in rows_of(path, []).items():
            text.append("| " + " | ".join((work, size_shown(size), *row.cells())) + " |")
    date = datetime.datetime.fromisoformat(context["date"]).date()
    return "\n".join([f"Taken on {date}, {context['num_cpus']} cores at"
                      f" {context['mhz_per_cpu']} MHz.", *text])


def write(path, text):
    head, marker, rest = path.read_text().partition(begin)
    tail = rest.partition(end)
    if not marker or not tail[1]:
        sys.exit(f"bench_table.py: {path} has no markers")
    path.write_text(f"{head}{begin}\n{text}\n{end}{tail[2]}")


parser = argparse.ArgumentParser()
parser.add_argument("--quick", action="store_true")
parser.add_argument("--write", type=pathlib.Path, metavar="FILE")
parser.add_argument("--min-time", type=float, default=0.1)
parser.add_argument("--repetitions", type=int, default=7)
parser.add_argument("--filter", default=".")
parser.add_argument("directory", type=pathlib.Path)
parser.add_argument("areas", nargs="*")
options = parser.parse_args()
if set(options.areas) - set(areas):
    sys.exit(f"bench_table.py: areas are {' '.join(areas)}")
results = options.directory.parent / "bench"
results.mkdir(exist_ok=True)
problems = []
for area in options.areas or areas:
    program = options.directory / f"bench_{area}"
    partial = options.quick or options.filter != "."
    output = results / f"{area}{'-partial' if partial else ''}.json"
    run(program, output, options)
    rows = rows_of(output, problems)
    if options.quick:
        print(f"{area}: {len(rows)} rows")
    else:
        print(f"\n{area}")
        print_table(rows)
    sys.stdout.flush()
for problem in problems:
    print(problem, file=sys.stderr)
if options.write and not problems:
    write(options.write, markdown(results))
sys.exit(1 if problems else 0)
