#include "testing/lutestsuite/report/messagelines.h"

#include <algorithm>
#include <string_view>

namespace
{

struct SMark
{
    std::wstring_view text;
    bool isError;
};

/// In the order in which they are searched for.
constexpr SMark c_Marks[] = {{L"INFO:  ", false}, {L"ERROR: ", true}};

/// Removes everything up to the mark and sets the kind that it denotes; without a mark changes nothing.
void takeMark(std::wstring_view& line, bool& isError)
{
    for (const SMark& mark : c_Marks)
    {
        const std::size_t position = line.find(mark.text);
        if (position != std::wstring_view::npos)
        {
            line.remove_prefix(position + mark.text.size());
            isError = mark.isError;
            return;
        }
    }
}

} // namespace

std::vector<LuTestSuiteReport::SReportDump> LuTestSuite::GetMessageLines(const std::wstring& messages,
                                                                         std::uint32_t maxLines)
{
    std::vector<LuTestSuiteReport::SReportDump> dumps;
    bool isError = true;
    for (std::size_t start = 0; start < messages.size();)
    {
        const std::size_t end = std::min(messages.find(L'\n', start), messages.size());
        std::wstring_view line = std::wstring_view(messages).substr(start, end - start);
        start = end + 1;
        if (line.empty())
        {
            continue;
        }
        if (dumps.size() == maxLines)
        {
            dumps.push_back({false, L"..."});
            break;
        }
        takeMark(line, isError);
        dumps.push_back({isError, LuTestSuiteUtils::LuMarkupWriter::Escape(line)});
    }
    return dumps;
}
