"""Turns of tags and returns of links, with the times that a running station has for them."""

import time

from plcControl import PlcControl
from processes import SLOWER, eventually
from stationProgram import StationTest
from tcpRelay import TcpRelay

TAGS = """name,station,area,address,type,rate
fast,1,MW,0,uint16,fast
slow,1,MW,400,uint16,10s
once,1,MW,800,uint16,once
"""
AWAY_S = 17  # so long that pauses that double without a bound are beyond BACK_S
BACK_S = 10


class TurnsOfTags(StationTest):
    """The rates of a tag file decide how old a good value may be."""

    def test_only_the_tag_whose_turn_was_missed_is_stale(self):
        plc = self.plc("tcp", "--control control")
        self.file("tags.csv", TAGS)
        control = self.keep(PlcControl(self.folder / "control"))
        # The wait for an answer is so long that the PLC never counts as silent.
        served = self.station(f"--link {plc.link} --tags tags.csv --timeout-ms 20000")
        served.await_good()
        control.command("stall 5")
        values = served.await_values(lambda found: found["fast"]["quality"] != "good")
        self.assertEqual({"fast": "stale", "slow": "good", "once": "good"},
                         {name: value["quality"] for name, value in values.items()})
        served.await_good()


class LinkThatComesBack(StationTest):
    """A lost link."""

    def test_is_up_within_ten_seconds(self):
        plc = self.plc("tcp")
        relay = self.keep(TcpRelay(("127.0.0.1", plc.port)))
        self.file("tags.csv", TAGS)
        served = self.station(f"--link tcp:127.0.0.1,{relay.port} --tags tags.csv")

        def state():
            return served.get("/api/v1/station").json["links"][0]["state"]
        served.await_good()
        relay.cut()
        self.assertTrue(eventually(lambda: state() == "lost"))
        time.sleep(AWAY_S)
        relay.resume()
        self.assertTrue(eventually(lambda: state() == "up", BACK_S * SLOWER))
        served.await_good()
