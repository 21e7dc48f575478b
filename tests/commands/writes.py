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

    @on_each_link
    def test_every_write_has_an_object(self, kind):
        for fault, status, wanted in (
                ("--stations 1-2 --silent 2", 4, [(True, "confirmed", "^$"),
                                                  (False, "timedOut", "^(station 2 does not answer|not sent.*)")]),
                ("--stations 1-2 --exception 1 --exception-code 2", 5,
                 [(False, "refused", "^refused by the PLC: illegal address")] * 2)):
            with self.plc(kind, fault) as plc:
                objects = self.objects(
                    f"write --link {plc.link} --timeout-ms 300 MW100=8 2:MW100=7", status)
            self.assertEqual([("MW100", 8), ("2:MW100", 7)],
                             [(found["address"], found["value"]) for found in objects])
            for found, (confirmed, outcome, trouble) in zip(objects, wanted):
                self.assertEqual((confirmed, outcome), (found["confirmed"], found["outcome"]))
                self.assertRegex(found["trouble"], trouble)

    def test_name_may_hold_an_equals_sign(self):
        self.file("tags.csv", table([("a=b", 1, "MW", 0, "uint16"), ("a", 1, "MW", 2, "uint16"),
                                     ("a=b=", 1, "MW", 4, "uint16")], HEADER))
        with self.plc("pty") as plc:
            self.host(f"write --link {plc.link} --tags tags.csv a=b=1 a=2 a=b==3 MW6=4")
        self.assertEqual(["1 MW 3000 1", "1 MW 3001 2", "1 MW 3002 3", "1 MW 3003 4"], plc.memory())

    def test_values_for_words_one_behind_the_other_are_one_frame(self):
        """Function 16 is 0x10. 1.5 is 0x3FC00000 and 2.5 0x40200000 in IEEE 754. MW 10 is the
        register 5 behind 3000; a full frame holds 123 words."""
        values = ",".join(str(i + 1) for i in range(123))
        with self.plc("pty") as plc:
            write = f"write --link {plc.link} --trace"
            run = self.host(f"{write} MW10=1,2,3")
            self.assertEqual(["MW10 = 1 confirmed", "MW12 = 2 confirmed", "MW14 = 3 confirmed"],
                             run.lines)
            self.assert_matches(run.errors, "> 01 10 0B BD 00 03 06 00 01 00 02 00 03 ")
            run = self.host(f"{write} MW20+2:float32:high=1.5,2.5 MW30..MW32=0x10,0b11 MX0.0=1,0,1")
            self.assertEqual(["MW20:float32:high = 1.5 confirmed",
                              "MW24:float32:high = 2.5 confirmed", "MW30 = 16 confirmed",
                              "MW32 = 3 confirmed", "MX0.0 = 1 confirmed", "MX0.1 = 0 confirmed",
                              "MX0.2 = 1 confirmed"], run.lines)
            self.assert_matches(run.errors, "> 01 10 0B C2 00 04 08 3F C0 00 00 40 20 00 00 ",
                                "> 01 10 0B C7 00 02 04 00 10 00 03 ")
            # A full list behind a neighbour stays one frame.
            run = self.host(f"{write} MW198=7 MW200={values}")
            self.assert_matches(run.errors, "> 01 10 0C 1C 00 7B F6 ", "> 01 06 0C 1B 00 07 ")
        self.assertLessEqual({"1 MW 3000 5", "1 MW 3005 1", "1 MW 3007 3", "1 MW 3010 16320",
                              "1 MW 3012 16416", "1 MW 3015 16", "1 MW 3016 3", "1 MW 3099 7",
                              "1 MW 3100 1", "1 MW 3222 123"}, set(plc.memory()))

    def test_nan_is_written_when_the_user_allows_it(self):
        """0x7FC00000 is a quiet NaN in IEEE 754; 32704 = 0x7FC0."""
        self.recipe(level="nan")
        with self.plc("pty") as plc:
            self.host(f"write --link {plc.link} --allow-nan MW100:float32:high=nan")
            self.fails(1, f"recipe download recipe.csv --link {plc.link}",
                       "line 2: nan is written with --allow-nan only$")
            self.host(f"recipe download recipe.csv --allow-nan --link {plc.link}")
        self.assertEqual(["1 MW 3050 32704", "1 MW 3060 32704"], plc.memory())

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
                ("MX12.9=1", r"^kakb-host: MX12\.9: the bit is 0 to 7; did you mean MX13\.1\?; nor"),
                ("MW0..MW4=1,2", r"MW0\.\.MW4: 2 values for a range of 3$"),
                (f"MW0={','.join('1' * 124)}", "MW0: 124 words do not fit into one frame, which "
                                               "holds 123$"),
                (f"MW0+62:float32={','.join('1' * 62)}", "124 words do not fit"),
                ("MW0:float32=21,5", "MW0:float32=21,5: the decimal sign is a point; for 2 floats "
                                     "write a range of 2$"),
                ("MW0=1,x,3", 'MW2=x: "x" is no value of type uint16'),
                ("MW8188=1,2,3", "past the end of MW: the last address that leaves room for 3"),
                ("level=1,5", '"1,5" is no value of type float32:high'),
                ("level=nan", "level=nan: nan is written with --allow-nan only$"),
                ("MW0:float32=-inf", "-inf is written with --allow-nan only$"),
                ("MW100=", "MW100=: the value is missing$"),
                *((f"{name}={value}", f"{name}={value}: {value} does not fit {range_}$")
                  for name, value, range_ in (
                      ("MW100", "65536", "uint16: 0 to 65535"), ("MW100", "-1", "uint16: 0 to 65535"),
                      ("MW100", "1.5", "uint16: 0 to 65535"),
                      ("offset", "32768", "int16: -32768 to 32767"),
                      ("total", "4294967296", "uint32: 0 to 4294967295"),
                      ("lamp", "2", "bool: 0, 1, true or false"))),
                *((f"{name}={value}", f'{name}={value}: "{value}" is no value of type {type_}: ')
                  for name, value, type_ in (("MW100", "x", "uint16"),
                                             ("level", "warm", "float32:high")))):
            with self.subTest(values=values):
                self.fails(1, f"write --link serial:/dev/none --tags tags.csv {values}", sentence)
        self.host("write", 1)
