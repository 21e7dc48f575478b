"""What a failed write says of the PLC: whether the write went out, and whether it waits for a station."""

import signal

from commandLine import CommandLineTest, on_each_link
from networkPeers import Peer, keep_confirmations
from processes import matching

OPEN = "station 1 did not answer; the PLC may have executed it"
SILENT = "not sent: station 1 is silent"
# The fence ahead of a write has its answer in time on a busy machine, too.
ONE_ATTEMPT = "--timeout-ms 1500 --attempts 1"
WRITTEN = r" > .* write (register|coil)"


class Unconfirmed(CommandLineTest):
    """The PLC executes writes whose confirmation is lost; its memory is the judge."""

    def lossy(self, plc, passed=0):
        """A link on which so many confirmations of writes arrive."""
        return self.keep(Peer(keep_confirmations, plc.port, passed)).link

    def test_executed_write_without_confirmation_may_be_executed(self):
        with self.plc("tcp") as plc:
            self.fails(4, f"write MW100=7 --link {self.lossy(plc)} {ONE_ATTEMPT}",
                       f"^kakb-host: MW100: {OPEN}$")
        self.assertEqual(["1 MW 3050 7"], plc.memory())

    def test_executed_recipe_block_without_confirmation_may_be_executed(self):
        self.recipe(still=7)
        with self.plc("tcp") as plc:
            self.fails(4, f"recipe download recipe.csv --link {self.lossy(plc)} "
                       f"{ONE_ATTEMPT}", f"^kakb-host: MW100 of station 1: {OPEN}$")
        self.assertEqual(["1 MW 3050 7"], plc.memory())

    def test_values_of_one_frame_share_its_end(self):
        with self.plc("tcp") as plc:
            run = self.host(f"write MW100=7 MW102=8 --link {self.lossy(plc)} "
                            f"{ONE_ATTEMPT}", 4)
        self.assertEqual([f"kakb-host: MW100: {OPEN}", f"kakb-host: MW102: {OPEN}"], run.errors)
        self.assertEqual(["1 MW 3050 7", "1 MW 3051 8"], plc.memory())

    def test_interrupted_write_says_whether_it_went_out(self):
        with self.plc("tcp") as plc:
            run = self.start(f"write MW100=1 MW300=7 QX0.5=1 --link {self.lossy(plc, 1)} "
                             "--trace --timeout-ms 60000")
            run.await_that(lambda: len(matching(run.errors, WRITTEN)) == 2)
            self.end(run, signal.SIGINT, 8)
        self.assertEqual(["MW100 = 1 confirmed"], run.lines)
        self.assertEqual(["kakb-host: MW300: interrupted; the PLC may have executed it",
                          "kakb-host: QX0.5: not sent: interrupted"], run.errors[-2:])

    def test_interrupted_download_says_whether_its_block_went_out(self):
        self.recipe(still=7)
        with self.plc("tcp") as plc:
            run = self.start(f"recipe download recipe.csv --link {self.lossy(plc)} --trace "
                             "--timeout-ms 60000")
            run.await_that(lambda: matching(run.errors, " > .* write "))
            self.end(run, signal.SIGINT, 8)
        self.assertEqual("kakb-host: MW100 of station 1: interrupted; the PLC may have executed it",
                         run.errors[-1])

    @on_each_link
    def test_failures_come_in_the_order_of_the_command(self, kind):
        names = ["QX0.5", "MW100", "2:MW4", "MX12.3", "MW300"]
        with self.plc(kind, "--stations 1-2 --silent 1") as plc:
            run = self.host(f"write {'=1 '.join(names)}=1 --hold 0 --timeout-ms 300 "
                            f"--link {plc.link}", 4)
        self.assertEqual(["2:MW4 = 1 confirmed"], run.lines)
        names.remove("2:MW4")
        self.assertEqual([f"kakb-host: {name}: {SILENT}" for name in names], run.errors)


class Hold(CommandLineTest):
    """The PLC hears nothing of the first three requests: these are the attempts of the first write,
    all of them fences."""

    FAULTS = "--drop-request 1 --fault-exchanges 3"

    @on_each_link
    def test_writes_behind_a_give_up_are_sent_when_the_station_answers(self, kind):
        with self.plc(kind, self.FAULTS) as plc:
            run = self.host("write MW100=7 QX0.5=1 MW300=9 --timeout-ms 300 --hold 50s "
                            f"--link {plc.link}", 4)
        self.assertEqual([f"kakb-host: MW100: {SILENT}"], run.errors)
        self.assertEqual(["QX0.5 = 1 confirmed", "MW300 = 9 confirmed"], run.lines)
        self.assertEqual(["1 QW 0 32", "1 MW 3150 9"], plc.memory())

    def test_writes_wait_for_two_seconds_unless_told_otherwise(self):
        """Without a hold the command would end within a time-out or two."""
        with self.plc("pty", "--silent 1") as plc:
            run = self.host(f"write MW100=7 QX0.5=1 --timeout-ms 50 --link {plc.link}", 4)
        self.assertGreaterEqual(run.milliseconds, 2000)

    @on_each_link
    def test_frames_of_several_values_wait_too(self, kind):
        with self.plc(kind, self.FAULTS) as plc:
            run = self.host("write MW100=7 MW102=8 MW300=9 MW302=10 --timeout-ms 300 --hold 50s "
                            f"--link {plc.link}", 4)
        self.assertEqual([f"kakb-host: MW100: {SILENT}", f"kakb-host: MW102: {SILENT}"], run.errors)
        self.assertEqual(["MW300 = 9 confirmed", "MW302 = 10 confirmed"], run.lines)
        self.assertEqual(["1 MW 3150 9", "1 MW 3151 10"], plc.memory())

    @on_each_link
    def test_without_a_hold_they_fail_at_once(self, kind):
        with self.plc(kind, self.FAULTS) as plc:
            run = self.host("write MW100=7 QX0.5=1 --timeout-ms 100 --hold 0 "
                            f"--link {plc.link}", 4)
        self.assertEqual([f"kakb-host: MW100: {SILENT}", f"kakb-host: QX0.5: {SILENT}"], run.errors)
        self.assertEqual([], plc.memory())

    @on_each_link
    def test_hold_ends(self, kind):
        with self.plc(kind, "--silent 1") as plc:
            run = self.host("write MW100=7 QX0.5=1 --timeout-ms 50 --hold 700ms "
                            f"--link {plc.link}", 4)
        self.assertEqual([f"kakb-host: MW100: {SILENT}", f"kakb-host: QX0.5: {SILENT}"], run.errors)
        self.assertGreaterEqual(run.milliseconds, 700)

    def test_interrupt_ends_a_hold(self):
        with self.plc("pty", "--silent 1") as plc:
            run = self.start("write MW100=7 QX0.5=1 --timeout-ms 50 --hold 60m "
                             f"--link {plc.link}")
            run.await_that(lambda: matching(run.errors, "MW100"))
            self.end(run, signal.SIGINT, 8 if not run.errors else 4)
        self.assertEqual([f"kakb-host: MW100: {SILENT}", "kakb-host: QX0.5: not sent: interrupted"],
                         run.errors)

    def test_text_that_is_no_duration(self):
        for hold in ("5", "-1s", "1h", "61m", "''"):
            self.fails(1, f"write MW100=7 --hold {hold}", "--hold")
