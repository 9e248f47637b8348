#!/usr/bin/env python3
"""Tests that pages are well-formed and valid by their document type. validity_test.py PAGES XMLLINT CATALOG"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

pages, xmllint, catalog = pathlib.Path(), "", ""

# The overview must have this markup, although it is invalid: an anchor beside its heading, and the same identifier for
# all tables.
KNOWN_IN_OVERVIEWS = re.compile(r"Element body content does not follow the DTD|ID overview already defined")


class Validity(unittest.TestCase):
    def complaints(self, page, *options):
        # The encoding is given in a meta element, which XML parsers ignore.
        text = (pages / page).read_bytes().decode("iso-8859-1")
        with tempfile.NamedTemporaryFile(suffix=".xhtml") as file:
            file.write(text.encode())
            file.flush()
            command = [xmllint, "--noout", "--nonet", "--loaddtd", *options, file.name]
            result = subprocess.run(command, capture_output=True, text=True, check=False,
                                    env={"XML_CATALOG_FILES": catalog})
        return [line for line in result.stderr.splitlines() if "error" in line or "warning" in line]

    def test_runs_and_comparisons_are_valid(self):
        for page in ("run.html", "passed.html", "diff.html", "diff_large.html", "large.html",
                     "hostile.html"):
            self.assertEqual([], self.complaints(page, "--valid"), page)

    def test_overviews_are_well_formed(self):
        complaints = self.complaints("overview.html")
        self.assertEqual([], [line for line in complaints if "validity error" not in line])

    def test_overviews_are_valid_except_for_known_breaches(self):
        complaints = self.complaints("overview.html", "--valid")
        self.assertEqual([], [line for line in complaints if not KNOWN_IN_OVERVIEWS.search(line)])

    def test_breaches_are_found(self):
        with tempfile.NamedTemporaryFile(suffix=".html", dir=pages) as file:
            file.write((pages / "run.html").read_bytes().replace(b"<h2>Result</h2>", b"<h2><p>Result</p></h2>"))
            file.flush()
            self.assertNotEqual([], self.complaints(pathlib.Path(file.name).name, "--valid"))


if __name__ == "__main__":
    pages, xmllint, catalog = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    unittest.main(argv=sys.argv[:1], verbosity=2)
