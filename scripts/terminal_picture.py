#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws docs/terminal.svg: tools at work on the sample project, recorded from a terminal.

usage: terminal_picture.py SUITE [FILE]     (SUITE is where the programs are installed)
"""

import fcntl
import os
import pathlib
import pty
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
from xml.sax.saxutils import escape

import pyte

columns, lines = 104, 60
commands = [
    "moxcopy -projdir plant -sistem logistics",
    "moxcopy -projdir plant -system Brewry -target copies",
    "moxcopy -projdir plant -system brewery -target copies",
    "moxcopy -projdir plant -system logistics -target copies --plan",
]
colours = {"red": "#e06c75", "default": "#dcdfe4"}
font, cell, row = 14, 8.43, 19


def record(suite, folder):
    """The screen after the commands, one below the other."""
    screen = pyte.Screen(columns, lines)
    stream = pyte.ByteStream(screen)
    env = {"PATH": f"{suite}/bin:{os.environ['PATH']}", "HOME": folder, "TERM": "xterm", "LC_ALL": "C.UTF-8"}
    for command in commands:
        stream.feed(f"\033[1m$ {command}\033[m\r\n".encode())
        ours, theirs = pty.openpty()
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))
        tool = subprocess.Popen(command.split(), stdin=theirs, stdout=theirs, stderr=theirs, cwd=folder, env=env)
        os.close(theirs)
        try:
            while piece := os.read(ours, 65536):
                stream.feed(piece)
        except OSError: # the tool has ended
            pass
        tool.wait()
        os.close(ours)
        stream.feed(b"\r\n")
    return screen


def runs(cells):
    """The pieces of a line that look alike: (column, text, colour, bold)."""
    pieces = []
    for column in range(columns):
        char = cells[column]
        if pieces and pieces[-1][2:] == (char.fg, char.bold):
            pieces[-1] = (pieces[-1][0], pieces[-1][1] + char.data, *pieces[-1][2:])
        else:
            pieces.append((column, char.data, char.fg, char.bold))
    return [piece for piece in pieces if piece[1].strip()]


def picture(screen, home):
    used = max(y for y in range(lines) if screen.display[y].strip()) + 1
    width, height = columns * cell + 32, used * row + 28
    text = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width:.0f} {height}" role="img">',
            "<title>Tools of the suite on a terminal</title>",
            '<rect width="100%" height="100%" rx="8" fill="#282c34"/>',
            f'<g font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="{font}" xml:space="preserve">']
    for y in range(used):
        for column, piece, colour, bold in runs(screen.buffer[y]):
            piece = piece.rstrip().replace(home, "/home/me")
            weight = ' font-weight="bold"' if bold else ""
            text.append(f'<text x="{16 + column * cell:.1f}" y="{(y + 1) * row + 8}" '
                        f'textLength="{len(piece) * cell:.1f}" fill="{colours.get(colour, colours["default"])}"{weight}>'
                        f"{escape(piece)}</text>")
    return "\n".join([*text, "</g>", "</svg>", ""])


def main():
    suite = os.path.abspath(sys.argv[1])
    root = pathlib.Path(__file__).resolve().parent.parent
    target = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else root / "docs/terminal.svg"
    sample = root / "examples/project"
    with tempfile.TemporaryDirectory() as above:
        folder = os.path.join(above, "me")
        os.mkdir(folder)
        shutil.copytree(sample / "plant", os.path.join(folder, "plant"))
        subprocess.run([sys.executable, sample / "fill.py", os.path.join(folder, "plant")], check=True,
                       stdout=subprocess.DEVNULL)
        target.write_text(picture(record(suite, folder), folder), encoding="utf-8")


if __name__ == "__main__":
    main()
