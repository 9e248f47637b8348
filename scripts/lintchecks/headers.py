"""Each header compiles alone, with every installed compiler of the project."""

import concurrent.futures
import os
import pathlib
import shutil
import subprocess

COMPILERS = {"linux": "g++", "windows": "x86_64-w64-mingw32-g++-posix"}
OPTIONS = ["-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-x", "c++", "-"]
# What the build gives to every source of the library.
DEFINITIONS = ['-DLUTESTSUITE_BUILD_CONFIGURATION="Release"']
GOOGLETEST = "/usr/src/googletest"
# The build knows where the frameworks are. Each of these sources contains nothing but such a header.
ADAPTERS = {
    "testing/lutestsuite/catch2.h": "tests/foreign/catch2/adapter.cpp",
    "testing/lutestsuite/googletest.h": "tests/foreign/googletest/adapter.cpp",
}


def check(tree):
    jobs = []
    for platform, compiler in COMPILERS.items():
        if not shutil.which(compiler):
            continue
        for name in tree.headers():
            if _is_for(tree, name, platform):
                jobs.append((tree, platform, compiler, name))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for breach in pool.map(lambda job: _compile(*job), jobs):
            if breach:
                yield breach


def _is_for(tree, name, platform):
    """Headers for one platform are in that platform's folder. The others differ by platform in base/os only."""
    if ADAPTERS.get(name) in tree.files:
        return False
    if platform == "windows" and not name.startswith("base/os/"):
        return False
    return not any(name.startswith(f"base/os/{other}/") for other in COMPILERS if other != platform)


def _compile(tree, platform, compiler, name):
    includes = ["-I", str(tree.root)]
    for part in ("googletest", "googlemock"):
        includes += ["-isystem", f"{GOOGLETEST}/{part}/include"]
    if platform == "windows":
        cache = os.environ.get("XDG_CACHE_HOME") or str(pathlib.Path.home() / ".cache")
        includes += ["-isystem", f"{cache}/lutestsuite/mingw/include"]
    # Included twice, to detect a missing include guard.
    source = f'#include "{name}"\n' * 2
    command = [compiler, *includes, *DEFINITIONS, *OPTIONS]
    environment = {**os.environ, "LC_ALL": "C"}
    result = subprocess.run(command, input=source, text=True, capture_output=True, env=environment, check=False)
    if result.returncode == 0:
        return None
    first = next((line for line in result.stderr.splitlines() if "error" in line), result.stderr.strip())
    return f"{name}: does not compile alone ({compiler}): {first}"
