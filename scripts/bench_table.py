#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs benchmark programs and shows how the library stands beside its peers.

usage: bench_table.py [--quick] [--write PAGE] [--summary PAGE] [--min-time S]
                      [--repetitions N] [--filter REGEX] DIRECTORY AREA...

A benchmark is called "work/implementation/size", the library's own
implementation being "moxtools"; the size may be missing. Each is repeated, the
repetitions of all benchmarks of a process in random order, and the median
counts. A benchmark that sets the counter `bytes` measures memory, not time.

The benchmarks of an area run in one process, and those of each row once more in
a process of their own. The latter decide; how a row stands in a heap that the
others have broken up is its last column. For each area there is the geometric
mean of the ratios to the best peers, and a picture.

Results stay in DIRECTORY/../bench: AREA.json and AREA-alone.json. --write puts
the tables of all areas into PAGE, between its two marker lines, and the pictures
into the folder `bench` beside it; --summary the means into another page. --quick
runs each benchmark for a moment, in one process: it only shows that all of them
work and have a row.
"""

import argparse
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys

import bench_picture
import bench_rows

areas = ["strings", "containers", "util", "config", "messages", "app", "files", "formats", "documents",
         "services", "settings"]
begin, end = "<!-- table: begin -->", "<!-- table: end -->"
headings = ("work", "size", "ours", "best peer", "ratio", "to std", "in one")


def run(program, output, options, pattern):
    command = [str(program), f"--benchmark_out={output}", "--benchmark_out_format=json",
               f"--benchmark_min_time={0.001 if options.quick else options.min_time}",
               f"--benchmark_repetitions={1 if options.quick else options.repetitions}",
               "--benchmark_enable_random_interleaving=true",
               f"--benchmark_filter={pattern}"]
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            errors="replace", stdin=subprocess.DEVNULL)
    if result.returncode != 0:
        sys.exit(f"{result.stdout}\nbench_table.py: {program.name} ended with {result.returncode}")


def exactly(names):
    """A pattern that selects these benchmarks alone."""
    escaped = (re.sub(r"([][.^$*+?(){}|\\])", r"\\\1", name) for name in sorted(names))
    return f"^({'|'.join(escaped)})$"


def run_alone(program, output, options, rows):
    """Each row in a process of its own, all results in one file."""
    whole = None
    part = output.with_suffix(".part")
    for row in rows.values():
        run(program, part, options, exactly(row.names))
        results = json.loads(part.read_text())
        if whole is None:
            whole = results
        else:
            whole["benchmarks"] += results["benchmarks"]
    part.unlink(missing_ok=True)
    if whole is not None:
        output.write_text(json.dumps(whole, indent=1))


def measured(area, options, results, problems):
    program = options.directory / f"bench_{area}"
    partial = "-partial" if options.quick or options.filter != "." else ""
    output = results / f"{area}{partial}.json"
    run(program, output, options, options.filter)
    rows = bench_rows.rows_of(output, problems)
    if options.quick or not rows:
        return rows
    alone = results / f"{area}-alone{partial}.json"
    run_alone(program, alone, options, rows)
    return bench_rows.decided(bench_rows.rows_of(alone, problems), rows)


def mean_line(rows):
    ratios = [ratio for _, ratio in bench_rows.ratios_of(rows)]
    if not ratios:
        return "no peer"
    ahead = sum(ratio < 1 for ratio in ratios)
    return (f"geometric mean {bench_rows.geometric_mean(ratios):.2f} of the best peer,"
            f" ahead in {ahead} of {len(ratios)} rows")


def print_table(rows):
    lines = [headings]
    lines += [(work, bench_rows.size_shown(size), *row.cells()) for (work, size), row in rows.items()]
    widths = [max(len(line[i]) for line in lines) for i in range(len(headings))]
    for line in lines:
        cells = [f"{cell:<{width}}" if i in (0, 3) else f"{cell:>{width}}"
                 for i, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())
    print(mean_line(rows))


def saved(results):
    """The rows of all areas, which must all have been measured."""
    everything = {}
    for area in areas:
        both = []
        for name in (f"{area}.json", f"{area}-alone.json"):
            if not (results / name).is_file():
                sys.exit(f"bench_table.py: {area} has not been measured")
            both.append(bench_rows.rows_of(results / name, []))
        everything[area] = bench_rows.decided(both[1], both[0])
    return everything


def markdown(everything, context):
    date = datetime.datetime.fromisoformat(context["date"]).date()
    text = [f"Taken on {date}, {context['num_cpus']} cores at {context['mhz_per_cpu']} MHz.", "",
            "![Geometric means of the areas](bench/areas.svg)"]
    for area, rows in everything.items():
        text += ["", f"### {area}", "", mean_line(rows).capitalize() + ".", "",
                 f"![Each row of {area}](bench/{area}.svg)", "",
                 f"| {' | '.join(headings)} |", "|---|---:|---:|---:|---:|---:|---:|"]
        text += ["| " + " | ".join((work, bench_rows.size_shown(size), *row.cells())) + " |"
                 for (work, size), row in rows.items()]
    return "\n".join(text)


def summary(everything, page, folder):
    """A few lines for a page that leads to the tables."""
    picture = os.path.relpath(folder / "areas.svg", page.parent).replace(os.sep, "/")
    ratios = [ratio for rows in everything.values() for _, ratio in bench_rows.ratios_of(rows)]
    ahead = sum(ratio < 1 for ratio in ratios)
    return (f"![Geometric means of the ratios to the best peers]({picture})\n\n"
            f"Ahead of the best of its peers in {ahead} of {len(ratios)} rows.")


def means(everything):
    ratios = {area: [ratio for _, ratio in bench_rows.ratios_of(rows)] for area, rows in everything.items()}
    return [(f"{area} ({len(values)})", bench_rows.geometric_mean(values))
            for area, values in ratios.items() if values]


def draw(folder, everything):
    folder.mkdir(exist_ok=True)
    for area, rows in everything.items():
        title = f"{area}: time or memory beside the best peer (1)"
        (folder / f"{area}.svg").write_text(bench_picture.picture(title, bench_rows.ratios_of(rows)))
    title = "Geometric mean of each area beside the best peers (1); number of rows"
    (folder / "areas.svg").write_text(bench_picture.picture(title, means(everything)))


def parts(page):
    """What stands before and behind the marker lines of a page."""
    head, first, rest = page.read_text().partition(begin)
    _, second, tail = rest.partition(end)
    if not first or not second:
        sys.exit(f"bench_table.py: {page} has no markers")
    return head, tail


def fill(page, content):
    head, tail = parts(page)
    page.write_text(f"{head}{begin}\n{content}\n{end}{tail}")


def publish(options, results):
    everything = saved(results)
    context = json.loads((results / f"{areas[0]}.json").read_text())["context"]
    folder = (options.write or options.summary).parent / "bench"
    draw(folder, everything)
    if options.write:
        fill(options.write, markdown(everything, context))
    if options.summary:
        fill(options.summary, summary(everything, options.summary, folder))


def parsed():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--write", type=pathlib.Path, metavar="PAGE")
    parser.add_argument("--summary", type=pathlib.Path, metavar="PAGE")
    parser.add_argument("--min-time", type=float, default=0.1)
    parser.add_argument("--repetitions", type=int, default=7)
    parser.add_argument("--filter", default=".")
    parser.add_argument("directory", type=pathlib.Path)
    parser.add_argument("areas", nargs="*")
    options = parser.parse_args()
    if set(options.areas) - set(areas):
        sys.exit(f"bench_table.py: areas are {' '.join(areas)}")
    return options


def main():
    options = parsed()
    for page in filter(None, (options.write, options.summary)):
        parts(page)  # nothing is measured in vain
    results = options.directory.parent / "bench"
    results.mkdir(exist_ok=True)
    problems = []
    for area in options.areas or areas:
        rows = measured(area, options, results, problems)
        if options.quick:
            print(f"{area}: {len(rows)} rows")
        else:
            print(f"\n{area}")
            print_table(rows)
        sys.stdout.flush()
    for problem in problems:
        print(problem, file=sys.stderr)
    if (options.write or options.summary) and not problems:
        publish(options, results)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
