#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Gives the reference what a reader of the headers sees at a glance.

A comment above a run of declarations speaks of each of them, up to the next blank line or
comment. The reference knows only the first, so here the comment is repeated for the others,
on the same line, so that line numbers stay. Members of a class that is made like another
one refer to that. Copying and moving that the compiler writes needs no words.

usage: reference_filter.py HEADER        (prints it; run for each header)
"""

import re
import sys

SCOPE = re.compile(r"^\s*(template\s*<.*>\s*)?(class|struct|namespace|union|extern \"C\")\b[^;()]*\{$")
APART = re.compile(r"^\s*(static_assert|(virtual )?~|.*= delete;|friend (class|struct)\b)")
LABEL = re.compile(r"^\s*(public|protected|private):")
DEFAULTED = re.compile(r"^\s*(\w+\(|\w+& operator=\()(const )?\w+(&|&&)( \w+)?\)( noexcept)? = default;$")
# In the first a member that says nothing is the second's of the same name.
MADE_LIKE = {"KazWString.h": ("KazWString", "KazString")}


class Run:
    """The comment that the declaration before had, while a run lasts."""

    def __init__(self):
        self.comment = []
        self.last = None

    def end(self):
        self.comment, self.last = [], None

    def take(self, line):
        """What the declaration that begins here is told by; None for its own comment."""
        if self.comment:
            self.last, self.comment = self.comment, []
            return None
        if APART.match(line):
            self.end()
        return self.last


def as_one_line(comment):
    words = [line.strip()[3:].strip() or "<p>" for line in comment]
    return "/** " + " ".join(words) + " */ "


def reference(declaration, old, new):
    """The same member of the class that this one is made like."""
    signature = declaration.split("{")[0].split(";")[0]
    signature = re.sub(r"\b(inline|static|friend|constexpr|explicit)\b|KAZ_PRINTF\(.*?\)| noexcept", "", signature)
    match = re.search(r"(operator\W+|operator [\w *]+|\w+)\((.*)\)\s*(const)?\s*$", signature.strip())
    if match is None:
        return None
    types = re.sub(r"\s*=[^,]*", "", match[2]).replace(old, new).replace("unsigned short", "char")
    types = re.sub(r"(?<=[\w&*]) ?\b(?!char|int|unsigned|void|const|va_list|bool|%s)\w+(?=,|$)" % new, "", types)
    name = match[1].strip().replace(old, new)
    return f"/** @copydoc {new}::{name}({types.strip()}) {match[3] or ''} */ "


def filtered(name, text):
    run, depth, body, open_statement = Run(), 0, 0, False
    for line in text.splitlines():
        stripped = line.strip()
        if body:
            body += stripped.count("{") - stripped.count("}")
            yield line
            continue
        if open_statement:
            if stripped.endswith("{"):
                body, open_statement = 1, False
            elif stripped.endswith((";", "}")):
                open_statement = False
            yield line
            continue
        if not stripped or stripped.startswith(("#", "}")) or LABEL.match(line):
            run.end()
        elif stripped.startswith("///<"):
            pass
        elif stripped.startswith("///"):
            if re.search(r"@(name|\{|\}|file|cond|endcond)", stripped):
                run.end()
            else:
                run.comment.append(stripped)
        elif stripped.startswith("//"):
            if not run.comment:
                run.end()
        elif SCOPE.match(line):
            run.end()
            run.comment = []
        elif DEFAULTED.match(line):
            line = ""
        else:
            told = run.take(line)
            if "///<" in line:
                run.end()
            elif told is not None:
                line = as_one_line(told) + line
            elif run.last is None and name in MADE_LIKE and not APART.match(line):
                line = (reference(stripped, *MADE_LIKE[name]) or "") + line
            code = stripped.split("//")[0].strip()
            if code.endswith("{"):
                body = 1
            elif not code.endswith((";", "}", "*/")):
                open_statement = True
        yield line


if __name__ == "__main__":
    path = sys.argv[1]
    with open(path, encoding="utf-8") as file:
        print("\n".join(filtered(path.rsplit("/", 1)[-1], file.read())))
