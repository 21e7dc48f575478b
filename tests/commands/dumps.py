"""Dumps of the PLC's words, and comparisons of the PLC with a file."""

from commandLine import CommandLineTest, on_each_link
from processes import matching

PATIENT = "--timeout-ms 2000"


class Dump(CommandLineTest):
    """A dump has the words of the PLC, in the format that the simulated PLC loads."""

    @on_each_link
    def test_words_of_areas_and_ranges(self, kind):
        """MW100 is register 3050, QW8 is register 4 and IW2 register 1."""
        with self.plc(kind, "--stations 1-2 --set MW100=5 --set 2:QW8=65535 --set IW2=7"
                      " --set MW102=9") as plc:
            run = self.quiet(f"dump --link {plc.link} {PATIENT} MW98..MW100 IW 2:qw %MW98+2")
        self.assertEqual(["# read 1 IW 0 255", "# read 1 MW 3049 3050", "# read 2 QW 0 255",
                          "1 IW 1 7", "1 MW 3050 5", "2 QW 4 65535"], run.lines)

    def test_both_words_of_a_long_value(self):
        with self.plc("pty", "--set MW102=9") as plc:
            run = self.quiet(f"dump --link {plc.link} {PATIENT} MW100:float32")
        self.assertEqual(["# read 1 MW 3050 3051", "1 MW 3051 9"], run.lines)

    def test_whole_memory_loads_into_the_next_plc(self):
        signals = "--signal 1:MW:3000:counter:3600000 --set MW8190=1 --set QW510=2 --set IW510=3"
        with self.plc("tcp", signals) as plc:
            self.quiet(f"dump --link {plc.link} {PATIENT} MW QW IW --output plc.dump")
        before = plc.memory()
        with self.plc("tcp", "--load plc.dump") as plc:
            self.assertEqual([f"{4096 + 256 + 256} of 4608 values are equal"],
                             self.quiet(f"diff --link {plc.link} {PATIENT} plc.dump").lines)
        self.assertEqual(before, plc.memory())

    def test_words_that_are_refused_are_named(self):
        with self.plc("pty", "--refuse MW100..MW104 --set MW90=1") as plc:
            run = self.host(f"dump --link {plc.link} {PATIENT} MW90 MW100..MW104", 5)
        self.assertEqual(["# read 1 MW 3045 3045", "1 MW 3045 1"], run.lines[:2])
        self.assertRegex(run.lines[2], r"^# not read: MW100\.\.MW104: refused by the PLC")
        self.assertRegex(run.errors[0], r"^kakb-host: MW100\.\.MW104: refused by the PLC")

    def test_silent_plc_leaves_the_old_file(self):
        old = self.file("plc.dump", "old\n")
        with self.plc("pty", "--silent 1") as plc:
            self.fails(4, f"dump --link {plc.link} --attempts 1 MW0 --output plc.dump")
        self.assertEqual("old\n", old.read_text(encoding="utf-8"))

    def test_usage(self):
        self.fails(1, "dump MX0.0", "a dump has words")
        self.fails(1, "dump MX")
        self.fails(1, "dump MW1")
        self.fails(1, "dump 0:MW")
        self.fails(1, "dump MW0 --output /none/plc.dump", "cannot write /none/plc.dump")


class Difference(CommandLineTest):
    """Every value of the file that the PLC does not hold is named."""

    def test_recipe(self):
        """12.5 is 0x41480000 in IEEE 754."""
        self.recipe(level="12.5", total="100000", lamp="1")
        with self.plc("pty", "--stations 1-2") as plc:
            diff = f"diff --link {plc.link} {PATIENT} recipe.csv"
            run = self.host(diff, 6)
            self.assertEqual(["level (MW120) is 0, not 12.5", "total (2:QW8) is 0, not 100000",
                              "lamp (MX12.3) is 0, not 1", "0 of 3 values are equal"], run.lines)
            self.host(f"recipe download --link {plc.link} {PATIENT} recipe.csv")
            self.assertEqual(["3 of 3 values are equal"], self.quiet(diff).lines)
            self.host(f"write --link {plc.link} {PATIENT} MW120=0x4149")
            self.assertEqual(["level (MW120) is 12.5625, not 12.5", "2 of 3 values are equal"],
                             self.host(diff, 6).lines)

    def test_objects(self):
        self.recipe(level="12.5", lamp="0")
        with self.plc("pty") as plc:
            objects = self.objects(f"diff --link {plc.link} {PATIENT} recipe.csv", 6)
        self.assertEqual([{"name": "level", "address": "MW120", "expected": 12.5, "found": 0},
                          {"values": 2, "different": 1, "unread": 0}], objects)

    def test_words_without_a_line_are_zero_where_the_dump_has_read_them(self):
        self.file("plc.dump", "# read 1 MW 3000 3001\n1 MW 3010 4\n")
        with self.plc("pty", "--set MW2=1 --set MW20=4 --set MW22=9") as plc:
            run = self.host(f"diff --link {plc.link} {PATIENT} plc.dump", 6)
        self.assertEqual(["MW2 is 1, not 0", "2 of 3 values are equal"], run.lines)

    def test_unread_values_are_never_equal(self):
        self.recipe(level="0", total="0")
        with self.plc("pty", "--stations 1-2 --silent 2") as plc:
            run = self.host(f"diff --link {plc.link} --attempts 1 recipe.csv", 4)
        self.assertEqual(["1 of 2 values are equal, 1 could not be read"], run.lines)
        self.assertRegex(run.errors[0], r"^kakb-host: total \(2:QW8\): ")

    def test_writes_nothing(self):
        self.recipe(level="12.5")
        with self.plc("pty") as plc:
            run = self.host(f"diff --link {plc.link} {PATIENT} recipe.csv --trace", 6)
        requests = matching(run.errors, " > ")
        self.assertGreaterEqual(len(requests), 1)
        self.assertEqual(requests, matching(requests, r" > [0-9A-F]{2} 0[34] .*: read "))
        self.assertEqual([], plc.memory())

    def test_files_that_cannot_be_used(self):
        self.fails(1, "diff none.csv", "cannot read none.csv: No such file or directory")
        self.file("plc.dump", "1 MW 3000 x\n")
        self.fails(1, "diff plc.dump", 'plc.dump: line 1: value "x" is no number from 0 to 65535')
        self.file("plc.dump", "# read 1 MW 3000 2\n")
        self.fails(1, "diff plc.dump", 'plc.dump: line 1: address number "2" is no number')
