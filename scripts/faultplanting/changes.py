"""The faults that can be planted: changes of one line of product code, like typical slips."""

import dataclasses
import fnmatch
import random
import re

from lintchecks.sizes import functions_of

# Linux does not compile these sources, so it cannot try their faults.
_OTHER_PLATFORM = re.compile(r"_windows\.cpp$|^base/os/windows/")

# The headers that contain logic. The others have only declarations, or short functions that tests of sources cover.
_HEADERS = ("base/lbformat.h", "base/lbprintf.h", "base/luunittest.h", "testing/lutestsuite/catch2.h",
            "testing/lutestsuite/googletest.h")

# Kind, pattern and replacements. Binary operators have blanks on both sides, template brackets do not.
_EXPRESSIONS = [
    ("comparison", re.compile(r"(?<= )==(?= )"), ("!=",)),
    ("comparison", re.compile(r"(?<= )!=(?= )"), ("==",)),
    ("comparison", re.compile(r"(?<= )<(?= )"), ("<=", ">=")),
    ("comparison", re.compile(r"(?<= )>(?= )"), (">=", "<=")),
    ("comparison", re.compile(r"(?<= )<=(?= )"), ("<", ">")),
    ("comparison", re.compile(r"(?<= )>=(?= )"), (">", "<")),
    ("logic", re.compile(r"(?<= )&&(?= )"), ("||",)),
    ("logic", re.compile(r"(?<= )\|\|(?= )"), ("&&",)),
    ("negation", re.compile(r"(?<![\w)])!(?=[\w(:])"), ("",)),
    ("condition", re.compile(r"(?<=\bif )\((?!!)(?=.*\)$)"), ("(!",)),
    ("flag", re.compile(r"\btrue\b"), ("false",)),
    ("flag", re.compile(r"\bfalse\b"), ("true",)),
    ("constant", re.compile(r"(?<![\w.'])(?:0|[1-9]\d*)(?=[UL]*\b(?![.']))"), (lambda text: str(int(text, 0) + 1),)),
    ("arithmetic", re.compile(r"(?<= )\+(?= )"), ("-",)),
    ("arithmetic", re.compile(r"(?<= )-(?= )"), ("+",)),
    ("arithmetic", re.compile(r"\+\+(?=\w)"), ("--",)),
    ("choice", re.compile(r"\bstd::min\b"), ("std::max",)),
    ("choice", re.compile(r"\bstd::max\b"), ("std::min",)),
    ("jump", re.compile(r"\bcontinue(?=;)"), ("break",)),
]
# Statements of one line that are removed as a whole.
_STATEMENTS = [
    ("call", re.compile(r"^ +(?:[\w:\[\]*]+(?:\.|->))*[\w:]+\(.*\);$")),
    ("assignment", re.compile(r"^ +(?:[\w\[\]*]+(?:\.|->))*[\w\[\]*]+ (?:[-+|&]?=) .*;$")),
]
_NO_STATEMENT = re.compile(r"^ +(?:return|throw|static_assert|case|if|while|for|switch)\b")


@dataclasses.dataclass(frozen=True)
class Change:
    """A part of a line and its replacement."""

    name: str  # path of the file
    number: int  # line number, from 1
    line: str
    begin: int
    end: int
    replacement: str
    kind: str

    def changed_line(self) -> str:
        return self.line[: self.begin] + self.replacement + self.line[self.end:]

    def __str__(self) -> str:
        old = self.line[self.begin: self.end].strip()
        new = self.replacement.strip()
        return f'{self.name}:{self.number}: {self.kind}: "{old}" -> "{new}"'


def draw(tree, patterns, seed):
    """All possible changes in the files whose names match a pattern, in an order that the seed determines."""
    found = []
    for name in tree.sources():
        is_source = name.startswith(("base/", "testing/")) and name.endswith(".cpp")
        is_wanted = not patterns or any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)
        if (is_source or name in _HEADERS) and is_wanted and not _OTHER_PLATFORM.search(name):
            found += _changes_in(tree, name)
    random.Random(seed).shuffle(found)
    return found


def _changes_in(tree, name):
    lines = tree.text_of(name).splitlines()
    # The text without literals and comments. The columns of the rest differ from those in `lines`.
    code = tree.code_of(name)
    in_function = {number for first, last in functions_of(code) for number in range(first + 1, last)}
    for number, (line, bare) in enumerate(zip(lines, code.splitlines()), 1):
        if line.lstrip().startswith(("#", "//")) or "static_assert" in line:
            continue
        visible = _mask(line)
        for kind, pattern, replacements in _EXPRESSIONS:
            # Code outside functions is only declarations, so only constants and flags are changed there.
            if number in in_function or kind in ("constant", "flag"):
                for match in pattern.finditer(visible):
                    for replacement in replacements:
                        text = replacement(match[0]) if callable(replacement) else replacement
                        yield _make(name, number, line, match.start(), match.end(), text, kind)
        if number in in_function and not _NO_STATEMENT.match(line) and bare.strip():
            for kind, pattern in _STATEMENTS:
                if pattern.match(visible):
                    yield _make(name, number, line, 0, len(line), ";", kind)


def _make(name, number, line, begin, end, replacement, kind):
    if replacement == "(!":
        # Negates the whole condition.
        closing = line.rindex(")")
        return Change(name, number, line, begin, closing + 1, f"(!{line[begin:closing + 1]})", kind)
    return Change(name, number, line, begin, end, replacement, kind)


def _mask(line: str) -> str:
    """The line with literals and comments overwritten, at the same columns."""
    pattern = re.compile(r'"(?:\\.|[^"\\])*"|(?<!\w)(?:L|u8|u|U)?\'(?:\\.|[^\'\\])+\'|//.*|/\*.*?\*/')
    return pattern.sub(lambda match: match[0][0] + "~" * (len(match[0]) - 2) + match[0][-1:], line).rstrip("~/ ")
