#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/options.md, the page of the options that all tools share, from their table.

usage: options_page.py            (writes the page)
       options_page.py --check    (status 1 when the page is not what would be written)
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "libs/tools/app/KazArgDescription.cpp"
PAGE = ROOT / "docs/options.md"

# What a value or a switch says, in the sense that the suite's tools share.
MEANINGS = {
    "-#": "the tool's own count or mark; tools that print listings number their lines",
    "-batch": "nobody is there to answer questions",
    "-Command": "a command to carry out; encoded (see below) it may hold anything",
    "-commands_file": "a file of commands to carry out",
    "-connect": "connect to an editor that runs already: to the first one, or not",
    "-context": "the context that the tool works in",
    "-display": "the display of a graphical front end",
    "-editor": "the editor of diagrams to start or to work for",
    "-enabled": "whether what the tool offers is switched on",
    "-external": "include what lies outside the system",
    "-file": "the file to work on",
    "-first": "the first one only",
    "-Force": "go on where the tool would stop or ask",
    "-formats": "the format, or formats, of the output",
    "-forward_messages": "where messages are passed on to",
    "-from_cte": "a template editor has started the tool",
    "-gethandle": "print the handle of the editor that was started",
    "-guid": "make or show identifiers",
    "-handle": "the handle of an editor, a number",
    "-host": "the machine to connect to",
    "-ignore": "pass over what cannot be read",
    "-Incldir": "a directory to search for what is included",
    "-Interactive": "ask the user",
    "-merge": "add to what is there instead of replacing it",
    "-noannot": "leave annotations out",
    "-nodiagram": "leave diagrams out",
    "-noexternal": "leave out what lies outside the system",
    "-nograph": "work without a display",
    "-nostartup": "start without the start-up window",
    "-forkedfromstartup": "the start-up window has started the tool",
    "-notable": "leave tables out",
    "-orientation": "of a page: portrait or landscape",
    "-output": "the file, or directory, that the result goes to",
    "-overwrite": "replace files that are there",
    "-pageheight": "height of a page, a number",
    "-pagewidth": "width of a page, a number",
    "-path": "show full paths",
    "-port": "the port to connect to, a number",
    "-print_setting": "a named setting of the printer",
    "-printer": "the printer to print to",
    "-product": "the product that configuration and files belong to",
    "-progress_channel": "the progress of the tool that started this one",
    "-projdir": "the project directory",
    "-Quiet": "say no more than is needed",
    "-relaxed": "check less strictly",
    "-replace": "replace what is there",
    "-Revision": "the revision of the diagram",
    "-rman": "the repository manager",
    "-rules_print": "which rules to print",
    "-server": "the server to connect to",
    "-session": "the session to take part in",
    "-show_system": "show the system's name",
    "-source": "the file, or directory, that is read",
    "-srcdir": "the directory of source code",
    "-system": "the system in the project directory",
    "-target": "where the result goes: a directory or a name",
    "-toolinfo": "the ToolInfo file to begin with",
    "-trace": "a topic to trace, or all",
    "-trace_file": "the file that traces go to",
    "-traditional": "behave as older versions did",
    "-transaction": "carry everything out, or nothing",
    "-transient": "the window goes with the one that it belongs to",
    "-filter": "which items count",
    "-Type": "the type of diagram or of item",
    "-update": "bring up to date what is there",
    "-verbose": "tell each step",
    "-version": "print the version",
    "-viewafter": "show the result at the end",
    "-x": "a name and a value for the tool",
    "-noclasscomments": "leave the comments of classes out",
    "-nooperationbodies": "leave the bodies of operations out",
}

HEAD = """# The shared options

A tool of the suite declares no options of its own: it says which of these it takes
(`KazCommandLine`), so that one word means the same everywhere. This page is made from the table by
`scripts/options_page.py`.

- An option may be shortened to the letters that are shown, case matters.
- A switch alone means yes; "0" or "1" directly behind the full word says it: `-verbose0`.
- "times" is how often it may be given; what may be given once keeps its first value, and a
  repetition is reported.
- Options of the process (p) hold for the tool and for what runs inside it.
- The value of `-Command` may be encoded: "0x" and two hexadecimal digits for each byte
  (`kaz_arg_text_encode`), so that it survives any shell.
- `TOOL -help` lists the options that a tool takes, `TOOL --explain WORD ...` says how a line is read.
- The table says what each tool may assume; what a tool makes of it, its own page tells.

| option | shortest | values | times | | meaning |
|---|---|---|---|---|---|
"""


def rows():
    pattern = re.compile(r'\{arg_\w+,\s*"(-[^"]+)",\s*(\d+),\s*(\d),\s*(\d+),\s*(yes|no),\s*(yes|no),')
    for match in pattern.finditer(TABLE.read_text(encoding="utf-8")):
        text, least, values, times, switch, everywhere = match.groups()
        yield text, int(least), int(values), max(int(times), 1), switch == "yes", everywhere == "yes"


def shortest(row, table):
    """The shortest text that selects the row: the first row that it abbreviates wins."""
    text, least = row[:2]
    for length in range(max(least, 2), len(text)):
        if next(r for r in table if r[0].startswith(text[:length]) and length >= r[1]) is row:
            return text[:length]
    return text


def page():
    table = list(rows())
    lines = []
    for row in table:
        text, _, values, times, switch, everywhere = row
        marks = ("switch" if switch else "") + (" p" if everywhere else "")
        lines.append(f"| `{text}` | `{shortest(row, table)}` | {values} | {times} | {marks.strip()} | {MEANINGS[text]} |")
    return HEAD + "\n".join(lines) + f"\n\n{len(table)} options.\n"


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        if PAGE.read_text(encoding="utf-8") != page():
            sys.exit("docs/options.md is not what scripts/options_page.py makes of the table")
    else:
        PAGE.write_text(page(), encoding="utf-8")
