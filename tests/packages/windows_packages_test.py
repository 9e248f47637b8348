"""The ZIP of the Windows build includes or names what it needs, and its host runs from the unpacked folder."""
import pathlib
import re
import sys
import tempfile
import unittest
import zipfile

import making

sys.path.append(str(making.ROOT / "tests" / "scripts"))
import documentparts as parts  # noqa: E402


class WindowsPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        (path,) = making.make("windows")
        cls.folder = tempfile.TemporaryDirectory(prefix="lutestsuite-packages-")
        cls.addClassCleanup(cls.folder.cleanup)
        with zipfile.ZipFile(path) as archive:
            archive.extractall(cls.folder.name)
        (cls.tree,) = pathlib.Path(cls.folder.name).iterdir()

    def imports(self, path):
        return set(re.findall(r"DLL Name: (\S+)", making.output_of("x86_64-w64-mingw32-objdump", "-p", path)))

    def test_contains_every_library_that_does_not_belong_to_windows(self):
        own = {path.name for path in (self.tree / "bin").glob("*.dll")}
        system = re.compile(r"(?i)(kernel32|msvcrt|advapi32|user32|api-ms-win-[a-z0-9-]+)\.dll")
        for program in (self.tree / "bin").iterdir():
            for name in self.imports(program) - own:
                self.assertRegex(name, system, program.name)

    def test_prerequisites_name_each_library_of_the_compiler(self):
        text = (self.tree / "PREREQUISITES.txt").read_text("utf-8")
        named = set(re.findall(r"^ +bin/(\S+)$", text, re.MULTILINE))
        files = {path.name for path in (self.tree / "bin").glob("*.dll")}
        self.assertEqual(named, files - {"LbBase.dll", "LuTestSuite.dll"})
        self.assertIn("libstdc++-6.dll", named)

    def test_has_the_licenses_of_the_software_in_its_binaries(self):
        packages = ("gcc-mingw-w64-base", "mingw-w64-common", "libpugixml-dev", "libcli11-dev", "nlohmann-json3-dev",
                    "libxxhash-dev")
        files = {path.name: path.read_text("utf-8") for path in (self.tree / "licenses").iterdir()}
        self.assertEqual(set(files), {f"{package}.txt" for package in packages})
        for name, text in files.items():
            self.assertRegex(text, r"(?i)copyright", name)
            self.assertRegex(text, r"(?i)licen[cs]e", name)

    def test_has_the_files_that_build_modules(self):
        for name in ("include/base/luunittest.h", "lib/cmake/LuTestSuite/LuTestSuiteConfig.cmake",
                     "lib/libLbBase.dll.a"):
            self.assertTrue((self.tree / name).exists(), name)

    def test_the_first_test_of_the_readme_is_built_and_run(self):
        """Runs the commands of docs/installation.md, and expects them in PREREQUISITES.txt of the package, too."""
        (commands,) = parts.snippets_of((making.ROOT / "docs/installation.md").read_text("utf-8"), "bat")
        text = (self.tree / "PREREQUISITES.txt").read_text("utf-8")
        readme = (making.ROOT / "README.md").read_text("utf-8")
        project = parts.snippets_of(readme, "cmake")[0]
        for line in [*commands.splitlines(), *project.splitlines()]:
            self.assertIn(f"    {line.partition('#')[0].rstrip()}\n", text)
        with tempfile.TemporaryDirectory(prefix="lutestsuite-packages-") as name:
            folder = pathlib.Path(name)
            (folder / "data/CMyTest").mkdir(parents=True)
            for path, content in (("data/CMyTest/hello.txt", "hello\n"), ("CMakeLists.txt", project),
                                  ("my_tests.cpp", parts.snippets_of(readme, "cpp")[0])):
                (folder / path).write_text(content, "utf-8")
            configure, build, run = commands.replace("C:/LuTestSuite", str(self.tree)).splitlines()
            toolchain = making.ROOT / "cmake" / "mingw-toolchain.cmake"
            making.output_of(*configure.split(), f"-DCMAKE_TOOLCHAIN_FILE={toolchain}", cwd=folder)
            making.output_of(*build.split(), cwd=folder)
            host, *options = run.replace("\\", "/").split()
            output = making.output_of(making.ROOT / "scripts" / "run-wine", f"{host}.exe", *options, cwd=folder)
            self.assertRegex(output, r"hello\.txt\.\.\. OK\s")
            self.assertRegex(output, r"Ausgeführt:\s+1 Klasse, 2 Tests\s")

    def test_the_host_runs(self):
        command = [making.ROOT / "scripts" / "run-wine", self.tree / "bin" / "LuTestSuiteCLI.exe", "-h"]
        self.assertIn("--html", making.output_of(*command))


if __name__ == "__main__":
    making.require_setup()
    unittest.main()
