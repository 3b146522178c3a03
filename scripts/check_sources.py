#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds what no compiler checks.

- A file of the library includes only what stands in its own room or in one
  further down the list `rooms`, or what `upward` names with a reason; a platform
  header or a platform conditional appears nowhere outside the platform folder.
- Every public header is part of the umbrella header.
- Every variable that a source asks for by its name is one that `moxinfo --check`
  knows.
- Include guards are `#pragma once`; includes are written from the root libs/.
- Every source says which licence it is under.
- The picture of the rooms in docs/architecture.md shows the includes that there are;
  `--draw` prints the one to put there.
"""

import pathlib
import re
import sys

import licences

root = pathlib.Path(__file__).resolve().parent.parent
library = root / "libs" / "tools"

# From top to bottom. What everything may throw and report lies in a folder of
# app/, because that is where tools look for it, and stands near the ground; the
# exceptions that carry texts stand as far down as the strings let them; the
# message catalog is a file with path rules, and so stands above the director.
rooms = ["app", "settings", "services", "config", "messages/catalog", "files", "messages", "formats",
         "containers", "app/failures", "strings", "util", "app/exceptions", "platform"]

# The only includes that go up: room, header, why it cannot be otherwise. Sources
# alone may have them.
upward = {
    ("config", "app/KazToolsContext.h"): "the contexts own the state of the configuration",
    ("config", "app/arguments.h"): "an option of the command line overrides a variable",
    ("config", "app/KazApp.h"): "a failure is told by its channel: console or window",
}
platform_headers = re.compile(
    r"<(unistd|dirent|fcntl|termios|dlfcn|pwd|spawn|windows|io|direct|sys/\w+|linux/\w+)\.h>")
platform_macros = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_WIN32|__linux__|__unix__|WIN32|__MINGW32__|__APPLE__)\b")
# export.h must know how each compiler spells export.
platform_exempt = {library / "export.h"}

problems = []
used = set()
edges = set()  # of rooms: who includes whom


def room_of(path):
    """The room of a library file; None for what stands above all rooms."""
    parts = path.relative_to(library).parts
    if len(parts) == 1:
        return None
    inner = "/".join(parts[:2])
    return inner if inner in rooms else parts[0]


def is_forwarder(path):
    """The old place of a header that has moved: one include, for one release."""
    return "/// @file\n/// Moved:" in path.read_text()[:200]


def check_direction(path, room, header, where):
    target = room_of(root / "libs" / header)
    if target:
        edges.add((room, target))
    if not target or rooms.index(target) >= rooms.index(room):
        return
    if path.suffix == ".cpp" and (room, header.removeprefix("tools/")) in upward:
        used.add((room, header.removeprefix("tools/")))
        return
    problems.append(f"{where}: {room} includes {header}, which stands above it")


def check_file(path):
    room = room_of(path)
    outside = room != "platform" and path not in platform_exempt
    for number, line in enumerate(path.read_text().splitlines(), 1):
        where = f"{path.relative_to(root)}:{number}"
        if outside and platform_macros.search(line):
            problems.append(f"{where}: platform conditional outside the platform folder")
        include = re.match(r'\s*#\s*include\s+([<"])([^>"]+)', line)
        if not include:
            continue
        if outside and platform_headers.search(line):
            problems.append(f"{where}: platform header outside the platform folder")
        if include[1] == '"' and not include[2].startswith("tools/") and outside:
            problems.append(f"{where}: include is not written from the root libs/")
        if include[2].startswith("tools/") and room and not is_forwarder(path):
            check_direction(path, room, include[2], where)
    if path.suffix == ".h" and "#pragma once" not in path.read_text():
        problems.append(f"{path.relative_to(root)}: no #pragma once")


def check_umbrella():
    umbrella = (library / "moxtools.h").read_text()
    for path in sorted(library.rglob("*.h")):
        parts = path.relative_to(library).parts
        if "detail" in parts or parts[0] == "platform" or len(parts) == 1:
            continue
        if is_forwarder(path):
            continue
        if f'"tools/{"/".join(parts)}"' not in umbrella:
            problems.append(f"libs/tools/moxtools.h: {'/'.join(parts)} is missing")


def check_known_names():
    known = set(re.findall(r'"(\w+)"', (root / "programs/common/known_names.cpp").read_text()))
    known |= set(re.findall(r"^ *ROW\(\w+, *(\w+),", (library / "config/kazenv.h").read_text(), re.M))
    for path in sorted(library.rglob("*.cpp")) + sorted((root / "programs").rglob("*.cpp")):
        for name in re.findall(r'\b(?:TI_(?:Env|SameEnv)?Vcont|siteSetting|requiredSetting)\("(\w+)"\)',
                               path.read_text()):
            if name not in known:
                problems.append(f"{path.relative_to(root)}: programs/common/known_names.cpp "
                                f"does not know the variable {name}")


def drawn():
    """The rooms as a matrix: each row's includes, upward ones with a mark of their own."""
    width = max(map(len, rooms)) + 4
    lines = [" " * width + "".join(f"{column:3}" for column in range(1, len(rooms) + 1))]
    for row, room in enumerate(rooms):
        marks = ["." if row == column else " " if (room, other) not in edges
                 else "x" if row < column else "^" for column, other in enumerate(rooms)]
        lines.append(f"{row + 1:2} {room}".ljust(width) + "".join(f"{mark:>3}" for mark in marks))
    return "\n".join(f"    {line.rstrip()}" for line in lines) + "\n"


def check_picture():
    if drawn() not in (root / "docs/architecture.md").read_text():
        problems.append("docs/architecture.md: the picture of the rooms is not what the sources "
                        "include: put the output of scripts/check_sources.py --draw there")


for source in sorted(library.rglob("*")):
    if source.suffix in (".h", ".cpp"):
        check_file(source)
if "--draw" in sys.argv[1:]:
    print(drawn(), end="")
    sys.exit(0)
check_picture()
check_umbrella()
check_known_names()
problems += [f"scripts/check_sources.py: {room} no longer includes {header}: take the row out"
             for room, header in upward.keys() - used]
problems += [f"{path.relative_to(root)}:1: no licence: ./dev format --licences"
             for path in licences.without_line()]
for problem in problems:
    print(problem)
sys.exit(1 if problems else 0)
