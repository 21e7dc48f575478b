"""A network peer vanishes without a word, as when a cable is pulled: a lost link within seconds."""

import subprocess

from commandLine import CommandLineTest

LOST = r"127\.0\.0\.1, port [0-9]+: Connection timed out$"


class VanishedPeer(CommandLineTest):
    """In a network of its own, whose only interface can be switched off; skipped where the system
    grants no such network."""

    def setUp(self):
        super().setUp()
        holder = subprocess.Popen(
            ["unshare", "-rn", "sh", "-c", "ip link set lo up && echo up && exec sleep 600"],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(holder.wait)
        self.addCleanup(holder.kill)
        self.addCleanup(holder.stdout.close)
        if not holder.stdout.readline():
            self.skipTest("the system grants no network of its own")
        self.inside = ("nsenter", "--target", str(holder.pid), "--user", "--net",
                       "--preserve-credentials")

    def inside_run(self, *command):
        """What a command prints that runs in this network."""
        return subprocess.run([*self.inside, *command], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    def switch(self, state):
        """No packet comes or goes when the interface is down."""
        self.inside_run("ip", "link", "set", "lo", state)

    def test_watch_reports_the_loss_and_connects_again(self):
        self.tags("count")
        with self.plc("tcp", "--signal 1:IW:0:counter:50", prefix=self.inside) as plc:
            watch = self.watching(f"--tags tags.csv --link {plc.link} --pause-ms 100",
                                  prefix=self.inside)
            self.switch("down")
            watch.await_lines(f"  link lost: {LOST}", seconds=10)
            self.switch("up")
            watch.await_lines("  link is back$")
            self.end(watch)
            self.assertRegex(watch.lines[-1], "  losses 1$")

    def test_waiting_read_notices_the_loss(self):
        """The request has arrived, so nothing is on the way: only keep-alives can tell."""
        with self.plc("tcp", "--silent 1", prefix=self.inside) as plc:
            read = self.start(f"read MW100 --trace --link {plc.link} --timeout-ms 60000",
                              prefix=self.inside)
            read.await_request()

            def is_acknowledged():
                fields = self.inside_run("ss", "-tnH", f"dport = :{plc.port}").split()
                return fields[2:3] == ["0"]  # bytes that are sent but not acknowledged

            read.await_that(is_acknowledged)
            self.switch("down")
            self.assertEqual(3, read.wait(12), read)
            self.assert_matches(read.errors, f"^kakb-host: {LOST}")
