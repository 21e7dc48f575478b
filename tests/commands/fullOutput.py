"""Output that cannot be shown is a failure of every verb; a reader that closed the pipe is not."""

import os

from commandLine import CANNOT_WRITE, CommandLineTest, on_each_link
from tagTables import DEMO_TAGS

FEW_BYTES = 10


class FullOutput(CommandLineTest):
    """Standard output is /dev/full, or a pipe whose reader leaves."""

    def cannot_show(self, command):
        """Ends with status 1 and says why."""
        with open("/dev/full", "wb") as full:
            self.assertEqual(CANNOT_WRITE, self.fails(1, command, stdout=full).errors)

    def test_help_and_offline_verbs_fail_on_a_full_disk(self):
        for command in ("--help", "--version", "watch --help"):
            self.cannot_show(command)
        for command in ("info", "check MW 100", "series MW 100 --count 3",
                        f"plan --tags {DEMO_TAGS}"):
            self.cannot_show(command)
            self.cannot_show(f"{command} --json")

    @on_each_link
    def test_online_verbs_fail_on_a_full_disk(self, kind):
        """A watch at once, not only when it is stopped; a write has been done all the same."""
        for json in ("", "--json"):
            with self.plc(kind) as plc:
                for command in ("read MW100", "write MW100=1", f"watch --tags {DEMO_TAGS}"):
                    self.cannot_show(f"{command} --link {plc.link} {json}")
            self.assertEqual(["1 MW 3050 1"], plc.memory())

    def test_reader_that_closes_the_pipe_is_no_failure(self):
        for json in ("", "--json"):
            reader, writer = os.pipe()
            run = self.start(f"series MW 0 --count 4000 --interval 1 {json}", stdout=writer)
            os.close(writer)
            self.assertEqual(FEW_BYTES, len(os.read(reader, FEW_BYTES)))
            os.close(reader)
            self.assertEqual((0, []), (run.wait(20), run.errors), run)
