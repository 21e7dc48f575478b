"""A write ends with status 0 only when the PLC has the value; the PLC's memory is the judge."""

from commandLine import CommandLineTest, on_each_link
from tagTables import HEADER, table

# 21.5 is 0x41AC0000 in IEEE 754, 4000000001 is 61035 * 65536 + 10241, -2 is 65534 unsigned.
# MX 12.3 is bit 3 of the register six behind 3000, QX 1.0 bit 8 of register 0.
WRITES = {"level=21.5": "level (MW120) = 21.5", "total=4000000001": "total (2:QW8) = 4000000001",
          "offset=-2": "offset (MW110) = -2", "lamp=1": "lamp (MX12.3) = 1",
          "MW200=7": "MW200 = 7", "2:QX1.0=true": "2:QX1.0 = 1", "QW510=0xFFFF": "QW510 = 65535"}
WRITTEN = ["1 QW 255 65535", "1 MW 3055 65534", "1 MW 3060 16812", "1 MW 3101 9",
           "2 QW 0 256", "2 QW 4 10241", "2 QW 5 61035"]
COILS = "can be read but not written: their coils are those of the markers$"


class Writes(CommandLineTest):
    """Confirmed writes, and the others."""

    @on_each_link
    def test_confirmed_values_are_in_the_memory(self, kind):
        """0 is written as well: what is 0 is not in the memory's list."""
        self.tags("level", "total", "offset", "lamp")
        with self.plc(kind, "--stations 1-2") as plc:
            run = self.quiet(f"write --link {plc.link} --tags tags.csv {' '.join(WRITES)}")
            self.assertEqual([f"{line} confirmed" for line in WRITES.values()], run.lines)
            found, = self.objects(f"write --link {plc.link} MW202=9")
            self.assertEqual(("MW202", True, 9),
                             (found["address"], found["confirmed"], int(found["value"])))
            self.host(f"write --link {plc.link} MX12.3=0 MW200=0")
        self.assertEqual(WRITTEN, plc.memory())

    @on_each_link
    def test_unconfirmed_write_fails(self, kind):
        """Of two stations, the station that answers has its value."""
        for fault, status, values, sentence, memory in (
                ("--exception 1 --exception-code 2", 5, "MW100=7 --timeout-ms 30000",
                 "MW100: .*illegal address", []),
                ("--silent 1", 4, "MW100=7 --timeout-ms 50", "^kakb-host: MW100: not sent: station 1 is silent$",
                 []),
                ("--stations 1-2 --silent 2", 4, "2:MW100=7 MW100=8 --timeout-ms 300",
                 "^kakb-host: 2:MW100: not sent: station 2 is silent$", ["1 MW 3050 8"])):
            with self.plc(kind, fault) as plc:
                run = self.host(f"write --link {plc.link} {values}", status)
                self.assert_matches(run.errors, sentence)
                if not memory:
                    self.assert_one_sentence(run)
            self.assertEqual(memory, plc.memory())

    def test_name_may_hold_an_equals_sign(self):
        self.file("tags.csv", table([("a=b", 1, "MW", 0, "uint16"), ("a", 1, "MW", 2, "uint16"),
                                     ("a=b=", 1, "MW", 4, "uint16")], HEADER))
        with self.plc("pty") as plc:
            self.host(f"write --link {plc.link} --tags tags.csv a=b=1 a=2 a=b==3 MW6=4")
        self.assertEqual(["1 MW 3000 1", "1 MW 3001 2", "1 MW 3002 3", "1 MW 3003 4"], plc.memory())

    def test_lost_request_is_repeated(self):
        with self.plc("pty", "--drop-request 1 --fault-exchanges 2") as plc:
            self.host(f"write --link {plc.link} --timeout-ms 300 MW100=7")
        self.assertEqual(["1 MW 3050 7"], plc.memory())

    def test_unwritable_value_needs_no_plc_to_be_refused(self):
        self.tags("level", "total", "offset", "lamp", "count")
        for values, sentence in (
                ("count=1", "area IW is read-only"), ("IX0.0=1", "area IX is read-only"),
                ("MW100=1 IW2=1", "IW2=1: area IW is read-only"),
                ("QX375.0=1", f"QX375.0=1: QX 375.0 and above {COILS}"),
                ("QX511.7=0", f"QX511.7=0: QX 375.0 and above {COILS}"),
                ("MW0=1 MX0.0=0",
                 "MX0.0: shares memory with MW0, which is written as well$"),
                ("lamp=1 MW12=7",
                 r"MW12: shares memory with lamp \(MX12.3\), which is written as well$"),
                ("MW120=1 level=2", r"level \(MW120\): is written twice$"),
                ("a=b=1", "a: "), ("MW100", "is not NAME=VALUE"), ("=7", "is not NAME=VALUE"),
                ("MW101=7", "odd"), ("nothing=7", "nor is it a name of the tag file"),
                *((value, f"{value}: the value does not fit")
                  for value in ("MW100=65536", "MW100=-1", "MW100=x", "MW100=", "MW100=1.5",
                                "lamp=2", "offset=32768", "level=warm", "level=1e39",
                                "total=4294967296"))):
            with self.subTest(values=values):
                self.fails(1, f"write --link serial:/dev/none --tags tags.csv {values}", sentence)
        self.host("write", 1)
