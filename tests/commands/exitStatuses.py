"""Each kind of mistake has its exit status and one sentence that names it."""

from commandLine import CommandLineTest, on_each_link, without_powers
from tagTables import DEMO_TAGS

VERBS = "info, check, series, plan, watch, read, write, recipe, dump, diff, scan"
TRANSFERS = f"read MW100;write MW100=1;watch --tags {DEMO_TAGS}".split(";")
# Codes by MODBUS Application Protocol V1.1b3, 7.
FINAL_CODES = {1: "illegal function", 2: "illegal address", 3: "illegal value", 4: "device failure"}
BUSY = 6
LONG_TIMEOUT_MS = 30000  # what does not wait for it takes half of it at most on the busiest machine
REFUSED = ("read MW100", "read IX0.0", "write MW100=1", "write MX0.0=1",
           "recipe download recipe.csv", "recipe upload recipe.csv")
# Each request once, behind a fence; and for two verbs a second fence, where the refusal of the
# first fence could be taken for the refusal of the request.
REQUESTS = 14


class Usage(CommandLineTest):
    """Status 1, and where there is more to read."""

    def test_wrong_arguments_are_named_with_the_help_that_tells_more(self):
        for command, sentence in (
                ("", f"a verb is missing: {VERBS}"),
                ("bogus", f'there is no verb "bogus"; the verbs are {VERBS}'),
                ("bogus --help", f'there is no verb "bogus"; the verbs are {VERBS}'),
                ("recipe bogus --help", 'there is no verb "bogus"; the verbs are download, upload'),
                ("bogus --json", 'there is no verb "bogus"; .*'),
                ("--bogus", 'there is no option "--bogus"'),
                ("read --nothing MW100", ".*--nothing.*"), ("info extra", ".*extra.*"),
                ("recipe", "a verb is missing: download, upload"),
                ("recipe bogus", 'there is no verb "bogus"; the verbs are download, upload'),
                ("recipe download", ".*FILE.*"), ("check MW", ".*ADDRESS.*"),
                ("check MW 0 --count 0", ".*--count.*"),
                ("read MW0 --timeout-ms 5", ".*--timeout-ms.*"),
                ("read MW0 --attempts 0", ".*--attempts.*"),
                ("read MW0 --echo maybe", ".*--echo.*"), ("--driver", ".*--driver.*"),
                *((f"watch --tags {DEMO_TAGS} --seconds {number}", ".*--seconds.*")
                  for number in ("-1", "10000001", "nan", "-nan", "inf", "x"))):
            with self.subTest(command=command):
                run = self.fails(
                    1, command, rf"^kakb-host: {sentence} \(kakb-host .*--help says more\)$")
                self.assertNotIn("subcommand", run.err.lower())
        for verb in ("recipe", "recipe download"):
            self.fails(1, verb, rf"\(kakb-host {verb} --help")

    def test_every_help_lists_the_exit_statuses(self):
        for verb in ("", *VERBS.split(", "), "recipe download", "recipe upload"):
            self.assert_matches(
                self.host(f"{verb} --help").lines, "^Usage: kakb-host", "^Exit status:$",
                "^  0  done$", "^  1  usage", "^  2  the driver", "^  3  the link",
                "^  4  a station did not answer$", "^  5  the PLC refused$",
                "^  6  values differ", "^  7  check, series: the address is not valid$",
                "^  8  interrupted before it was done; a watch without --until ends with 0$",
                "^  9  watch: a tag was bad too long, or --until did not come true in time$")

    def test_wrong_part_of_a_link_is_named(self):
        for link, sentence in (
                ("nothing", 'the link "nothing" is not sim, serial:DEVICE or tcp:HOST,PORT'),
                ("''", 'the link "" is not'), ("sim:3", 'plain "sim"'),
                ("serial", "a serial link needs a device"),
                ("serial:", "a serial link needs a device"),
                ("serial:/dev/none,x", 'the baud rate "x"'),
                ("serial:/dev/none,9600,9", 'the number of data bits "9"'),
                ("serial:/dev/none,9600,8,MARK", 'the parity "MARK" is not NONE, EVEN or ODD'),
                ("serial:/dev/none,9600,8,NONE,3", 'the number of stop bits "3"'),
                ("serial:/dev/none,9600,8,NONE,1,5", "more parts than serial:DEVICE"),
                ("tcp:127.0.0.1,0", 'the port "0"'), ("tcp:127.0.0.1,65536", 'the port "65536"'),
                ("tcp:127.0.0.1:502", "must follow a comma"),
                ("tcp:127.0.0.1,502,3", "more parts than tcp:HOST,PORT")):
            self.fails(1, f"read MW100 --link {link}", sentence)

    def test_tags_are_required_but_for_the_simulated_plc(self):
        """Only of the simulated PLC it is known what is where."""
        for verb in ("plan", "watch"):
            for link in ("serial:/dev/none", "tcp:127.0.0.1,1"):
                self.fails(1, f"{verb} --link {link}", "^kakb-host: --tags is required: ")
            self.fails(1, f"{verb} --link nothing", 'the link "nothing" is not')


