/// The output lines of a test.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/lutestsuiteout.h"

/// Records every output line from its construction on, with its attributes, and keeps them off standard output until
/// its destruction. One at a time; any thread may print meanwhile.
class CapturedOutput : public INonCopyable
{
public:
    struct SLine
    {
        std::wstring text;
        bool isBold = false;
        bool isUnderlined = false;
        bool hasColor = false;
        LuColor color;

        friend bool operator==(const SLine&, const SLine&) = default;
        friend void PrintTo(const SLine& line, std::ostream* stream);
    };

    CapturedOutput();
    ~CapturedOutput();

    /// The lines so far, in the order of their emission.
    std::vector<SLine> GetLines() const;

    /// Their texts, one after the other as a console would show them.
    std::wstring GetText() const;

    void Clear();

    /// Has the function called within the emission of the next line of this text, after it was recorded.
    void OnLine(const std::wstring& text, std::function<void()> function);

    // Expected lines.
    static SLine Plain(std::wstring text);
    static SLine Bold(std::wstring text);
    static SLine Colored(std::wstring text, LuColor color);
    static SLine BoldColored(std::wstring text, LuColor color);
};
