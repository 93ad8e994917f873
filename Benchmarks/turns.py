"""How long a print dialog's main loop is held, with the module and without it, by what the scheduler does.

    turns.py BUILD-FOLDER

run by itself measures every way in which a scheduler can misbehave and prints a line for each.
"""

import base64
import contextlib
import os
import statistics
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

from far_scheduler import A_PPD, A_QUEUE, ANYTHING, GET_JOBS, PRINT_JOB, FarScheduler
from startup import display

RUNS = 7  # of each kind, in turn
SECONDS_A_RUN = 60
SECONDS = 3.0  # from the choice of the printer to the closing of the dialog
PIECE = 158
LARGE = 16 * 1024 * 1024

FAR = {"delay": 0.15}
WAYS = {
    "near": {},
    "300 ms away": FAR,
    "a byte a second": {"slowed": ANYTHING},
    "frozen at the queue": {"frozen": (A_QUEUE,)},
    "frozen at the jobs": {"frozen": (GET_JOBS,)},
    "frozen at the command job": {"frozen": (PRINT_JOB,)},
    "frozen at the PPD": {"frozen": (A_PPD,)},
    "asks for a password": {"refused": (GET_JOBS, PRINT_JOB)},
}


def with_answer(ppd, size):
    """The PPD with an answer of that many bytes stored in it."""
    text = b"{customPaperTypes=({name=A;type=1;});filler=" + b"x" * size + b";}"
    stream = zlib.compress(text, 9)
    pieces = [base64.b64encode(stream[i:i + PIECE]).decode() for i in range(0, len(stream), PIECE)] + ['""']
    return ppd + "".join(f'*com.orvan.CustomPaperTypes{i:04x}: "{piece.strip(chr(34))}"\n'
                         for i, piece in enumerate(pieces))


@contextlib.contextmanager
def printing_system(build, ppd):
    """A scheduler with a queue of an Orvan printer that has this PPD; answers its socket."""
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder, "printer.ppd")
        file.write_text(ppd.replace("/usr/lib/cups/filter/commandtoorvan", "commandtoorvan"))
        server = subprocess.Popen(
            [build / "bin/orvan-printing-system", "--queue", f"Orvan={file}", "--device", "Orvan=socket://127.0.0.1:9",
             "--filter", build / "lib/cups/filter/commandtoorvan"], stdout=subprocess.PIPE, text=True)
        try:
            for line in server.stdout:
                name, _, value = line.strip().removeprefix("export ").partition("=")
                if name == "CUPS_SERVER":
                    yield value.strip("'\"")
                    break
        finally:
            server.terminate()
            server.wait()


def with_paper_types(ppd, count):
    """The PPD with so many paper types more."""
    place = ppd.index("*MediaType Recycled")
    more = "".join(f'*MediaType Extra{i}/Extra {i}: "<</MediaType(Extra{i})>>setpagedevice"\n' for i in range(count))
    return ppd[:place] + more + ppd[place:]


def run_dialog(build, socket, way, module, *choice):
    """Milliseconds of one run: of the longest turn of the main loop, and of all."""
    with display() as name, tempfile.TemporaryDirectory(prefix="orvan-bench-") as home:
        trigger = Path(home, "chosen")
        far = FarScheduler(socket, trigger, **way)
        environment = {"PATH": os.environ["PATH"], "DISPLAY": name, "HOME": home, "XDG_RUNTIME_DIR": home,
                       "LC_ALL": "C.UTF-8", "GSETTINGS_BACKEND": "memory", "NO_AT_BRIDGE": "1",
                       "CUPS_SERVER": f"127.0.0.1:{far.port}", **({"GTK3_MODULES": str(module)} if module else {})}
        try:
            run = subprocess.run([build / "Benchmarks/dialog-turns", "Orvan", trigger, str(SECONDS), *choice], env=environment,
                                 capture_output=True, text=True, timeout=SECONDS_A_RUN)
        finally:
            far.close()
    if run.returncode != 0 or "assword" in run.stderr:
        raise RuntimeError(f"the application with a print dialog failed:\n{run.stderr}")
    longest, busy = run.stdout.split()
    return float(longest), float(busy)


def longest_turn(build, socket, way, module):
    return run_dialog(build, socket, way, module)[0]


def medians(build, ppd, way, runs=RUNS):
    """Seconds: with the module, without it."""
    module = next((build / "lib").glob("**/liborvan-paper-options-module.so"))
    with printing_system(build, ppd) as socket:
        longest_turn(build, socket, {}, module)  # fills the caches
        turns = [[longest_turn(build, socket, way, kind) for kind in (module, None)] for _ in range(runs)]
    return [statistics.median(column) / 1000 for column in zip(*turns)]


def picks(build, ppd, choices, runs=RUNS):
    """Seconds at work for a dialog, its paper tab and one pick there, with so many choices: with the module, without it."""
    module = next((build / "lib").glob("**/liborvan-paper-options-module.so"))
    with printing_system(build, with_paper_types(ppd, choices)) as socket:
        run_dialog(build, socket, {}, module, "Bond")
        times = [[run_dialog(build, socket, {}, kind, "Bond")[1] for kind in (module, None)] for _ in range(runs)]
    return [statistics.median(column) / 1000 for column in zip(*times)]


def main():
    build = Path(sys.argv[1]).resolve()
    ppd = (Path(__file__).parent.parent / "Packaging/PPD/Orvan-4500.ppd").read_text()
    rows = [(name, ppd, way) for name, way in WAYS.items()]
    rows.append(("an answer of 16 MiB", with_answer(ppd, LARGE), {}))
    for name, text, way in rows:
        ours, without = medians(build, text, way)
        print(f"{name:28} {ours * 1000:7.1f} ms with the module, {without * 1000:7.1f} ms without, "
              f"{(ours - without) * 1000:+.1f} ms", flush=True)
    for count in (10, 100, 1000):
        ours, without = picks(build, ppd, count)
        print(f"{count:4} choices, a pick           {ours * 1000:7.1f} ms with the module, {without * 1000:7.1f} ms "
              f"without, {ours / without:.2f} times", flush=True)


if __name__ == "__main__":
    main()
