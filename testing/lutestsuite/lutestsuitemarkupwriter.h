/// Writing indented markup.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

/// Writes lines of markup, indented by one tab per level. Does not check that elements match and does not escape
/// values: callers balance opening and closing calls, and use Escape where needed. The caller opens and closes the
/// file, which must outlive the writer; exceptions of the file pass through. One thread at a time.
class LUTESTSUITE_API LuTestSuiteUtils::LuMarkupWriter
{
public:
    explicit LuMarkupWriter(LuStreamWriteASCIIFile& file) : m_file(file) {}

    /// Writes only the indentation of the level.
    void Indent();

    /// Writes only the text.
    void Write(std::wstring_view text);

    /// Writes indentation and text, then increases the level.
    void WriteOpen(std::wstring_view text);

    /// Writes indentation, text and line end, then increases the level.
    void WriteLineOpen(std::wstring_view text);

    /// Decreases the level, then writes indentation and text. The level must not be 0.
    void WriteClose(std::wstring_view text);

    /// Decreases the level, then writes indentation, text and line end. The level must not be 0.
    void WriteLineClose(std::wstring_view text);

    /// Writes indentation, text and line end.
    void WriteLine(std::wstring_view text);

    /// Writes a line with one element. Numbers are decimal; floating-point numbers have six decimals.
    void WriteElement(std::wstring_view name, std::wstring_view value);
    void WriteElement(std::wstring_view name, std::int32_t value);
    void WriteElement(std::wstring_view name, std::uint32_t value);
    void WriteElement(std::wstring_view name, float value);
    void WriteElement(std::wstring_view name, double value);
    void WriteElement(std::wstring_view name, std::int64_t value);
    void WriteElement(std::wstring_view name, std::uint64_t value);

    /// Like the operations above, with attributes in the start tag. Writes unsigned values as signed, so the largest
    /// value becomes "-1", because readers of existing files expect that.
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::wstring_view value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::int32_t value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, std::uint32_t value);
    void WriteElement(std::wstring_view name, std::wstring_view attributes, double value);

    /// The text with the five markup characters as entities: &quot; &amp; &apos; &lt; &gt;. Escapes existing entities
    /// again.
    static std::wstring Escape(std::wstring_view text);

    /// The reverse of Escape. Text other than the five entities stays unchanged.
    static std::wstring Unescape(std::wstring_view text);

private:
    LuStreamWriteASCIIFile& m_file;
    std::uint32_t m_level = 0;
};
