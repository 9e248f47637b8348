"""Shared by tests of pages in a browser. A test program's arguments are PAGES CHROMIUM CHROMEDRIVER."""

import pathlib
import sys
import unittest

from webdriver import Browser

COLUMN = """
    var column = arguments[0];
    return Array.from(document.querySelectorAll('#testcases tr')).slice(1, arguments[1])
        .map(function (row) { return row.cells[column].textContent; });
"""


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pages = pathlib.Path(sys.argv[1])
        cls.browser = Browser(*sys.argv[2:4])
        cls.addClassCleanup(cls.browser.close)

    def open(self, page, scheme="light", media="", size=(1400, 1000)):
        self.browser.resize(*size)
        self.browser.emulate(scheme, media)
        self.browser.open(self.pages / page)

    def column(self, index, end=1000000):
        return self.browser.run(COLUMN, index, end)


def main():
    unittest.main(argv=sys.argv[:1], verbosity=2)
