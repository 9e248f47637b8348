#include "testing/lutestsuiterunner/console/terminal.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "base/os/console.h"

namespace Runner
{

namespace
{

constexpr const char* c_EraseLine = "\r\x1b[K";
constexpr std::wstring_view c_LineControls = L"\n\t";

bool isControl(wchar_t character)
{
    constexpr wchar_t c_Delete = 0x7F;
    constexpr wchar_t c_LastControl = 0x9F;
    return character < L' ' || (character >= c_Delete && character <= c_LastControl);
}

wchar_t getPicture(wchar_t control)
{
    constexpr wchar_t c_Pictures = 0x2400;
    constexpr wchar_t c_DeletePicture = 0x2421;
    constexpr wchar_t c_Delete = 0x7F;
    constexpr wchar_t c_Unknown = 0xFFFD;
    return control < L' '        ? static_cast<wchar_t>(c_Pictures + control)
           : control == c_Delete ? c_DeletePicture
                                 : c_Unknown;
}

} // namespace

std::wstring ShowControls(std::wstring text, std::wstring_view kept)
{
    for (wchar_t& character : text)
    {
        if (isControl(character) && kept.find(character) == std::wstring_view::npos)
        {
            character = getPicture(character);
        }
    }
    return text;
}

CTerminal& CTerminal::Get()
{
    static CTerminal s_terminal;
    return s_terminal;
}

CTerminal::CTerminal() : m_hasStatus(LbOs::GetErrorTerminalWidth() > 0), m_isTerminal(LbOs::EnableTerminalSequences())
{
}

void CTerminal::ShowStatus(const std::wstring& text)
{
    const std::lock_guard lock(m_mutex);
    if (m_hasStatus)
    {
        erase();
        m_status = ShowControls(text);
        redraw();
    }
}

void CTerminal::WriteOutput(const std::wstring& lines)
{
    WriteColoured(m_isTerminal ? ShowControls(lines, c_LineControls) : lines);
}

void CTerminal::WriteColoured(const std::wstring& lines)
{
    const std::lock_guard lock(m_mutex);
    erase();
    LbOs::WriteStandardOutput(LbEncoding::ToUtf8(lines));
    redraw();
}

void CTerminal::WriteError(const std::wstring& lines)
{
    const std::lock_guard lock(m_mutex);
    erase();
    LbOs::WriteStandardError(LbEncoding::ToUtf8(m_hasStatus ? ShowControls(lines, c_LineControls) : lines));
    redraw();
}

void CTerminal::erase()
{
    if (!m_status.empty())
    {
        LbOs::WriteStandardError(c_EraseLine);
    }
}

void CTerminal::redraw()
{
    if (m_status.empty())
    {
        return;
    }
    // The terminal may wrap a line of its full width.
    const std::size_t width = std::max<std::size_t>(1, LbOs::GetErrorTerminalWidth()) - 1;
    LbOs::WriteStandardError(LbEncoding::ToUtf8(m_status.substr(0, width)));
}

} // namespace Runner
