"""A copy of the checkout with a build of its own, in which changes are tried one after the other."""

import dataclasses
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

from lintchecks.tree import Tree

PRESET = "linux-debug"
# The test program for the sources of a folder; tests mirror the sources.
PROGRAMS = (
    ("base/", "base_tests"),
    ("testing/lutestsuitecli/", "cli_tests"),
    ("testing/lutestsuite/", "lutestsuite_tests"),
    ("testing/lutestsuitehost/", "cli_tests"),
    ("testing/lutestsuiterunner/", "runner_tests"),
)
# Folders whose tests are partly in another folder: tests that start the host with a command are in cli.
FURTHER_TESTS = {"lutestsuiterunner/commands": "lutestsuiterunner/cli"}
# Linking takes most of the time, so use a fast linker, and do not relink the users of a changed library.
OPTIONS = ["-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]
FAST_LINKERS = (("ld.lld", "lld"), ("ld.gold", "gold"))
CTEST = "ctest"
TEST_NAME = re.compile(r"[\w./]+")
# Tests of the build, not of the product.
NOT_OF_THE_PRODUCT = "^(lint|scripts|compile|install|build_record)\\."
# Limits in bytes, because a fault may allocate memory or write files without end.
MEMORY_LIMIT = 6 << 30
FILE_LIMIT = 4 << 30
# Tests may take this many times as long as without a fault, because the load of the machine varies.
PATIENCE = 5
LEAST_SECONDS = 120


@dataclasses.dataclass
class Result:
    is_compiled: bool
    found_by: str = ""
    seconds: float = 0

    def __str__(self) -> str:
        return (f"found by {self.found_by}" if self.found_by else "SURVIVED") + f" ({self.seconds:.0f} s)"


class Ground:
    def __init__(self, root: pathlib.Path, folder: pathlib.Path, is_quick: bool) -> None:
        self.root = root
        self.copy = folder / "tree"
        self.build = self.copy / "build" / PRESET
        self.is_quick = is_quick
        self.usual_seconds: dict[str, float] = {}  # by test filter; the key CTEST is for all of ctest
        self.failing: set[str] = set()  # tests that fail without a fault

    def prepare(self) -> None:
        self._copy_tree()
        if not (self.build / "build.ninja").exists():
            self._configure()
        self._run(self._build_command("all"), check=True)
        if not self.is_quick:
            self._run_without_fault(CTEST, self._run_ctest)

    def _configure(self) -> None:
        options = list(OPTIONS)
        linker = next((name for program, name in FAST_LINKERS if shutil.which(program)), None)
        if linker:
            options += [f"-DCMAKE_{kind}_LINKER_FLAGS=-fuse-ld={linker}" for kind in ("EXE", "SHARED", "MODULE")]
        self._run(["cmake", "--preset", PRESET, "-Wno-dev", *options], check=True)

    def try_out(self, change) -> Result:
        program = next(program for folder, program in PROGRAMS if change.name.startswith(folder))
        filters = self._suites_near(change.name)
        if not self.usual_seconds.keys() >= set(filters):
            self._run(self._build_command(program), check=True)
        for suites in filters:
            self._run_without_fault(suites, lambda suites=suites: self._run_program(program, suites))
        path = self.copy / change.name
        original = path.read_bytes()
        begin = time.monotonic()
        lines = original.decode("utf-8").split("\n")
        assert lines[change.number - 1] == change.line
        lines[change.number - 1] = change.changed_line()
        try:
            path.write_text("\n".join(lines), encoding="utf-8")
            if self._run(self._build_command(program)).returncode != 0:
                return Result(False)
            return Result(True, self._find(program, filters), time.monotonic() - begin)
        finally:
            path.write_bytes(original)

    def _run_without_fault(self, name, run) -> None:
        """Finds the tests that fail without a fault. They are omitted, because they would seem to find all faults."""
        while name not in self.usual_seconds:
            begin = time.monotonic()
            failed = run()
            test = failed.partition(" ")[0]
            if not failed:
                self.usual_seconds[name] = time.monotonic() - begin
            elif test in self.failing or not TEST_NAME.fullmatch(test):
                sys.exit(f"plant-faults: the tests fail without a fault: {failed}")
            else:
                print(f"plant-faults: {failed} fails without a fault and is left out", flush=True)
                self.failing.add(test)

    def _find(self, program, filters) -> str:
        """The first test that fails; empty when all pass."""
        for suites in filters:
            failed = self._run_program(program, suites)
            if failed:
                return failed
        if self.is_quick:
            return ""
        if self._run(self._build_command("all")).returncode != 0:
            return "the build"
        return self._run_ctest()

    def _copy_tree(self) -> None:
        """Copies only files that have changed, so that the rest of the copy's build stays up to date."""
        tree = Tree(self.root)
        self.copy.mkdir(parents=True, exist_ok=True)
        wanted = set(tree.files)
        for path in self.copy.rglob("*"):
            name = path.relative_to(self.copy)
            if name.parts[0] != "build" and path.is_file() and name.as_posix() not in wanted:
                path.unlink()
        for name in tree.files:
            source, target = self.root / name, self.copy / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)

    def _suites_near(self, name):
        """Filters for the tests of the file, and for the other tests of its folder."""
        folder = pathlib.PurePosixPath(name).parent.as_posix().removeprefix("testing/")
        stem = re.sub(r"_linux$", "", pathlib.PurePosixPath(name).stem)
        folders = [self.copy / "tests" / each for each in (folder, FURTHER_TESTS.get(folder)) if each]
        of_file = _suites_in(path for each in folders for path in each.glob(f"{stem}*_test.cpp"))
        of_folder = _suites_in(path for each in folders for path in each.glob("*_test.cpp")) - of_file
        filters = [":".join(f"{suite}.*:*/{suite}.*" for suite in sorted(suites)) for suites in (of_file, of_folder)]
        return [each for each in filters if each]

    def _run_program(self, program: str, suites: str) -> str:
        """The name of the first test that fails; empty when all pass."""
        selection = suites + ("-" + ":".join(sorted(self.failing)) if self.failing else "")
        command = [f"./{program}", f"--gtest_filter={selection}", "--gtest_fail_fast"]
        status, output = self._run_tests(command, self.build / "bin", suites)
        if status == 0:
            return ""
        failed = re.findall(r"^\[  FAILED  \] ([\w./]+)", output, re.MULTILINE)
        started = re.findall(r"^\[ RUN      \] ([\w./]+)", output, re.MULTILINE)
        if failed:
            return failed[0]
        last = started[-1] if started else program
        return f"{last} (takes too long)" if status is None else f"{last} (status {status})"

    def _run_ctest(self) -> str:
        left_out = "|".join([NOT_OF_THE_PRODUCT, *(f"^{re.escape(name)}$" for name in sorted(self.failing))])
        command = ["ctest", "--preset", PRESET, "--stop-on-failure", "-j", str(4 * os.cpu_count()), "-E", left_out]
        status, output = self._run_tests(command, self.copy, CTEST)
        if status == 0:
            return ""
        # A test may itself print the closing lines of another ctest, so only the last ones count.
        closing = output.rpartition("The following tests FAILED:")[2]
        failed = re.findall(r"^\s*\d+ - (\S+)(?: .*)? \((?!Not Run|Disabled)", closing, re.MULTILINE)
        return failed[0] if failed else f"ctest ({'takes too long' if status is None else output[-200:]})"

    def _run_tests(self, command, folder, name):
        """Runs a command and ends all processes that it started. Returns the status (None after the time limit) and the
        output."""
        usual = self.usual_seconds.get(name)
        limit = None if usual is None else max(LEAST_SECONDS, PATIENCE * usual)
        log = self.copy / "build" / "tests.log"
        with open(log, "wb") as file:
            process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=file, stderr=file,
                                       start_new_session=True, preexec_fn=_limit_resources)
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            finally:
                _end_group(process)
        return status, log.read_text(encoding="utf-8", errors="replace")

    def _build_command(self, target):
        return ["cmake", "--build", "--preset", PRESET, "-j", str(os.cpu_count()), "--target", target]

    def _run(self, command, check=False):
        result = subprocess.run(command, cwd=self.copy, capture_output=True, text=True, check=False)
        if check and result.returncode != 0:
            sys.exit(result.stdout[-5000:] + result.stderr)
        return result


def _suites_in(paths):
    suites = set()
    for path in paths:
        suites.update(re.findall(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+),", path.read_text(encoding="utf-8"), re.MULTILINE))
    return suites


def _limit_resources():
    resource.setrlimit(resource.RLIMIT_DATA, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def _end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()
