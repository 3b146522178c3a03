#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the commands that a page of the cookbook shows, and compares what they write.

usage: cookbook.py PAGE DIRECTORY...     (where the page's tool and the suite's programs are)

"```text NAME" blocks of the page are files; "```console" blocks hold commands behind "$ " and
what they write, to whichever stream.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

page = pathlib.Path(sys.argv[1])
blocks = re.findall(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)
commands = []
for kind, _, text in blocks:
    if kind == "console":
        for step in re.split(r"^\$ ", text, flags=re.M)[1:]:
            command, _, expected = step.partition("\n")
            commands.append((command, expected))
if not commands:
    sys.exit(f"{page}: no commands")

with tempfile.TemporaryDirectory() as directory:
    place = pathlib.Path(directory)
    (place / "ToolInfo").write_text("")
    for kind, name, text in blocks:
        if kind == "text" and name:
            (place / name).parent.mkdir(parents=True, exist_ok=True)
            (place / name).write_text(text, encoding="utf-8")
    environment = {"PATH": os.pathsep.join(sys.argv[2:] + ["/usr/bin", "/bin"]), "HOME": directory,
                   "LC_ALL": "C.UTF-8", "TZ": "UTC", "ToolInfo": str(place / "ToolInfo")}
    for name in ("ASAN_OPTIONS", "LD_LIBRARY_PATH"):
        if name in os.environ:
            environment[name] = os.environ[name]
    for command, expected in commands:
        done = subprocess.run(["bash", "-c", command], cwd=place, env=environment, text=True, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
        if done.stdout != expected:
            sys.exit(f"{page}: {command}\nexpected:\n{expected}\ngot:\n{done.stdout}")
