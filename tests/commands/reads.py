"""Reads by name and by address, and the complaints about a tag file that cannot be used."""

import re

from commandLine import CommandLineTest, on_each_link
from tagTables import HEADER, MARKERS, table, word_rows

MOST_WORDS = 125  # of one request
RUNS = 10


class Reads(CommandLineTest):
    """A read prints the values once."""

    @on_each_link
    def test_values_by_name_and_by_address(self, kind):
        """21.5 is 0x41AC0000 in IEEE 754; 100000 is 1 * 65536 + 34464; -2 is 65534 unsigned."""
        self.tags("level", "total", "offset", "lamp")
        with self.plc(kind, "--stations 1-2") as plc:
            link = f"--link {plc.link}"
            self.host(f"write {link} --tags tags.csv level=21.5 total=100000 offset=-2 lamp=1")
            self.assertEqual(["level (MW120) = 21.5", "total (2:QW8) = 100000",
                              "offset (MW110) = -2", "lamp (MX12.3) = 1"],
                             self.host(f"read {link} --tags tags.csv").lines)
            self.assertEqual(["lamp (MX12.3) = 1", "level (MW120) = 21.5"],
                             self.host(f"read {link} --tags tags.csv lamp level").lines)
            run = self.host(f"read {link} MW120 MW122 2:QW8 2:QW10 MX12.3 MW110 IW0")
            self.assertEqual(["MW120 = 16812", "MW122 = 0", "2:QW8 = 34464", "2:QW10 = 1",
                              "MX12.3 = 1", "MW110 = 65534", "IW0 = 0"], run.lines)
            objects = self.objects(f"read {link} --tags tags.csv level total MW110")
        self.assertEqual([("level", "MW120", 21.5, True), ("total", "2:QW8", 100000, True),
                          ("MW110", "MW110", 65534, True)],
                         [tuple(found[key] for key in ("name", "address", "value", "good"))
                          for found in objects])

    def test_types_ranges_and_both_word_orders_by_address(self):
        """65058 = 0xFE22 is -478 as a signed number. MX 40.0 to 40.7 are the bits of 0x22. In IEEE
        754 0x41AC0000 is 21.5 and 0x000041AC is 2.35586e-41."""
        self.file("tags.csv", table([("level", 1, "MW", 100, "float32")]))
        with self.plc("pty", "--stations 1-2") as plc:
            link = f"--link {plc.link}"
            self.host(f"write {link} MW40=65058 MW100=0x41AC 2:MW4=0b101 2:MW6=3")
            for names, lines in (
                    ("MW40 %mw40:int16 mw40:hex MW40:bin MW100:uint32:hex",
                     ["MW40 = 65058", "MW40:int16 = -478", "MW40:hex = 0xFE22",
                      "MW40:bin = 0b1111111000100010", "MW100:uint32:hex = 0x000041AC"]),
                    ("MW100:float32:high MW98..MW100",
                     ["MW100:float32:high = 21.5", "MW98 = 0", "MW100 = 16812"]),
                    ("2:MW4+2 2:mw4..mw6:hex", ["2:MW4 = 5", "2:MW6 = 3", "2:MW4:hex = 0x0005",
                                                "2:MW6:hex = 0x0003"]),
                    ("MX40.1..MX40.5", ["MX40.1 = 1", "MX40.2 = 0", "MX40.3 = 0", "MX40.4 = 0",
                                        "MX40.5 = 1"]),
                    ("--both-orders MW100:float32:high level MW40 --tags tags.csv",
                     ["MW100:float32:low = 2.35586e-41", "MW100:float32:high = 21.5",
                      "level (MW100:float32:low) = 2.35586e-41",
                      "level (MW100:float32:high) = 21.5", "MW40 = 65058"])):
                self.assertEqual(lines, self.host(f"read {link} {names}").lines)
            self.assertEqual(4096, len(self.host(f"read {link} QX0.0..QX511.7").lines))
            objects = self.objects(f"read {link} --tags tags.csv --both-orders level")
        self.assertEqual([("level", "MW100:float32:low"), ("level", "MW100:float32:high")],
                         [(found["name"], found["address"]) for found in objects])

    def test_time_out_ends_with_the_first_byte_on_a_serial_line_and_with_the_last_on_tcp(self):
        """255 bytes take 531 ms at 4800 baud, 10 bits each; a serial link's speed is known.

        A long fence ahead of the read teaches the host a longer time-out, so that on TCP one run
        in four has its values all the same: several runs are tried."""
        self.file("tags.csv", table(word_rows(range(MARKERS, MARKERS + MOST_WORDS))))
        for kind, rate in (("pty", ",4800"), ("tcp", "")):
            with self.subTest(kind=kind), self.plc(kind, "--baud 4800 --trickle") as plc:
                read = f"read --link {plc.link}{rate} --tags tags.csv --attempts 1 --timeout-ms"
                self.host(f"{read} 5000")
                if kind == "pty":
                    self.host(f"{read} 300")
                else:
                    self.assertTrue(any(self.start(f"{read} 300").wait(20) == 4
                                        for _ in range(RUNS)), "no run has timed out")
        self.assertIn("begin its answer; over TCP, until all of the answer is there",
                      re.sub(r"\s+", " ", self.host("read --help").out))

    def test_own_simulated_plc_has_the_stations_asked_for(self):
        self.assert_matches(self.host("read 2:QW8 7:MW0").lines, "^2:QW8 = 0$", "^7:MW0 = [0-9]+$")


