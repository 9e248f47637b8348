"""Commands, recipes, snippets, links and pictures of the documents. Arguments: BUILD_TREE CONFIG CMAKE.

Runs each command of each document in a folder with the sources, data and modules that the document describes. The
document's own commands build the modules, against an install tree.
"""
# long because most of it is tables of what the documents contain, and the checks share the folders of one run.

import json
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

import documentparts as parts
from documentfolder import ROOT, Folder, Tree
from documentsources import DEFECTS, INVOICES, PARSER_TEST, UNDEFINED

TEXTS = {str(path.relative_to(ROOT)): path.read_text(encoding="utf-8")
         for path in [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").rglob("*.md")),
                      *sorted((ROOT / "examples").glob("*.md"))]}
# adoption_test.py runs the commands of this document.
ADOPTED = "docs/from-an-empty-folder.md"
# The first documents build the modules that the others run.
BUILDERS = ["docs/user-guide.md", "README.md", "docs/debugging.md"]
ORDER = [*BUILDERS, *(name for name in TEXTS if name not in (*BUILDERS, ADOPTED))]

# Commands that this test does not run, and the reasons. Each key is a whole command.
NOT_RUN = {
    "scripts/run-tests": "builds and tests everything",
    "scripts/run-tests --quick": "builds and tests everything",
    "scripts/run-tests mingw-debug": "builds and tests everything",
    "scripts/run-example": "scripts/run-tests calls it",
    "scripts/run-example --windows": "scripts/run-tests calls it",
    "scripts/run-example --cluster": "scripts/run-tests calls it",
    "scripts/setup build": "installs packages; build.packages_suffice checks its list",
    "scripts/stress": "takes minutes; stress_in_small runs it for one round",
    "scripts/stress --preset mingw-release --rounds 5 --kills 20": "needs that build; stress_in_small runs another one",
    "scripts/stress --faults": "takes minutes; stress_in_small runs it for one round",
    "scripts/stress --faults --preset mingw-release --rounds 2": "needs that build; stress_in_small runs another one",
    "scripts/stress --resume": "takes minutes; stress_in_small runs it with a few kills",
    "scripts/stress --resume --preset mingw-release --kills 30": "needs that build; stress_in_small runs another one",
    "scripts/stress --cluster 100": "takes hours, and needs Slurm; the document says that no test calls it",
    "scripts/fuzz --seconds 600": "builds all fuzzers; scripts/run-tests linux-fuzz calls it",
    "scripts/coverage": "builds and tests everything; the document says that no test calls it",
    "scripts/plant-faults 20 1": "builds and tests everything; list_faults runs it with --list",
    "scripts/screenshots": "changes the pictures; the document says that no test calls it",
    "scripts/package": "builds everything; the tests packages.linux and packages.windows call it for each platform",
    "scripts/package linux": "builds everything; the test packages.linux calls it",
    "scripts/package windows": "builds everything; the test packages.windows calls it",
    "scripts/check-packages": "the test packages.fresh_root calls it",
    "scripts/api-reference": "the test of the reference calls it",
    "cmake --preset linux-install && cmake --build --preset linux-install": "the test packages.install_preset runs it",
    "cmake --preset linux-release && cmake --build --preset linux-release": "the build that scripts/run-tests makes",
    "cmake --build --preset linux-release --target ExampleHost example_modules":
        "part of the build whose programs the test runs",
    "ctest --preset X": "tests everything",
    "sudo apt install ./build/linux-package/packages/*.deb": "scripts/check-packages runs it",
    "vcpkg install lutestsuite --classic --overlay-ports=packaging/vcpkg":
        "needs vcpkg; a test runs the port with stand-ins for vcpkg's functions",
    "conan create packaging/conan --build=missing -s compiler.cppstd=20":
        "needs Conan; a test runs the recipe with stand-ins for Conan's functions",
    "addr2line -e deflate.so 0xa7f8": "the module of an example; the command of docs/debugging.md is run",
    "pacman -S mingw-w64-x86_64-gcc mingw-w64-x86_64-cmake mingw-w64-x86_64-ninja": "needs MSYS2 on Windows",
    "Get-CimInstance Win32_Process -Filter \"CommandLine like '%--memory-id%'\"": "needs PowerShell on Windows",
    "gdb -p ID": "needs gdb on Windows",
    "scripts/fuzz report option": "builds two fuzzers; scripts/run-tests linux-fuzz calls scripts/fuzz",
    "gdb -p $(pgrep -n -f memory-id)": "needs a case that hangs; debug_hang runs both",
    "gdb build/bin/LuTestSuiteCLI dumps/CMyTest_hangs-1234.core": "debug_dump runs it with the name of the real dump",
    'gdb --args build/bin/LuTestSuiteRunner case "CFirstTest:no end.txt" -- -d data --dll FirstTests':
        "debug_as_shown runs it with the lines that the document shows",
    'gdb --args build/bin/LuTestSuiteCLI -d data --dll FirstTests -x -i ":no end"':
        "debug_as_shown runs it with the lines that the document shows",
    'gdb --args build/bin/LuTestSuiteCLI -d data --dll MyTests -i ":leaks$" --track-heap --break-alloc-id 8':
        "debug_as_shown runs it with the number that the run has reported",
    "cd build/linux-debug/bin && ./lutestsuite_tests --gtest_filter=Suite.Name":
        "find_test_programs calls the program of this build",
    "scripts/run-wine build/mingw-release/bin/lutestsuite_tests.exe --gtest_filter=...":
        "needs that build; find_test_programs calls the program of this build",
    "benchmarks/scaling": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/scaling --processor": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/adapters": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/compare": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/compare-heap": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/children": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/discovery": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "benchmarks/sorting": "measures for minutes; test_name_benchmarks_that_exist reads its help",
    "review --accept": "short for the commands of try_options_of_review",
    "LuTestSuiteRunner submit --engine slurm --shards 40 --out results --sbatch=--time=30 -- -d data --dll MyTests -x":
        "needs Slurm; a test of the host starts one",
    "LuTestSuiteRunner history DIR [--html FILE] [--json FILE] [--gate RULE]...": "a synopsis",
    "LuTestSuiteRunner COMMAND [own options] -- [options of LuTestSuiteCLI]": "a synopsis",
    "LuTestSuiteCLI -d DATA [option...]": "a synopsis",
}
# Documents whose CMake snippets are built here. In other documents, each snippet contains a key of NOT_BUILT.
BUILT = ("README.md", "docs/user-guide.md", "docs/migration.md", "docs/runner.md", "docs/coverage.md",
         "docs/sanitizers.md", ADOPTED)
