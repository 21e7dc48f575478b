"""A watch without a terminal prints a line for each change, and the link's figures at the end."""

import os
import signal

from commandLine import CommandLineTest, on_each_link
from processes import ends, matching
from tagTables import DEMO_TAGS, tag_table

TIME = r"^[0-9]+\.[0-9]{6}"
FIGURES = (r"^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0  fences [0-9]+  "
           r"reply p50 .* losses 0$")
STEP = rf"{TIME}  count  IW0 = [0-9]+$"
COUNTER = "--signal 1:IW:0:counter:50"


class WatchLines(CommandLineTest):
    """Of a simulated PLC that was there before."""

    def setUp(self):
        super().setUp()
        self.tags("count", "still", "valve")

    @on_each_link
    def test_each_change_is_a_line(self, kind):
        """The counter steps every 50 ms; a value that does not change is shown once."""
        with self.plc(kind, COUNTER) as plc:
            watch = self.watching(f"--tags tags.csv --link {plc.link}",
                                  f"{TIME}  still  MW100 = 0$", rf"{TIME}  valve  QX2\.1 = 0$")
            watch.await_that(lambda: len(matching(watch.lines, STEP)) >= 7, 10)
            self.end(watch)
        self.assertEqual(2, len(matching(watch.lines, "still|valve")), watch)
        steps = [int(line.split(" = ")[1]) for line in matching(watch.lines, STEP)]
        self.assertEqual(sorted(set(steps)), steps, "the counter does not count")
        self.assertRegex(watch.lines[-1], FIGURES)
        self.assertEqual([], watch.errors, watch)

    @on_each_link
    def test_each_change_is_an_object_and_the_figures_are_the_last(self, kind):
        with self.plc(kind, COUNTER) as plc:
            watch = self.watching(f"--tags tags.csv --link {plc.link} --json", '"name":"count"',
                                  '"name":"still"', '"name":"valve"')
            self.end(watch)
        *values, figures = watch.objects
        self.assertEqual({"count", "still", "valve"}, {line["name"] for line in values})
        for line in values:
            self.assertTrue(line["good"] and type(line["value"]) in (int, float), line)
        times = [line["timeS"] for line in values]
        self.assertEqual(sorted(times), times)
        self.assertEqual((0, True), (figures["retries"], figures["connected"]))
        self.assertGreater(figures["exchanges"], 0)

    @on_each_link
    def test_first_value_of_each_tag_is_shown(self, kind):
        with self.plc(kind, COUNTER) as plc:
            for _ in range(4):
                self.end(self.watching(f"--tags tags.csv --link {plc.link}",
                                       f"{TIME}  still  MW100 = 0$"))

    def test_watch_ends_by_itself_when_its_seconds_are_over(self):
        with self.plc("pty") as plc:
            run = self.quiet(f"watch --tags tags.csv --link {plc.link} --seconds 0.7")
        self.assertTrue(700 <= run.milliseconds < 4000, run)
        self.assertRegex(run.lines[-1], FIGURES)

    @on_each_link
    def test_bad_tags_say_why_and_leave_the_others_good(self, kind):
        self.file("two.csv", tag_table("count", "still", "valve", "silent word"))
        with self.plc(kind, "--stations 1-2 --silent 2") as plc:
            watch = self.watching(f"--tags two.csv --link {plc.link} --timeout-ms 50",
                                  f"{TIME}  still  MW100 = 0$",
                                  f"{TIME}  silent word  2:MW0 bad: station 2 does not answer$")
            self.end(watch)
            self.assertRegex(watch.lines[-1], "  fences ([2-9]|[1-9][0-9]+)  ")
        with self.plc(kind, "--exception 1 --exception-code 2") as plc:
            watch = self.watching(f"--tags tags.csv --link {plc.link} --timeout-ms 5000",
                                  f"{TIME}  still  MW100 bad: refused by the PLC: illegal address "
                                  r"\(exception 2\)$")
            self.end(watch)
            self.assertRegex(watch.lines[-1], "  refused [1-9]")


class WatchOfTheOwnSimulatedPlc(CommandLineTest):
    """The simulated PLC that the host starts for itself ends with the host."""

    def setUp(self):
        super().setUp()
        self.tags("count", "still", "valve")

    def watch(self):
        """A watch that shows something, and its simulated PLC."""
        run = self.watching("--tags tags.csv")
        return run, self.simulator_of(run)

    def test_every_default_tag_has_a_value(self):
        names = [line.split(",")[0] for line in DEMO_TAGS.read_text(encoding="utf-8").splitlines()
                 if not line.startswith(("#", "name,"))]
        self.assertGreater(len(names), 10)
        watch = self.watching("", *(f"{TIME}  {name}  [0-9:A-Z.]+ = -?[0-9.]+$" for name in names))
        self.end(watch)
        self.assertRegex(watch.lines[-1], FIGURES)
        self.assertEqual([], watch.errors, watch)

    def test_signal_ends_the_host_and_its_simulated_plc(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            run, simulator = self.watch()
            self.end(run, number)
            self.assertTrue(ends(simulator, 0), f"{number} leaves kakb-sim behind")
            self.assertRegex(run.lines[-1], FIGURES)
            self.assertEqual([], run.errors, run)

    def test_killed_host_leaves_no_simulated_plc(self):
        run, simulator = self.watch()
        run.close()
        self.assertTrue(ends(simulator, 3), "a killed host leaves kakb-sim behind")

    def test_closed_pipe_ends_the_watch_well(self):
        for tags in (DEMO_TAGS, self.tags("still")):
            reader, writer = os.pipe()
            run = self.start(f"watch --tags {tags}", stdout=writer)
            os.close(writer)
            with open(reader, encoding="utf-8") as lines:
                self.assertTrue(lines.readline().endswith("\n"))
            self.assertEqual((0, []), (run.wait(10), run.errors), run)
