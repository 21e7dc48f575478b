"""How kakb-sim is started: its stations, usage errors, output, and names that others have."""

import os
import socket
import subprocess

from commandLine import CommandLineTest, without_powers
from processes import Program, ends

POWERLESS = without_powers("sys_admin")
SECONDS = 60


class SimulatorCommand(CommandLineTest):
    """One sentence by the program's name, and the status that the man page has."""

    def sim(self, arguments, stdout=None, prefix=()):
        """Starts kakb-sim, which ends with its standard input: at once."""
        words = [*prefix, self.programs / "kakb-sim", *arguments.split(), "--until-stdin-ends"]
        run = self.keep(Program(words, self.folder, stdout))
        self.assertIsNotNone(run.wait(SECONDS), run)
        return run

    def fails(self, status, arguments, sentence, **options):
        run = self.sim(arguments, **options)
        self.assertEqual((status, [], 1), (run.status, run.lines, len(run.errors)), run)
        self.assertRegex(run.errors[0], f"^kakb-sim: {sentence}$", run)
        return run

    def test_usage_error_is_one_sentence_by_the_program(self):
        for arguments, sentence in (
                ("--bogus", ".*--bogus"), ("extra", ".*extra"), ("--baud 3", "--baud: .*"),
                ("--trickle", ".*--baud"), ("--stations 4-2", "--stations: '4-2' .*"),
                ("--set MW101=1", "--set: 'MW101' is odd: a word starts at an even number"),
                ("--refuse MW0:256", "--refuse: exception code '256' is not in 1 to 255"),
                ("--drop 0.6 --delay 0.6", "the fault rates are more than 1 together")):
            with self.subTest(arguments=arguments):
                self.fails(1, arguments, rf"{sentence} \(kakb-sim --help says more\)")

    def test_output_that_cannot_be_written_is_a_failure(self):
        for arguments in ("--help", "--version", ""):
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                self.fails(2, arguments, "cannot write the output", stdout=full)
        for option in ("--report", "--dump"):
            run = self.sim(f"--set MW0=1 {option} /dev/full")
            self.assertEqual((2, ["kakb-sim: /dev/full: No space left on device"]),
                             (run.status, run.errors), run)
            self.fails(2, f"{option} /nowhere/file", "/nowhere/file: No such file or directory")

    def test_stations_are_numbers_and_ranges(self):
        with self.plc("pty", "--stations 1,3-4") as plc:
            for station in (1, 3, 4):
                self.host(f"write {station}:MW0={station} --link {plc.link}")
            self.host(f"read 2:MW0 --timeout-ms 50 --link {plc.link}", 4)
        self.assertEqual(["1 MW 3000 1", "3 MW 3000 3", "4 MW 3000 4"], plc.memory())

    def test_link_of_a_living_plc_is_kept(self):
        """The message has the terminal and the process."""
        with self.plc("pty") as plc:
            link = self.folder / "plc"
            self.fails(2, "--link-path plc",
                       f"plc: already leads to {plc.address}, which is in use by kakb-sim, "
                       f"process {plc.run.pid}")
            self.assertEqual(plc.address, os.readlink(link))
            self.host(f"read MW100 --link {plc.link}")
        self.assertFalse(link.is_symlink())

    def test_link_whose_terminal_is_gone_is_replaced_and_a_file_never(self):
        link = self.folder / "plc"
        link.symlink_to("/dev/pts/gone")
        with self.plc("pty") as plc:
            self.assertEqual(plc.address, os.readlink(link))
        self.file("plc", "kept")
        self.fails(2, "--link-path plc", "plc: File exists")
        self.assertEqual("kept", link.read_text())

    def test_port_in_use_is_told(self):
        with self.plc("tcp") as plc:
            self.fails(2, f"--tcp {plc.port}", f"{plc.address}: in use by another program")
        with self.plc("serial") as plc:
            self.fails(2, f"--serial {plc.address}", f"{plc.address}: in use by another program")
            self.assertEqual(
                [f"kakb-host: {plc.address}: in use by another program"],
                super().fails(3, f"read MW100 --link serial:{plc.address}",
                              prefix=POWERLESS).errors)
            self.assertEqual(
                [f"kakb-host: {plc.address}: in use by another program"],
                super().fails(3, f"read MW100 --link serial:{plc.address}").errors)

    def test_serial_port_that_a_host_has_is_told(self):
        with self.plc("pty") as plc:
            self.tags("still")
            watch = self.watching(f"--tags tags.csv --link {plc.link}")
            self.fails(2, f"--serial {plc.address}", f"{plc.address}: in use by another program")
            watch.close()

    def test_socket_of_a_living_plc_is_kept_and_a_stale_one_replaced(self):
        with socket.socket(socket.AF_UNIX) as left:
            left.bind(str(self.folder / "control"))
        with self.plc("pty", "--control control"):
            self.fails(2, "--control control", "control: in use by another program")
            self.assertTrue((self.folder / "control").is_socket())
        self.assertFalse((self.folder / "control").exists())
        self.file("control", "kept")
        self.fails(2, "--control control", "control: File exists")


