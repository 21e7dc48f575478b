"""What monitoring asks for, read by a parser that is not ours."""

import json

from stationProgram import StationTest
from tagTables import table

try:
    from prometheus_client.openmetrics.parser import text_string_to_metric_families
except ImportError:
    text_string_to_metric_families = None

MEDIA_TYPE = "application/openmetrics-text; version=1.0.0; charset=utf-8"

DELAY_S = 0.03


class ApiMonitoring(StationTest):
    """GET /metrics and GET /healthz."""

    def metrics(self, served):
        """The samples, (name, labels) to value, and the families' types."""
        if text_string_to_metric_families is None:
            self.skipTest("python3-prometheus-client is not installed")
        answer = served.get("/metrics")
        self.assertEqual((200, MEDIA_TYPE), (answer.status, answer.headers["content-type"]))
        self.assertTrue(answer.body.endswith(b"\n# EOF\n"))
        families = list(text_string_to_metric_families(answer.body.decode()))
        samples = {(sample.name, frozenset(sample.labels.items())): sample.value
                   for family in families for sample in family.samples}
        return samples, {family.name: family.type for family in families}

    def test_the_metrics_are_valid_and_named_after_the_program(self):
        _, served = self.station_with_plc("still", "mode", options="--allow-writes",
                                          plc="--refuse MW300")
        served.await_values(lambda values: values["mode"]["quality"] == "bad"
                            and values["still"]["quality"] == "good")
        served.post("/api/v1/write", {"link": "plc", "tag": "still", "value": 5})
        samples, types = self.metrics(served)
        self.assertTrue(all(name.startswith("kakb_") for name in types))
        for name in ("exchanges", "retries", "give_ups", "refusals", "losses", "writes",
                     "history_dropped_rows"):
            self.assertEqual("counter", types[f"kakb_{name}"], name)
        for name in ("link_up", "wire_share", "station_answers", "tags", "clients",
                     "history_rows"):
            self.assertEqual("gauge", types[f"kakb_{name}"], name)
        self.assertEqual("histogram", types["kakb_reply_time_seconds"])
        link = frozenset({"link": "plc"}.items())
        self.assertLess(0, samples["kakb_exchanges_total", link])
        self.assertLess(0, samples["kakb_refusals_total", link])
        self.assertEqual(1, samples["kakb_link_up", link])
        self.assertEqual(
            samples["kakb_reply_time_seconds_count", link],
            samples["kakb_reply_time_seconds_bucket",
                    frozenset({"link": "plc", "le": "+Inf"}.items())])
        self.assertEqual({"confirmed": 1, "refused": 0, "failed": 0}, {
            outcome: samples["kakb_writes_total", frozenset({"outcome": outcome}.items())]
            for outcome in ("confirmed", "refused", "failed")})
        self.assertEqual({"good": 1, "stale": 0, "bad": 1}, {
            quality: samples["kakb_tags", frozenset(
                {"link": "plc", "station": "1", "quality": quality}.items())]
            for quality in ("good", "stale", "bad")})
        self.assertLessEqual(1, samples["kakb_clients", frozenset()])

    def test_names_with_quotes_and_backslashes_come_back_from_the_parser(self):
        tags = ['a "b" c', "back\\slash", "\\n is no line feed\\", "{x=\"1\",} 2", "caf\u00e9 \u2028"]
        links = ['press "7"', "C:\\new", "a\\\\n\\", "} 1 # EOF"]
        rows = [('"' + name.replace('"', '""') + '"', 1, "MW", 10 * number, "uint16")
                for number, name in enumerate(tags)]
        self.file("tags.csv", table(rows))
        self.file("station.toml", 'listen = "127.0.0.1:0"\n' + "".join(
            f"[[link]]\nname = {json.dumps(name)}\nlink = {json.dumps(self.plc('tcp').link)}\n"
            'tags = "tags.csv"\n' for name in links))
        served = self.station("--config station.toml")
        served.await_that(lambda: served.get("/healthz").status == 200)
        samples, _ = self.metrics(served)
        self.assertEqual(links, [link["name"] for link in served.get("/api/v1/station").json["links"]])
        self.assertEqual(set(links), {dict(labels)["link"] for name, labels in samples
                                      if name == "kakb_link_up"})
        for link in links:
            self.assertEqual(len(tags), self.tags_of(samples, link, "1", "good"), link)

    @staticmethod
    def tags_of(samples, link, station, quality):
        """The number of tags of a station that have the quality."""
        return samples["kakb_tags", frozenset(
            {"link": link, "station": station, "quality": quality}.items())]

    def test_the_bounds_of_the_reply_times_count_up(self):
        _, served = self.station_with_plc("still", plc=f"--delay 0.5 --delay-ms {1000 * DELAY_S:.0f}")
        served.await_good()
        served.await_that(lambda: served.get("/api/v1/station").json["links"][0]["exchanges"] > 20)
        text = self.text(served)
        samples, _ = self.metrics(served)
        bounds = {dict(labels)["le"]: value for (name, labels), value in samples.items()
                  if name == "kakb_reply_time_seconds_bucket"}
        counts = [bounds[bound] for bound in sorted(bounds, key=float)]
        self.assertEqual(sorted(counts), counts)
        self.assertEqual("+Inf", sorted(bounds, key=float)[-1])
        self.assertGreater(len(set(counts)), 1, bounds)  # quick answers and late ones
        below = max((bound for bound in bounds if float(bound) < DELAY_S), key=float)
        late = counts[-1] - bounds[below]
        self.assertGreater(late, 0)
        [total] = [value for (name, _), value in samples.items()
                   if name == "kakb_reply_time_seconds_sum"]
        self.assertLess(late * float(below), total)
        self.assertEqual(1, text.count("# EOF"))
        self.assertTrue(text.endswith("\n# EOF\n"))

    def text(self, served):
        """The metrics as they come."""
        return served.get("/metrics").body.decode()

    def test_tags_are_counted_by_station_and_quality(self):
        _, served = self.station_with_plc(
            "still", "mode", "silent word", "total", plc="--stations 1-2 --silent 2 --refuse MW300",
            options="--timeout-ms 200 --attempts 1")
        served.await_values(lambda values: values["still"]["quality"] == "good"
                            and values["mode"]["quality"] == "bad"
                            and "station 2" in (values["total"]["trouble"] or ""))
        samples, _ = self.metrics(served)
        self.assertEqual([1, 0, 1, 0, 0, 2], [
            self.tags_of(samples, "plc", station, quality)
            for station in ("1", "2") for quality in ("good", "stale", "bad")])
        answers = {dict(labels)["station"]: value for (name, labels), value in samples.items()
                   if name == "kakb_station_answers"}
        self.assertEqual({"1": 1, "2": 0}, answers)

    def test_writes_are_counted_by_what_became_of_them(self):
        plc, served = self.station_with_plc(
            "still", "mode", options="--allow-writes",
            plc="--refuse MW300:2:write")
        served.await_good()

        def write(tag, value, status=200):
            answer = served.post("/api/v1/write", {"link": "plc", "tag": tag, "value": value})
            self.assertEqual(status, answer.status, answer)
        for _ in range(3):
            write("still", 1)
        for _ in range(2):
            write("mode", 1)
        write("still", 70000, 422)
        plc.kill()
        served.await_values(lambda values: values["still"]["quality"] == "bad")
        write("still", 2)
        samples, _ = self.metrics(served)
        self.assertEqual({"confirmed": 3, "refused": 2, "failed": 1}, {
            dict(labels)["outcome"]: value for (name, labels), value in samples.items()
            if name == "kakb_writes_total"})

    def test_all_is_well_while_link_stations_and_history_are(self):
        plc, served = self.station_with_plc("still")
        served.await_good()
        answer = served.get("/healthz")
        self.assertEqual((200, {"healthy": True, "reasons": []}), (answer.status, answer.json))
        plc.stop()
        served.await_that(lambda: served.get("/healthz").status == 503)
        answer = served.get("/healthz")
        self.assertIs(False, answer.json["healthy"])
        [reason] = answer.json["reasons"]
        self.assertIn('"plc"', reason)

    def test_a_silent_station_is_named(self):
        _, served = self.station_with_plc(
            "still", "silent word", plc="--stations 1-2 --silent 2",
            options="--timeout-ms 50 --attempts 1")
        silent = 'station 2 of link "plc" is silent'
        served.await_that(lambda: served.get("/healthz").json["reasons"] == [silent])
        self.assertEqual(503, served.get("/healthz").status)
