"""Runs the steps of the Conan recipe as "conan create" does, with stand-ins for the functions of Conan that it calls.

Does not run Conan: the libraries are those of the system, and what Conan does with the package is not checked.
Arguments: CMAKE, a folder for the package.
"""
import fnmatch
import importlib.util
import pathlib
import shutil
import subprocess
import sys
import types
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CMAKE, WORK = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
CONSUMER = """
cmake_minimum_required(VERSION 3.25)
project(Consumer LANGUAGES CXX)
find_package(LuTestSuite 1 CONFIG REQUIRED)
lutestsuite_add_module(MyTests my_tests.cpp)
lutestsuite_deploy_host()
"""


def run(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True).stdout


class InvalidConfiguration(Exception):
    pass


class Settings(types.SimpleNamespace):
    """The settings of a GCC on Linux; the arguments change some of them."""

    def __init__(self, compiler="gcc", arch="x86_64", standard="20"):
        super().__init__(os="Linux", arch=arch, compiler=compiler, build_type="Release", standard=standard)


class Recipe:
    """Stands for the class ConanFile."""

    def __init__(self):
        self.settings = Settings()
        self.recipe_folder = str(ROOT / "packaging" / "conan")
        self.export_sources_folder = self.source_folder = str(WORK / "source")
        self.package_folder = str(WORK / "package")
        self.required = []
        self.requires = self.required.append
        self.cpp_info = types.SimpleNamespace(properties={})
        self.cpp_info.set_property = self.cpp_info.properties.__setitem__


def check_min_cppstd(recipe, standard):
    if int(recipe.settings.standard) < standard:
        raise InvalidConfiguration("C++ standard")


def cmake_layout(recipe):
    recipe.build_folder = str(pathlib.Path(recipe.source_folder, "build", recipe.settings.build_type))


def copy_files(_recipe, pattern, source, target):
    """Stands for Conan's function. In its patterns, "*" also matches "/"."""
    for path in pathlib.Path(source).rglob(pattern.split("/")[0] + ("/**/*" if "/" in pattern else "")):
        relative = path.relative_to(source)
        if path.is_file() and relative.parts[0] != "build" and fnmatch.fnmatch(str(relative), pattern):
            place = pathlib.Path(target, relative)
            place.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(path, place)


class Toolchain:
    def __init__(self, recipe):
        self.recipe = recipe
        self.cache_variables = {}

    def generate(self):
        self.recipe.cache_variables = self.cache_variables


class Build:
    """Stands for the class CMake."""

    def __init__(self, recipe):
        self.recipe = recipe

    def configure(self):
        options = {**self.recipe.cache_variables, "CMAKE_BUILD_TYPE": self.recipe.settings.build_type,
                   "CMAKE_INSTALL_PREFIX": self.recipe.package_folder}
        # Enables the same warnings as the build of this test, so that the objects come from the compiler cache.
        options["LUTESTSUITE_WARNINGS"] = True
        run(CMAKE, "-S", self.recipe.source_folder, "-B", self.recipe.build_folder, "-G", "Ninja", "-Wno-dev",
            *(f"-D{name}={value}" for name, value in options.items()))

    def build(self):
        run(CMAKE, "--build", self.recipe.build_folder)

    def install(self):
        run(CMAKE, "--install", self.recipe.build_folder)


def load_recipe():
    modules = {
        "conan": {"ConanFile": Recipe},
        "conan.errors": {"ConanInvalidConfiguration": InvalidConfiguration},
        "conan.tools": {},
        "conan.tools.build": {"check_min_cppstd": check_min_cppstd},
        "conan.tools.cmake": {"CMake": Build, "CMakeDeps": lambda _: types.SimpleNamespace(generate=lambda: None),
                              "CMakeToolchain": Toolchain, "cmake_layout": cmake_layout},
        "conan.tools.files": {"copy": copy_files, "load": lambda _, path: pathlib.Path(path).read_text("utf-8")},
    }
    for name, members in modules.items():
        module = types.ModuleType(name)
        vars(module).update(members)
        sys.modules[name] = module
    spec = importlib.util.spec_from_file_location("conanfile", ROOT / "packaging" / "conan" / "conanfile.py")
    conanfile = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(conanfile)
    return conanfile.LuTestSuiteRecipe()


class ConanRecipe(unittest.TestCase):
    def test_refuses_other_compilers_machines_and_standards(self):
        for settings in (Settings(compiler="msvc"), Settings(arch="armv8"), Settings(standard="17")):
            recipe = load_recipe()
            recipe.settings = settings
            with self.assertRaises(InvalidConfiguration):
                recipe.validate()

    def test_makes_a_package_from_which_a_module_is_built(self):
        shutil.rmtree(WORK, ignore_errors=True)
        recipe = load_recipe()
        recipe.set_version()
        self.assertRegex(recipe.version, r"^\d+\.\d+\.\d+$")
        recipe.export_sources()
        recipe.layout()
        recipe.requirements()
        self.assertEqual(len(recipe.required), 4)
        for step in (recipe.validate, recipe.generate, recipe.build, recipe.package, recipe.package_info):
            step()
        self.check_package(recipe)
        self.build_module(recipe)

    def check_package(self, recipe):
        package, described = pathlib.Path(recipe.package_folder), recipe.cpp_info
        for folder in described.includedirs:
            self.assertTrue((package / folder / "base" / "luunittest.h").is_file(), folder)
        for library in described.libs:
            self.assertTrue((package / "lib" / f"lib{library}.so").exists(), library)
        self.assertEqual(described.properties, {"cmake_find_mode": "none"})

    def build_module(self, recipe):
        """Builds and runs a module. CMake searches the folders that the package names, as with Conan's toolchain."""
        project = WORK / "consumer"
        (project / "data" / "CMyTest").mkdir(parents=True)
        (project / "data" / "CMyTest" / "hello.txt").touch()
        readme = (ROOT / "README.md").read_text("utf-8")
        (project / "my_tests.cpp").write_text(readme.split("```cpp\n")[1].split("```")[0], "utf-8")
        (project / "CMakeLists.txt").write_text(CONSUMER, "utf-8")
        places = ";".join(str(pathlib.Path(recipe.package_folder, folder)) for folder in recipe.cpp_info.builddirs)
        run(CMAKE, "-S", project, "-B", project / "build", "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
            f"-DCMAKE_PREFIX_PATH={places}", "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF")
        run(CMAKE, "--build", project / "build")
        output = run(project / "build/bin/LuTestSuiteCLI", "-d", project / "data", "--dll", "MyTests")
        self.assertRegex(output, "Erfolgreich:.*1 Klasse, 2 Tests")


if __name__ == "__main__":
    unittest.main()
