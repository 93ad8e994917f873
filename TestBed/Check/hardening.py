"""Says which of the programs and shared objects of a build that people install lack the protection that distributions want:
position independence, relocations that are read-only before anything runs, guarded stacks, checked calls of the C library,
and marked targets of jumps where the processor has them.

Usage: hardening.py BUILD_FOLDER
"""
import subprocess
import sys
from pathlib import Path


def said_by(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def faults(file):
    """What the file lacks."""
    dynamic = said_by("readelf", "-W", "--file-header", "--program-headers", "--dynamic", file)
    symbols = said_by("readelf", "-W", "--dyn-syms", file)
    lacks = []
    if "DYN (" not in dynamic:
        lacks.append("position independence")
    if "GNU_RELRO" not in dynamic or " NOW" not in dynamic:
        lacks.append("immediate binding with read-only relocations")
    if "__stack_chk_fail" not in symbols:
        lacks.append("guarded stacks")
    # A file that calls nothing that could be checked has no such call either way.
    if "_chk@" not in symbols and any(f" {name}@" in symbols for name in ("memcpy", "snprintf", "fprintf", "read")):
        lacks.append("checked calls")
    if "X86-64" in dynamic and "endbr64" not in said_by("objdump", "-d", "--section=.text", file):
        lacks.append("marked targets of jumps")
    return lacks


def main():
    build = Path(sys.argv[1])
    files = [build / "bin" / name for name in ("orvan", "orvan-print")]
    files += [build / "lib/cups/filter/commandtoorvan"]
    files += sorted((build / "lib").rglob("*.so"))
    if len(files) < 6:
        sys.exit(f"hardening: {build} is no whole build")
    lacking = {file: lacks for file in files if (lacks := faults(file))}
    for file, lacks in lacking.items():
        print(f"{file} lacks {', '.join(lacks)}")
    sys.exit(1 if lacking else 0)


main()
