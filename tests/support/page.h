/// HTML pages as tests look at them.
#pragma once

#include <string>
#include <vector>

/// A row of a table.
struct SPageRow
{
    std::string rowClass;           ///< value of the attribute; empty without one
    std::vector<std::string> cells; ///< their markup, as it stands

    friend bool operator==(const SPageRow&, const SPageRow&) = default;
};

/// The page as UTF-8, with "..." in place of the style sheet, so that a change of that changes no golden page.
std::string ReadPage(const std::wstring& path);

/// Texts of the headings of the second level.
std::vector<std::string> GetHeadings(const std::string& page);

/// The rows of all tables of that identifier, one after the other; each cell in a line of its own, or all of a row in
/// one.
std::vector<SPageRow> GetRows(const std::string& page, const std::string& id);

/// The row whose first cell is `label`; fails the test when there is none.
SPageRow GetRow(const std::string& page, const std::string& id, const std::string& label);
