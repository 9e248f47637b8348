"""Includes go down only, and files do not include each other in a cycle. A source and its header count as one file.

The table assigns a layer to each file; the first matching pattern decides.
"""

import collections
import fnmatch
import re

from .circles import circles

SUITE = "testing/lutestsuite/"
RUNNER = "testing/lutestsuiterunner/"

LAYERS = [
    # Files that the platform layer itself includes: export marks, exceptions, source locations, text conversion,
    # command lines, and what differs between the platforms at compile time.
    ("base/lbexport.h", 0),
    ("base/lbexception.*", 0),
    ("base/lbsourcelocation.h", 0),
    ("base/lbencoding.*", 0),
    ("base/lbutf8.h", 0),
    ("base/lbcommandline.*", 0),
    ("base/os/platform.h", 0),
    ("base/os/*", 1),
    ("base/os/linux/*", 1),
    ("base/os/windows/*", 1),
    ("base/*", 2),
    # Public headers: records, and declarations of operations, which are defined in the folder for their subject.
    (SUITE + "lutestsuiteexport.h", 3),
    (SUITE + "lutestsuiteout.h", 3),
    (SUITE + "lutestsuitesetup.h", 3),
    (SUITE + "lutestsuitedatasetfile.h", 3),
    (SUITE + "lutestsuiterun.h", 3),
    (SUITE + "*.h", 4),
    (SUITE + "output/*", 5),
    (SUITE + "settings/*", 6),
    (SUITE + "environment/*", 6),
    (SUITE + "heap/*", 6),
    (SUITE + "tree/*", 6),
    (SUITE + "selection/*", 7),
    (SUITE + "report/*", 8),
    (SUITE + "run/children/*", 9),
    (SUITE + "run/*", 10),
    (SUITE + "duplicates/*", 11),
    (SUITE + "archive/*", 11),
    # The entry that picks the mode, and the auxiliary modes, are above the run and its reports.
    (SUITE + "modes/*", 12),
    # What the hosts share, and the hosts.
    ("testing/lutestsuitehost/*", 13),
    ("testing/lutestsuitecli/*", 14),
    (RUNNER + "settings/*", 14),
    (RUNNER + "model/*", 14),
    (RUNNER + "journal/*", 15),
    (RUNNER + "reports/*", 16),
    (RUNNER + "history/archive/*", 16),
    (RUNNER + "history/analysis/*", 17),
    (RUNNER + "history/reports/*", 18),
    (RUNNER + "review/*", 16),
    (RUNNER + "execution/*", 17),
    (RUNNER + "console/*", 18),
    (RUNNER + "cluster/*", 18),
    (RUNNER + "commands/*", 19),
    (RUNNER + "*", 20),
]


def layer_of(name):
    for pattern, layer in LAYERS:
        # A "*" must not reach into a sub-folder, or the pattern of the public headers would match everything.
        if fnmatch.fnmatchcase(name, pattern) and name.count("/") == pattern.count("/"):
            return layer
    return None


# These may include each other: each object knows the record of its class, and the record creates objects.
ALLOWED_PAIRS = {"base/iobject", "base/lbrtti"}


def check(tree):
    yield from _upward_includes(tree)
    yield from _circles_of_pairs(tree)


def _circles_of_pairs(tree):
    edges = collections.defaultdict(set)
    for name in tree.sources():
        if name.startswith(("base/", "testing/")):
            included = {_pair(other) for _, other in tree.includes_of(name) if other in tree.files_set}
            edges[_pair(name)] |= included - {_pair(name)}
    for circle in circles(edges):
        if circle != ALLOWED_PAIRS:
            yield f"{', '.join(sorted(circle))}: files that include each other in a circle"


def _pair(name):
    """The path without extension and platform, which the header and the sources of one topic share."""
    return re.sub(r"(_linux|_windows)?\.\w+$", "", name)


def _upward_includes(tree):
    known = set(tree.files)
    for name in tree.sources():
        if not name.startswith(("base/", "testing/")):
            continue
        layer = layer_of(name)
        if layer is None:
            yield f"{name}: belongs to no layer; scripts/lintchecks/layers.py must name its folder"
            continue
        for line, included in tree.includes_of(name):
            if included.startswith(("examples/", "tests/", "benchmarks/")):
                yield f"{name}:{line}: includes {included}, which is not part of the product"
            elif included in known:
                target = layer_of(included)
                if target is not None and target > layer:
                    yield f"{name}:{line}: layer {layer} includes {included} of layer {target}"
            elif included.startswith(("base/", "testing/")):
                yield f"{name}:{line}: includes {included}, which does not exist"
