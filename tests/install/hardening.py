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
    wanted = [(headers, "GNU_RELRO", "relocations stay writable"),
              (dynamic, r"\(FLAGS(_1)?\).*NOW", "functions are bound when they are first called"),
              (headers, r"Type:\s+DYN", "it has a fixed address"),
              (code, "endbr64", "targets of indirect branches are not marked")]
    unwanted = [(headers, "GNU_STACK.*RWE", "its stack is executable"),
                (dynamic, r"\((RPATH|TEXTREL)\)", "old search path, or relocations in code")]
    if "(SONAME)" in dynamic:
        wanted += [(dynamic, r"\(FLAGS_1\).*NODELETE", "it can be unloaded under its own handlers"),
                   (undefined, "__stack_chk_fail", "stack frames have no canaries"),
                   (undefined.replace("__stack_chk_fail", ""), r" U __\w+_chk\b",
                    "no function of the C library is fortified"),
                   # `or` with zero touches a page without changing it.
                   (code, r"\borq\s+\$0x0,\(%rsp\)", "large stack frames are not touched page by page")]
    yield from (problem for text, pattern, problem in wanted if not re.search(pattern, text))
    yield from (problem for text, pattern, problem in unwanted if re.search(pattern, text))


found = [f"{path}: {problem}" for path in sys.argv[1:] for problem in problems(path)]
print("\n".join(found) or f"{len(sys.argv) - 1} files are as they should be")
sys.exit(1 if found or len(sys.argv) < 2 else 0)
