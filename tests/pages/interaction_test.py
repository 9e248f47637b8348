#!/usr/bin/env python3
"""Tests the bar for failed cases, and layout at all window sizes. interaction_test.py PAGES CHROMIUM CHROMEDRIVER"""

import re

from pagetest import Pages, main
from webdriver import TAB

FILTER, PREVIOUS, NEXT = ("#testcases caption button:nth-of-type(%d)" % number for number in (1, 2, 3))

VISIBLE_CLASSES = """
    return Array.from(document.querySelectorAll('#testcases tr')).slice(1)
        .filter(function (row) { return row.getClientRects().length > 0; })
        .map(function (row) { return row.className; });
"""
# The marked case: its index among the failed ones, and whether it is completely visible below the heading.
CURRENT = """
    var rows = Array.from(document.querySelectorAll(arguments[0]));
    var current = document.querySelectorAll('#testcases tr.current');
    var place = current.length === 1 ? current[0].getBoundingClientRect() : null;
    var heading = document.querySelector('#testcases tr').getBoundingClientRect();
    return place && [rows.indexOf(current[0]), place.top >= heading.bottom && place.bottom <= innerHeight];
"""
# Words that are broken across lines. Blanks and hyphens end a word. The browser does not lay out invisible rows, so the
# script first makes the rows visible.
BROKEN_WORDS = """
    document.head.appendChild(document.createElement('style')).textContent =
        '#testcases tr:nth-child(-n+60) { content-visibility: visible !important; }';
    var broken = [];
    document.querySelectorAll(arguments[0]).forEach(function (cell) {
        var walker = document.createTreeWalker(cell, NodeFilter.SHOW_TEXT);
        while (walker.nextNode()) {
            Array.from(walker.currentNode.data.matchAll(/[^\\s-]+/g)).forEach(function (match) {
                var range = document.createRange();
                range.setStart(walker.currentNode, match.index);
                range.setEnd(walker.currentNode, match.index + match[0].length);
                var tops = new Set(Array.from(range.getClientRects(), function (part) { return part.top; }));
                if (tops.size > 1) { broken.push(match[0]); }
            });
        }
    });
    return broken;
"""
TABLES = """
    return ['build', 'setup', 'result'].map(function (id) {
        var place = document.getElementById(id).getBoundingClientRect();
        return [place.left, place.top, place.right, place.bottom];
    });
"""
MARK = "return getComputedStyle(document.querySelector(arguments[0]), '::before').content"
WIDE = "return document.documentElement.scrollWidth - innerWidth"


