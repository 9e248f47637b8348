/// Output lines: the one channel through which the library prints.
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
/// interleave. The text contains its own line feeds; none is added.
class LUTESTSUITE_API LuTestSuiteOut
{
public:
    /// Receives finished lines, from any thread that prints, one line at a time under the output lock: it must not wait
    /// for another thread that may print. Exceptions are dropped.
    class LUTESTSUITE_API LuCustomOut
    {
    public:
        virtual void Output(const LuTestSuiteOut& line) = 0;
        virtual ~LuCustomOut();
    };

    /// A line of formatted text (see LbFormat), neither bold nor underlined nor coloured. If a run-time format has a
    /// mistake, the line describes it, with the place of the LbRuntimeFormat.
    template<typename... T>
    static LuTestSuiteOut Write(LbFormatString<T...> format, const T&... arguments)
    {
        return LuTestSuiteOut(LbFormatLine(format.GetSource(), LbPackArguments(arguments...)));
    }

    LuTestSuiteOut(const LuTestSuiteOut& other);
    LuTestSuiteOut& operator=(const LuTestSuiteOut& other);

    /// Emits the line: as UTF-8 to standard output, unless switched off, and to the custom outputs in the order in
    /// which they were added.
    ~LuTestSuiteOut();

    /// Attributes for custom outputs; each returns the line itself.
    LuTestSuiteOut& Bold();
    LuTestSuiteOut& Underlined();
    LuTestSuiteOut& Color(LuColor color);

    const std::wstring& GetText() const { return m_text; }
    bool IsBold() const { return m_isBold; }
    bool IsUnderlined() const { return m_isUnderlined; }
    bool HasColor() const { return m_hasColor; }

    /// The colour; all bits set while none was chosen.
    LuColor GetColor() const { return m_color; }

    /// Adds a custom output, never null. The caller keeps it alive for as long as anything may print; there is no
    /// removal. One that is added twice receives each line twice.
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
