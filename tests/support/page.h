/// HTML pages as seen by tests.
#pragma once

#include <string>
#include <vector>

/// A table row.
struct SPageRow
{
    std::string rowClass;           ///< the class attribute; empty if it is missing
    std::vector<std::string> cells; ///< raw markup of each cell

    friend bool operator==(const SPageRow&, const SPageRow&) = default;
};

/// The page as UTF-8, with "..." instead of the style sheet, so that golden pages do not depend on it.
std::string ReadPage(const std::wstring& path);

/// Texts of the second-level headings.
std::vector<std::string> GetHeadings(const std::string& page);

/// The rows of all tables with that id. The cells of a row may be on one line or on separate lines.
std::vector<SPageRow> GetRows(const std::string& page, const std::string& id);

/// The row whose first cell is `label`; fails the test if no row has it.
SPageRow GetRow(const std::string& page, const std::string& id, const std::string& label);
