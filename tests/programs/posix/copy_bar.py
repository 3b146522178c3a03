#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Copies a system on a terminal, whose screen is pyte's, and looks at what stands there.

usage: copy_bar.py MOXCOPY
"""

import os
import re
import select
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "kit"))
import terminal

moxcopy = os.path.abspath(sys.argv.pop(1))
files = 600


class Bar(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
        self.addCleanup(self.folder.cleanup)
        for number in range(files):
            self.write(f"plant/brewery/part{number % 7}/file{number}.dgm", b"diagram")

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, content):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content)

    def start(self, *words, output=None, **variables):
        """A copy on a terminal of its own."""
        self.ours, theirs = terminal.opened(24, 100)
        env = {"PATH": os.environ["PATH"], "HOME": self.folder.name, "TERM": "xterm", "LC_ALL": "C.UTF-8", **variables}
        tool = subprocess.Popen([moxcopy, "-p", "plant", "-s", "brewery", "-target", "t", *words], stdin=theirs,
                                stdout=output or theirs, stderr=theirs, env=env, cwd=self.folder.name)
        os.close(theirs)
        return tool

    def watch(self, tool, written=b""):
        """The lines of the screen when the tool has ended, and all that was written there."""
        written += b"".join(terminal.pieces(self.ours))
        self.status = tool.wait()
        return terminal.lines(terminal.screen(24, 100, written)[0]), written

    def start_long_copy(self):
        """The tool, whose bar is up, and what it has written."""
        for number in range(8):
            self.write(f"plant/brewery/big{number}.dgm", os.urandom(4 << 20))
        tool = self.start()
        begin = b""
        while b"Copying" not in begin:
            begin += os.read(self.ours, 65536)
        return tool, begin

    def test_the_bar_stays_when_all_is_copied(self):
        lines, written = self.watch(self.start())
        self.assertEqual(self.status, 0)
        self.assertEqual(lines[0], "System 'brewery': 600 files in 8 directories.")
        self.assertRegex(lines[1], r"^Copying brewery ▕█+▏ 100% 600/600( [\d.]+/s)? \d:\d\d$")
        self.assertRegex(lines[2], r"^600 files, \d+ bytes copied to '.*' in [\d.]+ seconds\.$")
        self.assertEqual(lines[3], "")
        self.assertLess(written.count(b"\r"), 200, "not each file is a picture")

    def test_each_file_stands_above_the_bar_and_obeys_nobody(self):
        lines, written = self.watch(self.start("-verbose", "-filter", "*99*"))
        told = [number for number, line in enumerate(lines) if line.startswith("[")]
        self.assertEqual(told, list(range(1, 7)), lines)
        self.assertRegex(lines[told[-1]], r"^\[ *\d+%\] Copied '.*'\.$")
        self.assertRegex(lines[told[-1] + 1], "^Copying brewery ▕█+▏ 100% 6/6")
        self.write("plant/brewery/evil\x1b[2J.dgm", b"")
        lines, written = self.watch(self.start("-verbose", "-Force", "-filter", "evil*"))
        self.assertNotIn(b"\x1b[2J", written)
        self.assertIn("evil\\x1B[2J.dgm'.", "\n".join(lines))

    def test_a_window_that_changes_its_size_gets_lines_of_the_new_width(self):
        tool, begin = self.start_long_copy()
        tool.send_signal(signal.SIGSTOP)
        os.waitpid(tool.pid, os.WUNTRACED)
        while select.select([self.ours], [], [], 0.1)[0]:
            begin += os.read(self.ours, 65536)
        screen, stream = terminal.screen(24, 100, begin)
        self.assertEqual(len(screen.display[1].rstrip()), 99)
        terminal.resize(self.ours, 24, 60)
        screen.resize(24, 60)
        tool.send_signal(signal.SIGCONT)
        _, written = self.watch(tool)
        self.assertEqual({len(picture) for picture in re.findall(r"\r([^\r\n\x1b]+)\x1b\[K", written.decode())}, {59})
        stream.feed(written)
        lines = terminal.lines(screen)
        self.assertRegex(lines[1], r"^Copying brewery ▕█+▏ 100% 608/608 .*\d:\d\d$")
        self.assertRegex(lines[2], "^608 files, ")

    def test_an_interrupt_leaves_whole_lines_and_nothing_else(self):
        tool, begin = self.start_long_copy()
        tool.send_signal(signal.SIGINT)
        lines, _ = self.watch(tool, begin)
        self.assertEqual(self.status, 9)
        self.assertIn("Cancelled, nothing was copied", lines)
        self.assertNotIn("seconds", "".join(lines))
        self.assertFalse(os.path.exists(self.path("t")))


if __name__ == "__main__":
    unittest.main(verbosity=1)
