"""A simulated PLC whose words all count up with one beat."""

from simulatedPlc import SimulatedPlc
from tagTables import MARKERS, table


def counting_plc(program, folder, words, change_ms, values):
    """A PLC over TCP with the words MW 0, 2, 4 ..., which count from 0 to values - 1 and begin
    anew. The file tags.csv of the folder names them w0, w1, w2 ..."""
    signals = [argument for word in range(words) for argument in
               ("--signal", f"1:MW:{MARKERS + word}:counter:{change_ms}:{values}")]
    rows = [(f"w{word}", 1, "MW", 2 * word, "uint16") for word in range(words)]
    (folder / "tags.csv").write_text(table(rows), encoding="utf-8")
    return SimulatedPlc(program, folder, "tcp", *signals)
