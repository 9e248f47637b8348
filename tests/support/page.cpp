#include "tests/support/page.h"

#include <regex>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"

namespace
{

/// The texts between `begin` and `end`.
std::vector<std::string> getBetween(const std::string& text, const std::string& begin, const std::string& end)
{
    std::vector<std::string> pieces;
    std::size_t start = text.find(begin);
    while (start != std::string::npos)
    {
        start += begin.size();
        const std::size_t stop = text.find(end, start);
        pieces.push_back(text.substr(start, stop - start));
        start = text.find(begin, stop);
    }
    return pieces;
}

SPageRow parseRow(const std::string& text)
{
    static const std::regex s_class("^ class=\"([^\"]*)\"");
    static const std::regex s_cell("<t[dh]>(.*?)</t[dh]>");
    SPageRow row;
    std::smatch match;
    if (std::regex_search(text, match, s_class))
    {
        row.rowClass = match[1];
    }
    for (std::sregex_iterator cell(text.begin(), text.end(), s_cell); cell != std::sregex_iterator(); ++cell)
    {
        row.cells.push_back((*cell)[1]);
    }
    return row;
}

} // namespace

std::string ReadPage(const std::wstring& path)
{
    std::string page = LbEncoding::ToUtf8(LbEncoding::FromLatin1(LbFileSystem::ReadFile8Bit(path)));
    const std::string begin = "<style type=\"text/css\">\n";
    const std::size_t start = page.find(begin);
    const std::size_t end = page.find("\t\t</style>");
    if (start != std::string::npos && end != std::string::npos)
    {
        page.replace(start + begin.size(), end - start - begin.size(), "...\n");
    }
    return page;
}

std::vector<std::string> GetHeadings(const std::string& page)
{
    return getBetween(page, "<h2>", "</h2>");
}

std::vector<SPageRow> GetRows(const std::string& page, const std::string& id)
{
    std::vector<SPageRow> rows;
    for (const std::string& table : getBetween(page, "<table id=\"" + id + "\"", "</table>"))
    {
        for (const std::string& row : getBetween(table, "<tr", "</tr>"))
        {
            rows.push_back(parseRow(row));
        }
    }
    return rows;
}

SPageRow GetRow(const std::string& page, const std::string& id, const std::string& label)
{
    for (const SPageRow& row : GetRows(page, id))
    {
        if (!row.cells.empty() && row.cells.front() == label)
        {
            return row;
        }
    }
    ADD_FAILURE() << "missing row " << label << " in the table " << id;
    return {};
}
