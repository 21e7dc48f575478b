"""Recipes through the API, beside the simulated PLC's memory."""

from stationProgram import StationTest
from tagTables import TAGS

KEYS = ["outcome", "block", "reason", "differences", "rows"]
ROW_KEYS = ("name", "station", "area", "address", "type")


def row(name, value=None):
    """A row of a recipe that lies where the tag of this name lies."""
    fields = {key: field if key == "station" else str(field)
              for key, field in zip(ROW_KEYS, (name, *TAGS[name]))}
    return fields if value is None else {**fields, "value": value}


class ApiRecipes(StationTest):
    """POST /api/v1/recipes/download, /upload and /compare."""

    def transferred(self, served, kind, rows, **further):
        """The answer to a recipe."""
        return served.post(f"/api/v1/recipes/{kind}", {"link": "plc", "rows": rows, **further})

    def test_a_download_is_in_the_plc_and_an_upload_brings_it_back(self):
        plc, served = self.station_with_plc("still", "offset", "level", "lamp",
                                            options="--allow-writes")
        served.await_good()
        values = {"still": 4711, "offset": -5, "level": 21.5, "lamp": True}
        rows = [row(name, value) for name, value in values.items()]
        answer = self.transferred(served, "download", rows, verify=True)
        self.assertEqual((200, KEYS), (answer.status, list(answer.json)))
        self.assertEqual({"outcome": "done", "block": None, "reason": None, "differences": [],
                          "rows": []}, answer.json)
        self.assertEqual(values, {
            name: value["value"] for name, value in served.values().items()})
        answer = self.transferred(served, "upload", [row(name) for name in values])
        self.assertEqual(("done", rows), (answer.json["outcome"], answer.json["rows"]))
        served.end()
        plc.stop()
        # 21.5 is 0x41AC0000, MX12.3 is bit 3 of the word at MW12.
        self.assertEqual(["1 MW 3006 8", "1 MW 3050 4711", "1 MW 3055 65531", "1 MW 3060 16812"],
                         sorted(plc.memory()))

    def test_a_comparison_names_each_difference_and_writes_nothing(self):
        _, served = self.station_with_plc("still", "offset", plc="--set MW100=7")
        served.await_good()
        answer = self.transferred(served, "compare", [row("still", 8), row("offset", 0)])
        self.assertEqual(
            (200, "differs", [{"name": "still", "expected": 8, "found": 7}]),
            (answer.status, answer.json["outcome"], answer.json["differences"]))
        answer = self.transferred(served, "compare", [row("still", 7), row("offset", 0)])
        self.assertEqual(("done", []), (answer.json["outcome"], answer.json["differences"]))

    def test_a_failure_names_the_block(self):
        _, served = self.station_with_plc("still", "mode", options="--allow-writes",
                                          plc="--refuse MW300:2:write")
        served.await_good()
        answer = self.transferred(served, "download", [row("still", 1), row("mode", 2)])
        self.assertEqual((200, "failed"), (answer.status, answer.json["outcome"]))
        self.assertIn("MW300", answer.json["block"])
        self.assertIn("illegal address", answer.json["reason"])

    def test_a_download_writes_only_where_a_tag_may_be_written(self):
        _, served = self.station_with_plc("still", "mode", options="--allow-writes",
                                          read_only=("mode",))
        for name in ("mode", "offset"):
            with self.subTest(name=name):
                answer = self.transferred(served, "download", [row("still", 1), row(name, 1)])
                self.assertEqual(403, answer.status)
                self.assertIn(f'row 2 "{name}"', answer.error)
        self.assertEqual(200, self.transferred(served, "upload", [row("offset")]).status)

    def test_a_station_without_leave_downloads_nothing(self):
        plc, served = self.station_with_plc("still")
        self.assertEqual(403, self.transferred(served, "download", [row("still", 1)]).status)
        self.assertEqual(200, self.transferred(served, "upload", [row("still")]).status)
        plc.stop()
        self.assertEqual([], plc.memory())

    def test_a_wrong_row_is_named(self):
        _, served = self.station_with_plc("still", options="--allow-writes")
        for wrong, status in (({"station": 0}, 422), ({"area": "IW"}, 422), ({"area": "?"}, 422),
                              ({"address": "101"}, 422), ({"type": "word"}, 422),
                              ({"value": "5"}, 422), ({"value": 70000}, 422), ({"name": ""}, 422),
                              ({"station": "1"}, 400), ({"rate": "1s"}, 400)):
            with self.subTest(wrong=wrong):
                answer = self.transferred(served, "download", [{**row("still", 1), **wrong}])
                self.assertEqual(status, answer.status)
                self.assertIn("row 1", answer.error)
        self.assertEqual(422, self.transferred(
            served, "download", [row("still", 1), row("still", 1)]).status)
        self.assertEqual(413, self.transferred(
            served, "download", [row("still", 1)] * 1000).status)
