"""Runs all benchmarks, prints one table of what they found and writes it as JSON.

    table.py BUILD-FOLDER OUTPUT-FOLDER

A further benchmark is a function in one of the C++ files and its line in rows().
"""

import json
import os
import signal
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Optional

import commands
import startup
import turns

REPETITIONS = 15  # of each benchmark, in mixed order; the least time counts, or of pairs the median ratio


@dataclass
class Row:
    what: str
    unit: str
    ours: float
    peer: Optional[float] = None
    peer_is: str = ""
    limit: Optional[float] = None  # of the ratio
    margin: Optional[float] = None  # or of the difference

    @property
    def ratio(self):
        return self.ours / self.peer if self.peer else None

    @property
    def missed(self):
        return (self.limit is not None and self.ratio > self.limit
                or self.margin is not None and self.ours - self.peer > self.margin)

    @property
    def bound(self):
        """The limit for people."""
        if self.margin is not None:
            return f"+{amount(self.margin, self.unit)}"
        return f"{self.limit:g}" if self.limit is not None else ""


class Times:
    """Seconds of processor time an iteration, by the benchmark's name."""

    def __init__(self, program):
        run = subprocess.run(
            [program, "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}",
             "--benchmark_min_time=0.02", "--benchmark_enable_random_interleaving=true"],
            env={**os.environ, "LC_ALL": "C.UTF-8"}, capture_output=True, text=True)
        if run.returncode != 0:
            raise RuntimeError(f"{program} failed:\n{run.stderr}")
        self.times = {}
        self.pairs = {}
        for result in json.loads(run.stdout)["benchmarks"]:
            if result["run_type"] == "aggregate":
                continue
            if result.get("error_occurred"):
                raise RuntimeError(f"{result['name']}: {result['error_message']}")
            name = result["run_name"].removesuffix("/manual_time")
            seconds = result["real_time" if name != result["run_name"] else "cpu_time"] * SECONDS[result["time_unit"]]
            self.times[name] = min(seconds, self.times.get(name, seconds))
            if "peer" in result:
                self.pairs.setdefault(name, []).append((result["ours"], result["peer"]))

    def __getitem__(self, name):
        return self.times[name]

    def against(self, what, ours, peer, peer_is, limit=None):
        """The row of one benchmark and of the one that does the same by other means."""
        return Row(what, "s", self[ours], self[peer], peer_is, limit)

    def paired(self, what, name, peer_is, limit, ours_is=1, peers_are=1):
        """The row of a benchmark that measures both in turns; where they are of many things, of one of them.

        Of its repetitions the one whose ratio is the median: a processor that runs faster for a while may meet
        the fastest run of one side alone, so that the fastest of all repetitions do not belong together.
        """
        pairs = sorted(self.pairs[name], key=lambda pair: pair[0] / pair[1])
        ours, peer = pairs[len(pairs) // 2]
        return Row(what, "s", ours / ours_is, peer / peers_are, peer_is, limit)


SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def panel(times):
    """What the panel costs, and that a choice does not cost more where there are more of them.

    Most of a panel with few choices is what every panel costs (its view, its other six rows). So a choice is
    looked at twice: as its share of the whole, where that part no longer counts for much, and as what one
    choice more adds.
    """
    counts = [10, 100, 1000, 10_000]
    whole = {n: times[f"showPanel/{n}"] for n in counts}
    added = [(whole[n] - whole[n // 10]) / (n - n // 10) for n in counts[1:]]
    limit = 1.5
    yield from (Row(f"Panel created and first shown, {n} paper types", "s", whole[n]) for n in counts)
    yield from (Row(f"  its share a choice, of {n}", "s", whole[n] / n) for n in counts[:3])
    yield Row("  its share a choice, of 10000", "s", whole[10_000] / 10_000, whole[1000] / 1000, "of 1000", limit)
    yield Row("  one choice more, from 10 to 100", "s", added[0])
    yield Row("  one choice more, from 100 to 1000", "s", added[1], added[0], "from 10 to 100", limit)
    yield Row("  one choice more, from 1000 to 10000", "s", added[2], added[1], "from 100 to 1000", limit)


def chunks(times, build):
    """What the chunked encoding adds to the libraries below it, and what comes before it is read."""
    blocks = [(name, f"{contents}/{size}") for size, unit in ((64, "64 KiB"), (1024, "1 MiB"))
              for contents, name in (("text", f"{unit} of text"), ("random", f"{unit} of random bytes"))]
    for name, block in blocks:
        yield times.paired(f"Chunks of {name} written", f"writeChunks/{block}", "deflate and base64 alone", 1.05)
    for name, block in blocks:
        yield times.paired(f"Chunks of {name} read", f"readChunks/{block}", "base64 and inflate alone", 1.05)
    yield times.paired("A chunk read from an open PPD, of 100000", "readFromPPD/100000", "of 10000", 1.3,
                       100_000, 10_000)
    yield times.paired("Entries found in 16 MiB of filter output", "findEntries", "copied and scanned once", 3.0)
    memory = json.loads(subprocess.run([build / "Benchmarks/reading-memory"], check=True, capture_output=True).stdout)
    yield Row("Peak memory of reading a block of 16 MiB", "bytes", memory["peak"], memory["block"], "the block", 2.2)


def rows(build):
    times = Times(build / "Benchmarks/orvan-bench")
    yield from panel(times)
    yield times.against("XML document read into a tree, 500 entries", "readXML", "readXMLFloor", "expat alone")
    yield from chunks(times, build)
    yield times.paired("XML property list of 1 MiB read", "readLists/xml", "libplist", 1.0)
    yield times.paired("Binary property list of 1 MiB read", "readLists/binary", "libplist", 1.0)
    yield times.paired("Status document of 1 MiB to a ticket", "readStatus/expat", "expat without handlers", 2.0)
    yield times.paired("  beside a tree alone", "readStatus/libxml", "libxml2's tree", 0.8)
    yield times.paired("Keywords looked up", "lookUp/forward", "std::unordered_map", 1.0)
    yield times.paired("  and back", "lookUp/back", "std::unordered_map", 1.0)
    driver = Path(__file__).parent.parent / "Packaging/PPD/Orvan-4500.ppd"
    one, six = commands.one_and_all(build, driver)
    yield Row("Six commands answered about one document", "s", six, one, "one command", 1.2)
    module = next((build / "lib").glob("**/liborvan-paper-options-module.so"))
    with_module, without = startup.instructions(build / "Benchmarks/quiet-application", module)
    yield Row("Instructions of an application that never prints", "instructions", with_module,
              without, "without the module", 1.01)
    for way in ("near", "300 ms away"):
        with_module, without = turns.medians(build, driver.read_text(), turns.WAYS[way])
        yield Row(f"Longest turn of an application's loop in a print dialog, scheduler {way}", "s", with_module,
                  without, "without the module", margin=0.016)
    for count in (10, 100, 1000):
        with_module, without = turns.picks(build, driver.read_text(), count)
        yield Row(f"Dialog, its tab and a pick, {count} paper types", "s", with_module, without,
                  "GTK's own tab without the module", 1.2)


def amount(value, unit):
    if value is None:
        return ""
    if unit != "s":
        return f"{value:,.0f}".replace(",", " ")
    for name, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6), ("ns", 1e-9)):
        if value >= size or name == "ns":
            return f"{value / size:.1f} {name}"


def cells(row):
    peer = f"{amount(row.peer, row.unit)}, {row.peer_is}" if row.peer else ""
    ratio = f"{row.ratio:.3f}" if row.peer else ""
    return [row.what, amount(row.ours, row.unit), peer, ratio, row.bound + ("  MISSED" if row.missed else "")]


def show(table):
    lines = [["What", "Ours", "Floor or peer", "Ratio", "Limit"], *(cells(row) for row in table)]
    widths = [max(map(len, column)) for column in zip(*lines)]
    for line in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def main():
    build, output = (Path(folder).resolve() for folder in sys.argv[1:3])
    # An ending by signal ends the displays as well.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(2))
    try:
        table = list(rows(build))
    except (OSError, RuntimeError, subprocess.SubprocessError) as problem:
        print(f"bench: {problem}", file=sys.stderr)
        return 2
    output.mkdir(parents=True, exist_ok=True)
    entries = [{"what": row.what.strip(), "unit": row.unit, "ours": row.ours, "peer": row.peer, "peerIs": row.peer_is,
                "ratio": row.ratio, "limit": row.limit, "margin": row.margin, "missed": row.missed} for row in table]
    (output / "bench.json").write_text(json.dumps({"schemaVersion": 1, "rows": entries}, indent=2) + "\n")
    show(table)
    return 1 if any(row.missed for row in table) else 0


if __name__ == "__main__":
    sys.exit(main())
