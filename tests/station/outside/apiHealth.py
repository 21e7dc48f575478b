"""GET /healthz: each reason is named, and goes with its cause."""

from commandLine import without_powers
from plcControl import PlcControl
from processes import PATIENCE_S, eventually
from stationProgram import Station, StationTest

BETWEEN_TRIES_S = 10  # the station opens the history's file anew so often


class ApiHealth(StationTest):
    """A station with two links, whose history is written."""

    def setUp(self):
        super().setUp()
        self.tags("still", "silent word")
        self.near = self.plc("tcp", "--stations 1-2 --control control")
        self.control = self.keep(PlcControl(self.folder / "control"))
        self.far_port = self.held_port()  # nobody takes it while that PLC is away
        self.far = self.plc("tcp", "--stations 1-2", port=self.far_port)
        (self.folder / "state").mkdir(mode=0o700)
        self.file("station.toml", 'listen = "127.0.0.1:0"\nstate = "state"\n' + "".join(
            f'[[link]]\nname = "{name}"\nlink = "{plc.link}"\ntags = "tags.csv"\n'
            "timeout_ms = 50\nattempts = 1\npause_ms = 50\n"
            for name, plc in (("near", self.near), ("far", self.far))))
        # Root may write into any folder otherwise.
        self.served = self.keep(Station(
            [*without_powers("dac_override"), self.programs / "kakb-station", "--config",
             "station.toml"], self.folder))
        self.await_reasons()

    def reasons(self):
        """The reasons, with a status that agrees."""
        answer = self.served.get("/healthz")
        self.assertEqual(["healthy", "reasons"], list(answer.json))
        found = answer.json["reasons"]
        self.assertEqual((503 if found else 200, not found), (answer.status, answer.json["healthy"]))
        return found

    def await_reasons(self, *beginnings, seconds=PATIENCE_S):
        """Waits until there is one reason with each beginning and no other, in this order."""
        def are_they():
            found = self.reasons()
            return len(found) == len(beginnings) and all(
                reason.startswith(beginning) for reason, beginning in zip(found, beginnings))
        self.assertTrue(eventually(are_they, seconds), (beginnings, self.reasons()))

    def test_each_link_that_is_not_up_is_named(self):
        self.far.stop()
        self.await_reasons('link "far" is lost: ')
        self.near.stop()
        self.await_reasons('link "near" is lost: ', 'link "far" is lost: ')
        self.plc("tcp", "--stations 1-2", port=self.far_port)
        self.await_reasons('link "near" is lost: ')

    def test_each_station_that_is_silent_is_named_until_it_answers(self):
        self.control.command("silent 2 on")
        self.await_reasons('station 2 of link "near" is silent')
        self.control.command("silent 1 on")
        self.await_reasons('station 1 of link "near" is silent', 'station 2 of link "near" is silent')
        self.control.command("silent 2 off")
        self.await_reasons('station 1 of link "near" is silent')
        self.control.command("silent 1 off")
        self.await_reasons()

    def test_a_history_that_is_not_written_is_named_beside_the_others(self):
        state = self.folder / "state"
        self.assertTrue(eventually((state / "history.sqlite").exists))
        state.chmod(0o500)
        self.addCleanup(state.chmod, 0o700)
        (state / "history.sqlite").unlink()
        self.await_reasons("the history is not written: ")
        self.control.command("silent 2 on")
        self.await_reasons('station 2 of link "near" is silent', "the history is not written: ")
        state.chmod(0o700)
        self.await_reasons('station 2 of link "near" is silent',
                           seconds=BETWEEN_TRIES_S + PATIENCE_S)
        self.control.command("silent 2 off")
        self.await_reasons()
