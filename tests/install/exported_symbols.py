#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what a shared library exports with a committed list.

usage: exported_symbols.py LIBRARY LIST [--update]

An export that is new, or gone, is a change of the interface: it goes into the
list (--update) together with the change that makes it.
"""

import subprocess
import sys

library, list_file = sys.argv[1:3]
lines = subprocess.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                       capture_output=True, text=True).stdout.splitlines()
# "address kind name"
exported = sorted({line.split(" ", 2)[2] for line in lines})

if "--update" in sys.argv:
    with open(list_file, "w", encoding="utf-8") as file:
        file.write("\n".join(exported) + "\n")
    sys.exit(0)
with open(list_file, encoding="utf-8") as file:
    listed = file.read().splitlines()
for name in sorted(set(exported) - set(listed)):
    print(f"exported, but not listed: {name}")
for name in sorted(set(listed) - set(exported)):
    print(f"listed, but not exported: {name}")
sys.exit(exported != listed)
