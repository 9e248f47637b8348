/// The message lines of a case as reports show them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// At most `maxLines` lines of the messages, without the mark of their kind and escaped for markup; "..." stands for
/// the others. A line without a mark is of the kind of the line before it, the first ones are errors.
std::vector<LuTestSuiteReport::SReportDump> GetMessageLines(const std::wstring& messages, std::uint32_t maxLines);

} // namespace LuTestSuite
