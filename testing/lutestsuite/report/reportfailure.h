/// What a report that cannot be written costs.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuiteout.h"

namespace LuTestSuite
{

/// Prints the line that names the report; `format` takes its path.
inline void WriteReportFailure(const wchar_t* format, const std::wstring& path)
{
    LuTestSuiteOut::Write(format, path);
    // Apart, since the text has none of its own: what follows begins on a line of its own all the same.
    LuTestSuiteOut::Write(L"\n");
}

} // namespace LuTestSuite
