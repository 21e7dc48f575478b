"""What the station tells the manager that runs it as a service."""

import signal
import socket

from processes import PATIENCE_S
from stationProgram import Station, StationTest

LONGEST_MESSAGE = 200


class ServiceManager(StationTest):
    """A manager that listens at a socket, as systemd does for Type=notify."""

    def managed_station(self):
        """Starts a station with a manager; returns both."""
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.settimeout(PATIENCE_S)
        manager.bind(str(self.folder / "notify"))
        config = self.file("station.toml", 'listen = "127.0.0.1:0"\nstate = "state"\n'
                                           '[[link]]\nname = "plc"\nlink = "sim"\n')
        station = self.keep(Station(
            ["env", f"NOTIFY_SOCKET={self.folder / 'notify'}", self.programs / "kakb-station",
             "--config", config], self.folder))
        return manager, station

    def test_hears_when_it_is_ready_reads_again_and_stops(self):
        manager, station = self.managed_station()
        self.assertEqual(b"READY=1", manager.recv(LONGEST_MESSAGE))
        self.assertEqual(200, station.get("/").status)
        station.process.send_signal(signal.SIGHUP)
        self.assertRegex(manager.recv(LONGEST_MESSAGE),
                         rb"^RELOADING=1\nMONOTONIC_USEC=[1-9][0-9]*$")
        self.assertEqual(b"READY=1", manager.recv(LONGEST_MESSAGE))
        self.assertEqual(0, station.end())
        self.assertEqual(b"STOPPING=1", manager.recv(LONGEST_MESSAGE))
