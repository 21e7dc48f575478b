"""Tags that change all at once, and a station with the smallest cap of the history: a few changes fill it."""

import re
import time
import urllib.request

from processes import SLOWER, eventually

WORDS = 256
BITS = 16
ALL_BITS = 65535
TAGS = WORDS * BITS  # at most half of the rows that may wait for a commit with the smallest cap
FIRST_ROWS = 2 * TAGS  # one without a value, and the first value
LAST_TAG = f"b{WORDS - 1}.{BITS - 1}"
TABLE = "name,station,area,address,type\n" + "".join(
    f"b{word}.{bit},1,MX,{2 * word + bit // 8}.{bit % 8},bool\n"
    for word in range(WORDS) for bit in range(BITS))
COMMIT_S = 60 * SLOWER  # of the history, on a busy machine
MOST_CHANGES = 30


def configuration(link, server):
    """Of a station that reads the tags of tags.csv."""
    return f"""listen = "127.0.0.1:0"
[history]
cap = "4MiB"
[mqtt]
servers = ["{server}"]
[[link]]
name = "plc"
link = "{link}"
tags = "tags.csv"
"""


class CappedHistory:
    """The history of a running station, which is filled through the PLC's control socket."""

    def __init__(self, control, url):
        self.control, self.url = control, url
        self.changes = 0  # of each tag
        self.began = time.time()

    def overflow(self):
        """Changes all tags until rows of the changes are dropped, at least one of each tag."""
        assert eventually(lambda: self.noted() == FIRST_ROWS, COMMIT_S), self.noted()
        while self.figure("kakb_history_dropped_rows_total") < FIRST_ROWS + TAGS:
            assert self.changes < MOST_CHANGES, "the cap drops nothing"
            self._change()

    def noted(self):
        """Rows that the history ever had since the start."""
        return self.figure("kakb_history_rows") + self.figure("kakb_history_dropped_rows_total")

    def figure(self, name):
        """A sample of /metrics."""
        with urllib.request.urlopen(f"{self.url}metrics") as answer:
            text = answer.read().decode()
        return int(re.search(rf"^{re.escape(name)} (\d+)$", text, re.M).group(1))

    def _change(self):
        """More rows would find no room before the commit."""
        before = self.noted()
        self.changes += 1
        for word in range(WORDS):
            self.control.command(f"set MW{2 * word}={ALL_BITS * (self.changes % 2)}")
        assert eventually(lambda: self.noted() == before + TAGS, COMMIT_S), self.noted() - before
