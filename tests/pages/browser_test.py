#!/usr/bin/env python3
"""Tests the behaviour of pages in a browser. browser_test.py PAGES CHROMIUM CHROMEDRIVER

Saves pictures of the pages in PAGES for inspection.
"""

from pagetest import CONTRAST, Pages, main
from webdriver import ENTER, SPACE, TAB

SORTS = """
    return Array.from(document.querySelectorAll('#testcases th'), function (cell) {
        return cell.getAttribute('aria-sort'); });
"""
# Replaces the rows of the table by rows with the given texts. Returns the texts after a click on the heading and after
# a second click.
SORT_TEXTS = """
    var table = document.getElementById('testcases');
    var rows = table.tBodies[0];
    while (rows.rows.length > 1) { rows.deleteRow(1); }
    arguments[0].forEach(function (text) { rows.insertRow().insertCell().textContent = text; });
    function sort() {
        table.rows[0].cells[0].click();
        return Array.from(table.rows).slice(1).map(function (row) { return row.cells[0].textContent; });
    }
    return [sort(), sort()];
"""


class Sorting(Pages):
    def sort_texts(self, texts):
        self.open("diff.html")
        return self.browser.run(SORT_TEXTS, texts)

    def test_click_sorts_and_second_click_reverses_the_order(self):
        self.open("diff.html")
        before = self.column(4)

        self.browser.click("#testcases th:nth-child(5)")
        ascending = self.column(4)
        self.browser.click("#testcases th:nth-child(5)")

        self.assertNotEqual(before, ascending)
        self.assertEqual(sorted(before, key=str.casefold), sorted(ascending, key=str.casefold))
        self.assertEqual(["abgebrochen", "Absturz", "bricht ab"], ascending[:3])
        self.assertEqual(ascending[::-1], self.column(4))

    def test_heading_stays_first(self):
        self.open("diff.html")
        self.browser.click("#testcases th:nth-child(5)")
        self.assertEqual("TH", self.browser.run("return document.querySelector('#testcases tr').cells[0].tagName"))

    def test_enter_and_space_sort(self):
        self.open("diff.html")
        before = self.column(6)
        self.browser.run("document.querySelectorAll('#testcases th')[5].focus()")
        self.browser.press(TAB)
        self.browser.press(ENTER)
        numbers = [float(text) for text in self.column(6) if text]
        self.assertEqual(sorted(float(text) for text in before if text), numbers)
        self.assertEqual("ascending", self.browser.run(SORTS)[6])

        place = self.browser.run("return scrollY")
        self.browser.press(SPACE)
        self.assertEqual(numbers[::-1], [float(text) for text in self.column(6) if text])
        self.assertEqual("descending", self.browser.run(SORTS)[6])
        self.assertEqual(place, self.browser.run("return scrollY"))

    def test_other_keys_do_not_sort(self):
        self.open("diff.html")
        before = self.column(6)
        self.browser.run("document.querySelectorAll('#testcases th')[6].focus()")
        self.browser.press("x")
        self.assertEqual(before, self.column(6))

    def test_order_is_announced_to_screen_readers(self):
        self.open("diff.html")
        self.assertEqual({"none"}, set(self.browser.run(SORTS)))
        self.browser.click("#testcases th:nth-child(3)")
        self.browser.click("#testcases th:nth-child(5)")
        self.assertEqual(["none"] * 4 + ["ascending"] + ["none"] * 10, self.browser.run(SORTS))

    def test_sorting_the_classes_keeps_the_order_of_the_cases(self):
        self.open("diff.html")
        before = self.column(4)
        self.browser.click("#testclasses th:nth-child(2)")
        self.assertEqual("ascending", self.browser.run(
            "return document.querySelector('#testclasses th:nth-child(2)').getAttribute('aria-sort')"))
        self.assertEqual(before, self.column(4))

    def test_empty_cells_come_last_in_both_orders(self):
        ascending, descending = self.sort_texts(["2", "", "1", "", "3"])
        self.assertEqual(["1", "2", "3", "", ""], ascending)
        self.assertEqual(["3", "2", "1", "", ""], descending)

    def test_numbers_are_sorted_as_numbers(self):
        self.assertEqual(["-1", "0.5", "2", "10", "1e3"], self.sort_texts(["10", "2", "1e3", "-1", "0.5"])[0])
        self.assertEqual(["9.00% (1/9)", "75.00%", "100.00% (3/3)"],
                         self.sort_texts(["100.00% (3/3)", "9.00% (1/9)", "75.00%"])[0])
        self.assertEqual(["-inf", "7", "inf"], self.sort_texts(["7", "inf", "-inf"])[0])

    def test_large_numbers_are_compared_exactly(self):
        texts = ["18446744073709551615", "18446744073709551614", "5"]
        self.assertEqual(texts[::-1], self.sort_texts(texts)[0])

    def test_dates_are_sorted_as_dates(self):
        self.assertEqual(["31.12.2023", "01.02.2024 07:30:00", "1.10.2024"],
                         self.sort_texts(["1.10.2024", "31.12.2023", "01.02.2024 07:30:00"])[0])
        self.assertEqual(["2024-05-03 09:00:00", "2024-05-03 10:00:00", "2024-10-01 00:00:00"],
                         self.sort_texts(["2024-10-01 00:00:00", "2024-05-03 10:00:00", "2024-05-03 09:00:00"])[0])
        self.assertEqual(["[2024-05-03]-[09-00-00]", "[2024-05-03]-[10-00-00]"],
                         self.sort_texts(["[2024-05-03]-[10-00-00]", "[2024-05-03]-[09-00-00]"])[0])

    def test_texts_are_sorted_by_german_rules(self):
        self.assertEqual(["Datei 2", "Datei 10", "Ökonomie", "Zebra"],
                         self.sort_texts(["Zebra", "Datei 10", "Ökonomie", "Datei 2"])[0])

    def test_equal_rows_keep_their_order(self):
        self.open("diff_large.html")
        before = list(zip(self.column(11), self.column(4)))
        results = {text for text, _ in before}
        self.assertEqual({"Ok", "Fehler", "Exception"}, results & {"Ok", "Fehler", "Exception"})
        for _ in range(2):
            self.browser.click("#testcases th:nth-child(12)")
            after = list(zip(self.column(11), self.column(4)))
            for result in results:
                self.assertEqual([name for text, name in before if text == result],
                                 [name for text, name in after if text == result])
            before = after

    def test_other_tables_cannot_be_sorted(self):
        for page in ("run.html", "diff.html", "overview.html"):
            self.open(page)
            self.assertEqual(0, self.browser.run("""
                return document.querySelectorAll(':not(#testclasses, #testcases) > tbody > tr > [aria-sort]').length;
            """))

    def test_worst_cases_come_first(self):
        self.open("diff.html")
        self.browser.click("#testcases th:nth-child(1)")
        self.assertEqual(["Worse"] * 5 + ["Different"] + ["Improved"] * 2 + [""] * 6, self.column(0))
        self.browser.click("#testcases th:nth-child(1)")
        self.assertEqual(["Improved"] * 2 + ["Different"] + ["Worse"] * 5 + [""] * 6, self.column(0))

    def test_results_that_are_not_ok_come_first(self):
        self.open("run.html")
        self.browser.click("#testcases th:nth-child(6)")
        results = self.column(5)
        self.assertEqual(["Ok"] * 4, results[-4:])
        self.assertNotIn("Ok", results[:-4])

    def test_cases_of_runs_are_sorted(self):
        self.open("large.html")
        self.browser.click("#testcases th:nth-child(5)")
        memory = [int(text) for text in self.column(4)]
        self.assertEqual(20003, len(memory))
        self.assertEqual(sorted(memory), memory)

    def test_classes_of_runs_are_sorted(self):
        self.open("run.html")
        self.browser.click("#testclasses th:nth-child(3)")
        self.browser.click("#testclasses th:nth-child(1)")
        self.browser.click("#testclasses th:nth-child(1)")
        self.assertEqual(["CNetz", "CLeser", "CDruck"], self.browser.run("""
            return Array.from(document.querySelectorAll('#testclasses td:first-child'),
                function (cell) { return cell.textContent; });
        """))

    def test_many_rows_are_sorted(self):
        self.open("diff_large.html")
        before = self.column(5)
        self.assertEqual(20003, len(before))
        self.browser.click("#testcases th:nth-child(6)")
        after = self.column(5)
        self.assertEqual(sorted((float(text) for text in before if text)), [float(text) for text in after if text])
        self.assertEqual(sorted(before), sorted(after))
        self.assertEqual([""] * before.count(""), after[len(after) - before.count(""):])


