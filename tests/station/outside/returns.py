"""What was gone comes back: how soon the station uses it again."""

import time

from plcControl import PlcControl
from stationProgram import StationTest

RETURN_S = 10
SILENCE_S = 7  # with a time-out of 1 s a probe has failed, so that the pauses grow


class Returns(StationTest):
    """A PLC that answers nothing for a while."""

    def test_a_silent_station_that_answers_again_is_good_within_10_s(self):
        _, served = self.station_with_plc("still", kind="pty", options="--timeout-ms 1000",
                                          plc="--control control")
        control = PlcControl(self.folder / "control")
        self.addCleanup(control.close)
        served.await_good()
        control.command("silent 1 on")
        served.await_values(lambda values: values["still"]["quality"] == "bad")
        time.sleep(SILENCE_S)
        control.command("silent 1 off")
        served.await_good(RETURN_S)
