// Interactive parts of the page. Without this script everything can be read, too.
// - Tables are sorted by their header cells: click, Enter or Space; a second time turns the order around. Narrow windows
//   show the cells as buttons above the rows.
// - One search over all findings.
(function () {
    'use strict';

    var collator = new Intl.Collator('de', { numeric: true });

    function getKey(row, column) {
        var cell = row.cells[column];
        var key = cell.getAttribute('data-key');
        return key === null ? cell.textContent : parseFloat(key);
    }

    function compare(a, b) {
        return typeof a === 'number' && typeof b === 'number' ? a - b : collator.compare(String(a), String(b));
    }

    function sortBy(table, header, cell) {
        var isAscending = cell.getAttribute('aria-sort') !== 'ascending';
        Array.from(header.cells).forEach(function (other) {
            other.setAttribute('aria-sort', 'none');
        });
        cell.setAttribute('aria-sort', isAscending ? 'ascending' : 'descending');
        var body = table.tBodies[0];
        var entries = Array.from(body.rows, function (row, index) {
            return { row: row, index: index, key: getKey(row, cell.cellIndex) };
        });
        entries.sort(function (a, b) {
            return (isAscending ? 1 : -1) * compare(a.key, b.key) || a.index - b.index;
        });
        var fragment = document.createDocumentFragment();
        entries.forEach(function (entry) {
            fragment.appendChild(entry.row);
        });
        body.appendChild(fragment);
    }

    function makeSortable(table) {
        var header = table.tHead.rows[0];
        Array.from(header.cells).forEach(function (cell) {
            cell.tabIndex = 0;
            cell.setAttribute('aria-sort', 'none');
            cell.addEventListener('click', function () {
                sortBy(table, header, cell);
            });
            cell.addEventListener('keydown', function (event) {
                if (event.key === 'Enter' || event.key === ' ') {
                    event.preventDefault();
                    sortBy(table, header, cell);
                }
            });
        });
    }

    function getEntries() {
        return Array.from(document.querySelectorAll('table.findings tbody tr'), function (row) {
            return { row: row, text: row.textContent.toLowerCase() };
        });
    }

    function makeSearch(box) {
        var input = box.querySelector('input');
        var count = box.querySelector('span');
        var entries = null;
        box.hidden = document.querySelector('table.findings') === null;
        input.addEventListener('input', function () {
            var words = input.value.toLowerCase().split(/\s+/).filter(Boolean);
            var found = 0;
            entries = entries || getEntries();
            entries.forEach(function (entry) {
                var isFound = words.every(function (word) {
                    return entry.text.includes(word);
                });
                if (entry.row.hidden === isFound) {
                    entry.row.hidden = !isFound;
                }
                found += isFound ? 1 : 0;
            });
            document.querySelectorAll('section').forEach(function (section) {
                section.hidden = words.length > 0 && !section.querySelector('.findings tbody tr:not([hidden])');
            });
            count.textContent = words.length ? found + ' von ' + entries.length : '';
        });
    }

    document.documentElement.classList.add('scripted');
    document.querySelectorAll('table.findings, table.classes, table.runs').forEach(makeSortable);
    document.querySelectorAll('.search').forEach(makeSearch);
}());
