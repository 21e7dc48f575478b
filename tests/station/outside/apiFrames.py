"""The last frames of a link, and a capture of them."""

import re
import subprocess
import time

from stationProgram import StationTest

DISSECTED = ["-o", "mbrtu.udp.port:10502", "-o", "mbrtu.crc_verification:TRUE"]
READ = "station 1: read 1 holding register from 3050"


class ApiFrames(StationTest):
    """GET /api/v1/frames and GET /api/v1/frames.pcap."""

    def test_frames_are_told_in_bytes_and_in_words(self):
        _, served = self.station_with_plc("still", plc="--set MW100=4660")
        served.await_good()

        def exchange():
            """The read and its answer: other reads may be fences, or one register longer."""
            frames = served.get("/api/v1/frames?link=plc").json
            return next((frames[at:at + 2] for at, frame in enumerate(frames[:-1])
                         if frame["meaning"] == READ), None)
        served.await_that(exchange)
        request, reply = exchange()
        self.assertEqual(["time", "direction", "hex", "meaning"], list(request))
        self.assertEqual((">", "<", "station 1: 1 register 0x1234"), (
            request["direction"], reply["direction"], reply["meaning"]))
        self.assertTrue(re.fullmatch("01 03 0B EA 00 01( [0-9A-F]{2}){2}", request["hex"]))
        self.assertTrue(re.fullmatch("01 03 02 12 34( [0-9A-F]{2}){2}", reply["hex"]))
        now = time.time() * 1000
        self.assertLess(now - 10000, request["time"])
        self.assertLessEqual(request["time"], reply["time"])
        self.assertLessEqual(reply["time"], now)

    def test_only_the_last_thousand_are_kept(self):
        _, served = self.station_with_plc("still", options="--pace 1ms")

        def count():
            return len(served.get("/api/v1/frames?link=plc").json)
        served.await_that(lambda: count() > 990)
        for _ in range(3):
            self.assertLessEqual(count(), 1000)

    def test_a_capture_is_read_by_the_dissector(self):
        # The first question waits for an eighth of the time-out: on a busy machine, too, each has its
        # answer.
        _, served = self.station_with_plc("still", plc="--set MW100=4660",
                                          options="--timeout-ms 8000")
        served.await_good()
        answer = served.get("/api/v1/frames.pcap?link=plc")
        self.assertEqual((200, "application/vnd.tcpdump.pcap"),
                         (answer.status, answer.headers["content-type"]))
        capture = self.folder / "frames.pcap"
        capture.write_bytes(answer.body)
        shown = subprocess.run(
            ["tshark", "-r", capture, *DISSECTED, "-T", "fields", "-e", "mbrtu.unit_id", "-e",
             "modbus.func_code", "-e", "modbus.regval_uint16", "-e", "_ws.malformed"],
            capture_output=True, text=True, check=True).stdout.splitlines()
        self.assertIn("1\t3\t4660\t", shown)
        self.assertEqual([], [line for line in shown if not line.endswith("\t")])
        self.assertTrue(all(line == "1\t3\t\t" for line in shown[::2]), shown)

    def test_frames_are_those_of_one_link(self):
        served = self.station()
        for path in ("/api/v1/frames", "/api/v1/frames.pcap"):
            self.assertEqual(404, served.get(f"{path}?link=other").status)
            self.assertEqual(400, served.get(path).status)
