"""Driver and tools installed into an empty folder need nothing else to watch the simulated PLC."""

import gzip
import subprocess

from commandLine import CommandLineTest
from tagTables import DEMO_TAGS

SHARED = "share/quorvane-ka-kb/tags.csv"


class InstalledTools(CommandLineTest):
    """What cmake installs of the components driver and tools."""

    def test_installed_tools_work_by_themselves(self):
        """With the tag file gone, which the tools' own package brings, the file is named."""
        root = self.folder / "root"
        for component in ("driver", "tools"):
            subprocess.run(["cmake", "--install", self.programs.parent, "--prefix", root,
                            "--component", component], check=True, stdout=subprocess.DEVNULL)
        self.assertEqual(DEMO_TAGS.read_bytes(), (root / SHARED).read_bytes())
        for tool in ("kakb-host", "kakb-sim"):
            with gzip.open(root / f"share/man/man1/{tool}.1.gz") as page:
                self.assertTrue(page.read())
            self.assertTrue((root / "share/bash-completion/completions" / tool).read_text("utf-8"))

        self.programs = root / "bin"
        watch = self.watching("", "  fill level  IW0 = [0-9]+$", "  speed of line 2  2:QW40 = 0$")
        self.end(watch)
        self.assertIn("  give-ups 0  refused 0 ", watch.lines[-1])
        self.assertEqual([], watch.errors, watch)
        (root / SHARED).unlink()
        self.fails(1, "watch", f"cannot read {root}/{SHARED}: No such file or directory$")
