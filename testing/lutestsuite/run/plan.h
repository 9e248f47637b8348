/// The plan of a run: all case runs with their parameters, divided into parallel and sequential ones.
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
    const SParams& params; ///< parameters of the case, see GetCaseParams
    SCaseInfo& info;
};

using PlannedCases = std::span<const SPlannedCase>;

struct SPlan
{
    std::vector<SPlannedCase> parallel;   ///< case runs that may run in parallel, in plan order; executed first
    std::vector<SPlannedCase> sequential; ///< the others, in plan order
    bool hasExternal = false;             ///< true if at least one case runs in a child process
    std::deque<SParams> ownParams; ///< parameters of cases that have their own; the others share those of the run
};

/// Makes a plan that is ordered by unit test, case and repetition. Fills `cases` with the records, in plan order. The
/// plan keeps references to the arguments, which must outlive it. Afterwards, only the results in the records may
/// change.
SPlan MakePlan(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& params,
               std::vector<SCaseInfo>& cases);

} // namespace LuTestSuiteRun
