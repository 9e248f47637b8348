/// The message lines of a case in the form of reports.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// At most `maxLines` lines of the messages, without the mark of their kind and escaped for markup; "..." replaces the
/// rest. A line without a mark has the kind of the line before; leading lines without a mark are errors.
std::vector<LuTestSuiteReport::SReportDump> GetMessageLines(const std::wstring& messages, std::uint32_t maxLines);

} // namespace LuTestSuite
