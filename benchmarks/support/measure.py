"""Shared by the scripts in the parent folder: builds, costs of commands, and figures with their limits."""
import collections
import json
import os
import resource
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BIN = os.path.join(ROOT, "build", "linux-release", "bin")

# The processor time includes processes that the command has waited for.
Cost = collections.namedtuple("Cost", "elapsed processor")


class Build:
    """The programs of a build: those of linux-release, or those in the folder of another host."""

    def __init__(self, host=None):
        self.is_other = host is not None
        command = host or [os.path.join(BIN, "LuTestSuiteCLI")]
        self.host = [part if index == 0 and os.sep not in part else os.path.abspath(part)
                     for index, part in enumerate(command)]

    def program(self, name):
        """The command that starts another program of the build."""
        directory, host = os.path.split(self.host[-1])
        return [*self.host[:-1], os.path.join(directory, name + os.path.splitext(host)[1])]


def run(command, folder, output="output.txt"):
    """The cost of a command that ends with status 0. Its output goes into a file of the folder."""
    path = os.path.join(folder, output)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    with open(path, "wb") as file:
        process = subprocess.Popen(command, cwd=folder, stdout=file, stderr=subprocess.STDOUT)
        process.wait()
    elapsed = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if process.returncode != 0:
        with open(path, encoding="utf-8", errors="replace") as file:
            sys.exit(f"{command} ended with status {process.returncode}:\n{file.read()[-2000:]}")
    processor = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return Cost(elapsed, processor)


def get_peak_memory(command, folder):
    """The peak memory of the command in bytes; None without GNU time. The system never reports less for a program than
    its parent used when it started the program, so the parent must be small."""
    time_program = shutil.which("time")
    if time_program is None:
        return None
    path = os.path.join(folder, "memory.txt")
    subprocess.run([time_program, "-f", "%M", "-o", path, *command], cwd=folder, stdout=subprocess.DEVNULL, check=True)
    with open(path, encoding="ascii") as file:
        return int(file.read()) * 1024


def count_writes(command, folder):
    """The number of the command's writes to standard output. Its child processes do not write there."""
    # In this mode each read returns the bytes of one write, if that is at most one page.
    reader, writer = os.pipe2(os.O_CLOEXEC | os.O_DIRECT)
    with subprocess.Popen(command, cwd=folder, stdout=writer) as process:
        os.close(writer)
        writes = 0
        while os.read(reader, 65536):
            writes += 1
    os.close(reader)
    if process.returncode != 0:
        sys.exit(f"{command} ended with status {process.returncode}")
    return writes


def least(costs):
    """The least value of each figure, because other work of the machine can only add to a cost."""
    return Cost(*(min(figures) for figures in zip(*costs)))


def run_benchmarks(program, pattern, folder):
    """The results of a Google Benchmark program by name; empty if the build does not have the program. Ignores the
    program's own limits."""
    if not os.path.isfile(program[-1]):
        print(f"{os.path.basename(program[-1])} is not there: not measured")
        return {}
    file = os.path.join(folder, "figures.json")
    result = subprocess.run([*program, f"--benchmark_filter={pattern}", "--benchmark_out_format=json",
                             "--benchmark_out=figures.json"], cwd=folder, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, check=False)
    if not os.path.isfile(file):
        sys.exit(f"{program} ended with status {result.returncode}:\n{result.stderr.decode(errors='replace')}")
    with open(file, encoding="utf-8") as figures:
        results = json.load(figures)["benchmarks"]
    os.remove(file)
    return {result["name"].split("/iterations")[0]: result for result in results}


class Figures:
    """Prints each figure at once and counts missed limits."""

    def __init__(self):
        self.missed = []

    def show(self, title, measured, unit, limit=None):
        print(f"{title:60}{measured:10.4g} {unit:8}" + self._judge(title, measured, limit), flush=True)

    def show_growth(self, title, unit, by_count, limit=None, growth=None):
        """A figure for each of several counts, and the ratio of the last to the first."""
        values = list(by_count.values())
        growth = values[-1] / values[0] if growth is None else growth
        columns = "".join(f"{value:10.4g}" for value in values)
        print(f"{title:40}{unit:6}{columns}{growth:9.2f}    " + self._judge(title, growth, limit), flush=True)

    def _judge(self, title, measured, limit):
        if limit is None:
            return ""
        if measured > limit:
            self.missed.append(title)
        return f"{limit:8.4g}  " + ("ok" if measured <= limit else "MISSED")

    def finish(self):
        """Prints the missed limits and returns the exit status."""
        print(f"\n{len(self.missed)} limits missed" + "".join(f"\n  {title}" for title in self.missed))
        return 1 if self.missed else 0
