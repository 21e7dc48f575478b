"""A serial port belongs to one program at a time, and is free when this program has ended."""

import fcntl
import os
import signal

from commandLine import CommandLineTest, without_powers
from processes import PATIENCE_S, eventually

# Root is let past another program's lock on a terminal. Without this power root is not.
POWERLESS = without_powers("sys_admin")


class PortInUse(CommandLineTest):
    """By whatever name it is opened, and by a host or a program that locks it with flock."""

    def setUp(self):
        super().setUp()
        self.tags("still")

    def test_port_in_use_is_refused_under_each_of_its_names(self):
        with self.plc("pty") as plc:
            other_name = self.folder / "other-name"
            other_name.symlink_to(self.folder / "plc")
            names = (self.folder / "plc", other_name, plc.address)

            def is_refused():
                for name in names:
                    self.assertEqual([f"kakb-host: {name}: in use by another program"],
                                     self.fails(3, f"read MW100 --link serial:{name}").errors)

            watch = self.watching(f"--tags tags.csv --link serial:{other_name}")
            is_refused()
            watch.close()
            self.host(f"read MW100 --link {plc.link}")

            with open(plc.address, "r+b", buffering=0,
                      opener=lambda name, flags: os.open(name, flags | os.O_NOCTTY)) as port:
                fcntl.flock(port, fcntl.LOCK_EX)
                is_refused()
                fcntl.flock(port, fcntl.LOCK_UN)
                self.host(f"read MW100 --link serial:{other_name}")
                # The host has unlocked the port at its end.
                fcntl.flock(port, fcntl.LOCK_EX | fcntl.LOCK_NB)

    def test_line_is_free_whatever_ends_the_host(self):
        """A host that is killed cannot give the line back by itself."""
        with self.plc("pty") as plc:
            read = f"read MW100 --link {plc.link}"

            def reads():
                return self.start(read, POWERLESS).wait(20) == 0

            for number in (signal.SIGKILL, signal.SIGHUP, signal.SIGTERM):
                watch = self.watching(f"--tags tags.csv --link {plc.link}", prefix=POWERLESS)
                self.fails(3, read, "in use by another program", prefix=POWERLESS)
                watch.signal(number, PATIENCE_S)
                self.assertTrue(eventually(reads), f"the line stays taken after {number}")
