/// The escape for characters that UTF-8 in JSON or XML cannot represent. Both formats use it. Pure functions, any
/// thread.
///
/// Names of files and tests may contain any code units: control characters, lone surrogates, bytes that are not UTF-8
/// (in wide text they are lone surrogates). Each of these becomes "␛{XXXX}": U+241B, and the code unit in hexadecimal
/// digits in braces. The character U+241B itself becomes "␛{241B}", so that the escape is reversible.
#pragma once

#include <string>
#include <string_view>

namespace Runner
{

/// Wide text as UTF-8 that consists of characters of XML 1.0 only.
std::string ToEscapedUtf8(std::wstring_view text);
void AppendEscapedUtf8(std::wstring_view text, std::string& result);

/// The reverse. Text that is not an escape stays as it is.
std::wstring FromEscapedUtf8(std::string_view bytes);

} // namespace Runner
