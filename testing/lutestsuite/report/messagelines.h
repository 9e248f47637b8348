/// The message lines of a case, as reports contain them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// The beginning of the error line about the end of a case's child process.
inline constexpr std::wstring_view c_ProcessEnd = L"Der Prozess des Testfalls ";

/// At most `maxLines` lines of the messages, escaped for markup; "..." replaces the rest. The mark of a line ("INFO:  "
/// or "ERROR: ") is removed and tells the kind of the line. A line without a mark has the kind of the line before;
/// lines before the first mark are errors. If the rest contains the line about the end of the child process, that line
/// follows the "...".
std::vector<LuTestSuiteReport::SReportDump> GetMessageLines(const std::wstring& messages, std::uint32_t maxLines);

} // namespace LuTestSuite
