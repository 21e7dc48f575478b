"""The record on standard error: one line for each write and each recipe, which nobody can forge."""

import re
import time
from datetime import datetime

from processes import eventually
from stationProgram import StationTest
from tagTables import HEADER, table

LINE = re.compile(r"^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z) from (127\.0\.0\.1:\d+): (.*)$")
ROW = {"station": 1, "area": "MW", "type": "uint16"}


class AuditLines(StationTest):
    """What the record says of each write and recipe, and that it says nothing else."""

    def posted(self, served, path, document):
        """Sends the document on a connection of its own; returns the answer and the address that
        the connection has."""
        with served.connect() as connection:
            address = "{}:{}".format(*connection.socket.getsockname())
            return served.post(path, document, connection=connection), address

    def record(self, served, count):
        """The lines of the record once there are so many: (time, address, text)."""
        self.assertTrue(eventually(lambda: len(served.errors) >= count), served)
        lines = [LINE.match(line) for line in served.errors]
        self.assertNotIn(None, lines, served)
        self.assertEqual(count, len(lines), served)
        return [line.groups() for line in lines]

    def test_a_write_leaves_when_from_where_what_and_the_outcome(self):
        plc, served = self.station_with_plc(
            "still", "mode", options="--allow-writes",
            plc="--refuse MW300:2:write")
        served.await_good()
        before = time.time()
        asked = [self.posted(served, "/api/v1/write", {"link": "plc", "tag": tag, "value": value})
                 for tag, value in (("still", 5), ("mode", 6))]
        plc.kill()
        served.await_values(lambda values: values["still"]["quality"] == "bad")
        asked.append(self.posted(served, "/api/v1/write",
                                 {"link": "plc", "tag": "still", "value": 7}))
        found = self.record(served, 3)
        self.assertEqual([address for _, address in asked], [line[1] for line in found])
        ids = [answer.json["id"] for answer, _ in asked]
        self.assertEqual(f'write {ids[0]} of "plc" "still" = 5: confirmed, it holds 5', found[0][2])
        self.assertRegex(found[1][2], f'^write {ids[1]} of "plc" "mode" = 6: refused: .*illegal '
                                      "address.*, it holds 0$")
        self.assertRegex(found[2][2], f'^write {ids[2]} of "plc" "still" = 7: failed: not sent: the '
                                      "link is lost: .*, it holds 5$")
        for moment, _, _ in found:
            at = datetime.fromisoformat(moment).timestamp()
            self.assertTrue(before - 0.01 <= at <= time.time(), moment)

    def test_a_recipe_leaves_one_line_however_many_rows_it_has(self):
        _, served = self.station_with_plc("still", "mode", options="--allow-writes",
                                          plc="--refuse MW300:2:write")
        served.await_good()
        rows = {"still": {"name": "a", **ROW, "address": "100", "value": 3},
                "mode": {"name": "b", **ROW, "address": "300", "value": 4}}
        asked = [self.posted(served, f"/api/v1/recipes/{kind}", {
            "link": "plc", "rows": [rows[name] for name in names]})
            for kind, names in (("download", ["still"]), ("download", ["still", "mode"]),
                                ("compare", ["still", "mode"]), ("upload", ["mode"]))]
        found = self.record(served, 4)
        self.assertEqual([address for _, address in asked], [line[1] for line in found])
        texts = [re.sub(r"recipe \d+", "recipe", text) for _, _, text in found]
        self.assertEqual('recipe of "plc", download of 1 values: done', texts[0])
        self.assertRegex(texts[1], '^recipe of "plc", download of 2 values: failed at MW300.*: '
                                   ".*illegal address")
        self.assertEqual(['recipe of "plc", compare of 2 values: differs, 1 values differ',
                          'recipe of "plc", upload of 1 values: done'], texts[2:])

    def test_what_is_not_allowed_leaves_one_line_and_what_is_no_write_none(self):
        plc, served = self.station_with_plc("still", "mode", options="--allow-writes",
                                            read_only=("mode",))
        served.await_good()
        for tag, value, status in (("still", 70000, 422), ("none", 1, 404), ("still", "x", 422)):
            answer, _ = self.posted(served, "/api/v1/write",
                                    {"link": "plc", "tag": tag, "value": value})
            self.assertEqual(status, answer.status)
        write, writer = self.posted(served, "/api/v1/write",
                                    {"link": "plc", "tag": "mode", "value": 1})
        rows = [{"name": "x", **ROW, "address": "100", "value": 3},
                {"name": "y", **ROW, "address": "300", "value": 4}]
        recipe, sender = self.posted(served, "/api/v1/recipes/download",
                                     {"link": "plc", "rows": rows})
        self.assertEqual((403, 403), (write.status, recipe.status))
        found = self.record(served, 2)
        self.assertEqual([writer, sender], [line[1] for line in found])
        self.assertRegex(found[0][2],
                         r'^write \d+ of "plc" "mode": refused: tag "mode" is read-only$')
        self.assertRegex(found[1][2], r'^recipe \d+ of "plc", download of 2 values: refused: '
                                      r'row 2 "y": no tag of the link with access "rw" ')
        served.end()
        plc.stop()
        self.assertEqual([], plc.memory())

    def test_a_station_without_leave_tells_who_wanted_to_write(self):
        _, served = self.station_with_plc("still")
        answer, writer = self.posted(served, "/api/v1/write",
                                     {"link": "plc", "tag": "still", "value": 1})
        self.assertEqual(403, answer.status)
        [line] = self.record(served, 1)
        self.assertEqual(writer, line[1])
        self.assertRegex(line[2], r'^write \d+ of "plc" "still": refused: .*--allow-writes$')

    def test_no_name_and_no_value_is_another_line_or_another_part(self):
        forged = "2026-01-01T00:00:00.000Z from 10.0.0.1:1: write 1 of x"
        # A tag file takes no control characters, but marks that some terminals obey.
        names = ['a" = 5: confirmed, it holds 5', "b\\", f"c\u2028{forged}", "d\u202e\u200f"]
        rows = [('"' + name.replace('"', '""') + '"', 1, "MW", 10 * number, "uint16", "rw")
                for number, name in enumerate(names)]
        self.file("tags.csv", table(rows, HEADER + ",access"))
        plc = self.plc("tcp")
        served = self.station(f"--link {plc.link} --tags tags.csv --allow-writes")
        served.await_good()
        for name in sorted(served.values()):
            self.posted(served, "/api/v1/write", {"link": "plc", "tag": name, "value": 5})
            self.posted(served, "/api/v1/write", {"link": "plc", "tag": name + "\n" + forged,
                                                  "value": "\n" + forged})
            self.posted(served, "/api/v1/recipes/upload", {"link": "plc", "rows": [
                {"name": name + "\n" + forged, **ROW, "address": "0"}]})
        found = self.record(served, 2 * len(names))
        for _, _, text in found:
            self.assertTrue(text.isprintable(), ascii(text))
            self.assertRegex(text, r'^write \d+ of "plc" "([^"\\]|\\.)*" = 5: confirmed, it holds 5$|'
                                   r'^recipe \d+ of "plc", upload of 1 values: done$')
