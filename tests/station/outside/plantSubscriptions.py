"""What a station subscribes to, packet by packet, in each session: these topics and no others."""

from bareBroker import CONNECT, PUBLISH, SUBSCRIBE, BareBroker
from plantTest import PlantTest
from processes import PATIENCE_S

SESSIONS = 3
PACKETS = 12  # of each session that the broker answers: the births, values, marks
ANSWER_S = 0.2  # how long the broker lets the station wait
CHANGES = "--signal 1:MW:3050:counter:10:60000"  # the word of the tag "still", so that values come
GROUP, NODE, HOST = "north", "hall 7", "scada"
OF_NODE = (f"spBv1.0/{GROUP}/NCMD/{NODE}", 1)
OF_DEVICES = (f"spBv1.0/{GROUP}/DCMD/{NODE}/+", 1)
OF_HOST = (f"spBv1.0/STATE/{HOST}", 1)
OF_SETS = (f"kakb/{NODE}/+/+/set", 1)
COMMANDS = "--allow-writes --mqtt-commands"
WITH_HOST = f"--mqtt-primary-host {HOST}"


class PlantSubscriptions(PlantTest):
    """A broker that serves one client, a PLC whose value changes, and a station."""

    def setUp(self):
        super().setUp()
        self.bare = self.keep(BareBroker(1))

    def expect(self, topics, options, dialect="sparkplug"):
        """Each session asks for these topics once, ahead of its first message, and for no others."""
        self.tags("still")
        plc = self.plc("tcp", CHANGES)
        self.published(plc, f"mqtt://127.0.0.1:{self.bare.ports[0]}", (
            f"--mqtt-group {GROUP} --mqtt-node '{NODE}' --mqtt-dialect {dialect} {options}"))
        for session in range(SESSIONS):
            kinds, asked = self.served()
            with self.subTest(session=session):
                self.assertEqual(sorted(topics), sorted(asked))
                head = [CONNECT, SUBSCRIBE, PUBLISH] if topics else [CONNECT, PUBLISH]
                self.assertEqual(head, kinds[:len(head)])
                self.assertEqual(head.count(SUBSCRIBE), kinds.count(SUBSCRIBE))

    def served(self):
        """One session of some packets; returns their kinds, and all that was subscribed."""
        client = self.bare.accept(PATIENCE_S)
        self.assertTrue(client, "the station does not come")
        kinds, asked = [], []
        for _ in range(PACKETS):
            packet = client.read()
            self.assertTrue(packet, f"the station left behind {kinds}")
            kinds.append(packet.kind)
            if packet.kind == SUBSCRIBE:
                self.assertTrue(client.is_silent(ANSWER_S), "it goes on without an answer")
            client.answer(packet)
            if packet.kind == SUBSCRIBE:
                asked += packet.subscriptions()
                if OF_HOST in packet.subscriptions():
                    client.publish(OF_HOST[0], b'{"online":true,"timestamp":1}')
        client.cut()
        return kinds, asked

    def test_a_node_listens_to_its_own_commands_alone(self):
        self.expect([OF_NODE], "")

    def test_with_commands_it_listens_to_those_of_its_devices_too(self):
        self.expect([OF_NODE, OF_DEVICES], COMMANDS)

    def test_with_a_primary_host_it_listens_to_its_state(self):
        self.expect([OF_NODE, OF_HOST], WITH_HOST)

    def test_with_both_it_listens_to_all_three(self):
        self.expect([OF_NODE, OF_DEVICES, OF_HOST], f"{COMMANDS} {WITH_HOST}")

    def test_the_json_dialect_listens_to_nothing(self):
        self.expect([], "", "json")

    def test_the_json_dialect_with_commands_listens_to_sets(self):
        self.expect([OF_SETS], COMMANDS, "json")
