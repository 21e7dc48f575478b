"""The configuration file: its mistakes all at once, and what a reload changes and leaves alone."""

import signal
import time

from processes import PATIENCE_S, SLOWER, eventually, wait_until
from stationProgram import StationTest

# The pace is 100 ms. A link that is opened anew needs longer than a busy machine's moment; of some
# rounds the best counts.
LONGEST_GAP_MS = 250 * SLOWER
ROUNDS = 5
READ_AGAIN = "kakb-station: read the configuration again"
GOES_ON = "kakb-station: the configuration has mistakes: everything goes on as before"
TWO_MISTAKES = """listen = "nowhere"
[[link]]
name = "a"
link = "sim"
speed = 3
"""


class Configurations(StationTest):
    """Configurations that a start reads."""

    def test_check_names_every_mistake_and_a_start_does_the_same(self):
        self.file("station.toml", TWO_MISTAKES)
        wanted = ["station.toml: line 1: listen: nowhere is no address such as 127.0.0.1:8480 or "
                  "[::1]:8480",
                  'station.toml: line 5: "speed" is no key of [[link]]; the keys are name, link, '
                  "tags, pace, timeout_ms, attempts, pause_ms"]
        for options in ("--config station.toml --check", "--config station.toml"):
            with self.subTest(options=options):
                self.assertEqual(wanted, self.refused(options, 1))

    def test_check_of_a_good_file_starts_nothing_and_makes_nothing(self):
        self.file("station.toml", 'token_file = "token"\nstate = "state"\n[[link]]\nname = "a"\n'
                                  'link = "sim"\n')
        before = sorted(self.folder.iterdir())
        self.assertEqual([], self.refused("--config station.toml --check", 0))
        self.assertEqual(before, sorted(self.folder.iterdir()))

    def test_paths_begin_at_the_folder_of_the_file(self):
        (self.folder / "etc").mkdir()
        self.tags("still").rename(self.folder / "etc/tags.csv")
        self.file("etc/station.toml", 'listen = "127.0.0.1:0"\n[[link]]\nname = "a"\n'
                                      'link = "sim"\ntags = "tags.csv"\n')
        station = self.station("--config etc/station.toml")
        self.assertEqual(["still"], list(station.values()))

    def test_options_replace_the_keys_of_the_file(self):
        self.file("station.toml", 'listen = "192.0.2.1:1"\nstate = "no/folder"\n[[link]]\n'
                                  'name = "a"\nlink = "sim"\n')
        station = self.station("--config station.toml --listen 127.0.0.1:0 --allow-writes")
        self.assertTrue(station.get("/api/v1/station").json["writes"])
        self.assertFalse((self.folder / "no").exists())

    def test_an_address_that_others_reach_needs_a_token_file(self):
        self.file("station.toml", 'name = "a"\nlisten = "0.0.0.0:0"\n[[link]]\nname = "a"\n'
                                  'link = "sim"\n')
        self.assertEqual(["station.toml: line 2: listen: other machines can reach this address: "
                          "it needs a token file"],
                         self.refused("--config station.toml", 1))


