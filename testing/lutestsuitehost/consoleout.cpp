#include "testing/lutestsuitehost/consoleout.h"

#include <string>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/os/console.h"

namespace
{

std::wstring getStart(const LuTestSuiteOut& line)
{
    std::wstring sequence;
    if (line.IsBold())
    {
        sequence += L"\x1b[1m";
    }
    if (line.IsUnderlined())
    {
        sequence += L"\x1b[4m";
    }
    if (line.HasColor())
    {
        const LuColor color = line.GetColor();
        sequence += LbFormat(L"\x1b[38;2;%u;%u;%um", color.GetRed(), color.GetGreen(), color.GetBlue());
    }
    return sequence;
}

} // namespace

void CConsoleOut::Output(const LuTestSuiteOut& line)
{
    const std::wstring& text = line.GetText();
    const std::wstring start = getStart(line);
    if (start.empty())
    {
        LbOs::WriteStandardOutput(LbEncoding::ToUtf8(text));
        return;
    }
    // Attributes end before the line feeds, because a scrolling terminal fills the new line with the current
    // attributes.
    const std::size_t bodyEnd = text.find_last_not_of(L'\n') + 1;
    LbOs::WriteStandardOutput(LbEncoding::ToUtf8(start + text.substr(0, bodyEnd) + L"\x1b[0m" + text.substr(bodyEnd)));
}
