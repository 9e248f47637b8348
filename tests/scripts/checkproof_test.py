"""What scripts/check-proof prints for complete runs, incomplete runs, and runs whose files somebody changed.

Usage: checkproof_test.py [HOST]
HOST is LuTestSuiteRunner of this build; without it, only incomplete folders are tested.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-proof"
# The script runs with this Python, because Debian's packages are installed for it.
PYTHON = "/usr/bin/python3"
XXHASH = subprocess.run([PYTHON, "-c", "import xxhash"], capture_output=True, check=False)
HOST = sys.argv.pop(1) if len(sys.argv) > 1 else None
CASES = 6


class CheckProof(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name) / "run"

    def check(self, status):
        result = subprocess.run([SCRIPT, self.folder], capture_output=True, text=True, check=False)
        self.assertEqual("", result.stderr)
        self.assertEqual(status, result.returncode, result.stdout)
        return result.stdout

    def assert_fails(self, text):
        output = self.check(1)
        self.assertIn(text, output)
        self.assertEqual("the proof fails", output.splitlines()[-1])


@unittest.skipIf(XXHASH.returncode != 0, "python3-xxhash is missing; scripts/setup installs it")
class IncompleteRuns(CheckProof):
    def test_fails_without_a_proof(self):
        self.assert_fails(f"{self.folder}: proof.json is missing; submit and wait write it when a distributed run ends")

    def test_fails_without_a_summary(self):
        self.folder.mkdir()
        (self.folder / "proof.json").write_text("{}", encoding="utf-8")
        self.assert_fails(f"No such file or directory: '{self.folder / 'summary.json'}'")

    def test_fails_with_a_proof_without_a_plan(self):
        self.folder.mkdir()
        for name in ("proof.json", "summary.json"):
            (self.folder / name).write_text("{}", encoding="utf-8")
        self.assert_fails("KeyError('plan')")


def get_checksums(records):
    code = "import sys, xxhash\nfor line in sys.stdin.buffer:\n    print(xxhash.xxh3_64_hexdigest(line[:-1]))"
    return subprocess.run([PYTHON, "-c", code], input=b"".join(record + b"\n" for record in records),
                          capture_output=True, check=True).stdout.split()


def read_records(path):
    return [line[line.index(b'"r":') + 4:-2] for line in path.read_bytes().splitlines(keepends=True)]


def write_records(path, records):
    """Writes the records as the host does: with numbers and correct checksums."""
    path.write_bytes(b"".join(b'{"n":%d,"l":%d,"c":"%s","r":%s}\n' % (number, len(record), checksum, record)
                              for number, (record, checksum) in enumerate(zip(records, get_checksums(records)), 1)))


def find(records, kind):
    """The index of the first record of this type."""
    return next(index for index, record in enumerate(records) if record.startswith(b'{"t":"%s"' % kind.encode()))


@unittest.skipIf(XXHASH.returncode != 0, "python3-xxhash is missing; scripts/setup installs it")
@unittest.skipIf(HOST is None, "there is no host that runs here")
class CompleteRuns(CheckProof):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        data = pathlib.Path(temporary.name) / "data"
        (data / "CDurationModel").mkdir(parents=True)
        for number in range(CASES):
            (data / "CDurationModel" / f"{number}.ms").write_text("1", encoding="ascii")
        cls.model = pathlib.Path(temporary.name) / "run"
        subprocess.run([HOST, "submit", "--shards", "2", "--out", cls.model, "--", "-d", data, "--dll",
                        "durationmodels"], capture_output=True, check=True)

    def setUp(self):
        super().setUp()
        shutil.copytree(self.model, self.folder)
        self.journal = self.folder / "shard-1" / "journal.ndjson"

    def change(self, path, edit):
        """Lets `edit` change the list of a file's records. The new lines have correct numbers and checksums."""
        records = read_records(path)
        edit(records)
        write_records(path, records)

    def change_proof(self, edit):
        path = self.folder / "proof.json"
        proof = json.loads(path.read_text("utf-8"))
        edit(proof)
        path.write_text(json.dumps(proof), encoding="utf-8")

    def test_unchanged_run_is_proven(self):
        self.assertEqual(f"{CASES} cases in 2 shards, a verdict for each, 0 duplicates: proven\n", self.check(0))

    def test_rewritten_journal_equals_the_original(self):
        original = self.journal.read_bytes()
        self.change(self.journal, lambda records: None)
        self.assertEqual(original, self.journal.read_bytes())

    def test_accepts_records_after_the_reports(self):
        """A host that counts as lost may still write records after the reports are made."""
        self.change(self.journal, lambda records: records.extend(records[1:]))
        shutil.copy(self.journal, self.folder / "shard-1" / "journal-2.ndjson")
        self.check(0)

    def test_fails_with_a_missing_verdict(self):
        self.change(self.journal, lambda records: records.pop(find(records, "end")))
        self.assert_fails("journal.ndjson: has ")

    def test_fails_with_a_verdict_that_became_a_cancellation(self):
        def cancel(records):
            index = find(records, "end")
            records[index] = re.sub(rb'("attempt":\d+)', rb'\1,"end":"canceled"', records[index], count=1)
        self.change(self.journal, cancel)
        self.assert_fails("1 cases have no verdict")

    def test_fails_with_a_second_verdict_that_counts(self):
        self.change(self.journal, lambda records: records.append(records[find(records, "end")]))
        self.change_proof(lambda proof: proof["shards"][0]["journals"].append(proof["shards"][0]["journals"].pop() + 1))
        self.assert_fails("1 duplicates instead of 0")

    def test_fails_with_a_verdict_of_an_unknown_case(self):
        def rename(records):
            index = find(records, "end")
            records[index] = re.sub(rb'"case":\d+', b'"case":99', records[index], count=1)
        self.change(self.journal, rename)
        self.assert_fails("has a verdict of a case that it does not have")

    def test_fails_with_a_changed_plan(self):
        for name in ("plan.ndjson", "shard-2/plan.ndjson"):
            with self.subTest(name):
                path = self.folder / name
                original = path.read_bytes()
                self.change(path, lambda records: records.insert(1, b'{"t":"argument","text":"--retries=9"}'))
                self.assert_fails(f"{name}: was changed")
                path.write_bytes(original)

    def test_fails_with_the_cases_of_a_shard_in_two_shards(self):
        shutil.rmtree(self.folder / "shard-2")
        shutil.copytree(self.folder / "shard-1", self.folder / "shard-2")
        self.change_proof(lambda proof: proof["shards"].__setitem__(1, {**proof["shards"][0], "number": 2}))
        self.assert_fails("not each case belongs to exactly one shard")

    def test_fails_if_the_proof_lacks_a_shard(self):
        self.change_proof(lambda proof: proof["shards"].pop())
        self.assert_fails("proof.json lists other shards than the plan")

    def test_fails_with_a_wrong_number_of_verdicts_in_a_shard(self):
        self.change_proof(lambda proof: proof["shards"][0].update(verdicts=CASES))
        self.assert_fails("cases, unlike proof.json")

    def test_fails_if_only_the_summary_is_green(self):
        self.change_proof(lambda proof: proof.update(green=False))
        self.assert_fails("proof.json and summary.json differ in whether the run is green")

    def test_fails_with_a_journal_of_another_plan(self):
        shutil.copy(self.folder / "shard-2" / "journal.ndjson", self.journal)
        self.assert_fails("journal.ndjson: belongs to another plan")

    def test_fails_with_a_damaged_line(self):
        self.journal.write_bytes(self.journal.read_bytes().replace(b'"t":"end"', b'"t":"eng"', 1))
        self.assert_fails("is damaged")

    def test_fails_with_a_case_missing_in_a_report(self):
        for name, line in (("report.xml", rb"<testcase .*\n"), ("junit.xml", rb"\t\t<testcase .*\n")):
            with self.subTest(name):
                path = self.folder / name
                original = path.read_bytes()
                path.write_bytes(re.sub(line, b"", original, count=1))
                self.assertNotEqual(original, path.read_bytes())
                self.assert_fails("report.xml or junit.xml has another number of cases")
                path.write_bytes(original)

    def test_accepts_cases_that_a_report_leaves_out(self):
        path = self.folder / "junit.xml"
        note = "\t\t<system-out>1 Testfälle sind ausgelassen</system-out>\n".encode()
        path.write_bytes(re.sub(rb"\t\t<testcase .*\n", note, path.read_bytes(), count=1))
        self.check(0)

    def test_fails_with_a_wrong_number_of_cases_in_the_summary(self):
        path = self.folder / "summary.json"
        path.write_text(path.read_text("utf-8").replace('"missing": 0', '"missing": 1'), encoding="utf-8")
        self.assert_fails("the numbers of cases in the plan, proof.json and summary.json differ")


if __name__ == "__main__":
    unittest.main()
