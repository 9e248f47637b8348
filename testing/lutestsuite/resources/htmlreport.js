// Makes every table of class "sortable" sortable by its header cells: click, Enter or Space. A second time turns the
// order around. Cells that hold nothing come last in both orders, equal ones stay in the order they had.
(function () {
    'use strict';

    var NUMBER = /^[-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?(?:\s*%(?:\s*\(.*\))?)?$/i;
    var LONG_INTEGER = /^[-+]?\d{16,}$/;
    var INFINITY = /^([-+]?)inf(?:inity)?$/i;
    var YEAR_FIRST =
        /^\[?(\d{4})-(\d\d?)-(\d\d?)\]?(?:[T\s-]+\[?(\d\d?)[:-](\d\d)(?:[:-](\d\d(?:\.\d+)?))?\]?)?$/;
    var DAY_FIRST = /^(\d\d?)\.\s?(\d\d?)\.\s?(\d{4})(?:,?\s+(\d\d?):(\d\d)(?::(\d\d(?:\.\d+)?))?)?$/;

    var collator = new Intl.Collator('de', { numeric: true });

    // A reader gives the key of a text, or null for a text of another kind.
    function readNumber(text) {
        var infinity = INFINITY.exec(text);
        if (infinity) {
            return infinity[1] === '-' ? -Infinity : Infinity;
        }
        // Numbers of the language are exact up to 2^53 only; the two kinds compare with each other.
        if (LONG_INTEGER.test(text) && typeof BigInt === 'function') {
            return BigInt(text.replace('+', ''));
        }
        return NUMBER.test(text) ? parseFloat(text) : null;
    }

    function toTime(year, month, day, match) {
        return Date.UTC(+year, month - 1, +day, +(match[4] || 0), +(match[5] || 0)) + 1000 * (match[6] || 0);
    }

    function readDate(text) {
        var match = YEAR_FIRST.exec(text);
        if (match) {
            return toTime(match[1], match[2], match[3], match);
        }
        match = DAY_FIRST.exec(text);
        return match ? toTime(match[3], match[2], match[1], match) : null;
    }

    function compareKeys(a, b) {
        return a < b ? -1 : a > b ? 1 : 0;
    }

    // The keys of a column when it is all of one kind; otherwise null.
    function readKeys(texts, read) {
        var keys = [];
        for (var index = 0; index < texts.length; ++index) {
            var key = texts[index] === '' ? '' : read(texts[index]);
            if (key === null) {
                return null;
            }
            keys.push(key);
        }
        return keys;
    }

    function makeEntries(rows, column) {
        var texts = rows.map(function (row) {
            var cell = row.cells[column];
            return cell ? cell.textContent.trim() : '';
        });
        var keys = readKeys(texts, readNumber) || readKeys(texts, readDate);
        var entries = rows.map(function (row, index) {
            return { row: row, index: index, isEmpty: texts[index] === '', key: keys ? keys[index] : texts[index] };
        });
        return { list: entries, compare: keys ? compareKeys : collator.compare };
    }

    function sortRows(body, column, direction) {
        var rows = Array.prototype.filter.call(body.rows, function (row) {
            return row.cells.length > 0 && row.cells[0].tagName !== 'TH';
        });
        var entries = makeEntries(rows, column);
        entries.list.sort(function (a, b) {
            if (a.isEmpty || b.isEmpty) {
                return a.isEmpty - b.isEmpty || a.index - b.index;
            }
            return direction * entries.compare(a.key, b.key) || a.index - b.index;
        });
        var fragment = document.createDocumentFragment();
        entries.list.forEach(function (entry) {
            fragment.appendChild(entry.row);
        });
        body.appendChild(fragment);
    }

    function sortBy(table, header, cell) {
        var isAscending = cell.getAttribute('aria-sort') !== 'ascending';
        Array.prototype.forEach.call(header.cells, function (other) {
            other.setAttribute('aria-sort', 'none');
        });
        cell.setAttribute('aria-sort', isAscending ? 'ascending' : 'descending');
        Array.prototype.forEach.call(table.tBodies, function (body) {
            sortRows(body, cell.cellIndex, isAscending ? 1 : -1);
        });
    }

    function makeSortable(table) {
        var header = table.rows[0];
        if (!header || !header.cells.length || header.cells[0].tagName !== 'TH') {
            return;
        }
        Array.prototype.forEach.call(header.cells, function (cell) {
            cell.tabIndex = 0;
            cell.setAttribute('aria-sort', 'none');
            cell.addEventListener('click', function () {
                sortBy(table, header, cell);
            });
            cell.addEventListener('keydown', function (event) {
                if (event.key === 'Enter' || event.key === ' ') {
                    // Space would scroll the page.
                    event.preventDefault();
                    sortBy(table, header, cell);
                }
            });
        });
    }

    function start() {
        Array.prototype.forEach.call(document.querySelectorAll('table.sortable'), makeSortable);
    }

    if (document.readyState === 'loading') {
        document.addEventListener('DOMContentLoaded', start);
    } else {
        start();
    }
}());
