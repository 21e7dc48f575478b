"""An answer that comes late for one run must not pass for the answer to the next run.

Nothing in an answer says which program asked, on a serial line as behind a device server. Each run
begins with a fence, so that it neither waits for late answers at its end nor takes answers to the
run before."""

import signal

from commandLine import CommandLineTest
from networkPeers import DeviceServer
from processes import matching, wait_until

WORDS = {3050: 4711, 5000: 99}  # of the device server's PLC: MW100 and MW4000


class LateAnswers(CommandLineTest):
    """Runs of kakb-host one after the other."""

    def server(self, delay_s, hang_ups=0):
        """A serial device server; what --link takes."""
        return self.keep(DeviceServer(delay_s, hang_ups, WORDS)).link

    def test_late_answer_on_a_serial_line(self):
        """Three runs, of which the first gives up before its answer comes, and no run waits. MW100
        is 4711 and MW200 is 99 by themselves."""
        with self.plc("pty", "--delay 1 --delay-ms 300 --fault-exchanges 1 "
                      "--signal 1:MW:3050:toggle:86400000:4711 "
                      "--signal 1:MW:3100:toggle:86400000:99") as plc:
            run = self.host(f"read MW100 --link {plc.link} --timeout-ms 100 --attempts 1", 4)
            self.assertLess(run.milliseconds, 1000, run)
            for address, value in (("MW200", 99), ("MW100", 4711)):
                run = self.host(f"read {address} --link {plc.link} --timeout-ms 500")
                self.assertEqual([f"{address} = {value}"], run.lines)

    def test_run_ends_at_once_with_its_last_attempt_or_its_answer(self):
        for fault, status, rest, within_ms in (
                ("--silent 1", 4, "--timeout-ms 300 --attempts 2", 1500),
                ("", 0, "--timeout-ms 30000", 1000)):
            with self.plc("pty", fault) as plc:
                self.soon(within_ms, f"read MW100 --link {plc.link} {rest}", status)

    def test_late_answer_behind_a_device_server(self):
        link = self.server(0.45)
        self.host(f"read MW100 --link {link} --timeout-ms 300 --attempts 1", 4)
        self.assertEqual(["MW4000 = 99"],
                         self.host(f"read MW4000 --link {link} --timeout-ms 1000").lines)

    def test_kept_answer_of_a_device_server_is_a_stray(self):
        delay_s = 0.5
        link = self.server(delay_s)
        run = self.start(f"read MW100 --link {link} --timeout-ms 5000 --trace")
        run.await_request()
        self.end(run, signal.SIGINT, 8)
        self.assertFalse(matching(run.errors, " < "), run)
        wait_until(run.started + delay_s)
        run = self.host(f"read MW4000 --link {link} --timeout-ms 5000 --trace")
        self.assertEqual(["MW4000 = 99"], run.lines)
        self.assert_matches(run.errors, " < 01 03 .*stray")

    def test_answer_to_a_request_that_a_lost_connection_cut_short(self):
        """It comes on the next connection, and passes for no later answer."""
        self.tags("still", "far")
        watch = self.watching(f"--tags tags.csv --link {self.server(0.1, 1)} --pause-ms 50 "
                              "--trace", "far +MW4000 = 99$")
        seen = len(matching(watch.errors, " > "))
        watch.await_that(lambda: len(matching(watch.errors, " > ")) > seen + 8)
        self.end(watch)
        self.assert_matches(watch.lines, "link lost", "link is back", "still +MW100 = 4711$")
        self.assertEqual(2, len(matching(watch.lines, " = ")), watch)
