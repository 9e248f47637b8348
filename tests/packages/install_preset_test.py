"""Makes an install tree as docs/installation.md describes, and runs its host and the first test of the README."""
import pathlib
import re
import subprocess
import tempfile
import unittest

import making

FOLDER = "/opt/lutestsuite"


def text_of(document):
    return (making.ROOT / document).read_text(encoding="utf-8")


def section_of(document, heading):
    return re.split(r"^## ", text_of(document).split(f"\n## {heading}\n")[1], flags=re.MULTILINE)[0]


def block_of(document, language):
    return re.search(rf"^```{language}\n(.*?)^```$", text_of(document), re.MULTILINE | re.DOTALL)[1]


class InstallPreset(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="lutestsuite-install-")
        cls.addClassCleanup(temporary.cleanup)
        cls.work = pathlib.Path(temporary.name)
        cls.prefix = cls.work / "prefix"
        cls.commands = re.findall(r"^    (cmake .*)$", section_of("docs/installation.md", "Install tree"), re.MULTILINE)
        for command in cls.commands:
            cls.run_in(making.ROOT, command.replace(FOLDER, str(cls.prefix)))

    @staticmethod
    def run_in(folder, command):
        finished = subprocess.run(command, shell=True, cwd=folder, text=True, check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if finished.returncode != 0:
            raise AssertionError(f"{command}: status {finished.returncode}\n{finished.stdout[-4000:]}")
        return finished.stdout

    def test_commands_are_those_of_the_readme(self):
        shown = re.findall(r"^    (cmake .*linux-install.*)$", text_of("README.md"), re.MULTILINE)
        self.assertEqual(shown, self.commands)

    def test_has_hosts_that_run(self):
        for host in ("LuTestSuiteCLI", "LuTestSuiteRunner"):
            self.assertIn("--", making.output_of(self.prefix / "bin" / host, "-h"))

    def test_builds_and_runs_the_first_test(self):
        project = self.work / "first"
        (project / "data/CMyTest").mkdir(parents=True)
        (project / "data/CMyTest/hello.txt").touch()
        (project / "my_tests.cpp").write_text(block_of("README.md", "cpp"), encoding="utf-8")
        (project / "CMakeLists.txt").write_text(block_of("README.md", "cmake"), encoding="utf-8")
        self.run_in(project, f"cmake -S . -B build -DCMAKE_PREFIX_PATH={self.prefix} && cmake --build build")
        output = self.run_in(project, "build/bin/LuTestSuiteCLI -d data --dll MyTests")
        self.assertRegex(output, r"Erfolgreich:.*1 Klasse, 2 Tests")


if __name__ == "__main__":
    unittest.main()
