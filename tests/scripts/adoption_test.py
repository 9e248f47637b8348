"""A new team follows the documents, from an empty folder to a pipeline. Arguments: BUILD_TREE CONFIG CMAKE.

It has 300 XML files and a GoogleTest program of 40 tests. Sources, commands and recipes are those of the documents,
with the names of the team's own files.
"""

import json
import pathlib
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
        cls.write_project()
        cls.folder.run("git init -q . && git add CMakeLists.txt"
                       " && git -c user.name=Erika -c user.email=erika@example.org commit -q -m Begin", 0)
        # As in the image of the recipes: one of them may find the package only through this variable.
        cls.folder.variables["CMAKE_PREFIX_PATH"] = str(cls.folder.tree.prefix)
        cls.recipes = [recipe.replace("MyTests", "OrderTests --dll ParserTests")
                       for recipe in parts.recipes_of(text_of("docs/runner.md")) if "CI_NODE" not in recipe]
        for command in parts.commands_of(text_of("docs/migration.md"))[:5]:
            cls.folder.run(command, 0)

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

    @classmethod
    def write_project(cls):
        """Writes what the documents tell the team to write."""
        guide, migration = text_of("docs/user-guide.md"), text_of("docs/migration.md")
        source = parts.snippets_of(guide, "cpp")[0].replace("CFirstTest", "COrderTest").replace("*.txt", "*.xml")
        cls.folder.write("order_tests.cpp", source)
        cls.folder.write("adapter.cpp", parts.snippets_of(migration, "cpp")[0])
        cls.folder.write("CMakeLists.txt", parts.snippets_of(migration, "cmake")[0]
                         + "lutestsuite_add_module(OrderTests order_tests.cpp)\n"
                         + "lutestsuite_discover_tests(OrderTests DATA_DIRECTORY data)\n")

    def test_has_each_case_in_ctest(self):
        shown = json.loads(self.folder.run("ctest --test-dir build --show-only=json-v1", 0))
        names = [test["name"] for test in shown["tests"]]
        # One sub-test of the class has no file.
        self.assertEqual(len(names), CASES + 1)
        self.assertEqual(len(set(names)), CASES + 1)
        output = self.folder.run("ctest --test-dir build -j 2 -R 'Lexer|order-00'", 0)
        self.assertIn(f"out of {TESTS_PER_SUITE + 10}", output)

    def test_has_a_report(self):
        output = self.folder.run("build/bin/LuTestSuiteCLI -d data --dll OrderTests --dll ParserTests -x -w 4"
                                 " --html run.html", 0)
        self.assertIn(f"{CASES + 1} Tests", output)
        page = (self.folder.path / "run.html").read_text(encoding="utf-8")
        self.assertIn("order-299.xml", page)

    def test_is_named_by_its_reports(self):
        self.folder.run("build/bin/LuTestSuiteCLI -d data --dll ParserTests --xml run.xml", 0)
        report = (self.folder.path / "run.xml").read_text(encoding="iso-8859-1")
        commit = self.folder.run("git rev-parse HEAD", 0).strip()
        self.assertIn(f"<PscmChangeset>{commit}</PscmChangeset>", report)
        self.assertIn(f"<PscmRepository>{self.folder.path}</PscmRepository>", report)

    def test_has_a_green_pipeline(self):
        self.folder.variables["GITHUB_STEP_SUMMARY"] = str(self.folder.path / "summary.md")
        self.folder.write("quarantine.txt", "# nothing yet\n")
        for recipe in self.recipes:
            if "jq " not in recipe and "merge" not in recipe:
                self.folder.run(recipe, 0)
        summary = json.loads((self.folder.path / "results/summary.json").read_text(encoding="utf-8"))
        self.assertEqual(summary["counts"]["passed"], CASES + 1)
        self.assertTrue((self.folder.path / "results/junit.xml").is_file())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
