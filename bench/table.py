"""Makes one table of what the benchmarks measured, with the goals.

usage: table.py BENCHMARKS.json FOOTPRINT PYMODBUS POINTS
  BENCHMARKS.json   of driverBench
  FOOTPRINT         lines of footprint, and "stripped_bytes N"
  PYMODBUS          lines of pymodbusExchange.py; empty if it failed
  POINTS            receives the growth curves, for gnuplot: blocks of "n nanoseconds"
Prints the table as Markdown. Times are processor time, the fastest of all repetitions.
Exit status: 0 all goals kept, 1 one missed, 2 a benchmark is missing or failed, 3 all goals kept, but
Qt SerialBus or pymodbus was not there.
"""

import json
import math
import sys

CURVES = (
    ("one word, units cached", "oneWord"),
    ("125 words, units cached", "blockUnchanged"),
    ("one scan, units cached", "lastUnit"),
    ("merge alone, keys", "mergeAlone"),
    ("intf_addrMerge, keys", "mergeInAll"),
    ("write, writes queued", "writeWord"),
)
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6}
BLOCK_WORDS = 125
CACHED = 10000
KEYS = (100, 1000, 5000)
NOT_THERE = "not there"


def fastest_times(path):
    times = {}
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("run_type") == "aggregate":
                continue
            if run.get("error_occurred"):
                raise KeyError(run["name"] + ": " + run["error_message"])
            taken = run["cpu_time"] * UNITS[run["time_unit"]]
            name = run["run_name"]
            times[name] = min(taken, times.get(name, taken))
    return times


def numbers(path):
    with open(path, encoding="utf-8") as file:
        return {name: float(value) for name, value in (line.split() for line in file)}


def time_text(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.1f} ms"
    return f"{ns / 1e3:.2f} µs" if ns >= 1e3 else f"{ns:.0f} ns"


def exponent(points):
    """Slope of the straight line through the logarithms."""
    xs = [math.log(n) for n, _ in points]
    ys = [math.log(t) for _, t in points]
    x, y = sum(xs) / len(xs), sum(ys) / len(ys)
    return sum((a - x) * (b - y) for a, b in zip(xs, ys)) / sum((a - x) ** 2 for a in xs)


def exchange_rows(t):
    word, block, changed = t["oneWord/100"], t["blockUnchanged/125"], t["blockChanged/125"]
    far = t[f"blockUnchanged/{CACHED}"]
    scan = t[f"lastUnit/{CACHED}"] - t[f"firstUnit/{CACHED}"]
    modbus_word, modbus_block = t["libmodbusRead/1"], t["libmodbusRead/125"]
    most_word = min(modbus_word / 6, modbus_word * 500 / 3500)
    yield ("one word, 100 units cached",
           f"{time_text(word)}; libmodbus {time_text(modbus_word)}, {modbus_word / word:.1f} times",
           f"1/6 of libmodbus, and 500 ns where it takes 3.5 µs: {time_text(most_word)}",
           word <= most_word)
    yield ("125 words, 125 units cached, unchanged",
           f"{time_text(block)}; libmodbus {time_text(modbus_block)}, "
           f"{modbus_block / block:.1f} times",
           f"1/3 of libmodbus: {time_text(modbus_block / 3)}", block <= modbus_block / 3)
    yield ("the same, each word", f"{block / BLOCK_WORDS:.1f} ns", "under 8 ns",
           block < 8 * BLOCK_WORDS)
    yield (f"the same, {CACHED} units cached", f"{time_text(far)}",
           f"1.5 times, and one scan: {time_text(1.5 * block + scan)}", far <= 1.5 * block + scan)
    yield ("the same, all words changed and monitored",
           f"{time_text(changed)}, {changed / block:.2f} times", "2 times", changed <= 2 * block)
    yield ("a unit scanned", f"{scan / CACHED:.2f} ns", "2 ns", scan <= 2 * CACHED)


def plan_rows(t):
    alone = [(n, t[f"mergeAlone/{n}"]) for n in KEYS]
    most = KEYS[-1]
    in_all = t[f"mergeInAll/{most}"]
    marking = (in_all - t[f"mergeAlone/{most}"]) / most ** 2
    yield ("merge of 100, 1,000, 5,000 keys",
           ", ".join(time_text(taken) for _, taken in alone) + f"; n^{exponent(alone):.2f}",
           "below n^1.3", exponent(alone) < 1.3)
    yield ("marking their units", f"{marking:.2f} ns × n²", "stated", None)
    yield (f"intf_addrMerge, {most} keys, in all", time_text(in_all), "100 ms", in_all < 100e6)


def write_rows(t):
    empty, full = t["writeWord/0"], t["writeWord/500"]
    yield ("write of a word, to its completion", time_text(empty), "1 µs", empty <= 1000)
    yield ("the same, 500 queued", f"{time_text(full)}, {full / empty:.1f} times", "4 times",
           full <= 4 * empty)
    for length in (8, 256):
        ours, bitwise = t[f"checksum/{length}"], t[f"checksumBitwise/{length}"]
        yield (f"checksum of {length} bytes",
               f"{ours:.1f} ns; bitwise {bitwise:.1f} ns, {bitwise / ours:.1f} times",
               f"1/3 of bitwise: {bitwise / 3:.1f} ns", ours <= bitwise / 3)


def footprint_rows(f):
    unit = f["cached_unit_bytes"]
    yield ("memory of a cached unit", f"{unit:.0f} bytes", "96 bytes", unit <= 96)
    yield ("memory of a queued write", f"{f['queued_write_bytes']:.0f} bytes", "stated", None)
    yield ("heap of an empty driver", f"{f['empty_driver_bytes']:.0f} bytes", "stated", None)
    yield ("library, stripped", f"{f['stripped_bytes']:.0f} bytes", "stated", None)
    yield ("load and unload", f"{f['load_microseconds']:.0f} µs", "stated", None)


def peer_rows(t, pymodbus):
    for words, ours in (("1", "oneWord/1"), ("125", "blockUnchanged/125")):
        yield (f"Qt SerialBus, {words} words, request and reply PDU",
               peer_text(t.get("serialBusRead/" + words), t[ours], 1), "stated", None)
        yield (f"pymodbus, {words} words, request and reply",
               peer_text(pymodbus.get(words), t[ours], 0), "stated", None)


def peer_text(peer, ours, decimals):
    if peer is None:
        return NOT_THERE
    return f"{time_text(peer)}, {peer / ours:.{decimals}f} times the driver"


def write_points(path, times):
    with open(path, "w", encoding="utf-8") as file:
        for title, name in CURVES:
            file.write(f'"{title}"\n')
            for run in sorted((r for r in times if r.startswith(name + "/")),
                              key=lambda r: int(r.split("/")[1])):
                file.write(f"{max(int(run.split('/')[1]), 1)} {times[run]:.1f}\n")
            file.write("\n\n")


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    try:
        times = fastest_times(sys.argv[1])
        rows = [*exchange_rows(times), *plan_rows(times), *write_rows(times),
                *footprint_rows(numbers(sys.argv[2])), *peer_rows(times, numbers(sys.argv[3]))]
    except (KeyError, ValueError, OSError) as problem:
        print("table.py:", problem, file=sys.stderr)
        return 2
    write_points(sys.argv[4], times)
    print("| what | measured | goal | kept? |\n|---|---|---|---|")
    for what, measured, goal, kept in rows:
        print(f"| {what} | {measured} | {goal} | {'—' if kept is None else 'yes' if kept else 'NO'} |")
    if any(row[3] is False for row in rows):
        return 1
    return 3 if any(row[1] == NOT_THERE for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
