# SPDX-License-Identifier: Apache-2.0
"""A terminal that a tool can be started on, and the screen that its bytes make."""

import fcntl
import os
import pty
import struct
import sys
import termios

try:
    import pyte
except ImportError:
    print("skipped: python3-pyte is not installed")
    sys.exit(77)


def resize(terminal, rows, columns):
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))


def opened(rows, columns):
    """Both ends: ours, and the one that the tool gets."""
    ours, theirs = pty.openpty()
    resize(theirs, rows, columns)
    return ours, theirs


def pieces(ours):
    """What is written, piece by piece, until the other side is gone; closes our end."""
    try:
        while piece := os.read(ours, 65536):
            yield piece
    except OSError:
        pass
    os.close(ours)


def screen(rows, columns, written=b""):
    """The screen, and the stream that draws on it."""
    shown = pyte.Screen(columns, rows)
    stream = pyte.ByteStream(shown)
    stream.feed(written)
    return shown, stream


def lines(shown):
    return [line.rstrip() for line in shown.display]
