"""The checked files, and C++ text without the parts that rules must ignore."""

import functools
import os
import pathlib
import re
import subprocess

# Files that are input of tests, or that tests compare byte for byte.
DATA = ("examples/data/", "fuzz/corpus/", "tests/data/", "tests/golden/", "tests/install/outside/data/")

_NOISE = re.compile(
    r'(?P<raw>R"(?P<mark>[^()\s\\]{0,16})\(.*?\)(?P=mark)")'
    r"|(?P<comment>//[^\n]*|/\*.*?\*/)"
    r'|(?P<string>"(?:\\.|[^"\\\n])*")'
    r"|(?P<character>(?<![0-9A-Za-z_])(?:L|u8|u|U)?'(?:\\.|[^'\\\n])+')",
    re.DOTALL,
)


class Tree:
    """The files of a checkout that git would commit, or all files of a folder that has no git repository."""

    def __init__(self, root: pathlib.Path, built=()) -> None:
        self.root = root.resolve()
        # Presets whose builds must be current.
        self.built = built
        # Notes about checks that were skipped.
        self.notes: list[str] = []
        self.files = sorted(name for name in self._names() if (self.root / name).is_file())

    def _names(self) -> list[str]:
        if (self.root / ".git").exists():
            command = ["git", "-c", "safe.directory=*", "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
            listing = subprocess.run(command, cwd=self.root, check=True, capture_output=True).stdout
            return sorted({name for name in os.fsdecode(listing).split("\0") if name})
        found = (path.relative_to(self.root) for path in self.root.rglob("*"))
        return [path.as_posix() for path in found if path.parts[0] != "build"]

    def sources(self) -> list[str]:
        return [name for name in self.files if name.endswith((".h", ".cpp")) and not is_data(name)]

    def headers(self) -> list[str]:
        return [name for name in self.sources() if name.endswith(".h")]

    @functools.cache
    def bytes_of(self, name: str) -> bytes:
        return (self.root / name).read_bytes()

    def text_of(self, name: str) -> str:
        return self.bytes_of(name).decode("utf-8", "replace")

    @functools.cached_property
    def files_set(self) -> frozenset[str]:
        return frozenset(self.files)

    @functools.cache
    def includes_of(self, name: str) -> list[tuple[int, str]]:
        """Line number and text between quotes or brackets of each include line."""
        pattern = re.compile(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">]', re.MULTILINE)
        text = self.text_of(name)
        return [(text.count("\n", 0, match.start()) + 1, match[1]) for match in pattern.finditer(text)]

    @functools.cache
    def code_of(self, name: str) -> str:
        """The text with comments and literals blanked; line numbers stay."""
        return _NOISE.sub(lambda match: _blank(match), self.text_of(name))


def _blank(match: re.Match) -> str:
    # Quotes stay, so that a literal does not vanish from the code.
    quotes = "" if match["comment"] else '""'
    return quotes + "\n" * match[0].count("\n")


def is_data(name: str) -> bool:
    return name.startswith(DATA)
