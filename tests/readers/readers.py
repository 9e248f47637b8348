"""What the tests of all readers share."""

import subprocess
import sys
import unittest

# ctest takes this exit status for a skipped test.
SKIPPED_STATUS = 77


def run(*command, timeout=900):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, timeout=timeout)
    if done.returncode != 0:
        raise AssertionError(f"{command[0]} ended with {done.returncode}: {done.stdout[-2000:]}{done.stderr[-2000:]}")
    return done.stdout


def need_modules(test, modules):
    """Skips the test if npm's registry was out of reach when scripts/setup ran."""
    if not modules.is_dir():
        test.skipTest(f"the readers of npm's registry are not installed in {modules}")


def run_tests():
    """Runs the tests of the script. Its exit status is that of a skipped test if no test fails and one is skipped."""
    result = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    sys.exit(SKIPPED_STATUS if result.wasSuccessful() and result.skipped else not result.wasSuccessful())
