"""Counts the instructions of a GTK application from its start to its end."""

import contextlib
import os
import re
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

RUNS = 2  # of each kind; the least counts, because what disturbs a run only adds to it
SECONDS_A_RUN = 300


@contextlib.contextmanager
def display():
    """A display of its own: a window that another one covers would not be drawn."""
    read, write = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
        pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        with os.fdopen(read) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("cannot start Xvfb, the display for the measured application")
        yield ":" + number
    finally:
        server.terminate()
        server.wait()


def count(application, module):
    """The instructions of one run of the application; with the module unless that is None."""
    with display() as name, tempfile.TemporaryDirectory(prefix="orvan-bench-") as home:
        # Nothing of the person's session, so that two runs differ in the module alone; and neither settings nor
        # accessibility services, whose cost would make the module's look smaller.
        environment = {"PATH": os.environ["PATH"], "DISPLAY": name, "HOME": home, "XDG_RUNTIME_DIR": home,
                       "LC_ALL": "C.UTF-8", "GSETTINGS_BACKEND": "memory", "NO_AT_BRIDGE": "1",
                       **({"GTK3_MODULES": str(module)} if module else {})}
        profile = Path(home) / "profile"
        run = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", application],
                             env=environment, capture_output=True, text=True, timeout=SECONDS_A_RUN)
        text = profile.read_text() if profile.exists() else ""
    totals = re.search(r"^totals: (\d+)", text, re.MULTILINE)
    loaded = "liborvan-paper-options-module.so" in text
    if run.returncode != 0 or not totals or loaded != bool(module):
        raise RuntimeError(f"cannot count the instructions of {application}"
                           f" {'with' if module else 'without'} {module or 'the module'}:\n{run.stderr}")
    return int(totals[1])


def instructions(application, module):
    """Answers the pair with the module, without it."""
    kinds = [module, None] * RUNS
    with ThreadPoolExecutor(max_workers=2) as pool:
        counts = list(pool.map(lambda kind: count(application, kind), kinds))
    return min(counts[0::2]), min(counts[1::2])
