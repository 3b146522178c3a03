#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the manual pages against what the programs say of themselves.

usage: man_pages.py BIN PAGES
"""

import json
import pathlib
import re
import subprocess
import sys
import unittest

programs, pages = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
del sys.argv[1:]


def said(program, word):
    return subprocess.run([programs / program, word], capture_output=True, check=True, text=True).stdout


class Pages(unittest.TestCase):
    def test_options_are_those_of_the_program(self):
        names = [path.stem for path in pages.glob("mox*.1") if (programs / path.stem).exists()]
        self.assertGreaterEqual(len(names), 3)
        for name in names:
            page = (pages / (name + ".1")).read_text(encoding="utf-8").replace("Fl Fl ", "Fl -")
            synopsis, _, rest = page.partition(".Sh DESCRIPTION")
            described = json.loads(said(name, "--describe"))
            usage = said(name, "-help")
            words = set(re.findall(r"^  -(-[a-z]+) ", usage, re.M))
            with self.subTest(program=name):
                options = {option["name"][1:]: option["value"] is not None for option in described["options"]}
                options |= {word: False for word in words}
                items = "\n".join(re.findall(r"^\.It (Fl .*)$", rest, re.M)).replace(" , ", "\n")
                told = {flag: bool(value) for flag, value in re.findall(r"^Fl (\S+)(?: Ar (.+))?$", items, re.M)}
                self.assertEqual(told, options)
                shown = set(re.findall(r"^\.(?:Op )?Fl (\S+)", synopsis, re.M))
                self.assertEqual(shown, set(options), "the synopsis")


if __name__ == "__main__":
    unittest.main()