class Appearance(Pages):
    def test_bars_are_500_pixels_wide(self):
        self.open("overview.html")
        widths = self.browser.run("""
            return Array.from(document.querySelectorAll('#overview td:nth-child(5)'), function (cell) {
                var ok = cell.children[0].getBoundingClientRect(), error = cell.children[1].getBoundingClientRect();
                return [ok.width, error.width, ok.top - error.top, error.left - ok.right];
            });
        """)
        self.assertEqual(12, len(widths))
        for ok, error, height_difference, gap in widths:
            self.assertEqual(500, ok + error)
            self.assertEqual(0, height_difference)
            self.assertLess(abs(gap), 0.5)

    def test_links_of_overviews_lead_to_their_pages(self):
        self.open("overview.html")
        links = self.browser.run("return Array.from(document.querySelectorAll('#overview a[href]'), "
                                 "function (link) { return link.href; });")
        self.assertEqual(21, len(links))
        self.assertTrue(any("%23" in link for link in links))
        for link in links:
            self.browser.do("url", {"url": link})
            self.assertEqual("LuTestSuite Report", self.browser.run("return document.title"), link)

    def test_markup_in_hostile_reports_is_shown_as_text(self):
        self.open("hostile.html")
        # Injected scripts would have run by now; injected handlers would be attributes of an element.
        self.assertEqual("LuTestSuite Report", self.browser.run("return document.title"))
        self.assertEqual([], self.browser.run("""
            return Array.from(document.querySelectorAll('body *')).filter(function (element) {
                return /^(SCRIPT|IMG|B)$/.test(element.tagName) || element.matches('[style]:not(#testcases)') ||
                    element.getAttributeNames().some(function (name) { return name.startsWith('on'); });
            }).map(function (element) { return element.outerHTML; });
        """))
        self.assertEqual(["mailto:"], self.browser.run("""
            return Array.from(document.links).filter(function (link) {
                return !link.getAttribute('href').startsWith('#class-');
            }).map(function (link) { return link.protocol; });
        """))
        self.assertEqual(4, len(self.column(0)))

    def test_headings_of_overviews_stand_over_their_columns(self):
        self.open("overview.html")
        lefts = self.browser.run("""
            var rows = document.querySelectorAll('#overview tr');
            return [0, 1].map(function (row) {
                return Array.from(rows[row].cells, function (cell) { return cell.getBoundingClientRect().left; });
            });
        """)
        self.assertEqual(lefts[0], lefts[1][:4] + lefts[1][5:])

    def test_texts_have_enough_contrast_in_both_schemes(self):
        for page in ("run.html", "diff.html", "overview.html"):
            for scheme in ("light", "dark"):
                self.open(page, scheme)
                self.assertEqual([], self.browser.run(CONTRAST), f"{page} {scheme}")

    def test_rows_have_the_colors_of_their_classes(self):
        self.open("run.html")
        colors = self.browser.run("""
            return ['ok', 'failure', 'error', 'warning'].map(function (name) {
                return getComputedStyle(document.querySelector('#testcases tr.' + name)).color; });
        """)
        self.assertEqual(4, len(set(colors)))

    def test_colors_follow_the_preferred_scheme(self):
        backgrounds = []
        for scheme in ("light", "dark"):
            self.open("run.html", scheme)
            backgrounds.append(self.browser.run("return getComputedStyle(document.body).backgroundColor"))
        self.assertNotEqual(*backgrounds)

    def test_printed_pages_are_white(self):
        self.open("run.html", "dark", "print")
        self.assertEqual("rgb(255, 255, 255)",
                         self.browser.run("return getComputedStyle(document.body).backgroundColor"))

    def test_pictures_are_saved(self):
        for page in ("run", "diff", "overview", "large"):
            for scheme in ("light", "dark"):
                self.open(f"{page}.html", scheme)
                self.browser.save_screenshot(self.pages / f"{page}_{scheme}.png")
            self.open(f"{page}.html")
            if page != "large":
                self.browser.save_print(self.pages / f"{page}.pdf")
                self.assertTrue((self.pages / f"{page}.pdf").read_bytes().startswith(b"%PDF"))


class WithoutScripts(Pages):
    def test_pages_show_everything(self):
        self.browser.command("Emulation.setScriptExecutionDisabled", value=True)
        self.addCleanup(self.browser.command, "Emulation.setScriptExecutionDisabled", value=False)
        self.open("diff.html")
        root = self.browser.command("DOM.getDocument")["root"]["nodeId"]
        page = self.browser.command("DOM.getOuterHTML", nodeId=root)["outerHTML"]
        self.assertNotIn("aria-sort=\"", page[page.index("<body"):])
        self.assertNotIn("<button", page)
        self.assertEqual(15, page[page.index("Case Diff"):].count("<tr"))
        self.assertIn("Größe &lt;A4&gt;", page)


if __name__ == "__main__":
    main()
