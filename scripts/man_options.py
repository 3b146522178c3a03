#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the sections OPTIONS of the manual pages from what the programs say of themselves.

usage: man_options.py BIN            (writes the pages in docs/man)
       man_options.py --check BIN    (status 1 when a page is not what would be written)

Each option of `--describe` becomes an item with its value and its text. What an item
says beyond that stands behind the line MORE, is written by hand and stays, like the items
of words that are no options ("--plan").
"""

import json
import pathlib
import re
import subprocess
import sys
import textwrap

PAGES = pathlib.Path(__file__).resolve().parent.parent / "docs/man"
MORE = '.\\" By hand from here on:'
BEGIN, END = ".Sh OPTIONS\n.Bl -tag -width Ds\n", ".El\n"


def described(program):
    said = subprocess.run([program, "--describe"], capture_output=True, check=True, text=True).stdout
    return json.loads(said)["options"]


def text_lines(text):
    """Lines of a page for a plain text, one sentence."""
    sentence = text[:1].upper() + text[1:].rstrip(".") + "."
    lines = textwrap.wrap(sentence.replace("\\", "\\e"), 90, break_long_words=False,
                          break_on_hyphens=False)
    return ["\\&" + line if line[0] in ".'" else line for line in lines]


def by_hand(section):
    """What stays: behind the text of each option, and the items that are no options."""
    more, words = {}, []
    for item in re.split(r"(?m)^(?=\.It )", section)[1:]:
        head, _, rest = item.partition("\n")
        if head.startswith(".It Fl Fl "):
            words.append(item)
            continue
        _, mark, kept = rest.partition(MORE + "\n")
        if mark:
            more[head.split()[2]] = mark + kept
    return more, words


def made(page, options):
    """The page with its section made anew; None when it has none."""
    before, begin, rest = page.partition(BEGIN)
    section, end, after = rest.partition("\n" + END + ".Sh ")
    if not begin or not end:
        return None
    more, words = by_hand(section + "\n")
    items = []
    for option in options:
        flag = option["name"][1:]
        head = f".It Fl {flag}" + (f" Ar {option['value'].lower()}" if option["value"] else "")
        items.append("\n".join([head, *text_lines(option["help"])]) + "\n" + more.get(flag, ""))
    return before + begin + "".join(items + words) + END + ".Sh " + after


def main():
    check = sys.argv[1:2] == ["--check"]
    programs = pathlib.Path(sys.argv[-1])
    status = 0
    for path in sorted(PAGES.glob("mox*.1")):
        program = programs / path.stem
        if not program.exists():
            sys.exit(f"man_options.py: no program {program}")
        options = described(program)
        if not options:
            continue
        page = path.read_text(encoding="utf-8")
        new = made(page, options)
        if new is None:
            sys.exit(f"man_options.py: {path} has no section OPTIONS")
        if new == page:
            continue
        if check:
            print(f"{path} is not what scripts/man_options.py writes", file=sys.stderr)
            status = 1
        else:
            path.write_text(new, encoding="utf-8")
    sys.exit(status)


main()
