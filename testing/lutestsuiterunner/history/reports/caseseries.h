/// One case in all runs, for the console.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"

namespace Runner::History
{

/// The index of the case named "class:case", as reports and gates write it.
std::optional<std::uint32_t> FindCase(const std::vector<SCaseName>& names, const std::wstring& name);

/// German lines: a heading, then number, begin, outcome, time, memory and name of each run, the oldest first. Empty if
/// no run of the configuration has the case.
std::wstring DescribeCase(const SAnalysis& analysis, std::uint32_t caseIndex);

} // namespace Runner::History
