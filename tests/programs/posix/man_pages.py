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
    """The texts of the options are made from the programs (scripts/man_options.py)."""

    def test_what_is_written_by_hand_names_all_options(self):
        names = [path.stem for path in pages.glob("mox*.1") if (programs / path.stem).exists()]
        self.assertGreaterEqual(len(names), 3)
        for name in names:
            page = (pages / (name + ".1")).read_text(encoding="utf-8").replace("Fl Fl ", "Fl -")
            synopsis, _, rest = page.partition(".Sh DESCRIPTION")
            options = {option["name"][1:] for option in json.loads(said(name, "--describe"))["options"]}
            words = set(re.findall(r"^  -(-[a-z]+) ", said(name, "-help"), re.M))
            with self.subTest(program=name):
                self.assertEqual(set(re.findall(r"^\.It Fl (-\S+)", rest, re.M)), words)
                shown = set(re.findall(r"^\.(?:Op )?Fl (\S+)", synopsis, re.M))
                self.assertEqual(shown, options | words, "the synopsis")


if __name__ == "__main__":
    unittest.main()
