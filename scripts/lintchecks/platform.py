"""Operating-system code stays in base/os, and only one header there includes <windows.h>.

Facilities that do not work correctly on one platform are used on neither.
"""

import re

FOLDERS = ("base/os/", "tests/support/os/")

SWITCH = re.compile(
    r"\b(_?_?WIN(?:32|64)(?:__)?|__linux(?:__)?|__unix(?:__)?|__APPLE__|__MINGW\w*|__CYGWIN__|_MSC_VER|__GLIBC\w*)\b"
)
PLATFORM_HEADER = re.compile(
    r"(?:sys|linux|asm|arpa|netinet)/.*"
    r"|win\w*\.h"
    r"|(?:unistd|dlfcn|pthread|fcntl|signal|dirent|poll|spawn|sched|semaphore|termios|link|execinfo|pwd|grp|elf"
    r"|ucontext|ftw|glob|fnmatch|langinfo|syslog|wait|netdb|io|direct|process|conio|psapi|tlhelp32|shellapi|shlobj"
    r"|shlwapi|objbase|combaseapi|rpc|bcrypt|dbghelp|crtdbg|malloc|intrin|d3d9)\.h",
    re.IGNORECASE,
)

# With MinGW, libstdc++ has no futexes, so threads that wait for these objects may miss a wake-up. LbEvent and condition
# variables do not have this fault.
LOSES_WAKE_UPS = re.compile(r"\bstd::(?:latch|barrier|counting_semaphore|binary_semaphore)\b")


def check(tree):
    windows_headers = []
    for name in tree.sources():
        for line, included in tree.includes_of(name):
            if included.lower() == "windows.h" and name.startswith(FOLDERS):
                if name.endswith(".h"):
                    windows_headers.append(name)
                else:
                    yield f"{name}:{line}: includes <windows.h> itself; take the header of base/os/windows"
            elif PLATFORM_HEADER.fullmatch(included) and not name.startswith(FOLDERS):
                yield f"{name}:{line}: includes <{included}> outside {FOLDERS[0]}"
        if not name.startswith(FOLDERS):
            yield from _find(tree, name, SWITCH, f"outside {FOLDERS[0]}")
        yield from _find(tree, name, LOSES_WAKE_UPS, "loses wake-ups on Windows")
    if len(windows_headers) > 1:
        yield f"{FOLDERS[0]}: more than one header includes <windows.h>: {', '.join(windows_headers)}"


def _find(tree, name, pattern, reason):
    for number, line in enumerate(tree.code_of(name).splitlines(), 1):
        for match in pattern.finditer(line):
            yield f"{name}:{number}: {match[0]} {reason}"
