"""Captures and uploaded recipes, on standard output and in every kind of file."""

import os
import signal
import stat
import subprocess
import threading

from commandLine import CommandLineTest, on_each_link
from processes import matching
from tagTables import DEMO_TAGS

PCAP_MAGIC = {b"\xd4\xc3\xb2\xa1", b"\xa1\xb2\xc3\xd4"}  # of libpcap's file format, by byte order


class StandardOutput(CommandLineTest):
    """With the name "-" the values go to standard error."""

    def packets_in(self, name):
        """The number of packets that tshark finds in a capture."""
        return len(subprocess.run(
            ["tshark", "-r", name], cwd=self.folder, check=True, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.splitlines())

    @on_each_link
    def test_capture_on_standard_output_is_a_capture_alone(self, kind):
        self.recipe(still=7)
        with self.plc(kind) as plc:
            for command, values in (("read MW100", ["MW100 = 0"]),
                                    ("write MW102=1", ["MW102 = 1 confirmed"]),
                                    ("recipe download recipe.csv", ["downloaded 1 values"])):
                with open(self.folder / "out.pcap", "wb") as out:
                    run = self.host(f"{command} --pcap - --link {plc.link}", stdout=out)
                self.assertEqual(values, run.errors)
                self.assertLess(1, self.packets_in("out.pcap"))
        self.assertFalse((self.folder / "-").exists())

    @on_each_link
    def test_watch_whose_capture_is_no_longer_read_ends_well(self, kind):
        with self.plc(kind) as plc:
            reader, writer = os.pipe()
            run = self.start(f"watch --tags {DEMO_TAGS} --pcap - --link {plc.link}", stdout=writer)
            os.close(writer)
            with open(reader, "rb") as capture:
                self.assertIn(capture.read(4), PCAP_MAGIC)
                run.await_that(lambda: "MW100 = 0" in run.err)
            self.assertEqual(0, run.wait(20), run)

    def test_interrupted_watch_leaves_a_whole_capture(self):
        with self.plc("pty") as plc, open(self.folder / "out.pcap", "wb") as out:
            run = self.start(f"watch --tags {DEMO_TAGS} --pcap - --link {plc.link}", stdout=out)
            run.await_that(lambda: "MW100 = 0" in run.err)
            self.end(run, signal.SIGINT)
            self.assertRegex(run.errors[-1], "exchanges/s")
        self.assertLess(1, self.packets_in("out.pcap"))

    def test_capture_is_not_shown_on_a_terminal(self):
        master, slave = os.openpty()
        self.addCleanup(os.close, master)
        with open(slave, "wb") as terminal:
            run = self.fails(1, "read MW100 --pcap -", stdout=terminal)
        self.assertEqual(["kakb-host: the capture - cannot be written: "
                          "standard output is a terminal"], run.errors)

    def test_full_standard_output_fails(self):
        self.recipe(still=7)
        with self.plc("pty") as plc, open("/dev/full", "wb") as full:
            self.fails(1, f"read MW100 --pcap - --link {plc.link}", "No space left", stdout=full)
            self.fails(1, f"recipe upload recipe.csv --output - --link {plc.link}",
                       "cannot write -: No space left", stdout=full)

    @on_each_link
    def test_uploaded_recipe_on_standard_output_is_a_recipe_alone(self, kind):
        path = self.recipe(still="")
        with self.plc(kind) as plc:
            self.host(f"write MW100=7 --link {plc.link}")
            for name in ("-", "/dev/stdout"):
                for json, told in (("", "uploaded 1 values"), ("--json", '{"recipe":"uploaded"')):
                    run = self.host(f"recipe upload recipe.csv --output {name} {json} "
                                    f"--link {plc.link}")
                    self.assertEqual(path.read_text(encoding="utf-8").replace(",\n", ",7\n"),
                                     run.out)
                    self.assertEqual(1, len(run.errors), run)
                    self.assertTrue(run.err.startswith(told), run)

    def test_two_files_in_one_are_refused(self):
        self.recipe(still=7)
        for pcap, output in (("-", "-"), ("-", "/dev/stdout"), ("x", "x"), ("recipe.csv", "''")):
            self.fails(1, f"recipe upload recipe.csv --pcap {pcap} --output {output}",
                       "name the same file$")


class KindsOfFiles(CommandLineTest):
    """What is no regular file stays what it is."""

    def setUp(self):
        super().setUp()
        self.path = self.recipe(still="")
        self.text = self.path.read_text(encoding="utf-8")
        self.uploaded = self.text.replace(",\n", ",0\n")

    def test_named_pipe_gets_the_recipe(self):
        os.mkfifo(self.folder / "pipe")
        read = []
        reader = threading.Thread(
            target=lambda: read.append((self.folder / "pipe").read_text(encoding="utf-8")))
        reader.start()
        self.host("recipe upload recipe.csv --output pipe")
        reader.join()
        self.assertEqual([self.uploaded], read)
        self.assertTrue(stat.S_ISFIFO(os.stat(self.folder / "pipe").st_mode))

    def test_interrupt_ends_the_wait_for_the_reader_of_a_pipe(self):
        """The upload may be interrupted before it comes to the pipe."""
        os.mkfifo(self.folder / "pipe")
        with self.plc("pty") as plc:
            run = self.start(f"read MW100 --pcap pipe --link {plc.link}")
            run.await_that(lambda: handles_interrupt(run.pid))
            self.end(run, signal.SIGINT, 8)
            self.assert_one_sentence(run, "the capture pipe cannot be written: Interrupted")
            run = self.start(f"recipe upload recipe.csv --output pipe --trace --link {plc.link}")
            run.await_that(lambda: len(matching(run.errors, " < ")) > 1)
            self.end(run, signal.SIGINT, 8)
            self.assertRegex(run.errors[-1],
                             "^kakb-host: (cannot write pipe: I|i)nterrupted")

    def test_full_device_is_told_and_stays_a_device(self):
        """Root could put a file in the place of a device, so root has a device for the test."""
        device = "/dev/full"
        if os.getuid() == 0:
            device = self.folder / "full"
            os.mknod(device, stat.S_IFCHR | 0o666, os.stat("/dev/full").st_rdev)
        os.symlink(device, self.folder / "link")
        run = self.fails(1, "recipe upload recipe.csv --output link", "^kakb-host: cannot write link")
        self.assertIn("No space left on device", run.err)
        self.assertTrue(os.path.islink(self.folder / "link"))
        self.assertTrue(stat.S_ISCHR(os.stat(device).st_mode))

    def test_file_of_the_shell_keeps_what_comes_before_and_after(self):
        subprocess.run(
            ["sh", "-c", 'exec >all; echo before; "$1" recipe upload recipe.csv --output '
             '/dev/fd/1; echo after', "sh", self.programs / "kakb-host"],
            cwd=self.folder, check=True)
        self.assertEqual(f"before\n{self.uploaded}uploaded 1 values\nafter\n",
                         (self.folder / "all").read_text(encoding="utf-8"))

    def test_linked_file_keeps_its_mode_and_the_link(self):
        self.path.chmod(0o640)
        os.symlink("recipe.csv", self.folder / "link.csv")
        self.host("recipe upload link.csv")
        self.assertEqual(self.uploaded, self.path.read_text(encoding="utf-8"))
        self.assertTrue(os.path.islink(self.folder / "link.csv"))
        self.assertEqual(0o640, stat.S_IMODE(self.path.stat().st_mode))


def handles_interrupt(pid):
    """Whether a process has a handler for SIGINT."""
    with open(f"/proc/{pid}/status", encoding="ascii") as lines:
        caught, = (line.split()[1] for line in lines if line.startswith("SigCgt:"))
    return int(caught, 16) >> signal.SIGINT - 1 & 1