class LinkAndDriver(CommandLineTest):
    """Statuses 2, 3 and 4."""

    def cannot_open(self, link, sentence):
        """Status 3 of each verb that needs a link."""
        for verb in TRANSFERS:
            self.fails(3, f"{verb} --link {link}", sentence, within_ms=10000)

    def test_path_that_is_no_serial_port(self):
        self.cannot_open("serial:none", "none: No such file or directory")
        self.cannot_open(f"serial:{self.folder}", "Is a directory")
        file = self.file("file", "")
        self.cannot_open(f"serial:{file}", f"^kakb-host: {file} is not a serial port$")
        self.cannot_open("serial:/dev/null", "^kakb-host: /dev/null is not a serial port$")
        file.chmod(0)
        self.fails(3, f"read MW100 --link serial:{file}", f"{file}: Permission denied$",
                   prefix=without_powers("dac_override", "dac_read_search"))

    def test_network_port_that_refuses(self):
        self.cannot_open(f"tcp:127.0.0.1,{self.held_port()}",
                         r"127\.0\.0\.1, port [0-9]+: Connection refused")

    def test_simulator_and_driver_that_cannot_be_started(self):
        self.fails(3, "read MW100 --simulator none")
        self.fails(2, "--driver ./none.so info",
                   rf"none\.so.*; searched in the folder {self.folder.resolve()}$")
        self.fails(2, f"--driver {self.file('file', '')} read MW100")

    def test_folders_searched_for_a_driver_are_named(self):
        """A bare name is not one of the present folder, as for any program's libraries."""
        self.file("here.so", "")
        (self.folder / "own").mkdir()
        prefix = ("env", f"LD_LIBRARY_PATH={self.folder}/own")
        found = f"; searched in the system's library folders {self.folder}/own, /.*lib"
        self.fails(2, "--driver none.so info", f"none\\.so.*{found}", prefix=prefix)
        run = self.fails(2, "--driver here.so info", found, prefix=prefix)
        self.assertTrue(run.errors[0].endswith("; the file of this folder is ./here.so"), run)
        for other in ("./here.so", "libm.so.6"):
            self.assertNotIn("searched", self.fails(2, f"--driver {other} info").err)

    def test_silent_and_damaging_stations_are_told_apart(self):
        with self.plc("pty", "--silent 1") as plc:
            for verb, sentence in (("read MW100", "station 1 does not answer$"),
                                   ("read IX0.0", "station 1 does not answer$"),
                                   ("write MW100=1", "MW100: not sent: station 1 is silent$"),
                                   ("write MX0.0=1", "MX0.0: not sent: station 1 is silent$")):
                self.fails(4, f"{verb} --link {plc.link} --timeout-ms 50", sentence,
                           within_ms=2000)
        with self.plc("pty", "--corrupt 1") as plc:
            self.fails(4, f"read MW100 --link {plc.link} --timeout-ms 300",
                       "station 1 gave no usable answer: [0-9]+ bytes with a wrong checksum: "
                       "noise, or another baud rate or parity$")
        with self.plc("pty", "--wrong-station 1") as plc:
            self.fails(4, f"read MW100 --link {plc.link} --timeout-ms 300",
                       "station 1 gave no usable answer: an answer of another station, [0-9]+$")
        with self.plc("pty", "--echo --silent 1") as plc:
            self.fails(4, f"read MW100 --link {plc.link} --echo no --timeout-ms 300",
                       "station 1 gave no usable answer: the request itself came back: an echoing "
                       "adapter$")


class Refusals(CommandLineTest):
    """Status 5: the PLC has understood the request, so its refusal is final at once."""

    @on_each_link
    def test_refusal_is_final_at_once_and_not_asked_again(self, kind):
        self.recipe(still=7)
        for code, words in FINAL_CODES.items():
            with self.plc(kind, f"--exception 1 --exception-code {code}") as plc:
                for verb in REFUSED:
                    self.fails(5, f"{verb} --link {plc.link} --timeout-ms {LONG_TIMEOUT_MS}",
                               f"refused by the PLC: {words}", within_ms=LONG_TIMEOUT_MS // 2)
            self.assertEqual(REQUESTS, plc.report()["requests"])

    @on_each_link
    def test_busy_plc_is_asked_again(self, kind):
        with self.plc(kind, f"--exception 1 --exception-code {BUSY} --fault-exchanges 2") as plc:
            self.soon(LONG_TIMEOUT_MS // 2,
                      f"read MW100 --link {plc.link} --timeout-ms {LONG_TIMEOUT_MS}")
