#!/usr/bin/env python3
"""Counts test results over build folders and prints "N passed, N failed[, N skipped]".

A CTest entry that ran a GoogleTest binary counts as its test cases (from the binary's XML
report); any other entry (scripts, fuzzers, fixtures) counts as one test. A failed entry whose
report shows no failure (a crash, a time-out) adds one failure.
"""
import sys
import xml.etree.ElementTree as ET
from pathlib import Path


def gtest_counts(report):
    passed = failed = skipped = 0
    for case in ET.parse(report).getroot().iter("testcase"):
        if case.find("failure") is not None:
            failed += 1
        elif case.get("result") == "skipped" or case.find("skipped") is not None:
            skipped += 1
        else:
            passed += 1
    return passed, failed, skipped


def build_counts(build):
    junit = build / "ctest-junit.xml"
    if not junit.exists():
        print(f"{build}: no test results", file=sys.stderr)
        return 0, 1, 0
    passed = failed = skipped = 0
    for entry in ET.parse(junit).getroot().iter("testcase"):
        name = entry.get("name")
        ok = entry.get("status", "run") == "run" and entry.find("failure") is None
        if entry.get("status") in ("disabled", "notrun") or entry.find("skipped") is not None:
            skipped += 1
            continue
        report = build / "test-results" / f"{name}.xml"
        if report.exists():
            p, f, s = gtest_counts(report)
            if not ok and f == 0:
                f = 1
                print(f"{build.name}: {name} failed outside its test cases", file=sys.stderr)
            passed, failed, skipped = passed + p, failed + f, skipped + s
        elif ok:
            passed += 1
        else:
            failed += 1
    print(f"{build.name}: {passed} passed, {failed} failed, {skipped} skipped", flush=True)
    return passed, failed, skipped


def main(builds):
    totals = [0, 0, 0]
    for build in builds:
        for i, n in enumerate(build_counts(Path(build))):
            totals[i] += n
    line = f"{totals[0]} passed, {totals[1]} failed"
    if totals[2]:
        line += f", {totals[2]} skipped"
    print(line)
    return 1 if totals[1] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
