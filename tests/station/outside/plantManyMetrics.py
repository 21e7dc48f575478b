"""A station with a hundred thousand metrics at a Mosquitto."""

import re
import time
from pathlib import Path
from statistics import median

from plantTest import PlantTest
from processes import SLOWER, eventually
from sparkplugMessages import command, payload_of

BIRTHS_S = 60  # of very many tags on a busy machine


class PlantManyMetrics(PlantTest):
    """A station with very many tags."""

    TAGS, LINKS = 25000, 4
    REBIRTHS = 8
    REBIRTH_S = 5 * SLOWER  # from the request to the last birth at a subscriber
    MOST_KB = 400 * 1024 * SLOWER
    GROWTH_KB = 1024 * SLOWER  # a kept message of a birth alone has more

    def setUp(self):
        super().setUp()
        self.at = self.broker()
        words = self.TAGS // 16
        self.file("tags.csv", "name,station,area,address,type\n" + "".join(
            f"b{word}.{bit},1,MX,{2 * word + bit // 8}.{bit % 8},bool\n"
            for word in range(words + 1) for bit in range(16)))
        links = "".join(f'[[link]]\nname = "l{number}"\nlink = "sim"\ntags = "tags.csv"\n'
                        for number in range(self.LINKS))
        self.file("station.toml", f'listen = "127.0.0.1:0"\n[mqtt]\nservers = ["{self.at.url}"]\n'
                                  f"{links}")
        self.devices, self.count = {f"l{number}-1" for number in range(self.LINKS)}, 16 * (words + 1)

    def test_births_of_a_hundred_thousand_metrics_hold_each_value(self):
        host = self.host_at(self.at)
        self.station("--config station.toml")
        host.await_that(lambda host: self.devices == host.born, BIRTHS_S)
        for kind, device, payload, _ in host.messages:
            if kind == "DBIRTH":
                self.assertEqual(self.count, len({metric.alias for metric in payload.metrics}), device)
        host.await_that(lambda host: sum(quality == "good" for (device, _), (_, quality)
                                         in host.values.items() if device) == self.count * self.LINKS,
                        BIRTHS_S)

    def test_births_of_a_hundred_thousand_metrics_that_are_asked_for_again_take_no_more_memory(self):
        births = self.subscriber(self.at, "spBv1.0/kakb/DBIRTH/#")
        station = self.station("--config station.toml")
        self.await_births(births, station, 1, BIRTHS_S)
        station.await_good(BIRTHS_S)
        sizes, taken = [], []
        for number in range(self.REBIRTHS):
            births.client.publish("spBv1.0/kakb/NCMD/kakb-station", command(
                "Node Control/Rebirth", datatype=11, boolean_value=True)).wait_for_publish()
            began = time.monotonic()
            self.await_births(births, station, number + 2, BIRTHS_S)
            taken.append(time.monotonic() - began)
            sizes.append(resident_kb(station.process.pid))
        self.assertEqual(1, self.standing(station)["sessions"])
        self.assertLess(min(taken), self.REBIRTH_S, taken)  # a busy machine makes single ones late
        self.assertLess(max(sizes), self.MOST_KB)
        # What is kept of each rebirth shows in each growth, a heap that found its size in one or two.
        growths = [after - before for before, after in zip(sizes[1:], sizes[2:])]
        self.assertLess(median(growths), self.GROWTH_KB, sizes)
        for message in births.messages[-self.LINKS:]:
            self.assertEqual(self.count, len(payload_of(message.payload).metrics), message.topic)

    def await_births(self, births, station, number, seconds):
        """Waits until each device was born so often."""
        self.assertTrue(eventually(lambda: len(births.messages) >= number * self.LINKS, seconds),
                        f"{len(births.messages)} births, not {number} of each device\n{station}")


def resident_kb(pid):
    """How much memory a process has."""
    text = Path(f"/proc/{pid}/status").read_text("utf-8")
    return int(re.search(r"^VmRSS:\s+(\d+) kB$", text, re.M).group(1))
