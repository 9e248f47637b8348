"""Includes go down only. The table assigns a layer to each file; the first matching pattern decides."""

import fnmatch

SUITE = "testing/lutestsuite/"
RUNNER = "testing/lutestsuiterunner/"

LAYERS = [
    # Used by the platform layer itself: export marks, exceptions, source locations, text conversion, command lines.
    ("base/lbexport.h", 0),
    ("base/lbexception.*", 0),
    ("base/lbsourcelocation.h", 0),
    ("base/lbencoding.*", 0),
    ("base/lbutf8.h", 0),
    ("base/lbcommandline.*", 0),
    ("base/os/*", 0),
    ("base/os/linux/*", 0),
    ("base/os/windows/*", 0),
    ("base/*", 1),
    # Public headers: records, and operations that are declared here and defined in the folder whose subject they are.
    (SUITE + "lutestsuiteexport.h", 2),
    (SUITE + "lutestsuiteout.h", 2),
    (SUITE + "lutestsuitesetup.h", 2),
    (SUITE + "lutestsuitedatasetfile.h", 2),
    (SUITE + "lutestsuiterun.h", 2),
    (SUITE + "*.h", 3),
    (SUITE + "output/*", 4),
    (SUITE + "settings/*", 5),
    (SUITE + "environment/*", 5),
    (SUITE + "heap/*", 5),
    (SUITE + "tree/*", 5),
    (SUITE + "selection/*", 6),
    (SUITE + "report/*", 7),
    (SUITE + "run/children/*", 8),
    (SUITE + "run/*", 9),
    (SUITE + "duplicates/*", 10),
    (SUITE + "archive/*", 10),
    # The entry that picks the mode, and the auxiliary modes, are above the run and its reports.
    (SUITE + "modes/*", 11),
    # What the hosts share, and the hosts.
    ("testing/lutestsuitehost/*", 12),
    ("testing/lutestsuitecli/*", 13),
    (RUNNER + "settings/*", 13),
    (RUNNER + "model/*", 13),
    (RUNNER + "journal/*", 14),
    (RUNNER + "reports/*", 15),
    (RUNNER + "history/archive/*", 15),
    (RUNNER + "history/analysis/*", 16),
    (RUNNER + "history/reports/*", 17),
    (RUNNER + "review/*", 15),
    (RUNNER + "execution/*", 16),
    (RUNNER + "console/*", 17),
    (RUNNER + "cluster/*", 17),
    (RUNNER + "commands/*", 18),
    (RUNNER + "*", 19),
]


def layer_of(name):
    for pattern, layer in LAYERS:
        # A "*" must not reach into a sub-folder, or the pattern of the public headers would match everything.
        if fnmatch.fnmatchcase(name, pattern) and name.count("/") == pattern.count("/"):
            return layer
    return None


def check(tree):
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
