#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Lets gdb show each string and container of the tool `debugged`, in a process and in
its core file, and holds the offsets that the printers use against the compiler's.

Where processes may not be traced (many containers), the core file is the kernel's; where
the kernel writes none either, the layout alone is held and the test counts as skipped.

usage: gdb_printers.py GDB PROGRAM
"""

import os
import pathlib
import re
import resource
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
select_tool = ("python frame = gdb.newest_frame()",
               "python while 'runTool' not in (frame.name() or ''): frame = frame.older()",
               "python frame.select()")
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
    for text in ("set startup-with-shell off", "set print elements 0", "set width 0", *commands):
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
    wrong = [f"{where}: {name} is shown as {results.get(name, 'nothing')}, not {pattern}"
             for name, pattern in expected.items() if not re.fullmatch(pattern, results.get(name, "nothing"))]
    yield from wrong
    if wrong:
        yield f"{where}: gdb says {output[-2000:]}{errors[-2000:]}"


def traceable():
    """Whether gdb can run a process here at all."""
    command = [gdb, "-q", "-batch", "-nx", "-ex", "set startup-with-shell off", "-ex", "run", "/bin/true"]
    result = subprocess.run(command, capture_output=True, text=True, timeout=100, stdin=subprocess.DEVNULL, check=False)
    return "exited normally" in result.stdout


def kernel_core(directory):
    """The core file that the kernel writes of the tool; none where it sends them elsewhere."""
    def unlimited():
        hard = resource.getrlimit(resource.RLIMIT_CORE)[1]
        resource.setrlimit(resource.RLIMIT_CORE, (hard, hard))
    subprocess.run([program, "-system", "plant", "word"], cwd=directory, preexec_fn=unlimited,
                   env=os.environ | {"MOX_DEBUGGED_ABORTS": "1"}, capture_output=True, timeout=100, check=False)
    return next(pathlib.Path(directory).glob("core*"), None)


def layout_problems(output, errors):
    checked = re.findall(r"^layout (\S+) (\S+) (\S+)$", output, re.MULTILINE)
    yield from (f"{name} is at {found}, the printers look at {place}" for name, place, found in checked if place != found)
    if len(checked) < 20:
        yield f"layout: {output[-2000:]}{errors}"


def problems(directory, traced):
    prints = [part for name in expected for part in (f"echo <<{name}>>\\n", f"print {name}")]
    layout = "python exec(open(r'%s').read())" % layout_file(directory)
    core = pathlib.Path(directory) / "core"
    if traced:
        output, errors = run("break stopHere", "run", "up", *prints, f"generate-core-file {core}", layout)
        yield from compare("process", output, errors)
        yield from layout_problems(output, errors)
        yield from compare("core file", *run("up", *prints, core=core))
    elif core := kernel_core(directory):
        output, errors = run(*select_tool, *prints, layout, core=core)
        yield from compare("kernel's core file", output, errors)
        yield from layout_problems(output, errors)
    else:
        yield from layout_problems(*run(f"file {program.parent / 'libmoxtools.so'}", f"file {program}", layout))


def layout_file(directory):
    path = pathlib.Path(directory) / "layout.py"
    path.write_text(layout_check)
    return path


with tempfile.TemporaryDirectory() as directory:
    traced = traceable()
    found = list(problems(directory, traced))
    skipped = not traced and not list(pathlib.Path(directory).glob("core*"))
print("\n".join(found) or f"{0 if skipped else len(expected)} objects, {'traced' if traced else 'not traced'}")
sys.exit(1 if found else 77 if skipped else 0)