class SimulatorMemory(CommandLineTest):
    """What the PLC holds at the start and at the end, and what it refuses."""

    def test_dump_of_one_run_is_loaded_by_the_next(self):
        with self.plc("pty", "--stations 1-2 --set MW100=5 --set 2:MX12.3=1") as plc:
            self.host(f"write MW102=6 2:QW8=7 --link {plc.link}")
        memory = plc.memory()
        self.assertEqual(["1 MW 3050 5", "1 MW 3051 6", "2 QW 4 7", "2 MW 3006 8"], memory)
        (self.folder / "dump").rename(self.folder / "old")
        for _ in range(2):
            with self.plc("pty", "--stations 1-2 --load old") as plc:
                pass  # nothing is exchanged
            self.assertEqual(memory, plc.memory())
        with self.plc("pty", "--stations 1-2 --load old --set MW100=9") as plc:
            self.assertEqual(["MW100 = 9", "2:MX12.3 = 1"],
                             self.host(f"read MW100 2:MX12.3 --link {plc.link}").lines)

    def test_file_is_loaded_and_dumped_under_the_same_name(self):
        """The old file is whole until the new one is complete."""
        state = self.file("state", "# at rest\n\n1 MW 3050 5 # MW100\n")
        before = state.read_text()
        program = self.programs / "kakb-sim"
        run = self.keep(Program([program, "--load", "state", "--dump", "state"], self.folder,
                                stdin=subprocess.PIPE))
        run.await_that(lambda: run.out.endswith("\n"))
        self.assertEqual(before, state.read_text())
        run.process.terminate()
        self.assertEqual(0, run.wait(SECONDS), run)
        self.assertEqual("1 MW 3050 5\n", state.read_text())
        self.assertEqual([state], list(self.folder.iterdir()))

    def test_bad_line_is_named_with_file_and_number(self):
        self.file("bad", "1 MW 3050 5\n\n1 MW 9000 5\n")
        run = self.keep(Program([self.programs / "kakb-sim", "--load", "bad"], self.folder))
        self.assertEqual(1, run.wait(SECONDS), run)
        self.assertEqual(["kakb-sim: bad, line 3: MW number '9000' is not in 3000 to 7095"],
                         run.errors)

    def test_refused_addresses_are_refused_to_the_host(self):
        with self.plc("pty", "--refuse MW500..MW600:4 --refuse QW8:3:write") as plc:
            self.fails(5, f"read MW500 --link {plc.link}", "device failure")
            self.fails(5, f"write MW600=1 --link {plc.link}", "device failure")
            self.fails(5, f"write QW8=1 --link {plc.link}", "illegal value")
            self.host(f"read QW8 MW498 MW602 --link {plc.link}")
        self.assertEqual([], plc.memory())
        self.assertEqual(3, plc.report()["refused"])

    def test_every_area_is_read_to_its_end(self):
        """Also what the host adds to a read stays in the area."""
        ends = "MW8190 IW510 QW510 MX7816.7 IX511.7 QX511.7"
        with self.plc("pty", " ".join(f"--set {end}=1" for end in ends.split())) as plc:
            self.assertEqual([f"{end} = {value}" for end, value in zip(
                ends.split(), (1, 32769, 32769, 1, 1, 1))],
                self.host(f"read {ends} --link {plc.link}").lines)


class SimulatorControl(CommandLineTest):
    """A test plays the machine while a host polls it."""

    def orders(self, *lines):
        """Sends lines on a connection of their own; returns the answers."""
        with socket.socket(socket.AF_UNIX) as client:
            client.settimeout(SECONDS)
            client.connect(str(self.folder / "control"))
            client.sendall("".join(f"{line}\n" for line in lines).encode())
            client.shutdown(socket.SHUT_WR)
            return client.makefile(encoding="utf-8").read().splitlines()

    def test_machine_changes_while_a_host_watches(self):
        self.file("tags.csv", "name,station,area,address,type\nlevel,1,IW,0,uint16\n")
        with self.plc("pty", "--control control") as plc:
            watch = self.watching(f"--tags tags.csv --timeout-ms 200 --link {plc.link}",
                                  "level.* = 0")
            self.assertEqual(["ok", "ok 17"], self.orders("set IW0=17", "get IW0"))
            watch.await_lines("level.* = 17")
            self.assertEqual(["ok"], self.orders("refuse IW0:4"))
            watch.await_lines("device failure")
            self.assertEqual(["ok", "ok"], self.orders("refuse none", "set IW0=18"))
            watch.await_lines("level.* = 18")
            self.assertEqual(["ok"], self.orders("silent 1 on"))
            watch.await_lines("does not answer")
            self.assertEqual(["ok", "ok"], self.orders("silent 1 off", "set IW0=19"))
            watch.await_lines("level.* = 19")
            watch.close()

    def test_stalled_plc_answers_when_the_stall_is_ended(self):
        with self.plc("pty", "--control control") as plc:
            self.assertEqual(["ok"], self.orders("stall 3600"))
            read = self.start(f"read MW100 --timeout-ms 60000 --link {plc.link}")
            self.assertFalse(ends(read.pid, 1), read)
            self.assertEqual(["ok"], self.orders("stall 0"))
            self.assertEqual(0, read.wait(SECONDS), read)

    def test_slow_and_silent_clients_delay_nobody(self):
        with self.plc("pty", "--control control") as plc:
            with socket.socket(socket.AF_UNIX) as silent, socket.socket(socket.AF_UNIX) as slow:
                for client in (silent, slow):
                    client.connect(str(self.folder / "control"))
                silent.sendall(b"get MW1")
                slow.setblocking(False)
                try:
                    while slow.send(b"get MW100\n" * 100):
                        pass
                except BlockingIOError:
                    pass  # it reads no answer, so that the PLC takes no more lines
                self.host(f"read MW100 --link {plc.link}")
                self.assertEqual(["ok 0"], self.orders("get MW100"))
                silent.sendall(b"00\n")
                self.assertEqual(b"ok 0\n", silent.recv(100))

    def test_quit_ends_the_plc_with_its_dump(self):
        with self.plc("pty", "--control control") as plc:
            self.assertEqual(["ok", "ok"], self.orders("set MW100=5", "quit"))
            self.assertEqual(0, plc.run.wait(SECONDS))
        self.assertEqual(["1 MW 3050 5"], plc.memory())
        self.assertFalse((self.folder / "control").exists())
