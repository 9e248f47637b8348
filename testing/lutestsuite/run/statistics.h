/// Statistics over finished case records.
#pragma once

#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

/// Counts the executed records into `stats`, whose figures are fresh; times of the run itself are not touched. Records
/// that were planned but never executed count nowhere.
void CountCases(const std::vector<SCaseInfo>& cases, std::size_t unitTestCount, SStats& stats);

} // namespace LuTestSuiteRun
