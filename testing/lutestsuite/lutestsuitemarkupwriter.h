/// Writing indented markup.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// Writes lines of markup, one tab a level in front of each. Neither checks that elements match nor escapes values:
/// callers balance what they open and close, and use Escape where it is needed. The file is opened and closed by the
/// caller and outlives the writer; what the file throws passes through. Used by one thread at a time.
class LUTESTSUITE_API LuTestSuiteUtils::LuMarkupWriter
{
public:
    explicit LuMarkupWriter(LuStreamWriteASCIIFile& file) : m_file(file) {}

    /// The indentation of the level alone.
    void Indent();

    /// The text alone.
    void Write(std::wstring_view text);

    /// Indentation and text; then the level rises.
    void WriteOpen(std::wstring_view text);

    /// Indentation, text and line end; then the level rises.
    void WriteLineOpen(std::wstring_view text);

    /// The level falls; then indentation and text. The level must not be 0.
    void WriteClose(std::wstring_view text);

    /// The level falls; then indentation, text and line end. The level must not be 0.
    void WriteLineClose(std::wstring_view text);

    /// Indentation, text and line end.
    void WriteLine(std::wstring_view text);

    /// A line of one element. Numbers are decimal, floating ones with six decimals.
    void WriteElement(std::wstring_view name, std::wstring_view value);
    void WriteElement(std::wstring_view name, std::int32_t value);
    void WriteElement(std::wstring_view name, std::uint32_t value);
    void WriteElement(std::wstring_view name, float value);
    void WriteElement(std::wstring_view name, double value);
    void WriteElement(std::wstring_view name, std::int64_t value);
    void WriteElement(std::wstring_view name, std::uint64_t value);

    /// The same with attributes in the start tag. Unsigned values come as signed ones, so that the largest is "-1":
    /// readers of old files expect it.
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::wstring_view value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::int32_t value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::uint32_t value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, double value);

    /// The text with the five characters of markup as entities: &quot; &amp; &apos; &lt; &gt;. One that is escaped
    /// already is escaped again.
    static std::wstring Escape(std::wstring_view text);

    /// The reverse. All that is none of the five entities stays as it is.
    static std::wstring Unescape(std::wstring_view text);

private:
    LuStreamWriteASCIIFile& m_file;
    std::uint32_t m_level = 0;
};
