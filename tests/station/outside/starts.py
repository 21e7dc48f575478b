"""How the station starts and ends: its first line, its address, and what it refuses to start with.
"""

import os
import signal
import socket
import time

from processes import PATIENCE_S, SLOWER, Program, eventually, matching
from stationProgram import Station, StationTest

NEWCOMERS_SECONDS = 1
STARTS = 5  # of which the quickest counts: a busy machine makes single ones late
LONGEST_PAUSE_MS = 8000
DEMO_TAGS = 13


class Starts(StationTest):
    """Starts with options."""

    def test_the_demo_has_a_living_page_within_a_second(self):
        taken = []
        for _ in range(STARTS):
            began = time.monotonic()
            station = self.station()
            self.assertEqual(200, station.get("/").status)
            station.await_good()
            taken.append(time.monotonic() - began)
            if taken[-1] < NEWCOMERS_SECONDS * SLOWER:
                break
            station.end()
        self.assertLess(min(taken), NEWCOMERS_SECONDS * SLOWER, taken)
        self.assertEqual(DEMO_TAGS, len(station.values()))
        before = station.values()["fill level"]["value"]
        station.await_values(lambda values: values["fill level"]["value"] != before)

    def test_the_first_line_names_the_port_that_was_free(self):
        station = self.station("--listen 127.0.0.1:0")
        self.assertRegex(station.lines[0], r"^http://127\.0\.0\.1:[1-9][0-9]*/$")
        self.assertEqual(1, len(station.lines))

    def test_an_ipv6_address_stands_in_brackets(self):
        try:
            with socket.socket(socket.AF_INET6) as probe:
                probe.bind(("::1", 0))
        except OSError:
            self.skipTest("the machine has no IPv6")
        station = self.station("--listen [::1]:0")
        self.assertRegex(station.url, r"^http://\[::1\]:[1-9][0-9]*/$")
        self.assertEqual(200, station.get("/api/v1/station").status)

    def test_either_signal_ends_it_with_status_0(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=number):
                self.assertEqual(0, self.station().end(number))

    def test_without_a_configuration_a_closed_terminal_ends_it(self):
        self.assertEqual(0, self.station().end(signal.SIGHUP))

    def test_nohup_keeps_it_from_ending_with_the_terminal(self):
        words = ["nohup", self.programs / "kakb-station", "--listen", "127.0.0.1:0", "--no-history"]
        station = self.keep(Station(words, self.folder))
        station.process.send_signal(signal.SIGHUP)
        station.await_good()
        self.assertEqual(0, station.end())

    def test_closed_standard_streams_are_not_taken_for_its_files(self):
        state = self.folder / "state"
        command = (f"exec {self.programs / 'kakb-station'} --listen 127.0.0.1:0 --state {state} "
                   "<&- >&- 2>&-")
        station = self.keep(Program(["bash", "-c", command], self.folder))
        self.assertTrue(eventually((state / "history.sqlite").exists))
        self.assertEqual(["/dev/null"] * 3, [os.readlink(f"/proc/{station.pid}/fd/{stream}")
                                             for stream in range(3)])
        self.assertEqual(0, station.signal(signal.SIGTERM, PATIENCE_S))

    def test_open_streams_and_a_silent_plc_do_not_hold_its_end(self):
        plc = self.plc("tcp", "--stall 3600")
        self.tags("still")
        station = self.station(f"--link {plc.link} --tags tags.csv")
        with station.events():
            self.assertEqual(0, station.end())

    def test_the_end_of_the_simulated_plc_is_said_and_everything_goes_on(self):
        station = self.station(f"--pause-ms {LONGEST_PAUSE_MS}")  # the loss lasts
        station.await_good()
        os.kill(self.simulator_of(station), signal.SIGKILL)
        values = station.await_values(
            lambda found: all(value["quality"] == "bad" for value in found.values()))
        self.assertEqual({"link lost: the simulated PLC has ended"},
                         {value["trouble"] for value in values.values()})
        self.assertEqual(200, station.get("/").status)

    def test_a_simulated_plc_that_ended_is_started_again_and_that_is_said_once(self):
        station = self.station("--pause-ms 100")
        ended = []
        for number in (1, 2, 3):
            station.await_good()
            ended.append(self.simulator_of(station))
            os.kill(ended[-1], signal.SIGKILL)
            # The loss may be too short to be seen; it is said when the next one is started.
            station.await_that(lambda number=number: len(
                matching(station.errors, "simulated PLC")) >= number)
            station.await_good()
            said = matching(station.errors, "simulated PLC")
            self.assertEqual(number, len(said), station)
            self.assertRegex(said[-1], 'link "plc": the simulated PLC has ended, it is started again$')
        self.assertNotIn(self.simulator_of(station), ended)
        self.assertEqual(0, station.end())
        self.assertEqual(3, len(station.errors), station)

    def test_no_simulated_plc_stays_behind_a_killed_station(self):
        station = self.station()
        simulator = self.simulator_of(station)
        station.end(signal.SIGKILL)
        self.assertTrue(eventually(lambda: not is_running(simulator)))


class RefusedStarts(StationTest):
    """Starts that end at once, each with a status and a sentence."""

    def test_a_port_in_use_is_said(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            sentences = self.refused(f"--listen 127.0.0.1:{port} --no-history", 3)
        self.assertEqual(1, len(sentences))
        self.assertRegex(sentences[0], f"127.0.0.1:{port}.*in use")

    def test_an_address_of_another_machine_is_said(self):
        sentences = self.refused("--listen 192.0.2.1:0 --no-history --token-file token", 3)
        self.assertEqual(1, len(sentences))
        self.assertIn("192.0.2.1", sentences[0])

    def test_a_wrong_command_line_is_one_sentence(self):
        for words in ("--nothing", "word", "--listen 8480", "--attempts 0", "--pace soon",
                      "--link tcp:", "--link telnet:", "--tags missing.csv"):
            with self.subTest(words=words):
                self.assertEqual(1, len(self.refused(words, 1)))

    def test_a_missing_driver_is_named_with_the_folder(self):
        sentences = self.refused("--driver ./no.so", 2)
        self.assertRegex(sentences[0], f"no.so.*searched in the folder {self.folder}")

    def test_all_mistakes_of_the_tag_file_come_at_once(self):
        self.file("bad.csv", "name,station,area,address,type\na,0,MW,0,uint16\nb,1,MW,1,uint16\n")
        sentences = self.refused("--tags bad.csv", 1)
        self.assertEqual(["bad.csv: line 2", "bad.csv: line 3"],
                         [sentence[:15] for sentence in sentences])

    def test_a_help_that_cannot_be_written_is_no_success(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            run = self.keep(Program([self.programs / "kakb-station", "--help"], self.folder,
                                    stdout=full))
            self.assertEqual(1, run.wait(PATIENCE_S))
        self.assertEqual(["kakb-station: cannot write the output"], run.errors)

    def test_help_and_version_go_to_standard_output(self):
        for word, wanted in (("--help", "Exit status:"), ("--version", "kakb-station 0.9.0")):
            with self.subTest(word=word):
                run = self.keep(Program([self.programs / "kakb-station", word], self.folder))
                self.assertEqual(0, run.wait(PATIENCE_S))
                self.assertIn(wanted, run.out)


def is_running(pid):
    """Whether there is a process of this id that has not ended."""
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
            return file.read().rsplit(")", 1)[1].split()[0] != "Z"
    except FileNotFoundError:
        return False
