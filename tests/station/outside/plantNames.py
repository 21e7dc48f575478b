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
        """A station with links of these names, each with a PLC of its own: MW0 is 11 in the first
        one, 12 in the next."""
        self.file("tags.csv", table(rows or ROWS, HEADER + ",access"))
        lines = ['listen = "127.0.0.1:0"', "allow_writes = true", "[mqtt]",
                 f'servers = ["{self.at.url}"]', 'group = "north"', 'node = "hall 7"',
                 'dialects = ["sparkplug", "json"]', "commands = true"]
        for number, link in enumerate(links, 11):
            lines += ["[[link]]", f'name = "{link}"', 'tags = "tags.csv"',
                      f'link = "{self.plc("tcp", f"--set MW0={number}").link}"']
        self.file("station.toml", "\n".join(lines) + "\n")
        return self.station("--config station.toml")

    def test_what_topics_cannot_hold_is_replaced_in_ids_and_levels_alone(self):
        self.named("mix+er 1#")
        self.host.await_that(lambda host: host.born)
        [device] = self.host.born
        self.assertEqual("mix_er 1_-1", device)
        for name in ("a+b/c#d", "mix/speed"):
            value = 11 if name == "a+b/c#d" else 0
            self.host.await_that(lambda host, n=name, v=value: host.value(device, n) == (v, "good"))
        self.topics.await_word("mix_er 1_/1/availability", "online")
        self.topics.await_state("mix_er 1_/a_b_c_d", 11)
        self.topics.await_state("mix_er 1_/mix_speed", 0)

    def test_tags_of_such_names_are_written_in_both_dialects(self):
        station = self.named("mix+er 1#")
        self.host.await_that(lambda host: host.born)
        self.host.send("DCMD", command("a+b/c#d", datatype=6, int_value=21), "mix_er 1_-1")
        self.topics.await_state("mix_er 1_/a_b_c_d", 21)
        self.topics.publish("mix_er 1_/a_b_c_d/set", {"v": 22, "id": 1})
        self.host.await_that(lambda host: host.value("mix_er 1_-1", "a+b/c#d") == (22, "good"))
        self.assertEqual(22, station.values()["a+b/c#d"]["value"])

    def test_names_that_would_be_alike_get_numbers(self):
        rows = [("a+b", 1, "MW", 0, "uint16", "rw"), ("a#b", 1, "MW", 2, "int16", "rw")]
        self.named("hall+1", "hall#1", "Hall_1", rows=rows)
        devices = {"Hall_1-1", "hall_1-2-1", "hall_1-3-1"}
        self.host.await_that(lambda host: host.born == devices)
        levels = {f"{device[:-2]}/{tag}" for device in devices for tag in ("a_b", "a_b-2")}
        levels |= {f"{device[:-2]}/1/availability" for device in devices}
        self.topics.await_that(lambda topics: set(topics.kept) - {"status"} == levels)

    def test_links_of_such_names_keep_their_own_devices_topics_and_plcs(self):
        # By level: the link, and what its PLC holds.
        links = {"hall_1-2": ("hall+1", 11), "hall_1-3": ("hall#1", 12), "Hall_1": ("Hall_1", 13)}
        rows = [("a+b", 1, "MW", 0, "uint16", "rw"), ("a#b", 1, "MW", 2, "uint16", "rw")]
        station = self.named(*(name for name, _ in links.values()), rows=rows)

        def await_all(tag, topic, offset):
            for level, (_, value) in links.items():
                self.host.await_that(lambda host, at=f"{level}-1", v=value + offset: (
                    host.value(at, tag) == (v, "good")))
                self.topics.await_state(f"{level}/{topic}", value + offset)
            self.assertEqual(dict(links.values()), {
                one["link"]: one["value"] - offset
                for one in station.get("/api/v1/values").json if one["tag"] == tag})

        await_all("a+b", "a_b", 0)
        for level, (_, value) in links.items():
            self.host.send("DCMD", command("a+b", datatype=6, int_value=value + 100), f"{level}-1")
        await_all("a+b", "a_b", 100)
        for level, (_, value) in links.items():
            self.topics.publish(f"{level}/a_b-2/set", {"v": value + 200, "id": 1})
        await_all("a#b", "a_b-2", 200)
        await_all("a+b", "a_b", 100)

    def test_a_link_has_no_slash_in_its_name(self):
        self.file("tags.csv", table(ROWS, HEADER + ",access"))
        self.file("station.toml", "\n".join(["[[link]]", 'name = "hall/1"', 'link = "sim"',
                                             'tags = "tags.csv"']) + "\n")
        [sentence] = self.refused("--config station.toml --check", 1)
        self.assertIn('the name "hall/1" has a slash', sentence)

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
