"""The documents of the station and of its values, beside the simulated PLC's memory."""

import time

from stationProgram import StationTest

LINK_KEYS = ["name", "link", "state", "since", "trouble", "exchanges", "retries", "giveUps",
             "refused", "losses", "replyP50", "replyP99", "wire", "stations"]
VALUE_KEYS = ["link", "tag", "station", "address", "type", "value", "quality", "time", "changed",
              "trouble", "writable"]


class ApiDocuments(StationTest):
    """GET /api/v1/station and GET /api/v1/values."""

    def test_the_station_names_itself_and_its_links(self):
        before = time.time() * 1000
        _, served = self.station_with_plc("still", "speed")
        served.await_good()
        document = served.get("/api/v1/station").json
        self.assertEqual(["name", "version", "started", "writes", "links"], list(document))
        self.assertIs(False, document["writes"])
        self.assertLessEqual(before - 1000, document["started"])
        self.assertLessEqual(document["started"], time.time() * 1000)
        [link] = document["links"]
        self.assertEqual(LINK_KEYS, list(link))
        self.assertEqual(("plc", "up", 0, 0, 0), (
            link["name"], link["state"], link["retries"], link["giveUps"], link["losses"]))
        self.assertLessEqual(document["started"] - 1000, link["since"])
        self.assertIsNone(link["wire"])  # a network has no wire of its own
        self.assertIsNone(link["trouble"])
        [station] = link["stations"]
        self.assertEqual(["station", "state", "since", "trouble"], list(station))
        self.assertEqual((1, "answers", None), (
            station["station"], station["state"], station["trouble"]))

    def test_a_lost_link_and_a_silent_station_say_why(self):
        simulator, served = self.station_with_plc("still", "total", options="--timeout-ms 200")
        served.await_values(lambda values: values["still"]["quality"] == "good"
                            and "station 2" in (values["total"]["trouble"] or ""))
        [link] = served.get("/api/v1/station").json["links"]
        answering, silent = link["stations"]
        self.assertEqual(("up", None, None), (
            link["state"], link["trouble"], answering["trouble"]))
        self.assertEqual(("silent", served.values()["total"]["trouble"]), (
            silent["state"], silent["trouble"]))
        simulator.kill()
        served.await_values(lambda values: values["still"]["quality"] == "bad")
        [link] = served.get("/api/v1/station").json["links"]
        self.assertEqual("lost", link["state"])
        self.assertEqual([f"link lost: {link['trouble']}"] * 2, [
            station["trouble"] for station in link["stations"]])
        self.assertEqual(f"link lost: {link['trouble']}", served.values()["still"]["trouble"])

    def test_a_refusal_of_the_plc_counts(self):
        _, served = self.station_with_plc("still", "mode", plc="--refuse MW300")
        served.await_values(lambda values: values["mode"]["quality"] == "bad"
                            and values["still"]["quality"] == "good")
        [link] = served.get("/api/v1/station").json["links"]
        self.assertLess(0, link["refused"])

    def test_values_are_those_of_the_plc_with_the_digits_of_their_type(self):
        _, served = self.station_with_plc(
            "still", "offset", "lamp", plc="--set MW100=65535 --set MW110=65534 --set MX12.3=1",
            options="--allow-writes", read_only=("offset",))
        values = served.await_good()
        self.assertEqual({"still": 65535, "offset": -2, "lamp": True}, {
            name: value["value"] for name, value in values.items()})
        self.assertEqual({"still": True, "offset": False, "lamp": True}, {
            name: value["writable"] for name, value in values.items()})

    def test_a_value_has_its_place_quality_and_times(self):
        _, served = self.station_with_plc("level")
        value = served.await_good()["level"]
        self.assertEqual(VALUE_KEYS, list(value))
        self.assertEqual(("plc", "level", 1, "MW120", "float32:high", 0, "good", None, False), (
            *(value[key] for key in VALUE_KEYS[:7]), value["trouble"], value["writable"]))
        now = time.time() * 1000
        self.assertLess(now - 3000, value["time"])
        self.assertLessEqual(value["changed"], value["time"])
        self.assertLessEqual(value["time"], now)

    def test_values_are_chosen_by_link_and_tag(self):
        _, served = self.station_with_plc("still", "level")
        self.assertEqual(["level"], [
            value["tag"] for value in served.get("/api/v1/values?link=plc&tag=level").json])
        self.assertEqual(["still", "level"], [
            value["tag"] for value in served.get("/api/v1/values?link=plc").json])
        for query in ("link=nothing", "tag=nothing", "link=plc&tag=", "link=PLC"):
            with self.subTest(query=query):
                self.assertEqual(200 if query.endswith("tag=") else 404,
                                 served.get(f"/api/v1/values?{query}").status)
