"""Recipe for Conan 2: conan create packaging/conan. Builds the checkout that contains this file."""
import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

SOURCES = ("CMakeLists.txt", "base/*", "cmake/*", "packaging/*", "scripts/check-proof", "testing/*")


class LuTestSuiteRecipe(ConanFile):
    name = "lutestsuite"
    description = "Data-driven unit-test runner for C++ product families"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"

    def _checkout(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        project = load(self, os.path.join(self._checkout(), "CMakeLists.txt"))
        self.version = re.search(r"project\(LuTestSuite VERSION ([0-9.]+)", project)[1]

    def export_sources(self):
        for pattern in SOURCES:
            copy(self, pattern, self._checkout(), self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        self.requires("cli11/2.4.2")
        self.requires("nlohmann_json/3.11.3")
        self.requires("pugixml/1.14")
        self.requires("xxhash/0.8.2")

    def validate(self):
        check_min_cppstd(self, 20)
        if self.settings.compiler == "msvc" or self.settings.arch != "x86_64":
            raise ConanInvalidConfiguration("LuTestSuite needs GCC or Clang and x86-64")

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["BUILD_TESTING"] = False
        toolchain.cache_variables["LUTESTSUITE_BUILD_EXAMPLES"] = False
        toolchain.cache_variables["LUTESTSUITE_WARNINGS"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # Conan generates no files for find_package: the installed CMake package defines the targets and the commands.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "LuTestSuite")]
        self.cpp_info.includedirs = ["include"]
        self.cpp_info.libs = ["LuTestSuite", "LbBase"]
