/// The standard library's expressions over wide text, alike on all platforms.
#pragma once

#include <regex>
#include <string>

#include "testing/lutestsuite/selection/stacklimit.h"

namespace LuTestSuite
{

/// Compiles an expression of the ECMAScript grammar, case-sensitive. Classes of characters are those of ASCII, and only
/// ASCII characters are operators, whatever the platform and the locale. Throws std::regex_error; and CStackExhausted
/// when the compilation passes the limit, which the expression refers to.
std::wregex MakeWideRegex(const std::wstring& source, const CStackLimit* limit = nullptr);

} // namespace LuTestSuite
