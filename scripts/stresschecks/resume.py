"""Kills runs of LuTestSuiteRunner at random instants, or lets their disk become full, and resumes them. Nothing may be
lost, and nothing may run twice."""
import json
import os
import random
import re
import shutil
import signal
import subprocess
import time
import xml.etree.ElementTree as ElementTree

from stresschecks import reports

QUARANTINE = "CResultModel:abweichend\nCSubtestExceptionModel\nCPassedModel\n"
# Stands in MODES for the path of a file with the text QUARANTINE.
QUARANTINE_FILE = "QUARANTINE-FILE"
# Options of the host, "--", options of the library. Repetitions make cases take a good part of each run's time. The
# mode with --confirm has no -x: with -x, a failed case is confirmed only if other cases have shared its process.
MODES = [[*mode, "-r", repetitions] for mode, repetitions in (
    (["--"], "50"), (["--", "-x"], "10"), (["--", "-s"], "4"), (["--", "-w", "4"], "50"),
    (["--", "-w", "4", "-x"], "10"), (["--", "-w", "4", "-s"], "4"),
    (["--retries", "2", "--confirm", "--", "-w", "4"], "20"),
    (["--shard", "1/2", "--order", "random:7", "--quarantine", QUARANTINE_FILE, "--", "-w", "4", "-x"], "10"))]
LIMIT = 6.0
# The maximum number of kills of one run, including kills after it was resumed.
KILLS_A_RUN = 3
# The approximate share of a run's time in which its first cases run.
SHARE_OF_CASES = 0.2
LARGE_DISK = "64m"


