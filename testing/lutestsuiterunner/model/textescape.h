/// The escape for what neither JSON nor XML can carry as UTF-8, one for both. Pure functions, any thread.
///
/// Names of files and tests are any code units: control characters, lone surrogates, bytes that are no UTF-8 (which
/// stand as lone surrogates in wide text). Each of these becomes "␛{XXXX}": U+241B, and the code unit in hexadecimal
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
