"""Holds every include to the table of rooms in Documentation/architecture.md, and says which go through a wall.

A row of the table names a folder and, in its last column, what it may include; "all above" is every row before it. Of two rows
the one with the longer path counts: `BiDi/ppdx.h` is a room of its own. A room may always include itself.
"""
import re
import subprocess
import sys
from pathlib import Path

TABLE = Path("Documentation/architecture.md")
ROW = re.compile(r"^\| `([\w/.]+)` \|.*\| ([^|]*) \|$", re.MULTILINE)
INCLUDE = re.compile(r'^#include "([A-Z]\w*/[\w/.]+)"', re.MULTILINE)


def rooms():
    """Each room and the rooms that it may include."""
    table = {}
    for name, may in ROW.findall(TABLE.read_text()):
        named = set(re.findall(r"`([\w/.]+)`", may))
        table[name] = named | (set(table) if "all above" in may else set()) | {name}
    return table


def room_of(path, table):
    """The room with the longest path that holds the file; None for a file of none."""
    return max((name for name in table if path == name or path.startswith(name + "/")), key=len, default=None)


def main():
    table = rooms()
    unknown = {name for may in table.values() for name in may} - set(table)
    problems = [f"{TABLE}: there is no row for {name}" for name in sorted(unknown)]
    if not table:
        problems.append(f"{TABLE} has no table of rooms")
    files = subprocess.run(["git", "ls-files", "-z", "--", "*.cpp", "*.h"], capture_output=True, text=True, check=True)
    for file in filter(None, files.stdout.split("\0")):
        source = room_of(file, table)
        if source is None:
            problems.append(f"{file} is in no room")
            continue
        for included in INCLUDE.findall(Path(file).read_text()):
            target = room_of(included, table)
            if target not in table[source]:
                problems.append(f"{file} includes {included}: there is no door from {source} to {target}")
    print("\n".join(problems))
    return 1 if problems else 0


sys.exit(main())
