"""Trouble with the history's file never reaches the links, and ends by itself."""

import csv
import io
import sqlite3
import time

from commandLine import without_powers
from processes import PATIENCE_S, eventually, wait_until
from stationProgram import Station, StationTest

BETWEEN_TRIES_S = 10  # the station opens the file anew so often
TROUBLE = "the history is not written: "
WRITTEN = "the history is written again"


class HistoryTrouble(StationTest):
    """A station that writes a tag while its history cannot be written."""

    def started(self, prefix=()):
        """A station that keeps the history of "still" in the folder "state"."""
        self.tags("still")
        return self.keep(Station(
            [*prefix, self.programs / "kakb-station", "--listen", "127.0.0.1:0", "--state", "state",
             "--allow-writes", "--link", self.plc("tcp").link, "--tags", "tags.csv"], self.folder))

    @staticmethod
    def write(station, value):
        """Writes the tag; the value is read back from the PLC."""
        answer = station.post("/api/v1/write", {"link": "plc", "tag": "still", "value": value})
        assert answer.json["outcome"] == "confirmed", answer.json
        station.await_values(lambda values: values["still"]["value"] == value and
                             values["still"]["quality"] == "good")

    @staticmethod
    def reasons(station):
        """Why the station is not healthy, as far as the history is the reason."""
        return [reason for reason in station.get("/healthz").json["reasons"]
                if reason.startswith(TROUBLE)]

    @staticmethod
    def good_values(station):
        """The good values of the history, in the order of time."""
        answer = station.get("/api/v1/history.csv?link=plc")
        rows = csv.reader(io.StringIO(answer.body.decode(), newline=""))
        return [row[3] for row in rows if row[4] == "good"]

    @staticmethod
    def told(station, part):
        """The lines on standard error that have this part."""
        return [line for line in station.errors if part in line]

    def await_trouble(self, station):
        """The trouble comes; the links go on before it is known and behind that."""
        self.write(station, 2)
        self.assertTrue(eventually(lambda: self.reasons(station)), station)
        self.write(station, 3)

    def await_end(self, station):
        """The trouble has ended by itself, and was told once."""
        self.assertTrue(eventually(lambda: not self.reasons(station),
                                   BETWEEN_TRIES_S + PATIENCE_S), station)
        # It is told behind the change of the reasons.
        self.assertTrue(eventually(lambda: self.told(station, WRITTEN)), station)
        self.assertEqual((1, 1), (len(self.told(station, TROUBLE)),
                                  len(self.told(station, WRITTEN))), station)

    def test_read_only_folder(self):
        """Somebody takes the file away, and the right to make another."""
        station = self.started(without_powers("dac_override"))
        station.await_good()
        folder = self.folder / "state"
        # Rows of the commit that is under way go with the file.
        self.assertTrue(eventually(lambda: self.good_values(station) == ["0"]), station)
        folder.chmod(0o500)
        self.addCleanup(folder.chmod, 0o700)
        (folder / "history.sqlite").unlink()
        self.await_trouble(station)
        wait_until(time.monotonic() + 1.2 * BETWEEN_TRIES_S)  # it fails again, and says no more
        folder.chmod(0o700)
        self.await_end(station)
        self.assertTrue(eventually(lambda: self.good_values(station)[-2:] == ["2", "3"]),
                        self.good_values(station))

    def test_lock_of_another_program(self):
        """Another program locks the database for longer than a write waits."""
        station = self.started()
        station.await_good()
        self.write(station, 1)
        self.assertTrue(eventually(lambda: self.good_values(station) == ["0", "1"]), station)
        other = sqlite3.connect(self.folder / "state" / "history.sqlite", isolation_level=None)
        try:
            other.execute("BEGIN EXCLUSIVE")
            self.await_trouble(station)
            other.execute("ROLLBACK")
        finally:
            other.close()
        self.await_end(station)
        self.assertTrue(eventually(lambda: self.good_values(station) == ["0", "1", "2", "3"]),
                        self.good_values(station))
