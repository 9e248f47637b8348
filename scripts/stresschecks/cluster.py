"""Distributed runs over a Slurm of this machine that lose nodes, tasks and their submitter: the result is complete
each time, and nothing counts twice."""
import json
import os
import random
import re
import shutil
import signal
import subprocess
import time

from stresschecks import reports

CASES = 120
MEAN_MS = 120
SHARDS = 6
LIMIT = 240.0
# Longer than it takes Slurm to notice that a node is gone.
DOWN = 13.0
BALANCE_CASES = 2000
BALANCE_MEAN_MS = 60
BALANCE_SHARDS = 12
BALANCE_SEEDS = (1, 2, 3)
# A host reads the journals of its shard at most so many seconds before its own begins, which is a whole second.
STARTING = 6.0
# How often a round is repeated whose events found no task.
ATTEMPTS = 5
# Limits of the time of the slowest shard, divided by the mean time.
BALANCE_UNKNOWN = 1.15
BALANCE_KNOWN = 1.05
EQUAL_CASES = 100_000
EQUAL_SHARDS = 12


class Round:
    """One run with its disturbances."""

    def __init__(self, host, cluster, data, out):
        self.host, self.cluster, self.data, self.out = host, cluster, data, out
        self.process = None
        self.extra = []
        self.restarts = []
        self.lost = 0
        self.repeated = 0

    def start(self, words):
        self.process = subprocess.Popen([*self.host, *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                        text=True, env=self.cluster.get_environment())

    def submit(self):
        self.start(["submit", "--engine", "slurm", "--shards", str(SHARDS), "--out", self.out, "--",
                    "-d", self.data, "--dll", "durationmodels"])

    def tasks(self, state="RUNNING"):
        """The current jobs: for each the id that scontrol takes, the shard, and the node."""
        output = self.cluster.call(["squeue", "--array", "--noheader", f"--states={state}", "--format=%F_%K|%K|%N"])
        return [line.split("|") for line in (output or "").split()]

    def a_task(self):
        tasks = self.tasks()
        return random.choice(tasks) if tasks else None

    # The possible disturbances. Each function returns a text that says what it did.

    def kill_node(self):
        """Kills only the daemon: its tasks' hosts continue, while Slurm starts the tasks again on another node."""
        name = random.choice(self.cluster.nodes())
        self.cluster.signal(name, signal.SIGKILL)
        self.restarts.append((time.monotonic() + DOWN, name))
        return f"slurmd of {name} killed"

    def lose_machine(self):
        task = self.a_task()
        if task is None:
            return None
        self.cluster.signal(task[2], signal.SIGKILL)
        self.cluster.kill_tasks(task[2])
        self.restarts.append((time.monotonic() + DOWN, task[2]))
        return f"{task[2]} lost with its tasks"

    def requeue(self):
        task = self.a_task()
        if task is None or self.cluster.call(["scontrol", "requeue", task[0]]) is None:
            return None
        return f"task of shard {task[1]} requeued"

    def cancel(self):
        task = self.a_task()
        if task is None or self.cluster.call(["scancel", task[0]]) is None:
            return None
        return f"task of shard {task[1]} cancelled"

    def start_twice(self):
        shard = random.randint(1, SHARDS)
        self.extra.append(subprocess.Popen(
            [*self.host, "run", "--planned", "--shard", f"{shard}/{SHARDS}", "--out", f"{self.out}/shard-{shard}"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        return f"shard {shard} started twice"

    def kill_submitter(self):
        self.process.kill()
        self.process.communicate()
        self.start(["wait", self.out])
        return "submitter killed"

    EVENTS = [kill_node, lose_machine, requeue, cancel, start_twice, kill_submitter]
    # After these events, a shard's next host begins when the last one has ended by itself.
    GENTLE = [requeue, cancel, kill_submitter]

    def run(self, number):
        """Returns what happened, and what is wrong. Nothing happened if an event found no task."""
        shutil.rmtree(self.out, ignore_errors=True)
        self.submit()
        while self.process.poll() is None and not self.tasks():
            time.sleep(0.05)
        events = [self.EVENTS[number % len(self.EVENTS)], random.choice(self.EVENTS)]
        happened = []
        for event in events:
            time.sleep(random.uniform(0, 1.5))
            happened.append(event(self))
        output = self.wait()
        for process in self.extra:
            process.wait()
        faults = self.faults(output, all(event in self.GENTLE for event in events))
        return (happened if all(happened) else []), faults

    def wait(self):
        """Waits for the end of the run. Starts requeued tasks at once, which Slurm would delay by two minutes."""
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            try:
                return self.process.communicate(timeout=1.0)[0]
            except subprocess.TimeoutExpired:
                for moment, name in self.restarts:
                    if time.monotonic() > moment:
                        self.cluster.start_node(name)
                for task, _, _ in self.tasks("PENDING"):
                    self.cluster.call(["scontrol", "update", f"jobid={task}", "StartTime=now"])
        self.process.kill()
        return self.process.communicate()[0] + f"not ended after {LIMIT:.0f} s"

    def faults(self, output, gentle):
        found = []
        if self.process.returncode != 0:
            found.append(f"status {self.process.returncode}: {output[-500:]}")
        proof = subprocess.run([os.path.join(os.path.dirname(__file__), "..", "check-proof"), self.out],
                               capture_output=True, text=True, check=False)
        if proof.returncode != 0:
            found.append(proof.stdout + proof.stderr)
        return found + self.losses() + self.repetitions(gentle)

    def repetitions(self, gentle):
        """Counts the cases that a host started although an earlier journal had their verdict. If two hosts may run the
        same shard at the same time, only verdicts count that are clearly older than the second host."""
        found = []
        limit, margin = (0, None) if gentle else (1, STARTING)
        for shard in range(1, SHARDS + 1):
            folder = f"{self.out}/shard-{shard}"
            judged = {}
            for name in sorted_journals(folder):
                begin, started, ended = read_times(os.path.join(folder, name))
                again = sum(1 for case in started if case in judged
                            and (margin is None or judged[case] + margin < begin))
                self.repeated += again
                if again > limit:
                    found.append(f"{folder}/{name}: {again} cases ran again after their verdict, allowed: {limit}")
                judged = {**ended, **judged}
        return found

    def losses(self):
        """Counts the cases that hosts left open, so that other hosts had to repeat them. Each host has one worker."""
        found = []
        for shard in range(1, SHARDS + 1):
            folder = f"{self.out}/shard-{shard}"
            hosts = [read_journal(os.path.join(folder, name)) for name in sorted_journals(folder)]
            for number, (started, ended) in enumerate(hosts, 1):
                self.lost += len(started - ended)
                if len(started - ended) > 1:
                    found.append(f"{folder}: host {number} left {len(started - ended)} cases open")
        return found


def sorted_journals(folder):
    names = [name for name in os.listdir(folder) if re.fullmatch(r"journal(-\d+)?\.ndjson", name)]
    return sorted(names, key=lambda name: int((re.findall(r"\d+", name) or ["1"])[0]))


def read_journal(path):
    started, ended = set(), set()
    with open(path, "rb") as file:
        for line in file:
            # A record whose line end is missing does not count either.
            if not line.endswith(b"\n"):
                break
            try:
                record = json.loads(line)["r"]
            except ValueError:
                break
            if record["t"] == "start":
                started.add(record["case"])
            elif record["t"] == "end" and record.get("end") != "canceled":
                ended.add(record["case"])
    return started, ended


def read_times(path):
    """When the host began, the cases that it started, and when each case got its verdict, in seconds."""
    begin, started, ended = 0.0, set(), {}
    with open(path, "rb") as file:
        for line in file:
            try:
                record = json.loads(line)["r"]
            except ValueError:
                break
            if record["t"] == "begin":
                begin = time.mktime(time.strptime(record["time"], "%Y-%m-%d %H:%M:%S"))
            elif record["t"] == "start":
                started.add(record["case"])
            elif record["t"] == "end" and record.get("end") != "canceled":
                ended.setdefault(record["case"], begin + record["at"] * 1e-9)
    return begin, started, ended


def make_data(folder, cases, mean, digits=0, seed=1):
    """Files of exponentially distributed lengths. With enough digits all have the same size; without, the size shows
    the power of ten, and the plan uses it."""
    os.makedirs(os.path.join(folder, "CDurationModel"))
    randomness = random.Random(seed)
    for number in range(cases):
        with open(os.path.join(folder, "CDurationModel", f"{number}.ms"), "w", encoding="ascii") as file:
            file.write(str(int(randomness.expovariate(1 / mean) if mean else 0)).zfill(digits))


def longest_over_mean(out, shards):
    """The longest working time of the shards' hosts, divided by the mean."""
    times = []
    for shard in range(1, shards + 1):
        with open(f"{out}/shard-{shard}/journal.ndjson", "rb") as file:
            times.append(json.loads(file.readlines()[-1])["r"]["at"])
    return max(times) * len(times) / sum(times)


def measure_balance(host, cluster, folder):
    """Runs cases of exponentially distributed length: without earlier times, for files of equal sizes and for files
    whose sizes show the power of ten of the length; then with the times of the first run. Makes a sample for each seed.
    Returns how many limits are exceeded: without any knowledge by the mean of the samples, because the balance is then
    a matter of chance, otherwise by each sample."""
    samples = []
    for seed in BALANCE_SEEDS:
        equal, telling, *outs = (os.path.join(folder, f"{name}-{seed}")
                                 for name in ("equal", "telling", "first", "second", "third"))
        make_data(equal, BALANCE_CASES, BALANCE_MEAN_MS, digits=6, seed=seed)
        make_data(telling, BALANCE_CASES, BALANCE_MEAN_MS, seed=seed)
        for out, data, options in zip(outs, (equal, telling, equal), ([], [], ["--previous", outs[0]])):
            submit(host, cluster, data, out, BALANCE_SHARDS, options)
        first, second, third = (longest_over_mean(out, BALANCE_SHARDS) for out in outs)
        samples.append((first, second, third))
        print(f"{BALANCE_CASES} cases of exponential length, seed {seed}, in {BALANCE_SHARDS} shards, slowest over "
              f"mean: {first:.3f} without history, {second:.3f} with data files whose sizes show the lengths, "
              f"{third:.3f} with history (limits: {BALANCE_UNKNOWN} on average, {BALANCE_UNKNOWN}, {BALANCE_KNOWN})",
              flush=True)
    unknown, telling, known = zip(*samples)
    return (sum(unknown) / len(unknown) > BALANCE_UNKNOWN) + sum(one > BALANCE_UNKNOWN for one in telling) + sum(
        one > BALANCE_KNOWN for one in known)


def submit(host, cluster, data, out, shards, options=()):
    subprocess.run([*host, "submit", "--engine", "slurm", "--shards", str(shards), "--out", out, *options, "--", "-d",
                    data, "--dll", "durationmodels"], check=True, capture_output=True, env=cluster.get_environment())


def compare_reports(host, cluster, folder):
    """Compares the reports of a distributed run with those of a run in one process. Returns the number of faults."""
    data, many, one = (os.path.join(folder, name) for name in ("many", "distributed", "one"))
    make_data(data, EQUAL_CASES, 0)
    begin = time.monotonic()
    submit(host, cluster, data, many, EQUAL_SHARDS)
    middle = time.monotonic()
    subprocess.run([*host, "run", "--out", one, "--", "-d", data, "--dll", "durationmodels"], check=True,
                   capture_output=True)
    found, lines = reports.compare(many, one)
    print(f"{EQUAL_CASES} cases in {EQUAL_SHARDS} shards ({middle - begin:.0f} s) and in one process "
          f"({time.monotonic() - middle:.0f} s): {lines} lines of reports, "
          f"{'; '.join(found) or 'equal but for times'}", flush=True)
    return len(found)


def make_round(host, cluster, data, out, number):
    """Repeats a round without its events, unless it has shown a fault."""
    for _ in range(ATTEMPTS):
        for name in cluster.nodes():
            cluster.start_node(name)
        run = Round(host, cluster, data, out)
        happened, found = run.run(number)
        if happened or found:
            return run, happened, found
    return run, happened, [f"the events found no task in {ATTEMPTS} attempts"]


def check(host, cluster, folder, rounds):
    """Returns the number of rounds with faults, of reports that differ, and of exceeded limits."""
    data = os.path.join(folder, "data")
    make_data(data, CASES, MEAN_MS)
    uneven = measure_balance(host, cluster, folder)
    differences = compare_reports(host, cluster, folder)
    faulty, duplicates, submissions, lost, repeated = 0, 0, 0, 0, 0
    for number in range(rounds):
        run, happened, found = make_round(host, cluster, data, os.path.join(folder, "out"), number)
        faulty += bool(found)
        lost += run.lost
        repeated += run.repeated
        try:
            with open(os.path.join(run.out, "proof.json"), encoding="utf-8") as file:
                proof = json.load(file)
            duplicates += proof["duplicates"]
            submissions += sum(shard["submissions"] for shard in proof["shards"])
        except OSError as error:
            found.append(str(error))
        for text in found:
            print(f"round {number + 1} ({', '.join(happened)}): {text}", flush=True)
        if (number + 1) % 5 == 0 or number + 1 == rounds:
            again = submissions - SHARDS * (number + 1)
            print(f"{number + 1} rounds of {CASES} cases in {SHARDS} shards: {faulty} faulty, {duplicates} results "
                  f"came twice and did not count, {again} shards handed over again, {lost} cases left open by hosts, "
                  f"{repeated} cases ran again after their verdict",
                  flush=True)
    return faulty + differences + uneven