class Runner:
    """The host of a build, and the options that select all cases of the data."""

    def __init__(self, words, data, modules, processes_of, end_unbegun, quarantine):
        self.words = words
        self.data = data
        self.library = ["-d", data, *(text for module in modules for text in ("--dll", module))]
        self.processes_of = processes_of
        self.end_unbegun = end_unbegun
        self.quarantine = quarantine

    def start(self, arguments):
        return subprocess.Popen([*self.words, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def run_arguments(self, out, mode):
        words = [self.quarantine if word == QUARANTINE_FILE else word for word in mode]
        mark = words.index("--") + 1
        return ["run", "--out", out, *words[:mark], *self.library, *words[mark:]]


def journals(folder):
    """The records of each journal, without an incomplete line at its end."""
    def number(name):
        match = re.fullmatch(r"journal(?:-(\d+))?\.ndjson", name)
        return int(match[1] or 1) if match else None

    names = sorted((name for name in os.listdir(folder) if number(name)), key=number)
    for name in names:
        records = []
        with open(os.path.join(folder, name), "rb") as file:
            for line in file:
                # A record without a line end is incomplete, so it does not count.
                if not line.endswith(b"\n"):
                    break
                try:
                    records.append(json.loads(line)["r"])
                except ValueError:
                    break
        yield records


def finished_attempts(folder):
    """The result of each attempt with a verdict, by case and attempt."""
    return {(record["case"], record["attempt"]): record["result"] for records in journals(folder)
            for record in records if record["t"] == "end" and record.get("end") != "canceled"}


def faults(folder, workers, expected):
    """A message for each loss and each attempt that ran twice, according to the journals. `expected` are the attempts
    of an uninterrupted run."""
    found = []
    finished = {}
    for number, records in enumerate(journals(folder), 1):
        is_open = set()
        for record in records:
            key = (record.get("case"), record.get("attempt"))
            if record["t"] == "start":
                if key in finished:
                    found.append(f"case {key} starts again in journal {number}")
                is_open.add(key)
            elif record["t"] == "end":
                is_open.discard(key)
                if record.get("end") != "canceled":
                    if key in finished:
                        found.append(f"case {key} ends twice")
                    finished[key] = record["result"]
        if len(is_open) > workers:
            found.append(f"journal {number} leaves {len(is_open)} open cases to {workers} workers")
    missing = len(expected.keys() - finished.keys())
    if missing:
        found.append(f"{missing} of {len(expected)} attempts are missing")
    surplus = len(finished.keys() - expected.keys())
    if surplus:
        found.append(f"{surplus} attempts more than in an uninterrupted run")
    other = sum(finished[key] != expected[key] for key in finished.keys() & expected.keys())
    if other:
        found.append(f"{other} attempts have other results than in an uninterrupted run")
    return found


def verdicts(folder):
    """Name and outcome of each case in the order of junit.xml."""
    cases = []
    for case in ElementTree.parse(os.path.join(folder, "junit.xml")).iter("testcase"):
        outcomes = [child.tag for child in case if child.tag in ("failure", "error", "skipped")]
        cases.append((case.get("classname"), case.get("name"), outcomes))
    return cases


def passed_runs(folder):
    """The entries of the quarantine with their counts; None without a quarantine."""
    path = os.path.join(folder, "quarantine.json")
    if not os.path.exists(path):
        return None
    with open(path, encoding="utf-8") as file:
        return json.load(file)["entries"]


def workers_of(mode):
    return int(mode[mode.index("-w") + 1]) if "-w" in mode else 1


def count_journals(out):
    return sum(name.startswith("journal") for name in os.listdir(out)) if os.path.isdir(out) else 0


def kill_at_random(process, longest, out):
    """Kills the process; returns False if it ended before that. About half of the processes are killed soon after they
    have begun a journal, because much of their time passes before and after the cases."""
    before = count_journals(out)
    if random.random() < 0.5:
        while process.poll() is None and count_journals(out) == before:
            time.sleep(0.0005)
        longest *= SHARE_OF_CASES
    try:
        process.wait(random.uniform(0, longest))
        return False
    except subprocess.TimeoutExpired:
        process.send_signal(signal.SIGKILL)
        process.wait()
        return True


def remaining_processes(runner):
    """The processes that are left after at most LIMIT seconds."""
    end = time.monotonic() + LIMIT
    while (running := runner.processes_of(runner.data)) and time.monotonic() < end:
        time.sleep(0.02)
    return running


def wait_for_processes(runner):
    if remaining_processes(runner):
        runner.end_unbegun(runner.data)
        # A killed process may take some time to end.
        if running := remaining_processes(runner):
            return [f"processes {running} are left"]
    return []


def has_run(out):
    """False if the run was killed before its first journal began: then there is nothing to resume."""
    return os.path.exists(os.path.join(out, "journal.ndjson"))


def has_open_cases(out):
    """True if the last journal has no record of the end of its host."""
    return has_run(out) and not any(record["t"] == "finish" for record in list(journals(out))[-1])


def kill_once(runner, out, mode, longest):
    """Returns how often the run was killed, how often while it had cases left to run, and what is wrong in the end."""
    shutil.rmtree(out, ignore_errors=True)
    kills = hits = 0
    found = []
    process = runner.start(runner.run_arguments(out, mode))
    while kills < KILLS_A_RUN and kill_at_random(process, longest, out):
        kills += 1
        hits += has_open_cases(out)
        found += wait_for_processes(runner)
        process = runner.start(["resume", out] if has_run(out) else runner.run_arguments(out, mode))
    if process.wait() not in (0, 1):
        found.append(f"status {process.returncode}")
    return kills, hits, found


def measure(runner, out, mode):
    shutil.rmtree(out, ignore_errors=True)
    begin = time.monotonic()
    status = runner.start(runner.run_arguments(out, mode)).wait()
    if status not in (0, 1):
        raise SystemExit(f"{' '.join(mode)}: the uninterrupted run ends with status {status}")
    duration = time.monotonic() - begin
    return duration, (verdicts(out), passed_runs(out)), finished_attempts(out)


def keep_reports(out, place):
    """Copies the reports of an uninterrupted run to a new folder, and returns it."""
    os.mkdir(place)
    for name in reports.NAMES:
        shutil.copy(os.path.join(out, name), place)
    return place


def differences(out, outcomes, expected):
    """A message for each kind of difference from an uninterrupted run, whose reports are in the folder `expected`."""
    found = reports.compare(out, expected)[0]
    if verdicts(out) != outcomes[0]:
        found.append("the verdicts differ from those of an uninterrupted run")
    if passed_runs(out) != outcomes[1]:
        found.append("the counts of the quarantine differ from those of an uninterrupted run")
    return found


def check(runner, folder, count):
    """Kills runs at least `count` times, spread over the modes. Returns the number of faults."""
    out = os.path.join(folder, "out")
    expected = []
    for number, mode in enumerate(MODES):
        longest, outcomes, attempts = measure(runner, out, mode)
        expected.append((longest, outcomes, attempts, keep_reports(out, os.path.join(folder, f"whole-{number}"))))
    killed = faulty = runs = 0
    hit = [0] * len(MODES)
    while killed < count:
        number = runs % len(MODES)
        mode = MODES[number]
        longest, outcomes, attempts, whole = expected[number]
        kills, hits, found = kill_once(runner, out, mode, longest)
        killed += kills
        hit[number] += hits
        runs += 1
        if os.path.exists(os.path.join(out, "junit.xml")):
            found += faults(out, workers_of(mode), attempts)
            found += differences(out, outcomes, whole)
        else:
            found.append("there is no junit.xml")
        faulty += bool(found)
        for text in found:
            print(f"{' '.join(mode)}: {text}", flush=True)
        if runs % 20 == 0 or killed >= count:
            print(f"{killed} kills in {runs} runs of {len(outcomes[0])} cases: {faulty} faulty runs", flush=True)
    for mode, hits in zip(MODES, hit):
        print(f"{' '.join(mode)}: {hits} kills between the first case and the last", flush=True)
    return faulty


def mount(place, options):
    return subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", place], check=False,
                          stderr=subprocess.DEVNULL).returncode == 0


def size_of(out):
    """Bytes of the files that are written before the reports."""
    return sum(os.path.getsize(os.path.join(out, name)) for name in os.listdir(out) if name.endswith(".ndjson"))


def fill_once(runner, out, mode, size, attempts, expected):
    """Returns whether the run stopped because its disk was full, and what is wrong in the end."""
    found = []
    if not mount(os.path.dirname(out), f"size={size}"):
        raise SystemExit("The disk could not be mounted")
    try:
        arguments = runner.run_arguments(out, mode)
        status = runner.start(arguments).wait()
        has_stopped = status == 2
        found += wait_for_processes(runner)
        mount(os.path.dirname(out), f"remount,size={LARGE_DISK}")
        if status not in (0, 1, 2):
            found.append(f"a full disk ends the run with status {status}")
        if has_stopped:
            status = runner.start(["resume", out] if has_run(out) else arguments).wait()
        if status not in (0, 1):
            found.append(f"status {status}")
        found += faults(out, workers_of(mode), attempts)
        return has_stopped, found + differences(out, *expected)
    finally:
        subprocess.run(["umount", os.path.dirname(out)], check=False)


def check_full_disks(runner, folder, count):
    """Fills the disks of `count` runs at random points; returns the number of faults, or None without the right to
    mount."""
    disk = os.path.join(folder, "disk")
    os.mkdir(disk)
    if not mount(disk, f"size={LARGE_DISK}"):
        return None
    subprocess.run(["umount", disk], check=False)
    out = os.path.join(disk, "out")
    expected = []
    for mode in MODES:
        _, outcomes, attempts = measure(runner, out, mode)
        whole = keep_reports(out, os.path.join(folder, f"enough-space-{len(expected)}"))
        expected.append((size_of(out), attempts, (outcomes, whole)))
        shutil.rmtree(out)
    stopped = faulty = 0
    for number in range(count):
        mode = MODES[number % len(MODES)]
        size, attempts, whole = expected[number % len(MODES)]
        has_stopped, found = fill_once(runner, out, mode, random.randrange(8192, size), attempts, whole)
        stopped += has_stopped
        faulty += bool(found)
        for text in found:
            print(f"full disk, {' '.join(mode)}: {text}", flush=True)
    print(f"{count} full disks, {stopped} of which stopped the run: {faulty} faulty runs", flush=True)
    return faulty + (stopped == 0)
