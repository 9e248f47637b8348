#include "testing/lutestsuiterunner/console/terminal.h"

#include <algorithm>

#include "base/lbencoding.h"
#include "base/lbvisibletext.h"
#include "base/os/console.h"

namespace Runner
{

namespace
{

constexpr const char* c_EraseLine = "\r\x1b[K";
constexpr std::wstring_view c_LineControls = L"\n\t";

} // namespace

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
        m_status = LbVisibleText::ShowControls(text);
        redraw();
    }
}

void CTerminal::WriteOutput(const std::wstring& lines)
{
    WriteColoured(m_isTerminal ? LbVisibleText::ShowControls(lines, c_LineControls) : lines);
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
    const std::wstring shown = m_hasStatus ? LbVisibleText::ShowControls(lines, c_LineControls) : lines;
    LbOs::WriteStandardError(LbEncoding::ToUtf8(shown));
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