class PartialReads(CommandLineTest):
    """Stations that answer have their values, whatever the others do."""

    SILENT = "station 2 does not answer"

    def setUp(self):
        super().setUp()
        self.tags("still", "silent word", "total", "lamp", "beacon")

    @on_each_link
    def test_values_beside_a_silent_station(self, kind):
        with self.plc(kind, "--stations 1-3 --silent 2") as plc:
            link = f"--link {plc.link} --timeout-ms 300"
            self.host(f"write MW100=7 3:QX0.5=1 {link}")
            run = self.host(f"read --tags tags.csv {link}", 4)
            self.assertEqual((["still (MW100) = 7", "lamp (MX12.3) = 0", "beacon (3:QX0.5) = 1"],
                              [f"kakb-host: silent word (2:MW0): {self.SILENT}",
                               f"kakb-host: total (2:QW8): {self.SILENT}"]),
                             (run.lines, run.errors))
            objects = self.objects(f"read --tags tags.csv {link}", 4)
        self.assertEqual(
            [("still", 7, True, ""), ("silent word", None, False, self.SILENT),
             ("total", None, False, self.SILENT), ("lamp", 0, True, ""), ("beacon", 1, True, "")],
            [tuple(found[key] for key in ("name", "value", "good", "trouble"))
             for found in objects])
        self.assertEqual([True, False, False, True, True],
                         [found["timeS"] is not None for found in objects])

    def test_each_refused_address_has_its_reason(self):
        with self.plc("pty", "--stations 1-2 --exception 1 --exception-code 2") as plc:
            refused = "refused by the PLC: illegal address (exception 2)"
            run = self.host(f"read MW100 2:MW0 --link {plc.link}", 5)
            self.assertEqual(([], [f"kakb-host: MW100: {refused}", f"kakb-host: 2:MW0: {refused}"]),
                             (run.lines, run.errors))
            objects = self.objects(f"read MW100 2:MW0 --link {plc.link}", 5)
            self.assertEqual([(False, refused)] * 2,
                             [(found["good"], found["trouble"]) for found in objects])


class UnusableReads(CommandLineTest):
    """Mistakes end before anything is asked."""

    def test_missing_tag_file(self):
        self.fails(1, "read --tags none.csv", "cannot read none.csv: No such file or directory")
        self.fails(1, "read --tags .")

    def test_every_bad_line_is_reported(self):
        self.file("tags.csv", f"""{HEADER},comment
good,1,MW,100,uint16,
odd,1,MW,101,uint16,
# a comment
station,0,MW,100,uint16,
area,1,ZZ,100,uint16,
type,1,MW,100,int64,

good,1,MW,102,uint16,
fields,1,MW
bit,1,MW,104,bool,
end,1,MW,8190,float32,
""")
        run = self.host("read --tags tags.csv", 1)
        self.assertEqual(8, len(run.errors), run)
        self.assert_matches(
            run.errors, "^kakb-host: tags.csv: line 3: MW101: odd: ",
            '^kakb-host: tags.csv: line 5: station "0"', '^kakb-host: tags.csv: line 6: there is no area "ZZ"',
            '^kakb-host: tags.csv: line 7: type "int64"', '^kakb-host: tags.csv: line 9: name "good" stands on line 2',
            "^kakb-host: tags.csv: line 10: 3 fields", "^kakb-host: tags.csv: line 11: MW holds words",
            "^kakb-host: tags.csv: line 12: MW8190: past the end of MW: .* room for 2 words is 8188$")
        for verb in ("plan", "watch", "write MW100=1"):
            self.assertEqual(run.errors, self.host(f"{verb} --tags tags.csv", 1).errors)

    def test_wrong_address_or_name(self):
        self.tags("level")
        self.fails(1, "read", "name tags or addresses")
        for address, reason in (
                ("MW101", "odd: a word starts at an even number"),
                ("MX12.9", r"the bit is 0 to 7; did you mean MX13\.1\?"),
                ("mx0.10", r"the bit is 0 to 7; did you mean MX1\.2\?"),
                ("300:MW0", 'station "300" is no number from 1 to 247'),
                ("MW0:int16:hex", 'type "int16:hex" is unknown; there are bool, int16, .*'),
                ("MW4..MW0", "the range ends before it begins"),
                ("MW0+4097", 'a range has 1 to 4096 values, not "4097"')):
            self.fails(1, f"read {address}", f"^kakb-host: {re.escape(address)}: {reason}$")
        self.fails(1, "read --both-orders MW100", "needs a 32-bit type")
        self.fails(1, "read --tags tags.csv lvel", "nor is it a name of the tag file")
