/// Text for XML files in UTF-8. Any text of a test can be written, see ToEscapedUtf8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Runner
{

/// Text between tags.
std::string ToXmlText(std::wstring_view text);

/// The value of an attribute, without its quotes.
std::string ToXmlAttribute(std::wstring_view text);

/// Seconds with three decimals; some readers of test reports accept no more.
std::string ToXmlSeconds(std::uint64_t nanoseconds);

/// Cuts the result of ToXmlText to at most `size` bytes, between two characters.
void CutXmlText(std::string& text, std::size_t size);

} // namespace Runner
