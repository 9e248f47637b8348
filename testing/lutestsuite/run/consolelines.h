/// The console lines of a run.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

/// Prints headers and results, case by case. Used by the thread that owns the run's console.
class CCaseLines
{
public:
    /// The arguments are the caller's and outlive the object, which serves one list of cases.
    CCaseLines(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params)
        : m_unitTests(unitTests), m_params(params)
    {
    }

    /// The line's beginning, under its unit test's heading where the unit test changes.
    void WriteHeader(const SCaseInfo& info);

    /// The rest of the line.
    void WriteResult(const SCaseInfo& info) const;

private:
    static constexpr std::int64_t sc_iNone = -1;

    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    const SParams& m_params;
    std::int64_t m_lastUnitTest = sc_iNone;
};

/// The line that stands in place of the cases that no longer run.
void WriteCanceled();

void WriteSummary(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SStats& stats);

} // namespace LuTestSuiteRun
