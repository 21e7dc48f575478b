"""A watch that writes CSV: a line of names, then a line of values at each interval."""

import csv
import re
from itertools import dropwhile

from commandLine import CommandLineTest

WITH_OFFSET = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d"


class CsvLog(CommandLineTest):
    """Every line has the time and a field for each tag."""

    def rows(self, run):
        return list(csv.reader(run.lines))

    def test_lines_at_each_interval_with_dates(self):
        self.tags("still", "level", "lamp")
        with self.plc("pty") as plc:
            self.host(f"write --link {plc.link} --tags tags.csv level=21.5 lamp=1 still=7")
            run = self.host(f"watch --link {plc.link} --tags tags.csv --csv --every 300ms "
                            "--seconds 2 --time local")
        rows = self.rows(run)
        self.assertEqual(["time", "still", "level", "lamp"], rows[0])
        self.assertGreaterEqual(len(rows), 3, run)
        self.assertLessEqual(len(rows), 1 + 1 + run.milliseconds / 300, run)
        for row in rows[1:]:
            self.assertRegex(row[0], f"^{WITH_OFFSET}$")
        # A busy machine may not have read every tag at the first line.
        read = list(dropwhile(lambda row: "" in row, rows[1:]))
        self.assertEqual([["7", "21.5", "1"]] * max(1, len(read)), [row[1:] for row in read])
        self.assertRegex(run.errors[-1], "exchanges/s")

    def test_bad_tag_has_an_empty_field(self):
        self.tags("still", "silent word")
        with self.plc("pty", "--stations 1-2 --silent 2") as plc:
            run = self.host(f"watch --link {plc.link} --tags tags.csv --csv --timeout-ms 50 "
                            "--seconds 3")
        self.assertEqual([["0", ""]], [row[1:] for row in self.rows(run)[1:2]])

    def test_names_are_quoted_where_csv_needs_it(self):
        self.file("tags.csv", 'name,station,area,address,type\n"a, ""b""",1,MW,100,uint16\n')
        with self.plc("pty") as plc:
            run = self.host(f"watch --link {plc.link} --tags tags.csv --csv --seconds 1.5")
        self.assertEqual('time,"a, ""b"""', run.lines[0])

    def test_line_without_a_link_is_empty_and_the_loss_is_told(self):
        self.tags("still")
        with self.plc("tcp") as plc:
            run = self.start(f"watch --link {plc.link} --tags tags.csv --csv --every 200ms")
            run.await_lines(",0$")
            plc.kill()
            run.await_lines(",$")
            self.end(run)
        self.assertTrue([line for line in run.errors if re.search("link lost: ", line)], run)
