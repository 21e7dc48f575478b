"""Values of two words that are written while others read: nobody sees half of one."""

import itertools
import struct
import threading
import time

from stationProgram import StationTest

# Both words differ, so that half of one and half of the other is a third value.
PATTERNS = {"level": (0x3F80BEEF, 0x4120CAFE), "batch": (0x00010002, 0xFFFEFFFD)}
ENOUGH = 100  # looks of a reader
SECONDS = 2  # of writing; the stream tells ten changes in each


def float_of(bits):
    """The float with these bits."""
    return struct.unpack(">f", struct.pack(">I", bits))[0]


def number_of(tag, bits):
    """What is written for the bits to be in the PLC."""
    return bits if tag == "batch" else float_of(bits)


def bits_of(tag, value):
    """The bits of a value as the station tells it, with the fewest digits that name a float."""
    return value if tag == "batch" else struct.unpack(">I", struct.pack(">f", value))[0]


class Watch:
    """Notes each value of the tags that a reader sees, and when; its thread ends with close()."""

    def __init__(self, read):
        self.seen = []  # (earliest, latest moment, tag, bits); of the thread until close()
        self.failure = None
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self._run, args=(read,), daemon=True)
        self.thread.start()

    def _run(self, read):
        try:
            while not self.ended.is_set():
                begin = time.monotonic()
                found = read()
                end = time.monotonic()
                self.seen += [(begin, end, tag, bits_of(tag, value)) for tag, value in found]
        except Exception as failure:  # pylint: disable=broad-except
            self.failure = failure

    def close(self):
        """Ends the thread; fails when the reader has failed."""
        self.ended.set()
        self.thread.join()
        if self.failure:
            raise self.failure


class TwoWordValues(StationTest):
    """A float and a number of 32 bits, written by turns with two values."""

    def setUp(self):
        super().setUp()
        self.simulator, self.served = self.station_with_plc(
            *PATTERNS, options="--allow-writes --pace 1ms")
        self.served.await_good()
        for tag in PATTERNS:
            self.written(tag, PATTERNS[tag][1])

    def written(self, tag, bits):
        """Writes; returns the moments of the request and of its end."""
        begin = time.monotonic()
        answer = self.served.post("/api/v1/write", {
            "link": "plc", "tag": tag, "value": number_of(tag, bits)})
        end = time.monotonic()
        self.assertEqual("confirmed", answer.json["outcome"], answer)
        return begin, end

    def values_reader(self, station):
        """Reads the values as fast as they come, on one connection."""
        connection = self.keep(station.connect())

        def read():
            answer = station.get("/api/v1/values", connection=connection)
            return [(value["tag"], value["value"]) for value in answer.json]
        return read

    def stream_reader(self):
        """Reads the stream."""
        stream = self.keep(self.served.events())

        def read():
            event = stream.next()
            values = event["data"]["values"] if event["event"] == "values" else []
            return [(value["tag"], value["value"]) for value in values if "value" in value]
        return read

    def test_only_the_old_or_the_new_value_is_seen_and_the_new_one_behind_the_answer(self):
        watches = [Watch(self.values_reader(self.served)) for _ in range(2)]
        streamed = Watch(self.stream_reader())
        spans = {tag: [] for tag in PATTERNS}
        end = time.monotonic() + SECONDS
        for number in itertools.count():
            if time.monotonic() > end and all(
                    len(watch.seen) > ENOUGH or watch.failure for watch in watches):
                break
            for tag in PATTERNS:
                bits = PATTERNS[tag][number % 2]
                spans[tag].append((*self.written(tag, bits), bits))
        # The stream ends its wait with the next beat.
        for watch in [*watches, streamed]:
            watch.close()
        for watch in watches:
            self.assertEqual([], self.wrong(watch.seen, spans)[:10])
        self.assertGreater(len(streamed.seen), 2 * len(PATTERNS))  # more than the snapshot
        for tag in PATTERNS:
            self.assertLessEqual({bits for _, _, of, bits in streamed.seen if of == tag},
                                 set(PATTERNS[tag]))

    @staticmethod
    def wrong(seen, spans):
        """What was seen and was neither the value before a write under way nor its new one."""
        found = []
        for begin, end, tag, bits in seen:
            written = spans[tag]
            # The last value whose write had ended before, and all whose writes had begun.
            ended = [at for at, span in enumerate(written) if span[1] < begin]
            first = ended[-1] if ended else -1
            may_be = {written[at][2] for at in range(max(first, 0), len(written))
                      if written[at][0] <= end}
            if first < 0:
                may_be.add(PATTERNS[tag][1])
            if bits not in may_be:
                found.append((begin, end, tag, bits, may_be))
        return found

    def test_both_words_go_in_one_request(self):
        for tag in PATTERNS:
            self.written(tag, PATTERNS[tag][0])
        frames = [bytes.fromhex(frame["hex"])
                  for frame in self.served.get("/api/v1/frames?link=plc").json
                  if frame["direction"] == ">"]
        writes = [frame for frame in frames if frame[1] in (0x06, 0x10)]
        self.assertTrue(writes)
        for frame in writes:  # station, function, first register, number of registers
            self.assertEqual((0x10, 2), (frame[1], int.from_bytes(frame[4:6], "big")), frame.hex(" "))
