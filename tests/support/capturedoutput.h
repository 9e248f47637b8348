/// Records the output lines of a test.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/lutestsuiteout.h"

/// Records every output line with its attributes and keeps it off standard output, from construction to destruction.
/// One object at a time; any thread may print.
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

    /// The lines so far, in order.
    std::vector<SLine> GetLines() const;

    /// The concatenated texts, as a console would show them.
    std::wstring GetText() const;

    void Clear();

    /// Calls the function during the next output of a line with this text, once the line is recorded.
    void OnLine(const std::wstring& text, std::function<void()> function);

    // These functions make expected lines.
    static SLine Plain(std::wstring text);
    static SLine Bold(std::wstring text);
    static SLine Colored(std::wstring text, LuColor color);
    static SLine BoldColored(std::wstring text, LuColor color);
};
