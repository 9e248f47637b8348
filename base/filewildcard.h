/// Wildcards of file names. Not for use outside of LbBase.
#pragma once

#include <string_view>

namespace LbFileWildcard
{

/// "*" matches any text, "?" matches any character; the case of letters matters.
bool Matches(std::wstring_view name, std::wstring_view wildcard);

} // namespace LbFileWildcard
