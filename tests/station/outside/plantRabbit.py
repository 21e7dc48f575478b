"""A station at RabbitMQ: the tests that are written for any broker, and a cluster whose nodes die."""

import os

import plantBrokers
import plantJson
import plantSessions
from clusterFaults import ClusterFaults
from plantFaults import summary
from plantTest import PlantTest
from rabbitTest import RabbitTest
from stationProgram import StationTest

SEED = int.from_bytes(os.urandom(4), "big")
KILLS = 3


class RabbitSessions(RabbitTest, plantSessions.PlantSessions):
    """Births, data, deaths and rebirths."""

    test_the_number_of_the_session_goes_on_over_restarts_and_refused_connections = None

    def assert_left(self, broker):
        """It does not tell a DISCONNECT from any other end; that the will is forgotten shows it."""


class RabbitRestart(RabbitTest, PlantTest):
    """One node: a cluster that was killed as a whole takes two minutes to come back."""

    NODES = 1
    test_the_number_of_the_session_goes_on_over_restarts_and_refused_connections = \
        plantSessions.PlantSessions\
        .test_the_number_of_the_session_goes_on_over_restarts_and_refused_connections


class RabbitCommands(RabbitTest, plantBrokers.PlantForeignCommands):
    """Commands in Sparkplug."""

    # It gives what it retained to subscriptions without wildcards alone.
    test_a_retained_command_is_never_executed = None


class RabbitJson(RabbitTest, plantJson.PlantJson):
    """The JSON dialect."""

    # It gives what it retained to subscriptions without wildcards alone.
    test_who_comes_late_gets_everything_from_the_broker = None
    test_a_set_that_the_broker_kept_is_not_executed = None
    test_a_tag_that_a_reload_takes_out_is_cleared = None
    test_what_was_taken_out_while_the_station_was_down_is_cleared = None
    # It keeps what is retained when it is killed.
    test_everything_comes_again_when_the_broker_has_forgotten_it = None

    def started_broker(self):
        return self.rabbit


class RabbitCluster(RabbitTest, StationTest):
    """The seed is printed, so that a failure can be made again."""

    NODES = 0

    def test_a_station_goes_on_when_its_node_dies_and_nothing_is_lost(self):
        run = self.keep(ClusterFaults(self.programs, self.folder, SEED))
        run.run(KILLS)
        print(f"seed {SEED}: {summary(run)}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertEqual(KILLS, run.counts["node"])
        self.assertGreater(run.counts["historical"], 0)
