"""Calls go down only, as includes do, and neither folders nor files call each other in a cycle.

Includes do not show every call: LuTestSuiteUtils and LuTestSuiteReport are declared in one public header each and
defined in many folders. The symbols of the object files show every call. The check reads one build of each platform and
prints a note if that build is missing or older than a source. An old build that `--built` names is a breach.
"""

import collections
import pathlib
import shutil
import subprocess

from .circles import circles
from .layers import layer_of

# Each row is a platform. The first preset that has object files is read; presets named by --built are tried first.
PRESETS = (
    ("linux-debug", "linux-release", "linux-asan", "linux-tsan"),
    ("mingw-release", "mingw-debug"),
)
TARGETS = (
    ("base", "LbBase"),
    ("base", "lutestsuite_base_private_objects"),
    ("testing/lutestsuite", "lutestsuite_objects"),
    ("testing/lutestsuitehost", "lutestsuitehost_objects"),
    ("testing/lutestsuitecli", "LuTestSuiteCLI"),
    ("testing/lutestsuiterunner", "lutestsuiterunner_objects"),
    ("testing/lutestsuiterunner", "LuTestSuiteRunner"),
)
# Nodes of the graph of folders. The text layer (layer 0) is its own node: it is below the other files of its folders.
TEXT = "base (text)"
PLATFORM = "base/os"


def check(tree):
    for presets in PRESETS:
        yield from _check_platform(tree, presets)


def _check_platform(tree, presets):
    presets = sorted(presets, key=lambda name: name not in tree.built)
    preset = next((name for name in presets if _objects_of(tree, name)), None)
    if preset is None:
        tree.notes.append(f"links: skipped, nothing is built in build/{presets[0]}")
        return
    objects = _objects_of(tree, preset)
    stale = _first_stale(tree, objects)
    if stale and preset in tree.built:
        yield f"build/{preset} is older than {stale}"
        return
    if stale:
        tree.notes.append(f"links: skipped, build/{preset} is older than {stale}")
        return
    if not shutil.which("nm"):
        tree.notes.append("links: skipped, nm is missing")
        return
    calls = _calls_between(objects)
    yield from _upward_calls(calls, preset)
    yield from _circles_of_folders(tree, calls, preset)
    yield from _circles_of_files(calls, preset)


def _objects_of(tree, preset):
    """Maps each compiled source of the product to its object file."""
    objects = {}
    for folder, target in TARGETS:
        root = tree.root / "build" / preset / folder / "CMakeFiles" / f"{target}.dir"
        for path in root.rglob("*.o*"):
            source = f"{folder}/{path.relative_to(root).with_suffix('').as_posix()}"
            if source in tree.files:
                objects[source] = path
    return objects


def _first_stale(tree, objects):
    """A file that changed after its compilation, or a source that was never compiled, or None."""
    times = {}
    for source, path in objects.items():
        compiled = path.stat().st_mtime
        for name in sorted(_with_headers(tree, source)):
            if name not in times:
                times[name] = (tree.root / name).stat().st_mtime
            if compiled < times[name]:
                return name
    # Ignores sources for only one platform, because those for the other platform have no objects in this build.
    sided = ("_linux.cpp", "_windows.cpp")
    for name in tree.sources():
        is_product = name.startswith(("base/", "testing/")) and name.endswith(".cpp")
        is_sided = name.endswith(sided) or name.startswith(("base/os/linux/", "base/os/windows/"))
        if is_product and not is_sided and name not in objects:
            return name
    return None


def _with_headers(tree, source):
    """The source and the headers of the checkout that it includes, directly or not."""
    found, open_names = {source}, [source]
    while open_names:
        for _, included in tree.includes_of(open_names.pop()):
            if included in tree.files_set and included not in found:
                found.add(included)
                open_names.append(included)
    return found


def _calls_between(objects):
    """For each source the sources it calls, with one symbol as an example: {caller: {callee: symbol}}."""
    definers = collections.defaultdict(set)
    needs = {}
    for source, path in objects.items():
        defined, needs[source] = _symbols_of(path)
        for symbol in defined:
            definers[symbol].add(source)
    calls = collections.defaultdict(dict)
    for source, symbols in needs.items():
        for symbol in sorted(symbols):
            # Several objects may define an inline function. Its callers include its header, which layers.py checks.
            if len(definers[symbol]) == 1:
                (callee,) = definers[symbol]
                calls[source].setdefault(callee, symbol)
    return calls


def _symbols_of(path: pathlib.Path):
    """Symbols that the object defines, and symbols that it uses from others."""
    output = subprocess.run(["nm", "--format=posix", "--extern-only", str(path)],
                            check=True, capture_output=True, text=True).stdout
    defined, needed = set(), set()
    for line in output.splitlines():
        name, kind = line.split()[:2]
        if kind == "U":
            needed.add(name.removeprefix("__imp_"))
        elif kind in "TDBRG":
            defined.add(name)
    return defined, needed


def _demangle(symbol):
    if not shutil.which("c++filt"):
        return symbol
    return subprocess.run(["c++filt", symbol], check=True, capture_output=True, text=True).stdout.strip()


def _upward_calls(calls, preset):
    for caller, callees in sorted(calls.items()):
        for callee, symbol in sorted(callees.items()):
            lower, upper = layer_of(caller), layer_of(callee)
            if lower is not None and upper is not None and upper > lower:
                yield (f"{caller}: layer {lower} calls {_demangle(symbol)} of layer {upper}, "
                       f"defined in {callee} ({preset})")


def _circles_of_folders(tree, calls, preset):
    edges = collections.defaultdict(set)
    known = set(tree.files)
    for name in tree.sources():
        if name.startswith(("base/", "testing/")):
            for _, included in tree.includes_of(name):
                # Public headers have their own layer, below the folders that define their operations.
                if included in known and not _is_public(included):
                    edges[_folder(name)].add(_folder(included))
    for caller, callees in calls.items():
        edges[_folder(caller)].update(_folder(callee) for callee in callees)
    for circle in circles(edges):
        yield f"{', '.join(sorted(circle))}: folders in a circle of calls or includes ({preset})"


def _circles_of_files(calls, preset):
    for circle in circles({caller: set(callees) for caller, callees in calls.items()}):
        yield f"{', '.join(sorted(circle))}: files that call each other in a circle ({preset})"


def _folder(name):
    if layer_of(name) == 0:
        return TEXT
    folder = name.rpartition("/")[0]
    # The folders for one platform are part of the platform layer.
    return PLATFORM if folder.startswith(PLATFORM + "/") else folder


def _is_public(name):
    return _folder(name) == "testing/lutestsuite"
