#!/usr/bin/env python3
"""Tests the page of the history in a browser. history_test.py PAGES CHROMIUM CHROMEDRIVER

Saves pictures of the page in PAGES for inspection.
"""

from pagetest import CONTRAST, Pages, main
from webdriver import ENTER, TAB

ROWS = """
    return Array.from(document.querySelectorAll(arguments[0] + ' tbody tr')).filter(
        function (row) { return !row.hidden; }).map(
        function (row) { return Array.from(row.cells, function (cell) { return cell.textContent; }); });
"""
SEARCH = """
    var input = document.getElementById('search');
    input.value = arguments[0];
    input.dispatchEvent(new Event('input'));
    return document.querySelector('.search span').textContent;
"""
VISIBLE = "return document.querySelector(arguments[0]).getClientRects().length > 0"
# Elements that reach over the right edge of the window, unless a box around them scrolls.
TOO_WIDE = """
    return Array.from(document.querySelectorAll('body *')).filter(function (element) {
        return element.getBoundingClientRect().right > innerWidth + 1 && !element.closest('.wide, figure, svg');
    }).map(function (element) { return element.outerHTML.slice(0, 80); });
"""
WIDE = "return document.documentElement.scrollWidth - innerWidth"


class History(Pages):
    def rows(self, table):
        return self.browser.run(ROWS, table)

    def test_each_finding_has_a_strip_and_a_line(self):
        self.open("history.html")
        for kind, count in (("new-failures", 10), ("flaky", 10), ("missing", 10), ("slower", 10), ("fixed", 10)):
            self.assertEqual([count, count, count], self.browser.run("""
                var section = document.getElementById('k1-' + arguments[0]);
                return ['tbody tr', 'svg.strip', 'svg.line polyline'].map(function (part) {
                    return section.querySelectorAll(part).length; });
            """, kind), kind)

    def test_strip_shows_the_newest_run_on_the_right(self):
        self.open("history.html")
        strip, failed = self.browser.run("""
            return ['', ' .bad'].map(function (part) {
                var place = document.querySelector('#k1-new-failures .strip' + part).getBoundingClientRect();
                return [place.left, place.right];
            });
        """)
        self.assertGreater(failed[0], strip[0] + 0.9 * (strip[1] - strip[0]))

    def test_click_and_keys_sort(self):
        self.open("history.html")
        names = [row[1] for row in self.rows("#k1-slower .findings")]
        self.browser.click("#k1-slower th:nth-child(2)")
        self.assertEqual(sorted(names), [row[1] for row in self.rows("#k1-slower .findings")])
        self.browser.run("document.querySelectorAll('#k1-slower th')[0].focus()")
        self.browser.press(TAB)
        self.browser.press(ENTER)
        self.assertEqual(sorted(names)[::-1], [row[1] for row in self.rows("#k1-slower .findings")])
        self.assertEqual("descending", self.browser.run(
            "return document.querySelectorAll('#k1-slower th')[1].getAttribute('aria-sort')"))

    def test_narrow_windows_sort_with_buttons(self):
        self.open("history.html", size=(420, 900))
        names = [row[1] for row in self.rows("#k1-slower .findings")]
        self.browser.click("#k1-slower th:nth-child(2)")
        self.assertEqual(sorted(names), [row[1] for row in self.rows("#k1-slower .findings")])
        self.browser.click("#k1-slower th:nth-child(2)")
        self.assertEqual(sorted(names)[::-1], [row[1] for row in self.rows("#k1-slower .findings")])
        self.browser.save_screenshot(self.pages / "history_420_sorted.png")

    def test_sort_arrow_is_inside_its_heading(self):
        self.open("history.html")
        self.assertEqual({"relative"}, set(self.browser.run("""
            return Array.from(document.querySelectorAll('th[aria-sort]'),
                function (cell) { return getComputedStyle(cell).position; });
        """)))

    def test_numbers_are_sorted_by_their_values(self):
        self.open("history.html")
        self.browser.click(".classes th:nth-child(3)")
        keys = self.browser.run("""
            return Array.from(document.querySelectorAll('.classes td:nth-child(3)'),
                function (cell) { return parseFloat(cell.dataset.key); });
        """)
        self.assertEqual(sorted(keys), keys)
        self.assertGreater(len(keys), 3)

    def test_search_shows_only_rows_with_all_words(self):
        self.open("history.html")
        self.assertEqual("2 von 70", self.browser.run(SEARCH, "00041 GRUNDRISS"))
        self.assertEqual(["Grundriss 00041 Obergeschoss.dat"] * 2, [row[1] for row in self.rows(".findings")])
        self.assertFalse(self.browser.run(VISIBLE, "#k1-slower"))
        self.assertEqual("", self.browser.run(SEARCH, ""))
        self.assertEqual(70, len(self.rows(".findings")))

    def test_search_finds_messages(self):
        self.open("history.html")
        self.browser.run(SEARCH, "flaeche.cpp(17)")
        self.assertTrue(self.browser.run(VISIBLE, "#k1-new-failures"))
        self.assertFalse(self.browser.run(VISIBLE, "#k1-slower"))

    def test_markup_in_messages_is_shown_as_text(self):
        self.open("history.html")
        self.assertEqual(1, self.browser.run("return document.scripts.length"))
        self.assertIn("<script>weg()</script>", self.rows("#k1-new-failures .findings")[0][5])

    def test_tiles_lead_to_their_tables(self):
        self.open("history.html")
        targets = self.browser.run("""
            return Array.from(document.querySelectorAll('.tiles a'), function (link) {
                return document.querySelectorAll(link.getAttribute('href') + ' tbody tr').length + ' ' +
                    link.querySelector('b').textContent; });
        """)
        self.assertGreater(len(targets), 5)
        for target in targets:
            self.assertEqual(*target.split())

    def test_all_findings_are_listed(self):
        self.open("history_large.html")
        rows, strips, text = self.browser.run("""
            var section = document.getElementById('k1-new-failures');
            return [section.querySelectorAll('tbody tr').length, section.querySelectorAll('.strip').length,
                section.querySelector('p + p').textContent];
        """)
        self.assertEqual((10000, 500), (rows, strips))
        self.assertEqual("Alle F\u00e4lle sind gelistet, die ersten 500 mit Zeichnungen.", text)

    def test_search_reaches_the_last_row(self):
        self.open("history_large.html")
        self.assertEqual("1 von 10000", self.browser.run(SEARCH, "19998"))
        self.assertEqual(1, len(self.rows(".findings")))

    def test_only_visible_rows_are_laid_out(self):
        self.open("history_large.html")
        self.assertEqual("auto", self.browser.run("""
            return getComputedStyle(document.querySelector('.findings tbody tr:last-child')).contentVisibility;
        """))

    def test_columns_of_rows_and_headings_agree(self):
        self.open("history.html")
        heading, row = self.browser.run("""
            return ['th', 'td'].map(function (name) {
                return Array.from(document.querySelectorAll('#k1-slower tr:first-child ' + name),
                    function (cell) { return Math.round(cell.getBoundingClientRect().left); }); });
        """)
        self.assertEqual(heading, row)
        self.assertEqual(6, len(row))

    def test_works_without_scripts(self):
        self.browser.command("Emulation.setScriptExecutionDisabled", value=True)
        try:
            self.open("history.html")
            self.browser.save_screenshot(self.pages / "history_plain.png")
            self.assertFalse(self.browser.run(VISIBLE, ".search"))
            self.assertEqual(70, len(self.rows(".findings")))
            self.assertTrue(self.browser.run(VISIBLE, "#k1-slower .line polyline"))
            self.browser.run("document.querySelector('summary').click()")
            self.assertTrue(self.browser.run(VISIBLE, ".runs"))
            self.open("history.html", size=(420, 900))
            self.assertFalse(self.browser.run(VISIBLE, "#k1-slower th"))
        finally:
            self.browser.command("Emulation.setScriptExecutionDisabled", value=False)

    def test_fits_narrow_windows(self):
        for width in (420, 900, 1280):
            self.open("history.html", size=(width, 900))
            self.assertLessEqual(self.browser.run(WIDE), 0, width)
            self.assertEqual([], self.browser.run(TOO_WIDE), width)
            self.assertEqual(0, self.browser.run(
                "var figure = document.querySelector('figure'); return figure.scrollWidth - figure.clientWidth"), width)
        self.open("history_large.html", size=(420, 900))
        self.assertLessEqual(self.browser.run(WIDE), 0)

    def test_texts_have_enough_contrast_in_both_schemes(self):
        for scheme in ("light", "dark"):
            self.open("history.html", scheme)
            self.assertEqual([], self.browser.run(CONTRAST), scheme)

    def test_colors_follow_the_preferred_scheme(self):
        colors = []
        for scheme in ("light", "dark"):
            self.open("history.html", scheme)
            colors.append(self.browser.run("""
                return ['body', '.tiles a', 'input'].map(function (name) {
                    return getComputedStyle(document.querySelector(name)).backgroundColor; });
            """))
        for light, dark in zip(*colors):
            self.assertNotEqual(light, dark)

    def test_printed_page_shows_all_runs_and_no_search(self):
        self.open("history.html", "dark", "print")
        self.assertFalse(self.browser.run(VISIBLE, ".search"))
        self.assertTrue(self.browser.run("return document.querySelector('.runs').checkVisibility("
                                         "{ contentVisibilityAuto: true })"))
        self.assertNotEqual("rgb(20, 24, 30)", self.browser.run(
            "return getComputedStyle(document.body).backgroundColor"))
        self.browser.emulate("light", "")
        self.browser.save_print(self.pages / "history.pdf")
        self.assertGreater((self.pages / "history.pdf").stat().st_size, 20000)

    def test_pictures_are_saved(self):
        for name, scheme, size in (("light", "light", (1400, 1000)), ("dark", "dark", (1400, 1000)),
                                   ("420", "light", (420, 900))):
            self.open("history.html", scheme, size=size)
            self.browser.save_screenshot(self.pages / f"history_{name}.png")
            self.assertGreater((self.pages / f"history_{name}.png").stat().st_size, 20000)


if __name__ == "__main__":
    main()
