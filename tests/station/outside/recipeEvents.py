"""What the stream tells of a recipe on its way, beside the answer to who asked for it."""

import json

from httpClient import request_bytes
from plcControl import PlcControl
from stationProgram import StationTest

ROWS = 400
APART = 8  # bytes: each row is a block of its own
RECIPE = "/api/v1/recipes/"


class RecipeEvents(StationTest):
    """Long recipes, so that their progress is told."""

    def setUp(self):
        super().setUp()
        rows = [f"w{word},1,MW,{APART * word},uint16,rw,60m" for word in range(ROWS)]
        self.file("tags.csv", "\n".join(["name,station,area,address,type,access,rate", *rows, ""]))
        # On a line of this speed 400 requests take more than a second.
        self.simulator = self.plc("pty", "--control control --baud 38400")
        self.control = self.keep(PlcControl(self.folder / "control"))
        self.served = self.station(
            f"--link {self.simulator.link} --tags tags.csv --allow-writes --no-history")
        self.served.await_good(60)

    def rows(self, value):
        """All rows with one value."""
        return [{"name": f"w{word}", "station": 1, "area": "MW", "address": str(APART * word),
                 "type": "uint16", "value": value} for word in range(ROWS)]

    def transferred(self, kind, **document):
        """The answer to a recipe, and its events."""
        with self.served.events() as stream:
            answer = self.served.post(RECIPE + kind, {"link": "plc", **document})
            self.assertEqual(200, answer.status, answer)
            events = [stream.next("recipe")["data"]]
            while "outcome" not in events[-1]:
                events.append(stream.next("recipe")["data"])
        return answer.json, events

    def assert_progress(self, events, kind):
        """The events count up the blocks of one recipe, and end with its end."""
        *ways, end = events
        self.assertGreater(len(ways), 2)
        self.assertEqual({("plc", kind, end["id"])},
                         {(way["link"], way["kind"], way["id"]) for way in events})
        done = [way["done"] for way in ways]
        self.assertEqual(sorted(set(done)), done)
        [blocks] = {way["blocks"] for way in ways}
        self.assertLessEqual(done[-1], blocks)
        return blocks

    def test_a_download_that_is_verified_tells_both_its_ways_in_order(self):
        answer, events = self.transferred("download", rows=self.rows(5), verify=True)
        self.assertEqual(("done", []), (answer["outcome"], answer["differences"]))
        blocks = self.assert_progress(events, "download")
        self.assertGreater(max(way["done"] for way in events[:-1]), ROWS)  # it reads back, too
        self.assertGreater(blocks, ROWS)
        self.assertEqual(("done", None, None, ROWS, 0), tuple(
            events[-1][key] for key in ("outcome", "block", "reason", "rows", "differences")))

    def verified_while(self, value, blocks, command):
        """Downloads with verification, and sends the simulated PLC a command once more than so many
        blocks are done; returns the answer and the last event."""
        with self.served.events() as stream, self.served.connect() as connection:
            body = json.dumps({"link": "plc", "rows": self.rows(value), "verify": True}).encode()
            connection.send(request_bytes("POST", RECIPE + "download", {
                "Host": self.served.authority, "Content-Type": "application/json", "X-Kakb": "1",
                "Content-Length": len(body)}, body))
            event = stream.next("recipe")["data"]
            while event["done"] <= blocks:
                event = stream.next("recipe")["data"]
            self.control.command(command)
            while "outcome" not in event:
                event = stream.next("recipe")["data"]
            return connection.answer().json, event

    def test_a_download_whose_values_are_others_when_read_back_differs(self):
        """The program of the PLC takes one value back while others are still written."""
        answer, end = self.verified_while(7, 8, f"set MW{APART}=1234")
        self.assertEqual(("differs", None, None), tuple(
            answer[key] for key in ("outcome", "block", "reason")))
        self.assertEqual([{"name": "w1", "expected": 7, "found": 1234}], answer["differences"])
        self.assertEqual(("differs", None, None, 1), tuple(
            end[key] for key in ("outcome", "block", "reason", "differences")))

    def test_a_failure_names_the_block_in_the_answer_and_in_the_event(self):
        place = APART * (ROWS - 50)
        self.control.command(f"refuse MW{place}..MW{place}:2:write")
        answer, events = self.transferred("download", rows=self.rows(9), verify=True)
        self.assertEqual("failed", answer["outcome"])
        self.assertEqual((f"MW{place} of station 1", []), (answer["block"], answer["differences"]))
        self.assertIn("illegal address", answer["reason"])
        self.assert_progress(events, "download")
        self.assertEqual(tuple(answer[key] for key in ("outcome", "block", "reason")),
                         tuple(events[-1][key] for key in ("outcome", "block", "reason")))
        self.assertLess(max(way["done"] for way in events[:-1]), ROWS)

    def test_a_failure_of_the_reading_says_that_the_values_are_written(self):
        place = APART * (ROWS - 1)
        answer, _ = self.verified_while(11, ROWS, f"refuse MW{place}..MW{place}")
        self.assertEqual(("failed", []), (answer["outcome"], answer["differences"]))
        self.assertIn(f"MW{place}", answer["block"])
        self.assertTrue(answer["reason"].startswith(
            "all values are written, but could not be read back: "), answer)
        self.assertEqual("11", self.control.command(f"get MW{place}"))
