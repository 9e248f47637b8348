/// The plan of a run: all case runs with their parameters, and which of them may run in parallel.
#pragma once

#include <deque>
#include <span>
#include <vector>

#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace LuTestSuiteRun
{

/// One run of a case with all data that an executor needs.
struct SPlannedCase
{
    const LuTestSuite::SUnitTest& unitTest;
    const LuTestSuite::STestCase& testCase;
    const SParams& params; ///< resolved, see GetCaseParams
    SCaseInfo& info;
};

using PlannedCases = std::span<const SPlannedCase>;

struct SPlan
{
    std::vector<SPlannedCase> parallel;   ///< case runs that may run in parallel, in plan order; they come first
    std::vector<SPlannedCase> sequential; ///< the others, in plan order
    bool hasExternal = false;             ///< some cases run in child processes
    std::deque<SParams> ownParams; ///< parameters of cases that have their own; the others share those of the run
};

/// Ordered by unit test, case and repetition. Fills `cases` with the records, in plan order. The plan keeps references
/// to the arguments, which must outlive it and change only where executors write into the records.
SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params,
               std::vector<SCaseInfo>& cases);

} // namespace LuTestSuiteRun
