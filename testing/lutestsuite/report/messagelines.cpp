#include "testing/lutestsuite/report/messagelines.h"

#include <string_view>

#include "base/lbformat.h"

namespace
{

struct SMark
{
    std::wstring_view text;
    bool isError;
};

constexpr SMark c_ErrorMark = {L"ERROR: ", true};

/// In the order in which they are searched for.
constexpr SMark c_Marks[] = {{L"INFO:  ", false}, c_ErrorMark};

/// Removes everything up to the end of the mark, and sets the kind that the mark denotes. Changes nothing if the line
/// has no mark.
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

std::wstring_view getLine(std::wstring_view text)
{
    return text.substr(0, text.find(L'\n'));
}

LuTestSuiteReport::SReportDump makeDump(std::wstring_view line, bool& isError)
{
    takeMark(line, isError);
    return {isError, LuTestSuiteUtils::LuMarkupWriter::Escape(line)};
}

/// Appends the last line about the end of the child process, if there is one. Such text inside another line is ignored:
/// it comes from a run that the case has started.
void appendProcessEnd(std::wstring_view messages, std::vector<LuTestSuiteReport::SReportDump>& dumps)
{
    const std::wstring begin = LbFormat(L"\t\t%s%s", c_ErrorMark.text, LuTestSuite::c_ProcessEnd);
    std::size_t position = messages.rfind(begin);
    while (position != std::wstring_view::npos && position > 0 && messages[position - 1] != L'\n')
    {
        position = messages.rfind(begin, position - 1);
    }
    if (position != std::wstring_view::npos)
    {
        bool isError = true;
        dumps.push_back(makeDump(getLine(messages.substr(position)), isError));
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
        const std::wstring_view rest = std::wstring_view(messages).substr(start);
        const std::wstring_view line = getLine(rest);
        start += line.size() + 1;
        if (line.empty())
        {
            continue;
        }
        if (dumps.size() == maxLines)
        {
            dumps.push_back({false, L"..."});
            appendProcessEnd(rest, dumps);
            break;
        }
        dumps.push_back(makeDump(line, isError));
    }
    return dumps;
}
