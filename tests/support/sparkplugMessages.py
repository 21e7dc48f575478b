"""Sparkplug payloads as the tests read them: by Python's protocol buffers, from a definition of the
tests' own."""

import importlib
import subprocess
import sys
import tempfile
from pathlib import Path

QUALITIES = {192: "good", 500: "stale", 0: "bad"}
# By datatype: the value field, and the bits of a signed number.
FIELDS = {1: ("int_value", 8), 2: ("int_value", 16), 3: ("int_value", 32), 4: ("long_value", 64),
          5: ("int_value", 0), 6: ("int_value", 0), 7: ("int_value", 0), 8: ("long_value", 0),
          9: ("float_value", 0), 10: ("double_value", 0), 11: ("boolean_value", 0),
          12: ("string_value", 0), 13: ("long_value", 0), 14: ("string_value", 0)}


def _generated():
    """The module that protoc makes; it is removed from the disk when it was read."""
    source = Path(__file__).with_name("sparkplugReader.proto")
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["protoc", f"--proto_path={source.parent}", f"--python_out={folder}", source],
                       check=True)
        sys.path.insert(0, folder)
        try:
            return importlib.import_module("sparkplugReader_pb2")
        finally:
            sys.path.remove(folder)


MESSAGES = _generated()


def payload_of(data):
    """The payload of a message; raises an error when it is none."""
    payload = MESSAGES.Payload()
    payload.ParseFromString(data)
    return payload


def value_of(metric, datatype):
    """The value of a metric whose birth told the datatype; None: null."""
    if metric.is_null:
        assert metric.WhichOneof("value") is None, "a null with a value"
        return None
    field, bits = FIELDS[datatype]
    assert metric.WhichOneof("value") == field, f"{metric} is of datatype {datatype}"
    value = getattr(metric, field)
    if not bits:
        return value
    whole = 64 if field == "long_value" else 32
    signed = value - (1 << whole) if value >> (whole - 1) else value
    assert -(1 << (bits - 1)) <= signed < 1 << (bits - 1), f"{metric} is no Int{bits}"
    return signed


def quality_of(metric):
    """good, stale or bad; None: the metric has no such property."""
    properties = dict(zip(metric.properties.keys, metric.properties.values))
    if "Quality" not in properties:
        return None
    assert properties["Quality"].type == 3
    return QUALITIES[properties["Quality"].int_value]


def command(name=None, alias=None, datatype=None, time=None, **value):
    """A payload with one metric: command("Node Control/Rebirth", datatype=11, boolean_value=True)."""
    payload = MESSAGES.Payload()
    if time is not None:
        payload.timestamp = time
    metric = payload.metrics.add()
    for key, given in {"name": name, "alias": alias, "datatype": datatype, **value}.items():
        if given is not None:
            setattr(metric, key, given)
    return payload.SerializeToString()
