"""Code that the tests of pages in a browser share. A test program's arguments are PAGES CHROMIUM CHROMEDRIVER."""

import pathlib
import sys
import unittest

from webdriver import Browser

COLUMN = """
    var column = arguments[0];
    return Array.from(document.querySelectorAll('#testcases tr')).slice(1, arguments[1])
        .map(function (row) { return row.cells[column].textContent; });
"""
# The elements whose text and background have a contrast below 4.5, by the WCAG formula.
CONTRAST = """
    function luminance(color) {
        var parts = color.match(/[\\d.]+/g).slice(0, 3).map(function (part) {
            var value = part / 255;
            return value <= 0.03928 ? value / 12.92 : Math.pow((value + 0.055) / 1.055, 2.4);
        });
        return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2];
    }
    function background(element) {
        var color = getComputedStyle(element).backgroundColor;
        return color === 'rgba(0, 0, 0, 0)' ? background(element.parentElement) : color;
    }
    return Array.from(document.querySelectorAll('td, th, h1, h2, a'), function (element) {
        var a = luminance(getComputedStyle(element).color), b = luminance(background(element));
        return { element: element.outerHTML.slice(0, 80), ratio: (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05) };
    }).filter(function (entry) { return entry.ratio < 4.5; });
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
