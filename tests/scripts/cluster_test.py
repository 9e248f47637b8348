"""Refusals of scripts/cluster and of "scripts/run-example --cluster", and their exit status. No test starts Slurm."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
sys.dont_write_bytecode = True

from clustertools.slurm import PROGRAMS, find_missing_programs  # noqa: E402

UNAVAILABLE = 3
FAILED = 4


class Cluster(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.work = pathlib.Path(temporary.name)
        self.folder = self.work / "cluster"

    def call(self, command, path=os.environ["PATH"]):
        return self.run_program([sys.executable, ROOT / "scripts/cluster", command], path)

    def run_program(self, words, path):
        environment = {**os.environ, "LUTESTSUITE_CLUSTER": str(self.folder), "PATH": str(path)}
        result = subprocess.run(words, env=environment, capture_output=True, text=True, check=False)
        return result.returncode, result.stdout + result.stderr

    def replace_programs(self, names, script):
        """Writes a script under each of these names. Returns a search path that finds the scripts first."""
        # The user munge must be able to run the scripts, too.
        self.work.chmod(0o755)
        programs = self.work / "programs"
        programs.mkdir()
        for name in names:
            (programs / name).write_text(f"#!/bin/sh\n{script}\n", encoding="ascii")
            (programs / name).chmod(0o755)
        return f"{programs}:{os.environ['PATH']}"

    def call_start_with(self, names, script):
        return self.call("start", self.replace_programs(names, script))

    def test_does_not_touch_a_folder_that_it_has_not_made(self):
        self.folder.mkdir()
        (self.folder / "thesis.txt").write_text("text", encoding="ascii")
        commands = ["stop"] if find_missing_programs() else ["stop", "start"]
        for command in commands:
            status, output = self.call(command)
            self.assertEqual(status, FAILED, output)
            self.assertIn(f"{self.folder} is no folder of a cluster", output)
            self.assertTrue((self.folder / "thesis.txt").exists())

    def test_removes_its_own_folder(self):
        self.folder.mkdir()
        (self.folder / "slurm.conf").write_text("", encoding="ascii")
        self.assertEqual(self.call("stop"), (0, "does not run\n"))
        self.assertFalse(self.folder.exists())

    def test_reports_that_slurm_is_not_installed(self):
        status, output = self.call("start", self.work)
        self.assertEqual(status, UNAVAILABLE)
        self.assertIn("scripts/setup cluster", output)

    def test_skips_the_example_if_slurm_cannot_be_installed(self):
        path = self.replace_programs(["apt-get", "dpkg-query", "sudo"], "exit 1")
        status, output = self.run_program([ROOT / "scripts/run-example", "--cluster"], path)
        self.assertEqual(status, UNAVAILABLE, output)
        self.assertEqual(output.splitlines()[-1], "run-example: the packages of Slurm cannot be installed")

    @unittest.skipIf(find_missing_programs(), "Slurm is missing; scripts/setup cluster installs it")
    def test_reports_that_an_installed_slurm_does_not_start(self):
        status, output = self.call_start_with(PROGRAMS, "echo 'no key'\nexit 1")
        self.assertEqual(status, FAILED, output)
        self.assertIn("Slurm does not start: munged ended at once", output)
        self.assertIn("munged.out: no key", output)

    @unittest.skipIf(find_missing_programs(), "Slurm is missing; scripts/setup cluster installs it")
    @unittest.skipIf(os.getuid() != 0, "only root starts munged as another user")
    def test_reports_that_root_has_no_rights(self):
        status, output = self.call_start_with(["setpriv"], "echo 'not permitted' >&2\nexit 1")
        self.assertEqual(status, UNAVAILABLE, output)
        self.assertIn("root cannot become another user: not permitted", output)


if __name__ == "__main__":
    unittest.main()
