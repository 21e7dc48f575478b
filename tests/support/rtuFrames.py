"""Modbus RTU frames with their checksum, which is pymodbus' own and not the product's."""

from pymodbus.utilities import computeCRC


def with_checksum(body):
    """The frame of these bytes."""
    return body + computeCRC(body).to_bytes(2, "big")


def frame(text):
    """The frame of hexadecimal digits."""
    return with_checksum(bytes.fromhex(text))


def is_whole(received):
    """Whether the last two bytes are the checksum of the others."""
    return with_checksum(received[:-2]) == received


def words_reply(request, words):
    """The reply to a read of words (MODBUS Application Protocol V1.1b3, 6.3 and 6.4)."""
    values = b"".join(word.to_bytes(2, "big") for word in words)
    return with_checksum(request[:2] + bytes([len(values)]) + values)


def write_words(station, first, values):
    """A request to write several registers (6.12)."""
    words = "".join(f"{value:04x}" for value in values)
    return frame(f"{station:02x} 10 {first:04x} {len(values):04x} {2 * len(values):02x} {words}")
