#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts the lines of the project: code, comments, and tests beside the product.

usage: shares.py [FOLDER...]     without folders: the shares; with them: comments in each

A line counts as code when it is neither blank nor only a comment.
"""

import collections
import pathlib
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
kinds = {".h", ".cpp", ".c", ".py", ".sh"}


def lines_of(path):
    """Lines of code and lines that are only comments."""
    lines = [line.strip() for line in path.read_text(errors="replace").splitlines()]
    marks = "//" if path.suffix in (".h", ".cpp", ".c") else "#"
    comments = sum(line.startswith(marks) and "SPDX-" not in line for line in lines)
    code = sum(bool(line) and not line.startswith(marks) for line in lines)
    return code, comments


def tracked(*folders):
    listed = subprocess.run(["git", "ls-files", "-z", "--", *folders], cwd=root, check=True,
                            stdout=subprocess.PIPE, text=True).stdout.split("\0")
    return [root / name for name in listed if pathlib.Path(name).suffix in kinds]


def show_shares():
    code = collections.Counter()
    for path in tracked():
        code[path.relative_to(root).parts[0]] += lines_of(path)[0]
    product = code["libs"] + code["programs"]
    for folder, count in code.most_common():
        print(f"{folder:<10} {count:>6} lines of code")
    print(f"tests are {100 * code['tests'] / product:.1f} % of libs and programs, "
          f"with the models of fuzz {100 * (code['tests'] + code['fuzz']) / product:.1f} %")


def show_comments(folders):
    """By folder and kind of file; licences are not counted."""
    totals = collections.defaultdict(lambda: [0, 0])
    for path in tracked(*folders):
        key = (str(path.relative_to(root).parent), path.suffix)
        for i, count in enumerate(lines_of(path)):
            totals[key][i] += count
    for (folder, suffix), (code, comments) in sorted(totals.items()):
        print(f"{folder:<36} {suffix:<5} {code:>6} {100 * comments / (code + comments):>5.1f} %")


if len(sys.argv) > 1:
    show_comments(sys.argv[1:])
else:
    show_shares()
