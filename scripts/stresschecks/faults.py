"""Cases that crash, hang or end their process in different ways. Each time, only the case at fault must be blamed, with
the right reason and a stack that names the function at fault."""
import collections
import json
import os
import subprocess

CLASS = "CFaultModel"
MODULE = "faultmodels"
MODES = [["-x"], ["-s"], ["-w", "4", "-x"], ["-w", "4", "-s"]]
TIME_LIMIT = 1
# Seconds beyond the time limit, for reading the stacks and ending the process. Wine takes longer for both.
VERDICT_LIMIT = 2.0
WINE_VERDICT_LIMIT = 4.0
HUNG = "time-out"
PASSED = "ok"
# A text that the reason of each case contains. Healthy cases have no reason.
LINUX = {
    "WriteToNull": "SIGSEGV", "OverflowStack": "Stapelüberlauf", "CallAbort": "SIGABRT", "ThrowInThread": "SIGABRT",
    "FreeTwice": "SIGABRT", "LockTwice": HUNG, "LoopForever": HUNG, "LeaveAtOnce": "Status 0",
    "UseAllMemory": "Speichermangel", "CallPureVirtual": "SIGABRT", "BreakAssertion": "SIGABRT",
    "WriteBehindPage": "SIGSEGV",
}
# Wine's run-time does not notice that a block is freed twice. In a DLL of MinGW the entry of a pure virtual function is
# a null pointer.
WINDOWS = {
    "WriteToNull": "0xC0000005", "OverflowStack": "0xC00000FD", "CallAbort": "Status 3", "ThrowInThread": "Status 3",
    "FreeTwice": PASSED, "LockTwice": HUNG, "LoopForever": HUNG, "LeaveAtOnce": "Status 0",
    "UseAllMemory": "Speichermangel", "CallPureVirtual": "0xC0000005", "BreakAssertion": "Status 3",
    "WriteBehindPage": "0xC0000005",
}
# A text that the process itself printed. It tells apart faults with the same reason.
LINUX_TEXTS = {
    "ThrowInThread": "terminate called", "FreeTwice": "double free", "UseAllMemory": "bad_alloc",
    "CallPureVirtual": "pure virtual", "BreakAssertion": "s_zero == 1",
}
WINDOWS_TEXTS = {"ThrowInThread": "terminate called", "UseAllMemory": "bad_alloc", "BreakAssertion": "s_zero == 1"}
HEALTHY = {"gesund davor", "gesund danach"}
# A process that exits has no stack.
WITHOUT_STACK = {"LeaveAtOnce"}
DESCRIPTION = f"""<ExtraInfo>
    <TestCase name="LockTwice"><TimeOutSec>{TIME_LIMIT}</TimeOutSec></TestCase>
    <TestCase name="LoopForever"><TimeOutSec>{TIME_LIMIT}</TimeOutSec></TestCase>
</ExtraInfo>
"""


def records(path):
    with open(path, "rb") as file:
        return [json.loads(line)["r"] for line in file]


def make_data(folder):
    cases = os.path.join(folder, "faults", CLASS)
    os.makedirs(cases)
    with open(os.path.join(cases, "#ExtraInfo.xml"), "w", encoding="utf-8") as file:
        file.write(DESCRIPTION)
    return os.path.dirname(cases)


def text_of(out, value):
    """A text of a record; a long one is in a file beside the journal."""
    if isinstance(value, str):
        return value
    with open(os.path.join(out, *value["file"].split("/")), "rb") as file:
        file.seek(value["at"])
        return file.read(value["size"]).decode("utf-8")


def names_of(out):
    """The names of the planned cases, in the order of their numbers."""
    return [case["name"] for record in records(os.path.join(out, "plan.ndjson")) if record["t"] == "cases"
            for case in record["list"]]


class Count:
    """Counts how the cases of one kind ended."""

    def __init__(self):
        self.runs = self.right = self.read = self.placed = self.named = 0
        self.longest = 0.0
        self.wrong = collections.Counter()

    def add(self, name, end, expected, text, out):
        reason, messages, stacks = (text_of(out, end.get(key, "")) for key in ("reason", "messages", "stacks"))
        self.runs += 1
        self.longest = max(self.longest, end["ns"] / 1e9)
        if expected in (PASSED, HUNG):
            is_right = end["result"] == expected
        else:
            is_right = end["result"] == "unknown" and expected in reason + messages and text in messages
        self.right += is_right
        self.read += bool(stacks)
        # The thread at fault comes first.
        first = stacks.split("\nStapel von Thread")[0]
        self.placed += f"{MODULE}." in first
        self.named += f"Faults::{name}" in first
        if not is_right:
            self.wrong[reason or end["result"]] += 1


def run_once(words, data, out, mode):
    command = [*words, "run", "--force", "--out", out, "--", "-d", data, "--dll", MODULE, *mode]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    return result.returncode


def describe(name, count, has_stacks):
    text = f"{name}: {count.right} of {count.runs} with the right reason"
    if has_stacks:
        text += (f", {count.read} with a stack, {count.placed} with the module and {count.named} with the function at "
                 "fault")
    text += f", verdict after at most {count.longest:.1f} s"
    return text + "".join(f"; wrong {number} times: {reason}" for reason, number in count.wrong.most_common(3))


def count_faults(name, count, has_stacks, is_windows):
    """Counts each wrong reason, and adds one if fewer than 95 of 100 stacks name the function at fault, and one if a
    verdict came too late. Not all stacks need the name, because under Wine, on a busy machine, reading the first frames
    may leave no time for it."""
    limit = WINE_VERDICT_LIMIT if is_windows else VERDICT_LIMIT
    limit += TIME_LIMIT if name in ("LockTwice", "LoopForever") else 0
    return (count.runs - count.right + (has_stacks and count.named < 0.95 * count.runs)
            + (name not in HEALTHY and count.longest > limit))


def check(words, is_windows, folder, rounds):
    """Each round runs all faults in each mode."""
    expected = WINDOWS if is_windows else LINUX
    texts = WINDOWS_TEXTS if is_windows else LINUX_TEXTS
    data = make_data(folder)
    out = os.path.join(folder, "out")
    place = "Z:" if is_windows else ""
    counts = collections.defaultdict(Count)
    strange = 0
    for mode in rounds * MODES:
        status = run_once(words, place + data, place + out, mode)
        names = names_of(out)
        ends = [record for record in records(os.path.join(out, "journal.ndjson")) if record["t"] == "end"]
        if status != 1 or len(ends) != len(names) or set(names) != HEALTHY | set(expected):
            strange += 1
            print(f"{' '.join(mode)}: status {status}, {len(ends)} of {len(names)} cases ended", flush=True)
        for end in ends:
            name = names[end["case"]]
            counts[name].add(name, end, expected.get(name, PASSED), texts.get(name, ""), out)
    faults = strange
    for name, count in counts.items():
        has_stacks = expected.get(name, PASSED) != PASSED and name not in WITHOUT_STACK
        faults += count_faults(name, count, has_stacks, is_windows)
        print(describe(name, count, has_stacks), flush=True)
    print(f"{rounds} rounds of {len(expected)} kinds of faults in {len(MODES)} modes: {faults} wrong")
    return faults
