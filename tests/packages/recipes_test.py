"""The recipes for vcpkg and Conan name only versions, libraries and options that the project has."""
import ast
import json
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PORT = ROOT / "packaging" / "vcpkg" / "lutestsuite"
CONAN = ROOT / "packaging" / "conan" / "conanfile.py"


def read(*parts):
    return ROOT.joinpath(*parts).read_text("utf-8")


class Recipes(unittest.TestCase):
    def setUp(self):
        self.project = read("CMakeLists.txt")
        self.version = re.search(r"project\(LuTestSuite VERSION ([0-9.]+)", self.project)[1]
        self.manifest = json.loads(read("vcpkg.json"))
        self.port = json.loads((PORT / "vcpkg.json").read_text("utf-8"))
        self.recipe = CONAN.read_text("utf-8")

    def is_option(self, name):
        return name == "BUILD_TESTING" or re.search(rf"\b(option|set)\({name}\b", self.project)

    def test_versions_agree(self):
        self.assertEqual(self.manifest["version"], self.version)
        self.assertEqual(self.port["version"], self.version)

    def test_the_port_needs_the_libraries_of_the_manifest(self):
        needed = [name for name in self.port["dependencies"] if isinstance(name, str)]
        self.assertEqual(sorted(needed), sorted(self.manifest["dependencies"]))

    def test_the_recipe_needs_the_libraries_of_the_manifest(self):
        needed = {re.sub("[^a-z]", "", name) for name in re.findall(r'requires\("([^/]+)/[0-9.]+"\)', self.recipe)}
        self.assertEqual(needed, {re.sub("[^a-z]", "", name) for name in self.manifest["dependencies"]})

    def test_options_exist_in_the_project(self):
        options = re.findall(r"-D([A-Z_]+)=", (PORT / "portfile.cmake").read_text("utf-8"))
        options += re.findall(r'cache_variables\["([A-Z_]+)"\]', self.recipe)
        self.assertGreaterEqual(len(options), 6)
        for name in options:
            self.assertTrue(self.is_option(name), name)

    def test_the_recipe_exports_what_the_build_reads(self):
        tree = ast.parse(self.recipe)
        sources = next(ast.literal_eval(node.value) for node in tree.body
                       if isinstance(node, ast.Assign) and node.targets[0].id == "SOURCES")
        for pattern in sources:
            self.assertTrue(list(ROOT.glob(pattern)), pattern)
        folders = re.findall(r"^(?:    )?add_subdirectory\(([a-z]+)\)", self.project, re.MULTILINE)
        optional = {"examples", "tests", "benchmarks", "fuzz"}
        for folder in set(folders) - optional:
            self.assertIn(f"{folder}/*", sources)


if __name__ == "__main__":
    unittest.main()
