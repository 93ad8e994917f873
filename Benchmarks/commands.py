"""How long the command filter takes for some commands, in front of a simulated printer."""

import os
import re
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

RUNS = 60
COMMANDS = [f"com.orvan.{name}" for name in
            ("DeviceStatus", "CustomPaperTypes", "StoredJobs", "ColorModes", "Permissions", "JobAccounting")]


def run(program, job, environment, answers):
    """Seconds of the clock for one run of the filter."""
    start = time.perf_counter()
    ended = subprocess.run([program, "1", "bench", "Printer Status", "1", "", job], env=environment,
                           stderr=subprocess.PIPE, text=True, check=True)
    seconds = time.perf_counter() - start
    answered = len(set(re.findall(r"^PPD: (com\.orvan\.[A-Za-z]+)0000=", ended.stderr, re.MULTILINE)))
    if answered != answers:
        raise RuntimeError(f"the command filter answered {answered} of {answers} commands:\n{ended.stderr}")
    return seconds


def one_and_all(build, driver_ppd):
    """Medians of the seconds for one command and for all, measured in turns."""
    simulator = subprocess.Popen([build / "bin/orvan-simulator"], stdout=subprocess.PIPE, text=True)
    try:
        url, agent = (simulator.stdout.readline().split("=", 1)[1].strip().strip("'") for _ in range(2))
        with tempfile.TemporaryDirectory() as folder:
            ppd = Path(folder, "printer.ppd")
            text = driver_ppd.read_text().replace('*OVNStatusDocument: "/status.xml"',
                                                  f'*OVNStatusDocument: "{url}"\n*OVNSNMPAgent: "{agent}"')
            ppd.write_text(text)
            environment = {**os.environ, "PPD": str(ppd), "DEVICE_URI": "file:///dev/null", "CUPS_SERVERROOT": folder}
            jobs = [(Path(folder, str(count)), count) for count in (1, len(COMMANDS))]
            for job, count in jobs:
                job.write_text("\n".join(["#CUPS-COMMAND", *COMMANDS[:count]]))
            program = build / "lib/cups/filter/commandtoorvan"
            times = [[run(program, job, environment, count) for job, count in jobs] for _ in range(RUNS)]
    finally:
        simulator.terminate()
        simulator.wait()
    return [statistics.median(column) for column in zip(*times)]
