"""Each header compiles alone, with every installed compiler of the project.

If a header is the first #include of a source of the product, the build already checks it. Others are compiled here.
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess

COMPILERS = {"linux": "g++", "windows": "x86_64-w64-mingw32-g++-posix"}
OPTIONS = ["-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-x", "c++", "-"]
# The definitions that the build passes to every source of the library.
DEFINITIONS = ['-DLUTESTSUITE_BUILD_CONFIGURATION="Release"']
GOOGLETEST = "/usr/src/googletest"
# Headers that need a framework that only the build finds: the build compiles each with the source named here.
ADAPTERS = {
    "benchmarks/trivialcatch2tests.h": "benchmarks/catch2_trivial.cpp",
    "testing/lutestsuite/catch2.h": "tests/foreign/catch2/adapter.cpp",
    "testing/lutestsuite/googletest.h": "tests/foreign/googletest/adapter.cpp",
}


# Sources that are compiled without precompiled headers.
PRODUCT = ("base/", "testing/")


def check(tree):
    for name in tree.headers():
        if not re.search(r"^#pragma once$", tree.text_of(name), re.MULTILINE):
            yield f"{name}: has no #pragma once"
    jobs = []
    included_first = _included_first(tree)
    for platform, compiler in COMPILERS.items():
        if not shutil.which(compiler):
            continue
        for name in tree.headers():
            if name not in included_first and _is_for(tree, name, platform):
                jobs.append((tree, platform, compiler, name))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for breach in pool.map(lambda job: _compile(*job), jobs):
            if breach:
                yield breach


def _included_first(tree):
    sources = (name for name in tree.sources() if name.endswith(".cpp") and name.startswith(PRODUCT))
    includes = (tree.includes_of(name) for name in sources)
    return {found[0][1] for found in includes if found}


def _is_for(tree, name, platform):
    """True if the header is compiled for the platform: for Windows only headers of base/os, since no others differ by
    platform. Headers for one platform are in its folder."""
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
    source = f'#include "{name}"\n'
    command = [compiler, *includes, *DEFINITIONS, *OPTIONS]
    environment = {**os.environ, "LC_ALL": "C"}
    result = subprocess.run(command, input=source, text=True, capture_output=True, env=environment, check=False)
    if result.returncode == 0:
        return None
    first = next((line for line in result.stderr.splitlines() if "error" in line), result.stderr.strip())
    return f"{name}: does not compile alone ({compiler}): {first}"