class Reloads(StationTest):
    """SIGHUP, with two simulated PLCs on TCP."""

    def setUp(self):
        super().setUp()
        self.tags("count", "still")
        # A simulated PLC talks with one host at a time.
        self.plcs = {name: self.plc("tcp", "--demo signals") for name in ("stays", "comes")}
        self.configure("stays")
        self.served = self.station("--config station.toml")
        self.served.await_good()

    def configure(self, *links, head="", tags="tags.csv"):
        """Writes the configuration with some links, each to the PLC of its name."""
        self.file("station.toml", f'listen = "127.0.0.1:0"\n{head}\n' + "".join(
            f'[[link]]\nname = "{name}"\nlink = "{self.plcs[name].link}"\ntags = "{tags}"\n'
            for name in links))

    def reload(self, sentence=READ_AGAIN):
        """Sends SIGHUP and waits until the station has answered it; returns what it said."""
        said = len(self.served.errors)
        self.served.process.send_signal(signal.SIGHUP)
        self.served.await_that(lambda: sentence in self.served.errors[said:])
        return self.served.errors[said:]

    def links(self):
        """The links that the station tells, by name."""
        return {link["name"]: link for link in self.served.get("/api/v1/station").json["links"]}

    def test_links_come_and_go_while_the_others_go_on(self):
        self.assertTrue(eventually(lambda: self.links()["stays"]["state"] == "up"))
        before = self.links()["stays"]
        self.configure("stays", "comes")
        self.reload()
        self.assertEqual(["stays", "comes"], list(self.links()))
        self.assertTrue(eventually(lambda: self.links()["comes"]["state"] == "up"))
        after = self.links()["stays"]
        self.assertEqual((before["since"], 0), (after["since"], after["losses"]))
        self.configure("stays")
        self.reload()
        self.assertEqual(["stays"], list(self.links()))
        self.assertEqual(before["since"], self.links()["stays"]["since"])

    def test_a_link_that_did_not_change_misses_no_poll(self):
        rounds = []
        while len(rounds) < ROUNDS and not (rounds and max(rounds[-1]) < LONGEST_GAP_MS):
            rounds.append(self.gaps_of_reloads())
        self.assertLess(min(map(max, rounds)), LONGEST_GAP_MS, rounds)

    def gaps_of_reloads(self):
        """The times between the polls of a link while others come and go for some seconds."""
        begin = time.time() * 1000
        ends = time.monotonic() + 3
        reloads, polls = 0, []
        while time.monotonic() < ends or len(polls) <= 20:
            self.assertLess(time.monotonic(), ends + PATIENCE_S, "the frames do not stay")
            wait_until(time.monotonic() + 0.3)
            self.configure("stays", *["comes"] * (reloads % 2))
            self.reload()
            reloads += 1
            polls = [frame["time"] for frame in self.served.get(
                "/api/v1/frames?link=stays").json
                     if frame["direction"] == ">" and frame["time"] > begin]
        return [after - before for before, after in zip(polls, polls[1:])]

    def test_a_broken_file_changes_nothing_and_says_why(self):
        before = self.links()
        self.file("station.toml", TWO_MISTAKES)
        said = self.reload(GOES_ON)
        self.assertEqual(3, len(said))
        self.assertIn("line 1", said[0])
        self.assertIn("line 5", said[1])
        self.assertEqual(list(before), list(self.links()))
        self.assertEqual(before["stays"]["since"], self.links()["stays"]["since"])
        self.served.await_good()

    def test_a_tag_file_that_is_gone_changes_nothing(self):
        (self.folder / "tags.csv").unlink()
        said = self.reload(GOES_ON)
        self.assertIn("cannot read tags.csv: No such file or directory", said[0])
        self.served.await_good()

    def test_a_changed_tag_file_takes_effect(self):
        self.tags("count", "offset")
        self.reload()
        self.assertEqual(["count", "offset"], list(self.served.values()))
        self.served.await_good()

    def test_writing_can_be_allowed_and_forbidden(self):
        self.configure("stays", head="allow_writes = true")
        self.reload()
        self.assertTrue(self.served.get("/api/v1/station").json["writes"])
        self.assertTrue(self.served.values()["still"]["writable"])
        self.configure("stays")
        self.reload()
        self.assertFalse(self.served.get("/api/v1/station").json["writes"])

    def test_host_names_and_the_token_take_effect(self):
        host = {"Host": "panel.example"}
        self.assertEqual(421, self.served.get("/api/v1/values", host).status)
        self.configure("stays", head='host_names = ["panel.example"]\ntoken_file = "token"')
        self.reload()
        self.assertEqual(401, self.served.get("/api/v1/values", host).status)
        token = (self.folder / "token").read_text(encoding="utf-8").strip()
        self.assertEqual(200, self.served.get(
            "/api/v1/values", {**host, "Authorization": f"Bearer {token}"}).status)

    def test_the_token_stays_while_other_machines_reach_the_address(self):
        self.served.end()
        self.configure("stays", head='token_file = "token"')
        self.served = self.station("--config station.toml --listen 0.0.0.0:0")
        self.configure("stays")
        said = self.reload(GOES_ON)
        self.assertRegex(said[0], "--listen: other machines can reach this address")
        self.assertEqual(401, self.served.get("/api/v1/values").status)

    def test_a_listen_of_the_file_does_not_take_the_token_from_the_present_address(self):
        self.served.end()
        text = (self.folder / "station.toml").read_text(encoding="utf-8")
        self.file("station.toml", 'token_file = "token"\n' + text.replace("127.0.0.1:0",
                                                                          "0.0.0.0:0"))
        self.served = self.station("--config station.toml")
        self.file("station.toml", text)
        said = self.reload(GOES_ON)
        self.assertEqual("kakb-station: other machines can reach the present address: the token "
                         "file can go only with a restart", said[0])
        self.assertEqual(401, self.served.get("/api/v1/values").status)

    def test_keys_that_only_a_start_reads_are_named(self):
        self.configure("stays", head='name = "other"\nstate = "elsewhere"\n[history]\n'
                                     'cap = "4MiB"\noverride = "1m"')
        said = self.reload()
        self.served.await_that(lambda: "restart" in self.served.err)
        self.assertEqual("kakb-station: these keys change only with a restart: name, history.cap, "
                         "history.override", self.served.errors[-1], said)
