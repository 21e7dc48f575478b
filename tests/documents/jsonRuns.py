"""Runs of kakb-host --json that print every field of docs/json.md with each of its types."""

import signal

from commandLine import CommandLineTest
from tagTables import DEMO_TAGS

FORMS = ("", "--time iso")


class JsonRuns(CommandLineTest):
    """The steps, each with the PLC that it needs."""

    def runTest(self):
        """Collects each command and its objects."""
        self.runs = []
        self.tags("still", "level", "silent word")
        self.recipe(level="nan", speed=7)
        for step in (self.addresses, self.values, self.silence, self.refusals, self.recipes,
                     self.scans, self.loss):
            step()

    def note(self, command, status=0):
        """One run."""
        self.runs.append((command, self.objects(command, status)))

    def watched(self, options, *patterns):
        """A watch that is ended when all patterns were printed."""
        run = self.watching(f"{options} --json", *patterns)
        self.end(run)
        self.runs.append((f"watch {options}", run.objects))

    def addresses(self):
        """The verbs without a link."""
        self.note("info")
        for address, status in (("MW 100", 0), ("MX 12.3", 0), ("IX 0.0", 0), ("MW 101", 7)):
            self.note(f"check {address}", status)
        self.note("series MW 0 --count 2")
        self.note("series MW 3", 7)
        self.note(f"plan --tags {DEMO_TAGS}")
        self.note(f"plan --tags {DEMO_TAGS} --gap 0")
        self.note(f"plan --tags {DEMO_TAGS} --link tcp:127.0.0.1,1 --turnaround-us 0")

    def values(self):
        """Numbers, and a value that JSON has no number for."""
        with self.plc("pty", "--stations 1-2") as plc:
            link = f"--tags tags.csv --link {plc.link}"
            self.note(f"write {link} still=7 level=nan --allow-nan")
            for form in FORMS:
                self.note(f"read {link} {form}")
                self.watched(f"{link} {form}", '"name":"still"', '"value":"nan"')

    def silence(self):
        """No value, no reply, and a link without a wire."""
        for kind in ("pty", "tcp"):
            with self.plc(kind, "--silent 1") as plc:
                link = f"--tags tags.csv --link {plc.link} --timeout-ms 100"
                self.watched(link, '"trouble":"station 1 ')
                for form in FORMS:
                    self.note(f"read {link} {form} still", 4)
                self.note(f"write {link} still=7", 4)

    def refusals(self):
        """The PLC says no."""
        with self.plc("pty", "--exception 1 --exception-code 2") as plc:
            self.note(f"write --link {plc.link} MW100=7", 5)

    def recipes(self):
        """Words that change by themselves differ; a NaN stays a NaN of another low word."""
        with self.plc("pty", "--turnaround-us 5000 --signal 1:MW:3061:counter:1 "
                      "--signal 1:QW:20:counter:1:500") as plc:
            self.note(f"recipe download recipe.csv --allow-nan --link {plc.link}")
            self.note(f"recipe download recipe.csv --allow-nan --verify --link {plc.link}", 6)
            self.note(f"recipe upload recipe.csv --output out.csv --verify --link {plc.link}", 6)
            self.note(f"recipe upload recipe.csv --output out.csv --link {plc.link}")
            self.note(f"diff recipe.csv --link {plc.link}", 6)

    def scans(self):
        """Answers in time, and answers that come behind the time-out."""
        for kind in ("pty", "tcp"):
            with self.plc(kind, "--stations 1-2") as plc:
                self.note(f"scan --stations 1-2 --link {plc.link}")
        with self.plc("pty", "--station 1 --delay 1 --delay-ms 150") as plc:
            self.note(f"scan --stations 1-4 --timeout-ms 100 --link {plc.link}")

    def loss(self):
        """A link that is lost."""
        for form in FORMS:
            with self.plc("tcp", "--stations 1-2") as plc:
                options = f"--tags tags.csv --link {plc.link} {form}"
                run = self.watching(f"{options} --json", '"name":"still"')
                plc.stop(signal.SIGTERM)
                run.await_lines('"event":"link lost: ')
                self.end(run)
                self.runs.append((f"watch {options}", run.objects))


def runs_of():
    """All runs: pairs of a command and its objects. Fails when a run does."""
    steps = JsonRuns()
    result = steps.run()
    failures = [text for _, text in [*result.failures, *result.errors]]
    assert not failures, failures[0]
    return steps.runs
