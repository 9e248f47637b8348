/// Statistics over finished case records.

#include <algorithm>

#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace LuTestSuiteRun
{

namespace
{

void countCase(const SCaseInfo& info, SStats::SCounts& counts)
{
    // A broken child process may answer with any number. An invalid result counts as Unknown, and the console shows it
    // as Unknown.
    const auto index = static_cast<std::size_t>(info.result);
    const auto unknown = static_cast<std::size_t>(ECaseRunResult::Unknown);
    ++counts.results[index < SStats::SCounts::sc_uiResults ? index : unknown];
    ++counts.executed;
    counts.warnings += info.warning ? 1U : 0U;
}

void addFigures(const SCaseInfo& info, SStats& stats)
{
    stats.caseTimeSum += info.time;
    stats.caseTimeMin = std::min(stats.caseTimeMin, info.time);
    stats.caseTimeMax = std::max(stats.caseTimeMax, info.time);
    stats.peakMemorySum += info.peakMemory;
    stats.peakMemoryMin = std::min(stats.peakMemoryMin, info.peakMemory);
    stats.peakMemoryMax = std::max(stats.peakMemoryMax, info.peakMemory);
}

void countUnitTest(const SStats::SCounts& counts, SStats& stats)
{
    if (counts.executed == 0)
    {
        return;
    }
    ++stats.unitTestsExecuted;
    if (counts.GetCount(ECaseRunResult::Ok) == counts.executed)
    {
        ++stats.unitTestsPassed;
        stats.unitTestsPassedWithoutWarning += counts.warnings == 0 ? 1U : 0U;
    }
}

} // namespace

SStats CountCases(const std::vector<SCaseInfo>& cases, std::size_t unitTestCount)
{
    SStats stats;
    stats.unitTests.assign(unitTestCount, {});
    for (const SCaseInfo& info : cases)
    {
        if (info.executed)
        {
            countCase(info, stats.total);
            countCase(info, stats.unitTests[info.unitTest]);
            addFigures(info, stats);
        }
    }
    for (const SStats::SCounts& counts : stats.unitTests)
    {
        countUnitTest(counts, stats);
    }
    return stats;
}

} // namespace LuTestSuiteRun
