"""Distributed runs, on a Slurm of this machine, that lose nodes, tasks and their submitter. Each time, the result must
be complete, and nothing may count twice."""
import collections
import itertools
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
# With these limits, in seconds, Slurm notices after about 16 seconds that a node's daemon has ended.
NODE_TIMEOUT = 5
MESSAGE_TIMEOUT = 5
# For rounds that lose a node or start a shard twice: the shards take about 30 seconds. A second host of a shard (a
# further host) may cause MOST_DUPLICATES duplicates, that is, cases that run twice: each of the two hosts repeats the
# case that the other one is running, and before the first host has noticed the second, it may repeat one more case.
# Most further hosts cause fewer, so the limit of the average over all rounds is MEAN_DUPLICATES.
LASTING_MEAN_MS = 1000
MOST_DUPLICATES = 3
MEAN_DUPLICATES = 1
# Together the nodes have at least six processors, so two are free for the tasks of a lost node.
SHARDS = 4
# A node's daemon starts again this many seconds after Slurm has noticed the loss of the node.
DOWN = 8.0
LIMIT = 400.0
NODE_LIMIT = 60.0
BALANCE_CASES = 2000
BALANCE_MEAN_MS = 60
BALANCE_SHARDS = 12
BALANCE_SEEDS = (1, 2, 3)
# A host reads the shard's journals, and begins its own journal at most this many seconds later. Journals store the time
# of their begin in whole seconds.
STARTING = 6.0
# The number of attempts at a round if its events find no task or have no effect.
ATTEMPTS = 5
# Limits of the slowest shard's time divided by the mean time, without and with known times of the cases.
BALANCE_UNKNOWN = 1.15
BALANCE_KNOWN = 1.05
EQUAL_CASES = 100_000
EQUAL_SHARDS = 12


