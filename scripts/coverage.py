#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints which lines and branches of the library the tests have reached.

usage: coverage.py BUILD [FOLDER...]

The table has a row for each folder of libs/tools. A FOLDER that is named ("util",
or "all") is listed line by line where something was missed. Edges that only an
exception takes do not count.
"""

import collections
import json
import pathlib
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
library = "libs/tools/"


def measured(build):
    """File name to its lines, as gcovr reads them from what the programs left."""
    output = subprocess.run(
        ["gcovr", "-j", "2", "--root", str(root), "--object-directory", build,
         "--filter", library, "--exclude", library + "platform/windows/",
         "--exclude-throw-branches", "--exclude-unreachable-branches", "--json", "-", build],
        cwd=root, stdout=subprocess.PIPE, text=True, check=True).stdout
    return {entry["file"]: [line for line in entry["lines"] if not line["gcovr/noncode"]]
            for entry in json.loads(output)["files"]}


class Sum:
    def __init__(self):
        self.lines = self.lines_hit = self.branches = self.branches_hit = 0

    def add(self, line):
        self.lines += 1
        self.lines_hit += line["count"] > 0
        self.branches += len(line["branches"])
        self.branches_hit += sum(branch["count"] > 0 for branch in line["branches"])

    def row(self, name):
        return (f"{name:<24} {self.lines_hit:>6} of {self.lines:>6} {share(self.lines_hit, self.lines)}"
                f"   {self.branches_hit:>6} of {self.branches:>6} "
                f"{share(self.branches_hit, self.branches)}")


def share(part, whole):
    return f"{100 * part / whole if whole else 100:>6.1f} %"


def folder_of(name):
    parts = name.removeprefix(library).split("/")
    return parts[0] if len(parts) > 1 else "(umbrella)"


def print_misses(name, lines):
    source = (root / name).read_text(errors="replace").splitlines()
    for line in lines:
        number = line["line_number"]
        taken = [branch["count"] > 0 for branch in line["branches"]]
        if line["count"] == 0:
            what = "not run"
        elif not all(taken):
            what = f"{taken.count(False)} of {len(taken)} ways"
        else:
            continue
        print(f"{name}:{number}: {what:<12} {source[number - 1].strip()}")


build, *chosen = sys.argv[1:]
files = measured(build)
if not files:
    sys.exit("coverage.py: nothing was measured")
unknown = set(chosen) - {folder_of(name) for name in files} - {"all"}
if unknown:
    sys.exit(f"coverage.py: no such folder: {' '.join(sorted(unknown))}")
sums = collections.defaultdict(Sum)
for name, lines in sorted(files.items()):
    selected = folder_of(name) in chosen or "all" in chosen
    for line in lines:
        keys = [folder_of(name), "all"] + ([name] if selected else [])
        for key in keys:
            sums[key].add(line)
    if selected:
        print_misses(name, lines)
print(f"{'':<24} {'lines reached':>16} {'':>8}   {'branches taken':>16}")
for key in sorted(sums, key=lambda key: (key == "all", key)):
    print(sums[key].row(key.removeprefix(library)))
