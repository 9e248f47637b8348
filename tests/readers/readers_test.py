"""Reads XML reports with independent programs: all must count the same cases, failures and errors.

One report is generated and contains every result; the other one is written by a run of the tests' modules.

readers_test.py MAKE_REPORT HOST FOLDER XMLLINT NODE NODE_FOLDER SYSTEM_PYTHON
"""

import json
import pathlib
import shutil
import subprocess
import sys
import unittest
import xml.parsers.expat

from readers import need_modules, run, run_tests

CASES = 12000
# Contents of the data sets' files. Cases whose files begin with "schlecht" report the content in a message.
CONTENTS = ("gut", "schlecht <a href=\"x\">'&'</a> ]]> größer \x02\x1b[31m\u0085 € \U0001F600", "anders", "")
FILES_IN_A_FOLDER = 100
MODULES = ("resultmodels", "exceptionmodels", "messagemodels", "datasetmodels")
# Numbers of cases, failures and errors of the modules' other classes.
OTHER_CLASSES = {
    "CResultModel": (7, 4, 1),
    "CPassedModel": (2, 0, 0),
    "CFailedModel": (1, 1, 0),
    "CSubtestExceptionModel": (5, 5, 0),
    "CMessageModel": (5, 2, 0),
    "CRunUnitTestThrows": (1, 1, 0),
}

COUNT_WITH_JUNITPARSER = """
import sys
from junitparser import JUnitXml, Error, Failure
cases = list(JUnitXml.fromfile(sys.argv[1]))
count = lambda kind: sum(1 for case in cases if any(isinstance(one, kind) for one in case.result))
print(len(cases), count(Failure), count(Error))
"""


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


class Tools:
    """The programs and folders; set from the command line."""


class Readers:
    @classmethod
    def setUpClass(cls):
        cls.folder = Tools.folder / cls.__name__
        shutil.rmtree(cls.folder, ignore_errors=True)
        cls.folder.mkdir(parents=True)
        cls.report = cls.folder / "Report.xml"
        cls.expected = cls.make()

    def test_xmllint_counts_the_cases(self):
        run(Tools.xmllint, "--noout", self.report)
        for number, path in zip(self.expected, ("//testcase", "//testcase/failure", "//testcase/error")):
            self.assertEqual(float(run(Tools.xmllint, "--xpath", f"count({path})", self.report)), number)

    def test_expat_counts_the_cases(self):
        counts, attributes = count_with_expat(self.report)
        self.assertEqual(counts, self.expected)
        self.assertEqual([int(attributes[name]) for name in ("tests", "failures", "errors")], list(self.expected))

    def test_junitparser_counts_the_cases(self):
        counted = run(Tools.system_python, "-c", COUNT_WITH_JUNITPARSER, self.report)
        self.assertEqual(tuple(map(int, counted.split())), self.expected)

    def test_junit_report_merger_keeps_the_counts(self):
        need_modules(self, Tools.modules)
        merged = self.folder / "Merged.xml"
        merged.unlink(missing_ok=True)
        run(Tools.node, Tools.modules / "junit-report-merger/cli.js", merged, self.report)
        counts, attributes = count_with_expat(merged)
        self.assertEqual(counts, self.expected)
        self.assertEqual([int(attributes[name]) for name in ("tests", "failures", "errors")], list(self.expected))

    def test_junit2json_and_xunit_viewer_count_the_cases(self):
        need_modules(self, Tools.modules)
        # Node searches for modules beside the script.
        script = self.folder / "count_cases.mjs"
        shutil.copy(pathlib.Path(__file__).with_name(script.name), script)
        modules = self.folder / "node_modules"
        modules.unlink(missing_ok=True)
        modules.symlink_to(Tools.modules)
        seen = [json.loads(line) for line in run(Tools.node, script, self.report).splitlines()]
        self.assertEqual([one["reader"] for one in seen], ["junit2json", "xunit-viewer"])
        for one in seen:
            self.assertEqual((one["cases"], one["failures"], one["errors"]), self.expected, one["reader"])


class MadeReport(Readers, unittest.TestCase):
    @classmethod
    def make(cls):
        run(Tools.make_report, cls.report, CASES)
        # The results repeat after eleven cases: 0 to 8, then 0 and 1 again.
        results = [index % 11 % 9 for index in range(CASES)]
        return CASES, sum(result in (1, 2, 3, 4) for result in results), sum(result > 4 for result in results)


class HostReport(Readers, unittest.TestCase):
    @classmethod
    def make(cls):
        data = cls.folder / "data"
        for name in OTHER_CLASSES:
            (data / name).mkdir(parents=True)
        for index in range(CASES):
            folder = data / str(index // FILES_IN_A_FOLDER) / "CDataSetModel"
            folder.mkdir(parents=True, exist_ok=True)
            (folder / f"Satz {index} 'größer' & \"kleiner\" <b>.txt").write_text(CONTENTS[index % len(CONTENTS)])
        modules = [word for module in MODULES for word in ("--dll", module)]
        # Some cases fail, so the verdict is negative.
        done = subprocess.run([Tools.host, "-d", data, *modules, "--xml", cls.report], capture_output=True, timeout=500)
        if done.returncode != 1:
            raise AssertionError(f"The host ended with {done.returncode}: {done.stderr[-2000:]}")
        failures = CASES - CASES // len(CONTENTS)
        return tuple(map(sum, zip((CASES, failures, 0), *OTHER_CLASSES.values())))


if __name__ == "__main__":
    Tools.make_report, Tools.host, folder, Tools.xmllint, Tools.node, node_folder, Tools.system_python = sys.argv[1:8]
    Tools.folder = pathlib.Path(folder)
    Tools.modules = pathlib.Path(node_folder) / "node_modules"
    run_tests()
