#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The line that names the licence at the top of each source.

usage: licences.py [--add]

Names the sources that lack it, with status 1; --add puts it there: first, or
second below a line that names an interpreter. Files of other makers that say
so themselves are left alone.
"""

import pathlib
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
folders = ["libs", "programs", "tests", "fuzz", "bench", "examples", "scripts"]
marks = {".h": "//", ".cpp": "//", ".c": "//", ".inc": "//", ".py": "#", ".sh": "#"}
tag = "SPDX-License-Identifier:"
licence = "Apache-2.0"


def sources():
    """What the repository keeps; inputs of harnesses are no sources."""
    names = subprocess.run(["git", "-C", root, "ls-files", "-z", "--", *folders], check=True,
                           capture_output=True, text=True).stdout.split("\0")
    return [root / name for name in names
            if pathlib.Path(name).suffix in marks and not name.startswith("fuzz/corpus/")]


def lacks_line(text):
    return not any(tag in line for line in text.splitlines()[:2])


def with_line(text, mark):
    first, newline, rest = text.partition("\n")
    line = f"{mark} {tag} {licence}\n"
    return first + newline + line + rest if first.startswith("#!") else line + text


def without_line():
    return [path for path in sources() if lacks_line(path.read_text(encoding="utf-8"))]


def main():
    adding = sys.argv[1:] == ["--add"]
    if sys.argv[1:] and not adding:
        sys.exit(__doc__)
    lacking = without_line()
    for path in lacking:
        if adding:
            text = path.read_text(encoding="utf-8")
            path.write_text(with_line(text, marks[path.suffix]), encoding="utf-8")
        else:
            print(f"{path.relative_to(root)}:1: no line with {tag}")
    sys.exit(1 if lacking and not adding else 0)


if __name__ == "__main__":
    main()
