/// Prints warnings and errors.
#pragma once

#include "testing/lutestsuite/lutestsuiteout.h"

namespace LuTestSuite
{

/// Prints one line, bold and in goldenrod. The caller's text includes the prefix "Warnung: " or "Fehler: ".
template<typename... T>
void WriteWarning(LbFormatString<T...> format, const T&... arguments)
{
    LuTestSuiteOut::Write(format, arguments...).Bold().Color(LuColor::c_GOLDENROD);
}

} // namespace LuTestSuite
