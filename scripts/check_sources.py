#!/usr/bin/env python3
"""Holds what no compiler checks.

- A header of the library includes only headers of its own folder or of a
  folder further down the list `layers`; a platform header or a platform
  conditional appears nowhere outside the platform folder.
- Every public header is part of the umbrella header.
- Include guards are `#pragma once`; includes are written from the root libs/.
"""

import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
library = root / "libs" / "tools"

# From top to bottom. Exceptions live in app/ and stand below the containers.
layers = ["app", "settings", "services", "config", "messages", "formats", "files", "containers",
          "exceptions", "strings", "util", "platform"]
platform_headers = re.compile(
    r"<(unistd|dirent|fcntl|termios|dlfcn|pwd|spawn|windows|io|direct|sys/\w+|linux/\w+)\.h>")
platform_macros = re.compile(
    r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_WIN32|__linux__|__unix__|WIN32|__MINGW32__|__APPLE__)\b")
# export.h must know how each compiler spells export.
platform_exempt = {library / "export.h"}

problems = []


def layer_of(path):
    """Folder of a library header, with the exceptions as a layer of their own."""
    parts = path.relative_to(library).parts
    if len(parts) == 1:
        return None
    if parts[0] == "app" and re.fullmatch(r"Kaz\w*Exception\.(h|cpp)", parts[-1]):
        return "exceptions"
    return parts[0]


def check_file(path):
    layer = layer_of(path)
    outside = layer != "platform" and path not in platform_exempt
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
        if path.suffix == ".h" and include[2].startswith("tools/") and layer:
            target = layer_of(root / "libs" / include[2])
            if target and layers.index(target) < layers.index(layer):
                problems.append(f"{where}: {layer} includes {target}, which stands above it")
    if path.suffix == ".h" and "#pragma once" not in path.read_text():
        problems.append(f"{path.relative_to(root)}: no #pragma once")


def check_umbrella():
    umbrella = (library / "moxtools.h").read_text()
    for path in sorted(library.rglob("*.h")):
        parts = path.relative_to(library).parts
        if "detail" in parts or parts[0] == "platform" or len(parts) == 1:
            continue
        if f'"tools/{"/".join(parts)}"' not in umbrella:
            problems.append(f"libs/tools/moxtools.h: {'/'.join(parts)} is missing")


for source in sorted(library.rglob("*")):
    if source.suffix in (".h", ".cpp"):
        check_file(source)
check_umbrella()
for problem in problems:
    print(problem)
sys.exit(1 if problems else 0)
