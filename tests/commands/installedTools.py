"""What is installed into an empty folder needs nothing else to watch the simulated PLC."""

import subprocess

from commandLine import CommandLineTest
from tagTables import DEMO_TAGS

SHARED = "share/quorvane-ka-kb/tags.csv"


class InstalledTools(CommandLineTest):
    """What cmake installs."""

    def test_installed_tools_work_by_themselves(self):
        """With the tag file gone, which the tools' own package brings, the file is named. The
        driver is found in the folder for its Qt: the plain name may lead to another Qt's."""
        root = self.folder / "root"
        subprocess.run(["cmake", "--install", self.programs.parent, "--prefix", root],
                       check=True, stdout=subprocess.DEVNULL)
        for library in root.glob("lib*/**/libquorvane_ka_kb_plc*"):
            if library.parent.parent.name != "quorvane-ka-kb":
                library.unlink()
        self.assertEqual(DEMO_TAGS.read_bytes(), (root / SHARED).read_bytes())
        for tool in ("kakb-host", "kakb-sim", "kakb-station"):
            self.assertTrue((root / f"share/man/man1/{tool}.1").read_text("utf-8"))
            self.assertTrue((root / "share/bash-completion/completions" / tool).read_text("utf-8"))

        self.programs = root / "bin"
        watch = self.watching("", "  fill level  IW0 = [0-9]+$", "  speed of line 2  2:QW40 = 0$")
        self.end(watch)
        self.assertIn("  give-ups 0  refused 0 ", watch.lines[-1])
        self.assertEqual([], watch.errors, watch)
        (root / SHARED).unlink()
        self.fails(1, "watch", f"cannot read {root}/{SHARED}: No such file or directory$")
