#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the sections OPTIONS of the manual pages from what the programs say of themselves.

usage: man_options.py BIN            (writes the pages in docs/man)
       man_options.py --check BIN    (status 1 when a page is not what would be written)

A program whose first word is a command has a section like it behind the command's item.
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


def described(program, *command):
    said = subprocess.run([program, *command, "--describe"], capture_output=True, check=True, text=True).stdout
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


def items(section, options):
    """The items of a section, made anew."""
    more, words = by_hand(section)
    made = []
    for option in options:
        flag = option["name"][1:]
        head = f".It Fl {flag}" + (f" Ar {option['value'].lower()}" if option["value"] else "")
        made.append("\n".join([head, *text_lines(option["help"])]) + "\n" + more.get(flag, ""))
    return "".join(made + words)


def made(page, options):
    """The page with its section made anew; None when it has none."""
    before, begin, rest = page.partition(BEGIN)
    section, end, after = rest.partition("\n" + END + ".Sh ")
    if not begin or not end:
        return None
    return before + begin + items(section + "\n", options) + END + ".Sh " + after


def commands_of(program):
    """The options of each command, where the first word is one."""
    said = subprocess.run([program, "--complete", "0", ""], capture_output=True, check=True, text=True).stdout
    names = [line.split("\t")[0] for line in said.splitlines()]
    return {name: described(program, name) for name in names if not name.startswith((":", "-"))}


def made_of_commands(page, commands):
    """The same for a program of commands: what all of them take, and then what each has more."""
    before, begin, rest = page.partition(".Sh OPTIONS\n")
    section, end, after = rest.partition("\n.Sh ")
    if not begin or not end:
        return None
    lists = {"Every command": [option for option in min(commands.values(), key=len)
                               if all(option in options for options in commands.values())]}
    for name, options in commands.items():
        lists["Cm " + name] = [option for option in options if option not in lists["Every command"]]
    kept = {title: text for title, _, text in
            (part.partition("\n") for part in re.split(r"(?m)^\.Ss ", section + "\n")[1:])}
    parts = [f".Ss {title}\n.Bl -tag -width Ds\n{items(kept.get(title, '').replace(END, ''), options)}{END}"
             for title, options in lists.items() if options]
    return before + begin + "".join(parts) + ".Sh " + after


def main():
    check = sys.argv[1:2] == ["--check"]
    programs = pathlib.Path(sys.argv[-1])
    status = 0
    for path in sorted(PAGES.glob("mox*.1")):
        program = programs / path.stem
        if not program.exists():
            sys.exit(f"man_options.py: no program {program}")
        options = described(program)
        page = path.read_text(encoding="utf-8")
        new = made(page, options) if options else made_of_commands(page, commands_of(program))
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
