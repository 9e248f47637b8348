/// The message for a report that cannot be written.
#pragma once

#include <string>

#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuiteout.h"

namespace LuTestSuite
{

/// Prints the line that names the report; `format` takes the report's path and has no line feed.
inline void WriteReportFailure(LbFormatString<std::wstring> format, const std::wstring& path)
{
    LuTestSuiteOut::Write(L"%s\n", LbFormat(format, path));
}

} // namespace LuTestSuite
