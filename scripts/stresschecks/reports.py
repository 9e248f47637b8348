"""Compares the reports of two runs, except for times."""
import json
import os
import re

NAMES = ["junit.xml", "report.xml", "report.html", "summary.json"]
# Dates; seconds in the pages and the XML report; seconds in junit.xml; seconds in summary.json.
TIMES = re.compile(rb'\d{4}-\d\d-\d\d[ T]\d\d:\d\d:\d\d|\d+\.\d{6}|time="[0-9.]+"|"seconds": [-+.0-9e]+')


def read_without_times(path):
    """The lines of a report. Times decide which cases of summary.json are the slowest, so only their number is kept."""
    with open(path, "rb") as file:
        content = file.read()
    if path.endswith(".json"):
        summary = json.loads(content)
        summary["slowest"] = len(summary["slowest"])
        content = json.dumps(summary, indent=1).encode()
    return TIMES.sub(b"#", content).splitlines()


def compare(one, other):
    """A text for each report that differs, and the number of lines of all reports."""
    found, lines = [], 0
    for name in NAMES:
        first, second = (read_without_times(os.path.join(folder, name)) for folder in (one, other))
        lines += len(first)
        if first != second:
            place = next((number for number, pair in enumerate(zip(first, second)) if pair[0] != pair[1]),
                         min(len(first), len(second)))
            found.append(f"{name} differs, first in line {place + 1}")
    return found, lines
