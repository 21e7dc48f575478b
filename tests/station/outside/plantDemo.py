"""The demo of a plant, as ./demo.sh --plant runs it."""

import subprocess
from pathlib import Path

from commandLine import PROGRAMS
from processes import PATIENCE_S, eventually
from stationProgram import StationTest

DEMO = Path(__file__).resolve().parents[3] / "demo" / "plant.sh"
SHOWN_S = 1


def running(session):
    """The processes of a session, without those that have ended and that nobody asked for yet."""
    return subprocess.run(["pgrep", "-a", "-r", "DRSTt", "-s", str(session)], check=False, text=True,
                          stdout=subprocess.PIPE).stdout


class PlantDemo(StationTest):
    """Two stations, a broker and a subscriber that prints."""

    def test_prints_what_both_stations_say_and_ends_by_itself_with_all_that_it_started(self):
        run = subprocess.Popen([DEMO, PROGRAMS, str(SHOWN_S)], cwd=self.folder, text=True,
                               env={"PATH": "/usr/bin:/bin", "TMPDIR": str(self.folder),
                                    "LC_ALL": "C.UTF-8"},
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True)
        with run:
            printed, _ = run.communicate(timeout=3 * PATIENCE_S)
        self.assertEqual(0, run.returncode, printed)
        for node in ("mixer", "press"):
            for line in (f"kakb/{node}/status online", f"kakb/{node}/plc/1/availability online",
                         f"kakb/{node}/plc/setpoint {{", f"kakb/{node}/status offline"):
                self.assertIn(line, printed)
        self.assertTrue(eventually(lambda: not running(run.pid)), running(run.pid))
        self.assertEqual([], list(self.folder.iterdir()), "files of the demo are left")
