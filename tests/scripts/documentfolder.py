"""Folders in which tests follow the documents."""

import os
import pathlib
import re
import shutil
import subprocess

import documentparts as parts

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Tree:
    """The build tree that a test belongs to, and an install tree made from it."""

    def __init__(self, path, config, cmake, prefix):
        self.path = pathlib.Path(path)
        self.config = config
        self.cmake = pathlib.Path(cmake)
        self.prefix = prefix
        subprocess.run([cmake, "--install", path, "--config", config, "--prefix", prefix], check=True,
                       capture_output=True)

    def name_release_hosts(self, folder):
        """In a Debug build, adds links to the hosts under the names of release hosts, which the documents use."""
        for host in folder.glob("*D") if self.config == "Debug" else ():
            link = folder / host.name.removesuffix("D")
            if not link.exists():
                link.symlink_to(host.name)


class Folder:
    """The folder in which the commands of one document run."""

    def __init__(self, path, tree):
        self.path = path
        self.tree = tree
        self.exports = ""
        self.variables = {}
        self.ctest = "build"
        # True: `run` removes the folder of an earlier run. False: the commands of the document do that themselves.
        self.removes_runs = True
        path.mkdir()

    def write(self, name, content=""):
        file = self.path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content, encoding="utf-8")

    def write_readme_project(self, source=None, module=None):
        """Writes the project of the README. `source` replaces its source, `module` the lines of its module."""
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        project = parts.snippets_of(readme, "cmake")[0]
        if module:
            project = re.sub(r"^lutestsuite_add_module.*\n", lambda _: module, project, flags=re.MULTILINE)
        self.write("CMakeLists.txt", project)
        self.write("my_tests.cpp", source or parts.snippets_of(readme, "cpp")[0])
        self.write("data/CMyTest/hello.txt", "hello\n")

    def write_guide_data(self):
        self.write("data/CFirstTest/good.txt", "text\n")
        self.write("data/CFirstTest/no end.txt", "text")

    def build(self):
        self.run(f"cmake -B build -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH={self.tree.prefix}", 0)
        self.run("cmake --build build", 0)

    def use_modules_of(self, other):
        (self.path / "build").symlink_to(other.path / "build")

    def run(self, command, expected):
        """Runs a command and returns its output. Raises AssertionError if the status is not the expected one."""
        line = self._translate(command)
        if line.startswith("export "):
            self.exports += line + "\n"
            return ""
        result = self.try_to_run(line)
        self.tree.name_release_hosts(self.path / "build" / "bin")
        if result.returncode != expected:
            raise AssertionError(f"{line}: status {result.returncode}, {expected} is expected\n"
                                 f"{result.stdout}{result.stderr}")
        return result.stdout + result.stderr

    def try_to_run(self, line):
        return subprocess.run(["bash", "-c", self.exports + line], cwd=self.path, capture_output=True, text=True,
                              check=False, env=os.environ | self._environment() | self.variables)

    def start(self, command):
        """Starts a command in the background, in a session of its own."""
        return subprocess.Popen(["bash", "-c", f"exec {command}"], cwd=self.path, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, env=os.environ | self._environment() | self.variables,
                                start_new_session=True)

    def _translate(self, command):
        """Adapts a command of a document to this build tree. May remove the folder of an earlier run."""
        line = command.replace("/opt/lutestsuite", str(self.tree.prefix))
        line = re.sub(r"^ctest (?!.*--test-dir)", f"ctest --test-dir {self.ctest} ", line)
        line = line.replace("-DCMAKE_BUILD_TYPE=Release", f"-DCMAKE_BUILD_TYPE={self.tree.config}")
        line = re.sub(r"(?<=cmake --install )build/[\w-]+", f"{self.tree.path} --config {self.tree.config}", line)
        run = re.search(r"Runner run --out (\w+) (?!.*--force)", line)
        if run and self.removes_runs:
            shutil.rmtree(self.path / run[1], ignore_errors=True)
        return line

    def _environment(self):
        programs = [self.path / "build/bin", self.path / "build/linux-release/bin", self.tree.cmake.parent]
        # CI must be empty, because "review" makes no decisions if it is set.
        variables = {"LC_ALL": "C.UTF-8", "CI": "", "PATH": ":".join([*map(str, programs), os.environ["PATH"]])}
        if shutil.which("ccache"):
            # The folders' names differ between runs of this test, so the compiler cache must ignore them.
            variables |= {"CMAKE_CXX_COMPILER_LAUNCHER": "ccache", "CCACHE_NOHASHDIR": "1",
                          "CCACHE_BASEDIR": str(self.tree.prefix.parent)}
        return variables