NOT_BUILT = {
    "FetchContent_Declare": "needs a server; tests of a containing project and a fetched GoogleTest have local sources",
}
# Languages of code blocks. No test builds the Dockerfile, which needs Docker; test_have_an_image_... check its
# commands. The test packages.windows runs commands for Windows (bat).
LANGUAGES = ("", "cpp", "cmake", "yaml", "groovy", "dockerfile", "bat", "xml", "json", "mermaid")
# The exit status that the documents promise for a command: that of the first pattern that matches, or 0.
STATUS = {
    r" -q | history |--diff-in": 0,
    r'case "CFirstTest:no end': 11,
    r'case "CMyTest:hangs': 18,
    r"--core dumps": 1,
    r"--dll FirstTests": 1,
    r"-i COutcomeDemonstration": 1,
}
# For each option of review: further options that the call needs, the status, a pattern for the output, and the last
# words of the references after the call, without blanks between them.
REVIEWS = {
    "--diff": ("", 0, r"(?s)-Summe: 11\n *\+Summe: 12.*-Zahl: 3\n *\+Zahl: 2", "113"),
    "--diff=data/CInvoice/a.txt.expected": ("", 0, r"(?s)^(?!.*Zahl).*-Summe: 11\n *\+Summe: 12", "113"),
    "--side-by-side": ("", 0, r"(?s)Summe: 11 .*Summe: 12.*Zahl: 3 .*Zahl: 2", "113"),
    "--side-by-side=data/CInvoice/a.txt.expected": ("", 0, r"(?s)^(?!.*Zahl).*Summe: 11 .*Summe: 12", "113"),
    "--files": ("", 0, r"(?m)^[0-9A-F]{6}  CInvoice/a\.txt\.expected\n[0-9A-F]{6}  CInvoice/b", "113"),
    "--files=4C21F0": ("", 0, r"^CInvoice/a\.txt\.expected\n$", "113"),
    "--accept 4C21F0": ("", 0, "(?s).*", "123"),
    "--accept data/CInvoice/a.txt.expected": ("", 0, "(?s).*", "123"),
    "--accept all": ("", 0, "(?s).*", "122"),
    "--reject ...": ("", 0, "(?s).*", "113"),
    "--accept-empty": (" --accept all", 0, "(?s).*", "122"),
    "--ci": ("", 1, "(?m)^[0-9A-F]{6}  ", "113"),
}
MISTAKES = re.compile(r"^Fehler: (?!Absturz)|Unbekannte (Option|Argumente)|No tests were found|^(?!.*FEHLER \()"
                      r".*konnte nicht", re.MULTILINE)


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

    def test_name_examples_that_run_tests_runs(self):
        script = (ROOT / "scripts/run-tests").read_text(encoding="utf-8")
        commands = re.findall(r"^    (scripts/run-example(?: --\w+)*)(?: .*)?$", TEXTS["README.md"], re.MULTILINE)
        self.assertGreater(len(commands), 1)
        for command in commands:
            self.assertRegex(script, rf"(?m){command}( \|\||$)")

    def test_have_small_pictures(self):
        for picture in (ROOT / "docs" / "images").iterdir():
            self.assertLess(picture.stat().st_size, 200_000, picture.name)

    def test_name_benchmarks_that_exist(self):
        """Asks each script for its help, which names the options of the command."""
        commands = [command for command in NOT_RUN if command.startswith("benchmarks/")]
        self.assertGreater(len(commands), 5)
        for command in commands:
            program, *options = command.split()
            with self.subTest(command=command):
                result = subprocess.run([ROOT / program, "--help"], capture_output=True, text=True, check=True)
                for option in options:
                    self.assertIn(f"[{option}]", result.stdout)
        for program in re.findall(r"^\| `(\w+)` \|", TEXTS["docs/performance.md"], re.MULTILINE):
            self.assertTrue((ROOT / "benchmarks" / f"{program}.cpp").exists(), program)

    def test_have_an_image_that_installs_packages_of_debian(self):
        (install, _) = parts.image_commands_of(TEXTS["docs/runner.md"])
        update, command = install.split(" && ")
        self.assertEqual(update, "apt-get update")
        if not shutil.which("apt-get"):
            self.skipTest("not a Debian system")
        result = subprocess.run([*command.split(), "--simulate"], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_have_an_image_with_the_installation_of_the_documents(self):
        (_, build) = parts.image_commands_of(TEXTS["docs/runner.md"])
        commands = parts.commands_of(TEXTS["docs/installation.md"])
        self.assertEqual(build, " && ".join(commands[:3]))

    def test_have_snippets_that_a_test_builds(self):
        excused = set()
        for name, text in TEXTS.items():
            self.assertLessEqual(parts.languages_of(text), {*LANGUAGES, *parts.SHELLS}, name)
            for snippet in parts.snippets_of(text, "cmake"):
                reasons = [part for part in NOT_BUILT if part in snippet]
                excused.update(reasons)
                self.assertTrue(reasons or name in BUILT, f"{name}: {snippet}")
        self.assertEqual(excused, set(NOT_BUILT), "keys of NOT_BUILT that occur in no document")

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
                if re.match(r"(build/linux-debug/bin/)?LuTestSuite\w+D ", command) and self.tree.config != "Debug":
                    # These hosts exist only in a Debug build.
                    continue
                if command in NOT_RUN:
                    excused.add(command)
                else:
                    commands.append(command)
            if commands:
                with self.subTest(document=document):
                    self.run_all(document, commands)
                run += len(commands)
        self.assertGreater(run, 50)
        self.assertEqual(set(NOT_RUN) - excused, set(), "keys of NOT_RUN that occur in no document")
        for check in (self.compare_consoles, self.compare_coverage, self.compare_patterns, self.try_options_of_review,
                      self.find_archive, self.list_faults, self.stress_in_small, self.find_test_programs,
                      self.debug_as_shown, self.debug_dump, self.debug_hang):
            # A check that is skipped does not skip the others.
            with self.subTest(check=check.__name__):
                check()

    def run_all(self, document, commands):
        folder = self.prepare(document)
        if document == "README.md":
            # The README shows a run first and explains later how to build the module.
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
        self.write_guide_project(folder)
        for command in parts.commands_of(TEXTS["docs/user-guide.md"])[:5]:
            folder.run(command, 0)
        self.make_reports(folder)

    def write_guide_project(self, folder):
        guide = TEXTS["docs/user-guide.md"]
        folder.write("first_tests.cpp", parts.snippets_of(guide, "cpp")[0])
        folder.write("CMakeLists.txt", parts.snippets_of(guide, "cmake")[0])

    def prepare_README(self, folder):
        folder.write_readme_project()
        self.add_first_tests(folder)

    def prepare_product(self, folder):
        """Adds the modules and data of the guide and of the README, and reports of earlier runs."""
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
        # A shell on Linux removes the backslashes of the Windows path in the command, so the command finds this folder.
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
        """Makes the folder look like a checkout in which the release preset is built."""
        programs = folder.path / "build/linux-release/bin"
        programs.mkdir(parents=True)
        for program in (self.tree.path / "bin").iterdir():
            (programs / program.name).symlink_to(program)
        self.tree.name_release_hosts(programs)
        if self.tree.config == "Debug":
            (folder.path / "build/linux-debug").symlink_to("linux-release")
        (folder.path / "examples").symlink_to(ROOT / "examples")
        shutil.copytree(ROOT / "examples/data", folder.path / "my-copy")

    def prepare_debugging(self, folder):
        snippet = parts.snippets_of(TEXTS["docs/reference-data.md"], "cpp")[0]
        folder.write_readme_project(DEFECTS + INVOICES.replace("SNIPPET", snippet))
        self.add_first_tests(folder)
        folder.build()
        folder.variables["DOCUMENTS_HANG"] = "1"

    def prepare_class_folders(self, folder):
        folder.use_modules_of(self.folders["docs/debugging.md"])
        folder.write("data/customers/CImport/invoice.xml", "<invoice/>")
        folder.write("data/suppliers/CImport/invoice.xml", "<invoice/>")

    def prepare_reference_data(self, folder):
        """Makes three runs whose output differs from two references."""
        folder.use_modules_of(self.folders["docs/debugging.md"])
        for name, received, expected in (("a", "Summe: 12", "Summe: 11"), ("b", "Zahl: 2", "Zahl: 3")):
            folder.write(f"data/CInvoice/{name}.txt", f"Kopf\n{received}\n")
            folder.write(f"data/CInvoice/{name}.txt.expected", f"Kopf\n{expected}\n")
        for _ in range(3):
            folder.run("LuTestSuiteCLI -d data --dll MyTests -i /CInvoice:", 1)

    def prepare_coverage(self, folder):
        folder.write_readme_project(module=parts.snippets_of(TEXTS["docs/coverage.md"], "cmake")[0])
        folder.build()

    def prepare_sanitizers(self, folder):
        snippets = parts.snippets_of(TEXTS["docs/sanitizers.md"], "cmake")
        folder.write_readme_project(module=snippets[0])
        with open(folder.path / "CMakeLists.txt", "a", encoding="utf-8") as file:
            file.write("enable_testing()\n" + snippets[1])
        folder.build()
        self.assertIn("100% tests passed, 0 tests failed out of 2", folder.run("ctest --test-dir build", 0))
        undefined = Folder(self.work / "undefined", self.tree)
        undefined.write_readme_project(UNDEFINED, snippets[2])
        undefined.build()
        report = undefined.run("LuTestSuiteRunner case CMyTest:overflow -- -d data --dll MyTests -x", 15)
        self.assertIn("signed integer overflow", report)
        self.assertRegex(undefined.run("LuTestSuiteCLI -d data --dll MyTests -x", 1), r"next\.\.\. OK")

    def prepare_migration(self, folder):
        shutil.rmtree(folder.path / "data")
        migration = TEXTS["docs/migration.md"]
        folder.write("adapter.cpp", parts.snippets_of(migration, "cpp")[0])
        folder.write("CMakeLists.txt", parts.snippets_of(migration, "cmake")[0])
        folder.write("parser_test.cpp", PARSER_TEST)
        folder.write("lexer_test.cpp", PARSER_TEST.replace("Parser", "Lexer"))

    def prepare_runner(self, folder):
        """Runs the recipes. Then builds a project from the snippets for CTest and runs its tests."""
        folder.write_readme_project()
        folder.variables |= {"CMAKE_PREFIX_PATH": str(self.tree.prefix), "CI_NODE_TOTAL": "4",
                             "GITHUB_STEP_SUMMARY": f"{folder.path}/summary.md"}
        folder.write("quarantine.txt", "# nothing yet\n")
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
            self.compare_summaries(folder, next(recipe for recipe in recipes if "jq " in recipe))
        tests = Folder(folder.path / "ctest", self.tree)
        tests.write_readme_project()
        # Snippets that begin with "# CMakeLists.txt" belong to the project of the test install.documented_tests.
        snippets = [snippet for snippet in parts.snippets_of(TEXTS["docs/runner.md"], "cmake")
                    if not snippet.startswith("# CMakeLists.txt")]
        tests.write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(MyTests LANGUAGES CXX)\n"
                    + "".join(snippets))
        tests.build()
        folder.ctest = "ctest/build"
        launched = json.loads(parts.snippets_of(TEXTS["docs/runner.md"], "json")[-1])["configurations"][0]
        call = shlex.join([launched["program"].replace("${workspaceFolder}", str(tests.path)), *launched["args"]])
        self.assertIn("CMyTest:hello.txt: Ok", tests.run(call, 0))
        output = tests.run("ctest --test-dir build -R CMyTest", 0)
        self.assertIn("100% tests passed, 0 tests failed out of 2", output)

    def compare_summaries(self, folder, recipe):
        """Expects that the summary shows a failed case with its messages unless the case is in quarantine."""
        shutil.copy(self.folders["docs/user-guide.md"].path / "build/bin/FirstTests.so", folder.path / "build/bin")
        folder.write("quarantine.txt", ":no end\n")
        for own, counts in (("", "1 failed, 0 failed in quarantine"),
                            ("--quarantine quarantine.txt ", "0 failed, 1 failed in quarantine")):
            folder.run(f"build/bin/LuTestSuiteRunner run --out results --force {own}-- -d data --dll FirstTests",
                       0 if own else 1)
            (folder.path / "summary.md").unlink()
            folder.run(recipe, 0)
            summary = (folder.path / "summary.md").read_text(encoding="utf-8")
            self.assertIn(counts, summary)
            shown = "- `CFirstTest:no end.txt`: error\n\n      ERROR: the last line has no end\n"
            self.assertEqual(shown in summary, not own, summary)

    def add_first_tests(self, folder):
        (folder.path / "build/bin").mkdir(parents=True)
        shutil.copy(self.folders["docs/user-guide.md"].path / "build/bin/FirstTests.so", folder.path / "build/bin")

    def make_reports(self, folder):
        (folder.path / "archive").mkdir()
        for report in ("old.xml", "run.xml", "archive/old.xml"):
            folder.run(f"build/bin/LuTestSuiteCLI -d data --dll FirstTests --xml {report}", 1)

    def compare_consoles(self):
        """Expects that the output shown below each command is its real output, with tabs of eight columns."""
        folder = self.folders["README.md"]
        shown = parts.consoles_of(TEXTS["README.md"])
        guide = parts.snippets_of(TEXTS["docs/user-guide.md"], "")
        shown = [*shown, ("LuTestSuiteCLI -d data --dll FirstTests", next(text for text in guide if "adds" in text))]
        self.assertEqual(len(shown), 3)
        for command, expected in shown:
            with self.subTest(command=command):
                output = folder.run(command, status_of(command)).expandtabs(8)
                self.assertEqual(expected, output.strip("\n") + "\n")
        self.compare_case(next(text for text in guide if "Datei: " in text))

    def compare_coverage(self):
        """Expects gcovr's line for the source file, which has the line counts, as the document shows it."""
        if not shutil.which("gcovr"):
            return
        folder = self.folders["docs/coverage.md"]
        commands = parts.commands_of(TEXTS["docs/coverage.md"])
        folder.run(next(command for command in commands if command.startswith("LuTestSuiteCLI")), 0)
        output = folder.run(next(command for command in commands if command.startswith("gcovr")), 0)
        expected = re.search(r"^my_tests\.cpp .*$", TEXTS["docs/coverage.md"], re.MULTILINE)[0]
        self.assertIn(expected.split(), [line.split() for line in output.splitlines()])

    def compare_case(self, shown):
        """Compares the output of a case with the text in the guide, except times and folders."""
        output = self.folders["docs/user-guide.md"].run(
            'build/bin/LuTestSuiteRunner case "CFirstTest:no end.txt" -- -d data --dll FirstTests', 11)
        expected, real = (re.sub(r"\([\d.]+\S*\)|/\S*(?=/data/)", "...", text) for text in (shown, output))
        self.assertEqual(expected, real)

    def compare_patterns(self):
        guide = TEXTS["docs/user-guide.md"]
        counts = {}
        for option, pattern in re.findall(r"^\| `(-[ie]) \"([^\"]*)\"`", guide, re.MULTILINE):
            output = self.folders["docs/user-guide.md"].run(
                f"LuTestSuiteCLI -q -d data --dll FirstTests {option} '{pattern}'", 0)
            counts[option, pattern] = re.search(r"Fälle: (\d+)/3", output)[1]
        self.assertEqual(counts, {("-i", "/CFirstTest:"): "3", ("-i", r":no end\.txt$"): "1",
                                  ("-e", "/CFirstTest:"): "0", ("-i", "/geometry/"): "0"})

    def try_options_of_review(self):
        """Tries each option on a copy of the folder with differences."""
        prepared = self.folders["docs/reference-data.md"]
        listing = prepared.run("LuTestSuiteRunner review data", 0)
        example, name = (re.search(r"^[0-9A-F]{6}(?=  .*/a\.txt)", text, re.MULTILINE)[0]
                         for text in (TEXTS["docs/reference-data.md"], listing))
        options = parts.options_of(TEXTS["docs/reference-data.md"])
        self.assertEqual(set(options), set(REVIEWS))
        for option in options:
            with self.subTest(option=option):
                folder = Folder(self.work / f"review-{options.index(option)}", self.tree)
                shutil.copytree(prepared.path, folder.path, symlinks=True, dirs_exist_ok=True)
                more, status, shown, references = REVIEWS[option]
                call = option.replace(example, name).replace("--reject ...", "--reject all") + more
                self.assertRegex(folder.run(f"LuTestSuiteRunner review data {call}", status), shown)
                real = "".join(path.read_text("utf-8").split()[-1]
                               for path in sorted((folder.path / "data/CInvoice").glob("*.expected")))
                self.assertEqual(real, references)

    def find_archive(self):
        """Expects the reports of the archive run that docs/reference.md shows."""
        if self.tree.config != "Debug":
            return
        archive = self.folders["docs/reference.md"].path / "build/archive"
        self.assertIn("Archive/", (archive / "index.html").read_text(encoding="iso-8859-1"))
        pages = list((archive / "Archive").glob("Report.*.html"))
        self.assertEqual(len(pages), 1, pages)
        self.assertIn("Checksums", pages[0].read_text(encoding="iso-8859-1"))

    def run_script(self, command, statuses=(0,)):
        result = subprocess.run(command, cwd=ROOT, shell=True, capture_output=True, text=True, check=False)
        self.assertIn(result.returncode, statuses, result.stdout + result.stderr)
        return result.stdout

    def list_faults(self):
        (command,) = (text for text in parts.commands_of(TEXTS["CONTRIBUTING.md"]) if "plant-faults" in text)
        faults = self.run_script(f"{command} --list").splitlines()
        self.assertEqual(len(faults), int(command.split()[1]), faults)
        self.assertRegex(faults[0], r"^(base|testing)/\S+:\d+: ")

    def stress_in_small(self):
        """Runs scripts/stress with the programs of this build if it is the build of a preset."""
        if self.tree.path.parent != ROOT / "build":
            self.skipTest("the build tree is not that of a preset")
        stress = f"scripts/stress --preset {self.tree.path.name}"
        self.assertRegex(self.run_script(f"{stress} --rounds 1 --kills 2"), r"1 rounds of .* 0 differences")
        # Status 77 if mounting is not permitted.
        output = self.run_script(f"{stress} --resume --kills 3", statuses=(0, 77))
        self.assertRegex(output, r"^([3-9]|\d\d+) kills in \d+ runs of \d+ cases: 0 faulty runs")
        if not self.tree.path.name.endswith("san"):
            # Sanitizers report these faults themselves.
            output = self.run_script(f"{stress} --faults --rounds 1")
            self.assertIn("1 rounds of 12 kinds of faults in 4 modes: 0 wrong", output)

    def find_test_programs(self):
        """Expects that the calls of single tests name existing programs, which accept the option."""
        calls = [command for command in parts.commands_of(TEXTS["CONTRIBUTING.md"]) if "--gtest_filter" in command]
        self.assertEqual(len(calls), 2)
        for call in calls:
            program, option = re.search(r"\w+/bin(?: && \.)?/(\w+)(?:\.exe)? (--\w+)=\S+$", call).groups()
            if not (self.tree.path / "bin" / program).exists():
                self.skipTest(f"{program} has not been built")
            output = self.run_script(f"cd {self.tree.path}/bin && ./{program} {option}='-*' --gtest_list_tests")
            self.assertEqual(output.splitlines()[1:], [], "a program that ignores the option lists its tests")

    def debug_as_shown(self):
        sessions = [(name, *session) for name in ("docs/debugging.md", "docs/user-guide.md")
                    for session in parts.debugger_sessions_of(TEXTS[name])]
        self.assertEqual(len(sessions), 4)
        if not shutil.which("gdb"):
            self.skipTest("gdb is missing; scripts/setup checks installs it")
        folder = self.folders["docs/debugging.md"]
        guide = Folder(self.work / "debugged", self.tree)
        self.write_guide_project(guide)
        guide.run(f"cmake -B build -DCMAKE_BUILD_TYPE=Debug -DCMAKE_PREFIX_PATH={self.tree.prefix}", 0)
        guide.run("cmake --build build", 0)
        shutil.copy(guide.path / "build/bin/FirstTests.so", folder.path / "build/bin")
        for document, command, lines in sessions:
            with self.subTest(document=document, command=command):
                # The number of the allocation depends on the build.
                command = re.sub(r"(?<=--break-alloc-id )\d+", self.find_leak(folder), command)
                typed = " ".join(f"-ex '{line}'" for line in lines or ["run"])
                output = folder.run(f"DEBUGINFOD_URLS= {command.replace('gdb', f'gdb -nx -batch {typed}', 1)}", 0)
                place = re.search(r"^break (.*)", "\n".join(lines), re.MULTILINE)
                end = "SIGTRAP" if "--break-alloc-id" in command else r"exited with code 013"
                self.assertRegex(output, f"(?s)Breakpoint 1, .*{place[1]}" if place else end)

    def find_leak(self, folder):
        """The number of the leaked allocation in the report that a command of the document has written."""
        leaks = re.findall(r"ID (\d+), Address 0x\w+, Size 40 Bytes", (folder.path / "leak.xml").read_text("latin-1"))
        self.assertEqual(len(leaks), 1, leaks)
        return leaks[0]

    def debug_dump(self):
        """Debugs the dump that the document's run has left, with the gdb command that the document shows."""
        folder = self.folders["docs/debugging.md"]
        text = TEXTS["docs/debugging.md"]
        command, shown, line = re.search(
            r"^    (gdb build/bin/\S+) dumps/(\w+)-\d+\.core\n\n```\n\(gdb\) (.*)$", text, re.MULTILINE).groups()
        dumps = list((folder.path / "dumps").iterdir())
        self.assertEqual(len(dumps), 1)
        self.assertRegex(dumps[0].name, rf"^{shown}-\d+\.core$")
        if not shutil.which("gdb"):
            self.skipTest("gdb is missing; scripts/setup checks installs it")
        call = command.replace("gdb", f"gdb -nx -batch -ex '{line}'", 1)
        output = folder.run(f"DEBUGINFOD_URLS= {call} {dumps[0]}", 0)
        self.assertRegex(output, r"(?s)Thread 1 .*CMyTest::InitSubtests")

    def debug_hang(self):
        """Attaches gdb to the child process of a case that hangs, as the document does from another terminal."""
        if not shutil.which("gdb"):
            self.skipTest("gdb is missing; scripts/setup checks installs it")
        folder = self.folders["docs/debugging.md"]
        commands = parts.commands_of(TEXTS["docs/debugging.md"])
        (hang,) = (command for command in commands if command.startswith("LuTestSuiteRunner case"))
        (attach,) = (command for command in commands if command.startswith("gdb -p $("))
        with folder.start(re.sub(r" -t \d+", " -t 300", hang)) as process:
            # Searches only the session of `process`, because other tests also have such child processes.
            attach = attach.replace("pgrep", f"pgrep -s {process.pid}", 1)
            attach = attach.replace("gdb", "gdb -nx -batch -ex 'thread apply all backtrace'", 1)
            try:
                output = ""
                while "CMyTest::InitSubtests" not in output:
                    self.assertIsNone(process.poll(), "the case has ended")
                    output = folder.try_to_run(f"DEBUGINFOD_URLS= {attach}").stdout
            finally:
                process.terminate()

    def test_have_snippets_that_compile(self):
        """Compiles the C++ snippets of documents outside BUILT. The commands of the other documents compile theirs."""
        for name, text in TEXTS.items():
            for snippet in parts.snippets_of(text, "cpp") if name not in BUILT else ():
                if "#include" in snippet:
                    with self.subTest(document=name):
                        command = ["g++", "-std=c++20", "-fsyntax-only", f"-I{self.tree.prefix}/include", "-xc++", "-"]
                        result = subprocess.run(command, input=snippet, capture_output=True, text=True, check=False)
                        self.assertEqual(result.returncode, 0, result.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
