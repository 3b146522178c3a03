#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Watches the terminal director: on a terminal (its screen is pyte's), and in pipes,
where random scripts have to give the very bytes of the console.

usage: terminal_director.py PROGRAM
"""

import concurrent.futures
import os
import pty
import random
import re
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "kit"))
import terminal

program = sys.argv.pop(1)
plain = {name: value for name, value in os.environ.items()
         if not re.match(r"KAZ|LC_|LANG|NO_COLOR|CLICOLOR|TERM|COLUMNS", name)}
utf8 = {"TERM": "xterm", "LC_ALL": "C.UTF-8"}


def on_terminal(*steps, columns=80, env=None, keys=b"", output=None):
    """Runs the tool on a terminal of its own: (screen, all that was written, status)."""
    ours, theirs = terminal.opened(24, columns)
    tool = subprocess.Popen([program, *steps], stdin=theirs, stdout=output or theirs, stderr=theirs,
                            env={**plain, **(utf8 if env is None else env)}, close_fds=True)
    os.close(theirs)
    written = b""
    for piece in terminal.pieces(ours):
        written += piece
        if keys and b"? [" in written: # typed ahead, it would be echoed elsewhere
            os.write(ours, keys)
            keys = b""
    screen, _ = terminal.screen(24, columns, written)
    return Shown(terminal.lines(screen), written, tool.wait(), screen)


class Shown:
    def __init__(self, lines, written, status, screen):
        self.lines, self.written, self.status, self.screen = lines, written, status, screen


def in_pipes(*steps, env=None):
    run = subprocess.run([program, *steps], env={**plain, **(env or {})}, stdin=subprocess.DEVNULL,
                         capture_output=True, check=False)
    return run.stdout, run.stderr, run.returncode


class Line(unittest.TestCase):
    def test_all_pieces(self):
        shown = on_terminal("start:a:40:Copying plant", "sleep:1100", "add:a:50", "sleep:60", "add:a:0")
        line = shown.lines[0]
        self.assertRegex(line, r"^Copying plant ▕█+░+▏  50% 20/40 \d+\.\d/s \d:\d\d( ETA \d:\d\d)?$")
        cells = re.search("▕(█*)(░*)▏", line)
        self.assertLessEqual(abs(len(cells[1]) - len(cells[2])), 1)
        self.assertLessEqual(len(line), 79)
        self.assertEqual(shown.screen.cursor.y, 1)

    def test_first_second_knows_no_eta(self):
        shown = on_terminal("start:a:1:One", "add:a:30", "fatal:stop")
        self.assertIn(b"ETA --:--", shown.written)
        self.assertEqual(shown.status, 1)

    def test_plain_locale(self):
        shown = on_terminal("start:a:1:One", "add:a:50", env={"TERM": "vt100", "LC_ALL": "C"})
        self.assertRegex(shown.lines[0], r"^One \[#+\.+\]  50% 0:00$")

    def test_what_does_not_fit_goes_in_order(self):
        # What is there at each width can only shrink, in this order.
        order = ["bar", "rate", "elapsed", "pieces", "eta", "title"]
        gone_before = 0
        widths = range(80, 4, -1)
        with concurrent.futures.ThreadPoolExecutor(len(widths)) as pool: # they mostly sleep
            runs = pool.map(lambda columns: on_terminal("start:a:40:Title", "sleep:1010", "add:a:50",
                                                        "sleep:60", "add:a:1", columns=columns), widths)
        for columns, run in zip(widths, runs):
            drawn = [part for part in run.written.decode().split("\r") if "51%" in part]
            text = drawn[0].split("\x1b")[0]
            self.assertLess(len(text), columns)
            there = {"bar": "▕" in text, "rate": "/s" in text, "elapsed": bool(re.search(r"(?<!ETA )0:0\d", text)),
                     "pieces": "/40" in text, "eta": "ETA" in text, "title": text.startswith("T")}
            gone = [not there[piece] for piece in order]
            self.assertEqual(gone, sorted(gone, reverse=True), f"{columns}: {text}")
            self.assertGreaterEqual(sum(gone), gone_before, f"{columns}: {text}")
            gone_before = sum(gone)
        self.assertGreaterEqual(gone_before, 5)

    def test_nothing_below_five_columns(self):
        self.assertEqual(on_terminal("start:a:1:T", "add:a:50", columns=4).written, b"")

    def test_wide_and_invalid_titles(self):
        shown = on_terminal("start:a:1:漢字 \udcff\x1b[2J\u202e", "add:a:50")
        self.assertTrue(shown.lines[0].replace(" ", "").startswith("漢字?^[[2J"), shown.lines[0])
        self.assertNotIn(b"\x1b[2J", shown.written)


class Progress(unittest.TestCase):
    def percent(self, *steps):
        return re.findall(r"(\d+)%", on_terminal(*steps).written.decode())[-1]

    def test_steps_map_onto_their_share(self):
        self.assertEqual(self.percent("start:a:1:T", "push:a:40", "push:a:50", "add:a:50", "pop:a"), "20")
        self.assertEqual(self.percent("start:a:1:T", "absolute:a:30", "reset:a"), "0")

    def test_small_increments_add_up(self):
        self.assertEqual(self.percent("start:a:1:T", *["add:a:0.1"] * 1000), "100")

    def test_the_outermost_is_shown(self):
        shown = on_terminal("start:a:1:Outer", "start:b:1:Inner", "add:b:100", "end:b", "end:a")
        self.assertNotIn(b"Inner", shown.written)
        self.assertTrue(shown.lines[0].startswith("Outer"))

    def test_drawn_at_most_every_fifty_milliseconds(self):
        begin = time.monotonic()
        shown = on_terminal("start:a:1:T", *["add:a:0.01"] * 5000)
        self.assertLess(shown.written.count(b"\r"), 5 + (time.monotonic() - begin) / 0.05)


class Messages(unittest.TestCase):
    def test_stand_above_the_line(self):
        shown = on_terminal("start:a:1:T", "message:first", "add:a:50", "error:second", "tell:a:third", "end:a")
        self.assertEqual(shown.lines[:3], ["first", "second", "third"])
        self.assertRegex(shown.lines[3], "^T ▕.*50% 0:00$")
        self.assertEqual(shown.screen.cursor.y, 4)

    def test_so_do_traces(self):
        shown = on_terminal("start:a:1:T", "add:a:50", "trace:one \x1b[2J", "sleep:60", "add:a:10",
                            env={**utf8, "KAZ_TRACE": "tool"})
        self.assertEqual(shown.lines[0], "trace tool: one ^[[2J")
        self.assertIn("60%", shown.lines[1])
        self.assertEqual(shown.lines[2], "")

    def test_the_line_ends_however_the_tool_ends(self):
        shown = on_terminal("start:a:1:T", "add:a:50", "fatal:no more")
        self.assertEqual(shown.lines[0], "no more")
        self.assertEqual(shown.screen.cursor.x, 0)

    def test_what_is_wrong_with_the_settings_is_told_once(self):
        with tempfile.NamedTemporaryFile() as large:
            large.truncate((256 << 20) + 1)
            shown = on_terminal("error:never", env={**utf8, "ToolInfo": large.name})
        text = "".join(shown.lines)
        self.assertEqual(text.count("holds more than 256 MiB and is not read"), 1, text)
        self.assertEqual(text.count("Can't open ToolInfo file"), 1, text)
        self.assertEqual((shown.status, "never" in text), (1, False))

    def test_questions_and_commands_keep_it_off(self):
        shown = on_terminal("start:a:1:T", "ask:Delete", "command:ls\x07", "end:a", keys=b"n\n")
        text = "\n".join(shown.lines)
        self.assertIn("Delete: Sure? [Yes]/No n", text)
        self.assertIn("reply 1\nExecuting: ls^G\noutput of ls^G\nExecution Complete.\nT ▕", text)

    def test_text_cannot_steer(self):
        shown = on_terminal("message:a\x1b]0;x\x07b\rc\x7f\tt\nu", "error:\u009b2J\u202e\udc80")
        self.assertEqual(shown.lines[:3], ["a^[]0;x^Gb^Mc^?\tt".expandtabs(8), "u", "?2J??"])

    def test_errors_are_red(self):
        red = b"\x1b[31mwrong\x1b[m"
        for env, coloured in [({}, True), ({"NO_COLOR": "1"}, False), ({"NO_COLOR": ""}, True),
                              ({"CLICOLOR": "0"}, False), ({"CLICOLOR": "0", "CLICOLOR_FORCE": "1"}, True),
                              ({"NO_COLOR": "1", "CLICOLOR_FORCE": "1"}, False),
                              ({"NO_COLOR": "1", "KAZ_COLOUR": "yes"}, True), ({"KAZ_COLOUR": "no"}, False)]:
            shown = on_terminal("error:wrong", env={**utf8, **env})
            self.assertEqual(red in shown.written, coloured, env)
        self.assertEqual(in_pipes("error:wrong", env={"CLICOLOR_FORCE": "1"})[1], red + b"\n")
        self.assertEqual(in_pipes("error:wrong", env={"KAZ_COLOUR": "yes"})[1], b"wrong\n")


class End(unittest.TestCase):
    def test_the_status_outlives_the_terminal(self):
        for _ in range(60): # closing it as soon as it ends met the tool alive once in eight times
            tool, ours = pty.fork()
            if tool == 0:
                os.execve(program, [program, "message:text"], plain)
            for _ in terminal.pieces(ours):
                pass
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(tool, 0)[1]), 0)


class Styles(unittest.TestCase):
    steps = ["start:a:4:T", *["add:a:25"] * 4, "message:m", "end:a"]

    def test_dots_where_no_line_can_be_drawn(self):
        for env in ({}, {"TERM": ""}, {"TERM": "dumb"}, {"TERM": "xterm", "KAZ_PROGRESS": "dots"}):
            self.assertEqual(on_terminal(*self.steps, env=env).written.replace(b"\r", b""),
                             in_pipes("console", *self.steps)[0], env)

    def test_none_and_nonsense(self):
        self.assertEqual(on_terminal(*self.steps, env={**utf8, "KAZ_PROGRESS": "none"}).lines[0], "m")
        self.assertIn("100%", on_terminal(*self.steps, env={**utf8, "KAZ_PROGRESS": "fast"}).lines[1])

    def test_lines(self):
        out, err, _ = in_pipes(*self.steps, env={"KAZ_PROGRESS": "lines"})
        self.assertEqual(out, in_pipes("console", *self.steps)[0])
        self.assertEqual(err, b"T: 25 %, 0:00, ETA --:--\nT: 50 %, 0:00, ETA --:--\nT: 75 %, 0:00, ETA --:--\nT: 100 %, 0:00\n")

    def test_output_elsewhere_gets_the_console(self):
        with tempfile.TemporaryFile() as file:
            shown = on_terminal(*self.steps, output=file)
            file.seek(0)
            self.assertEqual(file.read(), in_pipes("console", *self.steps)[0])
        self.assertIn("T ▕", shown.lines[0])


class Untouched(unittest.TestCase):
    def test_pipes_get_the_bytes_of_the_console(self):
        chance = random.Random(4)
        names = "ab"
        for _ in range(40):
            steps = [f"start:{name}:{chance.randint(0, 9)}:Title {name}\x1b" for name in names]
            for _ in range(chance.randint(1, 25)):
                name = chance.choice(names)
                steps.append(chance.choice([
                    f"add:{name}:{chance.randint(-5, 60)}", f"absolute:{name}:{chance.randint(0, 40)}",
                    f"push:{name}:{chance.randint(0, 120)}", f"pop:{name}", f"tell:{name}:told\x07",
                    f"reset:{name}", "message:text\x1b", "line:text", "error:bad\x9b", "command:cmd", "ask:Title"]))
            steps.append(chance.choice(["fatal:end", "end:a", "message:x"]))
            self.assertEqual(in_pipes(*steps, env=utf8), in_pipes("console", *steps, env=utf8), steps)


if __name__ == "__main__":
    unittest.main(verbosity=1)
