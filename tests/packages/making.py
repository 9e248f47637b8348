"""Makes packages with scripts/package. "scripts/setup packages" installs what that script needs."""
import pathlib
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = 77


def require_setup():
    if not shutil.which("lintian"):
        print("Skipped: run scripts/setup packages first")
        sys.exit(SKIPPED)


def make(platform):
    """Makes the packages of a platform and returns their paths."""
    command = [ROOT / "scripts" / "package", "--no-setup", platform]
    lines = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()
    return [ROOT / line for line in lines if line.endswith((".deb", ".zip"))]


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout
