"""Programs that a benchmark starts, and what they cost."""

import subprocess
from pathlib import Path


def cpu_seconds(pid):
    """Processor time of a process so far."""
    threads = Path(f"/proc/{pid}/task").glob("*/schedstat")
    return sum(int(thread.read_text(encoding="ascii").split()[0]) for thread in threads) / 1e9


def resident_kb(pid):
    """Resident memory of a process."""
    for line in Path(f"/proc/{pid}/status").read_text(encoding="ascii").splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    return 0


def started(command):
    """A program with its first line."""
    process = subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, text=True)
    return process, process.stdout.readline().strip()


def ended(process):
    """Ends a program that ends with its standard input, or at a signal."""
    process.stdin.close()
    process.terminate()
    process.wait()
