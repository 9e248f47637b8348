"""Encoding, line ends, blanks, tabs, and words that must not appear in the project."""

import re

from .tree import is_data

_TABS_ALLOWED = (".gitmodules", "Makefile")
# Files that the library writes beside its reports, with Windows line ends.
_CARRIAGE_RETURNS = re.compile(r"testing/lutestsuite/resources/[^/]*\.(?:css|js)")
_BINARY = (".png", ".gz", ".zz", ".ico")

WORDS = [
    (re.compile(r"(?<![\w.])/(?:home|root|work)/"), "path of one machine"),
    (re.compile(r"\bspecifications?\b|\bspec\.md\b", re.IGNORECASE), "document outside the project"),
    (re.compile(r"\bParts? \d+(?:\.\d+)?\b"), "document outside the project"),
    (re.compile(r"\b(?:TODO|FIXME|XXX|HACK|GROWING)\b"), "unfinished mark"),
]
# These files contain the words in order to find them.
_WORDS_ALLOWED = ("scripts/lintchecks/text.py", "tests/lint/")


def check(tree):
    for name in tree.files:
        if is_data(name) or name.endswith(_BINARY):
            continue
        data = tree.bytes_of(name)
        try:
            data.decode("utf-8")
        except UnicodeDecodeError as error:
            yield f"{name}: not UTF-8 at byte {error.start}"
            continue
        if data.startswith(b"\xef\xbb\xbf"):
            yield f"{name}: begins with a byte order mark"
        if _CARRIAGE_RETURNS.fullmatch(name):
            if data.count(b"\r\n") != data.count(b"\n") or data.count(b"\r") != data.count(b"\n"):
                yield f"{name}: lines end in carriage return and line feed here"
        elif b"\r" in data:
            yield f"{name}: carriage return; lines end in a line feed"
        if data and (not data.endswith(b"\n") or data.replace(b"\r", b"").endswith(b"\n\n")):
            yield f"{name}: must end in one line feed"
        yield from _check_lines(tree, name)


def _check_lines(tree, name):
    for number, line in enumerate(tree.text_of(name).split("\n"), 1):
        if line.rstrip(" \t\r") != line.rstrip("\r"):
            yield f"{name}:{number}: blanks at the end of the line"
        if "\t" in line and not name.endswith(_TABS_ALLOWED):
            yield f"{name}:{number}: tab"
        if name.startswith(_WORDS_ALLOWED):
            continue
        for pattern, reason in WORDS:
            match = pattern.search(line)
            if match:
                yield f'{name}:{number}: "{match[0]}": {reason}'
