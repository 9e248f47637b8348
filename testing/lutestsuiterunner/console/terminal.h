/// The place where the host's lines appear, with a status line below them on a terminal.
#pragma once

#include <mutex>
#include <string>

#include "base/inoncopyable.h"

namespace Runner
{

/// Standard output and standard error of the process. Control characters are written only to files and pipes; a
/// terminal shows visible symbols instead, except for colours (WriteColoured). Any thread; lines of different calls
/// never interleave.
class CTerminal : public INonCopyable
{
public:
    static CTerminal& Get();

    /// True if standard error is a terminal that can rewrite a line.
    bool HasStatus() const { return m_hasStatus; }

    /// Replaces the status line by the text, cut to the terminal's width. An empty text removes the status line.
    void ShowStatus(const std::wstring& text);

    /// Writes lines, each with its line feed, and shows the status line below them.
    void WriteOutput(const std::wstring& lines);
    void WriteError(const std::wstring& lines);

    /// As WriteOutput, but also writes control characters to a terminal, so the caller must replace those in names and
    /// contents.
    void WriteColoured(const std::wstring& lines);

private:
    CTerminal();
    void erase();
    void redraw();

    std::mutex m_mutex;
    bool m_hasStatus;
    bool m_isTerminal; ///< standard output is a terminal
    std::wstring m_status;
};

} // namespace Runner
