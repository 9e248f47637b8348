// Interactive parts of the pages. The pages can also be read without this script.
// - A click, Enter or Space on a header cell sorts a table by that column: tables of class "sortable", the classes and
//   the cases. The second time reverses the order. Empty cells always come last, and equal cells keep their order.
// - The columns of the cases are as wide as their texts need.
// - A bar above the cases can hide those that have not failed, and moves from one failed case to the next, by button
//   and by key. In a comparison, the cases that got worse count as failed.
// - The name of each class links to one of its cases.
(function () {
    'use strict';

    var NUMBER = /^[-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?(?:\s*%(?:\s*\(.*\))?)?$/i;
    var LONG_INTEGER = /^[-+]?\d{16,}$/;
    var INFINITY = /^([-+]?)inf(?:inity)?$/i;
    var YEAR_FIRST =
        /^\[?(\d{4})-(\d\d?)-(\d\d?)\]?(?:[T\s-]+\[?(\d\d?)[:-](\d\d)(?:[:-](\d\d(?:\.\d+)?))?\]?)?$/;
    var DAY_FIRST = /^(\d\d?)\.\s?(\d\d?)\.\s?(\d{4})(?:,?\s+(\d\d?):(\d\d)(?::(\d\d(?:\.\d+)?))?)?$/;

    // Sorted from worst to best.
    var STATES = { Worse: 0, Different: 1, Improved: 2 };
    var RESULT_HEADING = /^Result/;
    var PASSED = 'Ok';

    var collator = new Intl.Collator('de', { numeric: true });

    // Each read function returns the sort key of a text, or null for a text of another kind.
    function readNumber(text) {
        var infinity = INFINITY.exec(text);
        if (infinity) {
            return infinity[1] === '-' ? -Infinity : Infinity;
        }
        // Numbers are exact only up to 2^53. BigInt values can be compared with them.
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

    function readState(text) {
        return Object.prototype.hasOwnProperty.call(STATES, text) ? STATES[text] : null;
    }

    function compareKeys(a, b) {
        return a < b ? -1 : a > b ? 1 : 0;
    }

    // The keys of a column if all its texts are empty or of one kind; otherwise null.
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

    // The collator is slow, so it compares each distinct text only once.
    function rankTexts(texts, passedLast) {
        var ranks = new Map();
        Array.from(new Set(texts)).sort(function (a, b) {
            return passedLast && (a === PASSED) - (b === PASSED) || collator.compare(a, b);
        }).forEach(function (text, index, sorted) {
            var isLikeLast = index > 0 && collator.compare(sorted[index - 1], text) === 0;
            ranks.set(text, isLikeLast ? ranks.get(sorted[index - 1]) : index);
        });
        return texts.map(function (text) {
            return ranks.get(text);
        });
    }

    function makeEntries(rows, column, heading) {
        var texts = rows.map(function (row) {
            var cell = row.children[column];
            return cell ? cell.textContent.trim() : '';
        });
        var keys = readKeys(texts, readNumber) || readKeys(texts, readDate) || readKeys(texts, readState) ||
            rankTexts(texts, RESULT_HEADING.test(heading));
        return rows.map(function (row, index) {
            return { row: row, index: index, isEmpty: texts[index] === '', key: keys[index] };
        });
    }

    // Removes everything after the header in one step. If only the rows were removed, the white space between them
    // would stay, and browsers would have to skip all of it between two rows.
    function takeOut(body, header) {
        var range = document.createRange();
        range.selectNodeContents(body);
        if (header.parentNode === body) {
            range.setStartAfter(header);
        }
        range.deleteContents();
    }

    function getRows(body, header) {
        return Array.prototype.filter.call(body.rows, function (row) {
            return row !== header;
        });
    }

    function sortRows(body, header, cell, direction) {
        var entries = makeEntries(getRows(body, header), cell.cellIndex, cell.textContent.trim());
        entries.sort(function (a, b) {
            if (a.isEmpty || b.isEmpty) {
                return a.isEmpty - b.isEmpty || a.index - b.index;
            }
            return direction * compareKeys(a.key, b.key) || a.index - b.index;
        });
        var fragment = document.createDocumentFragment();
        takeOut(body, header);
        entries.forEach(function (entry) {
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
            sortRows(body, header, cell, isAscending ? 1 : -1);
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

    // Widths are multiples of the table's font size, so that they are also right on paper.
    var LONGEST_WORD = 30, LONGEST_TEXT = 60, LONGEST_MESSAGE = 90, CHARACTERS = 300;
    var SPARE = 1.02, PADDING = 1.05, MARK = 1.4;

    // The widths of the 256 characters of the page's encoding, by code. The width of other characters counts as 1.
    function measureCharacters(cell) {
        var style = getComputedStyle(cell);
        var context = document.createElement('canvas').getContext('2d');
        context.font = style.fontWeight + ' ' + style.fontSize + ' ' + style.fontFamily;
        var unit = parseFloat(getComputedStyle(cell.parentNode).fontSize);
        return Array.from({ length: 256 }, function (_, code) {
            return context.measureText(String.fromCharCode(code)).width / unit;
        });
    }

    // Widens `column` for the text: `word` to its longest word, after which a line can break, `text` to the whole.
    function addText(column, text, widths) {
        var whole = 0, word = 0;
        var end = Math.min(text.length, CHARACTERS);
        for (var index = 0; index < end; ++index) {
            var code = text.charCodeAt(index);
            var width = code < 256 ? widths[code] : 1;
            whole += width;
            word += width;
            if (word > column.word && code !== 32) {
                column.word = word;
            }
            if (code === 32 || code === 45) {
                word = 0;
            }
        }
        column.text = Math.max(column.text, whole);
    }

    function addRow(columns, row, widths) {
        for (var index = 0, cell = row.firstElementChild; cell && columns[index]; cell = cell.nextElementSibling) {
            // Measures each line of a message separately.
            for (var node = cell.firstChild; node; node = node.nextSibling) {
                if (node.nodeType === Node.TEXT_NODE) {
                    addText(columns[index], node.data, widths[index]);
                }
            }
            ++index;
        }
    }

    function toLength(width) {
        return width.toFixed(2) + 'em';
    }

    function measureColumns(header, rows, kind) {
        var bold = measureCharacters(header.cells[0]);
        var columns = Array.from(header.cells, function (cell) {
            var column = { text: 0, word: 0 };
            addText(column, cell.textContent, bold);
            return column;
        });
        var widths = Array.from(rows.length ? rows[0].cells : [], function (cell, index) {
            return index === kind.markedColumn ? bold : measureCharacters(cell);
        });
        rows.forEach(function (row) {
            addRow(columns, row, widths);
        });
        return columns;
    }

    // Short texts and words get the width they need; longer texts share the rest and break between words.
    function getWidths(column, index, kind) {
        var mark = index === kind.markedColumn ? MARK : 0;
        var text = mark + Math.min(column.text * SPARE, index === kind.messageColumn ? LONGEST_MESSAGE : LONGEST_TEXT);
        var word = mark + Math.min(column.word * SPARE, LONGEST_WORD);
        var short = index === kind.nameColumn ? kind.nameWidth : kind.shortWidth;
        return { least: PADDING + Math.max(word, Math.min(text, short)), most: PADDING + text };
    }

    function fitColumns(table, kind) {
        var header = table.rows[0];
        var narrowest = 0, widest = 0;
        var columns = measureColumns(header, getRows(table.tBodies[0], header), kind).map(function (column, index) {
            var width = getWidths(column, index, kind);
            narrowest += width.least;
            widest += width.most;
            return 'minmax(' + toLength(width.least) + ', ' + width.most.toFixed(2) + 'fr)';
        });
        table.style.setProperty('--columns', columns.join(' '));
        table.style.setProperty('--narrowest', toLength(narrowest));
        table.style.setProperty('--widest', toLength(widest));
    }

    // Selectors: `failed` for failed cases; `first`, in order of preference, for the case to which a class links.
    var RUN = {
        failed: 'tr.failure, tr.error', first: ['tr.failure, tr.error', 'tr.warning', 'tr'],
        filter: 'Nur fehlgeschlagene', count: ' fehlgeschlagen',
        classColumn: 1, nameColumn: 2, markedColumn: 5, messageColumn: 7, nameWidth: 24, shortWidth: 11
    };
    var COMPARISON = {
        failed: 'tr.worse', first: ['tr.worse', 'tr.diff, tr.better', 'tr'],
        filter: 'Nur verschlechterte', count: ' verschlechtert',
        classColumn: 3, nameColumn: 4, nameWidth: 8, shortWidth: 8
    };

    function addElement(parent, name, text, attributes) {
        var element = document.createElement(name);
        element.textContent = text;
        Object.keys(attributes || {}).forEach(function (key) {
            element.setAttribute(key, attributes[key]);
        });
        parent.appendChild(element);
        return element;
    }

    function addButton(parent, text, key, act) {
        var button = addElement(parent, 'button', text, { type: 'button', 'aria-keyshortcuts': key });
        button.addEventListener('click', act);
        return button;
    }

    function isInView(row) {
        var place = row.getBoundingClientRect();
        return place.bottom > 0 && place.top < window.innerHeight;
    }

    // Number of rows above the middle of the window. Binary search, since asking for a row's place is slow.
    function countAbove(rows) {
        var low = 0, high = rows.length;
        while (low < high) {
            var middle = (low + high) >> 1;
            if (rows[middle].getBoundingClientRect().top < window.innerHeight / 2) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    function getFailed(table, kind) {
        return Array.from(table.querySelectorAll(kind.failed));
    }

    // Returns a function that moves to the next (1) or the previous (-1) failed case on the page; after the last one
    // comes the first. If the current case is out of view, continues from the middle of the window.
    function makeStep(table, kind, status) {
        var current = null;

        function show(row) {
            if (current) {
                current.classList.remove('current');
            }
            current = row;
            row.classList.add('current');
            row.scrollIntoView({ block: 'center' });
        }

        return function (direction) {
            var rows = getFailed(table, kind);
            var place = current && isInView(current) ? rows.indexOf(current) : -1;
            var next = place >= 0 ? place + direction : countAbove(rows) - (direction < 0 ? 1 : 0);
            next = (next + rows.length) % rows.length;
            show(rows[next]);
            status.textContent = (next + 1) + ' von ' + rows.length;
        };
    }

    // The case that the user looks at: the current one if it is in view, otherwise the first failed one below the
    // middle. Null if the table begins below the top of the window.
    function findAnchor(table, kind) {
        var current = table.querySelector('tr.current');
        if (table.getBoundingClientRect().top > 0) {
            return null;
        }
        var rows = getFailed(table, kind);
        return current && isInView(current) ? current : rows[Math.min(countAbove(rows), rows.length - 1)];
    }

    function filterCases(table, kind, button, isOn) {
        var anchor = findAnchor(table, kind);
        table.classList.toggle('only-failed', isOn);
        button.setAttribute('aria-pressed', String(isOn));
        if (anchor) {
            anchor.scrollIntoView({ block: 'center' });
        }
    }

    function addKeys(buttons) {
        document.addEventListener('keydown', function (event) {
            // Browsers that fill in a form send events without a key.
            var button = event.key && buttons[event.key.toUpperCase()];
            if (button && !event.ctrlKey && !event.altKey && !event.metaKey) {
                button.click();
            }
        });
    }

    function addHint(bar, texts) {
        var hint = addElement(bar, 'small', 'Tasten:');
        Object.keys(texts).forEach(function (key) {
            hint.append(' ');
            addElement(hint, 'kbd', key);
            hint.append(' ' + texts[key]);
        });
    }

    function addBar(table, kind) {
        var bar = table.createCaption();
        var filter = addButton(bar, kind.filter, 'F', function () {
            filterCases(table, kind, filter, !table.classList.contains('only-failed'));
        });
        filter.setAttribute('aria-pressed', 'false');
        var previous = addButton(bar, '\u25B2 Vorheriger', 'V', function () {
            step(-1);
        });
        var next = addButton(bar, '\u25BC N\u00E4chster', 'N', function () {
            step(1);
        });
        var count = getFailed(table, kind).length + kind.count;
        var step = makeStep(table, kind, addElement(bar, 'span', count, { role: 'status' }));
        addHint(bar, { N: 'n\u00E4chster', V: 'vorheriger', F: kind.filter.toLowerCase() });
        addKeys({ N: next, V: previous, F: filter });
        return filter;
    }

    // Maps each class to the case to which it links. Skips the last selectors once every class has a case.
    function findFirstRows(table, kind, names) {
        var first = new Map();
        kind.first.forEach(function (selector) {
            var rows = first.size < names.size ? table.querySelectorAll(selector) : [];
            Array.prototype.forEach.call(rows, function (row) {
                var name = row.children[kind.classColumn].textContent;
                if (names.has(name) && !first.has(name)) {
                    first.set(name, row);
                }
            });
        });
        return first;
    }

    // The name is the first node of its cell; a link to the contact may follow.
    function getClassText(row) {
        var text = row.cells[0].tagName === 'TD' && row.cells[0].firstChild;
        return text && text.nodeType === Node.TEXT_NODE ? text : null;
    }

    function linkClasses(classes, table, kind, showAll) {
        var texts = Array.from(classes.rows, getClassText).filter(Boolean);
        var names = new Set(texts.map(function (text) {
            return text.data.trim();
        }));
        var first = findFirstRows(table, kind, names);
        // A class has one row for each of its folders.
        texts.forEach(function (text) {
            var name = text.data.trim();
            var row = first.get(name);
            if (!row) {
                return;
            }
            row.id = 'class-' + row.rowIndex;
            var link = document.createElement('a');
            link.href = '#' + row.id;
            link.title = 'Zum ersten Testfall der Klasse';
            link.addEventListener('click', function () {
                if (!row.matches(kind.failed)) {
                    showAll();
                }
            });
            text.parentNode.insertBefore(link, text);
            link.textContent = name;
            text.data = text.data.slice(text.data.indexOf(name) + name.length);
        });
    }

    function equipCases(table) {
        var kind = table.classList.contains('sortable') ? COMPARISON : RUN;
        var classes = document.getElementById('testclasses');
        fitColumns(table, kind);
        var filter = table.querySelector(kind.failed) ? addBar(table, kind) : null;
        if (classes) {
            linkClasses(classes, table, kind, function () {
                if (filter) {
                    filterCases(table, kind, filter, false);
                }
            });
        }
    }

    function start() {
        var cases = document.getElementById('testcases');
        if (cases) {
            equipCases(cases);
        }
        var tables = document.querySelectorAll('table.sortable, #testclasses, #testcases');
        Array.prototype.forEach.call(tables, makeSortable);
    }

    if (document.readyState === 'loading') {
        document.addEventListener('DOMContentLoaded', start);
    } else {
        start();
    }
}());
