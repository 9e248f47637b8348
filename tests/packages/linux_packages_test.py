"""The Debian packages: names, dependencies, contents, and a host that runs from the unpacked packages."""
import os
import pathlib
import tempfile
import unittest

import making


class DebianPackages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # scripts/package fails if lintian finds an error.
        packages = making.make("linux")
        cls.packages = {path.name.split("_")[0]: path for path in packages}
        cls.folder = tempfile.TemporaryDirectory(prefix="lutestsuite-packages-")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.trees = {}
        for name, path in cls.packages.items():
            cls.trees[name] = pathlib.Path(cls.folder.name, name)
            making.output_of("dpkg-deb", "-x", path, cls.trees[name])

    def field(self, package, name):
        return making.output_of("dpkg-deb", "-f", self.packages[package], name).strip()

    def files(self, package):
        tree = self.trees[package]
        return {str(path.relative_to(tree)) for path in tree.rglob("*") if not path.is_dir()}

    def test_there_are_three_packages(self):
        self.assertEqual(set(self.packages), {"liblutestsuite1", "liblutestsuite-dev", "lutestsuite"})

    def test_depend_on_each_other_in_the_same_version(self):
        version = self.field("lutestsuite", "Version")
        self.assertIn(f"liblutestsuite1 (= {version})", self.field("lutestsuite", "Depends"))
        for name in ("liblutestsuite1", "lutestsuite"):
            self.assertIn(f"{name} (= {version})", self.field("liblutestsuite-dev", "Depends"))

    def test_libraries_depend_on_the_libraries_that_they_link(self):
        self.assertIn("libpugixml1v5", self.field("liblutestsuite1", "Depends"))
        self.assertEqual(self.field("liblutestsuite1", "Recommends"), "libdw1")

    def test_files_are_in_the_right_package(self):
        libraries = self.files("liblutestsuite1")
        self.assertTrue(any(name.endswith("/libLbBase.so.1") for name in libraries))
        self.assertFalse(any(name.endswith((".h", ".so")) for name in libraries))
        self.assertIn("usr/bin/LuTestSuiteCLI", self.files("lutestsuite"))
        self.assertIn("usr/bin/lutestsuite-check-proof", self.files("lutestsuite"))
        development = self.files("liblutestsuite-dev")
        self.assertIn("usr/include/lutestsuite/base/luunittest.h", development)
        for ending in ("/libLuTestSuite.so", "/LuTestSuiteConfig.cmake", "/LbBase.pc"):
            self.assertTrue(any(name.endswith(ending) for name in development), ending)

    def test_programs_have_no_search_path_for_libraries(self):
        dynamic = making.output_of("readelf", "-d", self.trees["lutestsuite"] / "usr/bin/LuTestSuiteCLI")
        self.assertIn("libLuTestSuite.so.1", dynamic)
        self.assertNotIn("RUNPATH", dynamic)

    def test_the_host_runs(self):
        library = next(self.trees["liblutestsuite1"].rglob("libLbBase.so.1"))
        environment = {**os.environ, "LD_LIBRARY_PATH": str(library.parent)}
        host = self.trees["lutestsuite"] / "usr/bin/LuTestSuiteCLI"
        self.assertIn("--html", making.output_of(host, "-h", env=environment))


if __name__ == "__main__":
    making.require_setup()
    unittest.main()
