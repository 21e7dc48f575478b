"""What monitoring asks for, read by a parser that is not ours."""

from stationProgram import StationTest

try:
    from prometheus_client.openmetrics.parser import text_string_to_metric_families
except ImportError:
    text_string_to_metric_families = None

MEDIA_TYPE = "application/openmetrics-text; version=1.0.0; charset=utf-8"


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

    def test_all_is_well_while_link_stations_and_history_are(self):
        plc, served = self.station_with_plc("still", options="--timeout-ms 50 --attempts 1")
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
