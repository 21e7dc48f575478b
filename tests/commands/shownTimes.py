"""--time: times as seconds since the start, in UTC, or in local time with its offset."""

import datetime

from commandLine import CommandLineTest
from processes import matching

SECONDS = r"[0-9]+\.[0-9]{6}"
DATE = r"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}"
FORMS = {"": SECONDS, "--time relative": SECONDS, "--time iso": f"{DATE}Z",
         "--time local": rf"{DATE}\+05:30"}
ZONE = ("env", "TZ=ZONE-5:30")  # POSIX counts the hours to the west


def now():
    """The wall clock."""
    return datetime.datetime.now(datetime.timezone.utc)


class ShownTimes(CommandLineTest):
    """The same times in lines, objects and the trace."""

    def setUp(self):
        super().setUp()
        self.tags("still")

    def test_lines_and_trace_have_the_time_asked_for(self):
        with self.plc("pty") as plc:
            for option, form in FORMS.items():
                run = self.watching(f"--tags tags.csv --trace --link {plc.link} {option}",
                                    f"^{form}  still  MW100 = 0$", prefix=ZONE)
                self.end(run)
                self.assertEqual(len(run.errors),
                                 len(matching(run.errors, f"^ *{form} [<>!] ")), run)

    def test_lost_link_has_the_time_asked_for(self):
        with self.plc("tcp") as plc:
            run = self.watching(f"--tags tags.csv --time iso --link {plc.link}", " = 0$")
            plc.stop()
            run.await_lines(f"^{DATE}Z  link lost: ")
            self.end(run)

    def test_objects_have_seconds_or_a_date(self):
        """The date is that of the wall clock; whole milliseconds are shown."""
        with self.plc("pty") as plc:
            for verb in ("read MW100", "watch --tags tags.csv --until still=0"):
                value = self.objects(f"{verb} --link {plc.link}")[0]
                self.assertIsInstance(value["timeS"], float)
                for style in ("iso", "local"):
                    before = now()
                    run = self.host(f"{verb} --json --time {style} --link {plc.link}", prefix=ZONE)
                    value = run.objects[0]
                    self.assertRegex(value["time"], f"^{FORMS[f'--time {style}']}$")
                    moment = datetime.datetime.fromisoformat(value["time"].replace("Z", "+00:00"))
                    self.assertLessEqual(before - datetime.timedelta(milliseconds=2), moment)
                    self.assertLessEqual(moment, now())
                    self.assertNotIn("timeS", value)

    def test_other_form_is_refused(self):
        self.fails(1, "read MW100 --time unix", "--time")