class FailedCases(Pages):
    def current(self, failed="#testcases tr.failure, #testcases tr.error"):
        return self.browser.run(CURRENT, failed)

    def test_filter_shows_only_failed_cases(self):
        self.open("run.html")
        rows = "return document.querySelector('#testcases tbody').innerHTML"
        before, markup = self.browser.run(VISIBLE_CLASSES), self.browser.run(rows)
        self.browser.click(FILTER)
        self.assertEqual(["failure"] * 4 + ["error"] * 4, self.browser.run(VISIBLE_CLASSES))
        self.assertEqual(markup, self.browser.run(rows), "the filter must not change single rows")
        self.assertEqual("true", self.browser.run("return document.querySelector(arguments[0]).ariaPressed", FILTER))
        self.browser.press("f")
        self.assertEqual(before, self.browser.run(VISIBLE_CLASSES))
        self.assertEqual("false", self.browser.run("return document.querySelector(arguments[0]).ariaPressed", FILTER))

    def test_filter_of_comparisons_shows_only_worse_cases(self):
        self.open("diff.html")
        self.browser.press("f")
        self.assertEqual(["worse"] * 5, self.browser.run(VISIBLE_CLASSES))

    def test_filter_keeps_the_current_case_in_sight(self):
        self.open("medium.html")
        self.browser.run("document.querySelectorAll('#testcases :is(tr.failure, tr.error)')[29].scrollIntoView()")
        self.browser.press("n")
        before = self.current()
        for _ in range(2):
            self.browser.press("f")
            self.assertEqual(before, self.current())
        self.assertEqual([30, True], before)

    def test_buttons_and_keys_step_through_failed_cases(self):
        self.open("medium.html")
        for action, expected in ((lambda: self.browser.click(NEXT), 0), (lambda: self.browser.press("n"), 1),
                                 (lambda: self.browser.click(NEXT), 2), (lambda: self.browser.click(PREVIOUS), 1),
                                 (lambda: self.browser.press("v"), 0)):
            action()
            self.assertEqual([expected, True], self.current())

    def test_after_the_last_failed_case_comes_the_first(self):
        self.open("medium.html")
        self.browser.press("n")
        self.browser.press("v")
        count = self.browser.run("return document.querySelectorAll('#testcases :is(tr.failure, tr.error)').length")
        self.assertEqual([count - 1, True], self.current())
        self.browser.press("n")
        self.assertEqual([0, True], self.current())

    def test_walk_continues_from_the_scroll_position(self):
        self.open("medium.html")
        self.browser.press("n")
        self.browser.run("document.querySelectorAll('#testcases tr.failure')[20].scrollIntoView({ block: 'end' })")
        before = self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases :is(tr.failure, tr.error)')).filter(
                function (row) { return row.getBoundingClientRect().top < innerHeight / 2; }).length;
        """)
        self.browser.press("n")
        self.assertEqual([before, True], self.current())

    def test_walk_follows_the_order_of_the_page(self):
        self.open("medium.html")
        self.browser.click("#testcases th:nth-child(4)")
        self.browser.click("#testcases th:nth-child(4)")
        self.browser.press("n")
        times = [float(time) for time in self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases :is(tr.failure, tr.error)'),
                function (row) { return row.cells[3].textContent; });
        """)]
        self.assertEqual(max(times), float(self.browser.run(
            "return document.querySelector('tr.current').cells[3].textContent")))

    def test_status_shows_the_place_among_the_failed_cases(self):
        self.open("run.html")
        status = "return document.querySelector('#testcases [role=status]').textContent"
        self.assertEqual("8 fehlgeschlagen", self.browser.run(status))
        self.browser.press("n")
        self.assertEqual("1 von 8", self.browser.run(status))

    def test_keys_step_through_worse_cases_of_comparisons(self):
        self.open("diff_medium.html", size=(2000, 1000))
        self.browser.press("n")
        self.browser.press("n")
        self.assertEqual([1, True], self.current("#testcases tr.worse"))

    def test_keys_are_shown_and_assigned_to_the_buttons(self):
        self.open("run.html")
        self.assertEqual("Tasten: N n\u00e4chster V vorheriger F nur fehlgeschlagene", self.browser.run(
            "return document.querySelector('#testcases caption small').textContent"))
        self.assertEqual(["F", "V", "N"], self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases caption button'),
                function (button) { return button.getAttribute('aria-keyshortcuts'); });
        """))

    def test_keys_with_modifiers_are_left_to_the_browser(self):
        self.open("run.html")
        self.browser.run("""
            ['ctrlKey', 'altKey', 'metaKey'].forEach(function (name) {
                document.dispatchEvent(new KeyboardEvent('keydown', { key: 'n', [name]: true })); });
        """)
        self.assertIsNone(self.current())

    def test_events_without_a_key_do_nothing(self):
        self.open("run.html")
        self.assertEqual([], self.browser.run("""
            var errors = [];
            window.addEventListener('error', function (event) { errors.push(event.message); });
            document.dispatchEvent(new Event('keydown'));
            return errors;
        """))

    def test_runs_without_failures_have_no_bar(self):
        self.open("passed.html")
        self.assertEqual(0, self.browser.run("return document.querySelectorAll('caption, button').length"))

    def test_focus_can_be_seen(self):
        self.open("run.html")
        self.browser.run("document.querySelector(arguments[0]).focus()", FILTER)
        self.browser.press(TAB)
        self.assertEqual(["V", "solid"], self.browser.run("""
            var element = document.activeElement;
            return [element.getAttribute('aria-keyshortcuts'), getComputedStyle(element).outlineStyle];
        """))

    def test_classes_lead_to_their_first_failed_case(self):
        self.open("medium.html")
        names = self.browser.run("return Array.from(document.querySelectorAll('#testclasses td:first-child a'), "
                                 "function (link) { return link.textContent; })")
        self.browser.run("document.querySelectorAll('#testclasses td:first-child a')[25].click()")
        name, is_first, is_in_sight = self.browser.run("""
            var row = document.querySelector(':target'), name = row.cells[1].textContent;
            var first = Array.from(document.querySelectorAll('#testcases :is(tr.failure, tr.error)')).find(
                function (other) { return other.cells[1].textContent === name; });
            var place = row.getBoundingClientRect();
            return [name, row === first,
                place.top >= document.querySelector('#testcases tr').getBoundingClientRect().bottom &&
                place.bottom <= innerHeight];
        """)
        self.assertEqual((names[25], True, True), (name, is_first, is_in_sight))

    def test_classes_with_warnings_lead_to_the_warning(self):
        self.open("run.html")
        self.browser.press("f")
        self.browser.click("#testclasses td:first-child a")
        self.assertEqual(["CDruck", "Leck", 1], self.browser.run("""
            var row = document.querySelector(':target');
            return [row.cells[1].textContent, row.cells[2].textContent, row.getClientRects().length];
        """))

    def test_each_row_of_a_class_leads_to_its_cases(self):
        text = (self.pages / "run.html").read_text(encoding="latin-1")
        classes = text[text.index('id="testclasses"'):]
        row = re.search(r"<tr(?:(?!<tr).)*?>CDruck(?:(?!<tr).)*</tr>", classes, re.DOTALL)[0]
        (self.pages / "twofolders.html").write_text(text.replace(row, row + row, 1), encoding="latin-1")
        self.open("twofolders.html")
        links = self.browser.run("""
            return Array.from(document.querySelectorAll('#testclasses td:first-child a')).filter(function (link) {
                return link.textContent === 'CDruck';
            }).map(function (link) { return link.hash; });
        """)
        self.assertEqual(2, len(links))
        self.assertEqual(links[0], links[1])

    def test_classes_of_comparisons_keep_their_contacts(self):
        self.open("diff.html")
        self.assertEqual([["CLeser", "leser@example.org"], "CLeser leser@example.org"], self.browser.run("""
            var cell = document.querySelectorAll('#testclasses tr')[2].cells[0];
            return [Array.from(cell.querySelectorAll('a'), function (link) { return link.textContent; }),
                cell.textContent];
        """))


class Outcomes(Pages):
    def test_failed_rows_are_tinted(self):
        for scheme in ("light", "dark"):
            self.open("run.html", scheme)
            colors = self.browser.run("""
                return ['ok', 'failure', 'error'].map(function (name) {
                    return getComputedStyle(document.querySelector('#testcases tr.' + name)).backgroundColor; });
            """)
            self.assertEqual(3, len(set(colors)), colors)

    def test_failures_and_errors_differ_without_color(self):
        self.open("run.html")
        for cell in ("#testcases tr.%s td:nth-child(6)", "#testclasses tr.%s td:first-child"):
            marks = [self.browser.run(MARK, cell % name) for name in ("failure", "error")]
            self.assertEqual(2, len(set(marks) - {"none", "normal"}), marks)


class Layout(Pages):
    def test_long_messages_scroll_inside_their_cells(self):
        self.open("long.html")
        self.assertLess(self.browser.run("return document.documentElement.scrollHeight"), 3000)
        cells = self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases td:nth-child(8)')).slice(3, 6).map(function (cell) {
                cell.scrollTop = 100;
                return [cell.clientHeight, cell.scrollHeight, cell.scrollTop];
            });
        """)
        for height, content, place in cells:
            self.assertLess(height, 400)
            self.assertGreater(content, 5000)
            self.assertEqual(100, place)

    def test_printed_pages_show_whole_messages(self):
        self.open("long.html", media="print")
        self.assertEqual([0, 0], self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases td:nth-child(8)')).slice(3, 5).map(
                function (cell) { return cell.scrollHeight - cell.clientHeight; });
        """))
        self.assertEqual("none", self.browser.run(
            "return getComputedStyle(document.querySelector('#testcases caption')).display"))

    def test_result_is_on_the_first_screen(self):
        for page, size in (("run.html", (1280, 800)), ("run.html", (2560, 1200)), ("diff.html", (2560, 1200))):
            self.open(page, size=size)
            build, setup, result = self.browser.run(TABLES)
            self.assertEqual([build[1]] * 2, [setup[1], result[1]], f"{page} {size}")
            self.assertLess(build[2], setup[0])
            self.assertLess(setup[2], result[0])
            self.assertLessEqual(result[2], size[0])
            self.assertLessEqual(result[3], size[1])

    def test_result_of_comparisons_is_on_the_first_screen_at_1280_pixels(self):
        self.open("diff.html", size=(1280, 1000))
        build, setup, result = self.browser.run(TABLES)
        self.assertLess(max(build[2], setup[2]), result[0])
        self.assertLessEqual(result[2], 1280)
        self.assertLessEqual(result[3], 1000)

    def test_tables_do_not_overlap(self):
        for page in ("run.html", "diff.html"):
            for width in (420, 900, 1280, 1700, 2560):
                self.open(page, size=(width, 1000))
                self.assertEqual([], self.browser.run("""
                    var places = Array.from(document.querySelectorAll('h1, h2, table'), function (element) {
                        return [element.tagName + element.id, element.getBoundingClientRect()]; });
                    var pairs = [];
                    places.forEach(function (a, index) {
                        places.slice(index + 1).forEach(function (b) {
                            if (a[1].left < b[1].right && b[1].left < a[1].right && a[1].top < b[1].bottom &&
                                b[1].top < a[1].bottom) { pairs.push([a[0], b[0]]); }
                        });
                    });
                    return pairs;
                """), f"{page} {width}")

    def test_words_stay_whole(self):
        for width in (420, 1280, 2560):
            for page in ("run.html", "diff.html", "medium.html", "diff_medium.html"):
                self.open(page, size=(width, 1000))
                self.assertEqual([], self.browser.run(BROKEN_WORDS, "tr:nth-child(-n+60) > *"), f"{page} {width}")

    def test_pages_fit_narrow_windows(self):
        for page in ("run.html", "diff.html", "medium.html", "diff_medium.html", "overview.html"):
            self.open(page, size=(420, 800))
            self.assertLessEqual(self.browser.run(WIDE), 0, page)

    def test_bars_of_narrow_overviews_keep_their_proportions(self):
        self.open("overview.html", size=(420, 800))
        ratios = self.browser.run("""
            return Array.from(document.querySelectorAll('#overview td:nth-child(5)'), function (cell) {
                var widths = Array.from(cell.children, function (bar) { return bar.getBoundingClientRect().width; });
                return widths[0] / (widths[0] + widths[1]) - parseFloat(cell.children[0].style.width) / 500;
            });
        """)
        self.assertEqual(12, len(ratios))
        for difference in ratios:
            self.assertLess(abs(difference), 0.01)

    def test_columns_are_as_wide_as_their_texts_need(self):
        self.open("diff_medium.html", size=(2560, 1000))
        widths = self.browser.run("""
            return Array.from(document.querySelectorAll('#testcases th'), function (cell) {
                return cell.getBoundingClientRect().width; });
        """)
        empty, names = widths[13:15], widths[3:5]
        self.assertLess(max(empty), 80)
        self.assertGreater(min(names), 2 * max(empty))
        self.assertEqual(1, self.browser.run("""
            var range = document.createRange();
            range.selectNodeContents(document.querySelectorAll('#testcases tr')[1].cells[4]);
            return range.getClientRects().length;
        """))


if __name__ == "__main__":
    main()
