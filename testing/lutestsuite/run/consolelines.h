/// The console lines of a run.
#pragma once

#include <cstdint>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/output/outputbatch.h"

namespace LuTestSuiteRun
{

/// Prints headers and results, case by case. Only the thread that called the run uses it.
class CCaseLines
{
public:
    /// The arguments must outlive the object.
    CCaseLines(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params)
        : m_unitTests(unitTests), m_params(params)
    {
    }

    /// Prints the beginning of the case's line, after a heading if the unit test changes.
    void WriteHeader(const SCaseInfo& info);

    /// Prints the rest of the line.
    void WriteResult(const SCaseInfo& info, LuTestSuite::EBatchEnd end = LuTestSuite::EBatchEnd::Write) const;

private:
    static constexpr std::int64_t sc_iNone = -1;

    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    const SParams& m_params;
    std::int64_t m_lastUnitTest = sc_iNone;
};

/// Prints the line that says that the run was canceled.
void WriteCanceled();

void WriteSummary(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SStats& stats);

} // namespace LuTestSuiteRun
