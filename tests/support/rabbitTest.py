"""The test case of a station at a RabbitMQ, which all tests of a class share: its start takes seconds."""

import tempfile
import unittest
from pathlib import Path

from rabbitCluster import IS_INSTALLED, RabbitBroker


class RabbitTest(unittest.TestCase):
    """Stands ahead of a class of tests that are written for any broker.

    What does not hold at RabbitMQ is set to None there: no test then has the name."""

    NODES = 3  # of the cluster that the tests of the class share; 0: each test starts its own

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not IS_INSTALLED or not cls.NODES:
            return
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.rabbit = RabbitBroker(Path(folder.name), cls.NODES)
        cls.addClassCleanup(cls.rabbit.close)

    def setUp(self):
        if not IS_INSTALLED:
            self.skipTest("rabbitmq-server is not installed")
        super().setUp()

    def broker(self):
        """The broker, instead of one of the test's own."""
        return self.rabbit
