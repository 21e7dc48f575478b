"""Names of any kind at a broker."""

from plantTest import PlantTest
from retainedTopics import RetainedTopics
from sparkplugMessages import command
from tagTables import HEADER, table

ROWS = [("a+b/c#d", 1, "MW", 0, "uint16", "rw"), ("mix/speed", 1, "MW", 2, "int16", "rw")]


class PlantNames(PlantTest):
    """A node, links and tags whose names topics cannot hold."""

    def setUp(self):
        super().setUp()
        self.at = self.broker()
        self.host = self.host_at(self.at, group="north", node="hall 7")
        self.topics = self.keep(RetainedTopics(self.at.port, "hall 7"))

    def named(self, *links, rows=()):
        """A station with links of these names, each with a PLC of its own."""
        self.file("tags.csv", table(rows or ROWS, HEADER + ",access"))
        lines = ['listen = "127.0.0.1:0"', "allow_writes = true", "[mqtt]",
                 f'servers = ["{self.at.url}"]', 'group = "north"', 'node = "hall 7"',
                 'dialects = ["sparkplug", "json"]', "commands = true"]
        for link in links:
            lines += ["[[link]]", f'name = "{link}"', f'link = "{self.plc("tcp").link}"',
                      'tags = "tags.csv"']
        self.file("station.toml", "\n".join(lines) + "\n")
        return self.station("--config station.toml")

    def test_what_topics_cannot_hold_is_replaced_in_ids_and_levels_alone(self):
        self.named("mix+er 1#")
        self.host.await_that(lambda host: host.born)
        [device] = self.host.born
        self.assertEqual("mix_er 1_-1", device)
        for name in ("a+b/c#d", "mix/speed"):
            self.host.await_that(lambda host, n=name: host.value(device, n) == (0, "good"))
        self.topics.await_word("mix_er 1_/1/availability", "online")
        self.topics.await_state("mix_er 1_/a_b_c_d", 0)
        self.topics.await_state("mix_er 1_/mix_speed", 0)

    def test_tags_of_such_names_are_written_in_both_dialects(self):
        station = self.named("mix+er 1#")
        self.host.await_that(lambda host: host.born)
        self.host.send("DCMD", command("a+b/c#d", datatype=6, int_value=11), "mix_er 1_-1")
        self.topics.await_state("mix_er 1_/a_b_c_d", 11)
        self.topics.publish("mix_er 1_/a_b_c_d/set", {"v": 12, "id": 1})
        self.host.await_that(lambda host: host.value("mix_er 1_-1", "a+b/c#d") == (12, "good"))
        self.assertEqual(12, station.values()["a+b/c#d"]["value"])

    def test_names_that_would_be_alike_get_numbers(self):
        rows = [("a+b", 1, "MW", 0, "uint16", "rw"), ("a#b", 1, "MW", 2, "int16", "rw")]
        self.named("hall+1", "hall#1", "Hall_1", rows=rows)
        devices = {"Hall_1-1", "hall_1-2-1", "hall_1-3-1"}
        self.host.await_that(lambda host: host.born == devices)
        levels = {f"{device[:-2]}/{tag}" for device in devices for tag in ("a_b", "a_b-2")}
        self.topics.await_that(lambda topics: levels <= set(topics.kept))
        self.assertEqual(levels | {f"{device[:-2]}/1/availability" for device in devices},
                         set(self.topics.kept) - {"status"})

    def test_groups_and_nodes_with_hyphens_do_not_throw_each_other_out(self):
        self.tags("still")
        plc = self.plc("tcp")
        stations = [self.published(plc, self.at.url, (
            f"--mqtt-dialect sparkplug,json --mqtt-group {group} --mqtt-node {node} "
            f"--state {self.folder / group}")) for group, node in (("a-b", "c"), ("a", "b-c"))]
        for station in stations:
            for dialect in (0, 1):
                station.await_that(lambda at=station, n=dialect: (
                    at.get("/api/v1/plant").json[n]["state"] == "connected"))
        self.assertNotIn("already connected", self.at.output.read_text("utf-8"))
        self.assertEqual([1, 1, 1, 1], [standing["sessions"] for station in stations
                                        for standing in station.get("/api/v1/plant").json])
