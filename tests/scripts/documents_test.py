"""Commands, recipes, snippets, links and pictures of the documents. Arguments: BUILD_TREE CONFIG CMAKE.

Runs each command of each document, in a folder that has what the document says: its sources, data and modules, built
against an install tree by the document's own commands.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import documentparts as parts
from documentfolder import ROOT, Folder, Tree

TEXTS = {str(path.relative_to(ROOT)): path.read_text(encoding="utf-8")
         for path in [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").rglob("*.md")),
                      *sorted((ROOT / "examples").glob("*.md"))]}
# The first documents build the modules that the others run.
BUILDERS = ["docs/user-guide.md", "README.md", "docs/debugging.md"]
ORDER = [*BUILDERS, *(name for name in TEXTS if name not in BUILDERS)]

# Beginnings of commands that are not run here, with the reason.
NOT_RUN = {
    "scripts/run-": "builds and tests everything",
    "scripts/setup": "installs packages",
    "scripts/stress": "takes minutes",
    "scripts/fuzz": "takes minutes, needs Clang",
    "scripts/coverage": "builds and tests everything",
    "scripts/plant-faults": "builds and tests everything",
    "scripts/screenshots": "needs a browser, changes the pictures",
    "scripts/package": "builds everything; the tests packages.* call it",
    "scripts/check-packages": "needs root rights and a Debian mirror",
    "scripts/api-reference": "another test calls it",
    "cmake --preset": "builds everything; the test installs the build tree that it belongs to",
    "cmake --build --preset": "builds everything",
    "build/linux-debug/bin/LuTestSuiteCLID --archive-run": "needs two presets in the checkout",
    "sudo apt": "installs packages; scripts/check-packages does the same",
    "vcpkg": "needs vcpkg; a test compares the recipe with the project",
    "conan": "needs Conan; a test compares the recipe with the project",
    "gdb -p": "needs a case that hangs in another terminal",
    'gdb --args build/bin/LuTestSuiteCLI -d data --dll MyTests -i ":leaks$"': "ends in a breakpoint",
    "LuTestSuiteRunner submit --engine slurm": "needs Slurm; a test of the host starts one",
    "LuTestSuiteRunner history DIR": "a synopsis",
    "LuTestSuiteRunner COMMAND": "a synopsis",
    "LuTestSuiteCLI -d DATA": "a synopsis",
}
# Documents whose CMake snippets are built here. The others may have those that contain a part of NOT_BUILT.
BUILT = ("README.md", "docs/user-guide.md", "docs/migration.md", "docs/runner.md", "docs/coverage.md",
         "docs/sanitizers.md")
NOT_BUILT = {
    "FetchContent_Declare": "needs a server; the test of a containing project adds the sources in two ways",
}
# Of the other kinds of code, a Dockerfile needs Docker; the scripts and presets that it names are checked.
LANGUAGES = ("", "cpp", "cmake", "yaml", "groovy", "dockerfile", "xml", "json", "mermaid")
# The first pattern that a command has gives the status that the documents promise, otherwise 0.
STATUS = {
    r" -q | history |--diff-in": 0,
    r'case "CFirstTest:no end': 11,
    r'case "CMyTest:hangs': 18,
    r"--dll FirstTests": 1,
    r"-i COutcomeDemonstration": 1,
}
MISTAKES = re.compile(r"^Fehler: (?!Absturz)|Unbekannte (Option|Argumente)|No tests were found|^(?!.*FEHLER \()"
                      r".*konnte nicht", re.MULTILINE)

DEFECTS = """
#include <chrono>
#include <cstdlib>
#include <thread>
#include "base/luunittest.h"
class CMyTest : public LuUnitTest
{
    LB_RTTI(CMyTest)
    void InitSubtests() override
    {
        AddSubtest(L"leaks", [] { static void* volatile s_lost; s_lost = std::malloc(40); s_lost = nullptr; });
        if (std::getenv("DOCUMENTS_HANG") != nullptr)
        {
            AddSubtest(L"hangs", [] { std::this_thread::sleep_for(std::chrono::hours(1)); });
        }
    }
};
LB_RTTI_CLASS(CMyTest, LuUnitTest)
class CImport : public LuUnitTest
{
    LB_RTTI(CImport)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.xml", [this](const std::wstring& path) { Check(!path.empty(), L"no path"); });
    }
};
LB_RTTI_CLASS(CImport, LuUnitTest)
"""
PARSER_TEST = """
#include <gtest/gtest.h>
TEST(Parser, Reads) { EXPECT_EQ(1 + 1, 2); }
TEST(Parser, Skips) { GTEST_SKIP() << "later"; }
"""


class Documents(unittest.TestCase):
    def test_link_to_files_and_headings(self):
        for name, text in TEXTS.items():
            for target in re.findall(r"\]\(([^)\s]+)\)", parts.without_code(text)):
                if re.match(r"[a-z]+:", target):
                    continue
                path, _, anchor = target.partition("#")
                file = ((ROOT / name).parent / path) if path else ROOT / name
                with self.subTest(document=name, target=target):
                    self.assertTrue(file.exists())
                    if anchor:
                        self.assertIn(anchor, list(parts.anchors_of(file.read_text(encoding="utf-8"))))

    def test_have_small_pictures(self):
        for picture in (ROOT / "docs" / "images").iterdir():
            self.assertLess(picture.stat().st_size, 150_000, picture.name)

    def test_have_snippets_that_a_test_builds(self):
        excused = set()
        for name, text in TEXTS.items():
            self.assertLessEqual(parts.languages_of(text), {*LANGUAGES, *parts.SHELLS}, name)
            for snippet in parts.snippets_of(text, "cmake"):
                reasons = [part for part in NOT_BUILT if part in snippet]
                excused.update(reasons)
                self.assertTrue(reasons or name in BUILT, f"{name}: {snippet}")
        self.assertEqual(excused, set(NOT_BUILT), "snippets that no document has any more")

    def test_name_scripts_and_presets_that_exist(self):
        presets = (ROOT / "CMakePresets.json").read_text(encoding="utf-8")
        for name, text in TEXTS.items():
            for script in re.findall(r"(?<![\w/])scripts/[\w-]+", text):
                self.assertTrue((ROOT / script).exists(), f"{name}: {script}")
            for preset in re.findall(r"--preset ([a-z][\w-]+)", text):
                self.assertIn(f'"name": "{preset}"', presets, name)


def status_of(command):
    return next((status for pattern, status in STATUS.items() if re.search(pattern, command)), 0)


class Commands(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.work = pathlib.Path(temporary.name)
        cls.tree = Tree(*sys.argv[1:4], cls.work / "prefix")
        cls.folders = {}

    def test_have_the_status_that_the_documents_promise(self):
        excused = set()
        run = 0
        for document in ORDER:
            commands = []
            for command in parts.commands_of(TEXTS[document]):
                if re.match(r"LuTestSuite\w+D ", command) and self.tree.config != "Debug":
                    # The test of a Debug build runs the hosts of that build.
                    continue
                reasons = [beginning for beginning in NOT_RUN if command.startswith(beginning)]
                excused.update(reasons)
                if not reasons:
                    commands.append(command)
            if commands:
                with self.subTest(document=document):
                    self.run_all(document, commands)
                run += len(commands)
        self.assertGreater(run, 50)
        self.assertEqual(set(NOT_RUN) - excused, set(), "commands that no document has any more")
        self.compare_consoles()
        self.compare_patterns()

    def run_all(self, document, commands):
        folder = self.prepare(document)
        if document == "README.md":
            # It shows first what it explains later.
            commands = sorted(commands, key=lambda command: not command.startswith("cmake"))
        for command in commands:
            with self.subTest(command=command):
                program = command.split()[0]
                if program in ("gcovr", "gcov", "pkg-config") and not shutil.which(program):
                    self.skipTest(f"{program} is missing")
                output = folder.run(command, status_of(command))
                self.assertNotRegex(output, MISTAKES)

    def prepare(self, document):
        folder = Folder(self.work / document.replace("/", "-"), self.tree)
        self.folders[document] = folder
        name = pathlib.Path(document).stem.replace("-", "_")
        if document == "examples/README.md":
            name = "examples"
        folder.write_guide_data()
        getattr(self, f"prepare_{name}", self.prepare_product)(folder)
        return folder

    def prepare_user_guide(self, folder):
        guide = TEXTS["docs/user-guide.md"]
        folder.write("first_tests.cpp", parts.snippets_of(guide, "cpp")[0])
        folder.write("CMakeLists.txt", parts.snippets_of(guide, "cmake")[0])
        for command in parts.commands_of(guide)[:2]:
            folder.run(command, 0)
        self.make_reports(folder)

    def prepare_README(self, folder):
        folder.write_readme_project()
        self.add_first_tests(folder)

    def prepare_product(self, folder):
        """The modules and data of the guide and of the README, and reports of earlier runs."""
        folder.write_readme_project()
        folder.use_modules_of(self.folders["README.md"])
        more = folder.path / "build/bin/Components"
        more.mkdir(exist_ok=True)
        shutil.copy(folder.path / "build/bin/MyTests.so", more / "MoreTests.so")
        self.make_reports(folder)

    def prepare_cluster(self, folder):
        self.prepare_product(folder)
        folder.run("LuTestSuiteRunner submit --shards 2 --out results -- -d data --dll MyTests", 0)
        (folder.path / "scripts").symlink_to(ROOT / "scripts")

    def prepare_history(self, folder):
        self.prepare_product(folder)
        # What a shell on Linux makes of the path of a folder on Windows.
        shutil.copytree(folder.path / "archive", folder.path / "D:Archiv")

    def prepare_reference(self, folder):
        self.prepare_product(folder)
        folder.write("selection.xml", parts.snippets_of(TEXTS["docs/reference.md"], "xml")[1])
        folder.path = folder.path / "checkout"
        folder.path.mkdir()
        self.prepare_examples(folder)
        for name in ("data", "selection.xml"):
            (folder.path / name).symlink_to(folder.path.parent / name)
        (folder.path / "build/bin").symlink_to(self.folders["README.md"].path / "build/bin")

    def prepare_examples(self, folder):
        """A checkout in which the release preset is built."""
        programs = folder.path / "build/linux-release/bin"
        programs.mkdir(parents=True)
        for program in (self.tree.path / "bin").iterdir():
            (programs / program.name).symlink_to(program)
        self.tree.name_release_hosts(programs)
        (folder.path / "examples").symlink_to(ROOT / "examples")
        shutil.copytree(ROOT / "examples/data", folder.path / "my-copy")

    def prepare_debugging(self, folder):
        folder.write_readme_project(DEFECTS)
        self.add_first_tests(folder)
        folder.build()
        folder.variables["DOCUMENTS_HANG"] = "1"

    def prepare_class_folders(self, folder):
        folder.use_modules_of(self.folders["docs/debugging.md"])
        folder.write("data/customers/CImport/invoice.xml", "<invoice/>")
        folder.write("data/suppliers/CImport/invoice.xml", "<invoice/>")

    def prepare_coverage(self, folder):
        folder.write_readme_project(module=parts.snippets_of(TEXTS["docs/coverage.md"], "cmake")[0])
        folder.build()

    def prepare_sanitizers(self, folder):
        folder.write_readme_project(module=parts.snippets_of(TEXTS["docs/sanitizers.md"], "cmake")[0])
        folder.build()

    def prepare_migration(self, folder):
        shutil.rmtree(folder.path / "data")
        migration = TEXTS["docs/migration.md"]
        folder.write("adapter.cpp", parts.snippets_of(migration, "cpp")[0])
        folder.write("CMakeLists.txt", parts.snippets_of(migration, "cmake")[0])
        folder.write("parser_test.cpp", PARSER_TEST)
        folder.write("lexer_test.cpp", PARSER_TEST.replace("Parser", "Lexer"))

    def prepare_runner(self, folder):
        """Runs the recipes, each in a fresh state, then configures the snippets for CTest."""
        folder.write_readme_project()
        folder.variables |= {"CMAKE_PREFIX_PATH": str(self.tree.prefix), "CI_NODE_TOTAL": "4",
                             "GITHUB_STEP_SUMMARY": f"{folder.path}/summary.md"}
        recipes = list(parts.recipes_of(TEXTS["docs/runner.md"]))
        self.assertGreater(len(recipes), 10)
        for recipe in recipes:
            if "jq " in recipe and not shutil.which("jq"):
                continue
            for node in range(1, 5) if "CI_NODE_INDEX" in recipe else (1,):
                folder.variables["CI_NODE_INDEX"] = str(node)
                folder.run(recipe, 0)
        if shutil.which("jq"):
            self.assertIn("2 of 2 passed", (folder.path / "summary.md").read_text(encoding="utf-8"))
        tests = Folder(folder.path / "ctest", self.tree)
        tests.write_readme_project()
        # The test install.documented_tests builds the project whose parts begin with this name.
        snippets = [snippet for snippet in parts.snippets_of(TEXTS["docs/runner.md"], "cmake")
                    if not snippet.startswith("# CMakeLists.txt")]
        tests.write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(MyTests LANGUAGES CXX)\n"
                    + "".join(snippets))
        tests.build()
        output = tests.run("ctest --test-dir build -R CMyTest", 0)
        self.assertIn("100% tests passed, 0 tests failed out of 2", output)

    def add_first_tests(self, folder):
        (folder.path / "build/bin").mkdir(parents=True)
        shutil.copy(self.folders["docs/user-guide.md"].path / "build/bin/FirstTests.so", folder.path / "build/bin")

    def make_reports(self, folder):
        (folder.path / "archive").mkdir()
        for report in ("old.xml", "run.xml", "archive/old.xml"):
            folder.run(f"build/bin/LuTestSuiteCLI -d data --dll FirstTests --xml {report}", 1)

    def compare_consoles(self):
        """Each output that a document shows below its command is the real one, with tabs of eight columns."""
        folder = self.folders["README.md"]
        shown = parts.consoles_of(TEXTS["README.md"])
        guide = parts.snippets_of(TEXTS["docs/user-guide.md"], "")
        shown = [*shown, ("LuTestSuiteCLI -d data --dll FirstTests", next(text for text in guide if "adds" in text))]
        self.assertEqual(len(shown), 3)
        for command, expected in shown:
            with self.subTest(command=command):
                output = folder.run(command, status_of(command)).expandtabs(8)
                self.assertEqual(expected, output.strip("\n") + "\n")

    def compare_patterns(self):
        guide = TEXTS["docs/user-guide.md"]
        counts = {}
        for option, pattern in re.findall(r"^\| `(-[ie]) \"([^\"]*)\"`", guide, re.MULTILINE):
            output = self.folders["docs/user-guide.md"].run(
                f"LuTestSuiteCLI -q -d data --dll FirstTests {option} '{pattern}'", 0)
            counts[option, pattern] = re.search(r"Fälle: (\d+)/3", output)[1]
        self.assertEqual(counts, {("-i", "/CFirstTest:"): "3", ("-i", r":no end\.txt$"): "1",
                                  ("-e", "/CFirstTest:"): "0", ("-i", "/geometry/"): "0"})

    def test_have_snippets_that_compile(self):
        """Those of BUILT are compiled where their commands run."""
        for name, text in TEXTS.items():
            for snippet in parts.snippets_of(text, "cpp") if name not in BUILT else ():
                if "#include" in snippet:
                    with self.subTest(document=name):
                        command = ["g++", "-std=c++20", "-fsyntax-only", f"-I{self.tree.prefix}/include", "-xc++", "-"]
                        result = subprocess.run(command, input=snippet, capture_output=True, text=True, check=False)
                        self.assertEqual(result.returncode, 0, result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
