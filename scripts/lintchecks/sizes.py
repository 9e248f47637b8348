"""Files have fewer than 500 lines, functions at most 60; lines have at most 120 characters (clang-format limits C++).

A longer file or function gives the reason in a comment that begins with "long because".
"""

import re

from .tree import is_data

FILE_LIMIT = 500
FUNCTION_LIMIT = 60
LINE_LIMIT = 120
REASON = "long because"

_MEASURED = (".h", ".cpp", ".py", ".cmake", "CMakeLists.txt")
# Allowed between the parameters and the body of a function.
_FUNCTION_HEAD = re.compile(
    r"\)\s*(?:(?:const|mutable|override|final|try|&&?|noexcept(?:\s*\([^()]*\))?)\s*)*"
    r"(?:->\s*[^;{}=]+|requires\b[^;{}]*|:[^;{}]*)?\s*$",
    re.DOTALL,
)


def check(tree):
    for name in tree.files:
        if is_data(name) or not (name.endswith(_MEASURED) or name.startswith("scripts/")):
            continue
        lines = tree.text_of(name).splitlines()
        if len(lines) >= FILE_LIMIT and REASON not in "\n".join(lines[:20]):
            yield f"{name}: {len(lines)} lines; under {FILE_LIMIT} are allowed"
        for number, line in enumerate(lines, 1):
            if len(line) > LINE_LIMIT and not name.endswith((".h", ".cpp")):
                yield f"{name}:{number}: {len(line)} characters in a line; {LINE_LIMIT} are allowed"
    for name in tree.sources():
        yield from _long_functions(tree, name)


def _long_functions(tree, name):
    lines = tree.text_of(name).splitlines()
    for first, last in functions_of(tree.code_of(name)):
        length = last - first + 1
        if length > FUNCTION_LIMIT and REASON not in "\n".join(lines[max(0, first - 5):last]):
            yield f"{name}:{first}: function of {length} lines; {FUNCTION_LIMIT} are allowed"


def functions_of(code):
    """First and last line of each outermost function body in code without comments and literals."""
    code = re.sub(r"^[ \t]*#(?:\\\n|[^\n])*", lambda match: "\n" * match[0].count("\n"), code, flags=re.MULTILINE)
    kinds = []
    closed = ""
    head_start = 0
    for match in re.finditer(r"[{};]", code):
        line = code.count("\n", 0, match.start()) + 1
        if match[0] == "{":
            in_function = any(kind == "function" for kind, _ in kinds)
            head = code[head_start:match.start()]
            # A constructor's "m_a{1}" looks like a body; the next member or the real body follows.
            goes_on = closed == "function" and (not head.strip() or head.lstrip().startswith(","))
            is_function = not in_function and (goes_on or _FUNCTION_HEAD.search(head))
            kinds.append(("function" if is_function else "other", line))
        elif match[0] == "}" and kinds:
            closed, first = kinds.pop()
            if closed == "function":
                yield first, line
        else:
            closed = ""
        head_start = match.end()
