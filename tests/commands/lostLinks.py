"""Links that are lost: the PLC goes away and comes back, the peer hangs up, and the host's own
simulated PLC dies."""

import os
import signal
import time

from commandLine import CommandLineTest, on_each_link
from networkPeers import AT_ONCE, Peer, hang_up
from processes import PATIENCE_S, matching
from simulatedPlc import SimulatedPlc

COUNTER = "--signal 1:IW:0:counter:20"
ATTEMPTS_S = 0.4
# The host sees one of these, by how far its request had got.
GONE = (r"127\.0\.0\.1, port [0-9]+: (the peer closed the connection|Connection reset by peer|"
        "Broken pipe)")
ENDED = "the simulated PLC has ended"
# What a lost write says behind the reason.
OPEN = "; the PLC may have executed it$"
SILENT = "--trace --timeout-ms 60000 --simulator-arguments '--silent 1'"


def has_value(run):
    """A watch has shown a value."""
    return matching(run.lines, 'IW0 = |"value"')


def has_request(run):
    """A request is on the line."""
    return matching(run.errors, " > ")


class LostLink(CommandLineTest):
    """The PLC ends in order, or crashes; a crash leaves the link behind, and the number of the
    terminal may go to another program."""

    @on_each_link
    def test_watch_reports_loss_and_return_of_a_plc_that_ended(self, kind):
        self.check_return(kind, SimulatedPlc.stop)

    @on_each_link
    def test_watch_reports_loss_and_return_of_a_plc_that_crashed(self, kind):
        self.check_return(kind, SimulatedPlc.kill)

    def check_return(self, kind, stop):
        """After the return the values come at full pace: the counter steps every 20 ms."""
        self.tags("count", "still")
        port = self.held_port() if kind == "tcp" else 0  # nobody takes it while the PLC is away
        with self.plc(kind, COUNTER, port=port) as plc:
            watch = self.start(f"watch --tags tags.csv --link {plc.link} --pause-ms 50")
            watch.await_that(lambda: len(matching(watch.lines, "IW0 = ")) >= 3)
            stop(plc)
            watch.await_lines("  link lost: ", seconds=10)
            # Several attempts to open the link fail meanwhile, which is not told again.
            time.sleep(ATTEMPTS_S)

        def values_behind_the_return():
            _, found, behind = watch.out.partition("  link is back\n")
            return len(matching(behind.splitlines(), "IW0 = ")) if found else 0

        with self.plc(kind, COUNTER, port=port):
            watch.await_that(lambda: values_behind_the_return() >= 20)
            self.end(watch)
        for line in (r"^[0-9.]+  link lost: [^ ]", r"^[0-9.]+  link is back$",
                     "  count  IW0 bad: link lost: ", "  still  MW100 bad: link lost: "):
            self.assertEqual(1, len(matching(watch.lines, line)), f"{line}: {watch}")
        # The value did not change but is good again.
        self.assertEqual(2, len(matching(watch.lines, "  still  MW100 = 0$")), watch)
        self.assertRegex(watch.lines[-1], "  losses 1$")
        self.assertEqual([], watch.errors, watch)

    @on_each_link
    def test_waiting_read_fails_at_once_when_the_plc_ends(self, kind):
        with self.plc(kind, "--silent 1") as plc:
            read = self.start(f"read MW100 --trace --link {plc.link} --timeout-ms 10000")
            read.await_request()
            plc.stop()
            self.assertEqual(3, read.wait(5), read)
            self.assertEqual((0, 1), (len(read.lines), len(matching(read.errors, "^kakb-host: "))),
                             read)


