"""A station that was stopped and goes on: it does not take old bytes for a new answer."""

import signal
import time

from stationProgram import StationTest

STOPS = 5
ANSWER_MS = 80
LIMIT_S = 2


class StoppedStation(StationTest):
    """The PLC answers late, so that a request is under way nearly all the time."""

    def test_answer_that_came_during_a_stop_is_as_old_as_the_stop(self):
        """The answer comes while the station is stopped; then the PLC is stopped, too."""
        plc, station = self.station_with_plc(
            "level", options="--pace 0", plc=f"--delay 1 --delay-ms {ANSWER_MS}")
        for _ in range(STOPS):
            station.await_good()
            station.process.send_signal(signal.SIGSTOP)
            time.sleep(3 * ANSWER_MS / 1000)
            plc.run.process.send_signal(signal.SIGSTOP)
            time.sleep(LIMIT_S)
            station.process.send_signal(signal.SIGCONT)
            try:
                until = time.monotonic() + 0.3
                while time.monotonic() < until:
                    found = station.values()
                    self.assertEqual([], [value for value in found.values()
                                          if value["quality"] == "good"])
            finally:
                plc.run.process.send_signal(signal.SIGCONT)
