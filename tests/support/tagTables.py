"""The tags and recipes of the command line's tests, as CSV tables."""

from pathlib import Path

DEMO = Path(__file__).resolve().parents[2] / "demo"
DEMO_TAGS = DEMO / "tags.csv"
DEMO_RECIPE = DEMO / "recipe.csv"
MARKERS = 3000  # the register behind MW 0

# Name: station, area, address, type. An address belongs to one name only, so that tables of any
# names are valid.
TAGS = {
    "count": (1, "IW", 0, "uint16"),
    "more inputs": (1, "IW", 4, "int16"),
    "door": (1, "IX", "8.1", "bool"),
    "still": (1, "MW", 100, "uint16"),
    "offset": (1, "MW", 110, "int16"),
    "level": (1, "MW", 120, "float32:high"),
    "batch": (1, "MW", 124, "uint32"),
    "mode": (1, "MW", 300, "uint16"),
    "far": (1, "MW", 4000, "uint16"),
    "lamp": (1, "MX", "12.3", "bool"),
    "bit a": (1, "MX", "30.0", "bool"),
    "bit b": (1, "MX", "30.1", "bool"),
    "bit c": (1, "MX", "30.2", "bool"),
    "speed": (1, "QW", 40, "int16"),
    "horn": (1, "QX", "0.5", "bool"),
    "valve": (1, "QX", "2.1", "bool"),
    "total": (2, "QW", 8, "uint32"),
    "other speed": (2, "QW", 40, "uint16"),
    "silent word": (2, "MW", 0, "uint16"),
    "beacon": (3, "QX", "0.5", "bool"),
}
HEADER = "name,station,area,address,type"


def table(rows, header=HEADER):
    """A CSV table of rows, each a sequence of fields."""
    return "".join(f"{line}\n" for line in [header, *(",".join(map(str, row)) for row in rows)])


def tag_table(*names):
    """A tag file of some of the tags."""
    return table((name, *TAGS[name]) for name in names)


def recipe_table(values):
    """A recipe of some of the tags, from their names and values."""
    return table(((name, *TAGS[name], value) for name, value in values.items()), HEADER + ",value")


def word_rows(registers, stations=(1,)):
    """Words of the marker area, each named after its station and register."""
    return [(f"{station}/{register}", station, "MW", 2 * (register - MARKERS), "uint16")
            for station in stations for register in registers]