class HangUps(CommandLineTest):
    """The peer is in front of a PLC, whose replies it passes on until it hangs up."""

    def setUp(self):
        super().setUp()
        self.plc_port = self.enterContext(self.plc("tcp")).port
        self.recipe(still=7, mode=3)

    def peer(self, replies):
        """A peer that hangs up behind so many replies; what --link takes."""
        return self.keep(Peer(hang_up, self.plc_port, replies)).link

    def loses(self, link, *commands, reason="^kakb-host: "):
        """Each command ends soon with the link lost, whatever the time-out."""
        for command in commands:
            self.fails(3, f"{command} --link {link} --timeout-ms 30000", reason + GONE + "($|;)",
                       within_ms=5000)

    def test_every_verb_ends_with_the_link_lost(self):
        """Whether the peer hangs up at once, with the first request, or behind one reply."""
        before = (self.folder / "recipe.csv").read_bytes()
        for replies in (AT_ONCE, 0):
            link = self.peer(replies)
            self.loses(link, "read MW100", "recipe upload recipe.csv")
            self.loses(link, "recipe download recipe.csv",
                       reason="^kakb-host: MW100 of station 1: not sent: ")
            self.loses(link, "write MW100=1", reason="^kakb-host: MW100: not sent: ")
        self.loses(self.peer(1), "read MW100 QX0.0", "recipe upload recipe.csv")
        self.loses(self.peer(1), "recipe download recipe.csv",
                   reason="^kakb-host: (MW100|QX?.*) of station 1: ")
        self.assertEqual(before, (self.folder / "recipe.csv").read_bytes())

    def test_each_unconfirmed_write_is_named(self):
        run = self.host(f"write MW100=1 QX0.5=1 --link {self.peer(0)} --timeout-ms 30000", 3)
        self.assertEqual(([], 2), (run.lines, len(run.errors)), run)
        self.assertRegex(run.errors[0], f"^kakb-host: MW100: not sent: {GONE}$", run)
        self.assertRegex(run.errors[1], rf"^kakb-host: QX0\.5: not sent: {GONE}$", run)

    def test_confirmed_write_stands_when_the_others_are_lost(self):
        """The first reply is to the fence, the second to one of the writes. With the request behind
        it the peer hangs up: nobody knows of the write in it, and the last write is not sent."""
        run = self.host(f"write MW100=1 MW300=2 QX0.5=1 --link {self.peer(2)} --timeout-ms 30000",
                        3)
        self.assertEqual((1, 2), (len(run.lines), len(run.errors)), run)
        self.assertRegex(run.lines[0], " = [12] confirmed$")
        self.assertRegex(run.errors[0], f"^kakb-host: MW[13]00: {GONE}{OPEN}", run)
        self.assertRegex(run.errors[1], rf"^kakb-host: QX0\.5: not sent: {GONE}$", run)

    def test_watch_reports_each_loss_and_connects_again(self):
        self.tags("still", "far")
        watch = self.start(f"watch --tags tags.csv --link {self.peer(1)} --pause-ms 50 "
                           "--timeout-ms 50")
        watch.await_that(lambda: len(matching(watch.lines, "  link is back$")) >= 2)
        self.end(watch)
        self.assert_matches(watch.lines, f"  link lost: {GONE}$", "  losses ([2-9]|[1-9][0-9]+)$")
        self.assertEqual([], watch.errors, watch)


class EndedSimulator(CommandLineTest):
    """The number of its terminal may be any program's by then, so nothing is opened again."""

    def bereft(self, command, is_ready):
        """Kills the host's simulated PLC as soon as the host is ready; the host ends soon."""
        run = self.start(f"{command} --pause-ms 50")
        run.await_that(lambda: is_ready(run))
        os.kill(self.simulator_of(run), signal.SIGKILL)
        with self.plc("pty") as plc:  # gets the number that has become free
            self.assertEqual(3, run.wait(PATIENCE_S), run)
        self.assertEqual(0, plc.report()["requests"], f"it talks to another terminal: {run}")
        return run

    def test_watch_ends_with_its_figures(self):
        self.tags("count")
        run = self.bereft("watch --tags tags.csv", has_value)
        self.assertEqual([f"kakb-host: {ENDED}"], run.errors, run)
        self.assert_matches(run.lines, f"  link lost: {ENDED}$", " exchanges/s .* losses 1$")
        run = self.bereft("watch --tags tags.csv --json", has_value)
        self.assertEqual([f"kakb-host: {ENDED}"], run.errors, run)

    def test_waiting_verbs_end_and_name_each_unconfirmed_write(self):
        self.recipe(still=7)
        for command in ("read MW100", "recipe download recipe.csv", "recipe upload recipe.csv"):
            run = self.bereft(f"{command} {SILENT}", has_request)
            self.assert_matches(run.errors, f"^kakb-host: (MW100 of station 1: not sent: )?{ENDED}$")
        run = self.bereft(f"write MW100=1 QX0.5=1 {SILENT}", has_request)
        self.assert_matches(run.errors, f"^kakb-host: MW100: not sent: {ENDED}$",
                            rf"^kakb-host: QX0\.5: not sent: {ENDED}$")
