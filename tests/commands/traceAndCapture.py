"""--trace and --pcap hold every frame of a session, and Wireshark finds nothing wrong with them."""

import subprocess

from commandLine import CommandLineTest, on_each_link
from processes import matching
from rtuFrames import frame
from tagTables import DEMO_TAGS

TIME = r"^ *[0-9]+\.[0-9]{6}"
# The first question waits for an eighth of it: on a busy machine, too, each frame is sent once.
PATIENT = "--timeout-ms 8000"
FUNCTIONS = {3, 4, 5, 6, 15, 16}
PORT = "10502"  # of the PLC in a capture
TSHARK = ("tshark", "-o", f"mbrtu.udp.port:{PORT}", "-o", "mbrtu.crc_verification:TRUE",
          "-o", "udp.check_checksum:TRUE", "-o", "ip.check_checksum:TRUE")
# 6291456 is the severity of a warning, 1 the status of a right checksum. Of a read reply whose byte
# count is wrong, tshark shows bare data in place of registers.
WRONG = ("!mbrtu || !modbus || _ws.malformed || mbrtu.crc16.status != 1 || "
         "(modbus.data && modbus.func_code <= 4) || udp.checksum.status != 1 || "
         "ip.checksum.status != 1 || _ws.expert.severity >= 6291456")


def traced(direction, pdu):
    """The start of a trace's line (MODBUS Application Protocol V1.1b3, 6.3, 6.5, 6.6 and 7)."""
    return f"{TIME} {direction} {frame(pdu).hex(' ').upper()}  station 1: "


class TraceAndCapture(CommandLineTest):
    """The simulated PLC answers at the pace of a wire, which keeps captures short on TCP too."""

    def print_of(self, *command):
        """The lines that a program prints on a capture."""
        return subprocess.run(command, cwd=self.folder, check=True, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.splitlines()

    def well_formed(self, *captures):
        """Checks that every packet is a Modbus RTU frame; returns each function and direction."""
        self.print_of("mergecap", "-w", "all.pcap", *captures)
        self.assertEqual([], self.print_of(*TSHARK, "-r", "all.pcap", "-Y", WRONG))
        rows = [row.split("\t") for row in self.print_of(
            *TSHARK, "-r", "all.pcap", "-T", "fields", "-e", "modbus.func_code", "-e",
            "udp.dstport", "-e", "_ws.col.Info")]
        for row in rows:
            self.assertNotIn("Unable to classify", row[2], "neither request nor answer")
        return [(int(function), port == PORT) for function, port, _ in rows]

    @on_each_link
    def test_trace_has_each_frame_and_its_meaning(self, kind):
        with self.plc(kind, "--baud 38400") as plc:
            run = self.host(f"write MW100=7 MX12.3=1 --trace {PATIENT} --link {plc.link}")
            self.assertEqual(["MW100 = 7 confirmed", "MX12.3 = 1 confirmed"], run.lines)
            self.assertEqual(6, len(run.errors), run)
            self.assert_matches(
                run.errors, f"{TIME} > .*, a fence$",
                traced(">", "0106 0BEA 0007") + "write register 3050 = 7$",
                traced("<", "0106 0BEA 0007") + "echo, written$",
                traced(">", "0105 0C1B FF00") + "write coil 3099 = 1$",
                traced("<", "0105 0C1B FF00") + "echo, written$")
            run = self.host(f"read MW100 --trace {PATIENT} --link {plc.link}")
            self.assert_matches(
                run.errors, traced(">", "0103 0BEA 0001") + "read 1 holding register from 3050$",
                traced("<", "0103 02 0007") + "1 register 0x0007$")

    @on_each_link
    def test_capture_of_every_function_is_well_formed(self, kind):
        self.recipe(**{"level": 21.5, "speed": -300, "horn": 1, "bit a": 1, "bit b": 0})
        with self.plc(kind, "--baud 38400") as plc:
            self.host(f"recipe download recipe.csv --verify --pcap recipe.pcap {PATIENT} "
                      f"--link {plc.link}")
            self.end(self.watching(f"--tags {DEMO_TAGS} --pcap watch.pcap --link {plc.link}",
                                   " IW0 = ", r" QX0\.5 = "))
        frames = self.well_formed("recipe.pcap", "watch.pcap")
        self.assertLessEqual({(function, is_request) for function in FUNCTIONS
                              for is_request in (True, False)}, set(frames))
        # Four requests write the recipe and four read it back, behind a fence.
        self.assert_matches(self.print_of("capinfos", "-M", "-c", "recipe.pcap"),
                            "^Number of packets: +18$")

    def test_refused_and_unanswered_requests_are_in_trace_and_capture(self):
        """A refused read has two fences, as the refusal of the first could be its own."""
        with self.plc("pty", "--exception 1 --exception-code 2") as plc:
            run = self.host(f"read MW100 --trace {PATIENT} --link {plc.link} --pcap refused.pcap", 5)
            self.assert_matches(run.errors, traced("<", "0183 02") + ".*illegal address")
        with self.plc("pty", "--silent 1") as plc:
            run = self.host(f"read MW100 --trace --link {plc.link} --timeout-ms 100 --attempts 2 "
                            "--pcap silent.pcap", 4)
            self.assertEqual(2, len(matching(run.errors, " > .*, a fence$")), run)
            waits = [int(line.split()[-2]) for line in matching(
                run.errors, f"{TIME} ! station 1: no answer within [0-9]+ ms$")]
            self.assertEqual(2, len(waits), run)
            self.assertLessEqual(100, min(waits), run)
        self.assertEqual(8, len(self.well_formed("refused.pcap", "silent.pcap")))

    def test_capture_that_cannot_be_written(self):
        self.fails(1, "read MW100 --pcap none/x.pcap",
                   "the capture none/x.pcap cannot be written: ")
