"""The folder of the station's state: where it lies, who may enter it, and that one station has it.
"""

import shlex
import signal

from stationProgram import Station, StationTest


class StateFolders(StationTest):
    """Stations with folders of their own or of another."""

    def started(self, environment, options=""):
        """A station that finds its folder from the environment alone."""
        words = ["env", "-u", "STATE_DIRECTORY", "-u", "XDG_STATE_HOME", *shlex.split(environment),
                 self.programs / "kakb-station", "--listen", "127.0.0.1:0", *shlex.split(options)]
        return self.keep(Station(words, self.folder))

    def test_the_folder_comes_from_the_environment(self):
        home, state, service = (self.folder / name for name in ("home", "state", "service"))
        for environment, folder in (
                (f"HOME={home}", home / ".local/state/kakb-station"),
                (f"HOME={home} XDG_STATE_HOME={state}", state / "kakb-station"),
                (f"HOME={home} XDG_STATE_HOME={state} STATE_DIRECTORY={service}", service)):
            with self.subTest(environment=environment):
                self.assertEqual(0, self.started(environment).end())
                self.assertEqual(0o700, folder.stat().st_mode & 0o7777)

    def test_a_second_station_on_the_folder_is_refused(self):
        first = self.station("--state shared")
        sentences = self.refused("--listen 127.0.0.1:0 --state shared", 4)
        self.assertEqual(["the state folder shared: another kakb-station uses it; give each a "
                          "folder of its own with --state"], sentences)
        first.await_good()

    def test_a_killed_station_leaves_the_folder_to_the_next(self):
        self.station("--state shared").end(signal.SIGKILL)
        self.station("--state shared").await_good()

    def test_without_history_no_folder_is_made(self):
        station = self.started(f"HOME={self.folder / 'home'}", "--no-history")
        self.assertEqual(0, station.end())
        self.assertFalse((self.folder / "home").exists())

    def test_a_folder_that_cannot_be_made_is_said(self):
        self.file("file", "")
        sentences = self.refused("--listen 127.0.0.1:0 --state file/folder", 4)
        self.assertEqual(["the state folder file/folder: cannot make it: Not a directory"],
                         sentences)
