"""A terminal in which a shell runs: tmux draws the screen, on a pseudo-terminal of the system.

The shell is dash with job control. Unlike other shells it leaves the terminal's settings alone, so
they are always those that the last program has left behind."""

import os
import re
import subprocess
import termios

from processes import eventually, matching

# The attribute by ECMA-48, among other attributes, and the text up to the next one.
INVERSE = re.compile(r"\x1b\[(?:\d+;)*7m(?:\x1b\[[\d;]*m)*([^\x1b\n]+)")


class ShellTerminal:
    """The keys go to the program in the foreground; screen() is what a user sees."""

    def __init__(self, folder, programs, columns=100, rows=30):
        self.folder = folder
        self.tmux("new-session", "-d", "-x", str(columns), "-y", str(rows),
                  f"PS1='ready> ' ENV= PATH={programs}:$PATH exec dash -i")

    def tmux(self, *words, check=True):
        """Runs a command of a tmux of its own; returns what it prints."""
        return subprocess.run(
            ["tmux", "-S", self.folder / "tmux", "-f", "/dev/null", *words], cwd=self.folder,
            check=check, text=True, stdout=subprocess.PIPE).stdout

    def close(self):
        """Ends the shell and what runs in it."""
        self.tmux("kill-server", check=False)

    def screen(self):
        """The lines of the screen."""
        return self.tmux("capture-pane", "-p").splitlines()

    def marked(self):
        """The lines of the screen that are inverse, without their attributes."""
        return INVERSE.findall(self.tmux("capture-pane", "-p", "-e"))

    def shows(self, pattern):
        """Whether a line of the screen matches, now or soon."""
        return eventually(lambda: matching(self.screen(), pattern))

    def line(self, text):
        """Types a line."""
        self.tmux("send-keys", "-l", text)
        self.keys("Enter")

    def keys(self, *names):
        """Presses keys by their names, such as "Down" or "C-c"."""
        self.tmux("send-keys", *names)

    def text(self, text):
        """Presses the keys of a text."""
        self.tmux("send-keys", "-l", text)

    def resize(self, columns, rows):
        """Changes the terminal's size."""
        self.tmux("resize-window", "-x", str(columns), "-y", str(rows))

    def settings(self):
        """The terminal's settings, as termios has them."""
        descriptor = os.open(self.tmux("display-message", "-p", "#{pane_tty}").strip(),
                             os.O_RDWR | os.O_NOCTTY)
        try:
            return termios.tcgetattr(descriptor)
        finally:
            os.close(descriptor)

    def wants_lines(self):
        """Whether the terminal hands over whole lines and echoes them."""
        flags = self.settings()[3]
        return bool(flags & termios.ICANON and flags & termios.ECHO)

    def foreground(self):
        """The process group that has the terminal; a program started by the shell leads its own."""
        return int(_stat(self._shell())[5])

    def jobs(self):
        """The process ids of the shell's programs, running or stopped."""
        found = subprocess.run(["pgrep", "-P", str(self._shell())], check=False, text=True,
                               stdout=subprocess.PIPE).stdout
        return list(map(int, found.split()))

    @staticmethod
    def state(process):
        """The letter of a process's state: S it waits, T it is stopped."""
        return _stat(process)[0]

    def _shell(self):
        return int(self.tmux("display-message", "-p", "#{pane_pid}"))


def _stat(process):
    """The fields of /proc/PID/stat behind the name, see man proc."""
    with open(f"/proc/{process}/stat", encoding="utf-8") as stat:
        return stat.read().rpartition(")")[2].split()
