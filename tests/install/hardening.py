#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Looks at installed programs and libraries for what the compiler was asked to add.

usage: hardening.py FILE...

Checks what the loader reads (relocations read-only and bound at start, position
independent, the library never unloaded) and what the code holds: canaries,
fortified functions, targets of indirect branches, and stack frames that are
touched page by page. The last three are looked for in each file's code; a program
that has no use for one of them (no buffer, no large frame) need not have it, the
library must.
"""

import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def problems(path):
    dynamic = output("readelf", "-dW", path)
    headers = output("readelf", "-hlW", path)
    code = output("objdump", "-d", "--no-show-raw-insn", path)
    undefined = output("nm", "-D", "--undefined-only", path)
    is_library = "(SONAME)" in dynamic
    if "GNU_RELRO" not in headers:
        yield "relocations stay writable"
    if not re.search(r"\(FLAGS(_1)?\).*NOW", dynamic):
        yield "functions are bound when they are first called"
    if not re.search(r"Type:\s+DYN", headers):
        yield "it has a fixed address"
    if re.search(r"GNU_STACK.*RWE", headers):
        yield "its stack is executable"
    if re.search(r"\((RPATH|TEXTREL)\)", dynamic):
        yield "old search path, or relocations in code"
    if "endbr64" not in code:
        yield "targets of indirect branches are not marked"
    if not is_library:
        return
    if not re.search(r"\(FLAGS_1\).*NODELETE", dynamic):
        yield "it can be unloaded under its own handlers"
    if "__stack_chk_fail" not in undefined:
        yield "stack frames have no canaries"
    if not re.search(r" U __\w+_chk\b", undefined.replace("__stack_chk_fail", "")):
        yield "no function of the C library is fortified"
    # `or` with zero touches a page without changing it.
    if not re.search(r"\borq\s+\$0x0,\(%rsp\)", code):
        yield "large stack frames are not touched page by page"


found = [f"{path}: {problem}" for path in sys.argv[1:] for problem in problems(path)]
print("\n".join(found) or f"{len(sys.argv) - 1} files are as they should be")
sys.exit(1 if found or len(sys.argv) < 2 else 0)
