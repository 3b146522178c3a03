#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Lets gdb show each string and container of the tool `debugged`, in a process and in
its core file, and holds the offsets that the printers use against the compiler's.

usage: gdb_printers.py GDB PROGRAM
"""

import pathlib
import re
import subprocess
import sys
import tempfile

gdb, program = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
numbers = ", ".join(str(i) for i in range(1, 101))
pointer = r"(\(void \*\) )?0x[0-9a-f]+( <[^>]+>)?"
null = r"(\(void \*\) )?0x0"
expected = {
    "text": re.escape(r'"say \"hi\"\n"'),
    "empty": '""',
    "wide": 'u"wide"',
    "colours": re.escape('KazStringColl of 3 = {"red", "", "green"}'),
    "numbers": re.escape("KazIntColl of 3 = {3, -1, 2}"),
    "pointers": rf"KazArrayPtr of 1 = \{{{pointer}\}}",
    "items": rf"KazColl of 2 = \{{{pointer}, {null}\}}",
    "map": re.escape('KazStringToStringMap of 1 = {["key"] = "value"}'),
    "table": rf"KazHashTable of 1 = \{{\[{pointer}\] = {pointer}\}}",
    "tree": rf"KazTree of 2 = \{{{pointer}, {pointer}\}}",
    "ordered": re.escape(f"KazIntTree of 100 = {{{numbers}}}"),
    "words": re.escape('KazStringTree of 2 = {"a", "b"}'),
    "*plain": rf'string_map_tp of 2 = \{{\[{pointer} "x"\] = {pointer}, \[{pointer} "\\377"\] = {pointer}\}}',
    "arguments": r'KazParsedArgs with 1 options = \{\[arg_system\] = KazStringColl of 1 = \{"plant"\},'
                 r' \[untagged\] = KazStringColl of 1 = \{"word"\}\}',
    "notText": r"<not a string: length 50, room 19, count 1>",
    "notColl": r"<not a KazStringColl: size 2139062143, capacity 2139062143>",
}
layout_check = """
import gdb, sys
def offset(type, name):
    for field in type.fields():
        if field.name == name and hasattr(field, 'bitpos'):
            return field.bitpos // 8
layout = sys.modules['moxtools_gdb'].layout
for type_name, fields in layout.items():
    for field, expected in fields.items():
        found = offset(gdb.lookup_type(type_name), field)
        print(f'layout {type_name}::{field} {expected} {found}')
"""


def run(*commands, core=None):
    command = [gdb, "-q", "-batch", "-nx", "-iex", f"add-auto-load-safe-path {program.parent}",
               "-iex", "set debuginfod enabled off"]
    for text in ("set print elements 0", "set width 0", *commands):
        command += ["-ex", text]
    command += [str(program), str(core)] if core else ["--args", str(program), "-system", "plant", "word"]
    result = subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=100,
                            stdin=subprocess.DEVNULL, check=False)
    return result.stdout, result.stderr


def shown(output):
    """What was printed for each expression, between marks of our own."""
    return dict(re.findall(r"^<<(.+?)>>\n\$\d+ = (.*)$", output, re.MULTILINE))


def compare(where, output, errors):
    results = shown(output)
    for name, pattern in expected.items():
        found = results.get(name, "nothing")
        if not re.fullmatch(pattern, found):
            yield f"{where}: {name} is shown as {found}, not {pattern}"
    if not results:
        yield f"{where}: gdb says {output}{errors}"


def problems():
    prints = [part for name in expected for part in (f"echo <<{name}>>\\n", f"print {name}")]
    with tempfile.TemporaryDirectory() as directory:
        core = pathlib.Path(directory) / "core"
        output, errors = run("break stopHere", "run", "up", *prints, f"generate-core-file {core}",
                             "python exec(open(r'%s').read())" % layout_file(directory))
        yield from compare("process", output, errors)
        checked = re.findall(r"^layout (\S+) (\S+) (\S+)$", output, re.MULTILINE)
        yield from (f"{name} is at {found}, the printers look at {place}"
                    for name, place, found in checked if place != found)
        if len(checked) < 20:
            yield f"layout: {output[-2000:]}{errors}"
        yield from compare("core file", *run("up", *prints, core=core))


def layout_file(directory):
    path = pathlib.Path(directory) / "layout.py"
    path.write_text(layout_check)
    return path


found = list(problems())
print("\n".join(found) or f"{len(expected)} objects, in a process and in its core file")
sys.exit(1 if found else 0)
