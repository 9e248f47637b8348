"""XML reports as readers see them that know nothing of this project: all count the same cases, failures and errors.

readers_test.py MAKE_REPORT FOLDER XMLLINT NODE NODE_FOLDER SYSTEM_PYTHON
"""

import json
import pathlib
import shutil
import subprocess
import sys
import unittest
import xml.parsers.expat

CASES = 60000
# By the remainder of a case's number: the results 0 to 8, then 0 and 1 again.
FAILURES = sum(1 for index in range(CASES) if index % 11 % 9 in (1, 2, 3, 4))
ERRORS = sum(1 for index in range(CASES) if index % 11 % 9 in (5, 6, 7, 8))
EXPECTED = (CASES, FAILURES, ERRORS)

COUNT_WITH_JUNITPARSER = """
import sys
from junitparser import JUnitXml, Error, Failure
cases = list(JUnitXml.fromfile(sys.argv[1]))
count = lambda kind: sum(1 for case in cases if any(isinstance(one, kind) for one in case.result))
print(len(cases), count(Failure), count(Error))
"""


def run(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, timeout=300)
    if done.returncode != 0:
        raise AssertionError(f"{command[0]} ended with {done.returncode}: {done.stdout[-2000:]}{done.stderr[-2000:]}")
    return done.stdout


def count_with_expat(path):
    counts = {"testcase": 0, "failure": 0, "error": 0}
    root = {}

    def start(name, attributes):
        root.setdefault("attributes", attributes)
        if name in counts:
            counts[name] += 1

    parser = xml.parsers.expat.ParserCreate()
    parser.StartElementHandler = start
    parser.Parse(path.read_bytes(), True)
    return tuple(counts.values()), root["attributes"]


class Readers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder.mkdir(parents=True, exist_ok=True)
        cls.report = cls.folder / "Report.xml"
        run(cls.make_report, cls.report, CASES)

    def test_xmllint(self):
        run(self.xmllint, "--noout", self.report)
        for number, path in zip(EXPECTED, ("//testcase", "//testcase/failure", "//testcase/error")):
            self.assertEqual(float(run(self.xmllint, "--xpath", f"count({path})", self.report)), number)

    def test_expat(self):
        counts, attributes = count_with_expat(self.report)
        self.assertEqual(counts, EXPECTED)
        self.assertEqual([int(attributes[name]) for name in ("tests", "failures", "errors")], list(EXPECTED))

    def test_junitparser(self):
        counted = run(self.system_python, "-c", COUNT_WITH_JUNITPARSER, self.report)
        self.assertEqual(tuple(map(int, counted.split())), EXPECTED)

    def test_junit_report_merger(self):
        merged = self.folder / "Merged.xml"
        merged.unlink(missing_ok=True)
        run(self.node, self.node_folder / "node_modules/junit-report-merger/cli.js", merged, self.report)
        counts, attributes = count_with_expat(merged)
        self.assertEqual(counts, EXPECTED)
        self.assertEqual([int(attributes[name]) for name in ("tests", "failures", "errors")], list(EXPECTED))

    def test_junit2json_and_xunit_viewer(self):
        # Modules are looked for beside the script.
        script = self.folder / "count_cases.mjs"
        shutil.copy(pathlib.Path(__file__).with_name(script.name), script)
        modules = self.folder / "node_modules"
        modules.unlink(missing_ok=True)
        modules.symlink_to(self.node_folder / "node_modules")
        seen = [json.loads(line) for line in run(self.node, script, self.report).splitlines()]
        self.assertEqual([one["reader"] for one in seen], ["junit2json", "xunit-viewer"])
        for one in seen:
            self.assertEqual((one["cases"], one["failures"], one["errors"]), EXPECTED, one["reader"])


if __name__ == "__main__":
    Readers.make_report, folder, Readers.xmllint, Readers.node, node_folder, Readers.system_python = sys.argv[1:7]
    Readers.folder = pathlib.Path(folder)
    Readers.node_folder = pathlib.Path(node_folder)
    unittest.main(argv=sys.argv[:1])