class Round:
    """One run with its disturbances."""

    def __init__(self, host, cluster, data, out, lasts):
        self.host, self.cluster, self.data, self.out, self.lasts = host, cluster, data, out, lasts
        self.process = None
        self.extra = []
        # The nodes that were killed, each with the time when Slurm noticed; None before that.
        self.killed = {}
        self.proof = None
        # What was done, and a function that tells whether it had an effect.
        self.effects = []
        self.lost = 0
        self.repeated = 0

    def start(self, words):
        self.process = subprocess.Popen([*self.host, *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                        text=True, env=self.cluster.get_environment())

    def submit(self):
        self.start(["submit", "--engine", "slurm", "--shards", str(SHARDS), "--out", self.out, "--",
                    "-d", self.data, "--dll", "durationmodels"])

    def tasks(self, state="RUNNING"):
        """The jobs in this state: for each the id that scontrol takes, the shard, and the node."""
        output = self.cluster.call(["squeue", "--array", "--noheader", f"--states={state}", "--format=%F_%K|%K|%N"])
        return [line.split("|") for line in (output or "").split()]

    def a_task(self):
        """A task whose host has begun, and whose node is alive."""
        tasks = [task for task in self.tasks() if task[2] not in self.killed and count_journals(self.folder(task[1]))]
        return random.choice(tasks) if tasks else None

    def folder(self, shard):
        return f"{self.out}/shard-{shard}"

    def note(self, text, shards):
        """Notes an event. It has an effect if one of the shards gets another host and that host finishes a case."""
        counts = {shard: count_journals(self.folder(shard)) for shard in shards}
        self.effects.append((text, lambda: any(self.has_verdicts_behind(*one) for one in counts.items())))

    def has_verdicts_behind(self, shard, count):
        names = sorted_journals(self.folder(shard))[count:]
        return any(read_journal(os.path.join(self.folder(shard), name))[1] for name in names)

    # The possible disturbances. Each function notes what it did, unless it found no task.

    def kill_node(self):
        """Kills only the daemon: the hosts of its tasks continue, while Slurm starts the tasks on another node."""
        self.take_node("slurmd of {} killed", self.cluster.signal)

    def lose_machine(self):
        """Kills all processes of the node."""
        def kill(name, number):
            self.cluster.signal(name, number)
            self.cluster.kill_tasks(name)

        self.take_node("{} lost with its tasks", kill)

    def take_node(self, text, kill):
        task = self.a_task()
        if task is not None:
            self.note(text.format(task[2]), [shard for _, shard, node in self.tasks() if node == task[2]])
            self.killed[task[2]] = None
            kill(task[2], signal.SIGKILL)

    def requeue(self):
        task = self.a_task()
        if task is not None and self.cluster.call(["scontrol", "requeue", task[0]]) is not None:
            self.note(f"task of shard {task[1]} requeued", [task[1]])

    def cancel(self):
        task = self.a_task()
        if task is not None and self.cluster.call(["scancel", task[0]]) is not None:
            self.note(f"task of shard {task[1]} cancelled", [task[1]])

    def start_twice(self):
        task = self.a_task()
        if task is not None:
            self.note(f"shard {task[1]} started twice", [task[1]])
            self.extra.append(subprocess.Popen(
                [*self.host, "run", "--planned", "--shard", f"{task[1]}/{SHARDS}", "--out", self.folder(task[1])],
                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))

    def kill_submitter(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()
            self.start(["wait", self.out])
            self.effects.append(("submitter killed", lambda: True))

    EVENTS = [kill_node, lose_machine, requeue, cancel, start_twice, kill_submitter]
    # After these events, a shard's next host begins only after the previous one has ended by itself.
    GENTLE = [requeue, cancel, kill_submitter]
    # These need longer cases. Slurm notices the first two late. After the first and the last, two hosts run one shard.
    LASTING = [kill_node, lose_machine, start_twice]

    @classmethod
    def choose(cls, number):
        return [cls.EVENTS[number % len(cls.EVENTS)], random.choice(cls.EVENTS)]

    def run(self, events):
        """Returns the events that happened, or an empty list if one found no task or had no effect; and the faults."""
        shutil.rmtree(self.out, ignore_errors=True)
        self.submit()
        while self.process.poll() is None and not self.a_task():
            time.sleep(0.05)
        for event in events:
            time.sleep(random.uniform(0, 1.5))
            event(self)
        output = self.wait()
        for process in self.extra:
            process.wait()
        faults = self.faults(output, all(event in self.GENTLE for event in events))
        happened = [text for text, had_effect in self.effects if had_effect()]
        return (happened if len(happened) == len(events) else []), faults

    def count_hosts(self):
        return sum(count_journals(self.folder(shard)) for shard in range(1, SHARDS + 1))

    def count_duplicates(self, shard):
        """The number of repeated verdicts: a case with verdicts in three journals counts twice. Counts only the records
        on which the reports are based."""
        counts = self.proof["shards"][int(shard) - 1]["journals"] if self.proof else []
        verdicts = [case for name, count in zip(sorted_journals(self.folder(shard)), counts)
                    for case in read_journal(os.path.join(self.folder(shard), name), count)[1]]
        return len(verdicts) - len(set(verdicts))

    def wait(self):
        """Waits for the end of the run. Some time after Slurm has noticed that a node's daemon is gone, starts the
        daemon again, which then ends the hosts that still run on its node. Starts requeued tasks at once; Slurm would
        delay them by two minutes."""
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            try:
                return self.process.communicate(timeout=1.0)[0]
            except subprocess.TimeoutExpired:
                if self.killed:
                    self.start_lost_nodes()
                for task, _, _ in self.tasks("PENDING"):
                    self.cluster.call(["scontrol", "update", f"jobid={task}", "StartTime=now"])
        self.process.kill()
        return self.process.communicate()[0] + f"not ended after {LIMIT:.0f} s"

    def start_lost_nodes(self):
        states = self.cluster.get_node_states()
        for name, noticed in list(self.killed.items()):
            if noticed is not None and time.monotonic() > noticed + DOWN:
                self.cluster.start_node(name)
                del self.killed[name]
            elif noticed is None and states.get(name, "").startswith("down"):
                self.killed[name] = time.monotonic()

    def faults(self, output, gentle):
        found = []
        if self.process.returncode != 0:
            found.append(f"status {self.process.returncode}: {output[-500:]}")
        proof = subprocess.run([os.path.join(os.path.dirname(__file__), "..", "check-proof"), self.out],
                               capture_output=True, text=True, check=False)
        if proof.returncode != 0:
            found.append(proof.stdout + proof.stderr)
        return found + self.wrong_duplicates() + self.losses() + self.repetitions(gentle)

    def wrong_duplicates(self):
        """Reads proof.json, and compares its number of duplicates with the journals. Checks the duplicates of each
        shard against the limit, and the cases of the summary against the data."""
        try:
            with open(os.path.join(self.out, "proof.json"), encoding="utf-8") as file:
                self.proof = json.load(file)
            with open(os.path.join(self.out, "summary.json"), encoding="utf-8") as file:
                counts = json.load(file)["counts"]
        except OSError as error:
            return [str(error)]
        found = []
        if (counts["planned"], counts["passed"]) != (CASES, CASES):
            found.append(f"{counts['passed']} of {counts['planned']} cases passed instead of {CASES}")
        numbers = {shard: self.count_duplicates(shard) for shard in range(1, SHARDS + 1)}
        for shard, number in numbers.items() if self.lasts else ():
            limit = MOST_DUPLICATES * (count_journals(self.folder(shard)) - 1)
            if number > limit:
                found.append(f"shard {shard}: {number} cases ran twice, allowed: {limit}")
        duplicates = sum(numbers.values())
        if duplicates != self.proof["duplicates"]:
            found.append(f"{duplicates} cases ran twice, but proof.json has {self.proof['duplicates']} duplicates")
        return found

    def repetitions(self, gentle):
        """Counts the cases that a host started although an earlier journal had their verdict. If two hosts may run the
        same shard at the same time, counts only verdicts clearly older than the second host's start."""
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
        """Counts the cases that hosts started but did not finish. A host has one worker, so it may leave one open."""
        found = []
        for shard in range(1, SHARDS + 1):
            folder = f"{self.out}/shard-{shard}"
            hosts = [read_journal(os.path.join(folder, name)) for name in sorted_journals(folder)]
            for number, (started, ended) in enumerate(hosts, 1):
                self.lost += len(started - ended)
                if len(started - ended) > 1:
                    found.append(f"{folder}: host {number} left {len(started - ended)} cases open")
        return found


def count_journals(folder):
    return len(sorted_journals(folder)) if os.path.isdir(folder) else 0


def sorted_journals(folder):
    names = [name for name in os.listdir(folder) if re.fullmatch(r"journal(-\d+)?\.ndjson", name)]
    return sorted(names, key=lambda name: int((re.findall(r"\d+", name) or ["1"])[0]))


def read_journal(path, count=None):
    """The cases that a host has started, and those that have a verdict, in the first `count` records or in all."""
    started, ended = set(), set()
    with open(path, "rb") as file:
        for line in itertools.islice(file, count):
            # A record without a line end is incomplete, so it does not count.
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
    """Makes files with exponentially distributed times. With enough digits, all files have the same size. Otherwise,
    the size of a file tells the plan the number of digits of the time."""
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
    """Runs cases of exponentially distributed length three times for each seed: with files of equal sizes, with files
    whose sizes show the number of digits of the length, and with the times of the first run. Returns how many limits
    are exceeded. In the first of these runs the balance is a matter of chance, so its limit applies to the mean of all
    seeds."""
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
    """Makes a round; repeats it if its events had no effect and it showed no fault. `data` has two folders, for runs
    with short and with lasting cases."""
    for _ in range(ATTEMPTS):
        start_nodes(cluster)
        events = Round.choose(number)
        lasts = any(event in Round.LASTING for event in events)
        run = Round(host, cluster, data[lasts], out, lasts)
        happened, found = run.run(events)
        if happened or found:
            return run, happened, found
    return run, happened, [f"the events had no effect in {ATTEMPTS} attempts"]


def start_nodes(cluster):
    """Starts the daemons of all nodes, and waits until Slurm knows that they are back."""
    for name in cluster.nodes():
        cluster.start_node(name)
    end = time.monotonic() + NODE_LIMIT
    while any(state.startswith("down") for state in cluster.get_node_states().values()) and time.monotonic() < end:
        time.sleep(0.2)


def check_duplicates(duplicates, further_hosts):
    """Returns 1 if all rounds together have too many duplicates, else 0."""
    limit = MEAN_DUPLICATES * further_hosts
    if duplicates <= limit:
        return 0
    print(f"{duplicates} results came twice over all rounds, allowed with {further_hosts} further hosts: {limit}",
          flush=True)
    return 1


def check(host, cluster, folder, rounds):
    """Returns the total number of rounds with faults, reports that differ, and exceeded limits."""
    data = [os.path.join(folder, name) for name in ("data", "lasting")]
    for name, mean in zip(data, (MEAN_MS, LASTING_MEAN_MS)):
        make_data(name, CASES, mean)
    uneven = measure_balance(host, cluster, folder)
    differences = compare_reports(host, cluster, folder)
    totals = collections.Counter()
    for number in range(rounds):
        run, happened, found = make_round(host, cluster, data, os.path.join(folder, "out"), number)
        totals += collections.Counter(faulty=bool(found), lost=run.lost, repeated=run.repeated, hosts=run.count_hosts())
        if run.proof:
            totals["duplicates"] += run.proof["duplicates"]
            totals["submissions"] += sum(shard["submissions"] - 1 for shard in run.proof["shards"])
        for text in found:
            print(f"round {number + 1} ({', '.join(happened)}): {text}", flush=True)
        if (number + 1) % 5 == 0 or number + 1 == rounds:
            print(f"{number + 1} rounds of {CASES} cases in {SHARDS} shards: {totals['faulty']} faulty, "
                  f"{totals['duplicates']} results came twice and did not count, {totals['submissions']} shards "
                  f"submitted again, {totals['hosts'] - SHARDS * (number + 1)} further hosts, {totals['lost']} cases "
                  f"left open by hosts, {totals['repeated']} cases ran again after their verdict", flush=True)
    excess = check_duplicates(totals["duplicates"], totals["hosts"] - SHARDS * rounds)
    return totals["faulty"] + differences + uneven + excess
