"""Commands, links and pictures of the documents. Arguments: BUILD_TREE CONFIG CMAKE.

Follows the user's guide: builds its first test against an install tree, then runs each command of the guide and of the
README that calls a host.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD_TREE, CONFIG, CMAKE = sys.argv[1:4]

DOCUMENTS = sorted([ROOT / "README.md", ROOT / "CONTRIBUTING.md", *(ROOT / "docs").rglob("*.md"),
                    *(ROOT / "examples").glob("*.md")])
FOLLOWED = ("README.md", "docs/user-guide.md")
# Beginnings of commands that are not run here, with the reason.
NOT_RUN = {
    "scripts/": "install packages or build everything; run-tests and CI run them",
    "cmake": "the test configures, builds and installs itself",
    "gdb": "a person types into the debugger",
}
# Exit statuses other than 0, by parts of the command: one case of the first test fails on purpose.
FAILS = {"LuTestSuiteRunner case": 11}
_CODE = re.compile(r"^```(\w*)\n(.*?)^```", re.MULTILINE | re.DOTALL)
_HOSTS = re.compile(r"(?:build/bin/)?(LuTestSuiteCLI|LuTestSuiteRunner)(?=\s)")


def commands_of(text):
    """Indented lines outside of code blocks that are no output, and whole calls of a host in text and tables."""
    prose = _CODE.sub("", text)
    for line in prose.splitlines():
        if line.startswith("    ") and line[4:5] not in (" ", ""):
            command = line.strip().removeprefix("$ ").split(" #")[0].strip()
            if re.match(r"(scripts/|cmake|gdb|ctest|(build/bin/)?LuTestSuite(CLI|Runner) )", command):
                yield command
    for command in re.findall(r"`(LuTestSuite(?:CLI|Runner) [^`]*)`", prose):
        if " -d " in command or " resume " in command:
            yield " ".join(command.split())


def anchors_of(text):
    for heading in re.findall(r"^#+ (.*)$", _CODE.sub("", text), re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


class Links(unittest.TestCase):
    def test_lead_to_files_and_headings(self):
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            for target in re.findall(r"\]\(([^)\s]+)\)", _CODE.sub("", text)):
                if re.match(r"[a-z]+:", target):
                    continue
                path, _, anchor = target.partition("#")
                file = (document.parent / path) if path else document
                with self.subTest(document=document.name, target=target):
                    self.assertTrue(file.exists())
                    if anchor:
                        self.assertIn(anchor, list(anchors_of(file.read_text(encoding="utf-8"))))

    def test_pictures_are_small(self):
        for picture in (ROOT / "docs" / "images").iterdir():
            self.assertLess(picture.stat().st_size, 150_000, picture.name)


class Commands(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.work = pathlib.Path(folder.name)
        guide = (ROOT / "docs/user-guide.md").read_text(encoding="utf-8")
        for language, code in _CODE.findall(guide):
            name = re.match(r"(?://|#) (\S+)\n", code)
            if language and name:
                (cls.work / name[1]).write_text(code, encoding="utf-8")
        data = cls.work / "data" / "CFirstTest"
        data.mkdir(parents=True)
        (data / "good.txt").write_text("text\n", encoding="utf-8")
        (data / "no end.txt").write_text("text", encoding="utf-8")
        prefix = cls.work / "prefix"
        cls.run_program(CMAKE, "--install", BUILD_TREE, "--config", CONFIG, "--prefix", str(prefix))
        cls.run_program(CMAKE, "-B", "build", f"-DCMAKE_BUILD_TYPE={CONFIG}", f"-DCMAKE_PREFIX_PATH={prefix}")
        cls.run_program(CMAKE, "--build", "build")
        cls.bin = cls.work / "build" / "bin"
        # Documents call the modules of different projects, and reports of earlier runs.
        shutil.copy(cls.bin / "FirstTests.so", cls.bin / "MyTests.so")
        cls.run_host("LuTestSuiteCLI -d data --dll FirstTests --xml old.xml", 1)
        cls.run_host("LuTestSuiteCLI -d data --dll FirstTests --xml run.xml", 1)
        (cls.work / "archive").mkdir()
        shutil.copy(cls.work / "old.xml", cls.work / "archive")

    @classmethod
    def run_program(cls, *command):
        result = subprocess.run(command, cwd=cls.work, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise AssertionError(f"{command}: {result.stdout}{result.stderr}")

    @classmethod
    def run_host(cls, command, expected=None):
        suffix = "D" if CONFIG == "Debug" else ""
        line = _HOSTS.sub(lambda match: f"{cls.bin}/{match[1]}{suffix}", command)
        result = subprocess.run(["bash", "-c", line], cwd=cls.work, capture_output=True, text=True, check=False,
                                env=os.environ | {"LC_ALL": "C.UTF-8"})
        statuses = (0, 1) if expected is None else (expected,)
        if result.returncode not in statuses:
            raise AssertionError(f"{command}: status {result.returncode}\n{result.stdout}{result.stderr}")
        return result.stdout + result.stderr

    def test_are_understood_by_the_hosts(self):
        run = 0
        for name in FOLLOWED:
            for command in commands_of((ROOT / name).read_text(encoding="utf-8")):
                if command.startswith(tuple(NOT_RUN)):
                    continue
                with self.subTest(document=name, command=command):
                    for folder in ("results", "lutestsuite-out"):
                        shutil.rmtree(self.work / folder, ignore_errors=True)
                    if "resume" in command:
                        self.run_host("LuTestSuiteRunner run --out results -- -d data --dll MyTests")
                    wanted = [status for part, status in FAILS.items() if part in command]
                    output = self.run_host(command, *wanted)
                    self.assertNotRegex(output, "(?m)^Fehler: |Unbekannte|konnte nicht")
                    run += 1
        self.assertGreater(run, 12)

    def test_print_what_the_guide_shows(self):
        shown = (ROOT / "docs/user-guide.md").read_text(encoding="utf-8")
        output = self.run_host("LuTestSuiteCLI -d data --dll FirstTests", 1)
        for line in output.splitlines():
            self.assertIn(re.sub(r"\s+", " ", line.strip()), re.sub(r"[^\S\n]+", " ", shown))

    def test_patterns_of_the_guide_select(self):
        guide = (ROOT / "docs/user-guide.md").read_text(encoding="utf-8")
        counts = {}
        for option, pattern in re.findall(r"^\| `(-[ie]) \"([^\"]*)\"`", guide, re.MULTILINE):
            output = self.run_host(f"LuTestSuiteCLI -q -d data --dll FirstTests {option} '{pattern}'", 0)
            counts[option, pattern] = re.search(r"Fälle: (\d+)/3", output)[1]
        self.assertEqual(counts, {("-i", "/CFirstTest:"): "3", ("-i", r":no end\.txt$"): "1",
                                  ("-e", "/CFirstTest:"): "0", ("-i", "/geometry/"): "0"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
