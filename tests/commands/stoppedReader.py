#!/usr/bin/env python3
"""Outputs that nobody reads any more.

usage: stoppedReader.py pipe FIFO          fills the named pipe, which somebody holds open, but
                                           for a page
       stoppedReader.py bytes FIFO         prints how many bytes are in it
       stoppedReader.py terminal COMMAND...  runs the command on a terminal of many lines that has
                                           room for some of them, and ends as it does
"""

import array
import fcntl
import os
import pty
import struct
import subprocess
import sys
import termios
import tty

PAGE = 4096
LINES, COLUMNS = 400, 200


def fill(path):
    """Through a descriptor of its own: the command's is to block as usual."""
    out = os.open(path, os.O_WRONLY | os.O_NONBLOCK | os.O_NOCTTY)
    try:
        while True:
            os.write(out, b"x" * PAGE)
    except BlockingIOError:
        pass
    os.close(out)


def leave_a_page(path):
    """Room, but less than is written at once."""
    fill(path)
    end = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    os.read(end, PAGE)
    os.close(end)


def held(path):
    """Bytes in the pipe."""
    end = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    count = array.array("i", [0])
    fcntl.ioctl(end, termios.FIONREAD, count)
    os.close(end)
    return count[0]


def run_on_terminal(command):
    """Its standard output is the terminal; standard error is not."""
    reader, screen = pty.openpty()
    tty.setraw(screen)
    fcntl.ioctl(screen, termios.TIOCSWINSZ, struct.pack("HHHH", LINES, COLUMNS, 0, 0))
    fill(os.ttyname(screen))
    os.read(reader, PAGE)
    return subprocess.run(command, stdout=screen, check=False).returncode


def main(what, *rest):
    """As the usage says."""
    if what == "pipe":
        leave_a_page(*rest)
    elif what == "bytes":
        print(held(*rest))
    else:
        sys.exit(run_on_terminal(rest))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
