"""Looks at every C++ source with clang-tidy, except those that were clean before and have not changed since.

A source that was clean leaves a stamp: what it was compiled with, the tool and its configuration, and a hash of its text and of
the text of everything that it includes. Test files are spared the path-sensitive analyzer; they run under sanitizers.
Usage: lint.py CLANG-TIDY BUILD-FOLDER STAMP-FOLDER
"""
import concurrent.futures
import functools
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

CHECKS_OF_TESTS = "-clang-analyzer-*"
# What the compiler of the build knows and clang does not.
FOREIGN_OPTIONS = ("-Wno-subobject-linkage",)


@functools.cache
def digest(file):
    """The hash of a file's text; of nothing when it is gone."""
    try:
        return hashlib.sha256(Path(file).read_bytes()).hexdigest()
    except OSError:
        return ""


def commands(build):
    """How each source is compiled; those that are compiled together with others as if they were alone."""
    found = {}
    for entry in json.loads(Path(build, "compile_commands.json").read_text()):
        words = [word for word in shlex.split(entry["command"]) if word not in FOREIGN_OPTIONS]
        while Path(words[0]).name == "ccache":
            words.pop(0)
        file = os.path.normpath(os.path.join(entry["directory"], entry["file"]))
        is_unity = re.search(r"/Unity/unity_\d+_cxx\.cxx$", file)
        sources = re.findall(r'^#include "(/.*\.cpp)"$', Path(file).read_text(), re.MULTILINE) if is_unity else [file]
        for source in sources:
            found[source] = {"directory": entry["directory"], "file": source,
                             "arguments": [source if word == entry["file"] else word for word in words]}
    return found


def without(words, options):
    """The words of a command without these options and what follows each."""
    kept, skip = [], False
    for word in words:
        if not skip and word not in options:
            kept.append(word)
        skip = not skip and word in options
    return kept


def dependencies(command):
    """The files that the source includes, itself among them, as the compiler lists them for make."""
    words = [word for word in without(command["arguments"], ("-o", "-MF", "-MT")) if word not in ("-c", "-MD")]
    rule = subprocess.run([*words, "-M"], cwd=command["directory"], capture_output=True, text=True, check=True).stdout
    names = shlex.split(rule.replace("\\\n", " ").split(":", 1)[1])
    return sorted({os.path.normpath(os.path.join(command["directory"], name)) for name in names})


class Linter:
    def __init__(self, tool, build, stamps):
        self.tool, self.build, self.stamps = tool, Path(build), Path(stamps)
        self.stamps.mkdir(parents=True, exist_ok=True)
        version = subprocess.run([tool, "--version"], capture_output=True, text=True, check=True).stdout
        self.circumstances = [version, digest(Path(__file__)), digest(".clang-tidy")]

    def stamp(self, source):
        return self.stamps / (os.path.relpath(source).replace("/", "!") + ".json")

    def was_clean(self, command):
        try:
            stamp = json.loads(self.stamp(command["file"]).read_text())
        except (OSError, ValueError):
            return False
        return (stamp["circumstances"] == self.circumstances and stamp["command"] == command["arguments"] and
                all(digest(file) == text for file, text in stamp["texts"].items()))

    def look(self, command):
        """Answers what the tool says of a source; "" when it is clean."""
        source = os.path.relpath(command["file"])
        texts = {file: digest(file) for file in dependencies(command)}
        words = [self.tool, "--quiet", "-p", str(self.stamps), source]
        if source.startswith("Tests/"):
            words.insert(1, "--checks=" + CHECKS_OF_TESTS)
        ended = subprocess.run(words, capture_output=True, text=True, check=False)
        if ended.returncode != 0:
            return f"{source}\n{ended.stdout}{ended.stderr}"
        self.stamp(source).write_text(json.dumps(
            {"circumstances": self.circumstances, "command": command["arguments"], "texts": texts}))
        return ""


def main(tool, build, stamps):
    linter = Linter(tool, build, stamps)
    known = commands(build)
    listed = subprocess.run(["git", "ls-files", "-z", "--", "*.cpp", ":!Fuzz/*"], capture_output=True, text=True, check=True)
    sources = [os.path.abspath(name) for name in listed.stdout.split("\0") if name]
    unknown = [os.path.relpath(source) for source in sources if source not in known]
    wanted = [known[source] for source in sources if source in known and not linter.was_clean(known[source])]
    Path(stamps, "compile_commands.json").write_text(json.dumps(wanted))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        said = [text for text in pool.map(linter.look, wanted) if text]
    print("\n".join(said + [f"{name} is compiled by nothing" for name in unknown]))
    print(f"{len(sources)} sources, {len(wanted)} looked at, {len(said) + len(unknown)} with findings")
    return 1 if said or unknown else 0


sys.exit(main(*sys.argv[1:]))
