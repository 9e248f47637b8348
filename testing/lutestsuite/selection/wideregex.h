/// The standard library's expressions over wide text, with the same behaviour on all platforms.
#pragma once

#include <regex>
#include <string>

#include "testing/lutestsuite/selection/stacklimit.h"

namespace LuTestSuite
{

/// Compiles an ECMAScript expression, case-sensitive. Character classes contain only ASCII, and only ASCII characters
/// are operators, on all platforms and in all locales. The expression keeps a reference to the limit. Throws
/// std::regex_error, or CStackExhausted if the compilation exceeds the limit.
std::wregex MakeWideRegex(const std::wstring& source, const CStackLimit* limit = nullptr);

} // namespace LuTestSuite
