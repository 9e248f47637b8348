"""A new team follows the documents, from an empty folder to a pipeline. Arguments: BUILD_TREE CONFIG CMAKE.

The team has 300 XML files and a GoogleTest program of 40 tests. Sources, commands and a pipeline are those of
docs/from-an-empty-folder.md; then the team uses the recipes of docs/runner.md with its own modules.
"""

import json
import pathlib
import shutil
import sys
import tempfile
import unittest

import documentparts as parts
from documentfolder import ROOT, Folder, Tree

FILES = 300
SUITES = ("Lexer", "Parser", "Printer", "Types")
TESTS_PER_SUITE = 10
CASES = FILES + len(SUITES) * TESTS_PER_SUITE


def text_of(document):
    return (ROOT / document).read_text(encoding="utf-8")


class Adoption(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        work = pathlib.Path(temporary.name)
        cls.folder = Folder(work / "project", Tree(*sys.argv[1:4], work / "prefix"))
        cls.write_program()
        page = text_of("docs/from-an-empty-folder.md")
        for source in parts.snippets_of(page, "cpp"):
            cls.folder.write(source.splitlines()[0].removeprefix("// "), source)
        (project,) = parts.snippets_of(page, "cmake")
        cls.folder.write("CMakeLists.txt", project)
        cls.folder.run("git init -q . && git add CMakeLists.txt"
                       " && git -c user.name=Erika -c user.email=erika@example.org commit -q -m Begin", 0)
        cls.built_commit = cls.folder.run("git rev-parse HEAD", 0).strip()
        cls.outputs = {command: cls.folder.run(command, 0) for command in parts.commands_of(page)}
        cls.folder.variables["CMAKE_PREFIX_PATH"] = str(cls.folder.tree.prefix)
        cls.clone = cls.make_clone(work / "clone", page)

    @classmethod
    def make_clone(cls, path, page):
        """A clone of the repository, as a build server makes it."""
        (ignored,) = [snippet for snippet in parts.snippets_of(page, "") if snippet.startswith("# .gitignore")]
        cls.folder.write(".gitignore", ignored)
        cls.folder.run("git add . && git -c user.name=Erika -c user.email=erika@example.org commit -q -m Complete", 0)
        clone = Folder(path, cls.folder.tree)
        clone.run(f"git clone -q {cls.folder.path} .", 0)
        # The Docker image that the recipes use sets this variable, too.
        clone.variables["CMAKE_PREFIX_PATH"] = str(cls.folder.tree.prefix)
        clone.write("quarantine.txt", "# nothing yet\n")
        clone.variables["GITHUB_STEP_SUMMARY"] = str(path / "summary.md")
        return clone

    @classmethod
    def write_program(cls):
        """Writes what the team already has."""
        for number in range(FILES):
            cls.folder.write(f"data/COrderTest/order-{number:03}.xml", f"<order><total>{number}</total></order>\n")
        for name in ("parser_test", "lexer_test"):
            suites = SUITES[:2] if name == "parser_test" else SUITES[2:]
            tests = "".join(f"TEST({suite}, Test{number}) {{ EXPECT_EQ({number} % 7, {number % 7}); }}\n"
                            for suite in suites for number in range(TESTS_PER_SUITE))
            cls.folder.write(f"{name}.cpp", "#include <gtest/gtest.h>\n" + tests)

    def output_of(self, end):
        (output,) = [output for command, output in self.outputs.items() if command.endswith(end)]
        return output

    def test_has_each_case_in_ctest(self):
        shown = json.loads(self.folder.run("ctest --test-dir build --show-only=json-v1", 0))
        names = {test["name"] for test in shown["tests"]}
        self.assertEqual(len(names), CASES)
        self.assertLessEqual({"COrderTest:order-299.xml", "Types:Test9"}, names)
        for end, count in (("ctest --test-dir build -j 4", CASES), ("-R COrderTest", FILES)):
            self.assertIn(f"100% tests passed, 0 tests failed out of {count}", self.output_of(end))

    def test_has_a_report(self):
        self.assertIn(f"{CASES} Tests", self.output_of("--html run.html"))
        page = (self.folder.path / "run.html").read_text(encoding="utf-8")
        self.assertIn("order-299.xml", page)

    def test_pipeline_reports_a_failed_case(self):
        file = self.folder.path / "data/COrderTest/order-007.xml"
        content = file.read_text(encoding="utf-8")
        self.addCleanup(file.write_text, content, encoding="utf-8")
        file.write_text("<order/>\n", encoding="utf-8")
        (job,) = parts.pipelines_of(text_of("docs/from-an-empty-folder.md"))[0]
        (command,) = [command for command in job.commands if " run --out " in command]
        output = self.folder.run(command, 1)
        self.assertIn("no order with a total", output)
        self.check_files(job, self.folder)
        self.assertIn("order-007.xml", (self.folder.path / job.reports[0]).read_text(encoding="utf-8"))

    def test_reports_name_the_built_commit(self):
        self.folder.run("build/bin/LuTestSuiteCLI -d data --dll ParserTests --xml run.xml", 0)
        report = (self.folder.path / "run.xml").read_text(encoding="iso-8859-1")
        self.assertIn(f"<PscmChangeset>{self.built_commit}</PscmChangeset>", report)
        self.assertIn(f"<PscmRepository>{self.folder.path}</PscmRepository>", report)

    def run_job(self, job):
        for node in range(1, job.parallel + 1):
            self.clone.variables |= {"CI_NODE_INDEX": str(node), "CI_NODE_TOTAL": str(job.parallel)}
            for command in job.commands:
                if "jq " not in command or shutil.which("jq"):
                    self.clone.run(command.replace("MyTests", "OrderTests --dll ParserTests"), 0)
        self.check_files(job, self.clone)

    def check_files(self, job, folder):
        """Expects that the job has made each file that its pipeline keeps."""
        for pattern in job.artifacts + job.reports:
            self.assertEqual(len(list(folder.path.glob(pattern))), job.parallel if "*" in pattern else 1, pattern)

    def check_run(self):
        summary = json.loads((self.clone.path / "results/summary.json").read_text(encoding="utf-8"))
        self.assertEqual(summary["counts"]["passed"], CASES)
        self.assertEqual(summary["counts"]["planned"], CASES)
        junit = (self.clone.path / "results/junit.xml").read_text(encoding="utf-8")
        self.assertEqual(junit.count("<testcase "), CASES)

    def test_has_green_pipelines(self):
        pipelines = [*parts.pipelines_of(text_of("docs/from-an-empty-folder.md")),
                     *parts.pipelines_of(text_of("docs/runner.md"))]
        self.assertEqual(len(pipelines), 4)
        self.assertIn(4, [job.parallel for jobs in pipelines for job in jobs])
        for jobs in pipelines:
            with self.subTest(jobs=[job.name for job in jobs]):
                shutil.rmtree(self.clone.path / "results", ignore_errors=True)
                for job in jobs:
                    self.run_job(job)
                self.check_run()
        self.assertIn(f"Total Tests: {CASES}", self.clone.run("ctest --test-dir build -N", 0))

    def test_has_a_green_pipeline_in_jenkins(self):
        """Builds twice in one workspace. Then skips the tests, as after a failed build: old results must be gone."""
        shutil.rmtree(self.clone.path / "results", ignore_errors=True)
        (recipe,) = parts.snippets_of(text_of("docs/runner.md"), "groovy")
        commands = list(parts.commands_of_groovy(recipe))
        self.assertEqual(len(commands), 5)
        self.clone.removes_runs = False
        self.addCleanup(setattr, self.clone, "removes_runs", True)
        for command in commands * 2:
            self.clone.run(command.replace("MyTests", "OrderTests --dll ParserTests"), 0)
        self.check_run()
        for command in commands[:2] + commands[4:]:
            self.clone.run(command, 0)
        self.assertFalse((self.clone.path / "results").exists(), "results of an earlier build are left")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
