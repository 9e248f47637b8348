"""scripts/setup installs what an installation needs, and nothing else. Arguments: CMAKE, a folder for the build.

Configures as an installation does and compares the packages of all files that CMake has found with those of the script.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CMAKE, WORK = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
SKIPPED = 77
# The build uses these only if they are installed: a compiler cache, and tools that describe the version of a checkout.
OPTIONAL = {"ccache", "git", "subversion"}
# For each entry of the CMake cache that names a folder: a file in that folder.
FILES_IN = {
    "LUTESTSUITE_DIRECTORY_OF_CLI_CLI_hpp": "CLI/CLI.hpp",
    "LUTESTSUITE_DIRECTORY_OF_nlohmann_json_hpp": "nlohmann/json.hpp",
    "LUTESTSUITE_DIRECTORY_OF_xxhash_h": "xxhash.h",
    "LUTESTSUITE_LIBDW_INCLUDE": "elfutils/libdwfl.h",
    "pugixml_DIR": "pugixml-config.cmake",
}


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def listed():
    return set(output_of(ROOT / "scripts" / "setup", "--list-build").split())


def dependencies_of(packages):
    """The names of all dependencies, alternatives included, without versions."""
    text = output_of("dpkg-query", "-W", "-f", "${Depends},${Pre-Depends},", *sorted(packages))
    return {match[1] for match in re.finditer(r"(?:^|[,|])\s*([a-z0-9][a-z0-9+.-]*)", text)}


def is_installed(package):
    status = subprocess.run(["dpkg-query", "-W", "-f", "${db:Status-Status}", package], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True, check=False).stdout
    return status == "installed"


def with_dependencies(packages):
    known, new = set(), set(packages)
    while new:
        known |= new
        new = {package for package in dependencies_of(new) - known if is_installed(package)}
    return known


def owners_of(paths):
    """The packages that have installed the files."""
    result = subprocess.run(["dpkg-query", "-S", *sorted(paths)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                            text=True, check=False)
    return {line.split(":")[0].split(",")[0] for line in result.stdout.splitlines()}


def found_files():
    """Each file that the CMake cache names, and the target of the file if it is a link."""
    shutil.rmtree(WORK, ignore_errors=True)
    output_of(CMAKE, "-S", ROOT, "-B", WORK, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_TESTING=OFF",
              "-DLUTESTSUITE_BUILD_EXAMPLES=OFF", "-Wno-dev")
    cache = (WORK / "CMakeCache.txt").read_text("utf-8")
    paths = set()
    for name, value in re.findall(r"^(\w+):\w+=(/usr/[^;\n]+)$", cache, re.MULTILINE):
        path = pathlib.Path(value, FILES_IN.get(name, ""))
        if path.is_file():
            paths |= {str(path), str(path.resolve())}
    return paths


class BuildPackages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.used = owners_of(found_files()) - OPTIONAL

    def test_suffice(self):
        self.assertGreater(len(self.used), 6)
        self.assertEqual(self.used - with_dependencies(listed()), set())

    def test_are_used(self):
        needless = {package for package in listed() if not ({package} | dependencies_of([package])) & self.used}
        # make is only for projects that use the installation.
        self.assertEqual(needless, {"make"})


class TestPackages(unittest.TestCase):
    def test_are_installed_by_the_command_that_runs_the_tests(self):
        """scripts/run-tests installs the part of scripts/setup for gcovr, and each part that skipped tests ask for."""
        sources = [*(ROOT / "tests").rglob("*.py"), *(path for path in (ROOT / "scripts").iterdir() if path.is_file())]
        skipped = [re.findall(r"run:? scripts/setup ([a-z]+)", path.read_text("utf-8")) for path in sources]
        parts = re.search(r"^parts=\((.*)\)$", (ROOT / "scripts" / "run-tests").read_text("utf-8"), re.MULTILINE)
        self.assertLessEqual({"coverage", "packages", "reference", *sum(skipped, [])}, set(parts[1].split()))


if __name__ == "__main__":
    if not shutil.which("dpkg-query"):
        print("Skipped: not a Debian system")
        sys.exit(SKIPPED)
    unittest.main()
