"""A value that stays while its quality alone changes: what both dialects say, and of which time."""

import time

from plantTest import DEVICE, PlantTest
from retainedTopics import RetainedTopics

STILL = "MW100"  # of the tag "still"
CYCLE_MS = 100  # a value is as old as its answer can be: as the wait for it, and the pace
LIMIT_MS = 2000  # a value without an answer is good so long
# The station waits longer for an answer than a value stays good.
PATIENT = "--timeout-ms 4000 --mqtt-dialect sparkplug,json"


class PlantQualities(PlantTest):
    """One broker, one PLC, and one who listens to each dialect."""

    def setUp(self):
        super().setUp()
        broker = self.broker()
        self.host = self.host_at(broker)
        self.topics = self.keep(RetainedTopics(broker.port))
        _, self.at = self.publisher(broker.url, PATIENT)
        self.control.command(f"set {STILL}=41")
        self.await_both("good")

    def await_both(self, quality):
        """Waits until both say it, of the value that stays."""
        self.host.await_that(lambda host: host.value(DEVICE, "still") == (41, quality))
        self.topics.await_state("plc/still", 41, quality)

    def change_to(self, quality):
        """Waits until both tell the change, the edge node by DDATA; returns the two times."""
        self.await_both(quality)
        with self.host.lock:
            told = [one for one in self.host.samples
                    if one.name == "still" and not one.is_historical][-1]
        self.assertFalse(told.is_birth)
        return told.time, self.topics.kept["plc/still"]["t"]

    def test_a_value_that_grows_old_is_told_with_the_time_at_which_it_did(self):
        self.control.command("silent 1 on")
        told = self.change_to("stale")
        answered = self.at.values()["still"]["time"]
        self.assertEqual((answered + LIMIT_MS,) * 2, told)
        before = time.time() * 1000
        self.control.command("silent 1 off")
        told = self.change_to("good")
        self.assertEqual(told[0], told[1])
        self.assertLessEqual(before - CYCLE_MS, told[0])
        self.assertNotIn(f"DDEATH {DEVICE}", self.host.kinds())

    def test_a_value_that_the_plc_refuses_is_bad_from_then_on_and_good_from_its_next_answer(self):
        times = []
        for change, quality in (("refuse 1:MW100", "bad"), ("refuse none", "good")):
            before = time.time() * 1000
            self.control.command(change)
            told = self.change_to(quality)
            self.assertEqual(told[0], told[1])
            self.assertLessEqual(before - CYCLE_MS, told[0])
            self.assertLessEqual(told[0], time.time() * 1000)
            times.append(told[0])
        self.assertLessEqual(times[0], times[1])
        self.assertNotIn(f"DDEATH {DEVICE}", self.host.kinds())
