"""The history of a tag through the API."""

import csv
import io
import itertools
import signal
import time

from processes import eventually
from stationProgram import StationTest

HISTORY = "/api/v1/history"


class ApiHistory(StationTest):
    """GET /api/v1/history and GET /api/v1/history.csv."""

    def test_a_value_that_held_is_in_the_buckets(self):
        _, served = self.station_with_plc("level", options="--allow-writes")
        served.await_good()
        served.post("/api/v1/write", {"link": "plc", "tag": "level", "value": 0.1})

        def document():
            return served.get(f"{HISTORY}?link=plc&tag=level").json
        self.assertTrue(eventually(lambda: document()["buckets"][-1][3] == 0.1), document())
        found = document()
        self.assertEqual(["link", "tag", "from", "to", "buckets"], list(found))
        self.assertEqual(("plc", "level", 3600000, 600), (
            found["link"], found["tag"], found["to"] - found["from"], len(found["buckets"])))
        self.assertEqual([found["from"], None, None, None], found["buckets"][0])
        self.assertLess(abs(time.time() * 1000 - found["to"]), 10000)

    def test_a_span_is_chosen_by_its_ends_and_its_points(self):
        _, served = self.station_with_plc("level")
        found = served.get(f"{HISTORY}?link=plc&tag=level&from=1000&to=5000&points=4").json
        self.assertEqual((1000, 5000), (found["from"], found["to"]))
        self.assertEqual([[at, None, None, None] for at in (1000, 2000, 3000, 4000)],
                         found["buckets"])

    def test_what_is_no_span_is_refused(self):
        _, served = self.station_with_plc("level")
        for query, status in (("points=0", 422), ("points=10001", 422), ("points=x", 400),
                              ("from=5&to=5", 422), ("from=-1", 422), ("to=1e3", 400),
                              ("to=99999999999999999999", 422)):
            with self.subTest(query=query):
                answer = served.get(f"{HISTORY}?link=plc&tag=level&{query}")
                self.assertEqual((status, ["error"]), (answer.status, list(answer.json)))
        for query, status in (("", 400), ("link=plc", 400), ("link=x&tag=level", 404),
                              ("link=plc&tag=x", 404)):
            with self.subTest(query=query):
                self.assertEqual(status, served.get(f"{HISTORY}?{query}").status)

    def test_the_rows_come_as_csv(self):
        _, served = self.station_with_plc("still", "lamp", options="--allow-writes")
        served.await_good()
        for value in (1, 2, 3):
            served.post("/api/v1/write", {"link": "plc", "tag": "still", "value": value})

        def rows():
            answer = served.get("/api/v1/history.csv?link=plc")
            return list(csv.reader(io.StringIO(answer.body.decode(), newline="")))
        self.assertTrue(eventually(lambda: ["3", "good"] in [row[3:] for row in rows()]), rows())
        head, *lines = rows()
        self.assertEqual(["time", "link", "tag", "value", "quality"], head)
        self.assertEqual({("plc", "still"), ("plc", "lamp")}, {tuple(row[1:3]) for row in lines})
        good = [row[3] for row in lines if row[2] == "still" and row[4] == "good"]
        # A value that was stale for a moment has one more line behind it.
        self.assertEqual(["0", "1", "2", "3"], [value for value, _ in itertools.groupby(good)])
        self.assertEqual(404, served.get("/api/v1/history.csv?tag=x").status)

    def test_rows_tell_where_the_station_did_not_run(self):
        simulator, served = self.station_with_plc("still", options="--state state")

        def ends():
            answer = served.get("/api/v1/history.csv?link=plc")
            rows = list(csv.reader(io.StringIO(answer.body.decode(), newline="")))
            return [tuple(row[3:]) for row in rows[1:]]
        self.assertTrue(eventually(lambda: ("0", "good") in ends()), served)
        served.end(signal.SIGKILL)
        served = self.station(f"--link {simulator.link} --tags tags.csv --state state")
        self.assertTrue(eventually(lambda: ends().count(("0", "good")) == 2), served)
        found = ends()
        first = found.index(("0", "good"))
        self.assertIn(("", "bad"), found[first:found.index(("0", "good"), first + 1)])

    def test_a_clean_stop_is_told_by_one_line_of_each_tag(self):
        simulator, served = self.station_with_plc("still", "lamp", options="--state state")
        for _ in range(3):
            served.await_good()
            self.assertEqual(0, served.end())
            served = self.station(f"--link {simulator.link} --tags tags.csv --state state")
        served.await_good()
        answer = served.get("/api/v1/history.csv?link=plc")
        rows = list(csv.reader(io.StringIO(answer.body.decode(), newline="")))[1:]
        for tag, value in (("still", "0"), ("lamp", "0")):
            with self.subTest(tag=tag):
                found = [tuple(row[3:]) for row in rows if row[2] == tag]
                self.assertLessEqual(3, found.count((value, "good")), rows)
                self.assertEqual(0, found.count((value, "bad")), rows)
                # Behind each end is at most one line more: the tag was not read yet.
                ends = [at for at, row in enumerate(found) if row == (value, "good")][1:]
                for at in ends:
                    self.assertEqual(("", "bad"), found[at - 1], rows)
                self.assertEqual([], [at for at in range(2, len(found))
                                      if set(found[at - 2:at + 1]) == {("", "bad")}], rows)
                times = [row[0] for row in rows if row[2] == tag]
                self.assertEqual(sorted(times), times)

    def test_a_station_may_keep_none(self):
        _, served = self.station_with_plc("level", options="--no-history")
        for path in (f"{HISTORY}?link=plc&tag=level", "/api/v1/history.csv"):
            answer = served.get(path)
            self.assertEqual((503, ["error"]), (answer.status, list(answer.json)))
