/// Output lines: everything that the library prints on standard output.
#pragma once

#include <span>
#include <string>
#include <utility>

#include "base/lbformat.h"
#include "base/lucolor.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

/// One line of output, emitted when the object is destroyed. The usual form is a temporary:
///
///     LuTestSuiteOut::Write(L"%s: %d\n", name, count).Bold().Color(LuColor::c_RED);
///
/// Each copy emits its line when it is destroyed. Any thread may build and emit lines; lines of different threads never
/// interleave. The caller's text contains the line feeds; the class adds no line feed.
class LUTESTSUITE_API LuTestSuiteOut
{
public:
    /// Receives finished lines. Each thread that prints calls Output, one line at a time, while it holds the output
    /// lock. So Output must not wait for another thread that may print. Exceptions of Output are ignored.
    class LUTESTSUITE_API LuCustomOut
    {
    public:
        virtual void Output(const LuTestSuiteOut& line) = 0;
        virtual ~LuCustomOut();
    };

    /// Makes a line of formatted text (see LbFormat), neither bold nor underlined nor coloured. If a run-time format
    /// has a mistake, the line describes the mistake and names the source line of the LbRuntimeFormat.
    template<typename... T>
    static LuTestSuiteOut Write(LbFormatString<T...> format, const T&... arguments)
    {
        return LuTestSuiteOut(LbFormatLine(format.GetSource(), LbPackArguments(arguments...)));
    }

    LuTestSuiteOut(const LuTestSuiteOut& other);
    LuTestSuiteOut& operator=(const LuTestSuiteOut& other);

    /// Emits the line: writes it as UTF-8 to standard output, unless SetConsoleOut has switched that off, and passes it
    /// to the custom outputs in the order in which they were added.
    ~LuTestSuiteOut();

    /// Sets an attribute, which only custom outputs use. Returns the line itself.
    LuTestSuiteOut& Bold();
    LuTestSuiteOut& Underlined();
    LuTestSuiteOut& Color(LuColor color);

    const std::wstring& GetText() const { return m_text; }
    bool IsBold() const { return m_isBold; }
    bool IsUnderlined() const { return m_isUnderlined; }
    bool HasColor() const { return m_hasColor; }

    /// The colour; all its bits are set until Color is called.
    LuColor GetColor() const { return m_color; }

    /// Adds a custom output, which must not be null. The caller owns it and keeps it alive for as long as anything may
    /// print, because an output cannot be removed. An output that is added twice receives each line twice.
    static void AddCustomOut(LuCustomOut* out);

    /// Switches standard output on (the default) or off; custom outputs are not affected.
    static void SetConsoleOut(bool on);

private:
    LuTestSuiteOut();
    explicit LuTestSuiteOut(std::wstring text) : m_text(std::move(text)) {}
    void writeOut() const;

    std::wstring m_text;
    bool m_isBold = false;
    bool m_isUnderlined = false;
    bool m_hasColor = false;
    LuColor m_color;
};
