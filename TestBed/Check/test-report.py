"""Reads a JUnit report of ctest: prints what failed or was skipped, then "PASSED FAILED SKIPPED" as the last line."""
import re
import sys
import xml.etree.ElementTree as ElementTree

LINES_OF_A_FAILURE = 60


def reason(output):
    """Why a test was skipped: what stands after "Skipped" in GoogleTest's output."""
    found = re.search(r"Skipped\n(.*)", output or "")
    return found.group(1).strip() if found else "no reason given"


def main(file, preset):
    passed = failed = skipped = 0
    for case in ElementTree.parse(file).getroot().iter("testcase"):
        name, status, output = case.get("name"), case.get("status"), case.findtext("system-out")
        if status == "run":
            passed += 1
        elif case.find("skipped") is not None and status != "fail":
            skipped += 1
            print(f"skipped {preset} {name}: {reason(output)}")
        else:
            failed += 1
            print(f"FAILED  {preset} {name}")
            print("\n".join((output or "").splitlines()[-LINES_OF_A_FAILURE:]))
    print(passed, failed, skipped)


main(*sys.argv[1:])
