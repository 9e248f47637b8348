"""What scripts/check-proof prints for folders that contain no complete run."""

import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-proof"
# The script runs with the Python for which Debian's packages are installed.
XXHASH = subprocess.run(["/usr/bin/python3", "-c", "import xxhash"], capture_output=True, check=False)


@unittest.skipIf(XXHASH.returncode != 0, "python3-xxhash is missing; scripts/setup installs it")
class IncompleteRuns(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def assert_fails(self, line):
        result = subprocess.run([SCRIPT, self.folder], capture_output=True, text=True, check=False)
        self.assertEqual("", result.stderr)
        self.assertEqual(1, result.returncode)
        self.assertEqual(line, result.stdout.splitlines()[-1])

    def test_without_a_proof(self):
        self.assert_fails(f"{self.folder}: proof.json is missing; submit and wait write it when a distributed run ends")

    def test_without_another_file(self):
        (self.folder / "proof.json").write_text("{}", encoding="utf-8")
        self.assert_fails(f"{self.folder / 'summary.json'}: No such file or directory: the proof fails")


if __name__ == "__main__":
    unittest.main()
