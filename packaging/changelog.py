#!/usr/bin/env python3
"""Prints the first section of CHANGELOG.md as the changelog of a Debian package.

usage: changelog.py CHANGELOG.md VERSION MAINTAINER

It has to be that of VERSION. The time of the entry is that of the
last commit (or SOURCE_DATE_EPOCH), so that the same sources give the same package.
"""

import email.utils
import os
import pathlib
import re
import subprocess
import sys
import textwrap


def newest(text):
    """Version and items of the first heading."""
    heading, _, body = re.split(r"^## ", text, flags=re.MULTILINE)[1].partition("\n")
    items = [" ".join(item.split()) for item in re.split(r"^- ", body, flags=re.MULTILINE)[1:]]
    return heading.split()[0], items


def time_of_sources(directory):
    stamp = os.environ.get("SOURCE_DATE_EPOCH") or subprocess.run(
        ["git", "-C", directory, "log", "-1", "--format=%ct"], capture_output=True, text=True,
        check=False).stdout.strip()
    return email.utils.formatdate(int(stamp or 0))


def main():
    path, version, maintainer = sys.argv[1:]
    path = pathlib.Path(path)
    number, items = newest(path.read_text(encoding="utf-8"))
    if number != version or not items:
        sys.exit(f"changelog.py: {path} does not begin with a section for {version}")
    lines = [line for item in items
             for line in textwrap.wrap(item, 76, initial_indent="  * ", subsequent_indent="    ")]
    print(f"moxtools ({number}) unstable; urgency=medium\n\n" + "\n".join(lines)
          + f"\n\n -- {maintainer}  {time_of_sources(path.resolve().parent)}")


main()
